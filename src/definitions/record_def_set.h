// Record definition sets: making and discarding them, finding what they hold, and changing it. A set is what one DDF
// holds. Names are equal without regard to ASCII case; lists are sorted byte by byte. Operations take the running error
// as their last argument and return it untouched when it isn't 0; an empty or null name finds nothing and is no error.
// Main thread only.

#pragma once

#include <cstddef>
#include <cstdint>

#include "definitions/record_def.h"
#include "engine/toolkit/types.h"

namespace tarnova {

struct definitionPoolRec;

// Running out of memory, by the kind of object.
inline constexpr errorWord errNoMemoryDefinition = 41;  // a set or a definition
inline constexpr errorWord errNoMemoryDefinitionString = 42;
inline constexpr errorWord errNoMemorySearchCriteria = 43;
inline constexpr errorWord errNoMemoryExtraction = 44;
inline constexpr errorWord errNoMemoryStyle = 98;
inline constexpr errorWord errNoMemoryRuleDataCopy = 316;  // the caller's copy
inline constexpr errorWord errNoMemoryRuleData = 317;

inline constexpr char definitionSignature[] = "TARNOVAJNT";  // marker of a definition made here

/// A node of a set's circular list of definitions.
struct recordDefNode {
    recordDefNode* next;
    recordDefNode* prev;
    const std::uint8_t* name;  // the definition's own name
    recordDefRec definition;
};

/// One loaded set. Definitions, their strings, records and rule data belong to `pool` and go with it.
struct recordDefSetRec {
    recordDefSetRec* next;  // circular list of sets by setName
    recordDefSetRec* prev;
    std::uint8_t* setName;  // file name of the DDF; Pascal string, owned by pool
    definitionPoolRec* pool;
    char setPath[definitionPathSize];  // full path of the DDF, UTF-8
    std::uint8_t dirty;                // 1: has changes that are not on disk
    recordDefNode* definitions;        // first by name; null when the set is empty
};

// Sets.

/// Makes an empty set and inserts it by name into the circular list whose head is `list` (null: an empty list).
/// `setPath` may be null; a path of more than 1,023 bytes is cut. Errors: errNoMemoryDefinition,
/// errNoMemoryDefinitionString.
[[nodiscard]] errorWord recordDefSetNew(const std::uint8_t* setName, const char* setPath, recordDefSetRec*& list,
                                        recordDefSetRec*& set, errorWord priorError);

/// Takes `set` out of `list` and frees it with all that it holds; `list` is then the next set, or null. A
/// currentRecordDef that lies in it becomes null. Always does its work; a null set is ignored.
void recordDefSetDiscard(recordDefSetRec*& list, recordDefSetRec* set);

/// Gives the set another name, in the same place of the list. Error: errNoMemoryDefinitionString.
[[nodiscard]] errorWord recordDefSetRename(recordDefSetRec& set, const std::uint8_t* setName, errorWord priorError);

// Definitions of a set.

/// The definition with that name, or null. With several that differ only in case, the first in list order.
[[nodiscard]] errorWord findRecordDef(const recordDefSetRec* set, const std::uint8_t* name, recordDefRec*& definition,
                                      errorWord priorError);

/// The definition at `index` (from 0) in list order, or null.
[[nodiscard]] errorWord recordDefAt(const recordDefSetRec* set, std::int32_t index, recordDefRec*& definition,
                                    errorWord priorError);

[[nodiscard]] std::int32_t recordDefCount(const recordDefSetRec* set);

/// Adds an empty definition in its place by name, with the values that a new one starts with: signature, delimiter ",",
/// case-sensitive keys, text qualifier on with the double quote, HTTP source "URL", empty rule data. Neither criteria,
/// links nor styles, and the dirty flag is left alone. Errors: errNoMemoryDefinition, errNoMemoryDefinitionString,
/// errNoMemoryRuleData.
[[nodiscard]] errorWord recordDefNew(recordDefSetRec& set, const std::uint8_t* name, recordDefRec*& definition,
                                     errorWord priorError);

/// Adds a copy of `source`, which may lie in another set, with records and rule data of its own, under `name`.
/// The dirty flag is left alone. Errors: as recordDefNew, errNoMemorySearchCriteria, errNoMemoryExtraction,
/// errNoMemoryStyle.
[[nodiscard]] errorWord recordDefCopy(recordDefSetRec& set, const recordDefRec& source, const std::uint8_t* name,
                                      recordDefRec*& definition, errorWord priorError);

/// Puts `source` over the fixed part of `definition`, which keeps its own name, signature and rule data.
void overlayFixedPart(recordDefRec& definition, const recordDefFixedRec& source);

/// Takes `definition` out of `set` and frees it with its records and rule data. A currentRecordDef that points at it
/// becomes null. The dirty flag is left alone. Always does its work; null, or a definition of another set, is ignored.
void recordDefRemove(recordDefSetRec& set, recordDefRec* definition);

/// Gives a definition another name and moves it to its new place in the list. An address of it stays good.
[[nodiscard]] errorWord recordDefRename(recordDefSetRec& set, recordDefRec& definition, const std::uint8_t* name,
                                        errorWord priorError);

/// Gives a definition of `set` another signature. Error: errNoMemoryDefinitionString.
[[nodiscard]] errorWord recordDefSetSignature(recordDefSetRec& set, recordDefRec& definition,
                                              const std::uint8_t* signature, errorWord priorError);

/// Creates the definition named defaultDefName, with one search criteria record, one variable link and one price style,
/// if the set has none of that name; the set is then dirty. Errors: as recordDefNew and the three of its records.
[[nodiscard]] errorWord ensureDefaultDefinition(recordDefSetRec* set, errorWord priorError);

/// Gives the first definition of the set one search criteria record, variable link and price style where it has none.
/// Adding one makes the set dirty. Errors: errNoMemorySearchCriteria, errNoMemoryExtraction, errNoMemoryStyle.
[[nodiscard]] errorWord ensureDefaultRecords(recordDefSetRec* set, errorWord priorError);

/// The same for any definition of `set`.
[[nodiscard]] errorWord ensureDefaultRecordsOf(recordDefSetRec& set, recordDefRec& definition, errorWord priorError);

// Records of a definition. None found: null.

[[nodiscard]] errorWord findSearchCriteria(const recordDefRec* definition, const std::uint8_t* name,
                                           searchCriteriaRec*& record, errorWord priorError);
[[nodiscard]] errorWord findExtraction(const recordDefRec* definition, const std::uint8_t* name, extractionRec*& record,
                                       errorWord priorError);
[[nodiscard]] errorWord findStyle(const recordDefRec* definition, const std::uint8_t* name, styleRec*& record,
                                  errorWord priorError);

[[nodiscard]] std::uint16_t searchCriteriaCount(const recordDefRec& definition);
[[nodiscard]] std::uint16_t extractionCount(const recordDefRec& definition);
[[nodiscard]] std::uint16_t styleCount(const recordDefRec& definition);

/// Adds a record named `name` to a definition of `set`, in its place by name behind any of the same name, cleared but
/// for the values that a new one starts with (a style's checkPrice and sizeSymbol). A full array takes no more:
/// `record` is null then, and that is no error. Errors: errNoMemorySearchCriteria, errNoMemoryExtraction,
/// errNoMemoryStyle.
[[nodiscard]] errorWord insertSearchCriteria(recordDefSetRec& set, recordDefRec& definition, const std::uint8_t* name,
                                             searchCriteriaRec*& record, errorWord priorError);
[[nodiscard]] errorWord insertExtraction(recordDefSetRec& set, recordDefRec& definition, const std::uint8_t* name,
                                         extractionRec*& record, errorWord priorError);
[[nodiscard]] errorWord insertStyle(recordDefSetRec& set, recordDefRec& definition, const std::uint8_t* name,
                                    styleRec*& record, errorWord priorError);

// The field list.

[[nodiscard]] std::uint16_t fieldCountOf(const recordDefFixedRec& definition);

/// Adds a field in its place by name, behind any of the same name. A full list and an empty name: nothing happens. A
/// name of more than 31 characters is cut.
void insertFieldName(recordDefFixedRec& definition, std::uint16_t fieldNumber, const std::uint8_t* name);

/// Number of the first field of that name, or -1.
[[nodiscard]] std::int32_t fieldNumberOf(const recordDefFixedRec& definition, const std::uint8_t* name);

/// First name in list order of the field with that number; an empty Pascal string when the field has no name. Valid as
/// long as the list is unchanged.
[[nodiscard]] const std::uint8_t* fieldNameOf(const recordDefFixedRec& definition, std::int32_t fieldNumber);

// Rule data.

/// Puts a copy of `bytes` in the place of a definition's rule data; `data` is its ruleSetData or ruleSetData2. The old
/// handle is freed. `bytes` may be null when `count` is 0. Error: errNoMemoryRuleData, which leaves the old data.
[[nodiscard]] errorWord setRuleData(blockHandle& data, const void* bytes, std::size_t count, errorWord priorError);

// Exchange blocks: how shell and dialogs reach the records. exchangeResult is cleared first; exchangeNotFound with
// error 0 says that a get found nothing. An unknown exchangeOp does nothing.

/// Work on the current definition of the session, found anew by its name. Op exchangeSet replaces the record named
/// `name`, or adds it: a link in its place by name, criteria and styles behind the last; a full array drops it without
/// a word. Set and delete make the set dirty. Errors: the one of the record's kind.
[[nodiscard]] errorWord extractionExchangeRun(extractionExchange& block, errorWord priorError);
[[nodiscard]] errorWord searchCriteriaExchangeRun(searchCriteriaExchange& block, errorWord priorError);
[[nodiscard]] errorWord styleExchangeRun(styleExchange& block, errorWord priorError);

/// Works on the session's set. Op exchangeDelete is followed by ensureDefaultDefinition. A save makes a new definition
/// from the source's records and the block's fixed part, sorts the block's field list, and then removes the old one of
/// the target name. Errors: as recordDefCopy, and errNoMemoryRuleDataCopy.
[[nodiscard]] errorWord recordDefExchangeRun(recordDefExchange& block, errorWord priorError);

}  // namespace tarnova
