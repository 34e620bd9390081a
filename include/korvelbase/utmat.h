/*
 * KorvelBase: the geometry kernel (UTMAT_ family).
 *
 * Conventions shared by every kernel operation:
 *  - The kernel keeps one process-wide error word.  Each UTMAT_ operation sets it to 0 on
 *    entry and to ERR_FAILURE (0x8000) when it fails; read it with UTMAT_GetErreur.  Only
 *    UTMAT_GetErreur, UTMAT_getCalculPrec and UTMAT_getDistanceTolerance leave it alone.
 *    Output records may be partly written when an operation fails.
 *  - A null pointer argument is reported as ERR_FAILURE and is never dereferenced; functions
 *    returning a value then return 0.0 (or 0) unless stated otherwise.
 *  - Angles are radians counter-clockwise from the +x axis.  Lengths are in the caller's unit.
 *  - UtDroite is the plane line a*x + b*y + c = 0.  Lines built by the kernel are normalised
 *    (a^2 + b^2 = 1), so that a*x + b*y + c is the signed distance of (x, y) from the line,
 *    positive on the side the normal (a, b) points to.  A line built from P0 to P1 has the
 *    normal (y1 - y0, x0 - x1): its positive side is the RIGHT of the direction of travel.
 *    Operations accept un-normalised lines unless they say otherwise.
 *  - The near-zero guards written "1e-39" below use the double 0x1.5c72fb1552d84p-130
 *    (1.0000000000000001e-39), a relative factor, signed where the formula is signed.
 *  - The kernel state is not guarded: use the kernel from one thread at a time.
 */
#ifndef KORVELBASE_UTMAT_H
#define KORVELBASE_UTMAT_H

#include "korvelbase/types.h"

/* ------------------------------------------------------------------------------------------ */
/* Records                                                                                    */
/* ------------------------------------------------------------------------------------------ */

/** Plane line a*x + b*y + c = 0 (see the conventions above). */
typedef struct UtDroite {
    double a;
    double b;
    double c;
} UtDroite;

/** Line in space: a point on it, then its (unit) direction. */
typedef struct UtDroite3d {
    Point3d point;
    Point3d direction;
} UtDroite3d;

/** 4x4 matrix stored row by row: element (i, j) is m[i * 4 + j]. */
typedef struct UtMatrice4D {
    double m[16];
} UtMatrice4D;

/** Circle: centre and radius. */
typedef struct UtCercle {
    Point2d centre;
    double rayon;
} UtCercle;

/** Values of the spiral-formula selector. */
#define UTMAT_SPIRAL_FORMULA_TARNAK 1
#define UTMAT_SPIRAL_FORMULA_VELMORAN 2

KB_BEGIN_DECLS

/* ------------------------------------------------------------------------------------------ */
/* Kernel state                                                                               */
/* ------------------------------------------------------------------------------------------ */

/**
 * Copies the kernel error word (0 or ERR_FAILURE after kernel operations, or the block-array
 * error after a kernel operation that used block arrays) and the memory detail word.  Clears
 * neither; a null address is skipped.
 */
KB_API void UTMAT_GetErreur(uint32_t* error, uint32_t* detail) KB_NOEXCEPT;
/** Stores the calculation precision (initially 0.0001), the tolerance of the kernel's
 *  near-equality tests on non-distance quantities.  Not checked. */
KB_API void UTMAT_setCalculPrecision(double precision) KB_NOEXCEPT;
/** The calculation precision; leaves the error word alone. */
KB_API double UTMAT_getCalculPrec(void) KB_NOEXCEPT;
/** Stores the distance tolerance (initially 2.0, deliberately large: set your own).  Not
 *  checked. */
