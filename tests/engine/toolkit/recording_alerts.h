// An alert service that shows nothing, notes what it was given and answers as told. It is in use as long as it lives.
#pragma once

#include <string>
#include <vector>

#include "engine/toolkit/alerts.h"

namespace tarnova {

class RecordingAlerts final : public AlertService {
 public:
    RecordingAlerts() { installAlertService(this); }
    ~RecordingAlerts() override { installAlertService(nullptr); }
    RecordingAlerts(const RecordingAlerts&) = delete;
    RecordingAlerts& operator=(const RecordingAlerts&) = delete;

    int ask(const alertRec& alert) override {
        shown.push_back(alert);
        wasShown = showAlerts();
        return answer == 0 ? alert.defaultButton : answer;
    }
    pictureAnswer askPicture(const pictureProblemRec& problem, std::string& chosenPath) override {
        problems.push_back(problem);
        chosenPath = path;
        return picture;
    }
    void openStatus(const std::string& text) override { status += "open " + text + ";"; }
    void moveStatus(int percent) override { status += std::to_string(percent) + ";"; }
    void closeStatus() override { status += "close;"; }
    void showStatusDetail() override { status += "detail;"; }

    std::vector<int> numbers() const {
        std::vector<int> all;
        for (const alertRec& alert : shown)
            all.push_back(alert.number);
        return all;
    }
    std::vector<std::string> keys() const {
        std::vector<std::string> all;
        for (const alertRec& alert : shown)
            all.push_back(alert.key);
        return all;
    }

    std::vector<alertRec> shown;
    std::vector<pictureProblemRec> problems;
    int answer = 0;  // number of a button; 0: the default one
    pictureAnswer picture = pictureAnswer::goOn;
    std::string path;  // chosen in place of a picture
    std::string status;
    bool wasShown = false;
};

}  // namespace tarnova
