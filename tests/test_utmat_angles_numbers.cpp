// Geometry kernel: angles, frames, factorials, interpolation, the quadratic solver and 4x4
// matrices.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <random>

#include "korvelbase/constants.h"
#include "korvelbase/utmat.h"

namespace {

uint32_t errorWord() {
    uint32_t error = 0xFFFF;
    UTMAT_GetErreur(&error, nullptr);
    return error;
}

constexpr uint32_t kFailure = ERR_FAILURE;

Point2d rotate(const Point2d& v, double t) {
    return {v.x * std::cos(t) - v.y * std::sin(t), v.x * std::sin(t) + v.y * std::cos(t)};
}

}  // namespace

TEST(UtmatAngles, NormalisationModes) {
    const double pi = dc_pi, twoPi = dc_2pi;
    EXPECT_NEAR(UTMAT_NormaliserAngle(0, 3 * pi / 2), -pi / 2, 1e-15);
    EXPECT_EQ(UTMAT_NormaliserAngle(0, -pi), pi);
    EXPECT_EQ(UTMAT_NormaliserAngle(0, pi), pi);
    EXPECT_NEAR(UTMAT_NormaliserAngle(1, -0.5), twoPi - 0.5, 1e-15);
    EXPECT_EQ(UTMAT_NormaliserAngle(2, 7.0), twoPi);
    EXPECT_EQ(UTMAT_NormaliserAngle(2, -7.0), -twoPi);
    EXPECT_EQ(UTMAT_NormaliserAngle(2, 5.0), 5.0);
    EXPECT_EQ(UTMAT_NormaliserAngle(3, 123.0), 123.0);
    EXPECT_EQ(errorWord(), kFailure);

    // The reduced angle stays in range and differs from the input by whole turns.
    for (double a = -40.0; a <= 40.0; a += 0.37) {
        const double full = UTMAT_NormaliserAngle(1, a);
        const double half = UTMAT_NormaliserAngle(0, a);
        EXPECT_EQ(errorWord(), 0u);
        EXPECT_GE(full, 0.0);
        EXPECT_LT(full, twoPi);
        EXPECT_GT(half, -pi);
        EXPECT_LE(half, pi);
        const double turns = (a - full) / twoPi;
        EXPECT_NEAR(turns, std::round(turns), 1e-12);
        EXPECT_NEAR(std::cos(half), std::cos(a), 1e-12);
        EXPECT_NEAR(std::sin(half), std::sin(a), 1e-12);
    }
}

TEST(UtmatAngles, SweepsAroundCentreAndFromReference) {
    const Point2d c{2, 3}, east{5, 3}, north{2, 7};
    EXPECT_NEAR(UTMAT_CalculerAngleAuCentre(&c, &east, &north, 1), dc_piover2, 1e-15);
    EXPECT_NEAR(UTMAT_CalculerAngleAuCentre(&c, &east, &north, 0), -3 * dc_piover2, 1e-15);
    EXPECT_NEAR(UTMAT_CalculerAngleAuCentre(&c, &north, &east, 1), 3 * dc_piover2, 1e-15);
    EXPECT_EQ(UTMAT_CalculerAngleAuCentre(&c, &east, &east, 1), 0.0);
    EXPECT_EQ(UTMAT_CalculerAngleAuCentre(&c, &east, &east, 0), -dc_2pi);
    EXPECT_EQ(UTMAT_CalculerAngleAuCentre(&c, &c, &east, 1), 0.0);
    EXPECT_EQ(errorWord(), kFailure);

    EXPECT_NEAR(UTMAT_CalculerAnglePtOffsetAngle(&north, &c, 0.0, 1), dc_piover2, 1e-15);
    EXPECT_NEAR(UTMAT_CalculerAnglePtOffsetAngle(&east, &c, dc_piover2, 1), 3 * dc_piover2, 1e-15);
    EXPECT_NEAR(UTMAT_CalculerAnglePtOffsetAngle(&east, &c, dc_piover2, 0), -dc_piover2, 1e-15);
    EXPECT_EQ(errorWord(), 0u);
}

TEST(UtmatAngles, AngleBetweenVectorsTurnsV1OntoV2) {
    const Point2d ex{1, 0}, down{0, -1};
    EXPECT_NEAR(UTMAT_CalculerAngleV1V2(&ex, &down), 3 * dc_pi / 2, 1e-15);
    std::mt19937 engine(3);
    std::uniform_real_distribution<double> coord(-10.0, 10.0);
    for (int i = 0; i < 300; ++i) {
        const Point2d v1{coord(engine), coord(engine)}, v2{coord(engine), coord(engine)};
        const double t = UTMAT_CalculerAngleV1V2(&v1, &v2);
        EXPECT_GE(t, 0.0);
        EXPECT_LT(t, dc_2pi);
        const Point2d turned = rotate(v1, t);
        // v1 turned by t points along v2.
        EXPECT_NEAR(turned.x * v2.y - turned.y * v2.x, 0.0, 1e-9 * std::hypot(v1.x, v1.y) *
                                                               std::hypot(v2.x, v2.y));
        EXPECT_GT(turned.x * v2.x + turned.y * v2.y, 0.0);

        // Lines along v1 and v2 (normal = direction turned clockwise) give the same angle.
        const UtDroite d1{v1.y, -v1.x, 0.0}, d2{v2.y, -v2.x, 1.0};
        double lineAngle = -1.0;
        UTMAT_CalculerAngleD1D2(&d1, &d2, &lineAngle);
        EXPECT_NEAR(lineAngle, t, 1e-12);
    }
}

