// Geometry kernel: global state, comparisons, vectors, lines and points on a circle.
// Results are checked against the geometry itself (points on lines, perpendicular feet,
// equal distances) rather than against the formulas of the implementation.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "korvelbase/utmat.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

uint32_t errorWord() {
    uint32_t error = 0xFFFF, detail = 0xFFFF;
    UTMAT_GetErreur(&error, &detail);
    return error;
}

void raiseKernelError() {
    UTMAT_NormaliserAngle(99, 0.0);
    ASSERT_EQ(errorWord(), static_cast<uint32_t>(ERR_FAILURE));
}

double value(const UtDroite& d, const Point2d& p) { return d.a * p.x + d.b * p.y + d.c; }

double factorFromBits() {
    const std::uint64_t bits = 0x37D5C72FB1552D84ULL;
    double factor;
    std::memcpy(&factor, &bits, sizeof factor);
    return factor;
}

struct RandomPoints {
    std::mt19937 engine{12345};
    std::uniform_real_distribution<double> coordinate{-1000.0, 1000.0};
    Point2d next() { return {coordinate(engine), coordinate(engine)}; }
};

}  // namespace

// Runs first: nothing has called a setter yet in this process.
TEST(UtmatState, InitialValuesSettersAndGetters) {
    EXPECT_EQ(UTMAT_getCalculPrec(), 0.0001);
    EXPECT_EQ(UTMAT_getDistanceTolerance(), 2.0);
    uint32_t error = 1, detail = 1;
    UTMAT_GetErreur(&error, &detail);
    EXPECT_EQ(error, 0u);
    EXPECT_EQ(detail, 0u);
    UTMAT_GetErreur(nullptr, nullptr);  // null addresses are skipped

    // Getters and UTMAT_GetErreur leave a raised word alone; setters clear it.
    raiseKernelError();
    EXPECT_EQ(UTMAT_getCalculPrec(), 0.0001);
    EXPECT_EQ(UTMAT_getDistanceTolerance(), 2.0);
    EXPECT_EQ(errorWord(), static_cast<uint32_t>(ERR_FAILURE));
    EXPECT_EQ(errorWord(), static_cast<uint32_t>(ERR_FAILURE));
    const std::vector<std::function<void()>> setters = {
        [] { UTMAT_setCalculPrecision(1e-6); },
        [] { UTMAT_setDistanceTolerance(0.01); },
        [] { UTMAT_SetTarnakSpiralFormula(); },
        [] { UTMAT_SetVelmoranSpiralFormula(); },
    };
    for (const auto& set : setters) {
        raiseKernelError();
        set();
        EXPECT_EQ(errorWord(), 0u);
    }
    EXPECT_EQ(UTMAT_getCalculPrec(), 1e-6);
    EXPECT_EQ(UTMAT_getDistanceTolerance(), 0.01);
    UTMAT_setCalculPrecision(0.0001);
    UTMAT_setDistanceTolerance(2.0);
}

TEST(UtmatState, ComparisonsMatchToleranceRulesAndClearTheWord) {
    struct Case { double a, b, tol; int inf, infEq, eq, supEq, sup; };
    const Case cases[] = {
        {1.0, 2.0, 0.5, 1, 1, 0, 0, 0},
        {1.0, 1.5, 0.5, 0, 1, 1, 1, 0},  // boundaries are inclusive for equality
        {2.0, 1.5, 0.5, 0, 1, 1, 1, 0},
        {3.0, 1.0, 0.5, 0, 0, 0, 1, 1},
        {1.0, 1.2, -0.5, 1, 0, 1, 0, 1},  // equality uses |tol|; the others the signed tol
        {kNaN, 1.0, 1.0, 0, 0, 0, 0, 0},
    };
    for (const Case& c : cases) {
        raiseKernelError();
        EXPECT_EQ(UTMAT_Inf(c.a, c.b, c.tol), c.inf) << c.a << " " << c.b;
        EXPECT_EQ(errorWord(), 0u);
        EXPECT_EQ(UTMAT_InfOuEgal(c.a, c.b, c.tol), c.infEq) << c.a << " " << c.b;
        EXPECT_EQ(UTMAT_Egal(c.a, c.b, c.tol), c.eq) << c.a << " " << c.b;
        EXPECT_EQ(UTMAT_SupOuEgal(c.a, c.b, c.tol), c.supEq) << c.a << " " << c.b;
        EXPECT_EQ(UTMAT_Sup(c.a, c.b, c.tol), c.sup) << c.a << " " << c.b;
    }
    EXPECT_EQ(UTMAT_AppartenirAIntFerme(2.25, 1.0, 2.0, 0.25), 1);  // widened, inclusive
    EXPECT_EQ(UTMAT_AppartenirAIntFerme(2.5, 1.0, 2.0, 0.25), 0);
    EXPECT_EQ(UTMAT_AppartenirAIntOuvert(1.25, 1.0, 2.0, 0.25), 0);  // narrowed, exclusive
    EXPECT_EQ(UTMAT_AppartenirAIntOuvert(1.5, 1.0, 2.0, 0.25), 1);

    const Point2d p{1.0, 1.0}, q{4.0, 5.0};  // 5 apart
    EXPECT_EQ(UTMAT_PointsIdentiques(&p, &q, 5.0), 1);
    EXPECT_EQ(UTMAT_PointsIdentiques(&p, &q, 4.99), 0);
    const Point3d p3{0, 0, 0}, q3{2, 3, 6};  // 7 apart
    EXPECT_EQ(UTMAT_Points3dIdentiques(&p3, &q3, 7.0), 1);
    EXPECT_EQ(UTMAT_Points3dIdentiques(&p3, &q3, 6.99), 0);
    EXPECT_EQ(UTMAT_PointsIdentiques(&p, nullptr, 1e9), 0);
}

