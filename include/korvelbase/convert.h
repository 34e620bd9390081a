/*
 * KorvelBase: converters between 2-D and 3-D points.
 *
 * The single-point converters write through the caller's output; null pointers are not
 * tested.  The array converters return a new array allocated with qmMem_malloc, which the
 * caller releases with qmMem_free; they return null when n <= 0 or the allocation fails.
 */
#ifndef KORVELBASE_CONVERT_H
#define KORVELBASE_CONVERT_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/** out = (in.x, in.y). */
KB_API void ConvertPoint32(const Point3d* in, Point2d* out) KB_NOEXCEPT;
/** out = (in.x, in.y, 0.0). */
KB_API void ConvertPoint23(const Point2d* in, Point3d* out) KB_NOEXCEPT;
/** New array of n Point2d holding x, y of each input point. */
KB_API Point2d* ConvertArray32(const Point3d* in, int n) KB_NOEXCEPT;
/** New array of n Point3d holding x, y of each input point and z = 0.0. */
KB_API Point3d* ConvertArray23(const Point2d* in, int n) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_CONVERT_H */