KB_API void UTMAT_setDistanceTolerance(double tolerance) KB_NOEXCEPT;
/** The distance tolerance; leaves the error word alone. */
KB_API double UTMAT_getDistanceTolerance(void) KB_NOEXCEPT;
/** Selects the Tarnak series for clothoids (selector 1). */
KB_API void UTMAT_SetTarnakSpiralFormula(void) KB_NOEXCEPT;
/** Selects the Velmoran series for clothoids (selector 2, the initial choice). */
KB_API void UTMAT_SetVelmoranSpiralFormula(void) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Tolerant comparisons (absolute tolerance; 1 or 0; NaN compares false)                      */
/* ------------------------------------------------------------------------------------------ */

/** a - b < -tol. */
KB_API int UTMAT_Inf(double a, double b, double tol) KB_NOEXCEPT;
/** a - b <= tol. */
KB_API int UTMAT_InfOuEgal(double a, double b, double tol) KB_NOEXCEPT;
/** |a - b| <= |tol| (a negative tolerance counts by its magnitude). */
KB_API int UTMAT_Egal(double a, double b, double tol) KB_NOEXCEPT;
/** a - b >= -tol. */
KB_API int UTMAT_SupOuEgal(double a, double b, double tol) KB_NOEXCEPT;
/** a - b > tol. */
KB_API int UTMAT_Sup(double a, double b, double tol) KB_NOEXCEPT;
/** x in [lo, hi] widened by tol: x - lo >= -tol and x - hi <= tol. */
KB_API int UTMAT_AppartenirAIntFerme(double x, double lo, double hi, double tol) KB_NOEXCEPT;
/** x in (lo, hi) narrowed by tol: lo + tol < x and hi - tol > x. */
KB_API int UTMAT_AppartenirAIntOuvert(double x, double lo, double hi, double tol) KB_NOEXCEPT;
/**
 * 1 when the points are within tol of each other (UTMAT_Egal(distance, 0, tol)).  The final
 * comparison clears the error word; null points return 0 (precondition violation).
 */
KB_API int UTMAT_PointsIdentiques(const Point2d* p1, const Point2d* p2, double tol) KB_NOEXCEPT;
/** The same with the 3-D distance. */
KB_API int UTMAT_Points3dIdentiques(const Point3d* p1, const Point3d* p2, double tol) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Vectors                                                                                    */
/* ------------------------------------------------------------------------------------------ */

/** out = p1 - p0; returns out.  Any null: ERR_FAILURE, nothing written. */
KB_API Point2d* UTMAT_CalculerVecteur(const Point2d* p0, const Point2d* p1, Point2d* out) KB_NOEXCEPT;
/** out = p1 - p0 componentwise. */
KB_API void UTMAT_CalculerVecteur3d(const Point3d* p0, const Point3d* p1, Point3d* out) KB_NOEXCEPT;
/** sqrt(x^2 + y^2). */
KB_API double UTMAT_CalculerNormeVecteur(const Point2d* v) KB_NOEXCEPT;
/** sqrt(x^2 + y^2 + z^2). */
KB_API double UTMAT_CalculerNormeVecteur3d(const Point3d* v) KB_NOEXCEPT;
/** out = v1 + v2. */
KB_API void UTMAT_CalculerSommeV1V2(const Point2d* v1, const Point2d* v2, Point2d* out) KB_NOEXCEPT;
/** Scales v to unit length; a zero vector is left as it is and is no error. */
KB_API void UTMAT_NormerVecteur(Point2d* v) KB_NOEXCEPT;
/** Scales v to unit length (multiplies by 1/norm); a zero vector is left as it is. */
KB_API void UTMAT_NormerVecteur3d(Point3d* v) KB_NOEXCEPT;
/** Dot product x1*x2 + y1*y2. */
KB_API double UTMAT_CalculerProduitScalaire(const Point2d* v1, const Point2d* v2) KB_NOEXCEPT;
/** 2-D cross product x1*y2 - y1*x2: positive when v2 lies counter-clockwise of v1. */
KB_API double UTMAT_CalculerProduitVectoriel(const Point2d* v1, const Point2d* v2) KB_NOEXCEPT;
/** out = v1 x v2 (right-handed). */
KB_API void UTMAT_CalculerProduitVectoriel3d(const Point3d* v1, const Point3d* v2,
                                             Point3d* out) KB_NOEXCEPT;
