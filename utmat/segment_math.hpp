// Internal: the comparison of two profile segments, for the kernel sources that build on it.
#ifndef KORVELBASE_UTMAT_SEGMENT_MATH_HPP
#define KORVELBASE_UTMAT_SEGMENT_MATH_HPP

#include "korvelbase/types.h"

namespace kb::utmat {

// The outputs of UTMAT_ComparerPosition2Segments; fields other than status and flags are
// written only when the segments share an x range.
struct SegmentComparison {
    int crosses = 0;
    Point2d crossing{0.0, 0.0};
    int sideBefore = 0;
    int sideAfter = 0;
    double x0 = 0.0;
    double x1 = 0.0;
    double firstY0 = 0.0;
    double firstY1 = 0.0;
    double secondY0 = 0.0;
    double secondY1 = 0.0;
    int flags = 0;
    int status = 0;
    bool rangeWritten = false;
};

// Compares two profile segments (two Point2d each) without touching the error word beyond
// the line constructions of a crossing.
SegmentComparison compareProfileSegments(const Point2d* first, const Point2d* second) noexcept;

}  // namespace kb::utmat

#endif  // KORVELBASE_UTMAT_SEGMENT_MATH_HPP
