// The current definition as commands see it. Own to this folder.

#pragma once

#include <string>
#include <string_view>

#include "definitions/record_def_set.h"

namespace tarnova {

/// Found anew by its name; null when there is none.
[[nodiscard]] recordDefRec* currentDefinition();

/// The link of that name, or null.
[[nodiscard]] const extractionRec* linkNamed(const recordDefRec& definition, std::string_view name);

/// A Pascal string of a definition as UTF-8: DDF files may hold either encoding.
[[nodiscard]] std::string hostText(const std::uint8_t* text);

}  // namespace tarnova
