// A path measured along its length.

#pragma once

#include <cstddef>
#include <vector>

#include "host/model/page_item.h"

namespace tarnova {

class PathLine {
 public:
    /// The line along a path; `reversed`: from its end to its start. A closed path ends where it starts.
    PathLine(const SubPath& path, bool reversed);

    /// Points; 0 for a path without extent.
    [[nodiscard]] double length() const { return steps.empty() ? 0 : steps.back().length; }

    struct Place {
        PMPoint point;
        PMPoint direction;  // of the line there, of length 1
    };
    /// The place at a distance from the line's start; beyond its ends the line goes straight on. The line has a length.
    [[nodiscard]] Place at(double distance) const;

 private:
    /// A cubic curve; a straight line has its control points on it.
    struct Curve {
        PMPoint p[4];
    };
    /// A short piece of a curve, which ends at the parameter `t`.
    struct Step {
        double length;  // of the line up to its end
        std::size_t curve;
        double t;
    };

    void addCurve(const Curve& curve, std::size_t pieceLimit);
    [[nodiscard]] static PMPoint pointAt(const Curve& curve, double t);
    [[nodiscard]] static PMPoint directionAt(const Curve& curve, double t);

    std::vector<Curve> curves;
    std::vector<Step> steps;
};

}  // namespace tarnova
