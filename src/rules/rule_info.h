// What the rules module holds for a frame or a page: the name of a rule, and a key.

#pragma once

#include <cstddef>
#include <cstdint>

#include "document/uid.h"
#include "engine/toolkit/pstring.h"

namespace tarnova {

inline constexpr std::uint32_t rulesCmdGetBoxRule = 2001;
inline constexpr std::uint32_t rulesCmdSetBoxRule = 2003;
inline constexpr std::uint32_t rulesCmdSetPageRule = 2004;
inline constexpr std::uint32_t rulesCmdForgetBoxRule = 2032;
inline constexpr std::uint32_t rulesCmdForgetPageRule = 2033;

struct ruleInfoRec {
    Str255 ruleName;
    Str64 key;
    std::uint8_t reserved321[3];
    std::int32_t state;  // 0: the entry is good
};
static_assert(offsetof(ruleInfoRec, state) == 324 && sizeof(ruleInfoRec) == 328);

// Each gives the module's answer: 0, a code of the module, or -1018 when there is no module.

/// The entry of a frame; `info` is cleared first.
[[nodiscard]] std::int16_t getBoxRule(UIDRef frame, ruleInfoRec& info);
[[nodiscard]] std::int16_t setBoxRule(UIDRef frame, const ruleInfoRec& info);
/// `pageNumber` counts from 1.
[[nodiscard]] std::int16_t setPageRule(UIDRef document, std::int32_t pageNumber, const ruleInfoRec& info);
/// Takes the entry away; one that isn't there, and a missing module, are no failure.
void forgetBoxRule(UIDRef frame);
/// `pageIndex` counts from 0.
void forgetPageRule(UIDRef document, std::int32_t pageIndex);

}  // namespace tarnova
