// The space that a tab takes: up to its stop, less what the text behind it takes of that space.

#pragma once

#include <cstddef>
#include <cstdint>

#include "host/model/format.h"
#include "host/text/paragraph.h"

namespace tarnova {

struct LineMeasure;

/// Where a tab leads. Positions are points from the column's edge at which the paragraph's lines begin.
struct TabTarget {
    float position = 0;
    TabStop::Kind kind = TabStop::Kind::left;
    char32_t alignedOn = 0;
    std::int16_t index = -1;  // into ParaFormat::tabs; -1: none of them
};

/// The stop of a tab that begins at `x`. A line that hangs out has a stop where the paragraph's other lines begin.
[[nodiscard]] TabTarget nextTabStop(const ParaFormat& format, const LineMeasure& measure, float x);
/// The far side of the line, with the leader of the paragraph's last stop.
[[nodiscard]] TabTarget farTabStop(const ParaFormat& format, const LineMeasure& measure);

/// The gap of one tab while the text behind it is gathered.
class TabGap {
 public:
    /// `room` is the distance to the stop, `piece` the index of the tab's piece.
    TabGap(const TabTarget& stop, float room, std::size_t piece) : stop_(stop), room_(room), piece_(piece) {}

    [[nodiscard]] std::size_t piece() const { return piece_; }
    [[nodiscard]] float gap() const { return gapOver(followingWidth_, beforeSeparator()); }
    /// The gap if the piece came next.
    [[nodiscard]] float gapWith(const Paragraph& paragraph, const Piece& piece) const;
    void add(const Paragraph& paragraph, const Piece& piece);
    /// Forgets what was added.
    void restart() { *this = TabGap(stop_, room_, piece_); }

 private:
    [[nodiscard]] float beforeSeparator() const { return separatorSeen_ ? separatorAt_ : followingWidth_; }
    [[nodiscard]] float gapOver(float following, float toSeparator) const;

    TabTarget stop_;
    float room_;
    std::size_t piece_;
    float followingWidth_ = 0;  // without spaces that may hang behind it
    float hanging_ = 0;
    float separatorAt_ = 0;
    bool separatorSeen_ = false;
};

}  // namespace tarnova
