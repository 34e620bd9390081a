// Geometry kernel: angles, frames, factorials, interpolation, the quadratic solver, 4x4 matrices.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>

#include "korvelbase/constants.h"
#include "korvelbase/utmat.h"

namespace {

constexpr uint32_t kFailure = ERR_FAILURE;

uint32_t errorWord() { uint32_t e = 0xFFFF; UTMAT_GetErreur(&e, nullptr); return e; }

}  // namespace

TEST(UtmatAngles, NormalisationModesAndSweeps) {
    const double pi = dc_pi, twoPi = dc_2pi;
    EXPECT_EQ(UTMAT_NormaliserAngle(0, -pi), pi);
    EXPECT_EQ(UTMAT_NormaliserAngle(2, 7.0), twoPi);
    EXPECT_EQ(UTMAT_NormaliserAngle(2, -7.0), -twoPi);
    EXPECT_EQ(UTMAT_NormaliserAngle(3, 123.0), 123.0);
    EXPECT_EQ(errorWord(), kFailure);
    // Reduced angles stay in range and point the same way as the input.
    for (double a = -40.0; a <= 40.0; a += 0.37) {
        const double full = UTMAT_NormaliserAngle(1, a), half = UTMAT_NormaliserAngle(0, a);
        EXPECT_TRUE(full >= 0.0 && full < twoPi && half > -pi && half <= pi) << a;
        EXPECT_NEAR(std::cos(full) + std::cos(half), 2 * std::cos(a), 1e-12);
        EXPECT_NEAR(std::sin(full) + std::sin(half), 2 * std::sin(a), 1e-12);
    }
    const Point2d c{2, 3}, east{5, 3}, north{2, 7};
    EXPECT_NEAR(UTMAT_CalculerAngleAuCentre(&c, &east, &north, 1), dc_piover2, 1e-15);
    EXPECT_NEAR(UTMAT_CalculerAngleAuCentre(&c, &east, &north, 0), -3 * dc_piover2, 1e-15);
    EXPECT_EQ(UTMAT_CalculerAngleAuCentre(&c, &east, &east, 1), 0.0);
    EXPECT_EQ(UTMAT_CalculerAngleAuCentre(&c, &east, &east, 0), -dc_2pi);
    EXPECT_EQ(UTMAT_CalculerAngleAuCentre(&c, &c, &east, 1), 0.0);
    EXPECT_EQ(errorWord(), kFailure);
    EXPECT_NEAR(UTMAT_CalculerAnglePtOffsetAngle(&east, &c, dc_piover2, 1), 3 * dc_piover2, 1e-15);
    EXPECT_NEAR(UTMAT_CalculerAnglePtOffsetAngle(&east, &c, dc_piover2, 0), -dc_piover2, 1e-15);
}

// Random vectors: the angle turns v1 onto v2, the bisector halves it, frames round trip.
TEST(UtmatAngles, AnglesBisectorsAndFramesOnRandomVectors) {
    std::mt19937 engine(3);
    std::uniform_real_distribution<double> coordinate(-10.0, 10.0), angle(-7.0, 7.0);
    for (int i = 0; i < 100; ++i) {
        const Point2d v1{coordinate(engine), coordinate(engine)}, v2{coordinate(engine), coordinate(engine)};
        const double t = UTMAT_CalculerAngleV1V2(&v1, &v2);
        ASSERT_TRUE(t >= 0.0 && t < dc_2pi);
        EXPECT_NEAR(std::remainder(std::atan2(v1.y, v1.x) + t - std::atan2(v2.y, v2.x), dc_2pi),
                    0.0, 1e-9);
        // Lines along v1 and v2 (normal = direction turned clockwise) give the same angle.
        const UtDroite d1{v1.y, -v1.x, 0.0}, d2{v2.y, -v2.x, 1.0};
        double lineAngle = -1.0;
        UTMAT_CalculerAngleD1D2(&d1, &d2, &lineAngle);
        EXPECT_NEAR(lineAngle, t, 1e-12);
        Point2d bis{};
        UTMAT_CalculerBissectriceV1V2(&v1, &v2, &bis);
        EXPECT_NEAR(std::hypot(bis.x, bis.y), 1.0, 1e-12);
        EXPECT_NEAR(UTMAT_CalculerAngleV1V2(&v1, &bis), t / 2, 1e-6);
        const double r = angle(engine);  // v1 seen from a frame at origin v2 turned by r
        Point2d local{}, origin{};
        UTMAT_ChangerRepere(&v1, &v2, r, &local);
        EXPECT_NEAR(local.x, (v1.x - v2.x) * std::cos(r) + (v1.y - v2.y) * std::sin(r), 1e-12);
        UTMAT_CalculerCentreRepere2(&v1, &local, r, &origin);
        EXPECT_NEAR(std::hypot(origin.x - v2.x, origin.y - v2.y), 0.0, 1e-12);
        Point2d back = local;
        EXPECT_EQ(UTMAT_CalculerPointTranslationRotation(&v2, r, &back), &back);
        EXPECT_NEAR(std::hypot(back.x - v1.x, back.y - v1.y), 0.0, 1e-12);
    }
    const Point2d a{2, 0}, same{5, 0}, opposite{-1, 0};
    Point2d bis{}, quarter{};  // opposite vectors: a quarter turn counter-clockwise
    UTMAT_CalculerBissectriceV1V2(&a, &same, &bis);
    UTMAT_CalculerBissectriceV1V2(&a, &opposite, &quarter);
    EXPECT_TRUE(bis.x == 1.0 && bis.y == 0.0 && quarter.x == 0.0 && quarter.y == 1.0);
}

