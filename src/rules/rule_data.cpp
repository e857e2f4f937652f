#include "rules/rule_data.h"

#include "definitions/record_def.h"
#include "engine/module/execute.h"
#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

constexpr std::uint32_t signatureRules = signatureOf("AQMw");
constexpr std::int16_t rulesOtherVersion = -1024;

void showFailure(std::int16_t answer) {
    if (errorOfCode(answer) == errHandleAllocation) return reportErrorKey("kZavoRulesModuleMemoryError");
    if (answer == rulesOtherVersion) return reportErrorKey("kZavoRulesModuleVersionError");
    const PMString number(std::to_string(answer));
    reportErrorKey("kZavoRulesModuleError", &number);
}

}  // namespace

void putDefinitionRules(const recordDefRec* definition) {
    commandReply reply{};
    commandArgs args{};
    Str31 name;
    std::uint32_t size = 0;
    if (definition != nullptr) {
        pstrCopyBounded(name, definition->name, sizeof name);
        const blockHandle data = definition->ruleSetData2;
        size = static_cast<std::uint32_t>(handleSize(data));
        itemAt(args, 0) = name;
        itemAt(args, 1) = data != nullptr ? *data : nullptr;
        itemAt(args, 2) = &size;
    }
    commandBlock block{resultNobodyAnswered, rulesCmdPutRuleData, &reply, &args};
    moduleCall(signatureRules, 0, block);
    if (block.result != 0 && block.result != resultNobodyAnswered) showFailure(static_cast<std::int16_t>(block.result));
}

}  // namespace tarnova
