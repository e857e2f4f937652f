#include "host/render/svg_output.h"

#include <cairo-svg.h>
#include <fmt/format.h>

#include <map>

#include "host/render/cairo_painter.h"
#include "host/render/cairo_target.h"
#include "host/render/output_file.h"
#include "host/render/page_links.h"

namespace tarnova {

namespace {

cairo_status_t append(void* closure, const unsigned char* data, unsigned count) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), count);
    return CAIRO_STATUS_SUCCESS;
}

/// The page as cairo writes it; empty when it couldn't, with its reason in `reason`.
std::string drawnSvg(const DisplayList& page, PageNotes& notes, std::string& reason) {
    std::string svg;
    const SurfacePtr surface(cairo_svg_surface_create_for_stream(append, &svg, page.page.width(), page.page.height()),
                             cairo_surface_destroy);
    cairo_svg_surface_restrict_to_version(surface.get(), CAIRO_SVG_VERSION_1_1);
    const ContextPtr context(cairo_create(surface.get()), cairo_destroy);
    CairoPainter(context.get(), page, notes.pictures).paintPage();
    cairo_show_page(context.get());
    const cairo_status_t drawn = cairo_status(context.get());
    cairo_surface_finish(surface.get());
    const cairo_status_t finished = cairo_surface_status(surface.get());
    if (drawn == CAIRO_STATUS_SUCCESS && finished == CAIRO_STATUS_SUCCESS) return svg;
    reason = cairo_status_to_string(drawn != CAIRO_STATUS_SUCCESS ? drawn : finished);
    return {};
}

/// The outer group is named by a number that counts the surfaces of the process.
void dropSurfaceName(std::string& svg) {
    const std::size_t name = svg.find(" id=\"surface");
    if (name == std::string::npos) return;
    svg.erase(name, svg.find('>', name) - name);
}

/// Names such as "image12" have a number that counts what the process has made; here it counts what the file has.
std::string withOwnNumbers(const std::string& svg, std::string_view kind) {
    std::map<std::string, std::size_t> numbers;
    std::string out;
    std::size_t from = 0;
    for (std::size_t at = svg.find(kind); at != std::string::npos; at = svg.find(kind, at + 1)) {
        const std::size_t digits = at + kind.size(), end = svg.find_first_not_of("0123456789", digits);
        const bool isName = at > 0 && (svg[at - 1] == '"' || svg[at - 1] == '#') && end != digits;
        if (!isName || end == std::string::npos) continue;
        const auto number = numbers.try_emplace(svg.substr(digits, end - digits), numbers.size()).first->second;
        out.append(svg, from, digits - from).append(std::to_string(number));
        from = end;
    }
    return out.append(svg, from);
}

/// cairo gives the rule of a clip to what is clipped, where it has no effect; it belongs to the path that clips.
void moveClipRules(std::string& svg) {
    constexpr std::string_view rule = " clip-rule=\"evenodd\"", path = "<path";
    for (std::size_t at = svg.find(rule); at != std::string::npos; at = svg.find(rule, at + 2 * rule.size())) {
        const std::size_t name = svg.rfind('#', at) + 1;
        const std::string clip = "<clipPath id=\"" + svg.substr(name, svg.find(')', name) - name) + "\">";
        const std::size_t clipPath = svg.find(path, svg.find(clip));
        if (clipPath < at) svg.insert(clipPath + path.size(), rule);
    }
}

/// A URI as an attribute's value; the other characters that XML minds are percent-encoded in it.
std::string attributeValue(const std::string& uri) {
    std::string out;
    for (const char c : uri)
        out += c == '&' ? std::string("&amp;") : std::string(1, c);
    return out;
}

/// Links to the web as areas above the drawing that show nothing. Links to pages have no page here to lead to.
void addLinks(std::string& svg, const DisplayList& page) {
    std::string areas;
    for (const PageLink& link : linksOf(page)) {
        if (link.target.uri.empty()) continue;
        areas += fmt::format(R"(<a xlink:href="{}"><polygon fill="none" pointer-events="all" points=")",
                             attributeValue(link.target.uri));
        for (const PMPoint& corner : link.corners)
            areas += fmt::format("{:.3f},{:.3f} ", corner.x, corner.y);
        areas.back() = '"';
        areas += "/></a>\n";
    }
    if (const std::size_t end = svg.rfind("</svg>"); end != std::string::npos) svg.insert(end, areas);
}

[[nodiscard]] bool writeList(const DisplayList& page, const std::string& path, PageNotes& notes, std::string& error) {
    std::string reason = "a page has no area";
    std::string svg;
    if (page.page.width() > 0 && page.page.height() > 0) svg = drawnSvg(page, notes, reason);
    if (svg.empty()) {
        error = cantBeWritten(path, reason);
        return false;
    }
    dropSurfaceName(svg);
    for (const char* kind : {"image", "surface"})
        svg = withOwnNumbers(svg, kind);
    moveClipRules(svg);
    addLinks(svg, page);
    OutputFile file;
    bool written = file.open(path);
    if (written) {
        file.write(svg);
        written = file.finish();
    }
    if (!written) error = file.error();
    return written;
}

}  // namespace

bool writePageSvg(const DisplayList& page, const std::string& path, std::string& error) {
    PageNotes ignored;
    return writeList(page, path, ignored, error);
}

bool writePageSvg(const DocumentModel& document, UID page, const std::string& path, PageNotes* notes,
                  std::string& error) {
    DisplayList list;
    PageNotes ignored;
    return listForFile(document, page, path, list, notes, error) &&
           writeList(list, path, notes == nullptr ? ignored : *notes, error);
}

}  // namespace tarnova
