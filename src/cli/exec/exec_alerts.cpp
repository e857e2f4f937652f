#include "cli/exec/exec_alerts.h"

#include "cli/exec/exec_fault.h"

namespace tarnova {

/// A cancel is the last button, and so is an index behind it.
int ExecAlerts::ask(const alertRec& alert) {
    int answer = alert.defaultButton - 1;
    if (alert.kind == alertKind::question && !answers.empty()) {
        const auto last = static_cast<std::int64_t>(alert.buttons.size()) - 1;
        const auto* const button = std::get_if<std::int64_t>(&answers.front());
        answer = static_cast<int>(button == nullptr ? last : std::min(*button, last));
        answers.pop_front();
    }
    shown.push_back({alert, answer});
    return answer + 1;
}

pictureAnswer ExecAlerts::askPicture(const pictureProblemRec& problem, std::string& chosenPath) {
    constexpr std::int64_t lastAnswer = static_cast<std::int64_t>(pictureAnswer::chooseFile);
    alertRec alert;
    alert.kind = alertKind::question;
    alert.text = problem.text;
    auto answer = pictureAnswer::goOn;
    if (!answers.empty()) {
        if (const auto* const button = std::get_if<std::int64_t>(&answers.front()))
            answer = static_cast<pictureAnswer>(std::min(*button, lastAnswer));
        if (const auto* const path = std::get_if<std::string>(&answers.front())) {
            answer = pictureAnswer::chooseFile;
            chosenPath = *path;
        }
        answers.pop_front();
    }
    shown.push_back({alert, static_cast<int>(answer)});
    return answer;
}

void ExecAlerts::setAnswers(const rapidjson::Value& queue) {
    if (!queue.IsArray()) throw ExecFault("queue: an array is wanted, not " + kindOf(queue));
    std::deque<Answer> next;
    for (const rapidjson::Value& answer : queue.GetArray()) {
        if (answer.IsNull()) {
            next.emplace_back();
        } else if (answer.IsString()) {
            next.emplace_back(std::string(plainStringOf(answer, "queue")));
        } else {
            next.emplace_back(integerOf(answer, "queue", 0, 100));
        }
    }
    answers = std::move(next);
}

bool ExecAlerts::choosePath(std::string& path) {
    if (answers.empty()) return false;
    const auto* const chosen = std::get_if<std::string>(&answers.front());
    if (chosen != nullptr) path = *chosen;
    const bool isPath = chosen != nullptr;
    answers.pop_front();
    return isPath;
}

void ExecAlerts::writeAll(ExecWriter& json) {
    json.StartArray();
    for (const auto& [alert, answer] : shown) {
        json.StartObject();
        if (!alert.key.empty()) writeTextMember(json, "key", alert.key);
        if (alert.number != 0) {
            json.Key("number");
            json.Uint(alert.number);
        }
        writeTextMember(json, "text", alert.text);
        json.Key("buttons");
        json.StartArray();
        for (const std::string& button : alert.buttons)
            writeText(json, button);
        json.EndArray();
        json.Key("answer");
        json.Int(answer);
        json.EndObject();
    }
    json.EndArray();
    shown.clear();
}

}  // namespace tarnova
