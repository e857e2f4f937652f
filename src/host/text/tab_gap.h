// The space that a tab takes: up to its stop, less what the text behind it takes of that space.

#pragma once

#include <cstddef>

#include "host/model/format.h"
#include "host/text/paragraph.h"

namespace tarnova {

struct LineMeasure;

/// The stop of a tab that begins at `x` from the column's left edge. A line that hangs out to the left has a stop where
/// the paragraph's other lines begin.
[[nodiscard]] TabStop nextTabStop(const ParaFormat& format, const LineMeasure& measure, float x);

/// The gap of one tab while the text behind it is gathered.
class TabGap {
 public:
    /// `room` is the distance to the stop, `piece` the index of the tab's piece.
    TabGap(TabStop::Kind kind, float room, std::size_t piece) : kind_(kind), room_(room), piece_(piece) {}

    [[nodiscard]] std::size_t piece() const { return piece_; }
    [[nodiscard]] float gap() const { return gapOver(followingWidth_, beforeSeparator()); }
    /// The gap if the piece came next.
    [[nodiscard]] float gapWith(const Paragraph& paragraph, const Piece& piece) const;
    void add(const Paragraph& paragraph, const Piece& piece);
    /// Forgets what was added.
    void restart() { *this = TabGap(kind_, room_, piece_); }

 private:
    [[nodiscard]] float beforeSeparator() const { return separatorSeen_ ? separatorAt_ : followingWidth_; }
    [[nodiscard]] float gapOver(float following, float toSeparator) const;

    TabStop::Kind kind_;
    float room_;
    std::size_t piece_;
    float followingWidth_ = 0;  // without spaces that may hang behind it
    float hanging_ = 0;
    float separatorAt_ = 0;
    bool separatorSeen_ = false;
};

}  // namespace tarnova
