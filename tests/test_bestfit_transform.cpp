// Plane transformation fits: exact solutions reproduce their pairs, fits recover the
// parameters that generated exact and noisy control points, and the block-diagonal
// adjustment agrees with the same adjustment written densely on the matrix functions.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "korvelbase/bestfit_transform.h"
#include "korvelbase/qmmatrix.h"

namespace {

using Model = std::function<void(double x, double y, double& X, double& Y)>;

// Control records (x, sd, y, sd, X, sd, Y, sd) of count points mapped by model, with noise.
std::vector<double> controlPoints(int count, const Model& model, double noise, unsigned seed,
                                  double sdSource = 0.005, double sdTarget = 0.01) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> coordinate(0.0, 1000.0);
    std::normal_distribution<double> error(0.0, 1.0);
    std::vector<double> points;
    for (int i = 0; i < count; ++i) {
        const double x = coordinate(random), y = coordinate(random);
        double X, Y;
        model(x, y, X, Y);
        points.insert(points.end(), {x, sdSource, y, sdSource, X + noise * error(random), sdTarget,
                                     Y + noise * error(random), sdTarget});
    }
    return points;
}

constexpr double kA = 0.9998 * 0.96592582628906831, kB = 0.9998 * 0.25881904510252074;  // 15 deg
constexpr double kTx = 351200.0, kTy = 5201300.0;

void similarity(double x, double y, double& X, double& Y) {
    X = kA * x - kB * y + kTx;
    Y = kB * x + kA * y + kTy;
}

const double kAffine[6] = {1.0003, 0.0201, 500.0, -0.0150, 0.9991, -250.0};
void affine(double x, double y, double& X, double& Y) {
    X = kAffine[0] * x + kAffine[1] * y + kAffine[2];
    Y = kAffine[3] * x + kAffine[4] * y + kAffine[5];
}

const double kProjective[8] = {1.01, 0.02, 10.0, -0.03, 0.98, 20.0, 2e-5, -1e-5};
void projective(double x, double y, double& X, double& Y) {
    qmBestFit_transformPtByProjective2d(&X, &Y, kProjective[0], kProjective[1], kProjective[2],
                                        kProjective[3], kProjective[4], kProjective[5],
                                        kProjective[6], kProjective[7], x, y);
}

TEST(TransformExact, SolutionsReproduceTheirPairs) {
    double a, b, tx, ty;
    EXPECT_EQ(qmBestFit_transformCalcParam2d(&a, &b, &tx, &ty, 0, 0, 10, 20, 1, 0, 11, 20), 0);
    EXPECT_NEAR(a, 1.0, 1e-12);  // a pure shift
    EXPECT_NEAR(b, 0.0, 1e-12);
    EXPECT_NEAR(tx, 10.0, 1e-12);
    EXPECT_NEAR(ty, 20.0, 1e-12);
    double X1, Y1, X2, Y2;
    similarity(12, 34, X1, Y1);
    similarity(560, -78, X2, Y2);
    qmBestFit_transformCalcParam2d(&a, &b, &tx, &ty, 12, 34, X1, Y1, 560, -78, X2, Y2);
    EXPECT_NEAR(a, kA, 1e-10);
    EXPECT_NEAR(b, kB, 1e-10);
    double X, Y;
    qmBestFit_transformPtBy2d(&X, &Y, a, b, tx, ty, 12, 34);
    EXPECT_NEAR(X, X1, 1e-7);
    EXPECT_NEAR(Y, Y1, 1e-7);
    const double xs[3] = {0, 700, 100}, ys[3] = {0, 50, 900};
    double Xs[3], Ys[3];
    for (int i = 0; i < 3; ++i) affine(xs[i], ys[i], Xs[i], Ys[i]);
    double p[6];
    qmBestFit_transformCalcParamAffine2d(&p[0], &p[1], &p[2], &p[3], &p[4], &p[5], xs[0], ys[0],
                                         Xs[0], Ys[0], xs[1], ys[1], Xs[1], Ys[1], xs[2], ys[2],
                                         Xs[2], Ys[2]);
    for (int k = 0; k < 6; ++k) EXPECT_NEAR(p[k], kAffine[k], 1e-9) << k;
    qmBestFit_transformPtByAffine2d(&X, &Y, p[0], p[1], p[2], p[3], p[4], p[5], 100, 900);
    EXPECT_NEAR(X, Xs[2], 1e-9);
    EXPECT_NEAR(Y, Ys[2], 1e-9);
}

