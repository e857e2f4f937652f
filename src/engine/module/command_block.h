// The records of the engine's front door: a caller fills a block with a command's number and arguments and finds its
// answer in the same block. Field names are those of the command reference, docs/commands.md. The three records stay
// the caller's, and so does everything that their pointers lead to, unless the command's row says otherwise.

#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/toolkit/pstring.h"

namespace tarnova {

inline constexpr std::int32_t resultNobodyAnswered = -1018;  // what a sender presets
inline constexpr std::int32_t resultNotRun = -1;             // no reply record, or the mode isn't attached
inline constexpr std::size_t replyTextBytes = 264;
inline constexpr unsigned commandFlagCount = 5;
inline constexpr unsigned commandNumberCount = 4;
inline constexpr unsigned commandItemCount = 26;
inline constexpr unsigned commandTextCount = 2;

/// Arguments; a sender clears them. A null item is one that isn't given.
struct commandArgs {
    std::uint8_t flag0, flag1, flag2, flag3, flag4;
    std::uint32_t num0, num1, num2, num3;
    void *item0, *item1, *item2, *item3, *item4, *item5, *item6, *item7, *item8, *item9, *item10, *item11, *item12;
    void *item13, *item14, *item15, *item16, *item17, *item18, *item19, *item20, *item21, *item22, *item23, *item24,
        *item25;
    Str255 text0;
    Str255 text1;
    std::uint32_t versionMajor;  // written by kKelvaneCmdInterfaceVersion
    std::uint32_t versionMinor;
};
static_assert(offsetof(commandArgs, flag4) == 4 && offsetof(commandArgs, num3) == 20);
static_assert(offsetof(commandArgs, item0) == 24 && offsetof(commandArgs, item25) == 24 + 25 * sizeof(void*));
static_assert(offsetof(commandArgs, text0) == 232 && offsetof(commandArgs, text1) == 488);
static_assert(offsetof(commandArgs, versionMinor) == 748 && sizeof(commandArgs) == 752);

/// The answer; a sender clears it and fills in what the command takes from it.
struct commandReply {
    std::int32_t status;  // 0, or what went wrong
    std::uint32_t inValue;
    std::int32_t outValue;
    void* outPointer;
    std::uint8_t outFlag;
    std::uint32_t outWord;
    std::uint8_t text[replyTextBytes];  // a Pascal string, or a C string, as the command has it
    void* auxPointer;                   // second output buffer, of the caller
    std::uint32_t count;
    std::uint16_t hasHeader;
    std::uint16_t headerHint;
    std::uint8_t isSubset;  // `count` is that of a record list
    std::uint32_t callerSignature;
};

/// What a driver sends in place of a reply to register (commands 243 and 246).
struct driverRegistrationRec {
    std::int32_t status;
    std::uint32_t reserved4[2];
    std::uint32_t driverId;
    std::uint32_t driverGroup;
    std::uint16_t reserved20;
    std::uint16_t driverFlagA;
    std::uint16_t driverFlagB;
    std::uint16_t driverFlagC;
    std::uint8_t driverName[132];  // Pascal string
    std::uint32_t driverModule;    // four-character signature
};
static_assert(offsetof(driverRegistrationRec, driverId) == 12 && offsetof(driverRegistrationRec, driverGroup) == 16);
static_assert(offsetof(driverRegistrationRec, driverFlagA) == 22 && offsetof(driverRegistrationRec, driverName) == 28);
static_assert(offsetof(driverRegistrationRec, driverModule) == 160);
static_assert(sizeof(driverRegistrationRec) <= sizeof(commandReply));

struct commandBlock {
    std::int32_t result;  // 0: a worker ran; resultNotRun; as preset when nobody answered
    std::uint32_t command;
    commandReply* reply;
    commandArgs* args;
};

/// Field `index`, from 0, of those that come in numbers.
[[nodiscard]] inline std::uint8_t& flagAt(commandArgs& args, unsigned index) {
    std::uint8_t* const flags[] = {&args.flag0, &args.flag1, &args.flag2, &args.flag3, &args.flag4};
    return *flags[index];
}
[[nodiscard]] inline std::uint32_t& numberAt(commandArgs& args, unsigned index) {
    std::uint32_t* const numbers[] = {&args.num0, &args.num1, &args.num2, &args.num3};
    return *numbers[index];
}
[[nodiscard]] inline std::uint8_t* textAt(commandArgs& args, unsigned index) {
    return index == 0 ? args.text0 : args.text1;
}
/// The items lie one behind the other, as their offsets above say.
[[nodiscard]] inline void*& itemAt(commandArgs& args, unsigned index) {
    auto* const first = reinterpret_cast<std::byte*>(&args) + offsetof(commandArgs, item0);
    return *reinterpret_cast<void**>(first + index * sizeof(void*));
}

/// A four-character signature as the number that it is stored as: 'AQMw' is 0x41514D77.
constexpr std::uint32_t signatureOf(const char (&text)[5]) {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8 | static_cast<std::uint8_t>(text[i]);
    return value;
}

}  // namespace tarnova
