#include "engine/module/current_definition.h"

#include "definitions/definition_state.h"
#include "engine/toolkit/text_encoding.h"

namespace tarnova {

recordDefRec* currentDefinition() {
    return reselectCurrentRecordDef(0) == 0 ? definitionState().currentRecordDef : nullptr;
}

const extractionRec* linkNamed(const recordDefRec& definition, std::string_view name) {
    Str255 wanted;
    pstrSet(wanted, name);
    extractionRec* link = nullptr;
    return findExtraction(&definition, wanted, link, 0) == 0 ? link : nullptr;
}

std::string hostText(const std::uint8_t* text) {
    const std::string_view bytes = pstrView(text);
    return isUtf8(bytes) ? std::string(bytes) : windows1252ToUtf8(bytes);
}

}  // namespace tarnova
