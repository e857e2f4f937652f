// Alerts and questions of an automation session: all are noted for the answer of the line, and questions take the
// answers that were queued.

#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <variant>
#include <vector>

#include "cli/exec/exec_json.h"
#include "engine/toolkit/alerts.h"
#include "engine/toolkit/choosers.h"

namespace tarnova {

class ExecAlerts final : public AlertService, public ChooserService {
 public:
    int ask(const alertRec& alert) override;
    pictureAnswer askPicture(const pictureProblemRec& problem, std::string& chosenPath) override;
    void openStatus(const std::string&) override {}
    void moveStatus(int) override {}
    void closeStatus() override {}
    void showStatusDetail() override {}
    bool chooseFile(const fileChoiceRec&, std::string& outPath) override { return choosePath(outPath); }
    /// With the queue empty the text stays as it was suggested.
    bool askText(const PMString&, std::size_t, std::string& text) override {
        return answers.empty() || choosePath(text);
    }

    /// Replaces the queue by an array of button indexes (from 0), paths or texts, and nulls. Throws ExecFault.
    void setAnswers(const rapidjson::Value& queue);
    /// A path or text from the queue; false: cancelled.
    bool choosePath(std::string& path);
    /// Writes the alerts since the last call as an array.
    void writeAll(ExecWriter& json);

 private:
    struct shownAlert {
        alertRec alert;
        int answer;  // index of the button, from 0
    };
    using Answer = std::variant<std::monostate, std::int64_t, std::string>;  // cancel, button, path

    std::deque<Answer> answers;
    std::vector<shownAlert> shown;
};

}  // namespace tarnova
