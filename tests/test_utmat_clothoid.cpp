// Clothoid points against the exact clothoid (the Fresnel integrals integrated numerically
// here), the stated series values, mirroring by the sign of A, offsets and derivatives.
#include <gtest/gtest.h>

#include <cmath>

#include "korvelbase/utmat_clothoid.h"

namespace {

// The exact clothoid: x = integral of cos(q^2 / (2 A^2)), y = sigma * integral of sin(...), by
// composite Gauss-Legendre (5 points) on many panels, in long double.
void exactClothoid(double a, double s, double& x, double& y) {
    const long double nodes[5] = {-0.9061798459386640L, -0.5384693101056831L, 0.0L, 0.5384693101056831L,
                                  0.9061798459386640L};
    const long double weights[5] = {0.2369268850561891L, 0.4786286704993665L, 0.5688888888888889L,
                                    0.4786286704993665L, 0.2369268850561891L};
    const int panels = 4000;
    const long double h = static_cast<long double>(s) / panels;
    long double sx = 0.0L, sy = 0.0L;
    for (int p = 0; p < panels; ++p) {
        const long double mid = (p + 0.5L) * h;
        for (int k = 0; k < 5; ++k) {
            const long double q = mid + nodes[k] * h / 2.0L;
            const long double t = q * q / (2.0L * a * a);
            sx += weights[k] * std::cos(t) * h / 2.0L;
            sy += weights[k] * std::sin(t) * h / 2.0L;
        }
    }
    x = static_cast<double>(sx);
    y = static_cast<double>(a > 0 ? sy : -sy);
}

double at(double a, double s, int selector, double& y) {
    double x = 0.0;
    EXPECT_EQ(qmMath_calculateSpiralPointByDistanceAndOffset(&x, &y, nullptr, nullptr, a, s, 0.0, selector), 0);
    return x;
}

// The accuracy table of the clothoid header, checked: error relative to s below each bound.
struct Accuracy {
    double upTo;
    double bound;
};

void expectWithin(int selector, double from, double step, const Accuracy* table, int rows) {
    const double a = 150.0;
    double t = from;
    for (int r = 0; r < rows; ++r) {
        for (; t <= table[r].upTo + 1e-12; t += step) {
            const double s = a * std::sqrt(2.0 * t);
            double ex, ey, y;
            exactClothoid(a, s, ex, ey);
            const double x = at(a, s, selector, y);
            EXPECT_LT(std::hypot(x - ex, y - ey) / s, table[r].bound) << "selector " << selector << " t " << t;
        }
    }
}

TEST(UtmatClothoid, NineTermSeriesAgreesWithTheExactClothoid) {
    const Accuracy nine[] = {{1.0, 1e-15}, {2.0, 2e-12}, {2.5, 1e-10}, {3.0, 2e-9}, {3.4394, 2.5e-8}};
    expectWithin(2, 0.05, 0.05, nine, 5);
}

TEST(UtmatClothoid, FourTermSeriesAndAsymptoticFormWithinTheirStatedAccuracy) {
    const Accuracy four[] = {{0.5, 7e-9}, {1.0, 1.6e-6}, {2.0, 3.8e-4}, {3.0, 9.5e-3}};
    expectWithin(1, 0.1, 0.1, four, 4);
    const Accuracy asymptotic[] = {{4.0, 3.2e-3}, {20.0, 2.8e-3}};
    expectWithin(2, 3.45, 0.5, asymptotic, 2);
}

TEST(UtmatClothoid, StatedValuesMirroringOffsetsAndFailures) {
    // Selector 1 at u = 1.
    const double a = 10.0;
    double y = 0.0;
    const double x = at(a, a * std::sqrt(2.0), 1, y);
    EXPECT_DOUBLE_EQ(x, std::sqrt(2.0) * a * (1 - 0.1 + 0.004629629629629629 - 0.00010683760683760684));
    // Any selector but 2 is the four-term series.
    double y7 = 0.0;
    EXPECT_EQ(at(a, 13.0, 7, y7), at(a, 13.0, 1, y));
    // A negative A mirrors y and the tangent's y.
    double px, py, tx, ty, nx, ny, ntx, nty;
    qmMath_calculateSpiralPointByDistanceAndOffset(&px, &py, &tx, &ty, 60.0, 45.0, 0.0, 2);
    qmMath_calculateSpiralPointByDistanceAndOffset(&nx, &ny, &ntx, &nty, -60.0, 45.0, 0.0, 2);
    EXPECT_EQ(nx, px);
    EXPECT_EQ(ny, -py);
    EXPECT_EQ(ntx, tx);
    EXPECT_EQ(nty, -ty);
    // An offset of 1 at the origin is (0, -1); offsets are perpendicular to the tangent.
    qmMath_calculateSpiralPointByDistanceAndOffset(&px, &py, nullptr, nullptr, 60.0, 0.0, 1.0, 2);
    EXPECT_EQ(px, 0.0);
    EXPECT_EQ(py, -1.0);
    double ox, oy;
    qmMath_calculateSpiralPointByDistanceAndOffset(&px, &py, &tx, &ty, 60.0, 45.0, 0.0, 2);
    qmMath_calculateSpiralPointByDistanceAndOffset(&ox, &oy, nullptr, nullptr, 60.0, 45.0, 2.5, 2);
    EXPECT_NEAR(std::hypot(ox - px, oy - py), 2.5, 1e-12);
    EXPECT_NEAR((ox - px) * tx + (oy - py) * ty, 0.0, 1e-12);
    EXPECT_EQ(qmMath_calculateSpiralPointByDistanceAndOffset(&px, &py, nullptr, nullptr, 0.0, 5.0, 0.0, 2), ERR_FAILURE);
    // The kernel entry uses the kernel's selector and reports A = 0 through the error word.
    Point2d point, tangent;
    UTMAT_SetVelmoranSpiralFormula();
    EXPECT_EQ(vmrUtmat_CalculateSpiralPointAtDistance(60.0, 45.0, 0.0, &point, &tangent), 0u);
    EXPECT_EQ(point.x, px);
    Point2d again, againTangent;
    EXPECT_EQ(UTMAT_CalculerPosPointArcClotAbscisse(60.0, 45.0, 0.0, &again, &againTangent), &againTangent);
    EXPECT_TRUE(again.x == point.x && again.y == point.y && againTangent.x == tangent.x);
    EXPECT_EQ(vmrUtmat_CalculateSpiralPointAtDistance(0.0, 45.0, 0.0, &point, &tangent), uint32_t{ERR_FAILURE});
}

TEST(UtmatClothoid, DerivativesMatchDifferencesOfThePoint) {
    UTMAT_SetVelmoranSpiralFormula();
    const double a = 70.0;
    for (const double s : {10.0, 40.0, 90.0}) {
        Point2d first, second;
        UTMAT_CalculerDeriveePremEtSecClot(a, s, &first, &second);
        // d/du = sqrt(2)|A| d/ds; central differences of the point in u.
        const double h = 1e-4, du = h / (std::sqrt(2.0) * a);
        double x0, y0, x1, y1, xm, ym;
        qmMath_calculateSpiralPointByDistanceAndOffset(&x0, &y0, nullptr, nullptr, a, s, 0, 2);
        qmMath_calculateSpiralPointByDistanceAndOffset(&x1, &y1, nullptr, nullptr, a, s + h, 0, 2);
        qmMath_calculateSpiralPointByDistanceAndOffset(&xm, &ym, nullptr, nullptr, a, s - h, 0, 2);
        EXPECT_NEAR(first.x, (x1 - xm) / (2 * du), 1e-5 * a);
        EXPECT_NEAR(first.y, (y1 - ym) / (2 * du), 1e-5 * a);
        EXPECT_NEAR(second.x, (x1 - 2 * x0 + xm) / (du * du), 1e-3 * a);
        EXPECT_NEAR(second.y, (y1 - 2 * y0 + ym) / (du * du), 1e-3 * a);
    }
}

// ---------------------------------------------------------------------------------------------
// Relations between clothoid quantities.

uint32_t kernelError() {
    uint32_t error = 0, detail = 0;
    UTMAT_GetErreur(&error, &detail);
    return error;
}

struct Related {
    double value;
    int valid;
    uint32_t error;
};

Related relation(int code, double p1, double p2) {
    Related r{-1.0, -1, 0};
    UTMAT_CalculerParametreClotValide(code, p1, p2, &r.value, &r.valid);
    r.error = kernelError();
    return r;
}

double related(int code, double p1, double p2) {
    const Related r = relation(code, p1, p2);
    EXPECT_EQ(r.valid, 1) << "code " << code;
    EXPECT_EQ(r.error, 0u) << "code " << code;
    return r.value;
}

// The shift of the circle of curvature at L, from the exact clothoid: the centre lies R to the
// left of the point, across the tangent (cos t, sin t).
double exactShift(double a, double length) {
    double x, y;
    exactClothoid(a, length, x, y);
    const double r = a * a / length, t = length * length / (2 * a * a);
    return std::fabs(y + r * std::cos(t) - r);
}

TEST(UtmatClothoidRelations, DirectRelationsAreConsistentOnOneClothoid) {
    UTMAT_SetVelmoranSpiralFormula();
    const double a = 150.0, length = 80.0;
    const double radius = a * a / length, deflection = length * length / (2 * a * a);
    EXPECT_DOUBLE_EQ(related(1, 100.0, 400.0), 200.0);
    EXPECT_NEAR(related(1, radius, length), a, 1e-12 * a);
    EXPECT_NEAR(related(2, length, deflection), a, 1e-12 * a);
    EXPECT_NEAR(related(4, radius, deflection), a, 1e-12 * a);
    EXPECT_NEAR(related(7, a, radius), length, 1e-12 * length);
    EXPECT_NEAR(related(8, a, deflection), length, 1e-12 * length);
    EXPECT_NEAR(related(11, a, length), radius, 1e-12 * radius);
    EXPECT_NEAR(related(12, a, deflection), radius, 1e-12 * radius);
    EXPECT_NEAR(related(14, a, length), deflection, 1e-14);
    EXPECT_NEAR(related(15, a, radius), deflection, 1e-14);
    // Signs are dropped: a right-turning clothoid has the same lengths.
    EXPECT_NEAR(related(11, -a, -length), radius, 1e-12 * radius);
    // The three forms of the shift agree with the exact clothoid (and with L^2 / (24 R) to
    // first order).
    const double shift = exactShift(a, length);
    EXPECT_NEAR(related(17, a, length), shift, 1e-10 * shift);
    EXPECT_NEAR(related(18, a, radius), shift, 1e-9 * shift);
    EXPECT_NEAR(related(19, a, deflection), shift, 1e-9 * shift);
    EXPECT_NEAR(shift, length * length / (24 * radius), 1e-2 * shift);
}

TEST(UtmatClothoidRelations, RefusalsComeBeforeZeroOutputsAndUnknownCodesFail) {
    UTMAT_SetVelmoranSpiralFormula();
    // Output 0 accepted for a zero second input where the result is 0 or infinite.
    for (const int code : {3, 5, 6, 7, 9, 11, 12, 13, 15, 16, 17, 18, 19}) {
        const Related r = relation(code, 200.0, 0.0);
        EXPECT_EQ(r.valid, 1) << code;
        EXPECT_EQ(r.value, 0.0) << code;
    }
    // A zero first input is refused first, even where a zero second input would give 0.
    for (const int code : {1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17, 18, 19}) {
        const Related r = relation(code, 0.0, 0.0);
        EXPECT_EQ(r.valid, 0) << code;
        EXPECT_EQ(r.value, 0.0) << code;
        EXPECT_EQ(r.error, 0u) << code;
        double value = -1.0;
        UTMAT_CalculerParametreClot(code, 0.0, 0.0, &value);
        EXPECT_EQ(kernelError(), uint32_t{ERR_FAILURE}) << code;
        EXPECT_EQ(value, 0.0);
    }
    // Relations that need both inputs refuse a zero second one.
    for (const int code : {1, 2, 4}) EXPECT_EQ(relation(code, 10.0, 0.0).valid, 0);
    // Codes outside the table fail in both forms.
    for (const int code : {0, 10, 20, -3}) {
        const Related r = relation(code, 10.0, 20.0);
        EXPECT_EQ(r.valid, 0);
        EXPECT_EQ(r.error, uint32_t{ERR_FAILURE});
    }
    UTMAT_CalculerParametreClot(1, 1.0, 1.0, nullptr);
    EXPECT_EQ(kernelError(), uint32_t{ERR_FAILURE});
}

TEST(UtmatClothoidRelations, ShiftInversionsRecoverTheQuantitiesThatMadeTheShift) {
    for (const int selector : {1, 2}) {
        selector == 1 ? UTMAT_SetTarnakSpiralFormula() : UTMAT_SetVelmoranSpiralFormula();
        for (const double a : {35.0, 150.0, 900.0}) {
            for (const double deflection : {0.01, 0.3, 1.2, 2.5, 3.1}) {
                const double length = a * std::sqrt(2 * deflection), radius = a * a / length;
                const double shift = related(17, a, length);
                EXPECT_NEAR(related(3, length, shift), a, 1e-9 * a) << selector << " " << deflection;
                EXPECT_NEAR(related(5, a, shift), length, 1e-9 * length);
                EXPECT_NEAR(related(6, radius, shift), length, 1e-9 * length);
                EXPECT_NEAR(related(9, a, shift), radius, 1e-9 * radius);
                EXPECT_NEAR(related(13, a, shift), deflection, 1e-9 * deflection);
                EXPECT_NEAR(related(16, radius, shift), deflection, 1e-9 * deflection);
            }
        }
        // A shift that no deflection up to half a turn reaches is refused, without error.
        const Related beyond = relation(5, 10.0, 10.0);
        EXPECT_EQ(beyond.valid, 0);
        EXPECT_EQ(beyond.error, 0u);
    }
    UTMAT_SetVelmoranSpiralFormula();
}

TEST(UtmatClothoidRelations, ShiftRatiosGrowWithTheDeflectionUnderBothFormulas) {
    // The bisection of the inversions rests on this.
    for (const int selector : {1, 2}) {
        selector == 1 ? UTMAT_SetTarnakSpiralFormula() : UTMAT_SetVelmoranSpiralFormula();
        double previous[3] = {0.0, 0.0, 0.0};
        for (double t = 0.002; t <= 3.1416; t += 0.002) {
            const double shift = related(19, 1.0, t), length = std::sqrt(2 * t), radius = 1.0 / length;
            const double ratios[3] = {shift, shift / length, shift / radius};
            for (int k = 0; k < 3; ++k) {
                EXPECT_GT(ratios[k], previous[k]) << "selector " << selector << " t " << t << " ratio " << k;
                previous[k] = ratios[k];
            }
        }
    }
    UTMAT_SetVelmoranSpiralFormula();
}

// ---------------------------------------------------------------------------------------------
// Tangent differences of offset curves, against a walk along the offset curve itself.

// The base abscissa at which the offset curve point(sigma) has run `distance`, by summing
// chords of a fine walk.
template <typename OffsetPoint>
double baseAbscissaAtOffsetDistance(OffsetPoint offsetPoint, double distance) {
    const double step = 1e-3;
    double sigma = 0.0, run = 0.0;
    Point2d previous = offsetPoint(0.0);
    for (;;) {
        const Point2d next = offsetPoint(sigma + step);
        const double chord = std::hypot(next.x - previous.x, next.y - previous.y);
        if (run + chord >= distance) return sigma + step * (distance - run) / chord;
        run += chord;
        sigma += step;
        previous = next;
    }
}

TEST(UtmatClothoidRelations, TangentDifferencesFollowTheOffsetCurve) {
    UTMAT_SetVelmoranSpiralFormula();
    for (const double a : {60.0, -60.0}) {
        for (const double offset : {3.5, -3.5}) {
            const double s = 70.0;
            auto offsetPoint = [&](double sigma) {
                double x, y;
                qmMath_calculateSpiralPointByDistanceAndOffset(&x, &y, nullptr, nullptr, a, sigma, offset, 2);
                return Point2d{x, y};
            };
            const double sigma = baseAbscissaAtOffsetDistance(offsetPoint, s);
            const double sign = a > 0 ? 1.0 : -1.0;
            const double expected = sign * (s * s - sigma * sigma) / (2 * a * a);
            double difference = 0.0;
            UTMAT_CalculerDifferenceTgArcClotTgOffClt(a, s, offset, &difference);
            EXPECT_EQ(kernelError(), 0u);
            EXPECT_NEAR(difference, expected, 1e-6) << a << " " << offset;
            // An offset to the right turns less to the left (outside a left bend, inside a
            // right one).
            EXPECT_EQ(difference > 0, offset > 0);
        }
    }
    for (const double radius : {250.0, -250.0}) {
        const double offset = 7.0, s = 120.0;
        // The offset arc about the same centre, radius R + offset, from (0, -offset).
        auto offsetPoint = [&](double sigma) {
            const double angle = sigma / radius;
            return Point2d{(radius + offset) * std::sin(angle), radius - (radius + offset) * std::cos(angle)};
        };
        const double sigma = baseAbscissaAtOffsetDistance(offsetPoint, s);
        double difference = 0.0;
        UTMAT_CalculerDifferenceTgArcCerTgOffCer(radius, s, offset, &difference);
        EXPECT_NEAR(difference, (s - sigma) / radius, 1e-7) << radius;
    }
    double difference = 5.0;
    UTMAT_CalculerDifferenceTgArcCerTgOffCer(0.0, 10.0, 2.0, &difference);
    EXPECT_EQ(difference, 0.0);
    EXPECT_EQ(kernelError(), 0u);
    // An offset past the centre, or an offset clothoid run past its cusp, has no tangent.
    UTMAT_CalculerDifferenceTgArcCerTgOffCer(100.0, 10.0, -100.0, &difference);
    EXPECT_EQ(kernelError(), uint32_t{ERR_FAILURE});
    UTMAT_CalculerDifferenceTgArcClotTgOffClt(60.0, 400.0, -20.0, &difference);
    EXPECT_EQ(kernelError(), uint32_t{ERR_FAILURE});
    UTMAT_CalculerDifferenceTgArcClotTgOffClt(0.0, 10.0, 1.0, &difference);
    EXPECT_EQ(kernelError(), uint32_t{ERR_FAILURE});
}

}  // namespace
