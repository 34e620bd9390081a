// Horizontal fits: circles through three points, the weighted best-fit circle and line, and
// the least-squares plane.
#include <cmath>
#include <cstddef>

#include "base/heap.hpp"
#include "base/optional_output.hpp"
#include "korvelbase/bestfit_horizontal.h"
#include "korvelbase/qmmatrix.h"

namespace {

constexpr double kCollinearDeterminant = 1e-9;
constexpr int kCircleMaxIterations = 20;
constexpr double kCentreCorrectionLimit = 1e-5;    // |dD| and |dE|
constexpr double kConstantCorrectionLimit = 1e-3;  // |dF|
constexpr double kPi = 3.14159265358979323846;
constexpr double kTwoPi = 2.0 * kPi;
constexpr double kVerticalChordDx = 1e-11;
constexpr double kVerticalChordSlope = 1e17;
constexpr double kSteepChordSlope = 1.5;
constexpr double kLevelChordSlope = 0.0001;

// Layout of one observed point: x, sd x, y, sd y.
constexpr int kObservationStride = 4;
struct Observation {
    double x, sx, y, sy;
};
inline Observation observationAt(const double* run, int i) noexcept {
    const double* o = run + static_cast<std::size_t>(i) * kObservationStride;
    return {o[0], o[1], o[2], o[3]};
}

bool circleThroughThreePoints(double x1, double y1, double x2, double y2, double x3, double y3,
                              double* cx, double* cy, double* r) noexcept {
    const double bc = (x1 * x1 + y1 * y1 - (x2 * x2 + y2 * y2)) / 2.0;
    const double cd = ((x2 * x2 + y2 * y2) - x3 * x3 - y3 * y3) / 2.0;
    const double det = (x1 - x2) * (y2 - y3) - (y1 - y2) * (x2 - x3);
    if (!(std::fabs(det) >= kCollinearDeterminant)) return false;  // NaN refused as well
    *cx = ((y2 - y3) * bc - (y1 - y2) * cd) / det;
    *cy = ((x1 - x2) * cd - (x2 - x3) * bc) / det;
    *r = std::hypot(*cx - x1, *cy - y1);
    return true;
}

// Solves the symmetric 3x3 system n * d = u by Gaussian elimination with partial pivoting.
bool solve3(double n[3][3], double u[3], double d[3]) noexcept {
    for (int col = 0; col < 3; ++col) {
        int pivot = col;
        for (int r = col + 1; r < 3; ++r)
            if (std::fabs(n[r][col]) > std::fabs(n[pivot][col])) pivot = r;
        if (!(n[pivot][col] != 0.0) || !std::isfinite(n[pivot][col])) return false;
        if (pivot != col) {
            for (int k = 0; k < 3; ++k) {
                const double t = n[col][k];
                n[col][k] = n[pivot][k];
                n[pivot][k] = t;
            }
            const double t = u[col];
            u[col] = u[pivot];
            u[pivot] = t;
        }
        for (int r = col + 1; r < 3; ++r) {
            const double f = n[r][col] / n[col][col];
            for (int k = col; k < 3; ++k) n[r][k] -= f * n[col][k];
            u[r] -= f * u[col];
        }
    }
    for (int r = 2; r >= 0; --r) {
        double s = u[r];
        for (int k = r + 1; k < 3; ++k) s -= n[r][k] * d[k];
        d[r] = s / n[r][r];
        if (!std::isfinite(d[r])) return false;
    }
    return true;
}

struct CircleParameters {
    double D, E, F;
};

// One step of the combined adjustment on coordinates reduced by (x0, y0).  Each condition
// f_i = X^2 + Y^2 + D X + E Y + F involves only point i, so B Q B^T is diagonal with
// m_i = (2X + D)^2 sx^2 + (2Y + E)^2 sy^2, and the normal matrix A^T M^-1 A and the vector
// A^T M^-1 w are sums of per-point terms: O(n) per iteration, O(1) memory.
bool circleCorrection(const double* run, int count, double x0, double y0,
                      const CircleParameters& p, double d[3]) noexcept {
    double n[3][3] = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}};
    double u[3] = {0, 0, 0};
    for (int i = 0; i < count; ++i) {
        const Observation o = observationAt(run, i);
        const double X = o.x - x0, Y = o.y - y0;
        const double bx = 2.0 * X + p.D, by = 2.0 * Y + p.E;
        const double m = bx * bx * (o.sx * o.sx) + by * by * (o.sy * o.sy);
        if (!(m > 0.0) || !std::isfinite(m)) return false;
        const double w = X * X + Y * Y + p.E * Y + p.D * X + p.F;
        const double a[3] = {X, Y, 1.0};
        for (int r = 0; r < 3; ++r) {
            const double ar = a[r] / m;
            for (int k = r; k < 3; ++k) n[r][k] += ar * a[k];
            u[r] += ar * w;
        }
    }
    n[1][0] = n[0][1];
    n[2][0] = n[0][2];
    n[2][1] = n[1][2];
    return solve3(n, u, d);
}

