// Angles, directions and scalar helpers of the plane-mathematics family.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

#include "korvelbase/constants.h"
#include "korvelbase/qmmath.h"

namespace {

constexpr double kEps = 1e-12;
const double kNaN = std::numeric_limits<double>::quiet_NaN();

// Distance between two directions on the circle, in [0, pi].
double circularGap(double a, double b) {
    const double d = std::fmod(std::fabs(a - b), 2.0 * M_PI);
    return d > M_PI ? 2.0 * M_PI - d : d;
}

TEST(QmMathAngles, NormalizeAngleLandsInRangeAndKeepsTheDirection) {
    EXPECT_DOUBLE_EQ(qmMath_normalizeAngle(-0.5), 2.0 * M_PI - 0.5);
    EXPECT_EQ(qmMath_normalizeAngle(0.0), 0.0);
    EXPECT_NEAR(qmMath_normalizeAngle(2.0 * dc_2pi + 1.0), 1.0, kEps);
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> any(-100.0, 100.0);
    for (int i = 0; i < 500; ++i) {
        const double a = any(rng);
        const double n = qmMath_normalizeAngle(a);
        ASSERT_GE(n, 0.0);
        ASSERT_LT(n, dc_2pi);
        ASSERT_NEAR(std::cos(n), std::cos(a), 1e-12);
        ASSERT_NEAR(std::sin(n), std::sin(a), 1e-12);
    }
    EXPECT_NEAR(qmMath_normalizeAngleDegree(-90.0), 270.0, 1e-12);
    EXPECT_NEAR(qmMath_normalizeAngleDegree(725.0), 5.0, 1e-12);
}

TEST(QmMathAngles, Atan2AndDirectionsFollowTheirRanges) {
    EXPECT_EQ(qmMath_atan2(-0.0, -1.0), dc_pi);  // (-pi, pi]: the lower end is excluded
    EXPECT_DOUBLE_EQ(qmMath_atan2(-1.0, 0.0), -M_PI / 2.0);
    EXPECT_DOUBLE_EQ(qmMath_direction2d(1, 1, 1, 0), 1.5 * M_PI);
    EXPECT_DOUBLE_EQ(qmMath_direction2d(1, 1, 0, 1), M_PI);
    // Locating a point by distance and direction, then measuring it back, is a round trip.
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> coord(-1e3, 1e3), dir(0.0, 2.0 * M_PI), dist(0.1, 50);
    for (int i = 0; i < 200; ++i) {
        const double x0 = coord(rng), y0 = coord(rng), d = dist(rng), t = dir(rng);
        double x = 0, y = 0;
        ASSERT_EQ(qmMath_locateByDistanceDirection2d(&x, &y, x0, y0, d, t), 0);
        ASSERT_NEAR(circularGap(qmMath_direction2d(x0, y0, x, y), t), 0.0, 1e-10);
        ASSERT_NEAR(qmMath_distance2d(x0, y0, x, y), d, 1e-9);
    }
}

TEST(QmMathAngles, SignedTurnAndClockwiseTurnAreInverseOfAddition) {
    EXPECT_DOUBLE_EQ(qmMath_angleBetweenDirections(0.0, 1.5 * M_PI), -M_PI / 2.0);
    EXPECT_DOUBLE_EQ(qmMath_angleBetweenDirections(1.5 * M_PI, 0.0), M_PI / 2.0);
    EXPECT_DOUBLE_EQ(qmMath_angleRightBetweenAzimuths(M_PI, M_PI / 2.0), 1.5 * M_PI);
    EXPECT_DOUBLE_EQ(qmMath_angleRightBetweenAzimuths(M_PI / 2.0, M_PI), M_PI / 2.0);
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> dir(0.0, 2.0 * M_PI);
    for (int i = 0; i < 300; ++i) {
        const double a = dir(rng), b = dir(rng);
        const double turn = qmMath_angleBetweenDirections(a, b);
        ASSERT_GT(turn, -M_PI);
        ASSERT_LE(turn, M_PI);
        ASSERT_NEAR(circularGap(a + turn, b), 0.0, 1e-12);
        const double right = qmMath_angleRightBetweenAzimuths(a, b);
        ASSERT_GE(right, 0.0);
        ASSERT_LT(right, 2.0 * M_PI);
        ASSERT_NEAR(circularGap(a + right, b), 0.0, 1e-12);
    }
}

TEST(QmMathAngles, NearEqualAnglesWrapOnlyThroughAnAngleNearZero) {
    EXPECT_EQ(qmMath_anglesNearEqual(0.001, 2.0 * M_PI - 0.001, 0.01), 1);
    EXPECT_EQ(qmMath_anglesNearEqual(0.001, 2.0 * M_PI - 0.001, 0.001), 0);
    EXPECT_EQ(qmMath_anglesNearEqual(2.0 * M_PI - 0.001, 0.001, 0.01), 1);
    EXPECT_EQ(qmMath_anglesNearEqual(1.0, 1.0 + 2.0 * dc_2pi + 1e-6, 1e-5), 1);
    EXPECT_EQ(qmMath_anglesNearEqual(0.0, 0.5, 0.5), 0);  // equal to the tolerance: not near
    EXPECT_EQ(qmMath_anglesNearEqual(1.0, 1.2, 0.1), 0);
}

TEST(QmMathAngles, ParallelDirectionsInEitherSense) {
    struct Case {
        double d1, d2, tol;
        int parallel;
        double difference;
    };
    const Case cases[] = {
        {0.0, M_PI, 0.01, 1, 0.0},
        {0.1, 0.105, 0.01, 1, 0.005},
        {2.0 * M_PI - 0.002, 0.003, 0.01, 1, 0.005},
        {0.1, M_PI + 0.103, 0.01, 1, 0.003},
        {0.0, M_PI / 2.0, 0.01, 0, M_PI / 2.0},
        {0.0, 0.3, 0.01, 0, 0.3},
    };
    for (const Case& c : cases) {
        double difference = -1.0;
        EXPECT_EQ(qmMath_directionsNearParallel(&difference, c.d1, c.d2, c.tol), c.parallel)
            << c.d1 << " " << c.d2;
        EXPECT_NEAR(difference, c.difference, 1e-12) << c.d1 << " " << c.d2;
        EXPECT_EQ(qmMath_directionsNearParallel(nullptr, c.d1, c.d2, c.tol), c.parallel);
    }
}

TEST(QmMathAngles, SweepAroundCentreAndBetweenVectors) {
    double sweep = 99.0;
    EXPECT_EQ(qmMath_calculateSweepAngleTwoPointsFromCenter(&sweep, 1, 1, 2, 1, 1, 2, 1), 0);
    EXPECT_DOUBLE_EQ(sweep, M_PI / 2.0);
    EXPECT_EQ(qmMath_calculateSweepAngleTwoPointsFromCenter(&sweep, 1, 1, 2, 1, 1, 2, 0), 0);
    EXPECT_DOUBLE_EQ(sweep, -1.5 * M_PI);
    EXPECT_EQ(qmMath_calculateSweepAngleTwoPointsFromCenter(&sweep, 0, 0, 3, 0, 3, 0, 1), 0);
    EXPECT_EQ(sweep, 0.0);
    EXPECT_EQ(qmMath_calculateSweepAngleTwoPointsFromCenter(&sweep, 0, 0, 3, 0, 3, 0, 0), 0);
    EXPECT_DOUBLE_EQ(sweep, -2.0 * M_PI);
    sweep = 99.0;
    EXPECT_EQ(qmMath_calculateSweepAngleTwoPointsFromCenter(&sweep, 1, 1, 1, 1, 2, 2, 1),
              ERR_FAILURE);
    EXPECT_EQ(sweep, 99.0);
    EXPECT_EQ(qmMath_calculateSweepAngleTwoPointsFromCenter(nullptr, 0, 0, 1, 0, 0, 1, 1),
              ERR_FAILURE);

    EXPECT_DOUBLE_EQ(qmMath_getSweepAngleBetweenVectors2d(1, 0, 0, -1), 1.5 * M_PI);
    EXPECT_EQ(qmMath_getSweepAngleBetweenVectors2d(0, 0, 1, 0), 32768.0);
    EXPECT_EQ(qmMath_getSweepAngleBetweenVectors2d(1, 0, 0, 0), 32768.0);
    // Independent of the vectors' lengths; agrees with the difference of their directions.
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> comp(-10.0, 10.0);
    for (int i = 0; i < 200; ++i) {
        const double x1 = comp(rng), y1 = comp(rng), x2 = comp(rng), y2 = comp(rng);
        const double expected = std::atan2(y2, x2) - std::atan2(y1, x1);
        const double got = qmMath_getSweepAngleBetweenVectors2d(x1, y1, 7.0 * x2, 7.0 * y2);
        ASSERT_GE(got, 0.0);
        ASSERT_NEAR(circularGap(got, expected), 0.0, 1e-9);
    }
}

TEST(QmMathScalars, MaxMinSignAndDivisionGuard) {
    EXPECT_EQ(qmMath_doubleMax(1.0, 2.0), 2.0);
    EXPECT_EQ(qmMath_doubleMax(2.0, 1.0), 2.0);
    EXPECT_TRUE(std::isnan(qmMath_doubleMax(1.0, kNaN)));  // NaN second: taken
    EXPECT_EQ(qmMath_doubleMax(kNaN, 1.0), 1.0);
    EXPECT_EQ(qmMath_doubleMin(1.0, 2.0), 1.0);
    EXPECT_TRUE(std::isnan(qmMath_doubleMin(kNaN, 1.0)));
    EXPECT_EQ(qmMath_doubleGetSign(-3.0), -1);
    EXPECT_EQ(qmMath_doubleGetSign(0.0), 0);
    EXPECT_EQ(qmMath_doubleGetSign(kNaN), 0);
    EXPECT_EQ(qmMath_doubleGetSign(1e-300), 1);

    EXPECT_EQ(qmMath_isDivisionPossible(0.0, 0.0), 0);
    EXPECT_EQ(qmMath_isDivisionPossible(0.0, 1e-300), 1);
    EXPECT_EQ(qmMath_isDivisionPossible(1.0, 1e-101), 0);
    EXPECT_EQ(qmMath_isDivisionPossible(1.0, -1e-99), 1);
}

TEST(QmMathScalars, FactorialsWrapIn32Bits) {
    // Independent reference: the product reduced modulo 2^32 in 64-bit arithmetic.
    std::uint64_t wrapped = 1;
    for (int n = 1; n <= 40; ++n) {
        wrapped = (wrapped * static_cast<std::uint64_t>(n)) % 4294967296ULL;
        ASSERT_EQ(qmMath_factorial(n), static_cast<double>(wrapped)) << n;
    }
    EXPECT_EQ(qmMath_factorial(12), 479001600.0);
    EXPECT_EQ(qmMath_factorial(0), 1.0);
    EXPECT_EQ(qmMath_factorial(-4), 1.0);
    EXPECT_EQ(qmMath_factorial(1000000000), 0.0);  // answers at once, no long loop

    for (int n = 0; n <= 12; ++n) {
        for (int m = 0; m <= 12; ++m) {
            const double exact = qmMath_factorial(n) / qmMath_factorial(m);
            ASSERT_NEAR(qmMath_factorialDivision(n, m), exact, exact * 1e-15) << n << " " << m;
        }
    }
    EXPECT_EQ(qmMath_factorialDivision(-1, -3), 2.0);
    EXPECT_EQ(qmMath_factorialDivision(2, -2), 0.0);  // the run passes through 0
    EXPECT_EQ(qmMath_factorialDivision(-2, 2), std::numeric_limits<double>::infinity());
    // 17!/0! wraps past 2^31 and is read back as a signed 32-bit value, while the unsigned
    // factorial keeps the same bits positive.
    EXPECT_EQ(qmMath_factorialDivision(17, 0), -288522240.0);
    EXPECT_EQ(qmMath_factorial(17), 4006445056.0);
    EXPECT_EQ(qmMath_factorialDivision(2147483647, -2147483647 - 1), 0.0);
}

TEST(QmMathScalars, InterpolationProductsDistancesAndUnitVectors) {
    EXPECT_EQ(qmMath_interpolateDoubles(0, 10, 5, 10, 20), 15.0);
    EXPECT_EQ(qmMath_interpolateDoubles(0, 10, 15, 10, 20), 25.0);  // extrapolates
    EXPECT_EQ(qmMath_interpolateDoubles(3, 10, 5, 3, 20), 10.0);    // x1 = x0
    EXPECT_EQ(qmMath_interpolateDoubles(0, 7, 5, 10, 7), 7.0);
    EXPECT_EQ(qmMath_scalarProduct2d(1, 2, -2, 1), 0.0);
    EXPECT_EQ(qmMath_crossProduct2d(1, 0, 0, 1), 1.0);  // +y is counter-clockwise of +x
    EXPECT_EQ(qmMath_distance2d(1, 1, 4, 5), 5.0);
    EXPECT_EQ(qmMath_distance3d(1, 1, 1, 3, 4, 7), 7.0);

    double x = 3, y = -4, z = 12;
    EXPECT_EQ(qmMath_normalizeVector2d(&x, &y), 0);
    EXPECT_DOUBLE_EQ(x, 0.6);
    EXPECT_DOUBLE_EQ(y, -0.8);
    x = 3, y = -4;
    EXPECT_EQ(qmMath_normalizeVector3d(&x, &y, &z), 0);
    EXPECT_DOUBLE_EQ(x * 13.0, 3.0);
    EXPECT_DOUBLE_EQ(z * 13.0, 12.0);
    x = -5, y = -2;  // both negative: the signed maximum is -2, the guard still passes
    EXPECT_EQ(qmMath_normalizeVector2d(&x, &y), 0);
    EXPECT_NEAR(std::hypot(x, y), 1.0, kEps);
    x = 0, y = 0;
    EXPECT_EQ(qmMath_normalizeVector2d(&x, &y), ERR_FAILURE);
    EXPECT_EQ(x, 0.0);
    EXPECT_EQ(qmMath_normalizeVector2d(&x, nullptr), ERR_FAILURE);
    x = 0, y = 0, z = 0;
    EXPECT_EQ(qmMath_normalizeVector3d(&x, &y, &z), ERR_FAILURE);
}

}  // namespace
