// Pages put together by hand, and outside programs that read what we wrote.

#pragma once

#include <hb.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "host/model/item_shape.h"
#include "host/model/story_text.h"
#include "host/render/display_list.h"
#include "host/render/pdf_writer.h"
#include "host/text/font.h"

namespace tarnova::testing {

/// A folder that goes with its test.
class ScratchFolder {
 public:
    ScratchFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "tarnova-render-XXXXXX").string();
        folder = ::mkdtemp(name.data());
    }
    ~ScratchFolder() { std::filesystem::remove_all(folder); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    [[nodiscard]] std::string path(std::string_view name) const { return (folder / name).string(); }
    [[nodiscard]] std::size_t fileCount() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
    }

 private:
    std::filesystem::path folder;
};

struct CommandResult {
    int status = -1;
    std::string output;  // standard output and error
};

inline CommandResult runCommand(const std::string& command) {
    CommandResult result;
    std::FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return result;
    std::array<char, 4096> piece{};
    for (std::size_t count = 0; (count = std::fread(piece.data(), 1, piece.size(), pipe)) != 0;) {
        result.output.append(piece.data(), count);
    }
    const int status = ::pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

inline std::string fileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline std::size_t countOf(std::string_view text, std::string_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

/// The file with all streams and object streams opened, as qpdf writes it.
inline std::string unpackedPdf(const std::string& path) {
    const std::string opened = path + ".qdf";
    const CommandResult result = runCommand("qpdf --qdf --object-streams=disable '" + path + "' '" + opened + "'");
    const std::string bytes = result.status == 0 ? fileBytes(opened) : result.output;
    std::filesystem::remove(opened);
    return bytes;
}

/// "" when qpdf finds nothing to say against the file.
inline std::string complaintsAbout(const std::string& path) {
    const CommandResult result = runCommand("qpdf --check '" + path + "'");
    const bool silent = result.status == 0 && result.output.find("WARNING") == std::string::npos &&
                        result.output.find("No syntax or stream encoding errors found") != std::string::npos;
    return silent ? "" : result.output;
}

/// A frame without a look.
inline ItemShape frameOf(const PMRect& bounds) {
    ItemShape frame;
    frame.bounds = bounds;
    return frame;
}

/// A page put together piece by piece. What it shows lives as long as the kit.
class PageKit {
 public:
    explicit PageKit(double width = 200, double height = 300) {
        list.page = {0, 0, width, height};
        list.swatches = &swatches;
    }

    static constexpr std::int32_t red = 2;     // CMYK 0 1 1 0
    static constexpr std::int32_t bluish = 3;  // RGB 0 0.5 1

    DisplayItem& shape(const ItemShape& shape, const PMMatrix& toPage = {}) {
        ItemShape& kept = shapes.emplace_back(shape);
        if (kept.path.empty()) kept.path = pathOf(kept.kind, kept.bounds);
        DisplayItem& item = list.items.emplace_back();
        item.toPage = toPage;
        item.shape = &kept;
        item.itemStamp = ++stamp;
        return item;
    }

    DisplayItem& rectangle(const PMRect& bounds, Paint fill) {
        ItemShape shapeOfIt;
        shapeOfIt.bounds = bounds;
        shapeOfIt.fill = fill;
        return shape(shapeOfIt);
    }

    /// One line at a baseline, shaped by HarfBuzz alone; `direction` as in hb.h.
    DisplayItem& line(std::u32string_view text, double x, double baseline, const CharFormat& format = {},
                      const PMMatrix& toPage = {}, hb_direction_t direction = HB_DIRECTION_LTR) {
        static const RunAttributes run;
        static const ParagraphAttributes paragraph;
        StoryTextBuilder builder;
        builder.append(text, &run);
        builder.endParagraph(&paragraph, &run);
        builder.endThread();
        StoryText& story = stories.emplace_back(*builder.finish());
        ComposedStory& composed = layouts.emplace_back();
        shapeLine(story, composed, formats.emplace_back(format), {x, baseline}, direction);
        DisplayItem& item = list.items.emplace_back();
        item.toPage = toPage;
        item.text = &composed;
        item.characters = &story;
        item.columnCount = 1;
        item.itemStamp = ++stamp;
        item.storyStamp = ++stamp;
        return item;
    }

    DisplayItem& picture(const PlacedGraphic& graphic, const ItemShape& frame, const PMMatrix& toPage = {}) {
        DisplayItem& item = shape(frame, toPage);
        item.picture = &pictures.emplace_back();
        pictures.back().graphic = std::make_shared<const PlacedGraphic>(graphic);
        return item;
    }

    /// A picture that fills `bounds` of its frame.
    DisplayItem& picture(const std::string& path, const PMRect& bounds, const ItemShape& frame,
                         const PMMatrix& toPage = {}) {
        PlacedGraphic graphic;
        graphic.filePath = path;
        graphic.bounds = bounds;
        return picture(graphic, frame, toPage);
    }

    /// Marks all that is on the page so far as part of the template.
    void repeatAll() {
        for (DisplayItem& item : list.items)
            item.repeats = true;
    }

    [[nodiscard]] ComposedStory& lastLine() { return layouts.back(); }

    DisplayList list;
    std::vector<Swatch> swatches = {{"None", Swatch::Space::none, {}},
                                    {"Black", Swatch::Space::cmyk, {0, 0, 0, 1}},
                                    {"Red", Swatch::Space::cmyk, {0, 1, 1, 0}},
                                    {"Bluish", Swatch::Space::rgb, {0, 0.5, 1, 0}}};

 private:
    void shapeLine(const StoryText& story, ComposedStory& composed, const CharFormat& format, PMPoint origin,
                   hb_direction_t direction) {
        GlyphRun run;
        run.font = FontService::instance().find(format.family, format.fontStyle);
        run.format = &format;
        run.size = static_cast<float>(format.pointSize);
        run.horizontalScale = static_cast<float>(format.horizontalScale);
        run.x = static_cast<float>(origin.x);
        run.y = static_cast<float>(origin.y);
        const std::unique_ptr<hb_buffer_t, decltype(&hb_buffer_destroy)> buffer(hb_buffer_create(), hb_buffer_destroy);
        const int length = story.length() - 1;
        const std::u32string text = charactersOf(story, 0, length);
        const std::vector<std::uint32_t> codes(text.begin(), text.end());
        hb_buffer_add_utf32(buffer.get(), codes.data(), length, 0, length);
        hb_buffer_set_direction(buffer.get(), direction);
        hb_buffer_guess_segment_properties(buffer.get());
        hb_shape(run.font->shaper(), buffer.get(), nullptr, 0);
        unsigned count = 0;
        const hb_glyph_info_t* infos = hb_buffer_get_glyph_infos(buffer.get(), &count);
        const hb_glyph_position_t* positions = hb_buffer_get_glyph_positions(buffer.get(), &count);
        for (unsigned i = 0; i < count; ++i) {
            composed.glyphs.push_back({static_cast<std::uint16_t>(infos[i].codepoint),
                                       static_cast<float>(positions[i].x_advance),
                                       static_cast<float>(positions[i].x_offset),
                                       static_cast<float>(positions[i].y_offset), infos[i].cluster});
            run.width += composed.glyphs.back().advance / 1000 * run.size * run.horizontalScale;
        }
        run.glyphCount = count;
        composed.runs.push_back(run);
        ComposedLine line;
        line.limit = length + 1;
        line.baseline = run.y;
        line.runCount = 1;
        composed.lines.push_back(line);
        ComposedColumn column;
        column.lineCount = 1;
        composed.columns.push_back(column);
    }

    std::uint64_t stamp = 0;
    std::deque<ItemShape> shapes;
    std::deque<PageItem> pictures;
    std::deque<StoryText> stories;
    std::deque<ComposedStory> layouts;
    std::deque<CharFormat> formats;
};

}  // namespace tarnova::testing