TEST(UtmatVectors, ProductsNormsAndDegenerateVectors) {
    const Point2d a{3.0, 4.0}, b{-4.0, 3.0};
    EXPECT_EQ(UTMAT_CalculerNormeVecteur(&a), 5.0);
    EXPECT_EQ(UTMAT_CalculerProduitScalaire(&a, &b), 0.0);
    EXPECT_GT(UTMAT_CalculerProduitVectoriel(&a, &b), 0.0);  // b is counter-clockwise of a
    EXPECT_LT(UTMAT_CalculerProduitVectoriel(&b, &a), 0.0);
    Point2d d{};
    EXPECT_EQ(UTMAT_CalculerVecteur(&a, &b, &d), &d);
    Point2d sum{};
    UTMAT_CalculerSommeV1V2(&a, &d, &sum);
    EXPECT_EQ(sum.x, b.x);
    EXPECT_EQ(sum.y, b.y);
    EXPECT_DOUBLE_EQ(UTMAT_CalculerDistance2Pt(&a, &b), std::sqrt(50.0));

    Point2d u = a;
    UTMAT_NormerVecteur(&u);
    EXPECT_DOUBLE_EQ(u.x, 0.6);
    EXPECT_DOUBLE_EQ(u.y, 0.8);
    Point2d zero{0.0, 0.0};
    UTMAT_NormerVecteur(&zero);  // left unchanged, no error
    EXPECT_EQ(errorWord(), 0u);
    EXPECT_EQ(zero.x, 0.0);

    const Point3d v1{1.0, 2.0, 3.0}, v2{-2.0, 0.5, 4.0};
    Point3d n{};
    UTMAT_CalculerProduitVectoriel3d(&v1, &v2, &n);
    EXPECT_NEAR(n.x * v1.x + n.y * v1.y + n.z * v1.z, 0.0, 1e-12);
    EXPECT_NEAR(n.x * v2.x + n.y * v2.y + n.z * v2.z, 0.0, 1e-12);
    const Point3d ex{1, 0, 0}, ey{0, 1, 0};
    UTMAT_CalculerProduitVectoriel3d(&ex, &ey, &n);
    EXPECT_EQ(n.z, 1.0);  // right-handed
    Point3d w{2.0, 3.0, 6.0};
    EXPECT_EQ(UTMAT_CalculerNormeVecteur3d(&w), 7.0);
    UTMAT_NormerVecteur3d(&w);
    EXPECT_NEAR(UTMAT_CalculerNormeVecteur3d(&w), 1.0, 1e-15);
    Point3d diff{};
    UTMAT_CalculerVecteur3d(&v1, &v2, &diff);
    EXPECT_DOUBLE_EQ(UTMAT_CalculerNormeVecteur3d(&diff), UTMAT_CalculerDistance2Pt3d(&v1, &v2));
}