TEST(UtmatAngles, BisectorOfTwoVectors) {
    std::mt19937 engine(5);
    std::uniform_real_distribution<double> angle(0.0, 2 * M_PI);
    for (int i = 0; i < 200; ++i) {
        const double t1 = angle(engine), t2 = angle(engine);
        const Point2d v1{3 * std::cos(t1), 3 * std::sin(t1)}, v2{0.5 * std::cos(t2), 0.5 * std::sin(t2)};
        if (std::fabs(std::sin(t2 - t1)) < 1e-3) continue;
        Point2d bis{};
        UTMAT_CalculerBissectriceV1V2(&v1, &v2, &bis);
        EXPECT_NEAR(std::hypot(bis.x, bis.y), 1.0, 1e-12);
        // The bisector halves the counter-clockwise sweep from v1 to v2.
        const double toBis = UTMAT_CalculerAngleV1V2(&v1, &bis);
        const double toV2 = UTMAT_CalculerAngleV1V2(&v1, &v2);
        EXPECT_NEAR(toBis, toV2 / 2, 1e-9);
    }
    const Point2d a{2, 0}, same{5, 0}, opposite{-1, 0};
    Point2d bis{};
    UTMAT_CalculerBissectriceV1V2(&a, &same, &bis);
    EXPECT_EQ(bis.x, 1.0);
    EXPECT_EQ(bis.y, 0.0);
    UTMAT_CalculerBissectriceV1V2(&a, &opposite, &bis);
    EXPECT_EQ(bis.x, -0.0);
    EXPECT_EQ(bis.y, 1.0);  // quarter turn counter-clockwise
}

TEST(UtmatFrames, ChangesOfFrameRoundTrip) {
    std::mt19937 engine(11);
    std::uniform_real_distribution<double> coord(-500.0, 500.0), angle(-7.0, 7.0);
    for (int i = 0; i < 200; ++i) {
        const Point2d p{coord(engine), coord(engine)}, o{coord(engine), coord(engine)};
        const double t = angle(engine);
        Point2d local{};
        UTMAT_ChangerRepere(&p, &o, t, &local);
        EXPECT_NEAR(std::hypot(local.x, local.y), std::hypot(p.x - o.x, p.y - o.y), 1e-9);
        Point2d origin{};
        UTMAT_CalculerCentreRepere2(&p, &local, t, &origin);
        EXPECT_NEAR(origin.x, o.x, 1e-9);
        EXPECT_NEAR(origin.y, o.y, 1e-9);
        Point2d back = local;
        EXPECT_EQ(UTMAT_CalculerPointTranslationRotation(&o, t, &back), &back);
        EXPECT_NEAR(back.x, p.x, 1e-9);
        EXPECT_NEAR(back.y, p.y, 1e-9);
    }
    // A point on the frame's x axis has local y = 0.
    const Point2d o{1, 1}, onAxis{1 + std::cos(0.3) * 4, 1 + std::sin(0.3) * 4};
    Point2d local{};
    UTMAT_ChangerRepere(&onAxis, &o, 0.3, &local);
    EXPECT_NEAR(local.x, 4.0, 1e-12);
    EXPECT_NEAR(local.y, 0.0, 1e-12);
}

TEST(UtmatNumbers, FactorialsAndInterpolation) {
    EXPECT_EQ(UTMAT_FactorielleDivision(5, 2), 60.0);
    EXPECT_EQ(UTMAT_FactorielleDivision(4, 4), 1.0);
    EXPECT_EQ(UTMAT_FactorielleDivision(2, 5), 1.0);
    EXPECT_EQ(errorWord(), kFailure);
    EXPECT_EQ(UTMAT_DFactorielle(0), 1.0);
    EXPECT_EQ(UTMAT_DFactorielle(-3), 1.0);
    for (int n = 1; n <= 20; ++n) {
        EXPECT_EQ(UTMAT_DFactorielle(n), n * UTMAT_DFactorielle(n - 1));
        for (int m = 0; m <= n; ++m)
            EXPECT_EQ(UTMAT_FactorielleDivision(n, m) * UTMAT_DFactorielle(m), UTMAT_DFactorielle(n));
    }
    EXPECT_TRUE(std::isfinite(UTMAT_DFactorielle(170)));
    EXPECT_TRUE(std::isinf(UTMAT_DFactorielle(171)));
    EXPECT_TRUE(std::isinf(UTMAT_FactorielleDivision(INT_MAX, 0)));  // stops once settled

    EXPECT_EQ(UTMAT_CalculerInterpolationLineaire(1, 2, 10, 20), 10.0);  // reversed guard
    EXPECT_EQ(errorWord(), 0u);
    // Interpolates only when |T| is tiny against t.
    EXPECT_DOUBLE_EQ(UTMAT_CalculerInterpolationLineaire(2.0, 1e-39, 10, 20), 2e39 * 10 + 10);
}

