// The composer of stories: text and formats of the model in, positioned glyphs out.

#pragma once

#include <memory>

#include "host/model/story.h"

namespace tarnova {

/// A composer for `DocumentModel::setComposer`. It keeps no state of a document and may be shared by documents and
/// threads; what it learns of fonts and words is kept for each thread. The layout it makes is a `ComposedStory`. It
/// lets no exception out: `ComposedStory::fault` says what went wrong.
[[nodiscard]] std::shared_ptr<Composer> makeComposer();

}  // namespace tarnova
