#include "definitions/record_def_set.h"

#include <cstring>

#include "definitions/definition_pool.h"
#include "definitions/definition_state.h"
#include "definitions/record_lists.h"
#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

constexpr std::uint16_t messageDefaultCriteriaName = 19;
constexpr std::uint16_t messageDefaultExtractionName = 20;
constexpr std::uint16_t messageDefaultStyleName = 32;

// The circular lists of sets and of definitions: `before` null appends.
template <typename Node>
void linkNode(Node*& first, Node* node, Node* before) {
    if (first == nullptr) {
        node->next = node->prev = first = node;
        return;
    }
    Node* const next = before != nullptr ? before : first;
    node->next = next;
    node->prev = next->prev;
    node->prev->next = node;
    next->prev = node;
    if (before == first) first = node;
}

template <typename Node>
void unlinkNode(Node*& first, Node* node) {
    if (node->next == node) {
        first = nullptr;
        return;
    }
    node->prev->next = node->next;
    node->next->prev = node->prev;
    if (first == node) first = node->next;
}

/// First node whose name sorts after `name`; null when there is none. Sorted input ends at the first look.
template <typename Node>
Node* nodeSortingAfter(Node* first, const std::uint8_t* name, const std::uint8_t* (*nameOf)(const Node&)) {
    if (first == nullptr || pstrCompare(nameOf(*first->prev), name) <= 0) return nullptr;
    Node* node = first;
    while (pstrCompare(nameOf(*node), name) <= 0)
        node = node->next;
    return node;
}

const std::uint8_t* nameOfSet(const recordDefSetRec& set) {
    return set.setName;
}

const std::uint8_t* nameOfNode(const recordDefNode& node) {
    return node.name;
}

template <typename Visit>
void forEachNode(const recordDefSetRec& set, Visit visit) {
    recordDefNode* node = set.definitions;
    if (node == nullptr) return;
    do {
        if (!visit(*node)) return;
        node = node->next;
    } while (node != set.definitions);
}

recordDefNode* nodeOf(const recordDefSetRec& set, const recordDefRec* definition) {
    recordDefNode* found = nullptr;
    forEachNode(set, [&](recordDefNode& node) {
        if (&node.definition == definition) found = &node;
        return found == nullptr;
    });
    return found;
}

/// Rule data lies in handles, which aren't the pool's.
void freeRuleData(recordDefRec& definition) {
    freeHandle(definition.ruleSetData);
    freeHandle(definition.ruleSetData2);
    definition.ruleSetData = definition.ruleSetData2 = nullptr;
    if (definitionState().currentRecordDef == &definition) definitionState().currentRecordDef = nullptr;
}

template <typename Record>
void freeRecords(definitionPoolRec& pool, recordDefRec& definition) {
    for (Record* record : recordsOf<Record>(definition))
        definitionPoolFree(pool, record);
}

template <typename Record>
errorWord copyRecords(recordDefSetRec& set, const recordDefRec& source, recordDefRec& definition,
                      errorWord priorError) {
    errorWord err = priorError;
    std::size_t index = 0;
    for (const Record* original : recordsOf<Record>(source)) {
        Record* copy = nullptr;
        err = addRecordAt(set, definition, index, original->name, copy, err);
        if (err != 0) return err;
        *copy = *original;
        ++index;
    }
    return err;
}

errorWord copyRuleData(blockHandle source, blockHandle& data, errorWord priorError) {
    if (priorError != 0 || source == nullptr) return priorError;
    return setRuleData(data, *source, handleSize(source), 0);
}

/// One record named by a message, unless the definition has one of the kind.
template <typename Record>
errorWord ensureRecord(recordDefSetRec& set, recordDefRec& definition, std::uint16_t messageOfName,
                       errorWord priorError) {
    if (priorError != 0 || recordCount<Record>(definition) != 0) return priorError;
    Str255 name{};
    messageText(name, messageOfName);
    Record* record = nullptr;
    const errorWord err = addRecordAt(set, definition, 0, name, record, 0);
    if (err == 0) set.dirty = 1;
    return err;
}

}  // namespace

