// Workers of the commands that change links in bulk. Own to this folder.

#pragma once

#include "engine/module/command_call.h"

namespace tarnova {

/// Text tags of a document into links, or back.
std::int32_t convertTags(commandCall& call);

}  // namespace tarnova
