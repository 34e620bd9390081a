// Angles, directions and scalar helpers of the plane-mathematics family.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

#include "korvelbase/constants.h"
#include "korvelbase/qmmath.h"

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

// Distance between two directions on the circle, in [0, pi].
double circularGap(double a, double b) {
    const double d = std::fmod(std::fabs(a - b), 2.0 * M_PI);
    return d > M_PI ? 2.0 * M_PI - d : d;
}

TEST(QmMathAngles, NormalisationsKeepTheDirectionInRange) {
    EXPECT_DOUBLE_EQ(qmMath_normalizeAngle(-0.5), 2.0 * M_PI - 0.5);  // negative remainders
    EXPECT_NEAR(qmMath_normalizeAngleDegree(-90.0), 270.0, 1e-12);
    EXPECT_NEAR(qmMath_normalizeAngleDegree(725.0), 5.0, 1e-12);
    EXPECT_EQ(qmMath_atan2(-0.0, -1.0), dc_pi);  // (-pi, pi]: the lower end is excluded
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> any(-100.0, 100.0), dist(0.1, 50.0);
    for (int i = 0; i < 300; ++i) {
        const double a = any(rng), n = qmMath_normalizeAngle(a);
        ASSERT_TRUE(n >= 0.0 && n < dc_2pi) << a;
        ASSERT_NEAR(circularGap(n, a), 0.0, 1e-12);
        // Locating a point by distance and direction, then measuring it back: a round trip.
        const double x0 = any(rng), y0 = any(rng), d = dist(rng);
        double x = 0, y = 0;
        ASSERT_EQ(qmMath_locateByDistanceDirection2d(&x, &y, x0, y0, d, a), 0);
        ASSERT_NEAR(circularGap(qmMath_direction2d(x0, y0, x, y), a), 0.0, 1e-10);
        ASSERT_NEAR(qmMath_distance2d(x0, y0, x, y), d, 1e-9);
    }
}

TEST(QmMathAngles, SignedAndClockwiseTurnsUndoTheirAddition) {
    EXPECT_DOUBLE_EQ(qmMath_angleBetweenDirections(0.0, 1.5 * M_PI), -M_PI / 2.0);
    EXPECT_DOUBLE_EQ(qmMath_angleRightBetweenAzimuths(M_PI, M_PI / 2.0), 1.5 * M_PI);
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> dir(0.0, 2.0 * M_PI);
    for (int i = 0; i < 300; ++i) {
        const double a = dir(rng), b = dir(rng);
        const double turn = qmMath_angleBetweenDirections(a, b);
        ASSERT_TRUE(turn > -M_PI && turn <= M_PI);
        ASSERT_NEAR(circularGap(a + turn, b), 0.0, 1e-12);
        const double right = qmMath_angleRightBetweenAzimuths(a, b);
        ASSERT_TRUE(right >= 0.0 && right < 2.0 * M_PI);
        ASSERT_NEAR(circularGap(a + right, b), 0.0, 1e-12);
    }
}

TEST(QmMathAngles, NearEqualAndNearParallel) {
    EXPECT_EQ(qmMath_anglesNearEqual(0.001, 2.0 * M_PI - 0.001, 0.01), 1);  // through 0
    EXPECT_EQ(qmMath_anglesNearEqual(2.0 * M_PI - 0.001, 0.001, 0.01), 1);
    EXPECT_EQ(qmMath_anglesNearEqual(0.001, 2.0 * M_PI - 0.001, 0.001), 0);
    EXPECT_EQ(qmMath_anglesNearEqual(1.0, 1.0 + 2.0 * dc_2pi + 1e-6, 1e-5), 1);
    EXPECT_EQ(qmMath_anglesNearEqual(0.0, 0.5, 0.5), 0);  // equal to the tolerance: not near

    struct Case { double d1, d2; int parallel; double difference; };
    const Case cases[] = {
        {0.0, M_PI, 1, 0.0},          {0.1, 0.105, 1, 0.005},
        {2.0 * M_PI - 0.002, 0.003, 1, 0.005}, {0.1, M_PI + 0.103, 1, 0.003},
        {0.0, M_PI / 2.0, 0, M_PI / 2.0},      {0.0, 0.3, 0, 0.3},
    };
    for (const Case& c : cases) {
        double difference = -1.0;
        EXPECT_EQ(qmMath_directionsNearParallel(&difference, c.d1, c.d2, 0.01), c.parallel) << c.d2;
        EXPECT_NEAR(difference, c.difference, 1e-12) << c.d2;
        EXPECT_EQ(qmMath_directionsNearParallel(nullptr, c.d1, c.d2, 0.01), c.parallel);
    }
}

