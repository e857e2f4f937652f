// Alerts and progress of the program on a terminal: errors and questions go to standard error, questions take their
// default answer, and progress is a bar that is drawn only where somebody can see it.

#pragma once

#include <chrono>
#include <string>

#include "cli/interrupt.h"
#include "engine/toolkit/alerts.h"

namespace tarnova {

class ConsoleAlerts final : public AlertService {
 public:
    ConsoleAlerts();
    int ask(const alertRec& alert) override;
    pictureAnswer askPicture(const pictureProblemRec& problem, std::string& chosenPath) override;
    void openStatus(const std::string& text) override;
    void moveStatus(int percent) override;
    void closeStatus() override;
    void showStatusDetail() override {}
    bool cancelAsked() override { return wasInterrupted(); }

    /// Number of error alerts that were shown.
    [[nodiscard]] int errorCount() const { return errors; }

 private:
    void eraseBar();
    void draw(int percent);

    bool drawsBar;
    bool barVisible = false;
    int errors = 0;
    std::string title;
    std::chrono::steady_clock::time_point lastDrawn;
};

}  // namespace tarnova