TEST(UtmatNumbers, FactorialsInterpolationAndQuadraticRoots) {
    EXPECT_EQ(UTMAT_FactorielleDivision(2, 5), 1.0);
    EXPECT_EQ(errorWord(), kFailure);
    EXPECT_EQ(UTMAT_DFactorielle(0), 1.0);
    for (int n = 1; n <= 20; ++n)
        for (int m = 0; m <= n; ++m)
            EXPECT_EQ(UTMAT_FactorielleDivision(n, m) * UTMAT_DFactorielle(m), UTMAT_DFactorielle(n));
    EXPECT_TRUE(std::isfinite(UTMAT_DFactorielle(170)) && std::isinf(UTMAT_DFactorielle(171)));
    EXPECT_TRUE(std::isinf(UTMAT_FactorielleDivision(INT_MAX, 0)));  // stops once settled
    EXPECT_EQ(UTMAT_CalculerInterpolationLineaire(1, 2, 10, 20), 10.0);  // reversed guard
    EXPECT_EQ(errorWord(), 0u);
    // Interpolates only when |T| is tiny against t.
    EXPECT_DOUBLE_EQ(UTMAT_CalculerInterpolationLineaire(2.0, 1e-39, 10, 20), 2e39 * 10 + 10);

    // Quadratics: fixed special cases, then random roots that must vanish and come in order.
    const struct { double a, b, c; int count; double r0, r1; } cases[] = {
        {1, -3, 2, 2, 2.0, 1.0}, {1, 3, 2, 2, -2.0, -1.0}, {1, -2, 1, 1, 1.0, 0},
        {1, 0, 1, 0, 0, 0},      {0, 4, -2, 1, 0.5, 0},    {0, 0, 1, 0, 0, 0},
    };
    double roots[2];
    int count = -1;
    for (const auto& k : cases) {
        UTMAT_ResoudreEquation2Degre(k.a, k.b, k.c, 0, roots, &count);
        ASSERT_EQ(count, k.count) << k.a << " " << k.b << " " << k.c;
        for (int r = 0; r < count; ++r) EXPECT_EQ(roots[r], r == 0 ? k.r0 : k.r1);
    }
    UTMAT_ResoudreEquation2Degre(1, 1, 1, 0, roots, nullptr);
    EXPECT_EQ(errorWord(), kFailure);
    std::mt19937 engine(17);
    std::uniform_real_distribution<double> root(-1e3, 1e3), lead(0.1, 10.0);
    for (int i = 0; i < 100; ++i) {
        const double r1 = root(engine), r2 = root(engine), a = lead(engine);
        const double b = -a * (r1 + r2), c = a * r1 * r2;
        UTMAT_ResoudreEquation2Degre(a, b, c, 0, roots, &count);
        ASSERT_EQ(count, 2);
        for (double x : roots)
            EXPECT_NEAR(a * x * x + b * x + c, 0.0, 1e-13 * (a * x * x + std::fabs(b * x) + std::fabs(c)));
        // First the root of larger magnitude, on the side opposite to the sign of b.
        EXPECT_GE(std::fabs(roots[0]), std::fabs(roots[1]) * (1 - 1e-12));
        EXPECT_LE(roots[0] * b, 0.0);
    }
}

TEST(UtmatMatrices, ProductAgreesWithSuccessiveTransforms) {
    UtMatrice4D id{}, a{}, b{}, product{}, copy{};
    UTMAT_RecupererMatriceIdentite4D(&id);
    for (int k = 0; k < 16; ++k) a.m[k] = k + 1, b.m[k] = (k % 5) - 2.0;
    UTMAT_CalculerProduitMatrice4D(&a, &b, &product);
    const double p[4] = {1.5, -2.0, 0.25, 1.0}, q[4] = {1, 2, 3, 2};
    double bp[4], abp[4], direct[4];
    UTMAT_TransformerPointParMatrice4D(p, &b, bp);
    UTMAT_TransformerPointParMatrice4D(bp, &a, abp);
    UTMAT_TransformerPointParMatrice4D(p, &product, direct);
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(direct[i], abp[i], 1e-12);
    UTMAT_CopierMatrice4D(&a, &copy);
    UTMAT_CalculerProduitMatrice4D(&copy, &b, &copy);  // aliasing the output is harmless
    EXPECT_EQ(std::memcmp(&copy, &product, sizeof copy), 0);
    id.m[3] = 10.0;  // x += 10 w, no division by w afterwards
    UTMAT_TransformerPointParMatrice4D(q, &id, direct);
    EXPECT_TRUE(direct[0] == 21.0 && direct[3] == 2.0);
}
