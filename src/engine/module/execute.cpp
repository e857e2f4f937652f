#include "engine/module/execute.h"

#include <cstring>
#include <exception>

#include "engine/module/command_call.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

constexpr std::uint32_t numberOpenDataFileMerge = 1209;  // clears `unattended` at its end

/// Commands whose answer follows later, through the driver's own door.
bool isDeferred(std::uint32_t number) {
    return (number >= 530 && number <= 534) || number == 570 || number == 572;
}

template <typename T>
void clearAt(void* at) {
    *static_cast<T*>(at) = T();
}

using clearItem = void (*)(void*);
void clearPascal(void* at) {
    *static_cast<std::uint8_t*>(at) = 0;
}
void leave(void*) {}

/// By argumentType. A C string of the sender has no size of its own, and no command gives one out through an item.
constexpr clearItem clearOfType[argumentTypeCount] = {
    clearAt<std::uint8_t>,
    clearAt<std::int16_t>,
    clearAt<std::uint16_t>,
    clearAt<std::int32_t>,
    clearAt<std::uint32_t>,
    clearAt<std::uint32_t>,
    clearAt<PMString>,
    clearPascal,
    leave,
    clearAt<char*>,
    clearAt<const char*>,
    clearAt<IDFile>,
    clearAt<UIDRef>,
    clearAt<UIDList>,
    clearAt<std::vector<PMString>>,
    clearAt<std::vector<std::int32_t>>,
    clearAt<std::vector<std::uint32_t>>,
    clearAt<std::vector<valueGroup>>,
};

void clearOutItems(const commandRow& row, commandArgs& args) {
    for (const commandArgument& argument : row.arguments) {
        if (argument.place != argumentPlace::item || argument.way != argumentWay::out) continue;
        void* const at = itemAt(args, argument.index);
        if (at != nullptr) clearOfType[static_cast<unsigned>(argument.type)](at);
    }
}

/// The worker's status. Nothing that it throws, running out of memory above all, leaves the engine.
std::int32_t statusOf(commandWorker worker, commandCall& call) {
    try {
        return worker(call);
    } catch (const std::bad_alloc&) {
        return commandMemory;
    } catch (const std::exception&) {
        return commandFailed;
    }
}

void runWorker(const commandRow& row, commandBlock& block) {
    commandReply ownReply{};
    commandArgs ownArgs{};
    commandReply& reply = block.reply != nullptr ? *block.reply : ownReply;
    commandCall call{block, reply, block.args != nullptr ? *block.args : ownArgs};
    clearOutItems(row, call.args);
    reply.status = row.worker == nullptr ? commandFailed : statusOf(row.worker, call);
}

void runSecondStage(const commandRow* row, commandBlock& block) {
    block.result = resultNotRun;
    if (block.reply == nullptr) return;
    block.reply->status = 0;
    if (row != nullptr && row->mode != commandMode::any) {
        const std::uint16_t mode = row->mode == commandMode::merge ? modeMerge : modePrice;
        block.reply->status = codeOfError(switchEngineMode(mode, true));
        if (block.reply->status != 0) return;
    }
    if (isDeferred(block.command)) {
        session().deferredCommand = block.command;
        session().deferredSignature = block.reply->callerSignature;
    }
    if (row != nullptr) runWorker(*row, block);
    block.result = 0;
}

void executeCommand(commandBlock& block) {
    const commandRow* const row = findCommand(block.command);
    if (row != nullptr && row->stage == commandStage::first) {
        block.result = 0;
        runWorker(*row, block);
    } else {
        runSecondStage(row, block);
    }
    surfaceError();
    if (block.command == numberOpenDataFileMerge) session().unattended = 0;
}

}  // namespace

void ZavoKelvaneModule::Execute(commandBlock& block) {
    executeCommand(block);
}

void ZavoTallyraModule::Execute(commandBlock& block) {
    executeCommand(block);
}

void registerModule(std::uint32_t signature, IZavoKelvaneModule* module) {
    auto& modules = session().companionModules;
    if (module == nullptr) {
        modules.erase(signature);
    } else {
        modules[signature] = module;
    }
}

void moduleCall(std::uint32_t signature, std::uint32_t, commandBlock& block) {
    const auto& modules = session().companionModules;
    const auto found = modules.find(signature);
    if (found != modules.end()) found->second->Execute(block);
}

void commandCall::putPascal(unsigned index, std::string_view text) const {
    if (auto* const at = item<std::uint8_t>(index)) pstrFromView(at, sizeof(Str255), text);
}

bool commandCall::putOwned(unsigned index, std::string_view text) const {
    char** const at = item<char*>(index);
    if (at == nullptr) return true;
    auto* const copy = static_cast<char*>(newBlock(text.size() + 1));
    if (copy == nullptr) return false;
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = 0;
    *at = copy;
    return true;
}

std::int32_t failWith(errorWord error, std::int32_t code) {
    if (session().engineError == 0) session().engineError = error;
    return code;
}

}  // namespace tarnova