TEST(UtmatLines, LineThroughTwoPointsHasRightHandPositiveSide) {
    const Point2d o{0, 0}, e{1, 0}, below{0, -1};
    UtDroite d{};
    UTMAT_CalculerDroite2Pt(&o, &e, &d);
    EXPECT_EQ(d.a, 0.0);
    EXPECT_EQ(d.b, -1.0);
    EXPECT_EQ(d.c, 0.0);
    EXPECT_EQ(value(d, below), 1.0);

    RandomPoints random;
    for (int i = 0; i < 200; ++i) {
        const Point2d p0 = random.next(), p1 = random.next();
        UtDroite line{};
        UTMAT_CalculerDroite2Pt(&p0, &p1, &line);
        ASSERT_EQ(errorWord(), 0u);
        EXPECT_NEAR(line.a * line.a + line.b * line.b, 1.0, 1e-15);
        EXPECT_NEAR(value(line, p0), 0.0, 1e-9);
        EXPECT_NEAR(value(line, p1), 0.0, 1e-9);
        // A point 3 units to the right of the travel p0 -> p1 is at offset +3.
        const double len = std::hypot(p1.x - p0.x, p1.y - p0.y);
        const Point2d right{p0.x + 3.0 * (p1.y - p0.y) / len, p0.y - 3.0 * (p1.x - p0.x) / len};
        double offset = 0.0;
        UTMAT_CalculerDeportPtDroite(&line, &right, &offset);
        EXPECT_NEAR(offset, 3.0, 1e-9);
        // The same line from a point and a direction.
        const Point2d dir{p1.x - p0.x, p1.y - p0.y};
        UtDroite fromVector{};
        UTMAT_CalculerDroitePtVecteur(&p0, &dir, &fromVector);
        EXPECT_NEAR(fromVector.a, line.a, 1e-15);
        EXPECT_NEAR(fromVector.b, line.b, 1e-15);
        EXPECT_NEAR(fromVector.c, line.c, 1e-9);
    }

    UtDroite degenerate{9, 9, 9};
    UTMAT_CalculerDroite2Pt(&e, &e, &degenerate);
    EXPECT_EQ(errorWord(), static_cast<uint32_t>(ERR_FAILURE));
    EXPECT_EQ(degenerate.a, 0.0);
    EXPECT_EQ(degenerate.b, 0.0);
    const Point2d zero{0, 0};
    UTMAT_CalculerDroitePtVecteur(&e, &zero, &degenerate);
    EXPECT_EQ(errorWord(), static_cast<uint32_t>(ERR_FAILURE));
}

TEST(UtmatLines, NormalisationParallelsPerpendicularsAndTranslation) {
    UtDroite d{3.0, -4.0, 10.0};
    double n = 0.0;
    UTMAT_NormerDroite(&d, &n);
    EXPECT_EQ(n, 5.0);
    EXPECT_DOUBLE_EQ(d.c, 2.0);
    UtDroite flat{0.0, 0.0, 7.0};
    UTMAT_NormerDroite(&flat, nullptr);
    EXPECT_EQ(errorWord(), static_cast<uint32_t>(ERR_FAILURE));
    EXPECT_EQ(flat.c, 7.0);  // left as it was

    const UtDroite raw{1.0, 2.0, -3.0};  // un-normalised on purpose
    const Point2d onRaw{1.0, 1.0}, p{-4.0, 7.5};
    const double norm = std::sqrt(5.0);
    const Point2d unitNormal{1.0 / norm, 2.0 / norm};
    UtDroite out{};
    UTMAT_CalculerDroiteParalleleDroitePs1Pt(&raw, &p, &out);
    EXPECT_NEAR(value(out, p), 0.0, 1e-12);
    EXPECT_EQ(out.a * raw.b - out.b * raw.a, 0.0);
    UTMAT_CalculerDroiteParalleleDroiteDistance(&raw, 2.5, &out);  // positive side
    const Point2d shifted{onRaw.x + 2.5 * unitNormal.x, onRaw.y + 2.5 * unitNormal.y};
    EXPECT_NEAR(value(out, shifted), 0.0, 1e-12);
    UTMAT_CalculerDroiteOrthoDroitePs1Pt(&raw, &p, &out);
    EXPECT_NEAR(value(out, p), 0.0, 1e-12);
    EXPECT_EQ(out.a * raw.a + out.b * raw.b, 0.0);  // normals perpendicular
    const Point2d move{2.0, -1.0};
    UTMAT_TranslaterDroite(&raw, &move, &out);
    EXPECT_NEAR(value(out, Point2d{onRaw.x + move.x, onRaw.y + move.y}), 0.0, 1e-12);
    EXPECT_EQ(UTMAT_CalculerPuissancePtDroite(&raw, &p), value(raw, p));
}

