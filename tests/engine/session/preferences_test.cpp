#include "engine/session/preferences.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <sstream>

#include "engine/session/session.h"
#include "engine/toolkit/strings.h"

namespace tarnova {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const appPrefsRec& prefs) {
    const auto* first = reinterpret_cast<const std::uint8_t*>(&prefs);
    return {first, first + sizeof prefs};
}

Bytes defaultBytes(std::uint16_t mode) {
    const auto prefs = std::make_unique<appPrefsRec>();
    writeDefaultPreferences(*prefs, mode, false);
    return bytesOf(*prefs);
}

// The file's numbers, byte by byte: where each stands, how wide it is, and what it is in the two modes.
constexpr char oddNumbers[] =
    "32 4 205 205  3126 1 12 12  3129 1 1 0  3133 1 0 1  3144 1 1 0  3150 1 1 0  3156 1 1 0  8617 1 1 0  "
    "8754 2 2 2  8764 4 5 5  8786 2 2 2  19072 4 4294967295 4294967295  19080 4 100 100  "
    "19084 4 4294967295 4294967295  19092 2 65535 65535  19613 4 16777217 16777217  19617 4 256 256  "
    "19636 4 16777473 16777473  19652 2 2 2  19734 2 2 2  19736 2 2 2  19738 2 2 2  19740 2 2 2  20552 4 20 20  "
    "20556 4 3 3  22120 4 16777216 19267584  22416 2 256 256  22616 4 1000 1000  22624 4 1000 1000  "
    "22634 2 1 1  24128 4 257 257  24132 4 99 99  24136 4 65537 65537  24140 4 218234881 218234881  "
    "24144 4 10 10  24608 4 65537 65537  24624 4 72 72  ";
constexpr std::size_t bytesOfOne[] = {3124,  3125,  3130,  3138,  3140,  3142,  3143,  3146,  3147,  3158,  3160,
                                      8625,  8626,  8627,  8752,  8768,  8769,  8770,  8771,  8773,  8775,  8780,
                                      8788,  8789,  8791,  19038, 19040, 19041, 19065, 19066, 19067, 19069, 19610,
                                      19632, 19650, 19658, 19694, 19698, 19702, 19703, 19705, 19706, 19707, 19708,
                                      19709, 19710, 19711, 19712, 19713, 19716, 19731, 19732, 19743, 19744, 19745,
                                      19746, 19747, 19749, 19750, 20011, 20700, 22124, 22126, 22137, 24630};
constexpr std::size_t shortsOfOne[] = {3134,  3136,  3148,  8776,  8778,  19628, 19700, 19714, 20026, 20032,
                                       20290, 20550, 20598, 20666, 22112, 22114, 22116, 24612, 26196};
constexpr std::size_t longsOfOne[] = {8628,  22128, 22132, 22152, 22412, 24124, 24148, 24600, 24616,
                                      24620, 26184, 26188, 26212, 26472, 27504, 28536, 29568};

// Pascal strings by offset.
struct textRow {
    std::size_t offset;
    std::string text;
};

std::vector<textRow> texts() {
    const auto key = [](std::string_view name) { return std::string(stringOfKey(name)); };
    const std::string none = key("kZavoDefaultNoneString");
    std::vector<textRow> all = {{0, "Ostreon Tag Display"},
                                {3162, none},
                                {3194, none},
                                {3234, none},
                                {8756, "_"},
                                {8782, "!"},
                                {19659, "Document"},
                                {19717, "ttxt"},
                                {20012, ".P"},
                                {22048, ".eps"},
                                {22419, "Copies"},
                                {22484, "Job Name"},
                                {22549, "copyfit"},
                                {22638, "PostScript\u00ae Driver Not Installed"},
                                {24280, "Untitled"},
                                {26180, "0"}};
    const char* extensions[] = {".indd", ".eps", ".pdf", ".ps", ".ppml", ".vps"};
    for (std::size_t i = 0; i < 6; ++i)
        all.push_back({8632 + 12 * i + 4, extensions[i]});
    const char* standIns[] = {"kZavoDefaultNoDataString", "kZavoDefaultNoMatchString", "kZavoDefaultBadTagString", "",
                              "kZavoDefaultEOFString",    "kZavoDefaultStackPadString"};
    for (std::size_t i = 0; i < 6; ++i) {
        const bool asset = i == 3;
        all.push_back({41 + 257 * i, key(asset ? "kZavoDefaultMissingArticleString" : standIns[i])});
        all.push_back({1583 + 257 * i, key(asset ? "kZavoDefaultMissingPictureString" : standIns[i])});
    }
    return all;
}

TEST(Preferences, DefaultsByteForByte) {
    for (const std::uint16_t mode : {modeMerge, modePrice}) {
        Bytes expected(prefsSizeBytes, 0);
        const auto put = [&](std::size_t offset, std::size_t width, std::uint32_t value) {
            for (std::size_t i = 0; i < width; ++i)
                expected[offset + i] = static_cast<std::uint8_t>(value >> 8 * i);
        };
        std::istringstream odd(oddNumbers);
        std::size_t at = 0, width = 0;
        for (std::uint32_t merge = 0, price = 0; odd >> at >> width >> merge >> price;)
            put(at, width, mode == modeMerge ? merge : price);
        for (const std::size_t offset : bytesOfOne)
            put(offset, 1, 1);
        for (const std::size_t offset : shortsOfOne)
            put(offset, 2, 1);
        for (const std::size_t offset : longsOfOne)
            put(offset, 4, 1);
        for (std::size_t i = 0; i < 12; ++i)
            put(40 + 257 * i, 1, 1);
        const std::uint32_t fileTypes[] = {1, 2, 3, 4, 5, 7};
        for (std::size_t i = 0; i < 6; ++i)
            put(8632 + 12 * i, 4, fileTypes[i]);
        for (const textRow& row : texts()) {
            expected[row.offset] = static_cast<std::uint8_t>(row.text.size());
            std::copy(row.text.begin(), row.text.end(), expected.begin() + static_cast<std::ptrdiff_t>(row.offset) + 1);
        }
        const Bytes written = defaultBytes(mode);
        ASSERT_EQ(written.size(), 30612U);
        for (std::size_t i = 0; i < prefsSizeBytes; ++i)
            EXPECT_EQ(written[i], expected[i]) << "offset " << i << ", mode " << mode;
    }
}

TEST(Preferences, KeepingTheDriversKeepsReservedBytesToo) {
    sessionReset();
    appPrefsRec& prefs = appPrefs();
    prefs.driverTable[0].driverId = 11007;
    prefs.driverTable[1].driverId = 11001;
    prefs.selectedDriverId = 11007;
    prefs.selectedDriverId2 = 11001;
    prefs.reserved8616 = 5;
    prefs.flagTextErrors = 2;
    prefs.modulePresence[6] = 1;
    resetPreferences(true);
    EXPECT_EQ(prefs.driverTable[0].driverId, 11007U);
    EXPECT_EQ(prefs.driverTable[1].driverId, 11001U);
    EXPECT_EQ(prefs.selectedDriverId, 11007U);
    EXPECT_EQ(prefs.selectedDriverId2, 11001U);
    EXPECT_EQ(prefs.reserved8616, 5);
    EXPECT_EQ(prefs.flagTextErrors, 1);
    EXPECT_EQ(prefs.modulePresence[6], 0);
    resetPreferences(false);
    EXPECT_EQ(bytesOf(prefs), defaultBytes(modeMerge));
    sessionReset();
}

}  // namespace
}  // namespace tarnova
