/*
 * KorvelBase - points and point arrays (Point3d records and contiguous runs of them).
 *
 * Conventions: 2-D functions (suffix 2d) read x and y only and carry z through where they copy
 * a point; 3-D functions use all three coordinates.  Angles are radians counter-clockwise from
 * +x.  Status results are 0 on success and ERR_FAILURE (0x8000) on a null required pointer, a
 * count that is too small or an allocation failure; outputs are left untouched on failure
 * unless stated.  Predicates return 1 or 0 (0 for null arguments).  Arrays created here come
 * from qmMem_malloc/qmMem_calloc and are released with qmPointArray_free.  All functions are
 * pure and may be called from any thread on data not shared with a writer.
 *
 * Special values: a coordinate within 1.0 of the largest double in magnitude marks a break
 * (disconnect) in a run of points; z = 3.4028234663852886e38 (largest float) marks a point
 * without elevation.
 */
#ifndef KORVELBASE_QMPOINT_H
#define KORVELBASE_QMPOINT_H

#include "korvelbase/bestfit_horizontal.h"
#include "korvelbase/types.h"

KB_BEGIN_DECLS

/* ---- single points ---------------------------------------------------------------------- */

KB_API int qmPoint_copy(Point3d* destination, const Point3d* source) KB_NOEXCEPT;
KB_API int qmPoint_setValue(Point3d* point, double x, double y, double z) KB_NOEXCEPT;
/** Sets x = y = z = 0.  Null: ERR_FAILURE. */
KB_API int qmPoint_clear(Point3d* point) KB_NOEXCEPT;
/** x = y = 0, z = undefined elevation (largest float); returns the point (null passes). */
KB_API Point3d* qmPoint_initialize2d(Point3d* point) KB_NOEXCEPT;
/** Writes z into every entry of the array (nothing for a null array or count < 1). */
KB_API void qmPoint_setZvalue(int count, Point3d* points, double z) KB_NOEXCEPT;
/** Exchanges two records.  Null either: ERR_FAILURE. */
KB_API int qmPoint_swap(Point3d* a, Point3d* b) KB_NOEXCEPT;
/** Exact equality of x, y (and z). */
KB_API int qmPoint_equal2d(const Point3d* a, const Point3d* b) KB_NOEXCEPT;
KB_API int qmPoint_equal3d(const Point3d* a, const Point3d* b) KB_NOEXCEPT;
/** 1 when the 2-D (3-D) distance is <= tolerance. */
KB_API int qmPoint_nearEqual2d(const Point3d* a, const Point3d* b, double tolerance) KB_NOEXCEPT;
KB_API int qmPoint_nearEqual3d(const Point3d* a, const Point3d* b, double tolerance) KB_NOEXCEPT;
/** 1 when x, y or z lies within 1.0 of the largest double in magnitude. */
KB_API int qmPoint_isDisconnect(const Point3d* point) KB_NOEXCEPT;
/**
 * 1 when low.x <= p.x <= high.x and low.y <= p.y <= low.y.  The upper y bound is taken from
 * the low corner on purpose (kept for compatibility): a point is in range only when its y
 * equals low.y exactly.  Any null: 0.
 */
KB_API int qmPoint_isInRange2d(const Point3d* point, const Point3d* low,
                               const Point3d* high) KB_NOEXCEPT;
/** Distances; null either: 0.0. */
KB_API double qmPoint_distance2d(const Point3d* a, const Point3d* b) KB_NOEXCEPT;
KB_API double qmPoint_distance3d(const Point3d* a, const Point3d* b) KB_NOEXCEPT;
/** Direction from -> to, as qmMath_direction2d; null either: 0.0. */
KB_API double qmPoint_direction2d(const Point3d* from, const Point3d* to) KB_NOEXCEPT;
/** Both outputs optional; a null point sets both to 0.0 and returns ERR_FAILURE. */
KB_API int qmPoint_distanceDirection2d(double* distance, double* direction, const Point3d* from,
                                       const Point3d* to) KB_NOEXCEPT;
