// Geometry kernel: global state, comparisons, vectors, lines and points on a circle.
// Results are checked against the geometry itself (points on lines, perpendicular feet,
// equal distances) rather than against the formulas of the implementation.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>

#include "korvelbase/utmat.h"

namespace {

constexpr uint32_t kFailure = ERR_FAILURE;

uint32_t errorWord() {
    uint32_t error = 0xFFFF, detail = 0xFFFF;
    UTMAT_GetErreur(&error, &detail);
    return error;
}

void raiseKernelError() { UTMAT_NormaliserAngle(99, 0.0); }

double value(const UtDroite& d, const Point2d& p) { return d.a * p.x + d.b * p.y + d.c; }

Point2d randomPoint(std::mt19937& engine) {
    std::uniform_real_distribution<double> coordinate(-1000.0, 1000.0);
    return {coordinate(engine), coordinate(engine)};
}

}  // namespace

// Runs first: nothing has called a setter yet in this process.
TEST(UtmatState, InitialValuesAndErrorWordRules) {
    EXPECT_EQ(UTMAT_getCalculPrec(), 0.0001);
    EXPECT_EQ(UTMAT_getDistanceTolerance(), 2.0);
    UTMAT_GetErreur(nullptr, nullptr);  // null addresses are skipped
    raiseKernelError();
    EXPECT_EQ(UTMAT_getCalculPrec() + UTMAT_getDistanceTolerance(), 2.0001);
    EXPECT_EQ(errorWord(), kFailure);  // left alone by the getters and by UTMAT_GetErreur
    EXPECT_EQ(errorWord(), kFailure);
    UTMAT_setCalculPrecision(1e-6);
    EXPECT_EQ(errorWord(), 0u);
    raiseKernelError();
    UTMAT_SetTarnakSpiralFormula();
    EXPECT_EQ(errorWord(), 0u);
    UTMAT_setDistanceTolerance(0.01);
    EXPECT_EQ(UTMAT_getCalculPrec(), 1e-6);
    EXPECT_EQ(UTMAT_getDistanceTolerance(), 0.01);
    UTMAT_setCalculPrecision(0.0001);
    UTMAT_setDistanceTolerance(2.0);
    UTMAT_SetVelmoranSpiralFormula();
}

TEST(UtmatState, ComparisonsAndPointTests) {
    raiseKernelError();
    EXPECT_EQ(UTMAT_Egal(1.0, 1.5, 0.5), 1);  // inclusive bound; clears the word
    EXPECT_EQ(errorWord(), 0u);
    EXPECT_EQ(UTMAT_Egal(1.0, 1.2, -0.5), 1);  // equality takes |tol|, the others the signed tol
    EXPECT_EQ(UTMAT_Inf(1.0, 1.2, -0.5), 1);
    EXPECT_EQ(UTMAT_InfOuEgal(1.0, 1.5, 0.5) + UTMAT_SupOuEgal(1.0, 1.5, 0.5), 2);
    EXPECT_EQ(UTMAT_Sup(3.0, 1.0, 0.5) + UTMAT_Sup(std::nan(""), 1.0, 0.5), 1);
    EXPECT_EQ(UTMAT_AppartenirAIntFerme(2.25, 1.0, 2.0, 0.25), 1);  // widened, inclusive
    EXPECT_EQ(UTMAT_AppartenirAIntOuvert(1.25, 1.0, 2.0, 0.25), 0);  // narrowed, exclusive
    const Point2d p{1.0, 1.0}, q{4.0, 5.0};                          // 5 apart
    EXPECT_EQ(UTMAT_PointsIdentiques(&p, &q, 5.0) * 2 + UTMAT_PointsIdentiques(&p, &q, 4.99), 2);
    const Point3d p3{0, 0, 0}, q3{2, 3, 6};  // 7 apart
    EXPECT_EQ(UTMAT_Points3dIdentiques(&p3, &q3, 7.0) * 2 + UTMAT_Points3dIdentiques(&p3, &q3, 6.9), 2);
}

