#include "definitions/document_definition.h"

#include <map>
#include <utility>

#include "definitions/definition_store.h"
#include "definitions/slug.h"
#include "document/document_host.h"
#include "document/item_data.h"
#include "engine/session/preferences_file.h"
#include "engine/session/session.h"
#include "engine/toolkit/choosers.h"
#include "tests/definitions/definition_fixture.h"
#include "tests/document/fake_document.h"
#include "tests/engine/toolkit/recording_alerts.h"
#include "tests/engine/toolkit/temp_folder.h"

namespace tarnova {
namespace {

/// Documents by their paths; those in `windows` are open, the last in front.
class FakeHost final : public DocumentHost {
 public:
    UIDRef frontDocument() const override { return windows.empty() ? UIDRef{} : refOf(*windows.back()); }
    errorWord documentOpen(const std::string& path, bool, UIDRef& outDocument) override {
        const auto found = files.find(path);
        outDocument = found == files.end() ? UIDRef{} : refOf(*found->second);
        return found == files.end() ? errFailed : errorWord{0};
    }
    errorWord documentSave(UIDRef) override { return 0; }
    errorWord documentSaveAs(UIDRef, const std::string&) override { return 0; }
    errorWord documentSaveCopy(UIDRef, const std::string&) override { return 0; }
    errorWord documentRevert(UIDRef) override { return 0; }
    errorWord documentRestore(UIDRef, const Document&) override { return 0; }
    errorWord documentClose(UIDRef) override { return ++closed, errorWord{0}; }
    bool documentHasWindow(UIDRef document) const override {
        return std::find(windows.begin(), windows.end(), document.database) != windows.end();
    }
    errorWord documentShowWindow(UIDRef) override { return 0; }
    selectionRec selection(UIDRef) const override { return {}; }
    errorWord select(UIDRef, const selectionRec&) override { return 0; }
    const std::string& lastFailure() const override { return failure; }

    static UIDRef refOf(FakeDocument& document) { return {&document, kInvalidUID}; }

    std::vector<FakeDocument*> windows;
    std::map<std::string, FakeDocument*> files;
    int closed = 0;
    std::string failure;
};

/// Answers the question for a name.
class Typist final : public ChooserService {
 public:
    bool chooseFile(const fileChoiceRec&, std::string&) override { return false; }
    bool askText(const PMString&, std::size_t, std::string& text) override {
        if (!typed.empty()) text = typed;
        return !typed.empty();
    }

    std::string typed;
};

constexpr const char* rulesNone = "(none)";
std::string rulesSent;

class DocumentDefinition : public testing::Test {
 protected:
    DocumentDefinition() {
        sessionReset();
        settleDataFolder(home.path("app"), home.path("roaming"));
        session().documentHost = &host;
        installChooserService(&typist);
        session().putDefinitionRules = [](const recordDefRec* definition) {
            rulesSent = definition == nullptr ? rulesNone : pstrString(definition->name);
        };
        EXPECT_EQ(openDefinitionStore(false, nullptr, 0), 0);
        addDefinition("Own", "OwnField", "");
        prefer(false);
    }
    ~DocumentDefinition() override {
        installChooserService(nullptr);
        sessionReset();
    }