/** out = origin + distance*(cos, sin)(direction); z of the origin. */
KB_API int qmPoint_locatePointByDistanceDirection2d(Point3d* out, double distance,
                                                    double direction,
                                                    const Point3d* origin) KB_NOEXCEPT;
/**
 * The point at the distance from the origin towards the tangent point (the unit vector origin
 * -> tangent point scaled by the distance); z of the origin.  Tangent point equal to the
 * origin: ERR_FAILURE.
 */
KB_API int qmPoint_locatePointByDistanceTangent2d(Point3d* out, double distance,
                                                  const Point3d* tangentPoint,
                                                  const Point3d* origin) KB_NOEXCEPT;
/** out = R(rotation) * (p.x, p.y) + (dx, dy); z of the point.  out may be the point. */
KB_API int qmPoint_locatePointByTranslationRotation2d(const Point3d* point, double dx,
                                                      double dy, double rotation,
                                                      Point3d* out) KB_NOEXCEPT;
/** Rotates the point about the origin by the angle (counter-clockwise), in place. */
KB_API int qmPoint_rotateByAngle2d(Point3d* point, double angle) KB_NOEXCEPT;
/** out = (to - from) with z = 0, divided by the plan distance when that division is safe. */
KB_API int qmPoint_getDirectionVector2d(const Point3d* from, Point3d* out,
                                        const Point3d* to) KB_NOEXCEPT;
/** Plan distance to the axis-parallel rectangle low..high (0 inside).  Null: 0.0. */
KB_API double qmPoint_getDistanceToRectangle2d(const Point3d* point, const Point3d* low,
                                               const Point3d* high) KB_NOEXCEPT;
/**
 * Sweep from start to end about the centre: s = atan2(end - c) - atan2(start - c), plus 2*pi
 * when negative, in [0, 2*pi); counterClockwise != 0 returns s, 0 returns s - 2*pi.  Start or
 * end exactly at the centre: ERR_FAILURE.
 */
KB_API int qmPoint_calculateSweepAngle2d(const Point3d* centre, double* sweep,
                                         const Point3d* start, const Point3d* end,
                                         int counterClockwise) KB_NOEXCEPT;
/**
 * Arc through three points: centre (z = 0), radius, direction centre -> first point, and the
 * signed sweep from the first to the last point through the middle one: positive when the
 * middle point lies on the right of the chord first -> last (the arc then turns
 * counter-clockwise about the centre), negative when on the left; its magnitude exceeds pi
 * when the middle point is farther from the chord than the radius.
 * Middle point within 1e-7 of the chord: ERR_FAILURE.  Each output may be null.
 */
KB_API int qmPoint_calculateArcInfoFor3pts(Point3d* centre, double* radius,
                                           double* startDirection, double* sweep,
                                           const Point3d* p1, const Point3d* p2,
                                           const Point3d* p3) KB_NOEXCEPT;
/**
 * Point at the arc length along the circle about the centre through the start point,
 * counter-clockwise (clockwise when reverse != 0); z = z of the start.  Radius <= 0:
 * ERR_FAILURE.
 */
KB_API int qmPoint_calculatePointAlongArc(Point3d* out, const Point3d* start,
                                          const Point3d* centre, double arcLength,
                                          int reverse) KB_NOEXCEPT;
/** qmMath_lineTangentToCircleByPoint with points; z of the results 0. */
KB_API int qmPoint_lineTangentToCircleByPoint(Point3d* left, Point3d* right,
                                              const Point3d* centre, double radius,
                                              const Point3d* point,
                                              double tolerance) KB_NOEXCEPT;
/** qmMath_passTangentCurveThruPoint with points; *radius = 0.0 first; null: ERR_FAILURE. */
KB_API int qmPoint_passTangentCurveThruPoint(double* radius, const Point3d* a, const Point3d* b,
                                             const Point3d* v, const Point3d* point) KB_NOEXCEPT;
/** qmMath_passTangentParabolaThruPoint with points; *length = 0.0 first; null: ERR_FAILURE. */
KB_API int qmPoint_passTangentParabolaThruPoint(double* length, const Point3d* a,
                                                const Point3d* b, const Point3d* v,
                                                const Point3d* point) KB_NOEXCEPT;