TEST(UtmatLines, IntersectionLiesOnBothLines) {
    const UtDroite xAxisNormal{1, 0, 0}, yAxisNormal{0, 1, 0};
    Point2d x{9, 9};
    int found = -1;
    UTMAT_CalculerIntersection2Droite(&xAxisNormal, &yAxisNormal, &x, &found);
    EXPECT_EQ(found, 1);
    EXPECT_EQ(x.x, 0.0);
    EXPECT_EQ(x.y, 0.0);

    std::mt19937 engine(7);
    std::uniform_real_distribution<double> coef(-50.0, 50.0);
    for (int i = 0; i < 500; ++i) {
        const UtDroite d1{coef(engine), coef(engine), coef(engine) * 100.0};
        const UtDroite d2{coef(engine), coef(engine), coef(engine) * 100.0};
        UTMAT_CalculerIntersection2Droite(&d1, &d2, &x, &found);
        ASSERT_EQ(errorWord(), 0u);
        ASSERT_EQ(found, 1);
        const double scale = 1.0 + std::fabs(x.x) + std::fabs(x.y);
        EXPECT_NEAR(value(d1, x) / std::hypot(d1.a, d1.b), 0.0, 1e-12 * scale);
        EXPECT_NEAR(value(d2, x) / std::hypot(d2.a, d2.b), 0.0, 1e-12 * scale);
    }

    const UtDroite p1{2, 4, 1}, p2{-1, -2, 5};  // parallel, opposite normals
    found = -1;
    UTMAT_CalculerIntersection2Droite(&p1, &p2, &x, &found);
    EXPECT_EQ(found, 0);
    EXPECT_EQ(errorWord(), 0u);
    const UtDroite noNormal{0, 0, 1};
    UTMAT_CalculerIntersection2Droite(&p1, &noNormal, &x, &found);
    EXPECT_EQ(found, 0);
    EXPECT_EQ(errorWord(), static_cast<uint32_t>(ERR_FAILURE));
}

TEST(UtmatLines, BisectorsAreEquidistantAndProjectionsPerpendicular) {
    const UtDroite d1{1.0, 2.0, -3.0}, d2{-4.0, 1.0, 8.0};
    UtDroite bis[2];
    UTMAT_CalculerBissectriceD1D2(&d1, &d2, bis);
    for (const UtDroite& b : bis) {
        // Walk along the bisector: every point is as far from d1 as from d2.
        UtDroite unitB = b;
        UTMAT_NormerDroite(&unitB, nullptr);
        for (double s = -20.0; s <= 20.0; s += 5.0) {
            const Point2d q{-unitB.a * unitB.c - unitB.b * s, -unitB.b * unitB.c + unitB.a * s};
            double o1 = 0.0, o2 = 0.0;
            UTMAT_CalculerDeportPtDroite(&d1, &q, &o1);
            UTMAT_CalculerDeportPtDroite(&d2, &q, &o2);
            EXPECT_NEAR(std::fabs(o1), std::fabs(o2), 1e-10);
        }
    }
    EXPECT_NEAR(bis[0].a * bis[1].a + bis[0].b * bis[1].b, 0.0, 1e-12);  // at right angles

    RandomPoints random;
    for (int i = 0; i < 100; ++i) {
        const Point2d p = random.next();
        Point2d foot{};
        UTMAT_ProjeterPtSurDroite(&d1, &p, &foot);
        EXPECT_NEAR(value(d1, foot), 0.0, 1e-10);
        // p - foot runs along the normal: no component along the direction (-b, a).
        EXPECT_NEAR((p.x - foot.x) * -d1.b + (p.y - foot.y) * d1.a, 0.0, 1e-9);
    }
}

TEST(UtmatLines, NearZeroGuardUsesSignedConstant) {
    const double factor = factorFromBits();  // one ulp above the literal 1e-39
    EXPECT_EQ(factor, std::nextafter(1e-39, 1.0));
    const Point2d p{1.0, 1.0};
    double offset = -1.0;
    // c * factor < sqrt(a^2 + b^2): with c = 1 the guard sits exactly at a = factor.
    const UtDroite atGuard{factor, 0.0, 1.0};
    UTMAT_CalculerDeportPtDroite(&atGuard, &p, &offset);
    EXPECT_EQ(errorWord(), static_cast<uint32_t>(ERR_FAILURE));
    EXPECT_EQ(offset, -1.0);  // not written
    const UtDroite pastGuard{std::nextafter(factor, 1.0), 0.0, 1.0};
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
    EXPECT_EQ(errorWord(), static_cast<uint32_t>(ERR_FAILURE));
}

