// From display items to the operators of a content stream.
//
// Coordinates are written in points with the origin at the page's lower left corner, in whole thousandths of a point:
// moves between lines are differences of these, so they add up without error.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/render/byte_buffer.h"
#include "host/render/display_list.h"
#include "host/render/glyph_clusters.h"
#include "host/render/pdf_fonts.h"

namespace tarnova {

class GlyphShower;

/// Writes one stream after another into a buffer that is used again. It remembers what the graphics state holds and
/// writes only what changes.
class PdfContent {
 public:
    explicit PdfContent(PdfFontTable& fontTable) : fonts(fontTable) {}

    /// Begins a page, or with `isForm` the content of a Form XObject, whose state is that of wherever it is used and so
    /// unknown (ISO 32000-2, 8.10.1).
    void begin(const DisplayList& list, bool isForm);
    void draw(const DisplayItem& item);
    /// Paints the form with this resource name.
    void useForm(std::string_view name);
    /// The stream is complete; valid until the next `begin`.
    [[nodiscard]] std::string_view end();

    /// The pictures that the stream shows, by the number in their resource names: P0, P1, ... Valid until the next
    /// `begin`.
    [[nodiscard]] const std::vector<std::shared_ptr<const PlacedGraphic>>& pictures() const { return shown; }

    /// Language of the first text that was drawn (BCP 47); empty when there was none.
    [[nodiscard]] const std::string& language() const { return firstLanguage; }

 private:
    using Units = std::int64_t;  // thousandths of a point; colours in ten-thousandths

    struct Color {
        Swatch::Space space = Swatch::Space::none;  // none: unknown
        Units values[4] = {0, 0, 0, 0};
        friend bool operator==(const Color&, const Color&) = default;
    };
    struct Dash {
        std::vector<Units> lengths;
        friend bool operator==(const Dash&, const Dash&) = default;
    };
    struct State {
        Color fill, stroke;
        std::optional<Units> lineWidth, miterLimit;
        std::optional<int> cap, join;
        std::optional<Dash> dash;
        const PdfFont* font = nullptr;
        Units fontSize = 0;
        std::optional<Units> horizontalScale;
    };
    /// A decoration below or through text, in the coordinates of the frame.
    struct Rule {
        PMRect bounds;
        const Paint* paint;
        const GlyphRun* turned;  // the run, when it is turned
    };

    void drawShape(const DisplayItem& item);
    void drawPicture(const DisplayItem& item);
    void clipTo(const std::vector<SubPath>& path, const PMMatrix& toPage, std::string_view rule);
    [[nodiscard]] std::size_t nameOf(const std::shared_ptr<const PlacedGraphic>& graphic);
    void drawText(const DisplayItem& item);
    void drawLine(const DisplayItem& item, const ComposedLine& line);
    void drawRun(const DisplayItem& item, const GlyphRun& run);
    void showGlyphs(const ComposedStory& text, const GlyphRun& run, PdfFont& font);
    void showGlyph(GlyphShower& shower, const GlyphRun& run, const PlacedGlyph& glyph, float nominal);
    void showMark(GlyphShower& shower, const GlyphRun& run, const PlacedGlyph& glyph);
    [[nodiscard]] std::uint32_t showCluster(GlyphShower& shower, const GlyphRun& run, const PlacedGlyph* glyphs,
                                            const GlyphCluster& cluster, PdfFont& font);
    void addRules(const GlyphRun& run);
    void drawRules(const PMMatrix& toPage);
    void drawRule(const Rule& rule);

    void beginText();
    void endText();
    void moveTextTo(const PMMatrix& toPage, const GlyphRun& run);
    void setFont(const GlyphRun& run, const PdfFont& font);

    void setFill(const PaintColor& color);
    void setStroke(const ItemShape& shape);
    void setStrokeColor(const PaintColor& color);
    void setDash(const ItemShape& shape);
    void putColor(const Color& color, std::string_view cmykOperator, std::string_view rgbOperator);

    /// A path's points go to the page directly when the matrix only shifts; else the matrix goes into the state.
    void pushMatrix(const PMMatrix& toPage);
    void popMatrix();
    void putPath(const ItemShape& shape);
    void putSubPath(const SubPath& path);
    void putRectangle(const PMRect& bounds);
    void putPoint(PMPoint point);
    void putUnits(Units units, char behind) {
        out.putFixed(units, 3);
        out.put(behind);
    }

    PdfFontTable& fonts;
    ByteBuffer out;
    const DisplayList* list = nullptr;
    State state;
    State outerState;
    bool matrixPushed = false;
    double shiftX = 0, shiftY = 0;  // of points while no matrix is pushed
    double flip = -1;               // 1 while a matrix is pushed: it turns the y axis itself
    bool inText = false;
    bool lineIsUpright = true;   // the text line matrix is a shift only,
    Units lineX = 0, lineY = 0;  // namely this
    ClusterReader clusters;
    std::vector<Rule> rules;
    std::vector<std::shared_ptr<const PlacedGraphic>> shown;
    std::string firstLanguage;
};

}  // namespace tarnova