/** Euclidean distance in the plane. */
KB_API double UTMAT_CalculerDistance2Pt(const Point2d* p1, const Point2d* p2) KB_NOEXCEPT;
/** Euclidean distance in space. */
KB_API double UTMAT_CalculerDistance2Pt3d(const Point3d* p1, const Point3d* p2) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Lines                                                                                      */
/* ------------------------------------------------------------------------------------------ */

/**
 * Normalises d in place: n = sqrt(a^2 + b^2); a, b, c are multiplied by 1/n and *norm (when
 * not null) receives n.  n not greater than 0 (a = b = 0, or NaN): ERR_FAILURE, d unchanged.
 */
KB_API void UTMAT_NormerDroite(UtDroite* d, double* norm) KB_NOEXCEPT;
/** out = d translated by the vector v: a, b copied, c' = c - a*vx - b*vy. */
KB_API void UTMAT_TranslaterDroite(const UtDroite* d, const Point2d* v, UtDroite* out) KB_NOEXCEPT;
/**
 * The normalised line from p0 to p1: (a, b) = (y1 - y0, x0 - x1) / n, c = -(a*x0 + b*y0);
 * positive side on the right of the travel p0 -> p1.  Equal points: ERR_FAILURE, out holds the
 * un-normalised (zero) a and b.
 */
KB_API void UTMAT_CalculerDroite2Pt(const Point2d* p0, const Point2d* p1, UtDroite* out) KB_NOEXCEPT;
/** out = (p0, unit(p1 - p0)); equal points leave a zero direction without error. */
KB_API void UTMAT_CalculerDroite2Pt3d(const Point3d* p0, const Point3d* p1,
                                      UtDroite3d* out) KB_NOEXCEPT;
/** The normalised line through p with direction v (positive side on the right of v).
 *  Zero v: ERR_FAILURE. */
KB_API void UTMAT_CalculerDroitePtVecteur(const Point2d* p, const Point2d* v,
                                          UtDroite* out) KB_NOEXCEPT;
/** The line through p perpendicular to d: (a', b') = (b, -a), c' = py*a - b*px; its direction
 *  is the normal of d.  Normalised when d is. */
KB_API void UTMAT_CalculerDroiteOrthoDroitePs1Pt(const UtDroite* d, const Point2d* p,
                                                 UtDroite* out) KB_NOEXCEPT;
/** The line through p parallel to d: a, b copied, c' = -(a*px + b*py). */
KB_API void UTMAT_CalculerDroiteParalleleDroitePs1Pt(const UtDroite* d, const Point2d* p,
                                                     UtDroite* out) KB_NOEXCEPT;
/** The parallel at signed distance dist (on the positive side of d for dist > 0):
 *  a, b copied, c' = c - dist*sqrt(a^2 + b^2). */
KB_API void UTMAT_CalculerDroiteParalleleDroiteDistance(const UtDroite* d, double dist,
                                                        UtDroite* out) KB_NOEXCEPT;
/**
 * Signed offset of p: (a*px + b*py + c) / sqrt(a^2 + b^2).  Proceeds only when
 * c*1e-39 < sqrt(a^2 + b^2) (signed c: a negative c always passes), else ERR_FAILURE and
 * *out is not written.
 */
KB_API void UTMAT_CalculerDeportPtDroite(const UtDroite* d, const Point2d* p, double* out) KB_NOEXCEPT;
/** Unsigned distance from p to the line: |direction x (p - point)| (exact for a unit
 *  direction). */
KB_API void UTMAT_CalculerDeportPtDroite3d(const UtDroite3d* line, const Point3d* p,
                                           double* out) KB_NOEXCEPT;
