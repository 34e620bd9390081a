// Plane coordinate transformations from control points: exact solutions, point transforms and
// the weighted combined adjustment of the similarity, affine and projective models.
//
// Each control point contributes two conditions that involve only its own four observations,
// so M = B Q B^T is block-diagonal with 2 x 2 blocks: the normal equations are accumulated
// point by point and only the small parameter system is inverted.
#include <array>
#include <cmath>
#include <cstddef>

#include "base/optional_output.hpp"
#include "korvelbase/bestfit_transform.h"
#include "korvelbase/qmmatrix.h"

namespace {

constexpr int kMostPasses = 10;
constexpr double kConvergence = 1e-5;
constexpr int kValuesPerPoint = 8;  // x, sd, y, sd, X, sd, Y, sd
constexpr int kObservations = 4;    // x, y, X, Y
constexpr int kConditions = 2;      // the X and Y equations

// A DenseMatrix released on every path.
class OwnedMatrix {
public:
    OwnedMatrix(uint32_t rows, uint32_t cols) { ok_ = qmMatrix_memMatrix(&m_, rows, cols) == 0; }
    ~OwnedMatrix() { qmMatrix_freeMatrix(&m_); }
    OwnedMatrix(const OwnedMatrix&) = delete;
    OwnedMatrix& operator=(const OwnedMatrix&) = delete;
    bool ok() const { return ok_; }
    DenseMatrix* get() { return &m_; }
    double at(int r, int c) const { return qmMatrix_getElementMatrix(&m_, r, c); }
    void put(int r, int c, double v) { qmMatrix_putElementMatrix(&m_, r, c, v); }

private:
    DenseMatrix m_{0, 0, nullptr};
    bool ok_ = false;
};

// Solves the k x k system rows * u = rhs by inverting the matrix and multiplying.  A singular
// system is not reported: the product of whatever the inversion left is returned.
template <int K>
bool solveByInverse(const double (&rows)[K][K], const double (&rhs)[K], double (&u)[K]) {
    OwnedMatrix m(K, K);
    OwnedMatrix b(K, 1);
    if (!m.ok() || !b.ok()) return false;
    for (int r = 0; r < K; ++r) {
        for (int c = 0; c < K; ++c) m.put(r, c, rows[r][c]);
        b.put(r, 0, rhs[r]);
    }
    const bool inverted = qmMatrix_invertMatrix(m.get()) == 0;
    OwnedMatrix product(0, 0);
    if (qmMatrix_multMatrix(product.get(), 0, m.get(), 0, b.get()) != 0) return false;
    for (int r = 0; r < K; ++r) u[r] = product.at(r, 0);
    return inverted;
}

struct Observation {
    double x, sx, y, sy, X, sX, Y, sY;
};

Observation observationAt(const double* points, int i) {
    const double* p = points + static_cast<std::ptrdiff_t>(i) * kValuesPerPoint;
    return {p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7]};
}

// One point's linearised conditions at the current parameters.
template <int K>
struct Linearised {
    double design[kConditions][K];                // A: by the parameters
    double condition[kConditions][kObservations];  // B: by x, y, X, Y
    double misclosure[kConditions];               // w
};

struct Similarity {
    static constexpr int kParameters = 4;  // a, b, tx, ty
    static void linearise(const Observation& o, const double* p, Linearised<4>& l) {
        const double a = p[0], b = p[1];
        l = {{{o.x, -o.y, 1, 0}, {o.y, o.x, 0, 1}},
             {{a, -b, -1, 0}, {b, a, 0, -1}},
             {o.X - (a * o.x - b * o.y + p[2]), o.Y - (b * o.x + a * o.y + p[3])}};
    }
};

struct Affine {
    static constexpr int kParameters = 6;  // a, b, c, d, e, f
    static void linearise(const Observation& o, const double* p, Linearised<6>& l) {
        l = {{{o.x, o.y, 1, 0, 0, 0}, {0, 0, 0, o.x, o.y, 1}},
             {{p[0], p[1], -1, 0}, {p[3], p[4], 0, -1}},
             {o.X - (p[0] * o.x + p[1] * o.y + p[2]), o.Y - (p[3] * o.x + p[4] * o.y + p[5])}};
    }
};

