#include "host/text/long_story.h"

#include <algorithm>
#include <string>
#include <utility>

#include "host/text/span_gatherer.h"

namespace tarnova {

namespace {

bool sameColumns(const std::vector<ColumnBox>& a, const std::vector<ColumnBox>& b) {
    // A copied story has frames of its own, in the same shapes.
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const ColumnBox& x, const ColumnBox& y) {
        return x.frameIndex == y.frameIndex && x.columnIndex == y.columnIndex && x.box == y.box &&
               x.options == y.options;
    });
}

bool sameState(const FlowStart& a, const FlowStart& b) {
    return a.line == b.line && a.hyphensAbove == b.hyphensAbove && a.indent == b.indent;
}

/// One step of composition. It ends where it was asked to, or where what was known before goes on.
class LongStory final : private FlowFollower {
 public:
    /// `before` is a composition of the story, perhaps with another text and in other columns, or null.
    LongStory(const DocumentModel& document, const Story& story, ComposeInput& input,
              std::shared_ptr<const ComposedParts> before);

    [[nodiscard]] std::shared_ptr<const ComposedParts> compose(StoryFlow& flow, std::int32_t through,
                                                               CompositionWork spent);

 private:
    bool addParagraph() override;
    bool goesOn(const FlowStart& next) override;

    void takeUp(const std::shared_ptr<const ComposedParts>& before);
    void keepColumns(const ComposedParts& before, std::int32_t unchanged);
    [[nodiscard]] std::int32_t settledLimit(std::int32_t unchanged) const;
    [[nodiscard]] const ParaFormat& formatAt(std::int32_t position) const {
        return *document_.resolvePara(*paragraphAt(content_, position).attributes);
    }
    [[nodiscard]] bool beginsAsBefore(const FlowStart& next) const;
    void flowOn(StoryFlow& flow);
    void closeColumns(std::size_t limit);
    void finish();
    void takeRest();

    const DocumentModel& document_;
    const StoryText& content_;
    ComposeInput& input_;
    std::int32_t mainLength_;
    std::int32_t through_ = 0;
    std::shared_ptr<const ComposedParts> before_;   // this text, or one before a change, in columns like these
    std::shared_ptr<const ComposedParts> further_;  // whose columns behind the change may still hold
    std::int32_t moved_ = 0;                        // characters by which its text behind the change moved
    std::int32_t sameFrom_ = 0;                     // where that text begins now
    std::shared_ptr<ComposedParts> made_;
    std::shared_ptr<ComposedStory> text_;  // of the columns in work
    std::size_t next_ = 0;                 // the first column that isn't done
    std::int32_t textStart_ = 0;           // what positions of the input count from
    std::u32string characters_;
    SpanGatherer gatherer_;
    bool joined_ = false;  // the rest is as it was
};

LongStory::LongStory(const DocumentModel& document, const Story& story, ComposeInput& input,
                     std::shared_ptr<const ComposedParts> before)
    : document_(document),
      content_(*story.content),
      input_(input),
      mainLength_(threadNumber(*story.content, 0).length),
      before_(std::move(before)),
      made_(std::make_shared<ComposedParts>()),
      gatherer_(document, *story.content, input) {
    made_->content = story.content;
    made_->boxes = input.columns;
    for (UID frame : story.frames)
        if (const PageItem* item = document.item(frame); item != nullptr) made_->shapes.push_back(item->shape);
    made_->columns.resize(input.columns.size());
    made_->columns.front().isBegun = true;
    if (before_ != nullptr && !sameColumns(before_->boxes, made_->boxes)) before_.reset();
}

std::shared_ptr<const ComposedParts> LongStory::compose(StoryFlow& flow, std::int32_t through, CompositionWork spent) {
    through_ = through;
    made_->work = spent;
    if (before_ != nullptr) takeUp(before_);
    const bool isKnown = next_ < made_->columns.size() && made_->columns[next_].isBegun &&
                         made_->columns[next_].begin.position > through;
    if (!isKnown) flowOn(flow);
    finish();
    return std::move(made_);
}

void LongStory::takeUp(const std::shared_ptr<const ComposedParts>& before) {
    const bool isSame = before->content->tree == content_.tree;
    const std::int32_t unchanged = isSame ? content_.length() : differenceOf(*before->content, content_).start;
    further_ = before->further != nullptr || isSame ? before->further : before;
    if (further_ != nullptr) {
        moved_ = content_.length() - further_->content->length();
        sameFrom_ = content_.length() - differenceOf(*further_->content, content_).sameAtEnd;
    }
    keepColumns(*before, isSame ? content_.length() : settledLimit(unchanged));
}

/// Where the paragraph ends, in the text that is unchanged at the start, behind which a column can't have ended
/// otherwise: it isn't kept with what follows.
std::int32_t LongStory::settledLimit(std::int32_t unchanged) const {
    StoryReader reader(content_);
    while (unchanged > 0) {
        const StoryParagraph last = reader.paragraphAt(unchanged - 1);
        if (document_.resolvePara(*last.attributes)->keepWithNext == 0) break;
        unchanged = last.start;
    }
    return unchanged;
}