TEST(UtmatVectors, CrossProductsAndDegenerateVectors) {
    const Point2d a{3.0, 4.0}, b{-4.0, 3.0};
    EXPECT_GT(UTMAT_CalculerProduitVectoriel(&a, &b), 0.0);  // b is counter-clockwise of a
    EXPECT_EQ(UTMAT_CalculerProduitScalaire(&a, &b), 0.0);
    Point2d zero{0.0, 0.0};
    UTMAT_NormerVecteur(&zero);  // left unchanged, no error
    EXPECT_EQ(errorWord(), 0u);
    const Point3d v1{1.0, 2.0, 3.0}, v2{-2.0, 0.5, 4.0};
    Point3d n{};
    UTMAT_CalculerProduitVectoriel3d(&v1, &v2, &n);
    EXPECT_NEAR(n.x * v1.x + n.y * v1.y + n.z * v1.z, 0.0, 1e-12);
    EXPECT_NEAR(n.x * v2.x + n.y * v2.y + n.z * v2.z, 0.0, 1e-12);
    EXPECT_GT(n.z, 0.0);  // right-handed: the xy-projections turn counter-clockwise
    UTMAT_NormerVecteur3d(&n);
    EXPECT_NEAR(UTMAT_CalculerNormeVecteur3d(&n), 1.0, 1e-15);
}

TEST(UtmatLines, LineThroughTwoPointsHasRightHandPositiveSide) {
    const Point2d o{0, 0}, e{1, 0};
    UtDroite d{};
    UTMAT_CalculerDroite2Pt(&o, &e, &d);
    EXPECT_TRUE(d.a == 0.0 && d.b == -1.0 && d.c == 0.0);
    EXPECT_EQ(value(d, Point2d{0, -1}), 1.0);

    std::mt19937 engine(12345);
    for (int i = 0; i < 200; ++i) {
        const Point2d p0 = randomPoint(engine), p1 = randomPoint(engine);
        UTMAT_CalculerDroite2Pt(&p0, &p1, &d);
        EXPECT_NEAR(value(d, p0), 0.0, 1e-9);
        EXPECT_NEAR(value(d, p1), 0.0, 1e-9);
        // A point 3 units to the right of the travel p0 -> p1 is at offset +3.
        const double len = std::hypot(p1.x - p0.x, p1.y - p0.y);
        const Point2d right{p0.x + 3.0 * (p1.y - p0.y) / len, p0.y - 3.0 * (p1.x - p0.x) / len};
        double offset = 0.0;
        UTMAT_CalculerDeportPtDroite(&d, &right, &offset);
        EXPECT_NEAR(offset, 3.0, 1e-9);
        const Point2d dir{p1.x - p0.x, p1.y - p0.y};  // same line from a point and a direction
        UtDroite fromVector{};
        UTMAT_CalculerDroitePtVecteur(&p0, &dir, &fromVector);
        EXPECT_NEAR(value(fromVector, right), 3.0, 1e-9);
    }
    UtDroite degenerate{9, 9, 9};
    UTMAT_CalculerDroite2Pt(&e, &e, &degenerate);
    EXPECT_EQ(errorWord(), kFailure);
    EXPECT_TRUE(degenerate.a == 0.0 && degenerate.b == 0.0);
}

TEST(UtmatLines, NormalisationParallelsPerpendicularsAndTranslation) {
    UtDroite d{3.0, -4.0, 10.0};
    double n = 0.0;
    UTMAT_NormerDroite(&d, &n);
    EXPECT_EQ(n, 5.0);
    EXPECT_DOUBLE_EQ(d.c, 2.0);
    UtDroite flat{0.0, 0.0, 7.0};
    UTMAT_NormerDroite(&flat, nullptr);
    EXPECT_EQ(errorWord(), kFailure);
    EXPECT_EQ(flat.c, 7.0);  // left as it was

    const UtDroite raw{1.0, 2.0, -3.0};  // un-normalised on purpose; (1, 1) lies on it
    const Point2d p{-4.0, 7.5}, move{2.0, -1.0};
    const double s = 2.5 / std::sqrt(5.0);
    UtDroite out{};
    UTMAT_CalculerDroiteParalleleDroitePs1Pt(&raw, &p, &out);
    EXPECT_NEAR(value(out, p), 0.0, 1e-12);
    UTMAT_CalculerDroiteParalleleDroiteDistance(&raw, 2.5, &out);  // 2.5 along the normal
    EXPECT_NEAR(value(out, Point2d{1.0 + s, 1.0 + 2.0 * s}), 0.0, 1e-12);
    UTMAT_CalculerDroiteOrthoDroitePs1Pt(&raw, &p, &out);
    EXPECT_NEAR(value(out, p), 0.0, 1e-12);
    EXPECT_EQ(out.a * raw.a + out.b * raw.b, 0.0);  // normals perpendicular
    UTMAT_TranslaterDroite(&raw, &move, &out);
    EXPECT_NEAR(value(out, Point2d{1.0 + move.x, 1.0 + move.y}), 0.0, 1e-12);
}

