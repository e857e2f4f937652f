#include "cli/exec/exec_session.h"

#include <fmt/format.h>
#include <rapidjson/error/en.h>

#include <istream>
#include <ostream>

#include "cli/exec/exec_command.h"
#include "cli/exec/exec_host.h"
#include "engine/session/session.h"
#include "engine/toolkit/text_encoding.h"

namespace tarnova {

namespace {

// The session's hook is a plain function, so it finds the automation session here.
ExecAlerts* hookAlerts = nullptr;

bool pickFromQueue(const PMString&, std::string& path) {
    return hookAlerts->choosePath(path);
}

constexpr unsigned parseFlags =
    rapidjson::kParseIterativeFlag | rapidjson::kParseFullPrecisionFlag | rapidjson::kParseValidateEncodingFlag;

}  // namespace

ExecSession::ExecSession() : alertsBefore(&alertService()) {
    installAlertService(&alerts);
    installChooserService(&alerts);
    documents.setWatch(&watch);
    hookAlerts = &alerts;
    session().documentHost = &documents.host();
    session().pickDataFile = pickFromQueue;
}

ExecSession::~ExecSession() {
    session().documentHost = nullptr;
    session().pickDataFile = nullptr;
    session().runDocument = kInvalidUIDRef;
    installChooserService(nullptr);
    installAlertService(alertsBefore);
}

std::string ExecSession::errorAnswer(std::string_view reason) {
    anyError = true;
    rapidjson::StringBuffer buffer;
    ExecWriter json(buffer);
    json.StartObject();
    json.Key("error");
    writeText(json, fmt::format("line {}: {}", lineNumber, reason));
    json.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

std::string ExecSession::answerRequest(std::string_view line) {
    rapidjson::Document request;
    request.Parse<parseFlags>(line.data(), line.size());
    if (request.HasParseError())
        return errorAnswer(fmt::format("no JSON: {} (at byte {})", rapidjson::GetParseError_En(request.GetParseError()),
                                       request.GetErrorOffset() + 1));
    if (!request.IsObject()) return errorAnswer("a JSON object is wanted, not " + kindOf(request));
    rapidjson::StringBuffer buffer;
    ExecWriter json(buffer);
    json.StartObject();
    if (memberOf(request, "command") != nullptr) {
        runExecCommand(request, documents, alerts, json);
    } else if (memberOf(request, "host") != nullptr) {
        runExecHost(request, documents, alerts, json);
    } else {
        throw ExecFault("a member \"command\" or \"host\" is wanted");
    }
    json.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

std::optional<std::string> ExecSession::answer(std::string_view line) {
    ++lineNumber;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    const std::size_t start = line.find_first_not_of(" \t");
    if (start == std::string_view::npos || line[start] == '#') return std::nullopt;
    if (line.size() > execLineLimit) return errorAnswer(fmt::format("longer than {} bytes", execLineLimit));
    try {
        return answerRequest(line);
    } catch (const ExecFault& fault) {
        return errorAnswer(fault.what());
    }
}

void ExecSession::run(std::istream& in, std::ostream& out) {
    for (std::string line; std::getline(in, line);)
        if (const std::optional<std::string> text = answer(line)) out << *text << '\n' << std::flush;
}

}  // namespace tarnova
