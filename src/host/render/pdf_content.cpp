#include "host/render/pdf_content.h"

#include <algorithm>
#include <cmath>

#include "host/render/pdf_text_show.h"
#include "host/render/shown_picture.h"
#include "host/render/stroke_dash.h"
#include "host/render/text_rules.h"

namespace tarnova {

namespace {

std::int64_t thousandths(double value) {
    return ByteBuffer::quantize(value, 1000);
}

bool onlyShifts(const PMMatrix& matrix) {
    return matrix.a == 1 && matrix.b == 0 && matrix.c == 0 && matrix.d == 1;
}

/// True when the glyphs of the cluster are those of its characters one by one, in reading order or against it.
bool mapsOneByOne(const PlacedGlyph* glyphs, const GlyphCluster& cluster, const Font& font, bool reversed) {
    if (cluster.glyphCount != cluster.text.size()) return false;
    for (std::uint32_t i = 0; i < cluster.glyphCount; ++i) {
        const char32_t character = cluster.text[reversed ? cluster.glyphCount - 1 - i : i];
        if (font.glyphOf(character) != glyphs[i].glyph) return false;
    }
    return true;
}

/// Notes what the cluster's glyphs stand for. False: the font can't say it, so the page has to.
bool noteCluster(const PlacedGlyph* glyphs, const GlyphCluster& cluster, PdfFont& font) {
    if (cluster.text.empty()) return true;
    if (cluster.glyphCount == 1) {
        return cluster.text.size() == 1 ? font.standsFor(glyphs[0].glyph, cluster.text[0])
                                        : font.standsFor(glyphs[0].glyph, cluster.text);
    }
    const bool inOrder = mapsOneByOne(glyphs, cluster, font.font(), false);
    if (!inOrder && !mapsOneByOne(glyphs, cluster, font.font(), true)) return false;
    bool noted = true;
    for (std::uint32_t i = 0; i < cluster.glyphCount; ++i) {
        noted &= font.standsFor(glyphs[i].glyph, cluster.text[inOrder ? i : cluster.glyphCount - 1 - i]);
    }
    return noted;
}

}  // namespace

void PdfContent::begin(const DisplayList& page, bool isForm) {
    list = &page;
    out.clear();
    shown.clear();
    state = State{};
    inText = false;
    if (isForm) return;
    state.lineWidth = 1000;
    state.miterLimit = 10000;
    state.cap = 0;
    state.join = 0;
    state.dash.emplace();
    state.horizontalScale = 100'000;
}

std::string_view PdfContent::end() {
    endText();
    if (!out.empty()) out.truncate(out.size() - 1);  // the stream's end brings a line end of its own
    return out.view();
}

void PdfContent::useForm(std::string_view name) {
    endText();
    out.put('/');
    out.put(name);
    out.put(" Do\n");
}

void PdfContent::draw(const DisplayItem& item) {
    if (item.text != nullptr) {
        drawText(item);
    } else if (item.picture != nullptr) {
        drawPicture(item);
    } else {
        drawShape(item);
    }
}

// Shapes

void PdfContent::drawShape(const DisplayItem& item) {
    endText();
    const ItemShape& shape = *item.shape;
    const PaintColor fill = resolvePaint(shape.fill, *list->swatches);
    const PaintColor strokeColor = resolvePaint(shape.stroke.paint, *list->swatches);
    const bool filled = item.part != ShapePart::stroke && fill.space != Swatch::Space::none;
    const bool stroked =
        item.part != ShapePart::fill && strokeColor.space != Swatch::Space::none && shape.stroke.weight > 0;
    pushMatrix(item.toPage);
    if (filled) setFill(fill);
    if (stroked) {
        setStrokeColor(strokeColor);
        setStroke(shape);
    }
    putPath(shape);
    out.put(filled && stroked ? "B\n" : filled ? "f\n" : "S\n");
    popMatrix();
}

void PdfContent::pushMatrix(const PMMatrix& toPage) {
    if (onlyShifts(toPage)) {
        shiftX = toPage.tx;
        shiftY = list->page.height() - toPage.ty;
        flip = -1;
        return;
    }
    outerState = state;
    matrixPushed = true;
    shiftX = shiftY = 0;
    flip = 1;
    out.put("q ");
    for (const double value : {toPage.a, -toPage.b, toPage.c, -toPage.d}) {
        out.putNumber(value);
        out.put(' ');
    }
    putUnits(thousandths(toPage.tx), ' ');
    putUnits(thousandths(list->page.height() - toPage.ty), ' ');
    out.put("cm\n");
}

void PdfContent::popMatrix() {
    if (!matrixPushed) return;
    out.put("Q\n");
    state = outerState;
    matrixPushed = false;
}

void PdfContent::putPoint(PMPoint point) {
    putUnits(thousandths(shiftX + point.x), ' ');
    putUnits(thousandths(shiftY + flip * point.y), ' ');
}

void PdfContent::putPath(const ItemShape& shape) {
    if (isRectangle(shape)) {
        putRectangle(shape.bounds);
        return;
    }
    for (const SubPath& path : shape.path)
        putSubPath(path);
}

void PdfContent::putSubPath(const SubPath& path) {
    putPoint(path.start);
    out.put("m\n");
    for (const PathSegment& segment : path.segments) {
        if (segment.kind == PathSegment::Kind::curve) {
            putPoint(segment.control1);
            putPoint(segment.control2);
        }
        putPoint(segment.to);
        out.put(segment.kind == PathSegment::Kind::curve ? "c\n" : "l\n");
    }
    if (path.closed) out.put("h\n");
}

/// Corners are rounded, not sizes, so that rectangles that touch keep touching.
void PdfContent::putRectangle(const PMRect& bounds) {
    const Units left = thousandths(shiftX + bounds.left), right = thousandths(shiftX + bounds.right);
    const Units top = thousandths(shiftY + flip * bounds.top), bottom = thousandths(shiftY + flip * bounds.bottom);
    putUnits(left, ' ');
    putUnits(std::min(top, bottom), ' ');
    putUnits(right - left, ' ');
    putUnits(std::abs(top - bottom), ' ');
    out.put("re\n");
}

// Pictures

/// The picture fills the unit square, upward, of the matrix that is set for it.
void PdfContent::drawPicture(const DisplayItem& item) {
    const PlacedGraphic& graphic = *item.picture->graphic;
    const PMRect& bounds = graphic.bounds;
    const PMMatrix toPage = item.picture->toParent.then(item.toPage);
    const PMMatrix unit = PMMatrix{bounds.width(), 0, 0, -bounds.height(), bounds.left, bounds.bottom}.then(toPage);
    if (!unit.inverse()) return;
    endText();
    out.put("q\n");
    if (frameClips(item)) clipTo(item.shape->path, item.toPage, "W n\n");
    if (!graphic.clipPath.empty()) clipTo(graphic.clipPath, toPage, "W* n\n");
    for (const double value : {unit.a, -unit.b, unit.c, -unit.d}) {
        out.putNumber(value);
        out.put(' ');
    }
    putUnits(thousandths(unit.tx), ' ');
    putUnits(thousandths(list->page.height() - unit.ty), ' ');
    out.put("cm /P");
    out.putInteger(static_cast<std::int64_t>(nameOf(item.picture->graphic)));
    out.put(" Do\nQ\n");
}

void PdfContent::clipTo(const std::vector<SubPath>& path, const PMMatrix& toPage, std::string_view rule) {
    shiftX = 0;
    shiftY = list->page.height();
    flip = -1;
    for (const SubPath& part : path)
        putSubPath(mappedPath(part, toPage));
    out.put(rule);
}

std::size_t PdfContent::nameOf(const std::shared_ptr<const PlacedGraphic>& graphic) {
    const auto index = static_cast<std::size_t>(std::find(shown.begin(), shown.end(), graphic) - shown.begin());
    if (index == shown.size()) shown.push_back(graphic);
    return index;
}

// Graphics state

void PdfContent::putColor(const Color& color, std::string_view cmykOperator, std::string_view rgbOperator) {
    const bool isCmyk = color.space == Swatch::Space::cmyk;
    for (int i = 0; i < (isCmyk ? 4 : 3); ++i) {
        out.putFixed(color.values[i], 4);
        out.put(' ');
    }
    out.put(isCmyk ? cmykOperator : rgbOperator);
}

void PdfContent::setFill(const PaintColor& paint) {
    Color color{paint.space, {}};
    for (int i = 0; i < 4; ++i)
        color.values[i] = ByteBuffer::quantize(paint.values[i], 10000);
    if (color == state.fill) return;
    state.fill = color;
    putColor(color, "k\n", "rg\n");
}

void PdfContent::setStrokeColor(const PaintColor& paint) {
    Color color{paint.space, {}};
    for (int i = 0; i < 4; ++i)
        color.values[i] = ByteBuffer::quantize(paint.values[i], 10000);
    if (color == state.stroke) return;
    state.stroke = color;
    putColor(color, "K\n", "RG\n");
}

void PdfContent::setStroke(const ItemShape& shape) {
    const Stroke& stroke = shape.stroke;
    const auto set = [](auto& known, auto value, auto put) {
        if (known == value) return;
        known = value;
        put(value);
    };
    const auto putLength = [this](std::string_view operation) {
        return [this, operation](Units units) {
            putUnits(units, ' ');
            out.put(operation);
        };
    };
    const auto putChoice = [this](std::string_view operation) {
        return [this, operation](int choice) {
            out.putInteger(choice);
            out.put(operation);
        };
    };
    const bool mitered = stroke.join == Stroke::Join::miter;
    // Width 0 would be the device's thinnest line.
    set(state.lineWidth, std::max<Units>(thousandths(stroke.weight), 1), putLength("w\n"));
    set(state.cap, static_cast<int>(stroke.cap), putChoice(" J\n"));
    set(state.join, static_cast<int>(stroke.join), putChoice(" j\n"));
    if (mitered) set(state.miterLimit, thousandths(std::max(stroke.miterLimit, 1.0)), putLength("M\n"));
    setDash(shape);
}

/// A pattern without any length is refused by readers; it is drawn solid.
void PdfContent::setDash(const ItemShape& shape) {
    Dash dash;
    Units total = 0;
    if (!shape.stroke.dash.empty()) {
        for (const double length : drawnDash(shape))
            dash.lengths.push_back(thousandths(length));
    }
    for (const Units length : dash.lengths)
        total += length;
    if (total == 0) dash.lengths.clear();
    if (state.dash == dash) return;
    out.put('[');
    for (std::size_t i = 0; i < dash.lengths.size(); ++i) {
        if (i != 0) out.put(' ');
        out.putFixed(dash.lengths[i], 3);
    }
    out.put("]0 d\n");
    state.dash = std::move(dash);
}

// Text

void PdfContent::beginText() {
    if (inText) return;
    inText = true;
    lineIsUpright = true;
    lineX = lineY = 0;
    out.put("BT\n");
}

void PdfContent::endText() {
    if (!inText) return;
    inText = false;
    out.put("ET\n");
}

void PdfContent::drawText(const DisplayItem& item) {
    rules.clear();
    const ComposedStory& text = *item.text;
    for (std::uint32_t c = item.firstColumn; c < item.firstColumn + item.columnCount; ++c) {
        const ComposedColumn& column = text.columns[c];
        for (std::uint32_t i = 0; i < column.lineCount; ++i)
            drawLine(item, text.lines[column.firstLine + i]);
    }
    if (!rules.empty()) drawRules(item.toPage);
}

void PdfContent::drawLine(const DisplayItem& item, const ComposedLine& line) {
    clusters.begin(*item.text, line, *item.characters, item.textStart);
    for (std::uint32_t r = line.firstRun; r < line.firstRun + line.runCount; ++r)
        drawRun(item, item.text->runs[r]);
}

void PdfContent::drawRun(const DisplayItem& item, const GlyphRun& run) {
    const PaintColor color = resolvePaint(run.format->color, *list->swatches);
    if (run.glyphCount == 0 || color.space == Swatch::Space::none) return;
    if (firstLanguage.empty()) firstLanguage = run.format->language;
    PdfFont& font = fonts.use(*run.font);
    beginText();
    setFill(color);
    setFont(run, font);
    moveTextTo(isTurned(run) ? turnOf(run).then(item.toPage) : item.toPage, run);
    showGlyphs(*item.text, run, font);
    if (run.format->underline || run.format->strikeThrough) addRules(run);
}

void PdfContent::setFont(const GlyphRun& run, const PdfFont& font) {
    const Units size = thousandths(static_cast<double>(run.size));
    if (state.font != &font || state.fontSize != size) {
        state.font = &font;
        state.fontSize = size;
        out.put("/F");
        out.putInteger(font.number());
        out.put(' ');
        putUnits(size, ' ');
        out.put("Tf\n");
    }
    const Units scale = thousandths(static_cast<double>(run.horizontalScale) * 100);
    if (state.horizontalScale == scale) return;
    state.horizontalScale = scale;
    putUnits(scale, ' ');
    out.put("Tz\n");
}

void PdfContent::moveTextTo(const PMMatrix& toPage, const GlyphRun& run) {
    const PMPoint origin = toPage.map({static_cast<double>(run.x), static_cast<double>(run.y)});
    const Units x = thousandths(origin.x);
    const Units y = thousandths(list->page.height() - origin.y);
    const bool upright = onlyShifts(toPage);
    if (upright && lineIsUpright) {
        putUnits(x - lineX, ' ');
        putUnits(y - lineY, ' ');
        out.put("Td\n");
    } else {
        // Text's y axis runs upward, the frame's downward.
        for (const double value : {toPage.a, -toPage.b, -toPage.c, toPage.d}) {
            out.putNumber(value);
            out.put(' ');
        }
        putUnits(x, ' ');
        putUnits(y, ' ');
        out.put("Tm\n");
    }
    lineIsUpright = upright;
    lineX = x;
    lineY = y;
}

void PdfContent::showGlyphs(const ComposedStory& text, const GlyphRun& run, PdfFont& font) {
    GlyphShower shower(out, run.glyphCount);
    const PlacedGlyph* glyphs = &text.glyphs[run.firstGlyph];
    clusters.beginRun(run);
    for (std::uint32_t i = 0; i < run.glyphCount;) {
        const char32_t character = clusters.single(i);
        float nominal = 0;
        if (character != 0 && font.useFor(glyphs[i].glyph, character, nominal)) {
            showGlyph(shower, run, glyphs[i], nominal);
            ++i;
        } else {
            i += showCluster(shower, run, glyphs + i, clusters.at(i), font);
        }
    }
    shower.close();
}

inline void PdfContent::showGlyph(GlyphShower& shower, const GlyphRun& run, const PlacedGlyph& glyph, float nominal) {
    if (glyph.offsetX != 0 || glyph.offsetY != 0) {
        showMark(shower, run, glyph);
    } else {
        shower.settle();
        shower.glyph(glyph.glyph);
    }
    shower.move(glyph.advance - nominal);
}

/// A glyph beside the pen: raised by the text rise, moved there and back.
void PdfContent::showMark(GlyphShower& shower, const GlyphRun& run, const PlacedGlyph& glyph) {
    shower.move(glyph.offsetX);
    shower.settle();
    shower.close();
    putUnits(thousandths(static_cast<double>(glyph.offsetY * run.size) / 1000), ' ');
    out.put("Ts\n");
    shower.glyph(glyph.glyph);
    shower.close();
    out.put("0 Ts\n");
    shower.move(-glyph.offsetX);
}

/// Shows a cluster that isn't one glyph for one character; gives the number of its glyphs.
std::uint32_t PdfContent::showCluster(GlyphShower& shower, const GlyphRun& run, const PlacedGlyph* glyphs,
                                      const GlyphCluster& cluster, PdfFont& font) {
    const bool marked = !noteCluster(glyphs, cluster, font);
    if (marked) {
        shower.close();
        out.put("/Span<</ActualText<FEFF");
        putUtf16Hex(out, cluster.text);
        out.put(">>>BDC\n");
    }
    for (std::uint32_t i = 0; i < cluster.glyphCount; ++i)
        showGlyph(shower, run, glyphs[i], font.use(glyphs[i].glyph));
    if (marked) {
        shower.close();
        out.put("EMC\n");
    }
    return cluster.glyphCount;
}

void PdfContent::addRules(const GlyphRun& run) {
    const TextRules added = textRulesOf(run);
    for (int i = 0; i < added.count; ++i)
        rules.push_back({added.rules[i], &run.format->color, isTurned(run) ? &run : nullptr});
}

void PdfContent::drawRules(const PMMatrix& toPage) {
    endText();
    pushMatrix(toPage);
    for (const Rule& rule : rules) {
        if (rule.turned == nullptr) drawRule(rule);
    }
    popMatrix();
    for (const Rule& rule : rules) {
        if (rule.turned == nullptr) continue;
        pushMatrix(turnOf(*rule.turned).then(toPage));
        drawRule(rule);
        popMatrix();
    }
}

void PdfContent::drawRule(const Rule& rule) {
    setFill(resolvePaint(*rule.paint, *list->swatches));
    putRectangle(rule.bounds);
    out.put("f\n");
}

}  // namespace tarnova
