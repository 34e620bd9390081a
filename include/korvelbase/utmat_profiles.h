/*
 * KorvelBase geometry kernel: profiles and polylines.  The difference of two profiles, the
 * tunnel simplification of a 3-D polyline, the purge of repeated points, the junction point of
 * two directions, offsets of a centreline, masks by a closed contour, tangents of offset curves
 * and the circle-triangle test.  Each group below states its own conventions.  All of them
 * report through the kernel error word (UTMAT_GetErreur): use them from one thread at a time.
 *
 * Profile difference.
 *
 * A profile is a Point2d polyline with x the chainage (non-decreasing) and y the level.  The
 * two profiles are walked together segment by segment over their common chainage; each piece
 * between chainages xa and xb has the mean difference m = (y1(xa) + y1(xb))/2 - (y2(xa) +
 * y2(xb))/2 and the area m (xb - xa) (0 when m is 0 at the calculation precision); where m > 0
 * profile 1 is above (its width and area go to the "above" totals), otherwise below or level.
 * Where the profiles cross, the crossing point is listed with a side code: the low byte is the
 * position of profile 1 relative to profile 2 just before it (2 below, 1 level, 4 above), bits
 * 16 to 18 just after (0x20000 below, 0x10000 level, 0x40000 above).  A crossing closes a zone,
 * whose signed area (positive where profile 1 is above) is listed for UTMAT_CalculateDiff2Lines.
 * The crossing lists are block arrays (release with MEM_LibererTableau); pass the address of a
 * null pointer, or null when the list is not wanted.  Totals are optional outputs.
 * Failures (allocation) go to the kernel error word.  Threads: one at a time with the kernel.
 */
#ifndef KORVELBASE_UTMAT_PROFILES_H
#define KORVELBASE_UTMAT_PROFILES_H

#include "korvelbase/utmat.h"

KB_BEGIN_DECLS

#define UTMAT_SIDE_BEFORE_BELOW 0x2
#define UTMAT_SIDE_BEFORE_LEVEL 0x1
#define UTMAT_SIDE_BEFORE_ABOVE 0x4
#define UTMAT_SIDE_AFTER_BELOW 0x20000
#define UTMAT_SIDE_AFTER_LEVEL 0x10000
#define UTMAT_SIDE_AFTER_ABOVE 0x40000

/** Lengths and areas above and below (or level), and the crossings of two profiles. */
KB_API void UTMAT_CalculerDifference2Polylignes(const Point2d* profile1, int n1, const Point2d* profile2, int n2,
                                                double* lengthAbove, double* areaAbove, double* lengthBelow,
                                                double* areaBelow, Point2d** crossings, int32_t** sides,
                                                int* count) KB_NOEXCEPT;
/**
 * The same, after the area check: a side next to a zone of zero area becomes level, and
 * crossings level on both sides are removed, so that every crossing left separates two zones of
 * non-zero area.
 */
KB_API void UTMAT_CalculerDifference2PolylignesAvecControleSurface(
    const Point2d* profile1, int n1, const Point2d* profile2, int n2, double* lengthAbove, double* areaAbove,
    double* lengthBelow, double* areaBelow, Point2d** crossings, int32_t** sides, int* count) KB_NOEXCEPT;
/**
 * UTMAT_CalculerDifference2Polylignes with the signed area of every zone (count + 1 of them:
 * before the first crossing, between crossings, after the last) in a block array; the three
 * further arguments are reserved (pass null).
 */
KB_API void UTMAT_CalculateDiff2Lines(const Point2d* profile1, int n1, const Point2d* profile2, int n2,
                                      double* lengthAbove, double* areaAbove, double* lengthBelow,
                                      double* areaBelow, Point2d** crossings, int32_t** sides, int* count,
                                      double** zoneAreas, void* reserved1, void* reserved2,
                                      void* reserved3) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Tunnel simplification                                                                      */
/* ------------------------------------------------------------------------------------------ */

/**
 * 1 when P lies in the tunnel from A towards B, else 0.  The tunnel's axis is the line through
 * A with the unit direction u = (B - A)/|B - A| (a zero direction when A = B); the deviation of
 * P is d = |u x (P - A)|, its distance from the axis, divided by u.y in mode 1 and by u.x in
 * mode 2 (a divisor within the calculation precision of 0 makes the deviation 0), taken as it
 * is in any other mode.  Inside means |deviation| < width/2 and |P - A| < length, both strict
 * (a NaN anywhere gives 0).  Null points: ERR_FAILURE, 0.
 */
