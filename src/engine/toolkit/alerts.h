// What stands behind alerts, questions and the progress window. A program installs its own service; without one nothing
// is shown and each question gets its default answer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tarnova {

enum class alertKind : std::uint8_t { error, question };

struct alertRec {
    alertKind kind = alertKind::error;
    std::string key;                   // string key of the text; empty when a ready text was given
    std::uint16_t number = 0;          // entry of the error table; 0 when the text has another source
    std::string text;                  // UTF-8, parameters filled
    std::vector<std::string> buttons;  // in the order of their numbers; none for an alert that only says something
    int defaultButton = 1;             // number of the button, from 1
};

/// Answers to a picture or article that isn't where it should be.
enum class pictureAnswer : std::uint16_t { goOn = 0, abort = 1, noPrompt = 2, chooseFile = 3 };

struct pictureProblemRec {
    std::string text;           // UTF-8, parameters filled
    bool mayChooseFile = true;  // false leaves out Choose File: three buttons instead of four
};

class AlertService {
 public:
    virtual ~AlertService() = default;

    /// Shows an alert and gives the number of the pressed button, from 1.
    virtual int ask(const alertRec& alert) = 0;
    /// Shows the prompt of a missing picture. `chosenPath` gets the UTF-8 path of the answer chooseFile.
    virtual pictureAnswer askPicture(const pictureProblemRec& problem, std::string& chosenPath) = 0;

    /// The progress window. `percent` is 1 to 100. Opening it while it is open resets it.
    virtual void openStatus(const std::string& text) = 0;
    virtual void moveStatus(int percent) = 0;
    virtual void closeStatus() = 0;
    /// Switches on the part of the window that tells of a long wait.
    virtual void showStatusDetail() = 0;
    /// The user asks to stop what is under way, as with Escape in the window; asked between one item and the next.
    virtual bool cancelAsked() { return false; }

    /// Whether alerts are shown at all. The callers in messages.h set it for the time of an alert that must be seen.
    bool showAlerts() const { return showAlerts_; }
    void setShowAlerts(bool show) { showAlerts_ = show; }

 private:
    bool showAlerts_ = true;
};

/// The service in use: the installed one, else the silent one.
AlertService& alertService();
/// Puts `service` in use; null goes back to the silent one. It stays the caller's and must outlive its use.
void installAlertService(AlertService* service);

}  // namespace tarnova
