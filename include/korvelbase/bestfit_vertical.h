/*
 * KorvelBase: vertical profile best fit.
 *
 * From a longitudinal profile (stations along a line and a level at each) the fit designs a
 * road vertical alignment: intersection points (IPs) of straight grades, each rounded by a
 * symmetric parabolic vertical curve, whose evaluated profile stays inside the envelope
 * [level - LOTol, level + UPTol] of the data with as few IPs as the tolerances allow.
 *
 * Units: stations, levels, tolerances and curve lengths in one length unit (metres, say);
 * grades are rise over run; K values are curve length per percent of grade change.
 *
 * The procedure, greedy and staged:
 *   1. limits: IPs at the first and last data points that have an envelope middle;
 *   2. primary fit: a scan from the first limit inserts an IP (at the envelope middle) at each
 *      point where the piecewise-linear profile leaves the envelope;
 *   3. filtering: interior IPs whose grade change, in percent, is at most a filter value are
 *      removed and the scan repeated until the profile is inside again; the filter value starts
 *      at the COG filter value and drops by 0.1 per pass while it stays above 0.1 (at most
 *      1000 passes, which only a filter value above 100 percent can reach);
 *   4. curves: lengths from the K values (crest: Hog, sag: Sag; at least VCMinimumLength),
 *      shortened where neighbouring curves would overlap, rounded to 0.001; each IP level is
 *      then raised by its curve's mid-ordinate so that the curve passes through the fitted
 *      level; optional tie-ins put the second (last but one) IP on the line through the first
 *      (last) two data points.
 * An IP within 0.001 of an existing one replaces it.  A level below -998.0 (such as -999.0)
 * in an envelope means "no value".
 *
 * Profile evaluation: between the curve ends BVC = S - V/2 and EVC = S + V/2 of IP i the level
 * is BVC level + g_in (x - BVC) - (g_in - g_out) (x - BVC)^2 / (2V); between the EVC of IP i
 * and the BVC of IP i + 1 it is L(i) + g_out(i) (x - S(i)); the first matching IP wins.
 *
 * Trace: with the debug flag 1, each run writes a trace of every stage to
 * "C:\BestFit_Vertical_Debug.txt" on Windows and /tmp/BestFit_Vertical_Debug.txt elsewhere
 * (truncated at the start of the run; tracing is silently dropped when the file cannot be
 * created).  Numbers in the trace are written with '.' whatever the host's locale.
 *
 * Threads: the parameters and the working state are process-wide and unguarded; the fit is for
 * one thread at a time.
 */
#ifndef KORVELBASE_BESTFIT_VERTICAL_H
#define KORVELBASE_BESTFIT_VERTICAL_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/**
 * Stores the nine parameters of the next runs (they persist between runs):
 * upTol, loTol: envelope tolerances above and below each level (>= 0);
 * hog, sag: K values of crest and sag curves; vcMinimumLength: the shortest curve;
 * cogFilterValue: the starting grade change, in percent, below which IPs are filtered out;
 * startTie, endTie: non-zero puts the second (last but one) IP on the line through the first
 * (last) two data points; debug: 1 writes the trace file.
 */
KB_API void qmBestFit_verticalProfileInitialize(double upTol, double loTol, double hog, double sag,
                                                double vcMinimumLength, double cogFilterValue,
                                                int startTie, int endTie, int debug) KB_NOEXCEPT;

/**
 * Fits a vertical alignment to count data points (stations increasing, levels).  On success
 * *ipStations, *ipLevels and *curveLengths receive new arrays of *ipCount doubles in station
 * order (release each with qmMem_free) and 0 is returned.  The first and last IPs have curve
 * length 0.  When fewer than 2 IPs result (fewer than 2 data points, no point with an envelope
 * middle), the arrays are null, the count 0 and ERR_FAILURE is returned; so it is for null
 * arguments, for stations that are not finite or that decrease, and when working memory
 * cannot be had.
 * Cost: O(n log m) for the scans (n points, m IPs) plus the IP insertions.
 */
KB_API int qmBestFit_verticalComputeProfile(double** ipStations, double** ipLevels,
                                            double** curveLengths, int* ipCount,
                                            const double* stations, const double* levels,
                                            int count) KB_NOEXCEPT;

/**
 * The fit on a point array.  distanceMode non-zero: station = cumulative plan distance along
 * the points (0 at the first), level = z; distanceMode 0: station = x - x of the first point,
 * level = y.  The parameters are stored as by qmBestFit_verticalProfileInitialize.  On
 * success *out receives a new array of *outCount points (x = IP station, plus the first
 * point's x in mode 0; y = IP level; z = curve length; release with qmPointArray_free or
 * qmMem_free).  Fewer than 2 points or a null pointer: ERR_FAILURE; otherwise the result of
 * qmBestFit_verticalComputeProfile.
 */
KB_API int qmPoint_verticalComputeProfile(Point3d** out, int* outCount, const Point3d* points,
                                          int count, int distanceMode, double upTol, double loTol,
                                          double hog, double sag, double vcMinimumLength,
                                          double cogFilterValue, int startTie, int endTie,
                                          int debug) KB_NOEXCEPT;

/**
 * Least-squares fit of one parabola y = A x^2 + B x + C to count points, each given as four
 * doubles in points: station, standard deviation of the station, level, standard deviation of
 * the level.  Both coordinates are observations (a combined adjustment: each point's condition
 * A x^2 + B x + C - y = 0 is weighted by 1 / ((2 A x + B)^2 sx^2 + sy^2)), solved from the
 * approximations A = (g2 - g1) / (2 L), B = g1, C = first level (g1, g2 the grades of the first
 * and last two points, L the station span) in at most 15 iterations, until every correction is
 * below 0.01.  Cost: linear in count.
 * Outputs: A, B, C; start and end grades 2 A x + B at the first and last stations; the station
 * span L; the rate of grade change 2 A; the residual measure sqrt(sum r^2) / n of the level
 * residuals r.  Results: 0; 1 (deliberately not ERR_FAILURE) for fewer than 3 points;
 * ERR_FAILURE with all eight outputs 0 when the iteration does not converge or a point has
 * no weight (both deviations 0 where the curve's slope makes its condition weightless), and for
 * null pointers.  Thread-safe.
 */
KB_API int qmBestFit_vertCurveCalc(double* a, double* b, double* c, double* startGrade,
                                   double* endGrade, double* length, double* rateOfGradeChange,
                                   double* residualMeasure, int count,
                                   const double* points) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_BESTFIT_VERTICAL_H */
