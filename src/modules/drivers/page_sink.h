// Where a driver's pages go: a file that appears whole, or files that all appear.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "document/uid.h"
#include "host/model/document_model.h"
#include "host/render/shown_picture.h"

namespace tarnova {

/// What is asked of the output, from the text of the arming command: words such as "bleed=8.5", in any order. Words
/// that aren't known are passed over.
struct sinkOptionsRec {
    double bleed = 0;        // points, of a PDF
    bool bookmarks = false;  // of a PDF
    double dpi = 0;          // of pictures; 0 the usual one
    int jobs = 1;            // processes that work on it
};
[[nodiscard]] sinkOptionsRec readSinkOptions(std::string_view text);
/// The text that `readSinkOptions` reads.
[[nodiscard]] std::string sinkOptionsText(const sinkOptionsRec& options);

/// Takes pages, in order. What says false leaves a message for people in `error()`. Without `finish` nothing of the
/// output stays.
class PageSink {
 public:
    virtual ~PageSink() = default;
    [[nodiscard]] virtual bool addPage(const DocumentModel& document, UID page) = 0;
    [[nodiscard]] virtual bool finish() = 0;
    [[nodiscard]] virtual const std::string& error() const = 0;
    [[nodiscard]] virtual std::int64_t oversetStories() const = 0;
    /// Pictures that show as grey boxes; in a worker none.
    [[nodiscard]] virtual const std::vector<PictureProblem>& pictureProblems() const = 0;
    [[nodiscard]] virtual std::int64_t pageCount() const = 0;

    // Work of several processes, as in pdf_writer.h.
    [[nodiscard]] virtual bool sharesWork() const { return false; }
    virtual void keepPages() {}
    [[nodiscard]] virtual std::optional<std::string> takeKeptPages() { return std::nullopt; }
    [[nodiscard]] virtual bool addKeptPages(std::string_view, bool& fits) {
        fits = false;
        return true;
    }
};

/// The sink for a path: pictures for ".png", else a PDF. `pagesOfRun` is how many pages are to come. It may have failed
/// already: see `error()`.
[[nodiscard]] std::unique_ptr<PageSink> openSink(const std::string& path, const sinkOptionsRec& options,
                                                 const DocumentModel& layout, std::int32_t pagesOfRun);

}  // namespace tarnova
