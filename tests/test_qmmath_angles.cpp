// Angles, directions and scalar helpers of the plane-mathematics family.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "korvelbase/constants.h"
#include "korvelbase/qmmath.h"

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

// Distance between two directions on the circle, in [0, pi].
double circularGap(double a, double b) {
    const double d = std::fmod(std::fabs(a - b), 2.0 * M_PI);
    return d > M_PI ? 2.0 * M_PI - d : d;
}

TEST(QmMathAngles, NormalisationsTurnsSweepsAndRoundTrips) {
    EXPECT_NEAR(qmMath_normalizeAngleDegree(-90.0), 270.0, 1e-12);
    EXPECT_NEAR(qmMath_normalizeAngleDegree(725.0), 5.0, 1e-12);
    EXPECT_EQ(qmMath_atan2(-0.0, -1.0), dc_pi);  // (-pi, pi]: the lower end is excluded
    EXPECT_EQ(qmMath_getSweepAngleBetweenVectors2d(0, 0, 1, 0), 32768.0);  // the status value
    EXPECT_EQ(qmMath_getSweepAngleBetweenVectors2d(1, 0, 0, 0), 32768.0);
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> any(-100.0, 100.0), dist(0.1, 50.0);
    for (int i = 0; i < 200; ++i) {
        const double a = any(rng), na = qmMath_normalizeAngle(a);
        const double nb = qmMath_normalizeAngle(any(rng));
        ASSERT_TRUE(na >= 0.0 && na < dc_2pi) << a;
        ASSERT_NEAR(circularGap(na, a), 0.0, 1e-12);
        const double turn = qmMath_angleBetweenDirections(na, nb);
        ASSERT_TRUE(turn > -M_PI && turn <= M_PI);
        ASSERT_NEAR(circularGap(na + turn, nb), 0.0, 1e-12);
        const double right = qmMath_angleRightBetweenAzimuths(na, nb);
        ASSERT_TRUE(right >= 0.0 && right < 2.0 * M_PI);
        ASSERT_NEAR(circularGap(na + right, nb), 0.0, 1e-12);
        const double x0 = any(rng), y0 = any(rng), d = dist(rng);  // locate, then measure back
        double x = 0, y = 0;
        ASSERT_EQ(qmMath_locateByDistanceDirection2d(&x, &y, x0, y0, d, a), 0);
        ASSERT_NEAR(circularGap(qmMath_direction2d(x0, y0, x, y), a), 0.0, 1e-10);
        ASSERT_NEAR(qmMath_distance2d(x0, y0, x, y), d, 1e-9);
        // Sweep between vectors: length-independent, the anticlockwise difference of directions.
        const double sweep = qmMath_getSweepAngleBetweenVectors2d(x - x0, y - y0, 7 * std::cos(nb),
                                                                  7 * std::sin(nb));
        ASSERT_TRUE(sweep >= 0.0 && sweep < 2.0 * M_PI + 1e-12);
        ASSERT_NEAR(circularGap(sweep, nb - a), 0.0, 1e-9);
    }
}

TEST(QmMathAngles, NearEqualNearParallelAndSweepAroundCentre) {
    EXPECT_EQ(qmMath_anglesNearEqual(2.0 * M_PI - 0.001, 0.001, 0.01), 1);  // through 0
    EXPECT_EQ(qmMath_anglesNearEqual(0.001, 2.0 * M_PI - 0.001, 0.001), 0);
    EXPECT_EQ(qmMath_anglesNearEqual(1.0, 1.0 + 2.0 * dc_2pi + 1e-6, 1e-5), 1);
    EXPECT_EQ(qmMath_anglesNearEqual(0.0, 0.5, 0.5), 0);  // equal to the tolerance: not near
    struct Case { double d1, d2; int parallel; double difference; };
    const Case cases[] = {{0.0, M_PI, 1, 0.0}, {2.0 * M_PI - 0.002, 0.003, 1, 0.005},
                          {0.1, M_PI + 0.103, 1, 0.003}, {0.0, M_PI / 2.0, 0, M_PI / 2.0},
                          {0.0, 0.3, 0, 0.3}};
    for (const Case& c : cases) {
        double difference = -1.0;
        EXPECT_EQ(qmMath_directionsNearParallel(&difference, c.d1, c.d2, 0.01), c.parallel) << c.d2;
        EXPECT_NEAR(difference, c.difference, 1e-12) << c.d2;
        EXPECT_EQ(qmMath_directionsNearParallel(nullptr, c.d1, c.d2, 0.01), c.parallel);
    }
    double ccw = 0, cw = 0, untouched = 99.0;
    EXPECT_EQ(qmMath_calculateSweepAngleTwoPointsFromCenter(&ccw, 1, 1, 2, 1, 1, 2, 1), 0);
    EXPECT_EQ(qmMath_calculateSweepAngleTwoPointsFromCenter(&cw, 1, 1, 2, 1, 1, 2, 0), 0);
    EXPECT_DOUBLE_EQ(ccw, M_PI / 2.0);
    EXPECT_DOUBLE_EQ(cw, -1.5 * M_PI);
    EXPECT_EQ(qmMath_calculateSweepAngleTwoPointsFromCenter(&untouched, 1, 1, 1, 1, 2, 2, 1),
              ERR_FAILURE);  // a point on the centre
    EXPECT_EQ(untouched, 99.0);
}

