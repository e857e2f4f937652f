// Links on frames merged through a whole run: what the value, the link and the preferences make of a frame.

#include "merge/pull_frame_callback.h"

#include "tests/merge/merge_fixture.h"

namespace tarnova {
namespace {

using testing::ElementsAre;

class FrameMerge : public MergeTest {
 protected:
    enum class Kind { text, graphic, line };

    /// A page with one frame that is a link of that name.
    void useFrame(Kind kind, std::string_view linkName, std::string_view key = "1") {
        DocumentBuilder builder;
        const UID page = builder.addSinglePage(300, 300);
        const PMRect bounds{50, 50, 250, 150};
        frame = kind == Kind::text ? builder.addTextFrame(page, bounds, U"old")
                                   : builder.addRectangle(page, bounds, {});
        document = builder.finish();
        document->setLocation(folder.string(), "layout.tvd");
        tagDataRec tag{};
        pstrFromView(tag.searchKey, sizeof(tag.searchKey), key);
        pstrFromView(tag.extractionRecordName, sizeof(tag.extractionRecordName), linkName);
        tag.linkLocked = lockNext ? 1 : 0;
        ASSERT_EQ(writeFrameTag({document.get(), frame}, tag, 0), 0);
    }

    UID frame = kInvalidUID;
};

TEST_F(FrameMerge, TextFramesByEachStatus) {
    struct testRow {
        const char* name;
        const char* data;
        Kind kind;
        std::int16_t nodata;
        bool locked;
        const char* want;  // "-" when no text frame is left
    };
    const testRow rows[] = {
        {"a value", "A\nnew\n", Kind::text, 0, false, "new"},
        {"an empty value", "A,B\n,x\n", Kind::text, nodataGlobal, false, "none"},
        {"placeholder", "A,B\n,x\n", Kind::text, nodataPlaceholder, false, "old"},
        {"frame goes", "A,B\n,x\n", Kind::text, nodataDelete, false, "-"},
        {"own text", "A,B\n,x\n", Kind::text, nodataCustom, false, "own"},
        {"found, though it might go", "A\nnew\n", Kind::text, nodataDelete, false, "new"},
        {"locked", "A\nnew\n", Kind::text, 0, true, "old"},
        {"locked without data", "A,B\n,x\n", Kind::text, nodataDelete, true, "old"},
        {"a graphic frame takes text", "A\nnew\n", Kind::graphic, 0, false, "new"},
    };
    for (const testRow& row : rows) {
        useData(row.data);
        link("A").type = linkTypeText;
        link("A").nodata = row.nodata;
        pstrFromView(link("A").nodatastring, sizeof(Str31), "own");
        pstrFromView(appPrefs().pictureDefaults.noData.string, sizeof(Str255), "none");
        lockNext = row.locked;
        useFrame(row.kind, "A");
        const std::vector<std::string> texts = merge();
        EXPECT_EQ(texts.empty() ? "-" : texts.front(), row.want) << row.name;
        EXPECT_EQ(error, 0) << row.name;
    }
}

TEST_F(FrameMerge, EachPassMergesAFrameAgainButNoneTwice) {
    for (const bool framesFirst : {false, true}) {
        useData("A\n<$B>r1\nr2\n");
        appPrefs().framesFirst = framesFirst ? 1 : 0;
        link("A").type = linkTypeText;
        useFrame(Kind::graphic, "A");
        EXPECT_THAT(merge(), ElementsAre("<$B>r1", "r2"));
        useData("A\nr3\nr4\n");
        link("A").type = linkTypeText;
        useFrame(Kind::text, "A", "2");
        EXPECT_THAT(merge(), ElementsAre("r4"));
    }
}

}  // namespace
}  // namespace tarnova
