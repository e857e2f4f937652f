// The member of a frame for the text on its path.

#pragma once

#include "host/files/json_values.h"
#include "host/files/json_writer.h"
#include "host/model/story.h"

namespace tarnova {

/// The text on a path while it is read; what isn't about its place is kept for the caller.
struct PathTextTarget {
    PathTextOptions options;
    const JsonValue* text = nullptr;
    const JsonValue* sharedText = nullptr;
    const JsonValue* storyUid = nullptr;
};

[[nodiscard]] PathTextTarget readPathText(const JsonValue& value);

/// Writes the members of the options into the object that is open.
void writePathTextOptions(JsonWriter& out, const PathTextOptions& options);

}  // namespace tarnova
