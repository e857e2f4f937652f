#include "modules/drivers/page_sink.h"

#include <charconv>
#include <filesystem>
#include <vector>

#include "host/render/page_path.h"
#include "host/render/pdf_writer.h"
#include "host/render/png_output.h"

namespace tarnova {
namespace {

class PdfSink final : public PageSink {
 public:
    PdfSink(const std::string& path, const sinkOptionsRec& options, const DocumentModel& layout) {
        PdfOptions pdf;
        pdf.title = layout.title();
        pdf.bleed = options.bleed;
        pdf.bookmarks = options.bookmarks;
        pdf.pagesOfCopy = layout.pageCount();
        static_cast<void>(writer.open(path, pdf));  // the writer keeps its error
    }
    bool addPage(const DocumentModel& document, UID page) override { return writer.addPage(document, page); }
    bool finish() override { return writer.finish(); }
    const std::string& error() const override { return writer.error(); }
    std::int64_t oversetStories() const override { return writer.oversetStories(); }
    const std::vector<PictureProblem>& pictureProblems() const override { return writer.pictureProblems(); }
    std::int64_t pageCount() const override { return writer.pageCount(); }
    bool sharesWork() const override { return true; }
    void keepPages() override { writer.keepPages(); }
    std::optional<std::string> takeKeptPages() override { return writer.takeKeptPages(); }
    bool addKeptPages(std::string_view kept, bool& fits) override { return writer.addKeptPages(kept, fits); }

 private:
    PdfWriter writer;
};

/// A file a page; those of a run that isn't finished are taken away again.
class PngSink final : public PageSink {
 public:
    PngSink(std::string path, double resolution, std::int32_t pageTotal)
        : outputPath(std::move(path)), dpi(resolution > 0 ? resolution : pngDefaultDpi), pagesOfRun(pageTotal) {}
    ~PngSink() override {
        std::error_code ignored;
        for (const std::string& path : unfinished)
            std::filesystem::remove(path, ignored);
    }
    PngSink(const PngSink&) = delete;
    PngSink& operator=(const PngSink&) = delete;

    bool addPage(const DocumentModel& document, UID page) override {
        const std::string path = pageFilePath(outputPath, ++pages, pagesOfRun, pagesOfRun == 1);
        if (!writePagePng(document, page, path, dpi, &notes, message)) return false;
        unfinished.push_back(path);
        return true;
    }
    bool finish() override {
        unfinished.clear();
        return true;
    }
    const std::string& error() const override { return message; }
    std::int64_t oversetStories() const override { return static_cast<std::int64_t>(notes.overset.size()); }
    const std::vector<PictureProblem>& pictureProblems() const override { return notes.pictures; }
    std::int64_t pageCount() const override { return pages; }

 private:
    std::string outputPath;
    double dpi;
    std::int32_t pagesOfRun;
    std::int32_t pages = 0;
    std::vector<std::string> unfinished;
    PageNotes notes;
    std::string message;
};

/// The number behind "name=" among the words of the text; `fallback` without the word.
double numberOf(std::string_view text, std::string_view name, double fallback) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (!word.starts_with(name) || word.size() <= name.size() || word[name.size()] != '=') continue;
        const char* const first = word.data() + name.size() + 1;
        static_cast<void>(std::from_chars(first, word.data() + word.size(), fallback));
    }
    return fallback;
}

}  // namespace

sinkOptionsRec readSinkOptions(std::string_view text) {
    sinkOptionsRec options;
    options.bleed = numberOf(text, "bleed", options.bleed);
    options.bookmarks = numberOf(text, "bookmarks", 0) != 0;
    options.dpi = numberOf(text, "dpi", options.dpi);
    options.jobs = static_cast<int>(numberOf(text, "jobs", options.jobs));
    return options;
}

std::string sinkOptionsText(const sinkOptionsRec& options) {
    return "bleed=" + std::to_string(options.bleed) + " bookmarks=" + (options.bookmarks ? "1" : "0") +
           " dpi=" + std::to_string(options.dpi) + " jobs=" + std::to_string(options.jobs);
}

std::unique_ptr<PageSink> openSink(const std::string& path, const sinkOptionsRec& options, const DocumentModel& layout,
                                   std::int32_t pagesOfRun) {
    if (std::filesystem::path(path).extension() == ".png") {
        return std::make_unique<PngSink>(path, options.dpi, pagesOfRun);
    }
    return std::make_unique<PdfSink>(path, options, layout);
}

}  // namespace tarnova
