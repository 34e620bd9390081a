// Horizontal fits: three-point circles, the weighted circle fit against a dense reference
// adjustment written with the matrix functions, the line fit and the plane fit.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "korvelbase/bestfit_horizontal.h"
#include "korvelbase/qmmatrix.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

// Observations x, sd x, y, sd y around a circle, optionally with noise.
std::vector<double> circleObservations(double cx, double cy, double r, int n, double arc,
                                       double noise, unsigned seed) {
    std::mt19937 rng(seed);
    std::normal_distribution<double> g(0.0, 1.0);
    std::uniform_real_distribution<double> sd(0.005, 0.02);
    std::vector<double> obs;
    for (int i = 0; i < n; ++i) {
        const double a = arc * i / n + 0.3;
        obs.insert(obs.end(), {cx + r * std::cos(a) + noise * g(rng), sd(rng),
                               cy + r * std::sin(a) + noise * g(rng), sd(rng)});
    }
    return obs;
}

struct Dense {
    DenseMatrix m{0, 0, nullptr};
    Dense(uint32_t r, uint32_t c) { EXPECT_EQ(0, qmMatrix_memMatrix(&m, r, c)); }
    Dense() = default;
    ~Dense() { qmMatrix_freeMatrix(&m); }
    double operator()(int r, int c) const { return qmMatrix_getElementMatrix(&m, r, c); }
    void set(int r, int c, double v) { qmMatrix_putElementMatrix(&m, r, c, v); }
};

// The adjustment exactly as the textbook states it: dense Q (2n x 2n), A (n x 3), B (n x 2n),
// M = B Q B^T inverted densely, N = A^T M^-1 A, d = N^-1 A^T M^-1 w.  Centre (y, x), radius.
bool denseCircleFit(std::vector<double> obs, double out[3]) {
    const int n = static_cast<int>(obs.size() / 4);
    double minX = obs[0], minY = obs[2];
    for (int i = 1; i < n; ++i) {
        minX = std::min(minX, obs[4 * i]);
        minY = std::min(minY, obs[4 * i + 2]);
    }
    for (int i = 0; i < n; ++i) {
        obs[4 * i] -= minX;
        obs[4 * i + 2] -= minY;
    }
    double cx = 0, cy = 0, r = 0;
    int i0 = 0;
    while (i0 + 2 < n && qmBestFit_horz3PtCurveCalc(&cx, &cy, &r, obs[4 * i0], obs[4 * i0 + 2],
                                                    obs[4 * i0 + 4], obs[4 * i0 + 6],
                                                    obs[4 * i0 + 8], obs[4 * i0 + 10]) != 0)
        ++i0;
    if (i0 + 2 >= n) return false;
    double D = -2 * cx, E = -2 * cy, F = ((2 * r) * (2 * r) - (D * D + E * E)) * -0.25;
    Dense Q(2 * n, 2 * n), A(n, 3);
    for (int i = 0; i < n; ++i) {
        Q.set(2 * i, 2 * i, obs[4 * i + 1] * obs[4 * i + 1]);
        Q.set(2 * i + 1, 2 * i + 1, obs[4 * i + 3] * obs[4 * i + 3]);
        A.set(i, 0, obs[4 * i]);
        A.set(i, 1, obs[4 * i + 2]);
        A.set(i, 2, 1.0);
    }
    for (int it = 0; it < 20; ++it) {
        Dense B(n, 2 * n), w(n, 1), BQ, M, AtMi, N, AtMiw, d;
        for (int i = 0; i < n; ++i) {
            const double x = obs[4 * i], y = obs[4 * i + 2];
            B.set(i, 2 * i, 2 * x + D);
            B.set(i, 2 * i + 1, 2 * y + E);
            w.set(i, 0, x * x + y * y + E * y + D * x + F);
        }
        if (qmMatrix_multMatrix(&BQ.m, 0, &B.m, 0, &Q.m) ||
            qmMatrix_multMatrix(&M.m, 0, &BQ.m, 1, &B.m) || qmMatrix_invertMatrix(&M.m) ||
            qmMatrix_multMatrix(&AtMi.m, 1, &A.m, 0, &M.m) ||
            qmMatrix_multMatrix(&N.m, 0, &AtMi.m, 0, &A.m) || qmMatrix_invertMatrix(&N.m) ||
            qmMatrix_multMatrix(&AtMiw.m, 0, &AtMi.m, 0, &w.m) ||
            qmMatrix_multMatrix(&d.m, 0, &N.m, 0, &AtMiw.m))
            return false;
        D -= d(0, 0);
        E -= d(1, 0);
        F -= d(2, 0);
        if (std::fabs(d(0, 0)) < 1e-5 && std::fabs(d(1, 0)) < 1e-5 && std::fabs(d(2, 0)) < 1e-3) {
            out[0] = -0.5 * E + minY;
            out[1] = -0.5 * D + minX;
            out[2] = 0.5 * std::sqrt(E * E + D * D - 4 * F);
            return true;
        }
    }
    return false;
}