TEST(UtmatNumbers, QuadraticRootsVanishAndComeInOrder) {
    double roots[2] = {0, 0};
    int count = -1;
    UTMAT_ResoudreEquation2Degre(1, -3, 2, 0, roots, &count);
    ASSERT_EQ(count, 2);
    EXPECT_EQ(roots[0], 2.0);
    EXPECT_EQ(roots[1], 1.0);
    UTMAT_ResoudreEquation2Degre(1, 3, 2, 0, roots, &count);
    ASSERT_EQ(count, 2);
    EXPECT_EQ(roots[0], -2.0);
    EXPECT_EQ(roots[1], -1.0);
    UTMAT_ResoudreEquation2Degre(1, -2, 1, 0, roots, &count);
    ASSERT_EQ(count, 1);
    EXPECT_EQ(roots[0], 1.0);
    UTMAT_ResoudreEquation2Degre(1, 0, 1, 0, roots, &count);
    EXPECT_EQ(count, 0);
    UTMAT_ResoudreEquation2Degre(0, 4, -2, 0, roots, &count);
    ASSERT_EQ(count, 1);
    EXPECT_EQ(roots[0], 0.5);
    UTMAT_ResoudreEquation2Degre(0, 0, 1, 0, roots, &count);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(errorWord(), 0u);
    UTMAT_ResoudreEquation2Degre(1, 1, 1, 0, roots, nullptr);
    EXPECT_EQ(errorWord(), kFailure);

    std::mt19937 engine(17);
    std::uniform_real_distribution<double> root(-1e3, 1e3), lead(0.1, 10.0);
    for (int i = 0; i < 500; ++i) {
        const double r1 = root(engine), r2 = root(engine), a = lead(engine);
        if (std::fabs(r1 - r2) < 1e-2) continue;
        const double b = -a * (r1 + r2), c = a * r1 * r2;
        UTMAT_ResoudreEquation2Degre(a, b, c, 0, roots, &count);
        ASSERT_EQ(count, 2);
        for (double x : roots) {
            const double scale = std::fabs(a * x * x) + std::fabs(b * x) + std::fabs(c);
            EXPECT_NEAR(a * x * x + b * x + c, 0.0, 1e-13 * scale);
        }
        // The first root is the one of larger magnitude, on the side opposite to the sign of b.
        EXPECT_GE(std::fabs(roots[0]), std::fabs(roots[1]) * (1 - 1e-12));
        if (b > 0) {
            EXPECT_LT(roots[0], 0.0);
        } else if (b < 0) {
            EXPECT_GT(roots[0], 0.0);
        }
    }
}

TEST(UtmatMatrices, ProductIdentityAndPointTransform) {
    UtMatrice4D id{}, a{}, b{}, product{};
    UTMAT_RecupererMatriceIdentite4D(&id);
    for (int k = 0; k < 16; ++k) {
        a.m[k] = k + 1;
        b.m[k] = (k % 5) - 2.0;
    }
    UTMAT_CalculerProduitMatrice4D(&id, &a, &product);
    for (int k = 0; k < 16; ++k) EXPECT_EQ(product.m[k], a.m[k]);
    UTMAT_CalculerProduitMatrice4D(&a, &b, &product);
    // Row 0 of a is 1 2 3 4; column 0 of b is -2 2 1 0 (entries 0, 4, 8, 12).
    EXPECT_EQ(product.m[0], 1 * -2.0 + 2 * 2.0 + 3 * 1.0 + 4 * 0.0);
    // (a*b) applied to p equals a applied to (b applied to p).
    const double p[4] = {1.5, -2.0, 0.25, 1.0};
    double bp[4], abp[4], direct[4];
    UTMAT_TransformerPointParMatrice4D(p, &b, bp);
    UTMAT_TransformerPointParMatrice4D(bp, &a, abp);
    UTMAT_TransformerPointParMatrice4D(p, &product, direct);
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(direct[i], abp[i], 1e-12);

    UtMatrice4D copy{};
    UTMAT_CopierMatrice4D(&a, &copy);
    UTMAT_CalculerProduitMatrice4D(&copy, &b, &copy);  // aliasing the output is harmless
    for (int k = 0; k < 16; ++k) EXPECT_EQ(copy.m[k], product.m[k]);

    UtMatrice4D translate = id;
    translate.m[3] = 10.0;  // x += 10 w
    translate.m[7] = -5.0;  // y -= 5 w
    const double q[4] = {1, 2, 3, 2};
    double moved[4];
    UTMAT_TransformerPointParMatrice4D(q, &translate, moved);
    EXPECT_EQ(moved[0], 21.0);
    EXPECT_EQ(moved[1], -8.0);
    EXPECT_EQ(moved[3], 2.0);  // no division by w
    EXPECT_EQ(errorWord(), 0u);
}
