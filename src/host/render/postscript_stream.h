// cairo's PostScript on its way to the file, a line at a time, with what cairo doesn't know about our pages put right.

#pragma once

#include <cairo.h>

#include <string>
#include <string_view>
#include <vector>

#include "document/geometry.h"
#include "host/render/output_file.h"

namespace tarnova {

/// - No date of making, and our own name: the same pages give the same bytes.
/// - Pages have their exact sizes, where cairo asks for whole points and passes over differences of up to five.
/// - The bounding boxes of an EPS are its page, where cairo gives those of the ink. EPS importers place by them.
class PostScriptStream {
 public:
    /// `file` is open and outlives this.
    PostScriptStream(OutputFile& target, bool isEps) : file(target), eps(isEps) {}

    /// The size of the next page, in points. cairo writes when it is finished, so all are known by then.
    void addPageSize(PMPoint size) { sizes.push_back(size); }
    [[nodiscard]] bool hasPages() const { return !sizes.empty(); }

    /// For `cairo_ps_surface_create_for_stream`; the closure is the stream.
    static cairo_status_t take(void* closure, const unsigned char* data, unsigned count);

 private:
    void takeLine(std::string_view line);
    void writeLine(std::string_view line);
    void writeBoundingBox();

    OutputFile& file;
    bool eps;
    std::vector<PMPoint> sizes;
    std::size_t nextSize = 0;
    std::string pending;  // a line whose end hasn't come
};

}  // namespace tarnova
