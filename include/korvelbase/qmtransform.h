/*
 * KorvelBase: three-dimensional affine transforms.
 *
 * A Transform3x4 holds three rows of four doubles, row-major: row i is r(i,0), r(i,1),
 * r(i,2), t(i); a point p maps to R p + t (the fourth row is implicitly 0 0 0 1).  Angles are
 * radians, counter-clockwise seen from the positive axis:
 *   Rz: r00 = cos, r01 = -sin, r10 = sin, r11 = cos;  Ry: r00 = cos, r02 = sin, r20 = -sin,
 *   r22 = cos;  Rx: r11 = cos, r12 = -sin, r21 = sin, r22 = cos.
 * Composition order differs on purpose: scale, 2-D rotation and translation act BEFORE the
 * transform they modify (T := T * X), while the 3-D rotation acts AFTER it (T := R * T).
 * Results are 0, or ERR_FAILURE for a null argument.  Threads: no shared state.
 */
#ifndef KORVELBASE_QMTRANSFORM_H
#define KORVELBASE_QMTRANSFORM_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

typedef struct Transform3x4 {
    double m[12];
} Transform3x4;

/** Identity rotation, zero translation. */
KB_API int qmTransform_setIdentity(Transform3x4* transform) KB_NOEXCEPT;
/** Overwrites the translation only. */
KB_API int qmTransform_setTranslation(Transform3x4* transform, double tx, double ty,
                                      double tz) KB_NOEXCEPT;
/** T := T * diag(sx, sy, sz): the scaling acts first, then the old transform. */
KB_API int qmTransform_scale(Transform3x4* transform, double sx, double sy, double sz) KB_NOEXCEPT;
/** T := T * Rz(angle): the rotation about z acts first. */
KB_API int qmTransform_rotateByAngle2d(Transform3x4* transform, double angle) KB_NOEXCEPT;
/** T := T * Tr(dx, dy, dz): the translation acts first. */
KB_API int qmTransform_translate(Transform3x4* transform, double dx, double dy,
                                 double dz) KB_NOEXCEPT;
/** T := Rz(az) T, then Ry(ay) T, then Rx(ax) T: the rotations act after the old transform. */
KB_API int qmTransform_rotateByAngle3d(Transform3x4* transform, double angleX, double angleY,
                                       double angleZ) KB_NOEXCEPT;
/** result := A * B (B acts first); result may be A or B. */
KB_API int qmTransform_multiply(Transform3x4* result, const Transform3x4* a,
                                const Transform3x4* b) KB_NOEXCEPT;
/** Keeps R and sets t = p - R p, so that p is a fixed point. */
KB_API int qmTransform_setOrigin(Transform3x4* transform, const Point3d* point) KB_NOEXCEPT;
/** out := R p + t; out may be p. */
KB_API int qmTransform_movePoint(const Transform3x4* transform, Point3d* out,
                                 const Point3d* point) KB_NOEXCEPT;
/** Replaces (vx, vy) by the x, y of R (vx, vy, 0) (translation removed); z becomes 0. */
KB_API int qmTransform_moveDirection2d(const Transform3x4* transform, Point3d* vector) KB_NOEXCEPT;
/** Moves the direction (cos a, sin a, 0) as above and replaces a by its atan2 (-pi .. pi). */
KB_API int qmTransform_moveAngle(const Transform3x4* transform, double* angle) KB_NOEXCEPT;
/**
 * Writes the record to standard output: "====MATH BEGIN====", three lines of the four values
 * of each row in "%f" separated by ",", then "====MATH END====".
 */
KB_API int qmTransform_printf(const Transform3x4* transform) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_QMTRANSFORM_H */
