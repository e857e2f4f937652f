// The rules of a definition on their way to the rules module. The engine holds rule data as bytes that it doesn't read.

#pragma once

#include <cstdint>

namespace tarnova {

struct recordDefRec;

inline constexpr std::uint32_t rulesCmdPutRuleData = 2015;

/// Gives the module a definition's name and rule data; null leaves it without rules. Without a module nothing happens;
/// what the module answers else is shown.
void putDefinitionRules(const recordDefRec* definition);

}  // namespace tarnova