struct FitResult {
    std::vector<double> p;
    double variance = -1, residual = -1;
    int status = -1;
};

FitResult fitSimilarity(const std::vector<double>& pts) {
    FitResult r;
    r.p.resize(4);
    r.status = qmBestFit_transform2d(&r.p[0], &r.p[1], &r.p[2], &r.p[3], &r.variance, &r.residual,
                                     int(pts.size() / 8), pts.data());
    return r;
}

FitResult fitAffine(const std::vector<double>& pts) {
    FitResult r;
    r.p.resize(6);
    r.status = qmBestFit_transformAffine2d(&r.p[0], &r.p[1], &r.p[2], &r.p[3], &r.p[4], &r.p[5],
                                           &r.variance, &r.residual, int(pts.size() / 8), pts.data());
    return r;
}

FitResult fitProjective(const std::vector<double>& pts) {
    FitResult r;
    r.p.resize(8);
    r.status = qmBestFit_transformProjective2d(&r.p[0], &r.p[1], &r.p[2], &r.p[3], &r.p[4], &r.p[5],
                                               &r.p[6], &r.p[7], &r.variance, &r.residual,
                                               int(pts.size() / 8), pts.data());
    return r;
}

TEST(TransformFits, RecoverTheGeneratingParameters) {
    for (const double noise : {0.0, 0.01}) {
        SCOPED_TRACE(noise);
        const FitResult s = fitSimilarity(controlPoints(40, similarity, noise, 1));
        ASSERT_EQ(s.status, 0);
        const double expected[4] = {kA, kB, kTx, kTy};
        for (int k = 0; k < 4; ++k) EXPECT_NEAR(s.p[k], expected[k], k < 2 ? 2e-5 : 0.02) << k;
        const FitResult a = fitAffine(controlPoints(40, affine, noise, 2));
        ASSERT_EQ(a.status, 0);
        for (int k = 0; k < 6; ++k) {
            EXPECT_NEAR(a.p[k], kAffine[k], k % 3 == 2 ? 0.02 : 3e-5) << k;
        }
        const FitResult p = fitProjective(controlPoints(40, projective, noise, 3));
        ASSERT_EQ(p.status, 0);
        for (int k = 0; k < 8; ++k) {
            const double tolerance = k >= 6 ? 1e-7 : (k % 3 == 2 ? 0.05 : 1e-4);
            EXPECT_NEAR(p.p[k], kProjective[k], tolerance) << k;
        }
        if (noise == 0.0) {
            EXPECT_NEAR(s.variance, 0.0, 1e-12);
            EXPECT_NEAR(s.residual, 0.0, 1e-6);
        } else {
            // With the stated deviations near the true errors the variance factor is near 1.
            EXPECT_GT(s.variance, 0.2);
            EXPECT_LT(s.variance, 3.0);
        }
    }
}

TEST(TransformFits, DeliberateResultsAndFailures) {
    // A pure shift from two pairs: a = 1, b = 0, variance factor 0 (n = 2).
    const std::vector<double> shift = {0, 0.01, 0, 0.01, 5, 0.01, 7, 0.01,
                                       10, 0.01, 0, 0.01, 15, 0.01, 7, 0.01};
    const FitResult s = fitSimilarity(shift);
    ASSERT_EQ(s.status, 0);
    EXPECT_NEAR(s.p[0], 1.0, 1e-12);
    EXPECT_NEAR(s.p[1], 0.0, 1e-12);
    EXPECT_NEAR(s.p[2], 5.0, 1e-9);
    EXPECT_NEAR(s.p[3], 7.0, 1e-9);
    EXPECT_EQ(s.variance, 0.0);
    EXPECT_EQ(fitSimilarity(std::vector<double>(shift.begin(), shift.begin() + 8)).status, ERR_FAILURE);
    EXPECT_EQ(fitAffine(shift).status, 1);  // two points: 1, not ERR_FAILURE
    EXPECT_EQ(fitProjective(controlPoints(3, projective, 0.0, 4)).status, ERR_FAILURE);
    // Points without any weight: the system is singular; parameters come back 0.
    std::vector<double> weightless = controlPoints(5, similarity, 0.0, 5, 0.0, 0.0);
    const FitResult w = fitSimilarity(weightless);
    EXPECT_EQ(w.status, ERR_FAILURE);
    for (double v : w.p) EXPECT_EQ(v, 0.0);
    // Wildly inconsistent pairs with tiny deviations: the projective fit does not settle.
    std::vector<double> chaos = controlPoints(12, projective, 0.0, 6);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> junk(-1e6, 1e6);
    for (std::size_t i = 0; i < chaos.size(); i += 8) chaos[i + 4] = junk(random);
    const FitResult c = fitProjective(chaos);
    if (c.status != 0) {
        for (double v : c.p) EXPECT_EQ(v, 0.0);
    }
}