TEST(HorizontalFitThreePoints, BothFormsAgreeAndRejectCollinearPoints) {
    struct Case {
        double cx, cy, r, a1, a2, a3;
    } cases[] = {{2, 3, 5, 0, 1.5, 3}, {-100, 250, 0.5, 0.1, 0.2, 5}, {1e3, -2e3, 1e3, 4, 5, 6}};
    for (const Case& c : cases) {
        double xs[3], ys[3];
        const double as[3] = {c.a1, c.a2, c.a3};
        for (int i = 0; i < 3; ++i) {
            xs[i] = c.cx + c.r * std::cos(as[i]);
            ys[i] = c.cy + c.r * std::sin(as[i]);
        }
        double x = 0, y = 0, r = 0;
        ASSERT_EQ(0, qmBestFit_horz3PtCurveCalc(&x, &y, &r, xs[0], ys[0], xs[1], ys[1], xs[2], ys[2]));
        EXPECT_NEAR(c.cx, x, 1e-9 * c.r);
        EXPECT_NEAR(c.cy, y, 1e-9 * c.r);
        EXPECT_NEAR(c.r, r, 1e-9 * c.r);
        ASSERT_EQ(0, qmBestFit_horz3PtCurveCalcMatrix(&x, &y, &r, xs[0], ys[0], xs[1], ys[1], xs[2],
                                                      ys[2]));
        EXPECT_NEAR(c.cx, x, 1e-6 * c.r);
        EXPECT_NEAR(c.cy, y, 1e-6 * c.r);
        EXPECT_NEAR(c.r, r, 1e-6 * c.r);
    }
    double r = 7;
    EXPECT_EQ(ERR_FAILURE, qmBestFit_horz3PtCurveCalc(nullptr, nullptr, &r, 0, 0, 1, 1, 2, 2));
    EXPECT_EQ(0.0, r);
    double x = 0, y = 0;
    EXPECT_EQ(ERR_FAILURE, qmBestFit_horz3PtCurveCalcMatrix(&x, &y, &r, 0, 0, 1, 1, 2, 2));
}

TEST(HorizontalFitCircle, StructuredSolverMatchesDenseAdjustment) {
    struct Problem {
        double cx, cy, r, arc, noise;
        int n;
    } problems[] = {
        {10, 20, 50, 2 * kPi, 0.0, 8},        {500123.4, 4200567.8, 300, 1.0, 0.01, 40},
        {-50, 75, 12, 2 * kPi, 0.05, 120},    {0, 0, 1000, 0.3, 0.02, 60},
        {3, 4, 5, kPi, 0.001, 5},
    };
    unsigned seed = 1;
    for (const Problem& p : problems) {
        const auto obs = circleObservations(p.cx, p.cy, p.r, p.n, p.arc, p.noise, seed++);
        double dense[3];
        ASSERT_TRUE(denseCircleFit(obs, dense));
        double fast[3] = {0, 0, 0};
        ASSERT_EQ(0, qmBestFit_horzCurveCalc(&fast[0], &fast[1], &fast[2], p.n, obs.data()));
        for (int k = 0; k < 3; ++k)
            EXPECT_NEAR(dense[k], fast[k], 1e-10 * std::max(1.0, std::fabs(dense[k])))
                << "problem n=" << p.n << " output " << k;
    }
}

TEST(HorizontalFitCircle, RecoversCircleAndLeavesTheArrayUntouched) {
    auto exact = circleObservations(1234.5, -678.25, 80, 30, 2 * kPi, 0.0, 3);
    const auto before = exact;
    double cy = 0, cx = 0, r = 0;
    ASSERT_EQ(0, qmBestFit_horzCurveCalc(&cy, &cx, &r, 30, exact.data()));
    EXPECT_NEAR(-678.25, cy, 1e-8);  // centre y comes first
    EXPECT_NEAR(1234.5, cx, 1e-8);
    EXPECT_NEAR(80.0, r, 1e-8);
    EXPECT_EQ(0, std::memcmp(before.data(), exact.data(), before.size() * sizeof(double)));

    auto noisy = circleObservations(10, 20, 40, 500, 2 * kPi, 0.01, 4);
    ASSERT_EQ(0, qmBestFit_horzCurveCalc(&cy, &cx, &r, 500, noisy.data()));
    EXPECT_NEAR(20.0, cy, 0.005);
    EXPECT_NEAR(10.0, cx, 0.005);
    EXPECT_NEAR(40.0, r, 0.005);

    // First triple collinear, second not: the fit still starts and converges.
    std::vector<double> obs = {0, .01, 0, .01, 1, .01, 0, .01, 2, .01, 0, .01};
    const auto more = circleObservations(1, 5, std::hypot(1, 5), 6, 2 * kPi, 0, 5);
    obs.insert(obs.end(), more.begin(), more.end());
    ASSERT_EQ(0, qmBestFit_horzCurveCalc(&cy, &cx, &r, (int)obs.size() / 4, obs.data()));

    std::vector<double> line = {0, .01, 0, .01, 1, .01, 1, .01, 2, .01, 2, .01, 3, .01, 3, .01};
    const auto lineBefore = line;
    cy = cx = r = -9;
    EXPECT_EQ(ERR_FAILURE, qmBestFit_horzCurveCalc(&cy, &cx, &r, 4, line.data()));
    EXPECT_EQ(0, std::memcmp(lineBefore.data(), line.data(), line.size() * sizeof(double)));
    EXPECT_EQ(ERR_FAILURE, qmBestFit_horzCurveCalc(&cy, &cx, &r, 2, line.data()));
    EXPECT_EQ(-9.0, r);
}