TEST(UtmatLines, IntersectionLiesOnBothLines) {
    const UtDroite xIsZero{1, 0, 0}, yIsZero{0, 1, 0};
    Point2d x{9, 9};
    int found = -1;
    UTMAT_CalculerIntersection2Droite(&xIsZero, &yIsZero, &x, &found);
    EXPECT_TRUE(found == 1 && x.x == 0.0 && x.y == 0.0);

    std::mt19937 engine(7);
    std::uniform_real_distribution<double> coef(-50.0, 50.0);
    for (int i = 0; i < 500; ++i) {
        const UtDroite d1{coef(engine), coef(engine), coef(engine) * 100.0};
        const UtDroite d2{coef(engine), coef(engine), coef(engine) * 100.0};
        UTMAT_CalculerIntersection2Droite(&d1, &d2, &x, &found);
        ASSERT_EQ(found, 1);
        const double scale = 1.0 + std::fabs(x.x) + std::fabs(x.y);
        EXPECT_NEAR(value(d1, x) / std::hypot(d1.a, d1.b), 0.0, 1e-12 * scale);
        EXPECT_NEAR(value(d2, x) / std::hypot(d2.a, d2.b), 0.0, 1e-12 * scale);
    }
    const UtDroite p1{2, 4, 1}, p2{-1, -2, 5}, noNormal{0, 0, 1};  // p1, p2 parallel
    UTMAT_CalculerIntersection2Droite(&p1, &p2, &x, &found);
    EXPECT_EQ(found, 0);
    EXPECT_EQ(errorWord(), 0u);
    UTMAT_CalculerIntersection2Droite(&p1, &noNormal, &x, &found);
    EXPECT_EQ(errorWord(), kFailure);
}

TEST(UtmatLines, BisectorsAreEquidistantAndProjectionsPerpendicular) {
    const UtDroite d1{1.0, 2.0, -3.0}, d2{-4.0, 1.0, 8.0};
    UtDroite bis[2];
    UTMAT_CalculerBissectriceD1D2(&d1, &d2, bis);
    for (UtDroite b : bis) {
        UTMAT_NormerDroite(&b, nullptr);
        for (double s = -20.0; s <= 20.0; s += 5.0) {  // walk along the bisector
            const Point2d q{-b.a * b.c - b.b * s, -b.b * b.c + b.a * s};
            double o1 = 0.0, o2 = 0.0;
            UTMAT_CalculerDeportPtDroite(&d1, &q, &o1);
            UTMAT_CalculerDeportPtDroite(&d2, &q, &o2);
            EXPECT_NEAR(std::fabs(o1), std::fabs(o2), 1e-10);
        }
    }
    std::mt19937 engine(3);
    for (int i = 0; i < 100; ++i) {
        const Point2d p = randomPoint(engine);
        Point2d foot{};
        UTMAT_ProjeterPtSurDroite(&d1, &p, &foot);
        EXPECT_NEAR(value(d1, foot), 0.0, 1e-10);
        // p - foot has no component along the direction (-b, a).
        EXPECT_NEAR((p.x - foot.x) * -d1.b + (p.y - foot.y) * d1.a, 0.0, 1e-9);
    }
}

TEST(UtmatLines, NearZeroGuardUsesSignedConstant) {
    const std::uint64_t bits = 0x37D5C72FB1552D84ULL;
    double factor;
    std::memcpy(&factor, &bits, sizeof factor);
    const Point2d p{1.0, 1.0};
    double offset = -1.0;
    // c * factor < sqrt(a^2 + b^2): with c = 1 the guard sits exactly at a = factor.
    const UtDroite atGuard{factor, 0.0, 1.0}, pastGuard{std::nextafter(factor, 1.0), 0.0, 1.0};
    UTMAT_CalculerDeportPtDroite(&atGuard, &p, &offset);
    EXPECT_EQ(errorWord(), kFailure);
    EXPECT_EQ(offset, -1.0);  // not written
    UTMAT_CalculerDeportPtDroite(&pastGuard, &p, &offset);
    EXPECT_EQ(errorWord(), 0u);
    // A negative c passes even with no normal at all (the result is not finite).
    const UtDroite negative{0.0, 0.0, -1.0}, positive{0.0, 0.0, 1.0};
    UTMAT_CalculerDeportPtDroite(&negative, &p, &offset);
    EXPECT_EQ(errorWord(), 0u);
    EXPECT_FALSE(std::isfinite(offset));
    Point2d foot{};
    UTMAT_ProjeterPtSurDroite(&negative, &p, &foot);
    EXPECT_EQ(errorWord(), 0u);
    UTMAT_ProjeterPtSurDroite(&positive, &p, &foot);
    EXPECT_EQ(errorWord(), kFailure);
}

