#include <memory>

#include "tests/definitions/definition_fixture.h"

namespace tarnova {

namespace {

class RecordExchange : public DefinitionTest {
 protected:
    template <typename Block>
    Block block(std::int16_t op, std::string_view name) {
        Block made{};
        pstrSet(made.name, name);
        made.exchangeOp = op;
        made.exchangeResult = 77;
        return made;
    }

    std::unique_ptr<recordDefExchange> definitionBlock(std::int16_t op, std::string_view name,
                                                       std::string_view source = "") {
        auto made = std::make_unique<recordDefExchange>();
        pstrSet(made->name, name);
        pstrSet(made->record.name, source);
        made->exchangeOp = op;
        return made;
    }
};

TEST_F(RecordExchange, GetCopiesOrAnswersNotFound) {
    add("d");
    extractionRec* link = nullptr;
    ASSERT_EQ(insertExtraction(*set_, select("d"), Pascal("Photo"), link, 0), 0);
    link->type = linkTypePicture;
    auto get = block<extractionExchange>(exchangeGet, "PHOTO");
    ASSERT_EQ(extractionExchangeRun(get, 0), 0);
    EXPECT_EQ(get.exchangeResult, 0);
    EXPECT_EQ(get.record.type, linkTypePicture);
    EXPECT_EQ(pstrView(get.record.name), "Photo");
    for (const char* name : {"Phot", ""}) {
        auto missing = block<extractionExchange>(exchangeGet, name);
        EXPECT_EQ(extractionExchangeRun(missing, 0), 0) << name;
        EXPECT_EQ(missing.exchangeResult, exchangeNotFound) << name;
    }
    EXPECT_EQ(set_->dirty, 0);
    pstrSet(state_.currentDefName, "elsewhere");
    EXPECT_EQ(extractionExchangeRun(get, 0), 0);
    EXPECT_EQ(get.exchangeResult, exchangeNotFound);
}

TEST_F(RecordExchange, SetReplacesOrAddsAndDeleteClosesTheGap) {
    add("d");
    const recordDefRec& definition = select("d");
    for (const char* name : {"m", "z", "a"}) {
        auto set = block<extractionExchange>(exchangeSet, name);
        pstrSet(set.record.name, "other");
        ASSERT_EQ(extractionExchangeRun(set, 0), 0);
        auto criteria = block<searchCriteriaExchange>(exchangeSet, name);
        ASSERT_EQ(searchCriteriaExchangeRun(criteria, 0), 0);
        auto style = block<styleExchange>(exchangeSet, name);
        ASSERT_EQ(styleExchangeRun(style, 0), 0);
    }
    EXPECT_EQ(namesOf(definition.extractions, 3), "a m z") << "links by name";
    EXPECT_EQ(namesOf(definition.searchCriteria, 3), "m z a") << "criteria behind the last";
    EXPECT_EQ(namesOf(definition.styles, 3), "m z a");
    EXPECT_EQ(set_->dirty, 1);

    auto replace = block<extractionExchange>(exchangeSet, "M");
    replace.record.locked = 1;
    ASSERT_EQ(extractionExchangeRun(replace, 0), 0);
    EXPECT_EQ(namesOf(definition.extractions, 3), "a M z");
    EXPECT_EQ(definition.extractions[1]->locked, 1);

    set_->dirty = 0;
    auto remove = block<extractionExchange>(exchangeDelete, "A");
    ASSERT_EQ(extractionExchangeRun(remove, 0), 0);
    EXPECT_EQ(namesOf(definition.extractions, extractionCount(definition)), "M z");
    EXPECT_EQ(set_->dirty, 1);
    set_->dirty = 0;
    EXPECT_EQ(extractionExchangeRun(remove, 0), 0) << "nothing of that name";
    EXPECT_EQ(set_->dirty, 1);
    const std::string text = write(*set_);
    startOver();
    ASSERT_EQ(read(text), 0);
    EXPECT_EQ(namesOf(find("d")->searchCriteria, 3), "a m z") << "by name once the text is read again";
}

TEST_F(RecordExchange, AFullArrayDropsTheNewRecordWithoutAWord) {
    add("d");
    const recordDefRec& definition = select("d");
    for (int number = 0; number <= styleCapacity; ++number) {
        auto set = block<styleExchange>(exchangeSet, "s" + std::to_string(number));
        EXPECT_EQ(styleExchangeRun(set, 0), 0);
        EXPECT_EQ(set.exchangeResult, 0);
    }
    EXPECT_EQ(styleCount(definition), styleCapacity);
    EXPECT_EQ(pstrView(definition.styles[styleCapacity - 1]->name), "s99");
    auto remove = block<styleExchange>(exchangeDelete, "s99");
    EXPECT_EQ(styleExchangeRun(remove, 0), 0);
    EXPECT_EQ(styleCount(definition), styleCapacity - 1);
}

TEST_F(RecordExchange, GetOfADefinitionGivesAPrivateCopyOfItsRuleData) {
    recordDefRec& definition = *add("d");
    ASSERT_EQ(setRuleData(definition.ruleSetData2, "rules", 5, 0), 0);
    pstrSet(definition.keyField, "Number");
    auto get = definitionBlock(exchangeGet, "D");
    blockHandle mine = nullptr;
    setExchangeRuleData(*get, &mine);
    ASSERT_EQ(recordDefExchangeRun(*get, 0), 0);
    EXPECT_EQ(get->exchangeResult, 0);
    EXPECT_EQ(pstrView(get->record.keyField), "Number");
    EXPECT_EQ(exchangeRuleData(*get), &mine);
    ASSERT_EQ(handleSize(mine), 5u);
    EXPECT_NE(mine, definition.ruleSetData2);
    freeHandle(mine);

    pstrSet(get->name, "none");
    ASSERT_EQ(recordDefExchangeRun(*get, 0), 0);
    EXPECT_EQ(get->exchangeResult, exchangeNotFound);
    EXPECT_EQ(mine, nullptr);
    pstrSet(get->name, "d");
    const ScarceMemory none(0);
    EXPECT_EQ(recordDefExchangeRun(*get, 0), errNoMemoryRuleDataCopy);
}

TEST_F(RecordExchange, SavingTakesTheRecordsOfTheSource) {
    recordDefRec& source = *add("source");
    extractionRec* link = nullptr;
    ASSERT_EQ(insertExtraction(*set_, source, Pascal("Photo"), link, 0), 0);
    ASSERT_EQ(setRuleData(source.ruleSetData2, "rules", 5, 0), 0);
    ASSERT_EQ(recordDefSetSignature(*set_, source, Pascal("mine"), 0), 0);
    add("TARGET");

    auto save = definitionBlock(exchangeSaveKeeping, "target", "source");
    std::strcpy(save->record.databasePath, "/data/list");
    std::uint8_t ignoredSignature[] = {1, 'x'};
    save->record.signature = ignoredSignature;
    pstrSet(save->record.fields[0].fieldName, "Zip");
    pstrSet(save->record.fields[2].fieldName, "City");
    save->record.fields[2].fieldNumber = 4;
    ASSERT_EQ(recordDefExchangeRun(*save, 0), 0);
    EXPECT_EQ(names(), "source target") << "the old target is gone";
    const recordDefRec& target = *find("target");
    EXPECT_STREQ(target.databasePath, "/data/list");
    EXPECT_EQ(pstrView(target.signature), "mine");
    EXPECT_EQ(handleSize(target.ruleSetData2), 5u);
    EXPECT_EQ(extractionCount(target), 1);
    EXPECT_NE(target.extractions[0], link);
    ASSERT_EQ(fieldCountOf(target), 2);
    EXPECT_EQ(fieldNumberOf(target, Pascal("City")), 4);
    EXPECT_EQ(pstrView(target.fields[0].fieldName), "City");
    EXPECT_EQ(set_->dirty, 1);

    save->exchangeOp = exchangeSet;
    pstrSet(save->name, "moved");
    ASSERT_EQ(recordDefExchangeRun(*save, 0), 0);
    EXPECT_EQ(names(), "moved target");
    pstrSet(save->name, "Moved");
    pstrSet(save->record.name, "moved");
    ASSERT_EQ(recordDefExchangeRun(*save, 0), 0);
    EXPECT_EQ(names(), "Moved target") << "source and target are one";
    EXPECT_EQ(extractionCount(*find("moved")), 1);
}

TEST_F(RecordExchange, SavingWithoutASourceStartsFresh) {
    auto save = definitionBlock(exchangeSaveKeeping, "new");
    std::uint8_t signature[] = {3, 'o', 'w', 'n'};
    save->record.signature = signature;
    const handlePtr rules(newHandle(3));
    std::memcpy(*rules, "abc", 3);
    blockHandle mine = rules.get();
    setExchangeRuleData(*save, &mine);
    ASSERT_EQ(recordDefExchangeRun(*save, 0), 0);
    const recordDefRec& made = *find("new");
    EXPECT_EQ(pstrView(made.signature), "own");
    EXPECT_EQ(extractionCount(made), 1);
    EXPECT_EQ(searchCriteriaCount(made), 1);
    EXPECT_EQ(styleCount(made), 1);
    EXPECT_NE(made.ruleSetData2, mine);
    EXPECT_EQ(handleSize(made.ruleSetData2), 3u);

    set_->dirty = 0;
    for (const auto op : {exchangeSet, exchangeSaveKeeping, exchangeDelete}) {
        auto nameless = definitionBlock(op, "");
        EXPECT_EQ(recordDefExchangeRun(*nameless, 0), 0);
    }
    auto sourceless = definitionBlock(exchangeSet, "other");
    EXPECT_EQ(recordDefExchangeRun(*sourceless, 0), 0);
    EXPECT_EQ(names(), "new");
    EXPECT_EQ(set_->dirty, 0);
}

TEST_F(RecordExchange, DeletingTheDefaultDefinitionMakesANewOne) {
    ASSERT_EQ(ensureDefaultDefinition(set_, 0), 0);
    Str31 name{};
    defaultDefName(name);
    select(pstrView(name));
    recordDefRec* const before = state_.currentRecordDef;
    pstrSet(before->keyField, "Number");
    auto remove = definitionBlock(exchangeDelete, pstrView(name));
    ASSERT_EQ(recordDefExchangeRun(*remove, 0), 0);
    ASSERT_EQ(recordDefCount(set_), 1);
    ASSERT_NE(state_.currentRecordDef, nullptr);
    EXPECT_EQ(state_.currentRecordDef->keyField[0], 0);
}

}  // namespace

}  // namespace tarnova
