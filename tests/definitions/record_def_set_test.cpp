#include "definitions/record_def_set.h"

#include "tests/definitions/definition_fixture.h"

namespace tarnova {

namespace {

using RecordDefSet = DefinitionTest;

TEST_F(RecordDefSet, DefinitionsStandByNameAndAreFoundWithoutCase) {
    for (const char* name : {"Orders", "orders", "Zoo", "Addresses", "Orders"})
        add(name);
    EXPECT_EQ(names(), "Addresses Orders Orders Zoo orders");
    recordDefRec* second = nullptr;
    ASSERT_EQ(recordDefAt(set_, 1, second, 0), 0);
    EXPECT_EQ(find("ORDERS"), second);
    EXPECT_EQ(find("Order"), nullptr);
    EXPECT_EQ(find(""), nullptr);
    EXPECT_EQ(recordDefCount(set_), 5);
    recordDefRec* none = second;
    EXPECT_EQ(recordDefAt(set_, 5, none, 0), 0);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(recordDefAt(set_, -1, none, 0), 0);
    EXPECT_EQ(none, nullptr);
}

TEST_F(RecordDefSet, RenameMovesAndRemoveCloses) {
    recordDefRec* b = add("b");
    add("a");
    add("c");
    ASSERT_EQ(recordDefRename(*set_, *b, Pascal("z"), 0), 0);
    EXPECT_EQ(names(), "a c z");
    ASSERT_EQ(recordDefRename(*set_, *b, Pascal("A"), 0), 0);
    EXPECT_EQ(names(), "A a c");
    recordDefRemove(*set_, b);
    EXPECT_EQ(names(), "a c");
    recordDefRemove(*set_, nullptr);
    recordDefRemove(*set_, find("a"));
    recordDefRemove(*set_, find("c"));
    EXPECT_EQ(set_->definitions, nullptr);
}

TEST_F(RecordDefSet, SetsStandByNameInTheirOwnList) {
    recordDefSetRec* list = nullptr;
    recordDefSetRec* b = nullptr;
    recordDefSetRec* a = nullptr;
    const std::string longPath(2000, 'p');
    ASSERT_EQ(recordDefSetNew(Pascal("b"), longPath.c_str(), list, b, 0), 0);
    ASSERT_EQ(recordDefSetNew(Pascal("a"), nullptr, list, a, 0), 0);
    EXPECT_EQ(list, a);
    EXPECT_EQ(a->next, b);
    EXPECT_EQ(b->next, a);
    EXPECT_EQ(std::strlen(b->setPath), definitionPathSize - 1);
    recordDefRec* definition = nullptr;
    ASSERT_EQ(recordDefNew(*a, Pascal("x"), definition, 0), 0);
    state_.currentRecordDef = definition;
    recordDefSetDiscard(list, a);
    EXPECT_EQ(state_.currentRecordDef, nullptr);
    EXPECT_EQ(list, b);
    recordDefSetDiscard(list, b);
    EXPECT_EQ(list, nullptr);
}

TEST_F(RecordDefSet, DefaultsAreMadeOnceAndMakeTheSetDirty) {
    ASSERT_EQ(ensureDefaultDefinition(set_, 0), 0);
    EXPECT_EQ(set_->dirty, 1);
    Str31 name{};
    defaultDefName(name);
    ASSERT_NE(name[0], 0);
    const recordDefRec& made = *find(pstrView(name));
    EXPECT_EQ(pstrView(made.signature), "TARNOVAJNT");
    EXPECT_EQ(pstrView(made.fDelimiter), ",");
    EXPECT_EQ(made.useKeyfieldCase, 1);
    EXPECT_EQ(made.textQualifier.enable, 1);
    EXPECT_EQ(pstrView(made.textQualifier.string), "\"");
    EXPECT_EQ(pstrView(made.httpDataSourceName), "URL");
    EXPECT_NE(made.ruleSetData2, nullptr);
    EXPECT_EQ(made.ruleSetData, nullptr);
    EXPECT_EQ(searchCriteriaCount(made), 1);
    EXPECT_EQ(extractionCount(made), 1);
    EXPECT_EQ(made.extractions[0]->type, linkTypeText);
    ASSERT_EQ(styleCount(made), 1);
    EXPECT_EQ(made.styles[0]->checkPrice, 1);
    for (const priceGroupRec& group : made.styles[0]->groups) {
        EXPECT_EQ(group.currency.sizeSymbol, 1);
        EXPECT_EQ(group.currency.symbolSize, fixedHundredPercent);
        EXPECT_EQ(group.currency.symbolShift, 0);
    }
    set_->dirty = 0;
    ASSERT_EQ(ensureDefaultDefinition(set_, 0), 0);
    ASSERT_EQ(ensureDefaultRecords(set_, 0), 0);
    EXPECT_EQ(set_->dirty, 0);
    EXPECT_EQ(recordDefCount(set_), 1);
}

TEST_F(RecordDefSet, DefaultRecordsGoToTheFirstDefinitionWhereItHasNone) {
    add("b");
    recordDefRec* first = add("a");
    extractionRec* own = nullptr;
    ASSERT_EQ(insertExtraction(*set_, *first, Pascal("own"), own, 0), 0);
    ASSERT_EQ(ensureDefaultRecords(set_, 0), 0);
    EXPECT_EQ(set_->dirty, 1);
    EXPECT_EQ(extractionCount(*first), 1);
    EXPECT_EQ(searchCriteriaCount(*first), 1);
    EXPECT_EQ(styleCount(*first), 1);
    EXPECT_EQ(searchCriteriaCount(*find("b")), 0);
}

TEST_F(RecordDefSet, RecordsStandByNameUpToTheCapacityOfTheirArray) {
    recordDefRec& definition = *add("full");
    const auto fill = [&](auto insert, auto* record, int capacity) {
        for (int number = capacity; number > 0; --number) {
            EXPECT_EQ(insert(*set_, definition, Pascal("r" + std::to_string(10000 + number)), record, 0), 0);
            ASSERT_NE(record, nullptr);
        }
        EXPECT_EQ(insert(*set_, definition, Pascal("a"), record, 0), 0);
        EXPECT_EQ(record, nullptr) << "one above " << capacity;
    };
    fill(insertSearchCriteria, static_cast<searchCriteriaRec*>(nullptr), 500);
    fill(insertExtraction, static_cast<extractionRec*>(nullptr), 1500);
    fill(insertStyle, static_cast<styleRec*>(nullptr), 100);
    EXPECT_EQ(searchCriteriaCount(definition), 500);
    EXPECT_EQ(extractionCount(definition), 1500);
    EXPECT_EQ(styleCount(definition), 100);
    EXPECT_EQ(pstrView(definition.extractions[0]->name), "r10001");
    EXPECT_EQ(pstrView(definition.extractions[1499]->name), "r11500");
    extractionRec* last = nullptr;
    EXPECT_EQ(findExtraction(&definition, Pascal("R11500"), last, 0), 0);
    EXPECT_EQ(last, definition.extractions[1499]);
}

TEST_F(RecordDefSet, RecordsSortByBytesAndAreFoundWithoutCase) {
    recordDefRec& definition = *add("d");
    extractionRec* record = nullptr;
    for (const char* name : {"b", "B", "\xC3\xA4", "a", "ab", "b"}) {
        ASSERT_EQ(insertExtraction(*set_, definition, Pascal(name), record, 0), 0);
    }
    EXPECT_EQ(namesOf(definition.extractions, extractionCount(definition)), "B a ab b b \xC3\xA4");
    EXPECT_EQ(record, definition.extractions[4]) << "an equal name goes behind";
    ASSERT_EQ(findExtraction(&definition, Pascal("b"), record, 0), 0);
    EXPECT_EQ(record, definition.extractions[0]);
    ASSERT_EQ(findExtraction(&definition, Pascal(""), record, 0), 0);
    EXPECT_EQ(record, nullptr);
}

TEST_F(RecordDefSet, FieldNamesAreAliasesByName) {
    recordDefRec& definition = *add("d");
    insertFieldName(definition, 7, Pascal("Name"));
    insertFieldName(definition, 2, Pascal("City"));
    insertFieldName(definition, 7, Pascal("Customer"));
    insertFieldName(definition, 9, Pascal("City"));
    insertFieldName(definition, 3, Pascal(""));
    ASSERT_EQ(fieldCountOf(definition), 4);
    EXPECT_EQ(fieldNumberOf(definition, Pascal("name")), 7);
    EXPECT_EQ(fieldNumberOf(definition, Pascal("CUSTOMER")), 7);
    EXPECT_EQ(fieldNumberOf(definition, Pascal("city")), 2) << "an equal name went behind";
    EXPECT_EQ(fieldNumberOf(definition, Pascal("Street")), -1);
    EXPECT_EQ(fieldNumberOf(definition, Pascal("")), -1);
    EXPECT_EQ(pstrView(fieldNameOf(definition, 7)), "Customer");
    EXPECT_EQ(pstrView(fieldNameOf(definition, 1)), "");
}

TEST_F(RecordDefSet, TheFieldListHoldsItsCapacityAndNoMore) {
    recordDefRec& definition = *add("d");
    for (int number = 1500; number > 0; --number) {
        insertFieldName(definition, static_cast<std::uint16_t>(number), Pascal("f" + std::to_string(10000 + number)));
    }
    insertFieldName(definition, 1, Pascal("a"));
    EXPECT_EQ(fieldCountOf(definition), 1500);
    EXPECT_EQ(pstrView(definition.fields[0].fieldName), "f10001");
    EXPECT_EQ(pstrView(definition.fields[1499].fieldName), "f11500");
    EXPECT_EQ(definition.keyField[0], 0) << "the field behind the list is untouched";
}

TEST_F(RecordDefSet, ACopyOwnsItsRecordsAndRuleData) {
    recordDefRec& source = *add("source");
    pstrSet(source.keyField, "Number");
    ASSERT_EQ(setRuleData(source.ruleSetData2, "two", 3, 0), 0);
    ASSERT_EQ(setRuleData(source.ruleSetData, "one", 3, 0), 0);
    ASSERT_EQ(recordDefSetSignature(*set_, source, Pascal("mine"), 0), 0);
    ASSERT_EQ(ensureDefaultRecordsOf(*set_, source, 0), 0);
    recordDefRec* copy = nullptr;
    ASSERT_EQ(recordDefCopy(*set_, source, Pascal("copy"), copy, 0), 0);
    recordDefRemove(*set_, &source);
    EXPECT_EQ(pstrView(copy->name), "copy");
    EXPECT_EQ(pstrView(copy->keyField), "Number");
    EXPECT_EQ(pstrView(copy->signature), "mine");
    EXPECT_EQ(std::memcmp(*copy->ruleSetData2, "two", 3), 0);
    EXPECT_EQ(std::memcmp(*copy->ruleSetData, "one", 3), 0);
    EXPECT_EQ(extractionCount(*copy), 1);
    EXPECT_NE(copy->styles[0]->name[0], 0);
}

TEST_F(RecordDefSet, ARunningErrorTouchesNothing) {
    recordDefRec* definition = add("d");
    recordDefRec* const before = definition;
    EXPECT_EQ(recordDefNew(*set_, Pascal("e"), definition, 64), 64);
    EXPECT_EQ(findRecordDef(set_, Pascal("d"), definition, 64), 64);
    EXPECT_EQ(ensureDefaultDefinition(set_, 64), 64);
    EXPECT_EQ(definition, before);
    EXPECT_EQ(recordDefCount(set_), 1);
}

TEST_F(RecordDefSet, OutOfMemoryTellsWhatItWasFor) {
    recordDefRec& definition = *add("d");
    ASSERT_EQ(setRuleData(definition.ruleSetData2, "rules", 5, 0), 0);
    recordDefRec* made = nullptr;
    searchCriteriaRec* criteria = nullptr;
    extractionRec* link = nullptr;
    styleRec* style = nullptr;
    recordDefSetRec* list = nullptr;
    recordDefSetRec* set = nullptr;
    {
        const ScarceMemory none(0);
        EXPECT_EQ(recordDefSetNew(Pascal("s"), nullptr, list, set, 0), errNoMemoryDefinition);
        EXPECT_EQ(recordDefNew(*set_, Pascal("e"), made, 0), errNoMemoryDefinition);
        EXPECT_EQ(recordDefSetSignature(*set_, definition, Pascal("x"), 0), errNoMemoryDefinitionString);
        EXPECT_EQ(insertSearchCriteria(*set_, definition, Pascal("c"), criteria, 0), errNoMemorySearchCriteria);
        EXPECT_EQ(insertExtraction(*set_, definition, Pascal("l"), link, 0), errNoMemoryExtraction);
        EXPECT_EQ(insertStyle(*set_, definition, Pascal("s"), style, 0), errNoMemoryStyle);
        EXPECT_EQ(setRuleData(definition.ruleSetData2, "more", 4, 0), errNoMemoryRuleData);
    }
    for (const auto& [allowed, expected] :
         {std::pair(1, errNoMemoryDefinition), std::pair(2, errNoMemoryDefinitionString)}) {
        const ScarceMemory scarce(allowed);
        EXPECT_EQ(recordDefSetNew(Pascal("s"), nullptr, list, set, 0), expected) << allowed;
    }
    for (const auto& [allowed, expected] :
         {std::pair(1, errNoMemoryDefinitionString), std::pair(2, errNoMemoryRuleData)}) {
        const ScarceMemory scarce(allowed);
        EXPECT_EQ(recordDefNew(*set_, Pascal("e"), made, 0), expected) << allowed;
    }
    EXPECT_EQ(std::memcmp(*definition.ruleSetData2, "rules", 5), 0) << "the old data stay";
    EXPECT_EQ(set, nullptr);
    EXPECT_EQ(recordDefCount(set_), 3) << "half-built definitions go with the set";
}

}  // namespace

}  // namespace tarnova
