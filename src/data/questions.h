// Questions that the data folder asks. While nobody watches, no question is asked and the answer is yes. Own to this
// folder.
#pragma once

#include <cstdint>
#include <string_view>

#include "engine/toolkit/messages.h"
#include "engine/toolkit/toolkit_state.h"

namespace tarnova {

/// Whether questions have to do without a person.
inline bool nobodyAnswers() {
    return toolkitState().unattended != 0 && toolkitState().showAlertsUnattended == 0;
}

/// Asks message `number`, a question of yes and no.
inline bool askUnlessUnattended(std::uint16_t number) {
    return nobodyAnswers() || askChoice(messageString(number), true, 1);
}

/// The same for a string key.
inline bool askKeyUnlessUnattended(std::string_view key) {
    return nobodyAnswers() || askChoiceKey(key, true, 1);
}

}  // namespace tarnova