// Conditions F = X w - (a x + b y + c) = 0 and Y w - (d x + e y + f) = 0, w = g x + h y + 1:
// design rows dF/dparameters, misclosures -F, so that the correction solves F + A d = 0.
struct Projective {
    static constexpr int kParameters = 8;  // a .. h
    static void linearise(const Observation& o, const double* p, Linearised<8>& l) {
        const double w = p[6] * o.x + p[7] * o.y + 1.0;
        l = {{{-o.x, -o.y, -1, 0, 0, 0, o.X * o.x, o.X * o.y},
              {0, 0, 0, -o.x, -o.y, -1, o.Y * o.x, o.Y * o.y}},
             {{o.X * p[6] - p[0], o.X * p[7] - p[1], w, 0}, {o.Y * p[6] - p[3], o.Y * p[7] - p[4], 0, w}},
             {(p[0] * o.x + p[1] * o.y + p[2]) - o.X * w, (p[3] * o.x + p[4] * o.y + p[5]) - o.Y * w}};
    }
};

// The inverse of a point's 2 x 2 block of M = B Q B^T; false when it has no inverse.
bool inverseBlock(const double (&b)[kConditions][kObservations], const Observation& o,
                  double (&inverse)[2][2]) {
    const double q[kObservations] = {o.sx * o.sx, o.sy * o.sy, o.sX * o.sX, o.sY * o.sY};
    double m00 = 0.0, m01 = 0.0, m11 = 0.0;
    for (int k = 0; k < kObservations; ++k) {
        m00 += b[0][k] * b[0][k] * q[k];
        m01 += b[0][k] * b[1][k] * q[k];
        m11 += b[1][k] * b[1][k] * q[k];
    }
    const double det = m00 * m11 - m01 * m01;
    if (!(det > 0.0) || !std::isfinite(det)) return false;
    inverse[0][0] = m11 / det;
    inverse[0][1] = inverse[1][0] = -m01 / det;
    inverse[1][1] = m00 / det;
    return true;
}

struct PassResult {
    double correction[8] = {};
    double weightedSquares = 0.0;  // r^T M^-1 r
    double squares = 0.0;          // r^T r
};

// One pass of the adjustment at parameters p; false for a singular system.
template <typename Model>
bool adjustmentPass(const double* points, int count, const double* p, PassResult& out) {
    constexpr int K = Model::kParameters;
    double normal[K][K] = {};
    double rhs[K] = {};
    for (int i = 0; i < count; ++i) {
        const Observation o = observationAt(points, i);
        Linearised<K> l;
        Model::linearise(o, p, l);
        double mInv[2][2];
        if (!inverseBlock(l.condition, o, mInv)) return false;
        for (int r = 0; r < K; ++r) {
            // Row r of A^T M^-1 for this point.
            const double t0 = l.design[0][r] * mInv[0][0] + l.design[1][r] * mInv[1][0];
            const double t1 = l.design[0][r] * mInv[0][1] + l.design[1][r] * mInv[1][1];
            rhs[r] += t0 * l.misclosure[0] + t1 * l.misclosure[1];
            for (int c = 0; c < K; ++c) normal[r][c] += t0 * l.design[0][c] + t1 * l.design[1][c];
        }
    }
    double d[K];
    if (!solveByInverse<K>(normal, rhs, d)) return false;
    for (int k = 0; k < K; ++k) {
        if (!std::isfinite(d[k])) return false;
        out.correction[k] = d[k];
    }
    // Residuals r = w - A d of this pass.
    out.weightedSquares = 0.0;
    out.squares = 0.0;
    for (int i = 0; i < count; ++i) {
        const Observation o = observationAt(points, i);
        Linearised<K> l;
        Model::linearise(o, p, l);
        double mInv[2][2];
        inverseBlock(l.condition, o, mInv);
        double r[2];
        for (int e = 0; e < kConditions; ++e) {
            double ad = 0.0;
            for (int k = 0; k < K; ++k) ad += l.design[e][k] * d[k];
            r[e] = l.misclosure[e] - ad;
        }
        out.weightedSquares += r[0] * (mInv[0][0] * r[0] + mInv[0][1] * r[1]) +
                               r[1] * (mInv[1][0] * r[0] + mInv[1][1] * r[1]);
        out.squares += r[0] * r[0] + r[1] * r[1];
    }
    return true;
}

struct FitStatistics {
    int minimumForVariance;  // the variance factor is reported when count exceeds this
    int divisorOffset;       // divisor = count * divisorPerPoint - divisorOffset
    int divisorPerPoint;
};