KB_API int utmat_PointEstDansTunnel(const Point3d* a, const Point3d* b, const Point3d* p, double width,
                                    double length, int mode) KB_NOEXCEPT;
/**
 * Marks the points of a 3-D polyline that may be dropped: flags[i] = 1 when point i and every
 * point dropped since the last kept point (the anchor) stay in the tunnel (as
 * utmat_PointEstDansTunnel) from the anchor towards point i + 1.
 *   flags[0] := 0; anchor := 0.  For i = 1 .. n - 2, with the tunnel anchor -> i + 1:
 *   - point i outside: it becomes the anchor and flags[i] is NOT written;
 *   - inside: walking back from i - 1 over the points whose flag reads 1 (stopping at the first
 *     flag other than 1), flags[i] = 1 when all of them are inside, else 0 and point i becomes
 *     the anchor.
 * The flag of the last point is never written.  Clear the n flags to 0 before the call: the
 * unwritten flags are the caller's, and a flag left at 1 is walked over like a dropped point.
 * Cost: the walk back is answered from a tree of capsules (segment plus radius) over the
 * dropped points, accepting a whole group when its bounds clear the tunnel's limits by a
 * relative 1e-10 and testing single points otherwise; the flags are exactly those of the point
 * by point walk.  A straight or gently curving run costs O(log m) per point for m dropped
 * points (O(n log n) for a whole line in one tunnel); at worst a point costs the walk itself.
 * Working memory: about 60 bytes per dropped point of the current run.
 * Null points or flags: ERR_FAILURE.  n < 1: nothing.  Working memory that cannot be had:
 * ERR_FAILURE, flags partly written.
 */
KB_API void UTMAT_AppliquerTunnelAPolyligne(const Point3d* points, int n, double width, double length, int mode,
                                            int32_t* flags) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Purge of repeated points                                                                   */
/* ------------------------------------------------------------------------------------------ */

/**
 * Removes in place every point of a Point2d block array identical (UTMAT_PointsIdentiques at
 * tol: distance <= |tol|) to the point kept just before it, so a run of repeats keeps its
 * first point.  Done in one pass and one removal of the tail (MEM_SupprimerElementsDansTableau):
 * the result, the count and the storage (capacity of the new count) are those of deleting the
 * repeats one by one.  Null addresses, or a null array with *count >= 2: ERR_FAILURE; a
 * block-array failure is copied into the error words (UTMAT_GetErreur).
 */
KB_API void UTMAT_PurgerPolyligne(Point2d** points, int* count, double tol) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Junction point of two directions                                                           */
/* ------------------------------------------------------------------------------------------ */

/**
 * The junction of two tangent directions with equal tangent lengths: from P1 along u1 and back
 * from P2 along u2 (u1, u2 unit vectors), find t with Q1 = P1 + t u1 and Q2 = P2 - t u2 exactly
 * 2t apart, i.e. (|s|^2 - 4) t^2 + 2 (s.D) t + |D|^2 = 0 with s = u1 + u2, D = P1 - P2
 * (UTMAT_ResoudreEquation2Degre, given the fixed precision 1e-5).  Of two roots, the one in
 * [0, bound] when exactly one is, else the larger; bound = the shorter of |P1 I|, |P2 I| with I
 * where the two tangent lines meet (|P1 P2| when parallel).  Writes *tangentLength = t (when
 * not null), *junction = M = (Q1 + Q2)/2 and *direction = (Q2 - Q1)/|Q2 - Q1| (the zero vector
 * when Q1 = Q2).  No root: ERR_FAILURE, nothing written; null inputs or M, direction:
 * ERR_FAILURE; a zero u1 or u2 with two roots fails in the line construction.
 */
KB_API void UTMAT_CalculerPointInterpolation(const Point2d* p1, const Point2d* u1, const Point2d* p2,
                                             const Point2d* u2, Point2d* junction, Point2d* direction,
                                             double* tangentLength) KB_NOEXCEPT;
