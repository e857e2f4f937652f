#include "host/files/open_documents.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "document/error_utils.h"
#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

using testing::HasSubstr;

class OpenDocumentsTest : public testing::Test {
 protected:
    OpenDocumentsTest() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tarnova-open-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        write("a.tvd", frameWith("\"first\""));
        write("b.tvd", frameWith("\"second\""));
        ErrorUtils::PMSetGlobalErrorCode(kSuccess);
    }
    ~OpenDocumentsTest() override {
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
        std::filesystem::remove_all(folder);
    }

    [[nodiscard]] std::string path(const std::string& name) const { return folder + "/" + name; }
    void write(const std::string& name, const std::string& bytes) const { std::ofstream(path(name)) << bytes; }
    [[nodiscard]] std::string read(const std::string& name) const {
        std::stringstream all;
        all << std::ifstream(path(name)).rdbuf();
        return all.str();
    }
    UIDRef open(const std::string& name, bool withWindow = true) {
        UIDRef document;
        EXPECT_EQ(documents.documentOpen(path(name), withWindow, document), 0) << documents.lastFailure();
        return document;
    }
    static void type(UIDRef document, std::u32string_view text) {
        const UID story = document.database->stories().front();
        ASSERT_EQ(document.database->textReplace(story, 0, 0, text, false), 0);
    }
    static std::u32string textOf(UIDRef document) {
        return document.database->textRead(document.database->stories().front(), 0, 99);
    }
    static bool isSaved(UIDRef document) { return document.database->documentIsSaved(); }
    void expectFailure(errorWord error, const std::string& words) {
        EXPECT_EQ(error, errFailed);
        EXPECT_THAT(documents.lastFailure(), HasSubstr(words));
        EXPECT_EQ(ErrorUtils::PMGetGlobalErrorCode(), kFailure);
        ErrorUtils::PMSetGlobalErrorCode(kSuccess);
    }

    std::string folder;
    OpenDocuments documents{nullptr};
};

TEST_F(OpenDocumentsTest, TheFrontOneIsTheLastThatGotAWindow) {
    EXPECT_EQ(documents.frontDocument(), kInvalidUIDRef);
    const UIDRef hidden = open("a.tvd", false);
    EXPECT_EQ(documents.frontDocument(), kInvalidUIDRef);
    const UIDRef shown = open("b.tvd");
    EXPECT_EQ(documents.frontDocument(), shown);
    EXPECT_FALSE(documents.documentHasWindow(hidden));
    ASSERT_EQ(documents.documentShowWindow(hidden), 0);
    EXPECT_EQ(documents.frontDocument(), hidden);
    EXPECT_EQ(open("b.tvd"), shown) << "it is open already";
    EXPECT_EQ(documents.count(), 2U);
    EXPECT_EQ(documents.frontDocument(), shown);
    EXPECT_EQ(open("../" + std::filesystem::path(folder).filename().string() + "/a.tvd", false), hidden);
    ASSERT_EQ(documents.documentClose(shown), 0);
    EXPECT_EQ(documents.frontDocument(), hidden);
    expectFailure(documents.documentClose({nullptr, 1}), "isn't open");
}

TEST_F(OpenDocumentsTest, SavedIsWhatEqualsTheFile) {
    const UIDRef document = open("a.tvd");
    EXPECT_TRUE(isSaved(document));
    EXPECT_EQ(document.database->documentFolder(), folder);
    EXPECT_EQ(document.database->documentName(), "a.tvd");
    auto& model = *documents.find(document);
    type(document, U"1");
    EXPECT_FALSE(isSaved(document));
    EXPECT_TRUE(model.undo());
    EXPECT_TRUE(isSaved(document)) << "back at the saved state";
    EXPECT_TRUE(model.redo());
    EXPECT_FALSE(isSaved(document));
    ASSERT_EQ(documents.documentSave(document), 0);
    EXPECT_TRUE(isSaved(document));
    EXPECT_EQ(read("a.tvd"), writeLayout(model));
    EXPECT_TRUE(model.undo());
    EXPECT_FALSE(isSaved(document)) << "the file is ahead now";
    type(document, U"2");
    EXPECT_FALSE(isSaved(document)) << "the saved state can't be reached any more";
    EXPECT_TRUE(model.undo());
    EXPECT_FALSE(isSaved(document));
    ASSERT_EQ(model.BeginCommandSequence("", false), 0);
    type(document, U"3");
    model.EndCommandSequence();
    EXPECT_FALSE(isSaved(document));
    EXPECT_FALSE(model.documentCopy()->documentIsSaved());
}

