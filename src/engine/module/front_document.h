// Which document or object a command works on. Own to this folder.

#pragma once

#include "engine/module/command_call.h"

namespace tarnova {

/// The document in front; nothing when there is none.
[[nodiscard]] UIDRef frontDocument();

/// The document of an item, or the one in front when that isn't given.
[[nodiscard]] UIDRef documentOrFront(const commandCall& call, unsigned item);

/// Whether a reference leads to a page item.
[[nodiscard]] bool objectExists(const UIDRef& object);

}  // namespace tarnova