TEST(UtmatLines, SideOfPointAndSpaceLineDistance) {
    const UtDroite d{0.0, 1.0, -1.0};  // y = 1, positive above
    const Point2d above{0, 3}, below{0, -1}, onTol{0, 1.5};
    EXPECT_EQ(UTMAT_CalculerClassePtDroite(&above, &d, 0.5), 1);
    EXPECT_EQ(UTMAT_CalculerClassePtDroite(&below, &d, 0.5), -1);
    EXPECT_EQ(UTMAT_CalculerClassePtDroite(&onTol, &d, 0.5), 0);  // v equal to tol
    const Point2d negTol{0, 0.5};
    EXPECT_EQ(UTMAT_CalculerClassePtDroite(&negTol, &d, 0.5), 0);

    const Point3d a{1, 2, 3}, b{1, 2, 13};
    UtDroite3d line{};
    UTMAT_CalculerDroite2Pt3d(&a, &b, &line);
    EXPECT_EQ(line.direction.z, 1.0);
    const Point3d q{4, 6, -50};  // 5 from the vertical line through (1, 2)
    double dist = 0.0;
    UTMAT_CalculerDeportPtDroite3d(&line, &q, &dist);
    EXPECT_DOUBLE_EQ(dist, 5.0);
    UTMAT_CalculerDroite2Pt3d(&a, &a, &line);
    EXPECT_EQ(errorWord(), 0u);
    EXPECT_EQ(line.direction.x, 0.0);
}

TEST(UtmatCircle, ProjectionAndClassification) {
    const Point2d c{10.0, -5.0};
    const double r = 4.0;
    RandomPoints random;
    for (int i = 0; i < 100; ++i) {
        const Point2d p = random.next();
        Point2d on{};
        double t = 99.0;
        UTMAT_ProjeterPtSurCercle(&c, r, &p, &on, &t);
        EXPECT_NEAR(std::hypot(on.x - c.x, on.y - c.y), r, 1e-12);
        // On the ray from the centre through p.
        EXPECT_NEAR((on.x - c.x) * (p.y - c.y) - (on.y - c.y) * (p.x - c.x), 0.0, 1e-8);
        EXPECT_GT((on.x - c.x) * (p.x - c.x) + (on.y - c.y) * (p.y - c.y), 0.0);
        EXPECT_GT(t, -M_PI);
        EXPECT_LE(t, M_PI);
        Point2d again{};
        UTMAT_CalculerPtSurCercleAngle(&c, r, t, &again);
        EXPECT_EQ(again.x, on.x);
        EXPECT_EQ(again.y, on.y);
    }
    const Point2d inside{10.0, -5.0}, boundary{15.0, -5.0}, outside{20.0, -5.0};
    EXPECT_EQ(UTMAT_CalculerClassePtCercle(&inside, &c, r, 1.0), -1);
    EXPECT_EQ(UTMAT_CalculerClassePtCercle(&boundary, &c, r, 1.0), 0);  // v equal to tol
    EXPECT_EQ(UTMAT_CalculerClassePtCercle(&outside, &c, r, 1.0), 1);
}

TEST(UtmatConventions, NullArgumentsFailWithoutCrashingAndSuccessClearsTheWord) {
    Point2d p{1, 2};
    UtDroite d{1, 0, 0};
    double out = 0.0;
    int found = 0;
    const std::vector<std::function<void()>> nullCalls = {
        [&] { UTMAT_CalculerVecteur(&p, &p, nullptr); },
        [&] { UTMAT_CalculerNormeVecteur(nullptr); },
        [&] { UTMAT_CalculerProduitScalaire(&p, nullptr); },
        [&] { UTMAT_CalculerDistance2Pt3d(nullptr, nullptr); },
        [&] { UTMAT_NormerDroite(nullptr, &out); },
        [&] { UTMAT_TranslaterDroite(nullptr, &p, &d); },
        [&] { UTMAT_CalculerDroite2Pt(&p, nullptr, &d); },
        [&] { UTMAT_CalculerDeportPtDroite(&d, &p, nullptr); },
        [&] { UTMAT_CalculerIntersection2Droite(&d, &d, &p, nullptr); },
        [&] { UTMAT_CalculerBissectriceD1D2(&d, nullptr, &d); },
        [&] { UTMAT_ProjeterPtSurDroite(&d, nullptr, &p); },
        [&] { UTMAT_CalculerClassePtDroite(nullptr, &d, 0.0); },
        [&] { UTMAT_ProjeterPtSurCercle(&p, 1.0, &p, nullptr, nullptr); },
        [&] { UTMAT_CalculerPuissancePtDroite(nullptr, &p); },
    };
    for (std::size_t i = 0; i < nullCalls.size(); ++i) {
        nullCalls[i]();
        EXPECT_EQ(errorWord(), static_cast<uint32_t>(ERR_FAILURE)) << "call " << i;
    }
    raiseKernelError();
    UTMAT_CalculerIntersection2Droite(&d, &d, &p, &found);  // parallel: no error
    EXPECT_EQ(errorWord(), 0u);
}