/**
 * 1 when the junction construction is possible, 0 when the data are collinear.  With a1 the
 * angle from u1 to u2 and a2 from u1 to the chord P1 -> P2 (UTMAT_CalculerAngleV1V2, brought
 * into (-pi, pi]): 1 when either differs from 0 by more than the fixed tolerance 1e-6;
 * otherwise, with a3 the angle from u2 to the chord, 1 when 2 max(|a3|, |a2|) exceeds 1e-6,
 * else 0.  Null: ERR_FAILURE, 0.
 */
KB_API int UTMAT_VerifierTriangleInterpolation(const Point2d* p1, const Point2d* u1, const Point2d* p2,
                                               const Point2d* u2) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Offsets of a centreline                                                                    */
/* ------------------------------------------------------------------------------------------ */

/** Joins at the outer side of a bend. */
#define UTMAT_JOIN_MITRE 1
#define UTMAT_JOIN_ROUND 2

/**
 * The offset of a centreline polyline by a signed distance d, positive to the RIGHT of the
 * direction of travel (the kernel's convention), as a new Point2d block array (*offset must be
 * null on entry; release with MEM_LibererTableau) of *count points, running the same way.
 *  - Repeated consecutive points are skipped.  Each segment k gives its parallel at d: the
 *    points P + d n_k with n_k its unit right normal (dy, -dx).
 *  - Outer side of a bend (the centreline turns away from the offset side): UTMAT_JOIN_MITRE
 *    meets the two parallels at the mitre point, at |d| / cos(theta/2) from the vertex for a
 *    turn theta; beyond 4 |d| (a turn above about 151 degrees) the corner is bevelled (both
 *    parallels' ends joined), and a full reversal gets a square end |d| beyond the vertex.
 *    UTMAT_JOIN_ROUND follows the circle of radius |d| about the vertex by chords whose
 *    sagitta |d| (1 - cos(step/2)) is at most chordTolerance (> 0), at most 256 chords a bend.
 *  - Inner side: the parallels are cut where they meet.  At a bend too tight for that (a
 *    segment shorter than the cut needs), they are bridged and the offset crosses itself;
 *    these loops are dropped: the raw offset is cut at all its self-crossings and a piece is
 *    kept only when the part of the centreline it was built from (its segment, or the vertex
 *    of its corner) is the nearest part of the centreline to the piece's middle, within a
 *    relative 1e-9 (a piece whose distance gives way towards an end without a crossing, next
 *    to an end of the centreline, is cut back by bisection to where it holds).  Kept pieces
 *    are chained in order; where the centreline comes back within 2|d| of itself (a hairpin
 *    narrower than the offset) pieces that do not meet are joined by a straight segment, and
 *    a loop such a join closes is cut out at its first crossing (at most one pass per point),
 *    so the result does not cross itself.
 * So the points of the offset lie at |d| from the centreline (at least |d| minus the chord
 * tolerance on rounded corners), except mitre points (at |d| from both segments' lines),
 * bevel ends, and the crossing points of such joins at a hairpin.  d = 0 gives the centreline without
 * repeats.  Cost: O(n log n)-like through grids of segments (self-crossings and nearest-part
 * queries look only at nearby segments).  Failures (ERR_FAILURE, *count 0, nothing
 * allocated): null pointers, *offset not null, an unknown join, a round join without a
 * positive chord tolerance, a non-finite d or point, fewer than 2 distinct points, memory.
 */
KB_API void UTMAT_TranslationComplexePolyligne(const Point2d* polyline, int n, double distance, int join,
                                               double chordTolerance, Point2d** offset,
                                               int* count) KB_NOEXCEPT;
/**
 * The offset by one signed width per vertex (positive to the right), varying linearly along
 * each segment: segment k gives the segment from P_k + w_k n_k to P_(k+1) + w_(k+1) n_k.  The
 * segments meet as in UTMAT_TranslationComplexePolyligne with mitred joins (the meeting point
 * of the two offset segments' lines, bevelled beyond 4 |w_k| from the vertex), tight inner
 * loops dropped by the same nearest-part rule (distance to the piece's own segment against
 * the distance to the rest of the centreline).  Widths of repeated points are those of the
 * first of the run.  Same output and failures (a non-finite width fails too).
 */
