// Reads any bytes through the import filters for formatted text. What a filter takes must be text with paragraphs, runs
// that aren't empty but for an empty paragraph's, and values that a layout file takes.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "host/files/import_text_filters.h"

namespace {

using namespace tarnova;

void check(const ImportedText& text) {
    if (text.paragraphs.empty()) std::abort();
    for (const ImportedParagraph& paragraph : text.paragraphs) {
        if (paragraph.runs.empty()) std::abort();
        for (const ImportedRun& run : paragraph.runs) {
            if (run.text.empty() && paragraph.runs.size() > 1) std::abort();
            if (run.text.find(U'\r') != std::u32string::npos) std::abort();
            const auto size = run.look.overrides.pointSize;
            if (size && !(*size > 0 && *size <= 8640)) std::abort();
        }
    }
    for (const Swatch& swatch : text.swatches)
        if (swatch.name.empty()) std::abort();
    for (const ImportedStyle& style : text.styles)
        if (style.name.empty()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    for (const auto& filter : {makeTaggedTextFilter(), makeRtfFilter()}) {
        ImportedText text;
        const bool read = filter->read(bytes, text);
        if (read && filter->takes(bytes) == TextImportFilter::Answer::no) std::abort();
        if (read) check(text);
    }
    return 0;
}