    static void prefer(bool always) { appPrefs().alwaysUseDocumentDDF = always ? 1 : 0; }
    static recordDefRec* find(std::string_view name) {
        recordDefRec* definition = nullptr;
        EXPECT_EQ(findRecordDef(session().currentDefSet, Pascal(name), definition, 0), 0);
        return definition;
    }
    static void addDefinition(const char* name, const char* field, const char* path) {
        recordDefRec* made = nullptr;
        ASSERT_EQ(recordDefNew(*session().currentDefSet, Pascal(name), made, 0), 0);
        insertFieldName(*made, 1, Pascal(field));
        std::strcpy(made->databasePath, path);
    }
    /// Name of the first field of a definition; "-" when the set doesn't have it.
    static std::string fieldOf(std::string_view name) {
        const recordDefRec* const definition = find(name);
        return definition == nullptr ? "-" : pstrString(definition->fields[0].fieldName);
    }
    static std::string current() { return pstrString(session().currentDefName); }
    static std::string imageName() { return pstrString(session().documentSettings.docDefName); }
    static void selectFor(std::string_view name) {
        bool found = false;
        EXPECT_EQ(selectDefinition(name, found, 0), 0);
        EXPECT_TRUE(found);
    }
    /// A document as another machine made it: its definition "Theirs" with the field, or no slug for a null field.
    static void makeForeign(FakeDocument& document, const char* name, const char* field,
                            const char* path = "/their/index") {
        documentSettingsRec settings{};
        pstrFromView(settings.docDefName, sizeof(Str31), name);
        itemDataSet(FakeHost::refOf(document), ItemDataPlace::document, itemDataDocumentSettings, &settings,
                    sizeof settings, 0);
        if (field == nullptr) return;
        const std::string text = std::string("\"") + name + "\" recordDefinition; T signature; \"" + path +
                                 "\" databasePath; 1:\"" + field + "\" fieldName;";
        itemDataSet(FakeHost::refOf(document), ItemDataPlace::document, itemDataSlug, text.data(), text.size(), 0);
    }
    static std::string entry(FakeDocument& document, std::uint32_t type) {
        const auto stored = itemDataView(FakeHost::refOf(document), ItemDataPlace::document, type, 0);
        return stored ? std::string(*stored) : std::string();
    }
    static std::string namedBy(FakeDocument& document) {
        const std::string settings = entry(document, itemDataDocumentSettings);
        return settings.size() != sizeof(documentSettingsRec)
                   ? "(no settings)"
                   : pstrString(reinterpret_cast<const std::uint8_t*>(settings.data()) + 60);
    }
    static bool slugHolds(FakeDocument& document, const char* text) {
        return entry(document, itemDataSlug).find(text) != std::string::npos;
    }
    void bringToFront(FakeDocument& document) {
        host.windows = {&document};
        rulesSent.clear();
        session().engineError = 0;
        documentDefinitionOnFront(FakeHost::refOf(document));
    }
    std::int32_t open(FakeDocument& document) {
        host.windows = {&document};
        session().engineError = 0;
        flags = 9;
        return documentDefinitionOnOpen(flags);
    }

    /// What was shown since the last call, one text behind the other.
    std::string shown() {
        std::string all;
        for (const alertRec& alert : std::exchange(alerts.shown, {}))
            all += alert.text;
        return all;
    }