/**
 * Reads "y x [z]" (northing first): the text (up to 511 characters are used) has every control
 * character replaced by a blank and leading and trailing blanks removed, and is split on
 * single blanks.  y and x must both be present and non-empty; z defaults to 0.  Numbers are
 * read as atof reads them (malformed -> 0).  Null or empty text, null point: ERR_FAILURE.
 */
KB_API int qmPoint_setFromYXZString(Point3d* point, const char* text) KB_NOEXCEPT;
/**
 * Least-squares plane through at least 3 points (qmBestFit_planeCalc): the point on the plane
 * above the centroid, the coefficients and the standard error sqrt(sum r^2)/n.  Each output
 * may be null.  Fewer than 3 points, null points, singular fit or no memory: ERR_FAILURE.
 */
KB_API int qmPoint_computePlane(Point3d* pointOnPlane, PlaneCoefficients* plane,
                                double* standardError, const Point3d* points,
                                int count) KB_NOEXCEPT;
/**
 * Same as qmPoint_computePlane, for callers of the callee-pops entry: on 32-bit Windows it
 * uses the stdcall convention (exported as qmApiPoint_computePlane@20); elsewhere there is
 * one convention.
 */
KB_API int KB_CALLEE_POPS qmApiPoint_computePlane(Point3d* pointOnPlane, PlaneCoefficients* plane,
                                                  double* standardError, const Point3d* points,
                                                  int count) KB_NOEXCEPT;
/** z' = a x + b y + c; out point (x, y, z'); difference z - z'.  Outputs optional. */
KB_API int qmPoint_computeOnPlaneGivenXY(double* difference, Point3d* out, const Point3d* point,
                                         const PlaneCoefficients* plane) KB_NOEXCEPT;
/**
 * Foot of the perpendicular from the point to the plane and the 3-D distance to it, negative
 * below the plane.  Outputs optional.
 */
KB_API int qmPoint_computeMinimumDistancefromPlane(double* distance, Point3d* foot,
                                                   const Point3d* point,
                                                   const PlaneCoefficients* plane) KB_NOEXCEPT;
/**
 * Least-squares line through the points' plan positions (qmBestFit_lineCalc with unit
 * weights): start and end are the projections of the extent points on the fitted line, in the
 * line's direction of travel, with z of the first and last input points; direction as
 * qmBestFit_lineCalc; rmsResidual the RMS perpendicular distance.  Outputs other than start
 * and end may be null.  Fewer than 2 points or no memory: ERR_FAILURE.
 */
KB_API int qmPoint_computeLineLeastSquares(Point3d* start, Point3d* end, double* direction,
                                           double* rmsResidual, const Point3d* points,
                                           int count) KB_NOEXCEPT;
/**
 * Collinearity: directions from the first point to every later point farther than the
 * tolerance from it; each consecutive pair differing by d with d >= tolerance and
 * |d - pi| >= tolerance means not collinear (the InSameDir form allows no reversal).  The
 * tolerance is both a distance and an angle.  *collinear = 1 or 0.
 */
KB_API int qmPoint_checkForColinear2D(int count, const Point3d* points, double tolerance,
                                      unsigned char* collinear) KB_NOEXCEPT;
KB_API int qmPoint_checkForColinear2DInSameDir(int count, const Point3d* points,
                                               double tolerance,
                                               unsigned char* collinear) KB_NOEXCEPT;
/**
 * Entries k at which the perpendicular from the point meets the local tangent p(k)->t(k)
 * (a change of side between consecutive entries, or the point within 0.001 of p(k)).  With a
 * hint (a distance along dist[]), the walk starts at the last entry with dist <= hint and
 * returns only the candidate nearest the hint.  At most 20 candidates.  The candidates' points
 * go into a new array (*out, free with qmPointArray_free); returns their number, 0 when none
 * or on bad arguments.
 */
KB_API int qmPoint_projectPointOnTangentUsingXYTanDistArraysIteration(
    Point3d** out, const double* hint, const Point3d* point, const Point3d* points,
    const Point3d* tangentPoints, const double* distances, int count) KB_NOEXCEPT;