errorWord recordDefSetNew(const std::uint8_t* setName, const char* setPath, recordDefSetRec*& list,
                          recordDefSetRec*& set, errorWord priorError) {
    if (priorError != 0) return priorError;
    set = nullptr;
    auto made = newRecord<recordDefSetRec>();
    if (made == nullptr) return errNoMemoryDefinition;
    made->pool = definitionPoolNew();
    if (made->pool == nullptr) return errNoMemoryDefinition;
    made->setName = definitionPoolString(*made->pool, setName);
    if (made->setName == nullptr) {
        definitionPoolDiscard(made->pool);
        return errNoMemoryDefinitionString;
    }
    if (setPath != nullptr) std::strncpy(made->setPath, setPath, definitionPathSize - 1);
    set = made.release();
    linkNode(list, set, nodeSortingAfter(list, set->setName, nameOfSet));
    return 0;
}

void recordDefSetDiscard(recordDefSetRec*& list, recordDefSetRec* set) {
    if (set == nullptr) return;
    forEachNode(*set, [](recordDefNode& node) {
        freeRuleData(node.definition);
        return true;
    });
    unlinkNode(list, set);
    definitionPoolDiscard(set->pool);
    freeBlock(set);
}

errorWord recordDefSetRename(recordDefSetRec& set, const std::uint8_t* setName, errorWord priorError) {
    if (priorError != 0) return priorError;
    std::uint8_t* const name = definitionPoolString(*set.pool, setName);
    if (name == nullptr) return errNoMemoryDefinitionString;
    definitionPoolFree(*set.pool, set.setName);
    set.setName = name;
    return 0;
}

errorWord findRecordDef(const recordDefSetRec* set, const std::uint8_t* name, recordDefRec*& definition,
                        errorWord priorError) {
    if (priorError != 0) return priorError;
    definition = nullptr;
    if (set == nullptr || name == nullptr || name[0] == 0) return 0;
    forEachNode(*set, [&](recordDefNode& node) {
        if (pstrEqualNoCase(node.name, name) == 0) definition = &node.definition;
        return definition == nullptr;
    });
    return 0;
}

errorWord recordDefAt(const recordDefSetRec* set, std::int32_t index, recordDefRec*& definition, errorWord priorError) {
    if (priorError != 0) return priorError;
    definition = nullptr;
    if (set == nullptr || index < 0) return 0;
    forEachNode(*set, [&](recordDefNode& node) {
        if (index-- == 0) definition = &node.definition;
        return definition == nullptr;
    });
    return 0;
}

std::int32_t recordDefCount(const recordDefSetRec* set) {
    std::int32_t count = 0;
    if (set == nullptr) return count;
    forEachNode(*set, [&](recordDefNode&) { return ++count > 0; });
    return count;
}

errorWord recordDefNew(recordDefSetRec& set, const std::uint8_t* name, recordDefRec*& definition,
                       errorWord priorError) {
    if (priorError != 0) return priorError;
    definition = nullptr;
    auto* node = static_cast<recordDefNode*>(definitionPoolAllocate(*set.pool, sizeof(recordDefNode)));
    if (node == nullptr) return errNoMemoryDefinition;
    recordDefRec& made = node->definition;
    pstrCopyBounded(made.name, name, sizeof(made.name));
    node->name = made.name;
    linkNode(set.definitions, node, nodeSortingAfter(set.definitions, node->name, nameOfNode));

    pstrSet(made.fDelimiter, ",");
    made.useKeyfieldCase = 1;
    made.textQualifier.enable = 1;
    pstrSet(made.textQualifier.string, "\"");
    pstrSet(made.httpDataSourceName, "URL");
    Str31 signature{};
    pstrSet(signature, definitionSignature);
    errorWord err = recordDefSetSignature(set, made, signature, 0);
    err = setRuleData(made.ruleSetData2, nullptr, 0, err);
    if (err == 0) definition = &made;
    return err;
}