    TempFolder home;
    FakeHost host;
    RecordingAlerts alerts;
    Typist typist;
    std::uint16_t flags = 0;
    const std::string standard = "Default Definition";
};

TEST_F(DocumentDefinition, ForeignPaths) {
    const std::pair<const char*, bool> rows[] = {
        {"", false},           {"C:\\jobs\\index", false}, {"index", false},
        {"/jobs/index", true}, {"HD:Jobs:index", true},    {"C:\\jobs:x", true},
        {"C:jobs", true},      {"CD:\\jobs", true},        {"C:\\jobs/x", true},
    };
    for (const auto& [path, isForeign] : rows)
        EXPECT_EQ(isForeignDatabasePath(path), isForeign) << path;
    std::filesystem::create_directories(session().indexFolder);
    const std::string own = session().indexFolder + "/mine";
    EXPECT_TRUE(isForeignDatabasePath(own.c_str()));
    EXPECT_EQ(fileCreate(own.c_str(), 0), 0);
    EXPECT_FALSE(isForeignDatabasePath(own.c_str())) << "an index of this machine";
}

TEST_F(DocumentDefinition, SlugsAreReadAndAdopted) {
    FakeDocument document;
    makeForeign(document, "Theirs", "Town");
    const std::string text = entry(document, itemDataSlug);
    const handlePtr slug(newHandle(text.size()));
    std::memcpy(*slug, text.data(), text.size());
    Str31 name;
    EXPECT_EQ(slugDefinitionName(slug.get(), 0, name, 0), 0);
    EXPECT_EQ(pstrView(name), "Theirs");
    EXPECT_EQ(slugDefinitionName(slug.get(), 1, name, 0), 0);
    EXPECT_EQ(name[0], 0);
    session().currentDefSet->dirty = 0;
    EXPECT_EQ(adoptSlug(Pascal("Theirs"), Pascal("Own"), slug.get(), false, 0), 0);
    EXPECT_EQ(fieldOf("Own"), "Town");
    EXPECT_EQ(fieldOf("Theirs"), "-");
    EXPECT_STREQ(find("Own")->databasePath, "");
    EXPECT_EQ(session().currentDefSet->dirty, 1);
    EXPECT_EQ(adoptSlug(Pascal("Nobody"), Pascal("Own"), slug.get(), false, 0), errDefinitionMissing);
    const handlePtr bad(newHandleClear(20));
    EXPECT_EQ(adoptSlug(Pascal("Theirs"), Pascal("Own"), bad.get(), false, 0), 108);
    EXPECT_EQ(fieldOf("Own"), "Town") << "the old one stands";
    const ScarceMemory none(0);
    EXPECT_EQ(slugDefinitionName(slug.get(), 0, name, 0), errSlugMemory);
}

TEST_F(DocumentDefinition, OnOpen) {
    struct testRow {
        const char* name;
        const char* theirs;  // the definition that the document names
        const char* field;   // of its slug; null: no slug
        bool always, answersYes;
        std::int32_t result;
        std::uint16_t flags;
        errorWord err;
        const char* field2;  // of "Theirs" in the set afterwards
        const char* question;
    };
    const testRow rows[] = {
        {"set has it", "Own", "Town", false, true, 0, 0, 0, "-", ""},
        {"always: the default is there", "Theirs", "Town", true, true, 0, 0, 0, "-", ""},
        {"no slug", "Theirs", nullptr, false, true, -1, 0, errDefinitionMissing, "-", ""},
        {"refused", "Theirs", "Town", false, false, -1, 0, 0, "-", "\"Theirs\""},
        {"taken over", "Theirs", "Town", false, true, 0, 1, 0, "Town", "\"Theirs\""},
    };
    for (const testRow& row : rows) {
        FakeDocument document;
        makeForeign(document, row.theirs, row.field);
        prefer(row.always);
        alerts.answer = row.answersYes ? 1 : 2;
        EXPECT_EQ(open(document), row.result) << row.name;
        EXPECT_EQ(flags, row.flags) << row.name;
        EXPECT_EQ(session().engineError, row.err) << row.name;
        EXPECT_EQ(fieldOf("Theirs"), row.field2) << row.name;
        const std::string text = shown();
        EXPECT_NE(text.find(row.question), std::string::npos) << row.name;
        EXPECT_EQ(text.empty(), *row.question == 0) << row.name;
    }
    EXPECT_EQ(current(), "Theirs");
    EXPECT_STREQ(find("Theirs")->databasePath, "");
    FakeDocument fresh;
    EXPECT_EQ(open(fresh), 0);
    EXPECT_EQ(namedBy(fresh), "Theirs") << "a document without settings gets the current name";
}

TEST_F(DocumentDefinition, OnFront) {
    FakeDocument named, unknown, theirs, slugless;
    makeForeign(named, "own", "Town");
    makeForeign(unknown, "Theirs", "Town");
    makeForeign(theirs, standard.c_str(), "City", "C:\\\\index");
    makeForeign(slugless, standard.c_str(), nullptr);
    selectFor(standard);

    bringToFront(named);
    EXPECT_EQ(current(), "Own");
    EXPECT_EQ(fieldOf("Own"), "OwnField") << "the set's own stays";
    EXPECT_EQ(rulesSent, "Own");
    bringToFront(unknown);
    EXPECT_EQ(current(), "Own");
    EXPECT_EQ(rulesSent, rulesNone);
    EXPECT_EQ(session().engineError, 0);
    appPrefs().missingDefinitionIsError = 1;
    bringToFront(unknown);
    EXPECT_EQ(session().engineError, errDocumentDefinition);
    EXPECT_EQ(pstrView(session().pendingErrorParam), "Theirs");

    bringToFront(theirs);
    EXPECT_EQ(current(), standard);
    EXPECT_EQ(fieldOf(standard), "City");
    EXPECT_STREQ(find(standard)->databasePath, "C:\\index") << "a default definition keeps its path";
    bringToFront(named);
    bringToFront(slugless);
    EXPECT_EQ(current(), standard);

    prefer(true);
    bringToFront(unknown);
    EXPECT_EQ(fieldOf(standard), "Town");
    EXPECT_EQ(current(), standard);
    EXPECT_EQ(imageName(), standard);
    EXPECT_STREQ(find(standard)->databasePath, "");
    EXPECT_EQ(fieldOf("Theirs"), "-");
    bringToFront(theirs);
    EXPECT_EQ(fieldOf(standard), "City") << "each document's slug in turn";
    selectFor("Own");
    std::strcpy(find("Own")->databasePath, "C:\\mine");
    FakeDocument fresh;
    documentDefinitionOnSave(FakeHost::refOf(fresh));
    bringToFront(fresh);
    EXPECT_EQ(current(), standard);
    EXPECT_STREQ(find(standard)->databasePath, "C:\\mine") << "what was written here keeps its path";
    bringToFront(theirs);
    EXPECT_EQ(namedBy(unknown), "Theirs") << "looking at a document doesn't change it";
    session().priceBatch = 1;
    bringToFront(unknown);
    EXPECT_EQ(fieldOf(standard), "City") << "not while documents are worked through";
}

TEST_F(DocumentDefinition, OnSave) {
    FakeDocument fresh, theirs, gone, bare;
    host.windows = {&fresh};
    selectFor("Own");
    documentDefinitionOnSave(FakeHost::refOf(fresh));
    EXPECT_EQ(namedBy(fresh), "Own");
    EXPECT_EQ(entry(fresh, itemDataDocumentSettings).size(), 620U);
    EXPECT_TRUE(slugHolds(fresh, "OwnField"));
    makeForeign(theirs, "Theirs", "Town");
    documentDefinitionOnSave(FakeHost::refOf(theirs));
    EXPECT_EQ(namedBy(theirs), "Theirs");
    EXPECT_TRUE(slugHolds(theirs, "Town"));
    appPrefs().saveSlugWithDocument = 0;
    documentDefinitionOnSave(FakeHost::refOf(bare));
    EXPECT_EQ(namedBy(bare), "Own");
    EXPECT_EQ(entry(bare, itemDataSlug), "");
    appPrefs().saveSlugWithDocument = 1;

    // The set loses the definition: the document's own text stays, another goes.
    recordDefRemove(*session().currentDefSet, find("Own"));
    documentDefinitionOnSave(FakeHost::refOf(fresh));
    EXPECT_TRUE(slugHolds(fresh, "OwnField"));
    makeForeign(gone, "Theirs", "Town");
    const documentSettingsRec none{};
    itemDataSet(FakeHost::refOf(gone), ItemDataPlace::document, itemDataDocumentSettings, &none, sizeof none, 0);
    documentDefinitionOnSave(FakeHost::refOf(gone));
    EXPECT_EQ(entry(gone, itemDataSlug), "");
    EXPECT_EQ(shown(), "");

    selectFor(standard);
    FakeDocument locked;
    locked.refusesChanges = true;
    documentDefinitionOnSave(FakeHost::refOf(locked));
    EXPECT_NE(shown().find("can't be stored in the document"), std::string::npos);
    session().inRun = 1;
    FakeDocument inRun;
    documentDefinitionOnSave(FakeHost::refOf(inRun));
    EXPECT_EQ(namedBy(inRun), "(no settings)");
    session().inRun = 0;
    host.windows = {&inRun};
    EXPECT_EQ(saveDefinitionToDocument(0), 0);
    Str31 name;
    EXPECT_TRUE(hasDocumentDefinition(name));
    EXPECT_EQ(pstrView(name), standard);
    host.windows = {&locked};
    EXPECT_FALSE(hasDocumentDefinition(name));
    EXPECT_EQ(saveDefinitionToDocument(0), errFailed);
}

TEST_F(DocumentDefinition, CopiesBetweenDocuments) {
    FakeDocument theirs, own, target, locked, empty;
    makeForeign(theirs, "Theirs", "Town");
    makeForeign(own, "Own", "Town");
    locked.refusesChanges = true;
    Str31 name;
    const auto copy = [&](FakeDocument& source, FakeDocument* to, bool overwrite) {
        return copyDefinitionBetweenDocuments(FakeHost::refOf(source), to != nullptr ? FakeHost::refOf(*to) : UIDRef{},
                                              overwrite, name);
    };
    EXPECT_EQ(copy(empty, &target, false), -6002);
    EXPECT_EQ(copy(own, &target, false), 0);
    EXPECT_EQ(fieldOf("Own"), "OwnField");
    EXPECT_EQ(namedBy(target), "(no settings)") << "it stops where the set has one";
    EXPECT_EQ(copy(own, &target, true), 0);
    EXPECT_EQ(fieldOf("Own"), "Town");
    EXPECT_EQ(namedBy(target), "Own");
    EXPECT_EQ(entry(target, itemDataSlug), "") << "the slug follows when the target is saved";
    EXPECT_EQ(copy(theirs, nullptr, false), 0);
    EXPECT_EQ(current(), "Theirs");
    EXPECT_EQ(copy(theirs, &locked, true), -1);
    prefer(true);
    EXPECT_EQ(copy(theirs, &target, true), 0);
    EXPECT_EQ(pstrView(name), standard);
    EXPECT_EQ(namedBy(target), standard);
    EXPECT_TRUE(slugHolds(target, "Town"));
}

TEST_F(DocumentDefinition, ComesFromAnotherDocument) {
    FakeDocument front, theirs, own, empty;
    makeForeign(theirs, "Theirs", "Town");
    makeForeign(own, "Own", "Town");
    host.files = {{"theirs", &theirs}, {"own", &own}, {"empty", &empty}};
    host.windows = {&front};
    struct testRow {
        const char* name;
        const char* path;
        bool always;
        const char* typed;
        int button;
        errorWord err;
        const char* result;
        const char* frontNames;
    };
    const std::string longName(32, 'n');
    const testRow rows[] = {
        {"no such file", "gone", false, "", 1, errDocumentOpen, "", "(no settings)"},
        {"no slug", "empty", false, "", 1, errDocumentSlug, "", "(no settings)"},
        {"no name", "theirs", false, "", 1, 0, "", "(no settings)"},
        {"a character that can't be", "theirs", false, "a/b", 1, errNameTooShort, "", "(no settings)"},
        {"a name that is too long", "theirs", false, longName.c_str(), 1, errNameTooLong, "", "(no settings)"},
        {"a name of its own", "theirs", false, "Mine", 1, 0, "Mine", "Mine"},
        {"not replaced", "own", false, "Own", 2, 0, "", "Mine"},
        {"replaced", "own", false, "Own", 1, 0, "Own", "Own"},
        {"always: the default", "theirs", true, "", 1, 0, "Default Definition", "Default Definition"},
    };
    for (const testRow& row : rows) {
        prefer(row.always);
        typist.typed = row.typed;
        alerts.answer = row.button;
        Str31 name;
        EXPECT_EQ(importDefinitionFromDocument(row.path, true, name, 0), row.err) << row.name;
        EXPECT_EQ(pstrView(name), row.result) << row.name;
        EXPECT_EQ(namedBy(front), row.frontNames) << row.name;
    }
    EXPECT_EQ(fieldOf("Own"), "Town");
    EXPECT_NE(shown().find("Database Definition \"Own\" exists"), std::string::npos);
    EXPECT_TRUE(slugHolds(front, "Town")) << "the default definition goes into the document in front";
    EXPECT_EQ(host.closed, 8) << "each document that was opened is closed";
}

TEST_F(DocumentDefinition, IsChosenForADocument) {
    FakeDocument document, empty;
    makeForeign(document, "Theirs", "Town");
    const auto choose = [&](FakeDocument* chosen, const char* name) {
        return chooseDocumentDefinition(chosen != nullptr ? FakeHost::refOf(*chosen) : UIDRef{}, Pascal(name), flags);
    };
    EXPECT_EQ(choose(nullptr, "Nobody"), -6002);
    EXPECT_EQ(choose(nullptr, ""), -6005);
    EXPECT_EQ(choose(&empty, ""), -6003);
    EXPECT_EQ(flags, 0);
    EXPECT_EQ(choose(&empty, "Own"), 0);
    EXPECT_EQ(flags, 1);
    EXPECT_EQ(namedBy(empty), "Own");
    EXPECT_EQ(choose(&document, ""), 0);
    EXPECT_EQ(fieldOf("Theirs"), "Town");
    EXPECT_EQ(current(), "Theirs");
    prefer(true);
    EXPECT_EQ(choose(&document, ""), 0);
    EXPECT_EQ(fieldOf(standard), "Town");
    EXPECT_EQ(namedBy(document), "Theirs");
    find("Own")->importTransTable.enable = 1;
    pstrSet(find("Own")->importTransTable.string, "gone");
    EXPECT_EQ(choose(nullptr, "Own"), -6011);
    EXPECT_EQ(current(), "Own");
}

}  // namespace
}  // namespace tarnova
