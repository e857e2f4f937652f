#include "cli/exec/exec_host.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/describe_verb.h"
#include "cli/exec/exec_fields.h"
#include "cli/render_verb.h"
#include "engine/run/idle_step.h"
#include "engine/session/session.h"
#include "host/model/document_builder.h"

namespace tarnova {

namespace {

constexpr double newPageWidthPt = 612;  // US Letter
constexpr double newPageHeightPt = 792;
constexpr std::int64_t newPagesMost = 9999;

/// A request and what it works with.
struct hostCall {
    const rapidjson::Value& request;
    ExecDocuments& documents;
    ExecAlerts& alerts;
    ExecWriter& json;

    [[nodiscard]] std::int64_t handle() const { return integerMember(request, "document", 0, UINT32_MAX); }
    [[nodiscard]] DocumentModel& document() const { return documents.at(handle()); }
    void answer(const char* name, std::int64_t value) const {
        json.Key(name);
        json.Int64(value);
    }
};

void openDocument(const hostCall& call) {
    requireMembers(call.request, {"host", "path"});
    call.answer("document", call.documents.openFile(std::string(stringMember(call.request, "path"))));
}

void newDocument(const hostCall& call) {
    requireMembers(call.request, {"host", "pages"});
    const std::int64_t pages =
        memberOf(call.request, "pages") == nullptr ? 1 : integerMember(call.request, "pages", 1, newPagesMost);
    DocumentBuilder builder;
    for (std::int64_t i = 0; i < pages; ++i)
        builder.addSinglePage(newPageWidthPt, newPageHeightPt);
    call.answer("document", call.documents.add(builder.finish()));
}

void saveDocument(const hostCall& call) {
    requireMembers(call.request, {"host", "document", "path"});
    const bool under = memberOf(call.request, "path") != nullptr;
    const std::string path = under ? std::string(stringMember(call.request, "path")) : std::string();
    writeTextMember(call.json, "saved", call.documents.save(call.handle(), path));
}

void closeDocument(const hostCall& call) {
    requireMembers(call.request, {"host", "document"});
    DocumentModel& document = call.document();
    auto& run = session();
    if (runIsActive() && run.runDocument.database == &document) throw ExecFault("a run works on the document");
    if (run.runDocument.database == &document) {
        run.runDocument = kInvalidUIDRef;
        run.armedState = 0;
    }
    const std::int64_t handle = call.handle();
    call.documents.close(handle);
    call.answer("closed", handle);
}

void frontDocument(const hostCall& call) {
    requireMembers(call.request, {"host", "document"});
    if (memberOf(call.request, "document") != nullptr) call.documents.bringToFront(call.handle());
    call.json.Key("document");
    if (call.documents.front() == 0) {
        call.json.Null();
    } else {
        call.json.Uint(call.documents.front());
    }
}

void idleTurns(const hostCall& call) {
    requireMembers(call.request, {"host", "turns"});
    const std::int64_t most =
        memberOf(call.request, "turns") == nullptr ? INT32_MAX : integerMember(call.request, "turns", 0, INT32_MAX);
    std::int64_t turns = 0;
    const auto underWay = [] { return runIsActive() || session().priceStart != 0 || session().engineError != 0; };
    for (; turns < most && underWay(); ++turns)
        idleStep();
    call.answer("turns", turns);
    call.answer("runStage", session().runStage);
    call.json.Key("priceActive");
    call.json.Bool(session().priceActive != 0);
}

void queueAnswers(const hostCall& call) {
    requireMembers(call.request, {"host", "queue"});
    const rapidjson::Value* const queue = memberOf(call.request, "queue");
    if (queue == nullptr) throw ExecFault("the member \"queue\" is missing");
    call.alerts.setAnswers(*queue);
    call.answer("queued", queue->Size());
}

void describeDocument(const hostCall& call) {
    requireMembers(call.request, {"host", "document", "what"});
    const std::string_view what = stringMember(call.request, "what");
    const std::string described = describeAsJson(call.document(), what);
    if (described.empty()) throw ExecFault(fmt::format("what: \"{}\" can't be described", what));
    // The text is an object of one member.
    rapidjson::Document tree;
    tree.Parse(described);
    writeKey(call.json, what);
    tree.MemberBegin()->value.Accept(call.json);
}

void exportDocument(const hostCall& call) {
    requireMembers(call.request, {"host", "document", "path", "pages"});
    const std::string path(stringMember(call.request, "path"));
    const std::string pages(memberOf(call.request, "pages") == nullptr ? "" : stringMember(call.request, "pages"));
    std::int32_t count = 0;
    std::string error;
    if (!exportPages(call.document(), path, pages, count, error)) throw ExecFault(path + ": " + error);
    writeTextMember(call.json, "exported", path);
    call.answer("pages", count);
}

void writeStep(const hostCall& call, const std::optional<std::string>& step) {
    if (step) return writeTextMember(call.json, "step", *step);
    call.json.Key("step");
    call.json.Null();
}

void undoStep(const hostCall& call) {
    requireMembers(call.request, {"host", "document"});
    writeStep(call, call.document().undo());
}

void redoStep(const hostCall& call) {
    requireMembers(call.request, {"host", "document"});
    writeStep(call, call.document().redo());
}

std::int32_t numberMember(const rapidjson::Value& object, const char* name) {
    return static_cast<std::int32_t>(integerMember(object, name, 0, INT32_MAX));
}

/// An array of whole numbers; `what` names it in a fault.
std::vector<UID> numbersOf(const rapidjson::Value& value, std::string_view what) {
    if (!value.IsArray()) throw ExecFault(fmt::format("{}: an array is wanted, not {}", what, kindOf(value)));
    std::vector<UID> numbers;
    for (const rapidjson::Value& number : value.GetArray())
        numbers.push_back(static_cast<UID>(integerOf(number, what, 0, UINT32_MAX)));
    return numbers;
}

cellSelectionRec cellsOf(const rapidjson::Value& cells) {
    if (!cells.IsObject()) throw ExecFault("cells: an object is wanted, not " + kindOf(cells));
    requireMembers(cells, {"table", "top", "left", "bottom", "right"});
    return {static_cast<UID>(integerMember(cells, "table", 1, UINT32_MAX)),
            {numberMember(cells, "top"), numberMember(cells, "left"), numberMember(cells, "bottom"),
             numberMember(cells, "right")}};
}

/// Of a text, of frames or of cells; without any of them nothing is selected.
void select(const hostCall& call) {
    requireMembers(call.request, {"host", "document", "story", "start", "length", "frames", "cells"});
    DocumentModel& document = call.document();
    selectionRec selection;
    const auto* const frames = memberOf(call.request, "frames");
    const auto* const cells = memberOf(call.request, "cells");
    const bool isText = memberOf(call.request, "story") != nullptr;
    if (isText + (frames != nullptr) + (cells != nullptr) > 1)
        throw ExecFault("a story, frames or cells are wanted, and only one of them");
    if (isText) {
        selection.story = static_cast<UID>(integerMember(call.request, "story", 1, UINT32_MAX));
        selection.range = {numberMember(call.request, "start"), numberMember(call.request, "length")};
    }
    if (frames != nullptr) selection.items = numbersOf(*frames, "frames");
    if (cells != nullptr) selection.cells = cellsOf(*cells);
    DocumentHost& host = call.documents.host();
    if (host.select(document.ref(), selection) != 0) throw ExecFault(host.lastFailure());
    call.answer("document", call.handle());
}

void sessionFields(const hostCall& call) {
    runSessionRequest(call.request, call.json);
}

void preferences(const hostCall& call) {
    runPreferencesRequest(call.request, call.json);
}

struct hostRow {
    std::string_view name;
    void (*run)(const hostCall& call);
};
constexpr hostRow hostRows[] = {
    {"open", openDocument},         {"new", newDocument},       {"save", saveDocument},    {"close", closeDocument},
    {"front", frontDocument},       {"idle", idleTurns},        {"answers", queueAnswers}, {"select", select},
    {"describe", describeDocument}, {"export", exportDocument}, {"undo", undoStep},        {"redo", redoStep},
    {"session", sessionFields},     {"prefs", preferences},
};

}  // namespace

void runExecHost(const rapidjson::Value& request, ExecDocuments& documents, ExecAlerts& alerts, ExecWriter& json) {
    const std::string_view name = stringMember(request, "host");
    const auto* const row = std::find_if(std::begin(hostRows), std::end(hostRows),
                                         [name](const hostRow& known) { return known.name == name; });
    if (row == std::end(hostRows)) throw ExecFault(fmt::format("the host knows no \"{}\"", name));
    row->run({request, documents, alerts, json});
}

}  // namespace tarnova