TEST(HorizontalFitLine, DirectionExtentAndResidual) {
    struct Case {
        double angle;  // direction of the generating line
        double noise;
    } cases[] = {{0.0, 0}, {0.3, 0}, {kPi / 2, 0}, {2.0, 0}, {kPi, 0}, {4.5, 0.01}, {5.9, 0.02}};
    std::mt19937 rng(9);
    std::normal_distribution<double> g(0, 1);
    for (const Case& c : cases) {
        const double ux = std::cos(c.angle), uy = std::sin(c.angle);
        std::vector<double> obs;
        for (int i = 0; i < 50; ++i) {
            const double t = 2.0 * i - 10, e = c.noise * g(rng);
            obs.insert(obs.end(), {1000 + t * ux - e * uy, 0.01, 2000 + t * uy + e * ux, 0.01});
        }
        double dir, lc, t1, t2, rms;
        ASSERT_EQ(0, qmBestFit_lineCalc(&dir, &lc, &t1, &t2, &rms, 50, obs.data()));
        // The sense follows the chord between the extent points (first to last here).
        const double expected = std::fmod(c.angle + kPi, 2 * kPi);
        const double diff = std::remainder(dir - c.angle, 2 * kPi);
        const double diffReversed = std::remainder(dir - expected, 2 * kPi);
        EXPECT_LT(std::min(std::fabs(diff), std::fabs(diffReversed)), c.noise > 0 ? 1e-3 : 1e-12);
        // Every point lies within the residual level of the line a x + b y + c = 0.
        const double a = std::sin(dir), b = -std::cos(dir);
        EXPECT_NEAR(0.0, a * 1000 + b * 2000 + lc, c.noise > 0 ? 0.01 : 1e-9);
        EXPECT_NEAR(98.0, t2 - t1, c.noise > 0 ? 0.05 : 1e-9);
        EXPECT_NEAR(c.noise, rms, c.noise > 0 ? c.noise * 0.4 : 1e-9);
    }
    double dir = 1, lc = 1, t1 = 1, t2 = 1, rms = 1;
    std::vector<double> one = {0, 1, 0, 1};
    EXPECT_EQ(ERR_FAILURE, qmBestFit_lineCalc(&dir, &lc, &t1, &t2, &rms, 1, one.data()));
    EXPECT_EQ(1.0, rms);
}

TEST(HorizontalFitPlane, ExactThreePointsNoiseAndFailures) {
    const Point3d three[3] = {{0, 0, 1}, {10, 0, 3}, {0, 10, -4}};
    double mx, my, z, a, b, c, err = -1;
    ASSERT_EQ(0, qmBestFit_planeCalc(&mx, &my, &z, &a, &b, &c, &err, 3, three));
    EXPECT_NEAR(0.2, a, 1e-12);
    EXPECT_NEAR(-0.5, b, 1e-12);
    EXPECT_NEAR(1.0, c, 1e-12);
    EXPECT_NEAR(0.0, err, 1e-12);
    EXPECT_NEAR(0.0, z, 1e-12);  // (1 + 3 - 4) / 3
    // Noisy: the standard error is sqrt(sum r^2)/n, checked against the residuals.
    std::mt19937 rng(2);
    std::normal_distribution<double> g(0, 0.01);
    std::vector<Point3d> pts;
    for (int i = 0; i < 200; ++i) {
        const double x = (i % 20) * 3.0, y = (i / 20) * 5.0;
        pts.push_back({x, y, 0.1 * x - 0.05 * y + 7 + g(rng)});
    }
    ASSERT_EQ(0, qmBestFit_planeCalc(&mx, &my, &z, &a, &b, &c, &err, 200, pts.data()));
    EXPECT_NEAR(0.1, a, 1e-3);
    EXPECT_NEAR(-0.05, b, 1e-3);
    double ss = 0;
    for (const Point3d& p : pts) ss += std::pow(p.z - (a * p.x + b * p.y + c), 2);
    EXPECT_NEAR(std::sqrt(ss) / 200, err, 1e-12);
    EXPECT_NEAR(a * mx + b * my + c, z, 1e-9);
    const Point3d line[3] = {{0, 0, 1}, {1, 1, 2}, {2, 2, 3}};
    EXPECT_EQ(ERR_FAILURE, qmBestFit_planeCalc(&mx, &my, &z, &a, &b, &c, nullptr, 3, line));
    EXPECT_EQ(0.0, mx);
    EXPECT_EQ(0.0, z);
    EXPECT_EQ(ERR_FAILURE, qmBestFit_planeCalc(&mx, &my, &z, &a, &b, &c, nullptr, 2, three));
    EXPECT_EQ(0.0, a);
}

}  // namespace