/** a*px + b*py + c as it stands (the offset only for a normalised line). */
KB_API double UTMAT_CalculerPuissancePtDroite(const UtDroite* d, const Point2d* p) KB_NOEXCEPT;
/**
 * Intersection of d1 and d2 (normalised copies, Cramer's rule plus one refinement step).
 * *found = 1 and *out written when the lines cross; *found = 0 without error when they are
 * parallel (|det| <= |max(c1, c2)| * 1e-39).  A line with a = b = 0: ERR_FAILURE.
 */
KB_API void UTMAT_CalculerIntersection2Droite(const UtDroite* d1, const UtDroite* d2,
                                              Point2d* out, int* found) KB_NOEXCEPT;
/**
 * The two bisectors of d1 and d2, un-normalised, written to out[0] and out[1]:
 * out[0] = N2*d1 - N1*d2 and out[1] = -(N2*d1 + N1*d2), with Ni = sqrt(ai^2 + bi^2).
 */
KB_API void UTMAT_CalculerBissectriceD1D2(const UtDroite* d1, const UtDroite* d2,
                                          UtDroite* out) KB_NOEXCEPT;
/**
 * Foot of the perpendicular from p on d.  Proceeds only when c*1e-39 < a^2 + b^2 (signed c),
 * else ERR_FAILURE.
 */
KB_API void UTMAT_ProjeterPtSurDroite(const UtDroite* d, const Point2d* p, Point2d* out) KB_NOEXCEPT;
/** Side of p with v = a*px + b*py + c: -1 if v < -tol, 1 if v > tol, else 0 (the bounds
 *  count as on the line).  Null: ERR_FAILURE, returns 0. */
KB_API int UTMAT_CalculerClassePtDroite(const Point2d* p, const UtDroite* d, double tol) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Points on a circle                                                                         */
/* ------------------------------------------------------------------------------------------ */

/** Radial projection of p on the circle (c, r): t = atan2(p - c) in (-pi, pi],
 *  out = c + r*(cos t, sin t); *angle (optional) receives t. */
KB_API void UTMAT_ProjeterPtSurCercle(const Point2d* c, double r, const Point2d* p, Point2d* out,
                                      double* angle) KB_NOEXCEPT;
/** out = c + r*(cos t, sin t). */
KB_API void UTMAT_CalculerPtSurCercleAngle(const Point2d* c, double r, double t,
                                           Point2d* out) KB_NOEXCEPT;
/** v = |p - c| - r: -1 inside (v < -tol), 1 outside (v > tol), 0 on the circle. */
KB_API int UTMAT_CalculerClassePtCercle(const Point2d* p, const Point2d* c, double r,
                                        double tol) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Angles and frames                                                                          */
/* ------------------------------------------------------------------------------------------ */

/**
 * Brings an angle into a range.  Mode 0: (-pi, pi] (pi stays pi); mode 1: [0, 2*pi); mode 2:
 * clamped to [-2*pi, 2*pi] without reduction.  Other modes: ERR_FAILURE, angle returned as is.
 */
KB_API double UTMAT_NormaliserAngle(int mode, double angle) KB_NOEXCEPT;
/**
 * Sweep around c from p1 to p2: counter-clockwise in [0, 2*pi) when ccw is non-zero, else
 * clockwise in [-2*pi, 0) (equal directions: 0 and -2*pi).  A point on the centre:
 * ERR_FAILURE, returns 0.0.
 */
KB_API double UTMAT_CalculerAngleAuCentre(const Point2d* c, const Point2d* p1, const Point2d* p2,
                                          int ccw) KB_NOEXCEPT;
/** Sweep from the direction t0 to the direction c -> p: counter-clockwise (in [0, 2*pi) for t0
 *  in [0, 2*pi)) when ccw is non-zero, else that value minus 2*pi. */
KB_API double UTMAT_CalculerAnglePtOffsetAngle(const Point2d* p, const Point2d* c, double t0,
                                               int ccw) KB_NOEXCEPT;
