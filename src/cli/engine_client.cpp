#include "cli/engine_client.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <utility>

#include "cli/job_setup.h"
#include "definitions/definition_state.h"
#include "definitions/record_def_set.h"
#include "engine/module/execute.h"
#include "engine/session/session.h"
#include "host/model/item_drawing.h"
#include "host/render/item_snapshot.h"
#include "host/text/composer.h"

namespace tarnova {

namespace {

constexpr std::uint32_t commandShowAlerts = 1213;
constexpr std::uint32_t commandAttachMergeMode = 1400;

/// Puts the set, which may be null, in the place of the one that the session has, and gives that.
recordDefSetRec* exchangeDefinitions(recordDefSetRec* set) {
    definitionStateRec& state = definitionState();
    state.currentRecordDef = nullptr;
    return std::exchange(state.currentDefSet, set);
}

}  // namespace

std::string programFolder() {
    std::error_code failure;
    return std::filesystem::read_symlink("/proc/self/exe", failure).parent_path().string();
}

std::string userDataFolder() {
    const char* const data = std::getenv("XDG_DATA_HOME");
    if (data != nullptr && *data == '/') return data;
    const char* const home = std::getenv("HOME");
    return std::string(home != nullptr ? home : "") + "/.local/share";
}

std::string startFailure(errorWord error) {
    return fmt::format("{}: {}", session().dataFolder, takeErrorText(error));
}

EngineClient::EngineClient() : host(makeComposer()) {
    setItemDrawing(drawItemTiff);
    const errorWord error = shell.Startup(programFolder(), userDataFolder());
    if (error != 0) sayError(startFailure(error));
    driver.emplace();
    session().prefsAreTemporary = 1;
    storedDefinitions = exchangeDefinitions(nullptr);
    session().documentHost = &host;
    std::uint8_t show = 1;
    EngineCommand(commandAttachMergeMode).run();
    EngineCommand(commandShowAlerts).item(0, show).run();
}

EngineClient::~EngineClient() {
    session().runDocument = kInvalidUIDRef;
    session().documentHost = nullptr;
    recordDefSetRec* own = exchangeDefinitions(storedDefinitions);
    while (own != nullptr)
        recordDefSetDiscard(own, own);
    if (const errorWord saving = shell.Shutdown(); saving != 0) sayError(takeErrorText(saving));
}

DocumentModel* EngineClient::open(const std::string& path) {
    std::unique_ptr<DocumentModel> document = openLayoutForVerb(path);
    return document == nullptr ? nullptr : &host.add(std::move(document), true);
}

EngineCommand::EngineCommand(std::uint32_t itsNumber) : number(itsNumber) {}

void EngineCommand::requireType(unsigned index, TypeSet types) const {
    const commandRow* const row = findCommand(number);
    const bool fits =
        row != nullptr && std::any_of(row->arguments.begin(), row->arguments.end(), [&](const auto& known) {
            return known.place == argumentPlace::item && known.index == index && (bitOf(known.type) & types) != 0;
        });
    if (!fits) throw std::logic_error(fmt::format("command {} has no item {} of this type", number, index));
}

std::int32_t EngineCommand::run() {
    commandBlock block{resultNobodyAnswered, number, &reply, &args};
    ZavoKelvaneModule().Execute(block);
    return reply.status;
}

}  // namespace tarnova