errorWord recordDefCopy(recordDefSetRec& set, const recordDefRec& source, const std::uint8_t* name,
                        recordDefRec*& definition, errorWord priorError) {
    recordDefRec* copy = nullptr;
    errorWord err = recordDefNew(set, name, copy, priorError);
    if (err != 0) return err;
    overlayFixedPart(*copy, source);
    err = recordDefSetSignature(set, *copy, source.signature, err);
    err = copyRuleData(source.ruleSetData2, copy->ruleSetData2, err);
    err = copyRuleData(source.ruleSetData, copy->ruleSetData, err);
    err = copyRecords<searchCriteriaRec>(set, source, *copy, err);
    err = copyRecords<extractionRec>(set, source, *copy, err);
    err = copyRecords<styleRec>(set, source, *copy, err);
    definition = err == 0 ? copy : nullptr;
    return err;
}

void overlayFixedPart(recordDefRec& definition, const recordDefFixedRec& source) {
    Str31 name{};
    std::memcpy(name, definition.name, sizeof(name));
    std::uint8_t* const signature = definition.signature;
    const blockHandle ruleData = definition.ruleSetData2;
    static_cast<recordDefFixedRec&>(definition) = source;
    std::memcpy(definition.name, name, sizeof(name));
    definition.signature = signature;
    definition.ruleSetData2 = ruleData;
}

void recordDefRemove(recordDefSetRec& set, recordDefRec* definition) {
    recordDefNode* const node = nodeOf(set, definition);
    if (node == nullptr) return;
    unlinkNode(set.definitions, node);
    freeRuleData(*definition);
    freeRecords<searchCriteriaRec>(*set.pool, *definition);
    freeRecords<extractionRec>(*set.pool, *definition);
    freeRecords<styleRec>(*set.pool, *definition);
    definitionPoolFree(*set.pool, definition->signature);
    definitionPoolFree(*set.pool, node);
}

errorWord recordDefRename(recordDefSetRec& set, recordDefRec& definition, const std::uint8_t* name,
                          errorWord priorError) {
    if (priorError != 0) return priorError;
    recordDefNode* const node = nodeOf(set, &definition);
    if (node == nullptr) return 0;
    unlinkNode(set.definitions, node);
    pstrCopyBounded(definition.name, name, sizeof(definition.name));
    linkNode(set.definitions, node, nodeSortingAfter(set.definitions, node->name, nameOfNode));
    return 0;
}

errorWord recordDefSetSignature(recordDefSetRec& set, recordDefRec& definition, const std::uint8_t* signature,
                                errorWord priorError) {
    if (priorError != 0) return priorError;
    std::uint8_t* const text = definitionPoolString(*set.pool, signature);
    if (text == nullptr) return errNoMemoryDefinitionString;
    definitionPoolFree(*set.pool, definition.signature);
    definition.signature = text;
    return 0;
}

errorWord ensureDefaultDefinition(recordDefSetRec* set, errorWord priorError) {
    if (priorError != 0 || set == nullptr) return priorError;
    Str31 name{};
    defaultDefName(name);
    recordDefRec* definition = nullptr;
    errorWord err = findRecordDef(set, name, definition, 0);
    if (err != 0 || definition != nullptr) return err;
    err = recordDefNew(*set, name, definition, err);
    err = err == 0 ? ensureDefaultRecordsOf(*set, *definition, err) : err;
    if (err == 0) set->dirty = 1;
    return err;
}

errorWord ensureDefaultRecords(recordDefSetRec* set, errorWord priorError) {
    if (priorError != 0 || set == nullptr || set->definitions == nullptr) return priorError;
    return ensureDefaultRecordsOf(*set, set->definitions->definition, 0);
}

errorWord ensureDefaultRecordsOf(recordDefSetRec& set, recordDefRec& definition, errorWord priorError) {
    errorWord err = ensureRecord<searchCriteriaRec>(set, definition, messageDefaultCriteriaName, priorError);
    err = ensureRecord<extractionRec>(set, definition, messageDefaultExtractionName, err);
    return ensureRecord<styleRec>(set, definition, messageDefaultStyleName, err);
}

errorWord setRuleData(blockHandle& data, const void* bytes, std::size_t count, errorWord priorError) {
    if (priorError != 0) return priorError;
    const blockHandle made = newHandle(count);
    if (made == nullptr) return errNoMemoryRuleData;
    if (count > 0) std::memcpy(*made, bytes, count);
    freeHandle(data);
    data = made;
    return 0;
}

}  // namespace tarnova
