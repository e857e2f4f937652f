#include "rules/rule_info.h"

#include "engine/module/execute.h"

namespace tarnova {

namespace {

constexpr std::uint32_t signatureRules = signatureOf("AQMw");

std::int16_t send(std::uint32_t command, void* first, void* second = nullptr, void* third = nullptr) {
    commandReply reply{};
    commandArgs args{};
    itemAt(args, 0) = first;
    itemAt(args, 1) = second;
    itemAt(args, 2) = third;
    commandBlock block{resultNobodyAnswered, command, &reply, &args};
    moduleCall(signatureRules, 0, block);
    return static_cast<std::int16_t>(block.result);
}

}  // namespace

std::int16_t getBoxRule(UIDRef frame, ruleInfoRec& info) {
    info = {};
    return send(rulesCmdGetBoxRule, &frame, &info);
}

std::int16_t setBoxRule(UIDRef frame, const ruleInfoRec& info) {
    ruleInfoRec sent = info;
    return send(rulesCmdSetBoxRule, &frame, &sent);
}

std::int16_t setPageRule(UIDRef document, std::int32_t pageNumber, const ruleInfoRec& info) {
    ruleInfoRec sent = info;
    return send(rulesCmdSetPageRule, &document, &pageNumber, &sent);
}

void forgetBoxRule(UIDRef frame) {
    static_cast<void>(send(rulesCmdForgetBoxRule, &frame));
}

void forgetPageRule(UIDRef document, std::int32_t pageIndex) {
    static_cast<void>(send(rulesCmdForgetPageRule, &document, &pageIndex));
}

}  // namespace tarnova