KB_API void UTMAT_TranslationPolyligneParEpaisseurs(const Point2d* polyline, int n, const double* widths,
                                                    Point2d** offset, int* count) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Masks                                                                                      */
/* ------------------------------------------------------------------------------------------ */

/**
 * The parts of a polyline inside (keepInside != 0) or outside (keepInside == 0) a closed
 * contour of m >= 3 points (closed by its first point when the last differs).  Every segment
 * of the polyline is cut where it meets the contour (UTMAT_CalculerIntersectionSegmentPolyligne
 * at tol, collinear overlaps cut at their ends) and each sub-segment is classified by its
 * middle: on the boundary (UTMAT_PointDansContour at tol gives a negative result) counts as
 * inside, the region being closed; otherwise the even-odd rule with half-open edges decides
 * (not UTMAT_PointDansContour's count, which takes a level edge at the ray's height for a
 * crossing).  Consecutive kept sub-segments form one piece.
 * Results, two new block arrays (both addresses must hold null on entry; release with
 * MEM_LibererTableau): *points holds every piece's points one piece after the other, and
 * *pieceSizes the number of points of each piece (each >= 2); *pieceCount the number of
 * pieces (0 with null arrays when nothing is kept).  Cost O(n m).  Failures: ERR_FAILURE,
 * *pieceCount 0: null pointers, m < 3, a non-null array on entry, memory.
 */
KB_API void UTMAT_AppliquerMasque(const Point2d* polyline, int n, const Point2d* contour, int m, int keepInside,
                                  double tol, Point2d** points, int32_t** pieceSizes,
                                  int* pieceCount) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Tangents of offset curves                                                                  */
/* ------------------------------------------------------------------------------------------ */

/*
 * An offset curve C(s) + d N(s) (d positive to the right, N the unit right normal) of a curve
 * of signed curvature k (positive turning left) has the derivative (1 + d k) T(s): the same
 * direction as the curve's unit tangent T, the speed scaled by 1 + d k (that is 1 - d' k with
 * d' the offset counted positive to the left).  Both functions write the unit tangent of the
 * offset curve, T, or -T where the factor is negative (beyond the centre of curvature, where
 * the offset curve runs backwards; at a factor of exactly 0, a cusp, T), and the factor
 * (optional output).
 */

/**
 * The circular arc of centre C and signed radius R (R > 0: travelled counter-clockwise,
 * turning left; R < 0 clockwise), at the point of the arc in the direction of `point` from C
 * (a point of the arc, or of the offset curve short of the centre; an offset point past the
 * centre lies the other way): T = the unit radial turned a quarter turn left (R > 0) or right
 * (R < 0), factor 1 + d/R (the offset curve is the concentric arc of radius |R| + d for R > 0,
 * |R| - d for R < 0, and the factor that radius over |R|, negative past the centre).  R = 0 or
 * not finite, or point = C: ERR_FAILURE, nothing written.
 */
KB_API void UTMAT_CalculerTangenteOffCer(const Point2d* centre, double radius, double offset, const Point2d* point,
                                         Point2d* tangent, double* speedFactor) KB_NOEXCEPT;
/**
 * The clothoid of parameter A (A > 0 turning left) at the distance s from its origin, in its
 * local frame: T = (cos t, sign(A) sin t), t = s^2/(2 A^2) (UTMAT_CalculerPosPointArcClotAbscisse),
 * curvature k = s / (A |A|), factor 1 + d k.  A = 0: ERR_FAILURE, nothing written.
 */
KB_API void UTMAT_CalculerTangenteOffClt(double A, double s, double offset, Point2d* tangent,
                                         double* speedFactor) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Circle and triangle                                                                        */
/* ------------------------------------------------------------------------------------------ */

/**
 * 1 when the closed disk (centre, radius) and the closed triangle abc share a point: the centre
 * lies in the triangle, or its distance to the nearest side is <= radius (exact comparisons).
 * A flat triangle is its three sides.  So a circle inside the triangle, or the triangle inside
 * the circle, intersects.  Null points or a radius that is negative or NaN: ERR_FAILURE, 0.
 */
KB_API int UTMAT_TesterIntersectionCercleTriangle(const Point2d* centre, double radius, const Point2d* a,
                                                  const Point2d* b, const Point2d* c) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_UTMAT_PROFILES_H */
