/*
 * KorvelBase: plane mathematics on plain doubles (qmMath_ family).
 */
#ifndef KORVELBASE_QMMATH_H
#define KORVELBASE_QMMATH_H

#include "korvelbase/compare.h"

KB_BEGIN_DECLS

/** fmod(angle, 2*pi), plus 2*pi when negative: a direction in [0, 2*pi). */
KB_API double qmMath_normalizeAngle(double angle) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_QMMATH_H */