TEST_F(OpenDocumentsTest, SaveAsMovesAndACopyDoesNot) {
    const UIDRef document = open("a.tvd");
    const std::string first = read("a.tvd");
    type(document, U"new ");
    ASSERT_EQ(documents.documentSaveCopy(document, path("copy.tvd")), 0);
    EXPECT_FALSE(isSaved(document));
    EXPECT_EQ(document.database->documentName(), "a.tvd");
    EXPECT_EQ(read("copy.tvd"), writeLayout(*documents.find(document)));
    ASSERT_EQ(documents.documentSaveAs(document, path("c.tvd")), 0);
    EXPECT_TRUE(isSaved(document));
    EXPECT_EQ(document.database->documentName(), "c.tvd");
    EXPECT_EQ(read("c.tvd"), read("copy.tvd"));
    EXPECT_EQ(read("a.tvd"), first) << "the first file stays as it was";

    const UIDRef other = open("b.tvd");
    expectFailure(documents.documentSaveAs(document, path("b.tvd")), "another open document");
    expectFailure(documents.documentSaveCopy(document, path("c.tvd")), "a file of its own");
    EXPECT_EQ(textOf(other), U"second\r");
    DocumentModel& made = documents.add(makeDocument(), true);
    expectFailure(documents.documentSave(made.ref()), "never saved");
    expectFailure(documents.documentRevert(made.ref()), "never saved");
    ASSERT_EQ(documents.documentSaveAs(made.ref(), path("new.tvd")), 0);
    EXPECT_TRUE(made.documentIsSaved());
}

TEST_F(OpenDocumentsTest, RevertGivesTheBytesAsSaved) {
    const UIDRef document = open("a.tvd");
    type(document, U"kept ");
    ASSERT_EQ(documents.documentSave(document), 0);
    const std::string saved = read("a.tvd");
    auto& model = *documents.find(document);
    ASSERT_EQ(model.addPages(2), 0);
    type(document, U"lost ");
    ASSERT_EQ(model.BeginCommandSequence("open", true), 0);
    expectFailure(documents.documentRevert(document), "in the middle of a change");
    model.EndCommandSequence();
    ASSERT_EQ(documents.documentRevert(document), 0);
    EXPECT_EQ(writeLayout(model), saved);
    EXPECT_EQ(textOf(document), U"kept first\r") << "by the same reference";
    EXPECT_TRUE(isSaved(document));
    EXPECT_FALSE(model.undo());
    EXPECT_FALSE(model.redo());

    type(document, U"more ");
    write("a.tvd", "{\"tarnovaLayout\": 1,\n\"pages\": 7}");
    const std::string before = writeLayout(model);
    expectFailure(documents.documentRevert(document), "Line 2: ");
    EXPECT_EQ(writeLayout(model), before) << "what can't be read changes nothing";
}

TEST_F(OpenDocumentsTest, AFailedSaveChangesNothing) {
    const UIDRef document = open("a.tvd");
    const std::string first = read("a.tvd");
    type(document, U"new ");
    const std::string unwritable[] = {path("nowhere/c.tvd"), folder};
    for (const std::string& target : unwritable) {
        expectFailure(documents.documentSaveAs(document, target), "can't be written");
        EXPECT_FALSE(isSaved(document));
        EXPECT_EQ(document.database->documentName(), "a.tvd") << target;
    }
    if (geteuid() != 0) {
        std::filesystem::permissions(folder, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
        expectFailure(documents.documentSave(document), "can't be written");
        EXPECT_FALSE(isSaved(document));
    }
    EXPECT_EQ(read("a.tvd"), first);
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        EXPECT_THAT(entry.path().filename().string(), testing::Not(HasSubstr(".new"))) << "nothing is left over";
    UIDRef none;
    expectFailure(documents.documentOpen(path("nobody.tvd"), true, none), "can't be opened");
    EXPECT_EQ(none, kInvalidUIDRef);
    EXPECT_EQ(documents.count(), 1U);
}

}  // namespace
}  // namespace tarnova
