// Intersection of two plane segments, and the position comparison of two profile segments.
#include <cmath>

#include "base/optional_output.hpp"
#include "korvelbase/utmat_segments.h"
#include "utmat/kernel_state.hpp"
#include "utmat/segment_math.hpp"
#include "utmat/vector_math.hpp"

namespace {

using kb::storeOptional;
using kb::utmat::failed;

// ---- segment with segment ----------------------------------------------------------------------

struct Segment {
    Point2d start;
    Point2d end;
};

struct Intersection {
    int* pointFound;
    Point2d* point;
    double* abscissa1;
    double* abscissa2;
    int* overlapFound;
    Point2d* overlapPoints;
    double* overlapAbscissae1;
    double* overlapAbscissae2;
};

void reportPoint(const Intersection& out, const Point2d& p, double t1, double t2) {
    *out.pointFound = 1;
    storeOptional(out.point, p);
    storeOptional(out.abscissa1, t1);
    storeOptional(out.abscissa2, t2);
}

// One end of the common part: its point and its abscissae on both segments.
struct OverlapEnd {
    Point2d point;
    double onFirst;
    double onSecond;
};

void reportOverlap(const Intersection& out, const OverlapEnd& from, const OverlapEnd& to) {
    if (out.overlapPoints != nullptr) {
        out.overlapPoints[0] = from.point;
        out.overlapPoints[1] = to.point;
    }
    if (out.overlapAbscissae1 != nullptr) {
        out.overlapAbscissae1[0] = from.onFirst;
        out.overlapAbscissae1[1] = to.onFirst;
    }
    if (out.overlapAbscissae2 != nullptr) {
        out.overlapAbscissae2[0] = from.onSecond;
        out.overlapAbscissae2[1] = to.onSecond;
    }
}

// Collinear segments: segment 2 projected on segment 1's axis at [a, b] (swapped, with
// segment 2 taken as reversed, when it runs against segment 1).
void collinear(const Segment& s1, const Segment& s2, const Point2d& u1, double l1, double l2,
               double tol, const Intersection& out) {
    double a = kb::utmat::dot(u1, kb::utmat::difference(s1.start, s2.start));
    double b = kb::utmat::dot(u1, kb::utmat::difference(s1.start, s2.end));
    const bool reversed = b < a;
    if (reversed) std::swap(a, b);
    const Point2d& atA = reversed ? s2.end : s2.start;
    const Point2d& atB = reversed ? s2.start : s2.end;
    if (!UTMAT_InfOuEgal(l1, a, tol) && !UTMAT_SupOuEgal(0.0, b, tol)) {
        *out.overlapFound = 1;
        if (out.overlapPoints == nullptr && out.overlapAbscissae1 == nullptr &&
            out.overlapAbscissae2 == nullptr) {
            return;
        }
        const OverlapEnd from = !UTMAT_InfOuEgal(a, 0.0, tol)
                                    ? OverlapEnd{atA, a, reversed ? l2 : 0.0}
                                    : OverlapEnd{s1.start, 0.0, reversed ? b : std::fabs(a)};
        // Where the common part ends at Q1, the abscissa on segment 2 is a + L1: kept as it
        // stands.
        const OverlapEnd to = !UTMAT_SupOuEgal(b, l1, tol)
                                  ? OverlapEnd{atB, b, reversed ? 0.0 : l2}
                                  : OverlapEnd{s1.end, l1, reversed ? l2 - (a + l1) : a + l1};
        reportOverlap(out, from, to);
        return;
    }
    if (UTMAT_Egal(l1, a, tol)) {
        reportPoint(out, s1.end, l1, reversed ? l2 : 0.0);
    } else if (UTMAT_Egal(0.0, b, tol)) {
        reportPoint(out, s1.start, 0.0, reversed ? 0.0 : l2);
    }
}

void intersectSegments(const Segment& s1, const Segment& s2, double tol, const Intersection& out) {
    const Point2d v1 = kb::utmat::difference(s1.start, s1.end);
    const Point2d v2 = kb::utmat::difference(s2.start, s2.end);
    const double l1 = kb::utmat::norm(v1);
    const double l2 = kb::utmat::norm(v2);
    UtDroite line1;
    UtDroite line2;
    UTMAT_CalculerDroitePtVecteur(&s1.start, &v1, &line1);
    if (failed()) return;
    UTMAT_CalculerDroitePtVecteur(&s2.start, &v2, &line2);
    if (failed()) return;
    Point2d u1 = v1;
    Point2d u2 = v2;
    UTMAT_NormerVecteur(&u1);
    if (failed()) return;
    UTMAT_NormerVecteur(&u2);
    if (failed()) return;
    Point2d meeting{0.0, 0.0};
    int meets = 0;
    UTMAT_CalculerIntersection2Droite(&line1, &line2, &meeting, &meets);
    if (failed()) return;
    if (meets != 0) {
        const double t1 = kb::utmat::dot(u1, kb::utmat::difference(s1.start, meeting));
        if (!UTMAT_AppartenirAIntFerme(t1, 0.0, l1, tol)) return;
        const double t2 = kb::utmat::dot(u2, kb::utmat::difference(s2.start, meeting));
        if (!UTMAT_AppartenirAIntFerme(t2, 0.0, l2, tol)) return;
        reportPoint(out, meeting, t1, t2);
        return;
    }
    double offset = 0.0;
    UTMAT_CalculerDeportPtDroite(&line1, &s2.start, &offset);
    if (failed() || !UTMAT_Egal(offset, 0.0, tol)) return;
    collinear(s1, s2, u1, l1, l2, tol, out);
}

// ---- profile segments ------------------------------------------------------------------------

constexpr int kBeyondEnd = 2;
constexpr int kWithin = 3;
constexpr int kBeforeStart = 4;

int classOf(double x, double start, double end) {
    if (x > end) return kBeyondEnd;
    if (x < start) return kBeforeStart;
    return kWithin;
}

double yAt(const Point2d* s, double x) {
    const double dx = s[1].x - s[0].x;
    if (dx == 0.0) return s[0].y;
    return s[0].y + (s[1].y - s[0].y) * (x - s[0].x) / dx;
}

int sideCode(double firstY, double secondY) {
    if (firstY < secondY) return UTMAT_SIDE_ABOVE;
    if (firstY > secondY) return UTMAT_SIDE_BELOW;
    return UTMAT_SIDE_ON;
}

// Both segments stand at the same x (status 33 with a vertical first segment).
void compareColumns(const Point2d* first, const Point2d* second, kb::utmat::SegmentComparison& c) {
    const double low = std::fmin(first[0].y, first[1].y);
    const double high = std::fmax(first[0].y, first[1].y);
    const auto sideOfColumn = [&](double y) {
        if (y > high) return UTMAT_SIDE_ABOVE;
        if (y < low) return UTMAT_SIDE_BELOW;
        return UTMAT_SIDE_ON;
    };
    c.x0 = c.x1 = first[0].x;
    c.firstY0 = first[0].y;
    c.firstY1 = first[1].y;
    c.secondY0 = second[0].y;
    c.secondY1 = second[1].y;
    c.sideBefore = sideOfColumn(second[0].y);
    c.sideAfter = sideOfColumn(second[1].y);
    if (c.sideBefore == c.sideAfter && c.sideBefore != UTMAT_SIDE_ON) return;
    c.crosses = 1;
    const double y = c.sideBefore == UTMAT_SIDE_ABOVE ? high
                                                      : (c.sideBefore == UTMAT_SIDE_ON ? second[0].y : low);
    c.crossing = {c.x0, y};
}

// The common range and the elevations by status; false when there is none to compare.
bool fillRange(const Point2d* first, const Point2d* second, kb::utmat::SegmentComparison& c) {
    const bool firstVertical = first[0].x == first[1].x;
    switch (c.status) {
        case 32:
            if (firstVertical) {
                c.x0 = c.x1 = first[0].x;
                c.firstY0 = first[0].y;
                c.firstY1 = first[1].y;
                c.secondY0 = c.secondY1 = second[0].y;
            } else {
                c.x0 = second[0].x;
                c.x1 = first[1].x;
                c.firstY0 = yAt(first, c.x0);
                c.firstY1 = first[1].y;
                c.secondY0 = second[0].y;
                c.secondY1 = yAt(second, c.x1);
            }
            return true;
        case 33:
            if (firstVertical) {
                compareColumns(first, second, c);
                c.rangeWritten = true;
                return false;
            }
            c.x0 = second[0].x;
            c.x1 = second[1].x;
            c.secondY0 = second[0].y;
            c.secondY1 = second[1].y;
            c.firstY0 = yAt(first, c.x0);
            c.firstY1 = yAt(first, c.x1);
            return true;
        case 42:
            c.x0 = first[0].x;
            c.x1 = first[1].x;
            c.firstY0 = first[0].y;
            c.firstY1 = first[1].y;
            c.secondY0 = yAt(second, c.x0);
            c.secondY1 = yAt(second, c.x1);
            return true;
        case 43:
            if (firstVertical) {
                c.x0 = c.x1 = first[0].x;
                c.firstY0 = first[0].y;
                c.firstY1 = first[1].y;
                c.secondY0 = c.secondY1 = second[1].y;
            } else {
                c.x0 = first[0].x;
                c.x1 = second[1].x;
                c.firstY0 = first[0].y;
                c.firstY1 = yAt(first, c.x1);
                c.secondY0 = yAt(second, c.x0);
                c.secondY1 = second[1].y;
            }
            return true;
        default:
            return false;  // 22, 44: no common range; 23, 24, 34: decreasing x
    }
}

void findCrossing(const Point2d* first, const Point2d* second, kb::utmat::SegmentComparison& c) {
    const bool opposite = c.sideBefore * c.sideAfter < 0;
    if (opposite) {
        UtDroite line1;
        UtDroite line2;
        UTMAT_CalculerDroite2Pt(&first[0], &first[1], &line1);
        UTMAT_CalculerDroite2Pt(&second[0], &second[1], &line2);
        int meets = 0;
        UTMAT_CalculerIntersection2Droite(&line1, &line2, &c.crossing, &meets);
        if (meets == 0) {
            c.crossing = {(c.x0 + c.x1) / 2.0, (c.secondY0 + c.secondY1) / 2.0};
        } else if (second[0].x == second[1].x) {
            c.crossing.x = second[0].x;
        }
        c.crosses = 1;
    } else if (c.sideBefore == UTMAT_SIDE_ON) {
        if (c.sideAfter == UTMAT_SIDE_ON) return;  // the segments coincide over the range
        c.crosses = 1;
        c.crossing = {c.x0, c.secondY0};
    } else if (c.sideAfter == UTMAT_SIDE_ON) {
        c.crosses = 1;
        c.crossing = {c.x1, c.secondY1};
    }
}

}  // namespace

