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

}  // namespace
