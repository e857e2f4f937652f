// Which document a command works on. Own to this folder.

#pragma once

#include "engine/module/command_call.h"

namespace tarnova {

/// The document of an item, or the one in front when that isn't given; nothing when there is none.
[[nodiscard]] UIDRef documentOrFront(const commandCall& call, unsigned item);

}  // namespace tarnova
