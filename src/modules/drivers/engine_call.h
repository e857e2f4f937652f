// One command to the engine, in few words: an item, a number and a flag are set, and it is sent.

#pragma once

#include <cstdint>

#include "engine/module/execute.h"

namespace tarnova {

class EngineCall {
 public:
    /// The engine answers deferred commands to this signature.
    EngineCall(std::uint32_t command, std::uint32_t callerSignature) {
        block.command = command;
        reply.callerSignature = callerSignature;
    }
    EngineCall(const EngineCall&) = delete;
    EngineCall& operator=(const EngineCall&) = delete;

    /// What `item` points to stays the caller's and must live until `send`.
    EngineCall& item(unsigned index, void* item) {
        itemAt(args, index) = item;
        return *this;
    }
    EngineCall& number(unsigned index, std::int32_t value) {
        numberAt(args, index) = static_cast<std::uint32_t>(value);
        return *this;
    }
    EngineCall& flag(unsigned index, bool value) {
        flagAt(args, index) = value ? 1 : 0;
        return *this;
    }
    /// False when the command didn't run or gave a status other than 0.
    [[nodiscard]] bool send() {
        ZavoKelvaneModule().Execute(block);
        return block.result == 0 && reply.status == 0;
    }
    [[nodiscard]] std::int32_t numberOut(unsigned index) { return static_cast<std::int32_t>(numberAt(args, index)); }

 private:
    commandReply reply{};
    commandArgs args{};
    commandBlock block{resultNobodyAnswered, 0, &reply, &args};
};

}  // namespace tarnova
