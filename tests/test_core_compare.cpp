// Constants, tolerant comparisons, digit counters and point converters.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

#include "korvelbase/compare.h"
#include "korvelbase/constants.h"
#include "korvelbase/convert.h"
#include "korvelbase/mem.h"

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

// Distance in units in the last place between a double and a more precise reference.
double ulpsFrom(double value, long double reference) {
    const double nearest = static_cast<double>(reference);
    const double ulp = std::nextafter(std::fabs(nearest), INFINITY) - std::fabs(nearest);
    return static_cast<double>(std::fabs(static_cast<long double>(value) - reference) / ulp);
}

TEST(Constants, PiDerivedValuesAreWithinOneUlpOfTheMathematicalValues) {
    const long double pi = 3.14159265358979323846264338327950288L;
    const struct {
        double value;
        long double exact;
    } cases[] = {
        {dc_pi, pi},
        {dc_2pi, 2 * pi},
        {dc_piover2, pi / 2},
        {dc_piover3, pi / 3},
        {dc_piover4, pi / 4},
        {dc_piover6, pi / 6},
        {dc_piover180, pi / 180},
        {dc_180overpi, 180 / pi},
        {dc_iang_to_rad, pi / 180 / 360000},
        {dc_rad_to_iang, 64800000 / pi},
        {dc_miang_to_rad, -pi / 180 / 360000},
    };
    for (const auto& c : cases) EXPECT_LE(ulpsFrom(c.value, c.exact), 1.0) << c.value;
    // The reversed sign of the "m" factor is intended.
    EXPECT_EQ(dc_miang_to_rad, -dc_iang_to_rad);
    EXPECT_NEAR(dc_iang_to_rad * 129600000.0, dc_2pi, 1e-12);
    EXPECT_EQ(initialize(), 0);  // the load step has already run
}

TEST(TolerantComparison, EqualityBoundIsInclusive) {
    // 0.5 and 0.75 differ by exactly 0.25 in binary: the boundary case is exact.
    EXPECT_EQ(qmUtil_equalDouble(0.5, 0.75, 0.25), 1);
    EXPECT_EQ(qmUtil_equalDouble(0.5, 0.75, std::nextafter(0.25, 0.0)), 0);
    // 1.0 + 1e-4 is not exactly representable: equal only if the computed difference fits.
    const double b = 1.0 + 1e-4;
    EXPECT_EQ(qmUtil_equalDouble(1.0, b, 1e-4), std::fabs(1.0 - b) <= 1e-4 ? 1 : 0);
    EXPECT_EQ(qmUtil_equalDouble(3.0, 3.0, 0.0), 1);
    // A negative tolerance: never equal for one, its magnitude for the other.
    EXPECT_EQ(qmUtil_equalDouble(2.0, 2.0, -1.0), 0);
    EXPECT_EQ(qmMath_doublesNearEqual(2.0, 2.0, -1.0), 1);
    EXPECT_EQ(qmMath_doublesNearEqual(2.0, 2.75, -0.75), 1);
    EXPECT_EQ(qmMath_doublesNearEqual(2.0, 2.75, -0.5), 0);
}

TEST(TolerantComparison, OrderTestsAreExactComplementsAndSymmetricAtTheBounds) {
    const double values[] = {-2.0, -0.25, 0.0, 0.25, 0.5, 1.0, 1e300};
    const double tolerances[] = {0.0, 0.25, 0.5, -0.25};
    for (double a : values) {
        for (double b : values) {
            for (double t : tolerances) {
                EXPECT_NE(qmUtil_greaterDouble(a, b, t), qmUtil_lessOrEqualDouble(a, b, t));
                EXPECT_NE(qmUtil_lessDouble(a, b, t), qmUtil_greaterOrEqualDouble(a, b, t));
            }
        }
    }
    // At exactly the tolerance: not strictly greater/less, but greater-or-equal/less-or-equal.
    EXPECT_EQ(qmUtil_greaterDouble(0.75, 0.5, 0.25), 0);
    EXPECT_EQ(qmUtil_lessOrEqualDouble(0.75, 0.5, 0.25), 1);
    EXPECT_EQ(qmUtil_lessDouble(0.5, 0.75, 0.25), 0);
    EXPECT_EQ(qmUtil_greaterOrEqualDouble(0.5, 0.75, 0.25), 1);
    EXPECT_EQ(qmUtil_greaterDouble(1.0, 0.5, 0.25), 1);
    EXPECT_EQ(qmUtil_lessDouble(0.0, 0.5, 0.25), 1);
}

TEST(TolerantComparison, EveryComparisonWithNaNIsFalse) {
    const double operands[][2] = {{kNaN, 1.0}, {1.0, kNaN}, {kNaN, kNaN}};
    for (const auto& p : operands) {
        EXPECT_EQ(qmUtil_equalDouble(p[0], p[1], 1.0), 0);
        EXPECT_EQ(qmUtil_greaterDouble(p[0], p[1], 1.0), 0);
        EXPECT_EQ(qmUtil_greaterOrEqualDouble(p[0], p[1], 1.0), 0);
        EXPECT_EQ(qmUtil_lessDouble(p[0], p[1], 1.0), 0);
        EXPECT_EQ(qmUtil_lessOrEqualDouble(p[0], p[1], 1.0), 0);
        EXPECT_EQ(qmMath_doublesNearEqual(p[0], p[1], 1.0), 0);
    }
    EXPECT_EQ(qmUtil_equalDouble(1.0, 1.0, kNaN), 0);
    EXPECT_EQ(qmUtil_lessOrEqualDouble(1.0, 1.0, kNaN), 0);
    EXPECT_EQ(qmUtil_belongToClosedIntervalDouble(kNaN, 0.0, 1.0, 0.1), 0);
    EXPECT_EQ(qmUtil_belongToClosedIntervalDouble(0.5, kNaN, 1.0, 0.1), 0);
    EXPECT_EQ(qmUtil_belongToOpenIntervalDouble(kNaN, 0.0, 1.0, 0.1), 0);
    EXPECT_EQ(qmUtil_belongToOpenIntervalDouble(0.5, 0.0, kNaN, 0.1), 0);
}