TEST(QmMathScalars, OrderingSignDivisionFactorialsAndVectors) {
    EXPECT_TRUE(std::isnan(qmMath_doubleMax(1.0, kNaN)));  // NaN second is taken, first is not
    EXPECT_EQ(qmMath_doubleMax(kNaN, 1.0), 1.0);
    EXPECT_TRUE(std::isnan(qmMath_doubleMin(kNaN, 1.0)));
    EXPECT_EQ(qmMath_doubleMax(2.0, 1.0) + qmMath_doubleMin(2.0, 1.0), 3.0);
    EXPECT_EQ(qmMath_doubleGetSign(-3.0) + 2 * qmMath_doubleGetSign(1e-300), 1);
    EXPECT_EQ(qmMath_doubleGetSign(kNaN), 0);
    const double division[][3] = {{0, 0, 0}, {0, 1e-300, 1}, {1, 1e-101, 0}, {1, -1e-99, 1}};
    for (const auto& d : division) EXPECT_EQ(qmMath_isDivisionPossible(d[0], d[1]), d[2]) << d[1];

    unsigned long long wrapped = 1;  // independent reference: the product modulo 2^32
    for (int n = 1; n <= 40; ++n) {
        wrapped = wrapped * n % 4294967296ULL;
        ASSERT_EQ(qmMath_factorial(n), static_cast<double>(wrapped)) << n;
    }
    EXPECT_EQ(qmMath_factorial(-4), 1.0);
    EXPECT_EQ(qmMath_factorial(1000000000), 0.0);  // answers at once, no long loop
    struct Quotient { int n, m; double q; };  // 17! wraps past 2^31: signed here; 2..-2 holds 0
    const Quotient quotients[] = {{10, 7, 720}, {-1, -3, 2}, {2, -2, 0}, {17, 0, -288522240.0},
                                  {2147483647, -2147483647 - 1, 0}, {3, 6, 1.0 / 120}};
    for (const auto& f : quotients) EXPECT_DOUBLE_EQ(qmMath_factorialDivision(f.n, f.m), f.q);
    EXPECT_EQ(qmMath_factorialDivision(-2, 2), HUGE_VAL);  // 1/0

    EXPECT_EQ(qmMath_interpolateDoubles(0, 10, 15, 10, 20), 25.0);  // extrapolates
    EXPECT_EQ(qmMath_interpolateDoubles(3, 10, 5, 3, 20), 10.0);    // x1 = x0
    EXPECT_EQ(qmMath_distance3d(1, 1, 1, 3, 4, 7), 7.0);
    // (a x b)^2 + (a . b)^2 = |a|^2 |b|^2, and the sign of a x b is the turn from a to b.
    const double cross = qmMath_crossProduct2d(3, 1, -1, 2), dot = qmMath_scalarProduct2d(3, 1, -1, 2);
    EXPECT_EQ(cross * cross + dot * dot, 10.0 * 5.0);
    EXPECT_GT(cross, 0.0);
    double x = 3, y = -4, z = 12;
    EXPECT_EQ(qmMath_normalizeVector3d(&x, &y, &z), 0);
    EXPECT_DOUBLE_EQ(z * 13.0, 12.0);
    x = -5, y = -2;  // the signed maximum is -2: the guard still passes
    EXPECT_EQ(qmMath_normalizeVector2d(&x, &y), 0);
    EXPECT_NEAR(std::hypot(x, y), 1.0, 1e-15);
    EXPECT_DOUBLE_EQ(y / x, 0.4);
    x = 0, y = 0, z = 0;
    EXPECT_EQ(qmMath_normalizeVector2d(&x, &y), ERR_FAILURE);
    EXPECT_EQ(qmMath_normalizeVector3d(&x, &y, &z), ERR_FAILURE);
    EXPECT_EQ(qmMath_normalizeVector2d(&x, nullptr), ERR_FAILURE);
}

}  // namespace
