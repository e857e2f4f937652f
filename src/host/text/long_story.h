// Composition of long stories: no further than asked, and after a change only the columns that it reaches.
//
// A column is the unit. Its first line says all that the text behind it depends on (`FlowStart`), so composition stops
// where a column is full, and goes on from there. After a change it begins with the last column whose start can't have
// changed, and ends with the first that begins as one did before the change, with unchanged text behind: from there on
// the columns of before hold, moved by the length of the change.

#pragma once

#include <cstdint>
#include <memory>

#include "host/model/document_model.h"
#include "host/text/composed_parts.h"
#include "host/text/story_flow.h"

namespace tarnova {

/// Shorter stories are composed whole.
inline constexpr std::int32_t longStoryLength = 8192;  // characters

/// Composes at least through the position, which lies in the text, with what `story.layout` or `story.earlier` have.
/// `input` has the columns of the story's frames, and no text yet.
[[nodiscard]] std::shared_ptr<const ComposedParts> composeLongStory(const DocumentModel& document, const Story& story,
                                                                    ComposeInput& input, StoryFlow& flow,
                                                                    std::int32_t through);

}  // namespace tarnova