namespace kb::utmat {

SegmentComparison compareProfileSegments(const Point2d* first, const Point2d* second) noexcept {
    SegmentComparison c;
    if (second[0].x == second[1].x) c.flags |= UTMAT_POSITION_SECOND_VERTICAL;
    if (first[0].x == second[0].x) c.flags |= UTMAT_POSITION_STARTS_EQUAL;
    if (first[1].x == second[0].x) c.flags |= UTMAT_POSITION_END_EQUALS_START;
    if (first[0].x == second[1].x) c.flags |= UTMAT_POSITION_START_EQUALS_END;
    if (first[1].x == second[1].x) c.flags |= UTMAT_POSITION_ENDS_EQUAL;
    c.status = 10 * classOf(second[0].x, first[0].x, first[1].x) + classOf(second[1].x, first[0].x, first[1].x);
    if (!fillRange(first, second, c)) return c;
    c.rangeWritten = true;
    c.sideBefore = sideCode(c.firstY0, c.secondY0);
    c.sideAfter = sideCode(c.firstY1, c.secondY1);
    findCrossing(first, second, c);
    return c;
}

}  // namespace kb::utmat

extern "C" {

void UTMAT_CalculerIntersectionSegmentSegment(const Point2d* segment1, const Point2d* segment2,
                                              double tol, int* pointFound, Point2d* point,
                                              double* abscissa1, double* abscissa2,
                                              int* overlapFound, Point2d* overlapPoints,
                                              double* overlapAbscissae1,
                                              double* overlapAbscissae2) noexcept {
    if (!kb::utmat::enter(segment1, segment2, pointFound, overlapFound)) return;
    *pointFound = 0;
    *overlapFound = 0;
    const Intersection out{pointFound, point, abscissa1, abscissa2, overlapFound, overlapPoints,
                           overlapAbscissae1, overlapAbscissae2};
    intersectSegments({segment1[0], segment1[1]}, {segment2[0], segment2[1]}, tol, out);
}

void UTMAT_ComparerPosition2Segments(const Point2d* first, const Point2d* second, int* crosses,
                                     Point2d* crossing, int* sideBefore, int* sideAfter, double* x0,
                                     double* x1, double* firstY0, double* firstY1, double* secondY0,
                                     double* secondY1, int* flags, int* status) noexcept {
    if (!kb::utmat::enter(first, second, crosses, crossing, sideBefore, sideAfter, x0, x1,
                          firstY0, firstY1, secondY0, secondY1) ||
        !kb::utmat::enter(flags, status)) {
        return;
    }
    const kb::utmat::SegmentComparison c = kb::utmat::compareProfileSegments(first, second);
    *crosses = c.crosses;
    *flags = c.flags;
    *status = c.status;
    if (!c.rangeWritten) return;
    *crossing = c.crossing;
    *sideBefore = c.sideBefore;
    *sideAfter = c.sideAfter;
    *x0 = c.x0;
    *x1 = c.x1;
    *firstY0 = c.firstY0;
    *firstY1 = c.firstY1;
    *secondY0 = c.secondY0;
    *secondY1 = c.secondY1;
}

}  // extern "C"