/// Keeps the columns up to the last one that begins in front of the limit.
void LongStory::keepColumns(const ComposedParts& before, std::int32_t limit) {
    const std::size_t known = std::min(before.composedColumns + 1, before.columns.size());
    std::size_t from = 0;
    for (std::size_t i = 0; i < known; ++i) {
        if (!before.columns[i].isBegun) continue;
        if (before.columns[i].begin.position >= limit) break;
        from = i;
    }
    next_ = from;
    std::copy_n(before.columns.begin(), from, made_->columns.begin());
    made_->columns[from].begin = before.columns[from].begin;
    made_->columns[from].isBegun = true;
}

void LongStory::flowOn(StoryFlow& flow) {
    text_ = std::make_shared<ComposedStory>();
    input_.start = made_->columns[next_].begin;
    const std::int32_t position = input_.start.position;
    textStart_ = position == 0 ? 0 : paragraphAt(content_, position).start;
    input_.start.column = next_;
    input_.start.position = position - textStart_;
    input_.follower = this;
    for (std::size_t i = 0; i < next_; ++i)
        input_.linesInFront.push_back(made_->columns[i].text == nullptr ? 0
                                                                        : made_->columns[i].text->columns[i].lineCount);
    gatherer_.beginAt(textStart_);
    flow.compose(input_, *text_);
    if (!text_->isUnfinished) closeColumns(made_->columns.size());
}

bool LongStory::addParagraph() {
    if (gatherer_.position() >= mainLength_) return false;
    const std::u32string_view added = gatherer_.add();
    characters_ += added;
    input_.text = characters_;
    ++made_->work.paragraphs;
    made_->work.characters += static_cast<std::int32_t>(added.size());
    return true;
}

bool LongStory::goesOn(const FlowStart& next) {
    closeColumns(next.column);
    PartColumn& column = made_->columns[next.column];
    column.begin = next;
    column.begin.position += textStart_;
    column.isBegun = true;
    joined_ = beginsAsBefore(column.begin);
    return !joined_ && column.begin.position <= through_;
}

bool LongStory::beginsAsBefore(const FlowStart& begin) const {
    if (further_ == nullptr || begin.column >= further_->composedColumns) return false;
    const PartColumn& before = further_->columns[begin.column];
    // Where such a paragraph goes depends on the columns in front.
    if (begin.line == 0 && formatAt(begin.position).startIn != ParagraphStart::anywhere) return false;
    return before.isBegun && before.begin.position + moved_ == begin.position && begin.position >= sameFrom_ &&
           sameState(before.begin, begin);
}

/// The columns from the first open one on are as the flow left them.
void LongStory::closeColumns(std::size_t limit) {
    for (; next_ < limit; ++next_) {
        PartColumn& column = made_->columns[next_];
        column.limit = next_ == 0 ? 0 : made_->columns[next_ - 1].limit;
        const ComposedColumn& filled = text_->columns[next_];
        if (filled.lineCount == 0) continue;
        column.text = text_;
        column.textStart = textStart_;
        column.limit = textStart_ + filled.limit;
    }
}

void LongStory::finish() {
    made_->composedColumns = next_;
    const auto depends = [](const PartColumn& column) {
        return column.text != nullptr && column.text->dependsOnFramePlaces;
    };
    if (joined_) {
        takeRest();
    } else if (next_ < made_->columns.size()) {
        made_->composedLimit = made_->columns[next_].begin.position;
        made_->further = further_;
    } else {
        made_->composedLimit = content_.length();
        made_->shownLimit = next_ == 0 ? 0 : made_->columns.back().limit;
        made_->overset = made_->shownLimit < mainLength_ - 1;
    }
    made_->dependsOnFramePlaces = std::any_of(made_->columns.begin(), made_->columns.end(), depends);
}

/// From the next column on all is as it was, but for the places in the text.
void LongStory::takeRest() {
    for (std::size_t i = next_; i < made_->columns.size(); ++i) {
        PartColumn& column = made_->columns[i];
        column = further_->columns[i];
        column.textStart += moved_;
        column.limit += moved_;
        column.begin.position += moved_;
    }
    made_->composedColumns = further_->composedColumns;
    made_->composedLimit = further_->composedLimit + moved_;
    made_->shownLimit = further_->shownLimit + moved_;
    made_->overset = further_->overset;
}

}  // namespace

std::shared_ptr<const ComposedParts> composeLongStory(const DocumentModel& document, const Story& story,
                                                      ComposeInput& input, StoryFlow& flow, std::int32_t through) {
    const std::shared_ptr<const StoryLayout>& known = story.layout != nullptr ? story.layout : story.earlier;
    auto composed = std::dynamic_pointer_cast<const ComposedParts>(known);
    CompositionWork spent;
    do {
        input.clearText();
        composed = LongStory(document, story, input, composed).compose(flow, through, spent);
        spent = composed->work;
    } while (composed->composedLimit <= through);
    return composed;
}

}  // namespace tarnova
