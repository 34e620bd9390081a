// Geometry kernel: global state, comparisons, vectors, lines and points on a circle, checked
// against the geometry itself (points on lines, perpendicular feet, equal distances).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>

#include "korvelbase/utmat.h"

namespace {

constexpr uint32_t kFailure = ERR_FAILURE;

uint32_t errorWord() { uint32_t e = 0xFFFF, d = 0xFFFF; UTMAT_GetErreur(&e, &d); return e; }
template <class F> uint32_t errorAfter(F call) { call(); return errorWord(); }
void raiseKernelError() { UTMAT_NormaliserAngle(99, 0.0); }
double value(const UtDroite& d, const Point2d& p) { return d.a * p.x + d.b * p.y + d.c; }
Point2d randomPoint(std::mt19937& g) {
    std::uniform_real_distribution<double> u(-1000.0, 1000.0);
    return {u(g), u(g)};
}

}  // namespace

// Runs first: nothing has called a setter yet in this process.
TEST(UtmatState, InitialValuesErrorWordRulesAndComparisons) {
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
    EXPECT_TRUE(UTMAT_getCalculPrec() == 1e-6 && UTMAT_getDistanceTolerance() == 0.01);
    UTMAT_setCalculPrecision(0.0001);  // restore the defaults for the other tests
    UTMAT_setDistanceTolerance(2.0);
    // Comparisons: inclusive bounds, |tol| for equality, signed tol elsewhere, NaN is never more.
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

TEST(UtmatVectors, ProductsNormsAndSpaceLineDistance) {
    const Point2d a{3.0, 4.0}, b{-4.0, 3.0};
    EXPECT_GT(UTMAT_CalculerProduitVectoriel(&a, &b), 0.0);  // b is counter-clockwise of a
    EXPECT_EQ(UTMAT_CalculerProduitScalaire(&a, &b), 0.0);
    Point2d zero{0.0, 0.0};
    EXPECT_EQ(errorAfter([&] { UTMAT_NormerVecteur(&zero); }), 0u);  // left unchanged, no error
    EXPECT_TRUE(zero.x == 0.0 && zero.y == 0.0);
    const Point3d v1{1.0, 2.0, 3.0}, v2{-2.0, 0.5, 4.0};
    Point3d n{};
    UTMAT_CalculerProduitVectoriel3d(&v1, &v2, &n);
    EXPECT_NEAR(n.x * v1.x + n.y * v1.y + n.z * v1.z, 0.0, 1e-12);
    EXPECT_NEAR(n.x * v2.x + n.y * v2.y + n.z * v2.z, 0.0, 1e-12);
    EXPECT_GT(n.z, 0.0);  // right-handed: the xy-projections turn counter-clockwise
    UTMAT_NormerVecteur3d(&n);
    EXPECT_NEAR(UTMAT_CalculerNormeVecteur3d(&n), 1.0, 1e-15);
    const Point3d a3{1, 2, 3}, b3{1, 2, 13}, q{4, 6, -50};  // q is 5 from the vertical line
    UtDroite3d line{};
    UTMAT_CalculerDroite2Pt3d(&a3, &b3, &line);
    double dist = 0.0;
    UTMAT_CalculerDeportPtDroite3d(&line, &q, &dist);
    EXPECT_DOUBLE_EQ(dist, 5.0);

    // p0 + (p1 - p0) = p1, its norm is the distance, and the line through p0 and p1 gives a
    // point to its right a positive signed distance equal to the perpendicular offset.
    const Point2d p0{1.0, 1.0}, p1{4.0, 5.0};
    Point2d step{}, back{};
    UTMAT_CalculerVecteur(&p0, &p1, &step);
    UTMAT_CalculerSommeV1V2(&p0, &step, &back);
    EXPECT_TRUE(back.x == p1.x && back.y == p1.y);
    EXPECT_DOUBLE_EQ(UTMAT_CalculerDistance2Pt(&p0, &p1), 5.0);
    UtDroite chord{};
    UTMAT_CalculerDroite2Pt(&p0, &p1, &chord);
    const Point2d right{p0.x + 0.8 * 2.0, p0.y - 0.6 * 2.0};  // 2 along the right-hand normal
    EXPECT_NEAR(UTMAT_CalculerPuissancePtDroite(&chord, &right), 2.0, 1e-14);
    Point3d rise{};
    UTMAT_CalculerVecteur3d(&a3, &q, &rise);
    EXPECT_DOUBLE_EQ(UTMAT_CalculerDistance2Pt3d(&a3, &q), UTMAT_CalculerNormeVecteur3d(&rise));
    EXPECT_DOUBLE_EQ(UTMAT_CalculerDistance2Pt3d(&a3, &q), std::sqrt(9.0 + 16.0 + 53.0 * 53.0));
}

TEST(UtmatLines, ConstructionsKeepPointsOnLinesAndRightHandSidePositive) {
    std::mt19937 engine(12345);
    UtDroite d{}, fromVector{};
    for (int i = 0; i < 50; ++i) {
        const Point2d p0 = randomPoint(engine), p1 = randomPoint(engine);
        UTMAT_CalculerDroite2Pt(&p0, &p1, &d);
        EXPECT_NEAR(value(d, p0), 0.0, 1e-9);
        EXPECT_NEAR(value(d, p1), 0.0, 1e-9);
        // A point 3 units to the right of the travel p0 -> p1 is at offset +3.
        const Point2d dir{p1.x - p0.x, p1.y - p0.y};
        const double k = 3.0 / std::hypot(dir.x, dir.y);
        const Point2d right{p0.x + k * dir.y, p0.y - k * dir.x};
        double offset = 0.0;
        UTMAT_CalculerDeportPtDroite(&d, &right, &offset);
        EXPECT_NEAR(offset, 3.0, 1e-9);
        EXPECT_NEAR(value(d, right), 3.0, 1e-9);  // the line comes out normalised
        UTMAT_CalculerDroitePtVecteur(&p0, &dir, &fromVector);
        EXPECT_NEAR(value(fromVector, right), 3.0, 1e-9);
    }
    const Point2d e{1, 0};
    UtDroite degenerate{9, 9, 9};
    EXPECT_EQ(errorAfter([&] { UTMAT_CalculerDroite2Pt(&e, &e, &degenerate); }), kFailure);
    EXPECT_TRUE(degenerate.a == 0.0 && degenerate.b == 0.0);
    UtDroite n{3.0, -4.0, 10.0}, flat{0.0, 0.0, 7.0};
    double norm = 0.0;
    UTMAT_NormerDroite(&n, &norm);
    EXPECT_TRUE(norm == 5.0 && std::fabs(n.c - 2.0) < 1e-15);
    EXPECT_EQ(errorAfter([&] { UTMAT_NormerDroite(&flat, nullptr); }), kFailure);
    EXPECT_EQ(flat.c, 7.0);  // left as it was
    const UtDroite raw{1.0, 2.0, -3.0};  // un-normalised on purpose; (1, 1) lies on it
    const Point2d p{-4.0, 7.5}, move{2.0, -1.0};
    const double s = 2.5 / std::sqrt(5.0);
    UTMAT_CalculerDroiteParalleleDroitePs1Pt(&raw, &p, &d);
    EXPECT_NEAR(value(d, p), 0.0, 1e-12);
    UTMAT_CalculerDroiteParalleleDroiteDistance(&raw, 2.5, &d);  // 2.5 along the normal
    EXPECT_NEAR(value(d, Point2d{1.0 + s, 1.0 + 2.0 * s}), 0.0, 1e-12);
    UTMAT_CalculerDroiteOrthoDroitePs1Pt(&raw, &p, &d);
    EXPECT_NEAR(value(d, p), 0.0, 1e-12);
    EXPECT_EQ(d.a * raw.a + d.b * raw.b, 0.0);  // normals perpendicular
    UTMAT_TranslaterDroite(&raw, &move, &d);
    EXPECT_NEAR(value(d, Point2d{1.0 + move.x, 1.0 + move.y}), 0.0, 1e-12);
}

TEST(UtmatLines, IntersectionsBisectorsFeetAndCircleProjection) {
    std::mt19937 engine(7);
    std::uniform_real_distribution<double> coef(-50.0, 50.0);
    Point2d x{};
    int found = -1;
    for (int i = 0; i < 100; ++i) {
        const UtDroite d1{coef(engine), coef(engine), coef(engine) * 100.0};
        const UtDroite d2{coef(engine), coef(engine), coef(engine) * 100.0};
        UTMAT_CalculerIntersection2Droite(&d1, &d2, &x, &found);
        ASSERT_EQ(found, 1);
        const double scale = 1.0 + std::fabs(x.x) + std::fabs(x.y);
        EXPECT_NEAR(value(d1, x) / std::hypot(d1.a, d1.b), 0.0, 1e-12 * scale);
        EXPECT_NEAR(value(d2, x) / std::hypot(d2.a, d2.b), 0.0, 1e-12 * scale);
        const Point2d p = randomPoint(engine);  // the foot lies on d1, p - foot along its normal
        Point2d foot{};
        UTMAT_ProjeterPtSurDroite(&d1, &p, &foot);
        EXPECT_NEAR(value(d1, foot) / std::hypot(d1.a, d1.b), 0.0, 1e-10 * scale);
        EXPECT_NEAR((p.x - foot.x) * -d1.b + (p.y - foot.y) * d1.a, 0.0, 1e-8 * std::hypot(d1.a, d1.b));
        const Point2d c{10.0, -5.0};  // radial projection: on the circle, on the ray, round trip
        Point2d on{}, again{};
        double t = 99.0;
        UTMAT_ProjeterPtSurCercle(&c, 4.0, &p, &on, &t);
        EXPECT_NEAR(std::hypot(on.x - c.x, on.y - c.y), 4.0, 1e-12);
        EXPECT_NEAR((on.x - c.x) * (p.y - c.y) - (on.y - c.y) * (p.x - c.x), 0.0, 1e-8);
        EXPECT_GT((on.x - c.x) * (p.x - c.x) + (on.y - c.y) * (p.y - c.y), 0.0);
        EXPECT_TRUE(t > -M_PI && t <= M_PI);
        UTMAT_CalculerPtSurCercleAngle(&c, 4.0, t, &again);
        EXPECT_TRUE(again.x == on.x && again.y == on.y);
        UtDroite bis[2];
        UTMAT_CalculerBissectriceD1D2(&d1, &d2, bis);
        for (UtDroite b : bis) {  // any point of either bisector is as far from d1 as from d2
            UTMAT_NormerDroite(&b, nullptr);
            const double s = coef(engine);
            const Point2d q{-b.a * b.c - b.b * s, -b.b * b.c + b.a * s};
            double o1 = 0.0, o2 = 0.0;
            UTMAT_CalculerDeportPtDroite(&d1, &q, &o1);
            UTMAT_CalculerDeportPtDroite(&d2, &q, &o2);
            EXPECT_NEAR(std::fabs(o1), std::fabs(o2), 1e-10 * scale);
        }
    }
    const UtDroite p1{2, 4, 1}, p2{-1, -2, 5}, noNormal{0, 0, 1};  // p1, p2 parallel
    UTMAT_CalculerIntersection2Droite(&p1, &p2, &x, &found);
    EXPECT_TRUE(found == 0 && errorWord() == 0u);
    UTMAT_CalculerIntersection2Droite(&p1, &noNormal, &x, &found);
    EXPECT_EQ(errorWord(), kFailure);
}

TEST(UtmatLines, FailureRulesSignedNearZeroGuardAndNullOutputs) {
    const std::uint64_t bits = 0x37D5C72FB1552D84ULL;
    double factor, offset = -1.0;
    std::memcpy(&factor, &bits, sizeof factor);
    const Point2d p{1.0, 1.0};
    Point2d foot{};
    // c * factor < sqrt(a^2 + b^2): with c = 1 the guard sits exactly at a = factor.
    const UtDroite atGuard{factor, 0.0, 1.0}, pastGuard{std::nextafter(factor, 1.0), 0.0, 1.0};
    EXPECT_EQ(errorAfter([&] { UTMAT_CalculerDeportPtDroite(&atGuard, &p, &offset); }), kFailure);
    EXPECT_EQ(offset, -1.0);  // not written
    EXPECT_EQ(errorAfter([&] { UTMAT_CalculerDeportPtDroite(&pastGuard, &p, &offset); }), 0u);
    // A negative c passes even with no normal at all (the result is not finite).
    const UtDroite negative{0.0, 0.0, -1.0}, positive{0.0, 0.0, 1.0};
    EXPECT_EQ(errorAfter([&] { UTMAT_CalculerDeportPtDroite(&negative, &p, &offset); }), 0u);
    EXPECT_FALSE(std::isfinite(offset));
    EXPECT_EQ(errorAfter([&] { UTMAT_ProjeterPtSurDroite(&negative, &p, &foot); }), 0u);
    EXPECT_EQ(errorAfter([&] { UTMAT_ProjeterPtSurDroite(&positive, &p, &foot); }), kFailure);
    const UtDroite d{1, 0, 0};  // null outputs fail without crashing
    Point2d q{1, 2};
    EXPECT_EQ(errorAfter([&] { UTMAT_CalculerVecteur(&q, &q, nullptr); }), kFailure);
    EXPECT_EQ(errorAfter([&] { EXPECT_EQ(UTMAT_CalculerNormeVecteur(nullptr), 0.0); }), kFailure);
    EXPECT_EQ(errorAfter([&] { UTMAT_CalculerIntersection2Droite(&d, &d, &q, nullptr); }), kFailure);
    EXPECT_EQ(errorAfter([&] { UTMAT_ProjeterPtSurCercle(&q, 1.0, &q, nullptr, nullptr); }), kFailure);
    EXPECT_EQ(errorAfter([&] { EXPECT_EQ(UTMAT_CalculerClassePtDroite(nullptr, &d, 0.0), 0); }), kFailure);
}

TEST(UtmatLines, ClassificationAgainstLineAndCircle) {
    const UtDroite d{0.0, 1.0, -1.0};  // y = 1, positive above; +-tol counts as on the line
    const Point2d c{10, -5};
    const struct { double y; int line; double x; int circle; } cases[] = {
        {3, 1, 20, 1}, {-1, -1, 10, -1}, {1.5, 0, 15, 0}, {0.5, 0, 14.5, 0}};
    for (const auto& k : cases) {
        const Point2d onAxis{0, k.y}, nearCircle{k.x, -5};
        EXPECT_EQ(UTMAT_CalculerClassePtDroite(&onAxis, &d, 0.5), k.line) << k.y;
        EXPECT_EQ(UTMAT_CalculerClassePtCercle(&nearCircle, &c, 4.0, 1.0), k.circle) << k.x;
    }
}
