/*
 * KorvelBase: geoid undulation from gridded geoid model files.
 *
 * A grid file is binary and little-endian: a 44-byte header (southern latitude, western
 * longitude counted eastward 0..360, latitude spacing, longitude spacing, all doubles in
 * degrees; then the numbers of rows and of columns and a non-zero kind, signed 32-bit), then
 * rows x columns 32-bit floats, row by row from the south, each row from west to east.  The
 * node at row r, column c (from 1) lies at byte 44 + ((r - 1) * columns + (c - 1)) * 4; values
 * are returned in the file's own unit (metres in the usual models).  A header that cannot
 * describe a grid (counts not positive, spacings not positive or not finite, a size that
 * overflows, a file shorter than its grid) is rejected like a kind of 0.
 *
 * Positions: latitude in degrees (-90..90); longitude in degrees east when eastFlag is
 * non-zero, west-positive when it is 0 (then converted to 360 - longitude); a negative
 * longitude first gets 360 added, with either flag.  A latitude outside -90..90 or a longitude
 * whose absolute value passed exceeds 360 is rejected, as is a position outside the grid
 * (bounds inclusive).
 *
 * Interpolation: biquadratic on the 3 x 3 block of nodes centred on the node at or south-west
 * of the position, moved inward at the grid's borders: along each block row the quadratic
 * through its three nodes, then across the three row values.  A position exactly on a node
 * returns the node's value.  A grid with fewer than 3 rows or columns answers on its nodes
 * only.  Node values are read from the file on demand (the file stays open while a model is
 * loaded; nothing is cached), so a file that shrinks or fails while open gives result 1.
 *
 * Results of this family: 0 for success, 1 for failure (deliberately not ERR_FAILURE).
 * Threads: one model is open at a time, held in process-wide, unguarded state; use the family
 * from one thread at a time.
 */
#ifndef KORVELBASE_QMGEOID_H
#define KORVELBASE_QMGEOID_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/**
 * Closes any open model, then opens the grid file at path and reads its header.  1 for a null
 * or empty path, a file that cannot be opened, a kind of 0 or an impossible header (the model
 * is then closed).
 */
KB_API int qmGeoid_initModelByFile(const char* path) KB_NOEXCEPT;

/**
 * Closes any open model, then opens the tile of a model family that covers the position best.
 * Families (modelCode: file prefix, tiles): 2 "g2003" and 3 "s2003" and 5 "s1999": suffix "u0",
 * numbers 1-8; 4 "g1999": tiles 1-8 "u0" 1-8, 9-12 "a0" 1-4, 13 "h0" 1, 14 "p0" 1.  A tile's
 * file is directory + (a separator when the directory ends in neither '/' nor a backslash:
 * '/' here, a backslash on Windows) + prefix + suffix + number + ".bin", e.g. g2003u01.bin.
 * Tiles are tried in order; a position more than half a spacing inside every edge ends the
 * search; otherwise the first tile where it lies within half a spacing of one edge is chosen,
 * else the first where it lies in such a corner.  Unreadable tiles are skipped.  1 for an
 * unknown code, a null directory or no tile covering the position.
 */
KB_API int qmGeoid_initModelByGeoid(int modelCode, const char* directory, double latitude,
                                    double longitude, int eastFlag) KB_NOEXCEPT;

/**
 * Stores 0 in *undulation, then the undulation interpolated at the position.  1 when no model
 * is loaded, the position is rejected or a node cannot be read; *undulation is then 0.  A null
 * output also gives 1.
 */
KB_API int qmGeoid_getUndulationAtLatLong(double* undulation, double latitude, double longitude,
                                          int eastFlag) KB_NOEXCEPT;

/**
 * The quadratic through (0, f0), (1, f1), (2, f2) evaluated at t:
 * f0 + t * ((f1 - f0) + (f2 - f1 - (f1 - f0)) * (t - 1) * 0.5).  Thread-safe.
 */
KB_API double qmGeoid_biQuadraticFit(double t, double f0, double f1, double f2) KB_NOEXCEPT;

/** Closes the model's file and resets the header (doubles 1.0, counts 1).  Returns 0. */
KB_API int qmGeoid_closeModel(void) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_QMGEOID_H */
