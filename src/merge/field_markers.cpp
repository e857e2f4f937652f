#include "merge/field_markers.h"

#include <algorithm>

#include "data/data_source.h"
#include "definitions/record_def_set.h"
#include "engine/toolkit/pstring.h"
#include "engine/toolkit/text_encoding.h"

namespace tarnova {
namespace {

constexpr std::u32string_view openings[] = {U"<$", U"[$"};
constexpr char32_t closings[] = {U'>', U']'};

/// The marker that `next` found: its opening, its name and the place behind its closing.
struct foundMarker {
    std::size_t start = 0;
    std::size_t nameStart = 0;
    std::size_t nameLimit = 0;
    [[nodiscard]] std::size_t limit() const { return nameLimit + 1; }
};

class MarkerScan {
 public:
    explicit MarkerScan(std::u32string& text) : text_(text) {
        const std::size_t first = text.find(openings[0]);
        form_ = first != text.npos && text.find(closings[0], first) != text.npos ? 0 : 1;
    }

    /// Finds the next marker and makes literal ones on the way plain text.
    [[nodiscard]] bool next(foundMarker& marker) {
        while (find(marker)) {
            const bool isLiteral =
                marker.start > position_ && text_[marker.start - 1] == U'\\' && text_[marker.nameLimit - 1] == U'\\';
            if (!isLiteral && marker.nameLimit > marker.nameStart) return true;
            position_ = marker.limit();
            if (!isLiteral) continue;
            text_.erase(marker.nameLimit - 1, 1);
            text_.erase(marker.start - 1, 1);
            position_ -= 2;
            ++literalCount_;
        }
        return false;
    }

    [[nodiscard]] std::u32string_view nameOf(const foundMarker& marker) const {
        return std::u32string_view(text_).substr(marker.nameStart, marker.nameLimit - marker.nameStart);
    }
    void skip(const foundMarker& marker) { position_ = marker.limit(); }
    void replace(const foundMarker& marker, std::u32string_view by) {
        text_.replace(marker.start, marker.limit() - marker.start, by);
        position_ = marker.start + by.size();
    }
    [[nodiscard]] std::int32_t literalCount() const { return literalCount_; }

 private:
    [[nodiscard]] bool find(foundMarker& marker) const {
        const std::u32string_view opening = openings[form_];
        const std::size_t first = text_.find(opening, position_);
        if (first == text_.npos) return false;
        marker.nameLimit = text_.find(closings[form_], first + opening.size());
        if (marker.nameLimit == text_.npos) return false;
        marker.start = text_.rfind(opening, marker.nameLimit - opening.size());
        marker.nameStart = marker.start + opening.size();
        return true;
    }

    std::u32string& text_;
    std::size_t form_ = 0;
    std::size_t position_ = 0;
    std::int32_t literalCount_ = 0;
};

/// The link's name; `step` is 1 or -1 when it asks for the next record or the one before.
std::string linkNameOf(std::u32string_view name, std::int32_t& step) {
    step = name.ends_with(U"++") ? 1 : name.ends_with(U"--") ? -1 : 0;
    if (step != 0) name.remove_suffix(2);
    return utf32ToUtf8(name);
}

}  // namespace

void takeMarkerValue(const tagValueRec& value, markerValueRec& out) {
    out.status = value.status;
    if (value.extraction != nullptr) out.nodata = value.extraction->nodata;
    if (value.bytes) appendValueText(out.text, value);
}

errorWord expandFieldMarkers(std::u32string& text, std::int32_t record, std::int32_t firstRecord,
                             const MarkerFetch& fetch, expandedMarkersRec& out, errorWord priorError) {
    out = {};
    if (priorError != 0 || text.find(U'$') == text.npos) return priorError;
    MarkerScan scan(text);
    errorWord error = 0;
    for (foundMarker marker; error == 0 && scan.next(marker);) {
        std::int32_t step = 0;
        const std::string name = linkNameOf(scan.nameOf(marker), step);
        const std::int32_t wanted = step < 0 ? std::max(record - 1, firstRecord) : record + step;
        markerValueRec value;
        error = fetch(name, wanted, value);
        if (error != 0) break;
        ++out.count;
        const bool isNoData = value.status == fetchNoData;
        if (value.status == fetchFound || (isNoData && value.nodata != nodataPlaceholder)) {
            const bool hasText = !isNoData || value.nodata == nodataGlobal || value.nodata == nodataCustom;
            scan.replace(marker, hasText ? std::u32string_view(value.text) : std::u32string_view{});
            continue;
        }
        if (!isNoData) out.status = value.status;
        scan.skip(marker);
    }
    out.count += scan.literalCount();
    return error;
}

bool fieldMarkersAreKnown(std::u32string_view text, const recordDefRec& definition) {
    std::u32string scanned(text);
    MarkerScan scan(scanned);
    for (foundMarker marker; scan.next(marker); scan.skip(marker)) {
        std::int32_t step = 0;
        const std::string name = linkNameOf(scan.nameOf(marker), step);
        Str255 pascal;
        pstrFromView(pascal, sizeof(pascal), name);
        extractionRec* link = nullptr;
        if (findExtraction(&definition, pascal, link, 0) != 0 || link == nullptr) return false;
    }
    return true;
}

}  // namespace tarnova
