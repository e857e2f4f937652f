// Which variable links a document uses.

#pragma once

#include <string>
#include <vector>

#include "document/uid.h"

namespace tarnova {

/// Names of the links of all text and frame tags of the current store, each once, in the order of the walk. A tag that
/// can't be read gives no name.
[[nodiscard]] std::vector<std::string> linkNamesOf(UIDRef document);

}  // namespace tarnova
