// Unit and angle conversion: checked against independent arithmetic (exact foot ratios, chord
// geometry, brute-force rounding) and round trips, plus the family's deliberate quirks.
#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>

#include "korvelbase/conversion.h"
#include "korvelbase/types.h"

namespace {

const double kPi = std::acos(-1.0);

TEST(ConversionAngles, DegreeMinuteSecondRoundTripsCarriesAndQuirks) {
    int d, m;
    double s, dm, out = 0.0;
    for (double a : {0.0, -10.5, 45.2575, -0.25, 123.456789, -359.9999, 10.99999999999,
                     -10.99999999999, 2147483646.5}) {
        ASSERT_EQ(qmConversion_degreeToDMS(&d, &m, &s, a), 0) << a;
        EXPECT_NEAR(qmConversion_DMSTodegree(nullptr, d, m, s), a, 1e-7) << a;
        EXPECT_TRUE(std::abs(m) < 60 && std::fabs(s) < 60.0) << a;
        EXPECT_TRUE(d * a >= 0 && m * a >= 0 && s * a >= 0) << "parts carry the sign of " << a;
        ASSERT_EQ(qmConversion_degreeToDM(&d, &dm, a), 0);
        EXPECT_NEAR(qmConversion_DMToDegree(nullptr, d, dm), a, 1e-7) << a;
        EXPECT_LT(std::fabs(dm), 60.0);
    }
    qmConversion_degreeToDMS(&d, &m, &s, 10.99999999999);  // seconds carry, then minutes carry
    EXPECT_TRUE(d == 11 && m == 0 && s == 0.0);
    qmConversion_degreeToDMS(&d, &m, &s, -10.5);
    EXPECT_TRUE(d == -10 && m == -30 && s == 0.0);
    qmConversion_degreeToDM(&d, &dm, -20.9999999999999);
    EXPECT_TRUE(d == -21 && dm == 0.0);
    // Mixed signs are simply summed; out receives the result.
    EXPECT_EQ(qmConversion_DMSTodegree(&out, -10, 30, 0.0), -9.5);
    EXPECT_EQ(out, -9.5);
    // Null parts are skipped; unrepresentable angles fail and store nothing.
    EXPECT_EQ(qmConversion_degreeToDMS(nullptr, nullptr, nullptr, 5.5), 0);
    EXPECT_EQ(qmConversion_degreeToDM(nullptr, nullptr, 5.5), 0);
    d = 7;
    for (double bad : {double(NAN), double(INFINITY), -double(INFINITY), 2147483647.0, -3e9}) {
        EXPECT_EQ(qmConversion_degreeToDMS(&d, &m, &s, bad), ERR_FAILURE);
        EXPECT_EQ(qmConversion_degreeToDM(&d, &dm, bad), ERR_FAILURE);
        EXPECT_EQ(d, 7);
    }
}

TEST(ConversionUnits, AnglesAndFeetAgreeWithExactRatios) {
    EXPECT_NEAR(qmConversion_degreeToRadian(180.0), kPi, 1e-15);
    EXPECT_NEAR(qmConversion_gradToRadian(200.0), kPi, 1e-15);
    EXPECT_NEAR(qmConversion_radianToDegree(-4 * kPi), -720.0, 1e-12);
    EXPECT_NEAR(qmConversion_radianToGrad(-4 * kPi), -800.0, 1e-12);
    const double usFoot = 1200.0 / 3937.0;
    for (double x : {1.0, -12.5, 1e6}) {
        EXPECT_NEAR(qmConversion_usfootToMeter(x), x * usFoot, 1e-15 * std::fabs(x));
        EXPECT_NEAR(qmConversion_meterToUsFoot(x), x / usFoot, 1e-15 * std::fabs(x));
        EXPECT_NEAR(qmConversion_internationalFootToMeter(x), x * 0.3048, 1e-15 * std::fabs(x));
        EXPECT_NEAR(qmConversion_meterToInternationalFoot(x), x / 0.3048, 1e-15 * std::fabs(x));
        EXPECT_NEAR(qmConversion_usFootToInternationalFoot(x), x * usFoot / 0.3048, 1e-12 * std::fabs(x));
        EXPECT_NEAR(qmConversion_internationalFootToUsFoot(x), x * 0.3048 / usFoot, 1e-12 * std::fabs(x));
    }
    // The foot-to-foot factors are the stored rounded values, not derived from each other.
    EXPECT_EQ(qmConversion_usFootToInternationalFoot(1.0), 1.000002000004);
    EXPECT_EQ(qmConversion_internationalFootToUsFoot(1.0), 0.999998);
}

TEST(ConversionCurvature, ArcAndChordDefinitions) {
    const double arcConstant = 100.0 * 180.0 / kPi;  // D * R, about 5729.578
    for (double r : {1.0, 50.0, 50.0001, 573.0, 1e5, -300.0}) {
        const double d = qmConversion_radiusToDegree(r), chord = qmConversion_radiusToDegreeChord(r);
        EXPECT_NEAR(d * r, arcConstant, 1e-9);
        EXPECT_NEAR(qmConversion_degreeToRadius(d), r, 1e-9 * std::fabs(r));
        if (std::fabs(r) < 50.0) continue;  // no chord of 100 fits
        EXPECT_NEAR(2.0 * r * std::sin(chord * kPi / 360.0), 100.0, 1e-9);  // it subtends chord
        EXPECT_GE(std::fabs(chord), std::fabs(d));                            // chord > arc
        if (std::fabs(r) == 50.0) continue;  // asin is ill-conditioned at the half-circle
        EXPECT_NEAR(qmConversion_degreeToRadiusChord(chord), r, 1e-9 * std::fabs(r));
    }
    EXPECT_EQ(qmConversion_radiusToDegree(5e-8), 0.0);
    EXPECT_EQ(qmConversion_degreeToRadius(-5e-8), 0.0);
    EXPECT_EQ(qmConversion_radiusToDegreeChord(49.9), 0.0);
    EXPECT_NEAR(qmConversion_radiusToDegreeChord(50.0), 180.0, 1e-12);
    EXPECT_NEAR(qmConversion_radiusToDegreeChord(-50.0), -180.0, 1e-12);
    EXPECT_EQ(qmConversion_radiusToDegreeChord(NAN), 0.0);
    EXPECT_EQ(qmConversion_degreeToRadiusChord(4e-8), 0.0);
}

TEST(ConversionRounding, ModesAgainstCasesAndBruteForce) {
    const struct { double value, step; int mode; double expected; } cases[] = {
        {1.3, 1, 1, 2},    {1.3, 1, 2, 1},    {2.5, 1, 3, 3},      {-2.5, 1, 3, -2},
        {-1.3, 1, 1, -1},  {-1.3, 1, 2, -2},  {1.3, -1, 1, 2},     {7.2, 2.5, 2, 5},
        {1.3, 1, 0, 0.0},  {1.3, 1, 7, 0.0},  {2.0, 1, 0, 2.0},
        {1.3, 1e-9, 1, 1.3},                  // step below tolerance: unchanged
        {3.00000001, 1, 1, 3.00000001},       // on the grid within tolerance: v itself
        {0.49999999, 1, 3, 1},                // just below a tie counts as a tie (positive)
        {-0.50000004, 1, 3, 0},               // just beyond a tie still rounds up (negative)
        {-0.5000001, 1, 3, -1},
    };
    for (const auto& c : cases) {
        double out = 12345.0;
        EXPECT_EQ(qmConversion_roundDouble(&out, c.value, c.step, c.mode), c.expected)
            << c.value << " step " << c.step << " mode " << c.mode;
        EXPECT_EQ(out, c.expected);
    }
    // Values and steps exact in binary, so floor/ceil of v/t give the reference grid values.
    for (double t : {0.25, 2.5, 8.0}) {
        for (int k = -200; k <= 200; ++k) {
            const double v = k / 32.0, q = v / t;
            EXPECT_EQ(qmConversion_roundDouble(nullptr, v, t, 1), std::ceil(q) * t) << v;
            EXPECT_EQ(qmConversion_roundDouble(nullptr, v, t, 2), std::floor(q) * t) << v;
            EXPECT_EQ(qmConversion_roundDouble(nullptr, v, t, 3), std::floor(q + 0.5) * t) << v;
        }
    }
    double out = 0.0;  // by decimal digits
    EXPECT_NEAR(qmConversion_roundDoubleByDecimalDigits(&out, 3.14159, 2, 3), 3.14, 1e-12);
    EXPECT_NEAR(out, 3.14, 1e-12);
    EXPECT_NEAR(qmConversion_roundDoubleByDecimalDigits(nullptr, 1234.5, -2, 2), 1200.0, 1e-9);
    EXPECT_EQ(qmConversion_roundDoubleByDecimalDigits(nullptr, 1.3, INT_MAX, 1), 1.3);
    EXPECT_EQ(qmConversion_roundDoubleByDecimalDigits(nullptr, 5.0, INT_MIN, 3), 0.0);
}

TEST(ConversionDirections, AzimuthIsItsOwnInverseAndQuadrantBoundaries) {
    EXPECT_NEAR(qmConversion_azimuthToDirection(0.0), kPi / 2, 1e-15);        // north
    EXPECT_NEAR(qmConversion_azimuthToDirectionDegree(350.0), 100.0, 1e-12);
    for (double a : {0.1, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0}) {
        const double dir = qmConversion_azimuthToDirection(a), deg = a * 57.0;
        EXPECT_TRUE(dir >= 0.0 && dir < 2 * kPi) << a;
        EXPECT_NEAR(qmConversion_azimuthToDirection(dir), a, 1e-14);
        EXPECT_NEAR(qmConversion_azimuthToDirectionDegree(qmConversion_azimuthToDirectionDegree(deg)),
                    deg, 1e-11);
    }
    const struct { double direction; int quadrant; } cases[] = {
        {0.0, 1}, {-kPi / 4, 2}, {2 * kPi + kPi / 4, 1}, {kPi / 2 - 1e-7, 1},
        {kPi / 2 - 1e-8, 4}, {kPi - 1e-8, 3}, {1.5 * kPi - 1e-8, 2},  // shifted boundaries
        {2 * kPi - 1e-7, 2}, {2 * kPi - 1e-8, 0}, {NAN, 0},           // no wrap to 1
    };
    for (const auto& c : cases)
        EXPECT_EQ(qmConversion_quadrantNumber(c.direction), c.quadrant) << c.direction;
    // Bearing quadrants by azimuth: NE (0, 90), SE (90, 180), SW (180, 270), NW (270, 360).
    for (int az = 5; az < 360; az += 10)
        EXPECT_EQ(qmConversion_quadrantNumber(qmConversion_azimuthToDirection(
                      qmConversion_degreeToRadian(az))), az / 90 + 1) << az;
}

TEST(ConversionText, FormatsClampsAndWritesNothingBeyond) {
    const struct { double value; int decimals; const char* text; } cases[] = {
        {3.14159, 2, "3.14"}, {3.14159, 12, "3.14159000"}, {2.7, -1, "3"},
        {-12.345678912, 8, "-12.34567891"},
    };
    for (const auto& c : cases) {
        char buffer[32];
        std::memset(buffer, 'x', sizeof buffer);
        const int n = qmConversion_doubleToString(buffer, c.value, c.decimals);
        EXPECT_STREQ(buffer, c.text);
        EXPECT_EQ(n, static_cast<int>(std::strlen(buffer)));
        for (size_t i = static_cast<size_t>(n) + 1; i < sizeof buffer; ++i)
            ASSERT_EQ(buffer[i], 'x') << "wrote past the text of " << c.text;
    }
    char exact[QM_CONVERSION_DOUBLE_TEXT_SIZE];  // the largest text fits the size exactly
    EXPECT_EQ(qmConversion_doubleToString(exact, -DBL_MAX, 8), QM_CONVERSION_DOUBLE_TEXT_SIZE - 1);
    EXPECT_EQ(std::strlen(exact), static_cast<size_t>(QM_CONVERSION_DOUBLE_TEXT_SIZE - 1));
    EXPECT_EQ(qmConversion_doubleToString(nullptr, 1.0, 2), 0);
}

}  // namespace