TEST(QmMathAngles, SweepAroundCentreAndBetweenVectors) {
    double ccw = 0, cw = 0, untouched = 99.0;
    EXPECT_EQ(qmMath_calculateSweepAngleTwoPointsFromCenter(&ccw, 1, 1, 2, 1, 1, 2, 1), 0);
    EXPECT_EQ(qmMath_calculateSweepAngleTwoPointsFromCenter(&cw, 1, 1, 2, 1, 1, 2, 0), 0);
    EXPECT_DOUBLE_EQ(ccw, M_PI / 2.0);
    EXPECT_DOUBLE_EQ(cw, -1.5 * M_PI);
    EXPECT_EQ(qmMath_calculateSweepAngleTwoPointsFromCenter(&untouched, 1, 1, 1, 1, 2, 2, 1),
              ERR_FAILURE);  // a point on the centre
    EXPECT_EQ(untouched, 99.0);

    EXPECT_DOUBLE_EQ(qmMath_getSweepAngleBetweenVectors2d(1, 0, 0, -1), 1.5 * M_PI);
    EXPECT_EQ(qmMath_getSweepAngleBetweenVectors2d(0, 0, 1, 0), 32768.0);  // the status value
    EXPECT_EQ(qmMath_getSweepAngleBetweenVectors2d(1, 0, 0, 0), 32768.0);
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> comp(-10.0, 10.0);
    for (int i = 0; i < 200; ++i) {  // length-independent; the difference of the directions
        const double x1 = comp(rng), y1 = comp(rng), x2 = comp(rng), y2 = comp(rng);
        const double got = qmMath_getSweepAngleBetweenVectors2d(x1, y1, 7.0 * x2, 7.0 * y2);
        ASSERT_GE(got, 0.0);
        ASSERT_NEAR(circularGap(got, std::atan2(y2, x2) - std::atan2(y1, x1)), 0.0, 1e-9);
    }
}

TEST(QmMathScalars, OrderingSignAndDivisionGuard) {
    EXPECT_TRUE(std::isnan(qmMath_doubleMax(1.0, kNaN)));  // NaN second is taken...
    EXPECT_EQ(qmMath_doubleMax(kNaN, 1.0), 1.0);           // ...NaN first is not
    EXPECT_EQ(qmMath_doubleMax(2.0, 1.0) + qmMath_doubleMin(2.0, 1.0), 3.0);
    EXPECT_TRUE(std::isnan(qmMath_doubleMin(kNaN, 1.0)));
    EXPECT_EQ(qmMath_doubleGetSign(-3.0) + 2 * qmMath_doubleGetSign(1e-300), 1);
    EXPECT_EQ(qmMath_doubleGetSign(kNaN), 0);
    EXPECT_EQ(qmMath_isDivisionPossible(0.0, 0.0), 0);
    EXPECT_EQ(qmMath_isDivisionPossible(0.0, 1e-300), 1);
    EXPECT_EQ(qmMath_isDivisionPossible(1.0, 1e-101), 0);
    EXPECT_EQ(qmMath_isDivisionPossible(1.0, -1e-99), 1);
}

TEST(QmMathScalars, FactorialsWrapIn32Bits) {
    std::uint64_t wrapped = 1;  // independent reference: the product modulo 2^32
    for (int n = 1; n <= 40; ++n) {
        wrapped = (wrapped * static_cast<std::uint64_t>(n)) % 4294967296ULL;
        ASSERT_EQ(qmMath_factorial(n), static_cast<double>(wrapped)) << n;
    }
    EXPECT_EQ(qmMath_factorial(-4), 1.0);
    EXPECT_EQ(qmMath_factorial(1000000000), 0.0);  // answers at once, no long loop
    for (int n = 0; n <= 12; ++n) {
        for (int m = 0; m <= 12; ++m) {
            const double exact = qmMath_factorial(n) / qmMath_factorial(m);
            ASSERT_NEAR(qmMath_factorialDivision(n, m), exact, exact * 1e-15) << n << " " << m;
        }
    }
    EXPECT_EQ(qmMath_factorialDivision(-1, -3), 2.0);
    EXPECT_EQ(qmMath_factorialDivision(2, -2), 0.0);   // the run passes through 0
    EXPECT_EQ(qmMath_factorialDivision(-2, 2), kInf);  // 1/0
    // 17! wraps past 2^31: signed in the division, unsigned in the factorial.
    EXPECT_EQ(qmMath_factorialDivision(17, 0), -288522240.0);
    EXPECT_EQ(qmMath_factorial(17), 4006445056.0);
    EXPECT_EQ(qmMath_factorialDivision(2147483647, -2147483647 - 1), 0.0);
}

TEST(QmMathScalars, InterpolationDistancesAndUnitVectors) {
    EXPECT_EQ(qmMath_interpolateDoubles(0, 10, 15, 10, 20), 25.0);  // extrapolates
    EXPECT_EQ(qmMath_interpolateDoubles(3, 10, 5, 3, 20), 10.0);    // x1 = x0
    EXPECT_EQ(qmMath_distance3d(1, 1, 1, 3, 4, 7), 7.0);
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