// Iterates the adjustment from p; on success p holds the parameters.
template <typename Model>
int adjust(double* p, int count, const double* points, const FitStatistics& stats,
           double* varianceFactor, double* residualMeasure) {
    constexpr int K = Model::kParameters;
    PassResult pass;
    bool converged = false;
    bool solved = true;
    for (int iteration = 0; iteration < kMostPasses && !converged; ++iteration) {
        if (!adjustmentPass<Model>(points, count, p, pass)) {
            solved = false;
            break;
        }
        converged = true;
        for (int k = 0; k < K; ++k) {
            p[k] += pass.correction[k];
            converged = converged && std::fabs(pass.correction[k]) < kConvergence;
        }
    }
    double variance = 0.0;
    if (solved && count > stats.minimumForVariance) {
        const double root = std::sqrt(pass.weightedSquares /
                                      (count * stats.divisorPerPoint - stats.divisorOffset));
        variance = root * root;
    }
    *varianceFactor = variance;
    *residualMeasure = solved ? 2.0 * std::sqrt(pass.squares) / count : 0.0;
    if (!converged) {
        for (int k = 0; k < K; ++k) p[k] = 0.0;
        return ERR_FAILURE;
    }
    return 0;
}

// ---- exact solutions ---------------------------------------------------------------------------

void exactSimilarity(double (&p)[4], double x1, double y1, double X1, double Y1, double x2,
                     double y2, double X2, double Y2) {
    const double rows[4][4] = {{x1, -y1, 1, 0}, {y1, x1, 0, 1}, {x2, -y2, 1, 0}, {y2, x2, 0, 1}};
    const double rhs[4] = {X1, Y1, X2, Y2};
    solveByInverse<4>(rows, rhs, p);
}

// Returns a, b, c, d, e, f (the system's unknowns are ordered a, d, b, e, c, f).
void exactAffine(double (&p)[6], const double (&x)[3], const double (&y)[3], const double (&X)[3],
                 const double (&Y)[3]) {
    double rows[6][6] = {};
    double rhs[6];
    for (int i = 0; i < 3; ++i) {
        const double xRow[6] = {x[i], 0, y[i], 0, 1, 0};
        const double yRow[6] = {0, x[i], 0, y[i], 0, 1};
        for (int c = 0; c < 6; ++c) {
            rows[2 * i][c] = xRow[c];
            rows[2 * i + 1][c] = yRow[c];
        }
        rhs[2 * i] = X[i];
        rhs[2 * i + 1] = Y[i];
    }
    double u[6] = {};
    solveByInverse<6>(rows, rhs, u);
    const double ordered[6] = {u[0], u[2], u[4], u[1], u[3], u[5]};
    for (int k = 0; k < 6; ++k) p[k] = ordered[k];
}

void affineFrom(double (&p)[6], const double* points, const int (&pick)[3]) {
    double x[3], y[3], X[3], Y[3];
    for (int i = 0; i < 3; ++i) {
        const Observation o = observationAt(points, pick[i]);
        x[i] = o.x;
        y[i] = o.y;
        X[i] = o.X;
        Y[i] = o.Y;
    }
    exactAffine(p, x, y, X, Y);
}

// The seed of the projective fit: the first point, the one farthest from it, and the one
// farthest from the line through those two.
void projectiveSeed(const double* points, int count, int (&pick)[3]) {
    const Observation first = observationAt(points, 0);
    int far = 1;
    double farthest = -1.0;
    for (int i = 1; i < count; ++i) {
        const Observation o = observationAt(points, i);
        const double d = std::hypot(o.x - first.x, o.y - first.y);
        if (d > farthest) {
            farthest = d;
            far = i;
        }
    }
    const Observation second = observationAt(points, far);
    int wide = far == 1 ? 2 : 1;
    double widest = -1.0;
    for (int i = 1; i < count; ++i) {
        if (i == far) continue;
        const Observation o = observationAt(points, i);
        const double area = std::fabs((second.x - first.x) * (o.y - first.y) -
                                      (second.y - first.y) * (o.x - first.x));
        if (area > widest) {
            widest = area;
            wide = i;
        }
    }
    pick[0] = 0;
    pick[1] = far;
    pick[2] = wide;
}

template <std::size_t N>
bool allPresent(double* const (&outputs)[N]) {
    for (double* output : outputs) {
        if (output == nullptr) return false;
    }
    return true;
}

template <std::size_t N>
void storeAll(double* const (&outputs)[N], const double* values) {
    for (std::size_t k = 0; k < N; ++k) *outputs[k] = values[k];
}

}  // namespace

