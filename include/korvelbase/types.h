/*
 * KorvelBase: the shared records and the status value.
 *
 * Point2d is the geometry kernel's point and vector (x, y); a kernel polyline is a contiguous
 * run of Point2d with stride 16 bytes.  Point3d (x, y, z) is the point of the coordinate
 * geometry families; a point array is a contiguous run with stride 24 bytes plus a separate
 * signed 32-bit count.
 *
 * Status convention: 0 is success and ERR_FAILURE (0x8000) is failure.  Booleans, as arguments
 * and results, are 32-bit ints 1 or 0.
 */
#ifndef KORVELBASE_TYPES_H
#define KORVELBASE_TYPES_H

#include <stddef.h>
#include <stdint.h>

#include "korvelbase/export.h"

/** The status value that signals failure; 0 signals success. */
#define ERR_FAILURE 0x8000

/** A UTF-16 code unit of wide text: char16_t in C++, its C11 definition in C. */
#ifdef __cplusplus
typedef char16_t QmChar16;
#else
typedef uint_least16_t QmChar16;
#endif

/** A point or vector of the plane. */
typedef struct Point2d {
    double x;
    double y;
} Point2d;

/** A point of space; z is the elevation. */
typedef struct Point3d {
    double x;
    double y;
    double z;
} Point3d;

#endif /* KORVELBASE_TYPES_H */