TEST(TolerantComparison, ClosedIntervalIsWidenedAndOpenIntervalNarrowed) {
    // [1, 2] widened by 0.25 accepts 0.75 and 2.25 exactly, not beyond.
    EXPECT_EQ(qmUtil_belongToClosedIntervalDouble(0.75, 1.0, 2.0, 0.25), 1);
    EXPECT_EQ(qmUtil_belongToClosedIntervalDouble(2.25, 1.0, 2.0, 0.25), 1);
    EXPECT_EQ(qmUtil_belongToClosedIntervalDouble(std::nextafter(0.75, 0.0), 1.0, 2.0, 0.25), 0);
    EXPECT_EQ(qmUtil_belongToClosedIntervalDouble(2.5, 1.0, 2.0, 0.25), 0);
    // (1, 2) narrowed by 0.25: both bounds strict.
    EXPECT_EQ(qmUtil_belongToOpenIntervalDouble(1.25, 1.0, 2.0, 0.25), 0);
    EXPECT_EQ(qmUtil_belongToOpenIntervalDouble(1.75, 1.0, 2.0, 0.25), 0);
    EXPECT_EQ(qmUtil_belongToOpenIntervalDouble(1.5, 1.0, 2.0, 0.25), 1);
    // An interval no wider than twice the tolerance holds nothing.
    for (double x = 0.0; x <= 3.0; x += 0.125) {
        EXPECT_EQ(qmUtil_belongToOpenIntervalDouble(x, 1.0, 1.5, 0.25), 0) << x;
    }
}

TEST(TolerantComparison, CompareByPointerSortsLikeTheNumbers) {
    std::vector<double> values = {3.5, -1.0, 2.0, 2.0, -7.25, 0.0, 1e10};
    std::qsort(values.data(), values.size(), sizeof(double), qmUtil_compareDoubleByPointer);
    for (size_t i = 1; i < values.size(); ++i) EXPECT_LE(values[i - 1], values[i]);
    const double a = 1.0;
    EXPECT_EQ(qmUtil_compareDoubleByPointer(&a, &a), 0);
}

TEST(DigitCounting, MatchesTheLengthOfTheDecimalText) {
    const int values[] = {0, 1, 9, 10, 99, 100, -1, -5, -10, -99999, 123456789,
                          std::numeric_limits<int>::max(), std::numeric_limits<int>::min()};
    for (int n : values) {
        EXPECT_EQ(qmUtil_numberOfDigit(n), static_cast<int>(std::to_string(n).size())) << n;
    }
    EXPECT_EQ(qmUtil_numberOfMantissaDigit(123.4), 3);
    EXPECT_EQ(qmUtil_numberOfMantissaDigit(-0.5), 2);  // floor(-0.5) = -1
    EXPECT_EQ(qmUtil_numberOfMantissaDigit(0.99), 1);
    EXPECT_EQ(qmUtil_numberOfDecimalsDigit(123.4), 13);
    EXPECT_EQ(qmUtil_numberOfDecimalsDigit(-12.5), 13);  // floor = -13, three characters
    // Outside the int range the truncation gives the smallest int, as a 32-bit conversion does.
    EXPECT_EQ(qmUtil_numberOfMantissaDigit(1e20), 11);
    EXPECT_EQ(qmUtil_numberOfMantissaDigit(kNaN), 11);
}

TEST(PointConversion, ArraysRoundTripAndDropOrZeroTheElevation) {
    const Point2d plan[] = {{1.0, 2.0}, {3.0, 4.0}, {5.0, 6.0}};
    Point3d* spatial = ConvertArray23(plan, 3);
    ASSERT_NE(spatial, nullptr);
    spatial[1].z = 99.0;  // an elevation is dropped on the way back
    Point2d* flat = ConvertArray32(spatial, 3);
    ASSERT_NE(flat, nullptr);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(flat[i].x, plan[i].x);
        EXPECT_EQ(flat[i].y, plan[i].y);
    }
    EXPECT_EQ(spatial[0].z, 0.0);
    EXPECT_EQ(spatial[2].z, 0.0);
    EXPECT_EQ(qmMem_free(spatial), 0);
    EXPECT_EQ(qmMem_free(flat), 0);
    EXPECT_EQ(ConvertArray23(plan, 0), nullptr);
    Point3d one{0.0, 0.0, 7.0};
    ConvertPoint23(&plan[2], &one);
    Point2d onePlan{};
    ConvertPoint32(&one, &onePlan);
    EXPECT_TRUE(one.z == 0.0 && onePlan.x == 5.0 && onePlan.y == 6.0);
}

}  // namespace