/* ---- point arrays ----------------------------------------------------------------------- */

/** Overlap-safe move of count records; count < 1 or null: ERR_FAILURE. */
KB_API int qmPointArray_copy(Point3d* destination, int count, const Point3d* source) KB_NOEXCEPT;
KB_API int qmPoint_copyMultiple(Point3d* destination, const Point3d* source,
                                int count) KB_NOEXCEPT;
/** New zero-filled array of count records holding a copy. */
KB_API int qmPointArray_clone(Point3d** out, const Point3d* source, int count) KB_NOEXCEPT;
/** Frees *array and sets it null; null address: ERR_FAILURE; null *array: 0. */
KB_API int qmPointArray_free(Point3d** array) KB_NOEXCEPT;
KB_API int qmPoint_freeArray(Point3d** array) KB_NOEXCEPT;
KB_API int qmPointArray_setZ(Point3d* points, int count, double z) KB_NOEXCEPT;
KB_API int qmPoint_setZValue(Point3d* points, int count, double z) KB_NOEXCEPT;
KB_API void qmPointArray_reverse(Point3d* points, int count) KB_NOEXCEPT;
/** x and y of entry index (no bounds check). */
KB_API int qmPointArray_getCoordsByIndex2d(const Point3d* points, double* x, double* y,
                                           int index) KB_NOEXCEPT;
KB_API int qmPoint_getCoordsFromPointArray(double* x, double* y, const Point3d* points,
                                           int index) KB_NOEXCEPT;
/** Closed rectangle ring of five records a, (b.x, a.y, a.z), b, (a.x, b.y, b.z), a. */
KB_API int qmPointArray_blockPointsFromDiagonal(Point3d* out, const Point3d* a,
                                                const Point3d* b) KB_NOEXCEPT;
/** As above; returns out, or null on failure. */
KB_API Point3d* qmPoint_blockPointsFromDiagonal(Point3d* out, const Point3d* a,
                                                const Point3d* b) KB_NOEXCEPT;
/**
 * A = 0.5 * sum_{i<n-1} (x[i+1] y[i] - x[i] y[i+1]): positive for a clockwise ring, negative
 * counter-clockwise (opposite to the usual shoelace sign, kept on purpose).  No closing edge is
 * added: close the ring first.  n < 2: 0.
 */
KB_API int qmPointArray_computeSimplePolygonAlgebricArea2d(const Point3d* points, int count,
                                                           double* area) KB_NOEXCEPT;
/** |signed area| as above; always returns 0 (area 0 for null input). */
KB_API int qmPointArray_computeSimplePolygonArea2d(const Point3d* points, int count,
                                                   double* area) KB_NOEXCEPT;
KB_API int qmPoint_computeSimplePolygonArea2d(double* area, const Point3d* points,
                                              int count) KB_NOEXCEPT;
/** *clockwise = 1 when sum (x[i]-x[i-1]) * (y[i]+y[i-1])/2 >= 0 (no closing edge), else 0. */
KB_API int qmPointArray_getPolygonDirection(const Point3d* points, int count,
                                            int* clockwise) KB_NOEXCEPT;
/** Not provided: always ERR_FAILURE, nothing written. */
KB_API int qmPointArray_computeConvexHull2d(const Point3d* points, int count, Point3d** hull,
                                            int* hullCount) KB_NOEXCEPT;
KB_API int qmPoint_computeConvexHull2d(const Point3d* points, int count, Point3d** hull,
                                       int* hullCount) KB_NOEXCEPT;
/**
 * Containment of a point in the ring (closed from the last entry to the first), exact
 * arithmetic comparisons: 2 on the boundary (on a vertex, on a horizontal edge between its end
 * x values, or exactly on another edge), 1 inside (odd crossings of the ray towards +x), 0
 * outside.  A vertex on the ray counts as a crossing only when the ring passes through the ray
 * there (its neighbours lie on opposite sides; each edge counts its lower end only).  Null: 0.
 */
KB_API int qmPointArray_isPointInsidePolygon(const Point3d* polygon, int count,
                                             const Point3d* point) KB_NOEXCEPT;