/** Counter-clockwise angle from v1 to v2 in [0, 2*pi). */
KB_API double UTMAT_CalculerAngleV1V2(const Point2d* v1, const Point2d* v2) KB_NOEXCEPT;
/** *out = angle from the direction (-b1, a1) of d1 to the direction (-b2, a2) of d2,
 *  in [0, 2*pi). */
KB_API void UTMAT_CalculerAngleD1D2(const UtDroite* d1, const UtDroite* d2, double* out) KB_NOEXCEPT;
/**
 * Unit bisector of the counter-clockwise sweep from v1 to v2: u1 + u2 normalised, negated when
 * v2 is clockwise of v1 (the sweep then exceeds a half turn).  Parallel (cross product of the
 * unit vectors within the calculation precision): u1 when they point the same way, u1 turned
 * a quarter turn counter-clockwise when opposite.
 */
KB_API void UTMAT_CalculerBissectriceV1V2(const Point2d* v1, const Point2d* v2,
                                          Point2d* out) KB_NOEXCEPT;
/** Coordinates of p in the frame of origin o whose x axis points at angle t. */
KB_API void UTMAT_ChangerRepere(const Point2d* p, const Point2d* o, double t, Point2d* out) KB_NOEXCEPT;
/** Origin of the frame rotated by t in which the point p has the local coordinates q. */
KB_API void UTMAT_CalculerCentreRepere2(const Point2d* p, const Point2d* q, double t,
                                        Point2d* out) KB_NOEXCEPT;
/** p := translation + rotation(t) * p; returns p. */
KB_API Point2d* UTMAT_CalculerPointTranslationRotation(const Point2d* translation, double t,
                                                       Point2d* p) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Numbers                                                                                    */
/* ------------------------------------------------------------------------------------------ */

/** n!/m!, the product of the integers m+1 .. n (1.0 when m = n).  m > n: ERR_FAILURE, 1.0. */
KB_API double UTMAT_FactorielleDivision(int n, int m) KB_NOEXCEPT;
/** n! as a double (infinity beyond 170!); n < 1 gives 1.0. */
KB_API double UTMAT_DFactorielle(int n) KB_NOEXCEPT;
/**
 * Returns y0 when t*1e-39 < |T|, otherwise (t/T)*(y1 - y0) + y0.  The guard is deliberately
 * the reverse of a division guard: ordinary T give y0.
 */
KB_API double UTMAT_CalculerInterpolationLineaire(double t, double T, double y0,
                                                  double y1) KB_NOEXCEPT;
/**
 * Real roots of a*x^2 + b*x + c = 0 (the fourth argument is not used).  *count receives 0, 1
 * or 2 and roots[0..count-1] the roots.  a = 0: the linear root -c/b (none when b = 0).
 * Otherwise the discriminant is judged against its rounding bound: within it, the double root
 * -b/(2a); above it, q = b + sqrt(disc) (b - sqrt(disc) when b < 0 beyond the bound), roots
 * -q/(2a) then c/(a * first root), in that order.  Null count or roots: ERR_FAILURE.
 */
KB_API void UTMAT_ResoudreEquation2Degre(double a, double b, double c, double unused,
                                         double* roots, int* count) KB_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* 4x4 matrices (row by row; null arguments: ERR_FAILURE, nothing done)                       */
/* ------------------------------------------------------------------------------------------ */

/** out = a * b (out may alias a or b). */
KB_API void UTMAT_CalculerProduitMatrice4D(const UtMatrice4D* a, const UtMatrice4D* b,
                                           UtMatrice4D* out) KB_NOEXCEPT;
/** destination := source. */
KB_API void UTMAT_CopierMatrice4D(const UtMatrice4D* source, UtMatrice4D* destination) KB_NOEXCEPT;
/** out := identity. */
KB_API void UTMAT_RecupererMatriceIdentite4D(UtMatrice4D* out) KB_NOEXCEPT;
/** out = m * p with p a homogeneous column vector of four doubles; no division by w. */
KB_API void UTMAT_TransformerPointParMatrice4D(const double* p, const UtMatrice4D* m,
                                               double* out) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_UTMAT_H */