TEST(UtmatLines, ClassificationAndSpaceLineDistance) {
    const UtDroite d{0.0, 1.0, -1.0};  // y = 1, positive above
    const Point2d above{0, 3}, below{0, -1}, atTol{0, 1.5}, atMinusTol{0, 0.5};
    EXPECT_EQ(UTMAT_CalculerClassePtDroite(&above, &d, 0.5), 1);
    EXPECT_EQ(UTMAT_CalculerClassePtDroite(&below, &d, 0.5), -1);
    EXPECT_EQ(UTMAT_CalculerClassePtDroite(&atTol, &d, 0.5), 0);  // v equal to +-tol
    EXPECT_EQ(UTMAT_CalculerClassePtDroite(&atMinusTol, &d, 0.5), 0);
    const Point2d c{10, -5}, inside{10, -5}, boundary{15, -5}, outside{20, -5};
    EXPECT_EQ(UTMAT_CalculerClassePtCercle(&inside, &c, 4.0, 1.0), -1);
    EXPECT_EQ(UTMAT_CalculerClassePtCercle(&boundary, &c, 4.0, 1.0), 0);
    EXPECT_EQ(UTMAT_CalculerClassePtCercle(&outside, &c, 4.0, 1.0), 1);

    const Point3d a{1, 2, 3}, b{1, 2, 13}, q{4, 6, -50};  // q is 5 from the vertical line
    UtDroite3d line{};
    UTMAT_CalculerDroite2Pt3d(&a, &b, &line);
    double dist = 0.0;
    UTMAT_CalculerDeportPtDroite3d(&line, &q, &dist);
    EXPECT_DOUBLE_EQ(dist, 5.0);
}

TEST(UtmatCircle, RadialProjectionLiesOnCircleAndRay) {
    const Point2d c{10.0, -5.0};
    std::mt19937 engine(9);
    for (int i = 0; i < 100; ++i) {
        const Point2d p = randomPoint(engine);
        Point2d on{}, again{};
        double t = 99.0;
        UTMAT_ProjeterPtSurCercle(&c, 4.0, &p, &on, &t);
        EXPECT_NEAR(std::hypot(on.x - c.x, on.y - c.y), 4.0, 1e-12);
        EXPECT_NEAR((on.x - c.x) * (p.y - c.y) - (on.y - c.y) * (p.x - c.x), 0.0, 1e-8);
        EXPECT_GT((on.x - c.x) * (p.x - c.x) + (on.y - c.y) * (p.y - c.y), 0.0);
        EXPECT_TRUE(t > -M_PI && t <= M_PI);
        UTMAT_CalculerPtSurCercleAngle(&c, 4.0, t, &again);
        EXPECT_EQ(again.x, on.x);
    }
}

TEST(UtmatConventions, NullArgumentsFailWithoutCrashing) {
    Point2d p{1, 2};
    UtDroite d{1, 0, 0};
    UTMAT_CalculerVecteur(&p, &p, nullptr);
    EXPECT_EQ(errorWord(), kFailure);
    EXPECT_EQ(UTMAT_CalculerNormeVecteur(nullptr), 0.0);
    EXPECT_EQ(errorWord(), kFailure);
    UTMAT_CalculerIntersection2Droite(&d, &d, &p, nullptr);
    EXPECT_EQ(errorWord(), kFailure);
    UTMAT_ProjeterPtSurCercle(&p, 1.0, &p, nullptr, nullptr);
    EXPECT_EQ(errorWord(), kFailure);
    EXPECT_EQ(UTMAT_CalculerClassePtDroite(nullptr, &d, 0.0), 0);
    EXPECT_EQ(errorWord(), kFailure);
}