KB_API int qmPoint_isInsidePolygon(const Point3d* point, const Point3d* polygon,
                                   int count) KB_NOEXCEPT;
/**
 * Tests every point as qmPointArray_isPointInsidePolygon (boundary counts as in): *verdict 1
 * all in, 2 mixed, 0 all out, -1 on failure.  An index of the ring's edges by height is built
 * once per call, so a point costs O(log n + edges at its height).  Null pointers, counts < 1
 * or no memory: ERR_FAILURE.
 */
KB_API int qmPointArray_isArrayWithinPolygon(int* verdict, const Point3d* points, int count,
                                             const Point3d* polygon,
                                             int polygonCount) KB_NOEXCEPT;
/** qmPoint_nearEqual2d of the first and last entries; null or count < 1: 0. */
KB_API int qmPointArray_isClosed(const Point3d* points, int count, double tolerance) KB_NOEXCEPT;
/**
 * Closes a ring: ends farther apart than the tolerance -> the array is reallocated with the
 * first point appended (*points replaced, *count + 1); otherwise the last record becomes an
 * exact copy of the first.  No memory: ERR_FAILURE, array unchanged.
 */
KB_API int qmPointArray_closePolygon(Point3d** points, int* count, double tolerance) KB_NOEXCEPT;
/** Area-weighted centroid of the closed ring, z = 0; (0,0,0) when |area| < 1e-10. */
KB_API int qmPointArray_getCentroid(const Point3d* points, int count,
                                    Point3d* centroid) KB_NOEXCEPT;
/**
 * Removes, in place and in order, every entry within the tolerance (plan) of the previous kept
 * entry (the first entry is compared with the optional reference point).  newCount optional.
 */
KB_API int qmPointArray_removeRedundantPoints(Point3d* points, int* newCount, int count,
                                              const Point3d* reference,
                                              double tolerance) KB_NOEXCEPT;
KB_API int qmPoint_removeRedundantPointsFromArray(int* newCount, Point3d* points,
                                                  const Point3d* reference, int count,
                                                  double tolerance) KB_NOEXCEPT;
/**
 * Thins collinear runs against an anchor: point k+1 is dropped when every point strictly
 * between the anchor and point k+2 lies within the tolerance of the line anchor -> k+2; a kept
 * point becomes the anchor.  Ends always kept.  Fewer than 3 points: 0, count not written.
 */
KB_API int qmPointArray_removeCoLinearPoints2d(Point3d* points, int* newCount, int count,
                                               double tolerance) KB_NOEXCEPT;
/**
 * Keep flags (1/0) after the anchor walk of qmPointArray_removeCoLinearPoints2d: a point
 * between the anchor and the next candidate is dropped when its plan offset from the line
 * anchor -> candidate is within the horizontal tolerance and its z differs from both its
 * neighbours' z by no more than the vertical tolerance (0: elevations ignored).  Locked points
 * (locks[i] != 0, locks may be null) are always kept and become anchors; a point within 1e-6
 * in plan of its predecessor is treated as the same station (dropped unless locked).  A
 * horizontal tolerance <= 0 keeps everything.  The first and last points are always kept.
 */
KB_API int qmPointArray_filterByHorVerTolerance2d(int* keep, const Point3d* points,
                                                  const int* locks, int count,
                                                  double horizontalTolerance,
                                                  double verticalTolerance) KB_NOEXCEPT;
/**
 * Parallel copy of a point run at a signed plan distance, positive to the right of the
 * direction of travel.  End points move along their segment's normal; each interior vertex is
 * the intersection of the two neighbouring offset segments (a mitred join), so every offset
 * segment stays parallel to its source at exactly the distance.  Consecutive duplicates are
 * offset like their neighbour; a run whose first and last points are equal is treated as a
 * closed ring and mitred at the closure too.  z is carried through.  destination receives
 * count records and may be the source.  ERR_FAILURE: null pointers, count < 2, all points
 * coincident, or a vertex where the run turns straight back (no mitre exists).
 */
KB_API int qmPointArray_copyParallel2d(Point3d* destination, const Point3d* source, int count,
                                       double distance) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_QMPOINT_H */