bool startCircle(const double* run, int count, double x0, double y0,
                 CircleParameters* p) noexcept {
    for (int i = 0; i + 2 < count; ++i) {
        const Observation a = observationAt(run, i), b = observationAt(run, i + 1),
                          c = observationAt(run, i + 2);
        double cx, cy, r;
        if (circleThroughThreePoints(a.x - x0, a.y - y0, b.x - x0, b.y - y0, c.x - x0,
                                     c.y - y0, &cx, &cy, &r)) {
            p->D = -2.0 * cx;
            p->E = -2.0 * cy;
            p->F = ((2.0 * r) * (2.0 * r) - (p->D * p->D + p->E * p->E)) * -0.25;
            return true;
        }
    }
    return false;
}

enum class CircleFit { converged, failed, notConverged };

CircleFit adjustCircle(const double* run, int count, double x0, double y0,
                       CircleParameters* p) noexcept {
    for (int iteration = 0; iteration < kCircleMaxIterations; ++iteration) {
        double d[3];
        if (!circleCorrection(run, count, x0, y0, *p, d)) return CircleFit::failed;
        p->D -= d[0];
        p->E -= d[1];
        p->F -= d[2];
        if (std::fabs(d[0]) < kCentreCorrectionLimit && std::fabs(d[1]) < kCentreCorrectionLimit &&
            std::fabs(d[2]) < kConstantCorrectionLimit)
            return CircleFit::converged;
    }
    return CircleFit::notConverged;
}

// ---- line ------------------------------------------------------------------------------

struct WeightedMoments {
    double sw = 0, sx = 0, sy = 0;
    double cxx = 0, cyy = 0, cxy = 0;  // central moments (weighted)
};

bool lineMoments(const double* run, int count, WeightedMoments* m) noexcept {
    // Two passes: the means first, then the central moments, which keeps large survey
    // coordinates from cancelling in S*Sxx - Sx^2.
    for (int i = 0; i < count; ++i) {
        const Observation o = observationAt(run, i);
        if (!(o.sx > 0.0) || !std::isfinite(o.sx) || !std::isfinite(o.x) || !std::isfinite(o.y))
            return false;
        const double w = 1.0 / (o.sx * o.sx);
        if (!(w > 0.0) || !std::isfinite(w)) return false;
        m->sw += w;
        m->sx += w * o.x;
        m->sy += w * o.y;
    }
    if (!std::isfinite(m->sw)) return false;
    const double mx = m->sx / m->sw, my = m->sy / m->sw;
    for (int i = 0; i < count; ++i) {
        const Observation o = observationAt(run, i);
        const double w = 1.0 / (o.sx * o.sx);
        const double dx = o.x - mx, dy = o.y - my;
        m->cxx += w * dx * dx;
        m->cyy += w * dy * dy;
        m->cxy += w * dx * dy;
    }
    return true;
}

int farthestFrom(const double* run, int count, int from) noexcept {
    const Observation f = observationAt(run, from);
    int best = from;
    double bestDistance = 0.0;
    for (int i = 0; i < count; ++i) {
        const Observation o = observationAt(run, i);
        const double d = std::hypot(o.x - f.x, o.y - f.y);
        if (d > bestDistance) {
            bestDistance = d;
            best = i;
        }
    }
    return best;
}

// Sense of the axis: it must follow the chord from the first extent point to the second.
bool axisFollowsChord(double theta, double dx, double dy) noexcept {
    const double slope = std::fabs(dx) < kVerticalChordDx ? kVerticalChordSlope : dy / dx;
    const double ux = std::cos(theta), uy = std::sin(theta);
    if (std::fabs(slope) > kSteepChordSlope) return (uy > 0.0) == (dy > 0.0);
    if (std::fabs(slope) < kLevelChordSlope) return (ux > 0.0) == (dx > 0.0);
    return ux * dx + uy * dy > 0.0;
}

double normalizedAngle(double a) noexcept {
    a = std::fmod(a, kTwoPi);
    if (a < 0.0) a += kTwoPi;
    if (a >= kTwoPi) a = 0.0;
    return a;
}

}  // namespace

