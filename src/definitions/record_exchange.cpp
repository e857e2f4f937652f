// The exchange blocks, by which shell and dialogs read and change a definition.

#include <cstring>

#include "definitions/definition_state.h"
#include "definitions/record_lists.h"

namespace tarnova {

namespace {

bool namesNothing(const std::uint8_t* name) {
    return name[0] == 0;
}

/// A new link stands in its place by name; criteria and styles stand behind the last until the DDF is read again.
template <typename Record>
std::size_t placeOfNewRecord(const recordDefRec& definition, const std::uint8_t*) {
    return recordCount<Record>(definition);
}
template <>
std::size_t placeOfNewRecord<extractionRec>(const recordDefRec& definition, const std::uint8_t* name) {
    return recordPlace<extractionRec>(definition, name);
}

template <typename Block>
void getRecord(Block& block, const recordDefRec* definition) {
    using Record = decltype(block.record);
    const std::int32_t index = definition != nullptr ? recordIndex<Record>(*definition, block.name) : -1;
    if (index < 0) {
        block.exchangeResult = exchangeNotFound;
        return;
    }
    block.record = *recordsOf<Record>(*definition)[static_cast<std::size_t>(index)];
}

template <typename Block>
errorWord setRecord(const Block& block, recordDefSetRec& set, recordDefRec& definition) {
    using Record = decltype(block.record);
    const std::int32_t index = recordIndex<Record>(definition, block.name);
    Record* record = nullptr;
    if (index >= 0) {
        record = recordsOf<Record>(definition)[static_cast<std::size_t>(index)];
    } else {
        const std::size_t place = placeOfNewRecord<Record>(definition, block.name);
        const errorWord err = addRecordAt(set, definition, place, block.name, record, 0);
        if (err != 0) return err;
    }
    set.dirty = 1;
    if (record == nullptr) return 0;
    *record = block.record;
    std::memset(record->name, 0, sizeof(record->name));
    pstrCopyBounded(record->name, block.name, sizeof(record->name));
    return 0;
}

template <typename Block>
errorWord runRecordExchange(Block& block, errorWord priorError) {
    if (priorError != 0) return priorError;
    block.exchangeResult = 0;
    const errorWord err = reselectCurrentRecordDef(0);
    if (err != 0) return err;
    recordDefSetRec* const set = definitionState().currentDefSet;
    recordDefRec* const definition = definitionState().currentRecordDef;
    if (block.exchangeOp == exchangeGet) getRecord(block, definition);
    if (definition == nullptr || namesNothing(block.name)) return 0;
    if (block.exchangeOp == exchangeSet) return setRecord(block, *set, *definition);
    if (block.exchangeOp != exchangeDelete) return 0;
    const std::int32_t index = recordIndex<decltype(block.record)>(*definition, block.name);
    if (index >= 0) {
        removeRecordAt<decltype(block.record)>(*set, *definition, static_cast<std::size_t>(index));
    }
    set->dirty = 1;
    return 0;
}

errorWord getDefinition(recordDefExchange& block, const recordDefSetRec& set) {
    recordDefRec* definition = nullptr;
    errorWord err = findRecordDef(&set, block.name, definition, 0);
    blockHandle* const callersHandle = exchangeRuleData(block);
    if (callersHandle != nullptr) *callersHandle = nullptr;
    if (err != 0 || definition == nullptr) {
        block.exchangeResult = exchangeNotFound;
        return err;
    }
    block.record = *definition;
    setExchangeRuleData(block, callersHandle);
    if (callersHandle == nullptr || definition->ruleSetData2 == nullptr) return 0;
    blockHandle copy = definition->ruleSetData2;
    if (cloneHandle(copy) != 0) return errNoMemoryRuleDataCopy;
    *callersHandle = copy;
    return 0;
}

void rebuildFieldList(recordDefFixedRec& definition, const recordDefFixedRec& brought) {
    std::memset(definition.fields, 0, sizeof(definition.fields));
    for (const fieldNameEntry& entry : brought.fields) {
        insertFieldName(definition, entry.fieldNumber, entry.fieldName);
    }
}

errorWord overlayBlock(recordDefRec& definition, const recordDefExchange& block) {
    overlayFixedPart(definition, block.record);
    rebuildFieldList(definition, block.record);
    const blockHandle* const brought = exchangeRuleData(block);
    if (brought == nullptr || *brought == nullptr) return 0;
    return setRuleData(definition.ruleSetData2, **brought, handleSize(*brought), 0);
}

/// A copy of `source` under the block's target name, or a new definition with its first records.
errorWord makeTarget(const recordDefExchange& block, recordDefSetRec& set, const recordDefRec* source,
                     recordDefRec*& made) {
    if (source != nullptr) return recordDefCopy(set, *source, block.name, made, 0);
    errorWord err = recordDefNew(set, block.name, made, 0);
    if (err != 0) return err;
    err = ensureDefaultRecordsOf(set, *made, err);
    if (block.record.signature == nullptr) return err;
    return recordDefSetSignature(set, *made, block.record.signature, err);
}

errorWord saveDefinition(const recordDefExchange& block, recordDefSetRec& set) {
    recordDefRec* target = nullptr;
    recordDefRec* source = nullptr;
    errorWord err = findRecordDef(&set, block.name, target, 0);
    err = findRecordDef(&set, block.record.name, source, err);
    recordDefRec* made = nullptr;
    if (err == 0) err = makeTarget(block, set, source, made);
    if (err == 0) err = overlayBlock(*made, block);
    if (err != 0) return err;
    recordDefRemove(set, target);
    if (block.exchangeOp == exchangeSet && source != target) recordDefRemove(set, source);
    set.dirty = 1;
    return 0;
}

errorWord deleteDefinition(const recordDefExchange& block, recordDefSetRec& set) {
    recordDefRec* definition = nullptr;
    const errorWord err = findRecordDef(&set, block.name, definition, 0);
    if (err != 0) return err;
    if (definition != nullptr) {
        recordDefRemove(set, definition);
        set.dirty = 1;
    }
    return ensureDefaultDefinition(&set, 0);
}

errorWord runDefinitionExchange(recordDefExchange& block, recordDefSetRec& set) {
    if (block.exchangeOp == exchangeGet) return getDefinition(block, set);
    if (namesNothing(block.name)) return 0;
    if (block.exchangeOp == exchangeDelete) return deleteDefinition(block, set);
    if (block.exchangeOp == exchangeSaveKeeping) return saveDefinition(block, set);
    if (block.exchangeOp == exchangeSet && !namesNothing(block.record.name)) return saveDefinition(block, set);
    return 0;
}

}  // namespace

errorWord extractionExchangeRun(extractionExchange& block, errorWord priorError) {
    return runRecordExchange(block, priorError);
}

errorWord searchCriteriaExchangeRun(searchCriteriaExchange& block, errorWord priorError) {
    return runRecordExchange(block, priorError);
}

errorWord styleExchangeRun(styleExchange& block, errorWord priorError) {
    return runRecordExchange(block, priorError);
}

errorWord recordDefExchangeRun(recordDefExchange& block, errorWord priorError) {
    if (priorError != 0) return priorError;
    block.exchangeResult = 0;
    if (definitionState().currentDefSet == nullptr) {
        if (block.exchangeOp == exchangeGet) block.exchangeResult = exchangeNotFound;
        return 0;
    }
    const errorWord err = runDefinitionExchange(block, *definitionState().currentDefSet);
    const errorWord reselected = reselectCurrentRecordDef(0);
    return err != 0 ? err : reselected;
}

}  // namespace tarnova