// ---- the same adjustment written densely ------------------------------------------------------

struct Dense {
    DenseMatrix m{0, 0, nullptr};
    Dense(uint32_t r, uint32_t c) { qmMatrix_memMatrix(&m, r, c); }
    ~Dense() { qmMatrix_freeMatrix(&m); }
    Dense(const Dense&) = delete;
    void put(int r, int c, double v) { qmMatrix_putElementMatrix(&m, r, c, v); }
    double get(int r, int c) const { return qmMatrix_getElementMatrix(&m, r, c); }
};

// A similarity adjustment with full A (2n x 4), B (2n x 4n), Q (4n x 4n) and M (2n x 2n).
std::vector<double> denseSimilarity(const std::vector<double>& pts) {
    const int n = int(pts.size() / 8);
    double p[4];
    qmBestFit_transformCalcParam2d(&p[0], &p[1], &p[2], &p[3], pts[0], pts[2], pts[4], pts[6], pts[8],
                                   pts[10], pts[12], pts[14]);
    for (int pass = 0; pass < 10; ++pass) {
        Dense a(2 * n, 4), b(2 * n, 4 * n), q(4 * n, 4 * n), w(2 * n, 1);
        for (int i = 0; i < n; ++i) {
            const double* o = &pts[8 * i];
            const double rows[2][4] = {{o[0], -o[2], 1, 0}, {o[2], o[0], 0, 1}};
            const double cond[2][4] = {{p[0], -p[1], -1, 0}, {p[1], p[0], 0, -1}};
            for (int e = 0; e < 2; ++e) {
                for (int k = 0; k < 4; ++k) {
                    a.put(2 * i + e, k, rows[e][k]);
                    b.put(2 * i + e, 4 * i + k, cond[e][k]);
                }
            }
            for (int k = 0; k < 4; ++k) q.put(4 * i + k, 4 * i + k, o[2 * k + 1] * o[2 * k + 1]);
            w.put(2 * i, 0, o[4] - (p[0] * o[0] - p[1] * o[2] + p[2]));
            w.put(2 * i + 1, 0, o[6] - (p[1] * o[0] + p[0] * o[2] + p[3]));
        }
        Dense bq(0, 0), m(0, 0), ma(0, 0), n4(0, 0), mw(0, 0), u(0, 0), d(0, 0);
        qmMatrix_multMatrix(&bq.m, 0, &b.m, 0, &q.m);
        qmMatrix_multMatrix(&m.m, 0, &bq.m, 1, &b.m);
        EXPECT_EQ(qmMatrix_invertMatrix(&m.m), 0);
        qmMatrix_multMatrix(&ma.m, 0, &m.m, 0, &a.m);
        qmMatrix_multMatrix(&n4.m, 1, &a.m, 0, &ma.m);
        EXPECT_EQ(qmMatrix_invertMatrix(&n4.m), 0);
        qmMatrix_multMatrix(&mw.m, 0, &m.m, 0, &w.m);
        qmMatrix_multMatrix(&u.m, 1, &a.m, 0, &mw.m);
        qmMatrix_multMatrix(&d.m, 0, &n4.m, 0, &u.m);
        bool converged = true;
        for (int k = 0; k < 4; ++k) {
            p[k] += d.get(k, 0);
            converged = converged && std::fabs(d.get(k, 0)) < 1e-5;
        }
        if (converged) break;
    }
    return {p[0], p[1], p[2], p[3]};
}

TEST(TransformFits, BlockDiagonalAdjustmentAgreesWithTheDenseOne) {
    for (unsigned seed : {11u, 12u, 13u}) {
        const std::vector<double> pts = controlPoints(25, similarity, 0.02, seed, 0.004 * seed, 0.01);
        const FitResult fast = fitSimilarity(pts);
        ASSERT_EQ(fast.status, 0);
        const std::vector<double> dense = denseSimilarity(pts);
        for (int k = 0; k < 4; ++k) {
            EXPECT_NEAR(fast.p[k], dense[k], 1e-10 * (1.0 + std::fabs(dense[k]))) << seed << " " << k;
        }
    }
}

}  // namespace