extern "C" {

int qmBestFit_transformCalcParam2d(double* a, double* b, double* tx, double* ty, double x1,
                                   double y1, double X1, double Y1, double x2, double y2, double X2,
                                   double Y2) noexcept {
    double p[4] = {};
    exactSimilarity(p, x1, y1, X1, Y1, x2, y2, X2, Y2);
    kb::storeOptional(a, p[0]);
    kb::storeOptional(b, p[1]);
    kb::storeOptional(tx, p[2]);
    kb::storeOptional(ty, p[3]);
    return 0;
}

int qmBestFit_transformCalcParamAffine2d(double* a, double* b, double* c, double* d, double* e,
                                         double* f, double x1, double y1, double X1, double Y1,
                                         double x2, double y2, double X2, double Y2, double x3,
                                         double y3, double X3, double Y3) noexcept {
    double p[6] = {};
    exactAffine(p, {x1, x2, x3}, {y1, y2, y3}, {X1, X2, X3}, {Y1, Y2, Y3});
    double* outputs[] = {a, b, c, d, e, f};
    for (int k = 0; k < 6; ++k) kb::storeOptional(outputs[k], p[k]);
    return 0;
}

int qmBestFit_transformPtBy2d(double* X, double* Y, double a, double b, double tx, double ty,
                              double x, double y) noexcept {
    kb::storeOptional(X, a * x - b * y + tx);
    kb::storeOptional(Y, b * x + a * y + ty);
    return 0;
}

int qmBestFit_transformPtByAffine2d(double* X, double* Y, double a, double b, double c, double d,
                                    double e, double f, double x, double y) noexcept {
    kb::storeOptional(X, a * x + b * y + c);
    kb::storeOptional(Y, d * x + e * y + f);
    return 0;
}

int qmBestFit_transformPtByProjective2d(double* X, double* Y, double a, double b, double c,
                                        double d, double e, double f, double g, double h, double x,
                                        double y) noexcept {
    const double w = g * x + h * y + 1.0;
    kb::storeOptional(X, (a * x + b * y + c) / w);
    kb::storeOptional(Y, (d * x + e * y + f) / w);
    return 0;
}

int qmBestFit_transform2d(double* a, double* b, double* tx, double* ty, double* varianceFactor,
                          double* residualMeasure, int count, const double* points) noexcept {
    double* const outputs[] = {a, b, tx, ty, varianceFactor, residualMeasure};
    if (!allPresent(outputs) || points == nullptr || count < 2) return ERR_FAILURE;
    const Observation p1 = observationAt(points, 0);
    const Observation p2 = observationAt(points, 1);
    double p[4] = {};
    exactSimilarity(p, p1.x, p1.y, p1.X, p1.Y, p2.x, p2.y, p2.X, p2.Y);
    const int status = adjust<Similarity>(p, count, points, {2, 4, 2}, varianceFactor, residualMeasure);
    double* const parameters[] = {a, b, tx, ty};
    storeAll(parameters, p);
    return status;
}

int qmBestFit_transformAffine2d(double* a, double* b, double* c, double* d, double* e, double* f,
                                double* varianceFactor, double* residualMeasure, int count,
                                const double* points) noexcept {
    double* const outputs[] = {a, b, c, d, e, f, varianceFactor, residualMeasure};
    if (!allPresent(outputs) || points == nullptr) return ERR_FAILURE;
    if (count < 3) return 1;  // deliberately not ERR_FAILURE
    double p[6] = {};
    affineFrom(p, points, {0, 1, 2});
    const int status = adjust<Affine>(p, count, points, {3, 3, 1}, varianceFactor, residualMeasure);
    double* const parameters[] = {a, b, c, d, e, f};
    storeAll(parameters, p);
    return status;
}

int qmBestFit_transformProjective2d(double* a, double* b, double* c, double* d, double* e,
                                    double* f, double* g, double* h, double* varianceFactor,
                                    double* residualMeasure, int count, const double* points) noexcept {
    double* const outputs[] = {a, b, c, d, e, f, g, h, varianceFactor, residualMeasure};
    if (!allPresent(outputs) || points == nullptr || count < 4) return ERR_FAILURE;
    int seed[3];
    projectiveSeed(points, count, seed);
    double affine[6] = {};
    affineFrom(affine, points, seed);
    double p[8] = {affine[0], affine[1], affine[2], affine[3], affine[4], affine[5], 0.0, 0.0};
    const int status = adjust<Projective>(p, count, points, {4, 4, 1}, varianceFactor, residualMeasure);
    double* const parameters[] = {a, b, c, d, e, f, g, h};
    storeAll(parameters, p);
    return status;
}

}  // extern "C"