extern "C" {

int qmBestFit_horz3PtCurveCalc(double* centreX, double* centreY, double* radius, double x1,
                               double y1, double x2, double y2, double x3,
                               double y3) noexcept {
    if (radius == nullptr) return ERR_FAILURE;
    *radius = 0.0;
    double cx, cy, r;
    if (!circleThroughThreePoints(x1, y1, x2, y2, x3, y3, &cx, &cy, &r)) return ERR_FAILURE;
    kb::storeOptional(centreX, cx);
    kb::storeOptional(centreY, cy);
    *radius = r;
    return 0;
}

int qmBestFit_horz3PtCurveCalcMatrix(double* centreX, double* centreY, double* radius,
                                     double x1, double y1, double x2, double y2, double x3,
                                     double y3) noexcept {
    if (centreX == nullptr || centreY == nullptr || radius == nullptr) return ERR_FAILURE;
    const double xs[3] = {x1, x2, x3}, ys[3] = {y1, y2, y3};
    DenseMatrix system = {0, 0, nullptr}, rhs = {0, 0, nullptr}, solution = {0, 0, nullptr};
    int status = ERR_FAILURE;
    if (qmMatrix_memMatrix(&system, 3, 3) == 0 && qmMatrix_memMatrix(&rhs, 3, 1) == 0) {
        for (int i = 0; i < 3; ++i) {
            qmMatrix_putElementMatrix(&system, i, 0, xs[i]);
            qmMatrix_putElementMatrix(&system, i, 1, ys[i]);
            qmMatrix_putElementMatrix(&system, i, 2, 1.0);
            qmMatrix_putElementMatrix(&rhs, i, 0, -(xs[i] * xs[i] + ys[i] * ys[i]));
        }
        if (qmMatrix_invertMatrix(&system) == 0 &&
            qmMatrix_multMatrix(&solution, 0, &system, 0, &rhs) == 0) {
            const double D = qmMatrix_getElementMatrix(&solution, 0, 0);
            const double E = qmMatrix_getElementMatrix(&solution, 1, 0);
            const double F = qmMatrix_getElementMatrix(&solution, 2, 0);
            *radius = 0.5 * std::sqrt(D * D + E * E - 4.0 * F);
            *centreX = -0.5 * D;
            *centreY = -0.5 * E;
            status = 0;
        }
    }
    qmMatrix_freeMatrix(&system);
    qmMatrix_freeMatrix(&rhs);
    qmMatrix_freeMatrix(&solution);
    return status;
}

int qmBestFit_horzCurveCalc(double* centreY, double* centreX, double* radius, int count,
                            const double* observations) noexcept {
    if (count < 3 || observations == nullptr || centreY == nullptr || centreX == nullptr ||
        radius == nullptr)
        return ERR_FAILURE;
    double minX = observationAt(observations, 0).x, minY = observationAt(observations, 0).y;
    for (int i = 1; i < count; ++i) {
        const Observation o = observationAt(observations, i);
        if (o.x < minX) minX = o.x;
        if (o.y < minY) minY = o.y;
    }
    if (!std::isfinite(minX) || !std::isfinite(minY)) return ERR_FAILURE;
    CircleParameters p;
    if (!startCircle(observations, count, minX, minY, &p)) return ERR_FAILURE;
    const CircleFit fit = adjustCircle(observations, count, minX, minY, &p);
    if (fit == CircleFit::notConverged) {
        *centreY = *centreX = *radius = 0.0;
        return ERR_FAILURE;
    }
    const double r = 0.5 * std::sqrt(p.E * p.E + p.D * p.D - 4.0 * p.F);
    if (fit == CircleFit::failed || !std::isfinite(r)) return ERR_FAILURE;
    *radius = r;
    *centreY = -0.5 * p.E + minY;
    *centreX = -0.5 * p.D + minX;
    return 0;
}

int qmBestFit_lineCalc(double* direction, double* lineConstant, double* startParameter,
                       double* endParameter, double* rmsResidual, int count,
                       const double* observations) noexcept {
    if (count < 2 || observations == nullptr || direction == nullptr ||
        lineConstant == nullptr || startParameter == nullptr || endParameter == nullptr ||
        rmsResidual == nullptr)
        return ERR_FAILURE;
    WeightedMoments m;
    if (!lineMoments(observations, count, &m)) return ERR_FAILURE;
    *rmsResidual = 0.0;

    const int first = farthestFrom(observations, count, 0);
    const int second = farthestFrom(observations, count, first);
    const Observation e1 = observationAt(observations, first);
    const Observation e2 = observationAt(observations, second);
    const double chordX = e2.x - e1.x, chordY = e2.y - e1.y;

    double theta;
    if (m.cxx == m.cyy && m.cxy == 0.0)
        theta = (chordX == 0.0 && chordY == 0.0) ? kPi / 4.0 : std::atan2(chordY, chordX);
    else
        theta = 0.5 * std::atan2(2.0 * m.cxy, m.cxx - m.cyy);
    if (!axisFollowsChord(theta, chordX, chordY) && (chordX != 0.0 || chordY != 0.0))
        theta += kPi;
    theta = normalizedAngle(theta);

    const double ux = std::cos(theta), uy = std::sin(theta);
    const double a = uy, b = -ux;  // right-hand normal of the direction of travel
    const double meanX = m.sx / m.sw, meanY = m.sy / m.sw;
    const double c = -(a * meanX + b * meanY);
    // Parameters along the line from the foot of the origin (-a c, -b c).
    const double t1 = e1.x * ux + e1.y * uy, t2 = e2.x * ux + e2.y * uy;

    double sumSquares = 0.0;
    for (int i = 0; i < count; ++i) {
        const Observation o = observationAt(observations, i);
        const double r = (o.x - meanX) * a + (o.y - meanY) * b;
        sumSquares += r * r / (o.sx * o.sx);
    }
    *direction = theta;
    *lineConstant = c;
    *startParameter = t1 < t2 ? t1 : t2;
    *endParameter = t1 < t2 ? t2 : t1;
    *rmsResidual = std::sqrt(sumSquares / m.sw);
    return 0;
}

int qmBestFit_planeCalc(double* meanX, double* meanY, double* zAtCentroid, double* a, double* b,
                        double* c, double* standardError, int count,
                        const Point3d* points) noexcept {
    if (meanX == nullptr || meanY == nullptr || zAtCentroid == nullptr || a == nullptr ||
        b == nullptr || c == nullptr)
        return ERR_FAILURE;
    *meanX = *meanY = *zAtCentroid = *a = *b = *c = 0.0;
    kb::storeOptional(standardError, 0.0);
    if (count < 3 || points == nullptr) return ERR_FAILURE;

    double sx = 0, sy = 0, sz = 0;
    for (int i = 0; i < count; ++i) {
        sx += points[i].x;
        sy += points[i].y;
        sz += points[i].z;
    }
    const double n = static_cast<double>(count);
    const double mx = sx / n, my = sy / n, mz = sz / n;
    *meanX = mx;
    *meanY = my;
    *zAtCentroid = mz;

    // Normal equations on coordinates reduced to the centroid (same plane, better
    // conditioned for large survey coordinates): design rows (x - mx, y - my, 1).
    DenseMatrix design = {0, 0, nullptr}, rhs = {0, 0, nullptr};
    DenseMatrix normal = {0, 0, nullptr}, projected = {0, 0, nullptr};
    DenseMatrix solution = {0, 0, nullptr};
    int status = ERR_FAILURE;
    const uint32_t rows = static_cast<uint32_t>(count);
    if (qmMatrix_memMatrix(&design, rows, 3) == 0 && qmMatrix_memMatrix(&rhs, rows, 1) == 0) {
        for (int i = 0; i < count; ++i) {
            qmMatrix_putElementMatrix(&design, i, 0, points[i].x - mx);
            qmMatrix_putElementMatrix(&design, i, 1, points[i].y - my);
            qmMatrix_putElementMatrix(&design, i, 2, 1.0);
            qmMatrix_putElementMatrix(&rhs, i, 0, points[i].z);
        }
        if (qmMatrix_multMatrix(&normal, 1, &design, 0, &design) == 0 &&
            qmMatrix_invertMatrix(&normal) == 0 &&
            qmMatrix_multMatrix(&projected, 1, &design, 0, &rhs) == 0 &&
            qmMatrix_multMatrix(&solution, 0, &normal, 0, &projected) == 0) {
            const double pa = qmMatrix_getElementMatrix(&solution, 0, 0);
            const double pb = qmMatrix_getElementMatrix(&solution, 1, 0);
            const double pc = qmMatrix_getElementMatrix(&solution, 2, 0);  // z at the centroid
            if (std::isfinite(pa) && std::isfinite(pb) && std::isfinite(pc)) {
                double sumSquares = 0.0;
                for (int i = 0; i < count; ++i) {
                    const double r =
                        points[i].z - (pa * (points[i].x - mx) + pb * (points[i].y - my) + pc);
                    sumSquares += r * r;
                }
                *a = pa;
                *b = pb;
                *c = pc - pa * mx - pb * my;
                *zAtCentroid = pa * mx + pb * my + *c;
                kb::storeOptional(standardError, std::sqrt(sumSquares) / n);
                status = 0;
            }
        }
    }
    if (status != 0) *meanX = *meanY = *zAtCentroid = 0.0;  // a failed fit leaves only zeros
    qmMatrix_freeMatrix(&design);
    qmMatrix_freeMatrix(&rhs);
    qmMatrix_freeMatrix(&normal);
    qmMatrix_freeMatrix(&projected);
    qmMatrix_freeMatrix(&solution);
    return status;
}

}  // extern "C"
