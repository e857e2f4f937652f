// Numbered messages and errors, alerts, questions and progress. Texts are UTF-8; Pascal strings are cut at 255 bytes,
// between characters.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/toolkit/alerts.h"
#include "engine/toolkit/pm_string.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr std::uint16_t messageLimit = 237;  // messages are 1 to 236
inline constexpr std::uint16_t errorLimit = 378;    // errors are 1 to 377

/// Key of message or error `number`; empty outside the range.
std::string messageKey(std::uint16_t number);
std::string errorKey(errorWord number);

/// Text of message `number`; empty outside the range.
void messageText(std::uint8_t* out, std::uint16_t number);
PMString messageString(std::uint16_t number);
/// Text of error `number`, markers unfilled; empty outside the range.
PMString errorString(errorWord number);

/// Replaces each "^1", "^2", "^3" of `text` by its parameter, by nothing when that is null. Any other character behind
/// a "^" is dropped together with it. Markers inside a parameter are text.
PMString fillMarkers(std::string_view text, const std::uint8_t* p1, const std::uint8_t* p2 = nullptr,
                     const std::uint8_t* p3 = nullptr);

/// Shows `text`, or error `number` when `text` is null; with neither a text nor a number of the table it does nothing.
/// Shown unless nobody watches (`unattended` without `showAlertsUnattended`); `unattended` also writes the run log.
void reportError(const std::uint8_t* text, errorWord number);
/// The same with the markers filled. Returns 1, or 0 when there was nothing to show.
std::uint16_t reportErrorParams(const std::uint8_t* text, errorWord number, const std::uint8_t* p1,
                                const std::uint8_t* p2 = nullptr, const std::uint8_t* p3 = nullptr);
/// The same alert with a ready text, and with a string key whose markers "^0" to "^3" are filled as pmSubstitute does.
/// An empty text shows nothing.
void reportErrorString(const PMString& text);
void reportErrorKey(std::string_view key, const PMString* p0 = nullptr, const PMString* p1 = nullptr,
                    const PMString* p2 = nullptr, const PMString* p3 = nullptr);

/// Reports `engineError`, with `pendingErrorParam` as "^1" when that isn't empty, and clears both.
void surfaceError();

/// A question with two buttons: Yes and No, else Continue and Abort. True when the first of them was pressed.
/// `defaultButton` is 1 or 2. It always shows; whether to ask at all while nobody watches is for the caller to test.
bool askChoice(const std::uint8_t* text, bool yesNo, int defaultButton, const std::uint8_t* p1 = nullptr,
               const std::uint8_t* p2 = nullptr, const std::uint8_t* p3 = nullptr);
bool askChoice(const PMString& text, bool yesNo, int defaultButton);
bool askChoiceKey(std::string_view key, bool yesNo, int defaultButton);

/// The prompt for a picture or article that isn't found; markers as in fillMarkers. `chosenPath` gets the path of the
/// answer chooseFile; when it is null that button is left out.
pictureAnswer askPictureProblem(const std::uint8_t* text, const std::uint8_t* p1, const std::uint8_t* p2,
                                const std::uint8_t* p3, std::string* chosenPath);

/// The progress window. `percent` 0 opens it, or resets it, with `text`; above 0 moves it (more than 100 is 100); below
/// 0 closes it. `showDetail` switches the part for long waits on. Without `active` nothing happens, and with an error
/// only a close does. Returns `priorError`.
errorWord statusDialog(const PMString& text, int percent, bool active, bool showDetail, errorWord priorError);

}  // namespace tarnova
