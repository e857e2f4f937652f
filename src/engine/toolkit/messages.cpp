#include "engine/toolkit/messages.h"

#include <algorithm>

#include "engine/toolkit/pstring.h"
#include "engine/toolkit/run_log.h"
#include "engine/toolkit/strings.h"
#include "engine/toolkit/text_encoding.h"
#include "engine/toolkit/toolkit_state.h"

namespace tarnova {

namespace {

// Alerts are on for as long as this lives, and afterwards as they were.
class AlertsShown {
 public:
    explicit AlertsShown(AlertService& service) : service_(service), before_(service.showAlerts()) {
        service_.setShowAlerts(true);
    }
    ~AlertsShown() { service_.setShowAlerts(before_); }
    AlertsShown(const AlertsShown&) = delete;
    AlertsShown& operator=(const AlertsShown&) = delete;

 private:
    AlertService& service_;
    bool before_;
};

int askShown(const alertRec& alert) {
    AlertService& service = alertService();
    const AlertsShown shown(service);
    return service.ask(alert);
}

void showError(const alertRec& alert) {
    const toolkitStateRec& state = toolkitState();
    if (state.unattended != 0) runLogAppend(alert.text);
    if (state.unattended == 0 || state.showAlertsUnattended != 0) askShown(alert);
}

bool inErrorTable(errorWord number) {
    return number >= 1 && number < errorLimit;
}

alertRec errorAlert(errorWord number) {
    alertRec alert;
    alert.key = errorKey(number);
    alert.number = number;
    return alert;
}

bool askAlert(const std::string& key, const std::string& text, bool yesNo, int defaultButton) {
    alertRec alert;
    alert.kind = alertKind::question;
    alert.key = key;
    alert.text = text;
    if (yesNo) {
        alert.buttons = {std::string(stringOfKey("Yes")), std::string(stringOfKey("No"))};
    } else {
        alert.buttons = {std::string(stringOfKey("kZavoContinueButtonTitleKey")),
                         std::string(stringOfKey("kZavoAbortButtonTitleKey"))};
    }
    alert.defaultButton = std::clamp(defaultButton, 1, 2);
    return askShown(alert) == 1;
}

}  // namespace

std::string messageKey(std::uint16_t number) {
    if (number < 1 || number >= messageLimit) return {};
    return "kZavoMsgStr" + std::to_string(number) + "Key";
}

std::string errorKey(errorWord number) {
    if (!inErrorTable(number)) return {};
    return "kZavoErrStr" + std::to_string(number) + "Key";
}

void messageText(std::uint8_t* out, std::uint16_t number) {
    pstrFromPm(messageString(number), out);
}

PMString messageString(std::uint16_t number) {
    return PMString(stringOfKey(messageKey(number)));
}

PMString errorString(errorWord number) {
    return PMString(stringOfKey(errorKey(number)));
}

PMString fillMarkers(std::string_view text, const std::uint8_t* p1, const std::uint8_t* p2, const std::uint8_t* p3) {
    const std::uint8_t* const parameters[] = {p1, p2, p3};
    std::string out;
    while (!text.empty()) {
        const std::size_t caret = std::min(text.find('^'), text.size());
        out.append(text.substr(0, caret));
        text.remove_prefix(caret);
        if (text.empty()) break;
        const char marker = text.size() > 1 ? text[1] : '\0';
        if (marker >= '1' && marker <= '3') out.append(pstrView(parameters[marker - '1']));
        std::size_t markerLength = 1;
        if (text.size() > 1) nextCodePoint(text, markerLength);
        text.remove_prefix(markerLength);
    }
    return PMString(out);
}

void reportError(const std::uint8_t* text, errorWord number) {
    if (text == nullptr) {
        reportErrorParams(nullptr, number, nullptr);
        return;
    }
    alertRec alert;
    alert.text = pstrString(text);
    showError(alert);
}

std::uint16_t reportErrorParams(const std::uint8_t* text, errorWord number, const std::uint8_t* p1,
                                const std::uint8_t* p2, const std::uint8_t* p3) {
    if (text == nullptr && !inErrorTable(number)) return 0;
    alertRec alert = text == nullptr ? errorAlert(number) : alertRec{};
    alert.text = fillMarkers(text == nullptr ? stringOfKey(alert.key) : pstrView(text), p1, p2, p3).bytes();
    showError(alert);
    return 1;
}

void reportErrorString(const PMString& text) {
    if (text.empty()) return;
    alertRec alert;
    if (text.translatable()) alert.key = text.bytes();
    alert.text = PMString(text).translate().bytes();
    showError(alert);
}

void reportErrorKey(std::string_view key, const PMString* p0, const PMString* p1, const PMString* p2,
                    const PMString* p3) {
    if (key.empty()) return;
    alertRec alert;
    alert.key = key;
    PMString text = PMString::ofKey(key);
    pmSubstitute(text, p0, p1, p2, p3);
    alert.text = text.bytes();
    showError(alert);
}

void surfaceError() {
    toolkitStateRec& state = toolkitState();
    if (state.engineError == 0) return;
    const errorWord error = state.engineError;
    Str255 param;
    pstrCopy(param, state.pendingErrorParam);
    // Cleared first: the alert may run code that comes here again.
    state.engineError = 0;
    state.pendingErrorParam[0] = 0;
    reportErrorParams(nullptr, error, param);
}

bool askChoice(const std::uint8_t* text, bool yesNo, int defaultButton, const std::uint8_t* p1, const std::uint8_t* p2,
               const std::uint8_t* p3) {
    return askAlert({}, fillMarkers(pstrView(text), p1, p2, p3).bytes(), yesNo, defaultButton);
}

bool askChoice(const PMString& text, bool yesNo, int defaultButton) {
    const std::string key = text.translatable() ? text.bytes() : std::string();
    return askAlert(key, PMString(text).translate().bytes(), yesNo, defaultButton);
}

bool askChoiceKey(std::string_view key, bool yesNo, int defaultButton) {
    return askChoice(PMString(key, true), yesNo, defaultButton);
}

pictureAnswer askPictureProblem(const std::uint8_t* text, const std::uint8_t* p1, const std::uint8_t* p2,
                                const std::uint8_t* p3, std::string* chosenPath) {
    pictureProblemRec problem;
    problem.text = fillMarkers(pstrView(text), p1, p2, p3).bytes();
    problem.mayChooseFile = chosenPath != nullptr;
    AlertService& service = alertService();
    const AlertsShown shown(service);
    std::string path;
    const pictureAnswer answer = service.askPicture(problem, path);
    if (answer != pictureAnswer::chooseFile) return answer;
    if (chosenPath == nullptr || path.empty()) return pictureAnswer::goOn;
    *chosenPath = path;
    return answer;
}

errorWord statusDialog(const PMString& text, int percent, bool active, bool showDetail, errorWord priorError) {
    if (!active || (priorError != 0 && percent >= 0)) return priorError;
    AlertService& service = alertService();
    if (percent < 0) {
        service.closeStatus();
    } else if (percent == 0) {
        service.openStatus(PMString(text).translate().bytes());
    } else {
        service.moveStatus(std::min(percent, 100));
    }
    if (showDetail && percent >= 0) service.showStatusDetail();
    return priorError;
}

}  // namespace tarnova
