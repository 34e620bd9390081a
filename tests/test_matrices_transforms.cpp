// Dense matrices against identities (A * A^-1 = I, full pivoting past a zero leading element,
// products against written-out sums) and transforms against hand values and the deliberately
// uneven composition order.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "korvelbase/qmmatrix.h"
#include "korvelbase/qmtransform.h"

namespace {

struct Matrix {
    DenseMatrix m{0, 0, nullptr};
    Matrix(uint32_t rows, uint32_t cols) { EXPECT_EQ(qmMatrix_memMatrix(&m, rows, cols), 0); }
    explicit Matrix(const std::vector<std::vector<double>>& rows)
        : Matrix(uint32_t(rows.size()), uint32_t(rows[0].size())) {
        for (std::size_t r = 0; r < rows.size(); ++r) {
            for (std::size_t c = 0; c < rows[r].size(); ++c) set(int(r), int(c), rows[r][c]);
        }
    }
    ~Matrix() { qmMatrix_freeMatrix(&m); }
    Matrix(const Matrix&) = delete;
    double get(int r, int c) const { return qmMatrix_getElementMatrix(&m, r, c); }
    void set(int r, int c, double v) { qmMatrix_putElementMatrix(&m, r, c, v); }
};

// Fills a with random values around a dominant diagonal (well conditioned).
void fillRandom(Matrix& a, int n, std::mt19937& random) {
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    for (int r = 0; r < n; ++r) {
        for (int c = 0; c < n; ++c) a.set(r, c, value(random) + (r == c ? n : 0.0));
    }
}

TEST(Matrices, StorageIsColumnMajorAndProductsFollowTheirDefinition) {
    Matrix a({{1, 2, 3}, {4, 5, 6}});  // 2 x 3
    EXPECT_EQ(a.m.data[1], 4.0);        // element (1, 0)
    EXPECT_EQ(a.m.data[2], 2.0);        // element (0, 1)
    Matrix b({{7, 8}, {9, 10}, {11, 12}});  // 3 x 2
    DenseMatrix ab{0, 0, nullptr};
    ASSERT_EQ(qmMatrix_multMatrix(&ab, 0, &a.m, 0, &b.m), 0);
    ASSERT_EQ(ab.rows, 2u);
    ASSERT_EQ(ab.cols, 2u);
    EXPECT_EQ(qmMatrix_getElementMatrix(&ab, 0, 0), 58.0);
    EXPECT_EQ(qmMatrix_getElementMatrix(&ab, 1, 1), 154.0);
    qmMatrix_freeMatrix(&ab);
    // A^T * A is 3 x 3 and symmetric; A * B^T needs both transposed as stated.
    DenseMatrix ata{0, 0, nullptr};
    ASSERT_EQ(qmMatrix_multMatrix(&ata, 1, &a.m, 0, &a.m), 0);
    ASSERT_EQ(ata.rows, 3u);
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            EXPECT_EQ(qmMatrix_getElementMatrix(&ata, r, c), a.get(0, r) * a.get(0, c) + a.get(1, r) * a.get(1, c));
        }
    }
    qmMatrix_freeMatrix(&ata);
    DenseMatrix abt{0, 0, nullptr};
    ASSERT_EQ(qmMatrix_multMatrix(&abt, 1, &b.m, 1, &a.m), 0);  // (B^T)(A^T) = (A B)^T
    EXPECT_EQ(qmMatrix_getElementMatrix(&abt, 0, 1), 139.0);   // (A B)(1, 0)
    qmMatrix_freeMatrix(&abt);
    // Scaling, element swap and the deliberate size-mismatch result of subtraction.
    qmMatrix_multScalerMatrix(&a.m, 2.0);
    EXPECT_EQ(a.get(1, 2), 12.0);
    qmMatrix_swapMatrixElem(&a.m, 0, 0, 1, 2);
    EXPECT_EQ(a.get(0, 0), 12.0);
    EXPECT_EQ(a.get(1, 2), 2.0);
    DenseMatrix d{0, 0, nullptr};
    EXPECT_EQ(qmMatrix_subtractMatrix(&d, &a.m, &b.m), 1);
    EXPECT_EQ(d.data, nullptr);
    ASSERT_EQ(qmMatrix_subtractMatrix(&d, &a.m, &a.m), 0);
    for (int i = 0; i < 6; ++i) EXPECT_EQ(d.data[i], 0.0);
    qmMatrix_freeMatrix(&d);
    EXPECT_EQ(d.rows, 0u);
}

TEST(Matrices, InverseTimesMatrixIsTheIdentity) {
    std::mt19937 random(5);
    for (int n : {1, 2, 3, 5, 8, 12, 20}) {
        Matrix a{uint32_t(n), uint32_t(n)};
        fillRandom(a, n, random);
        Matrix inverse{uint32_t(n), uint32_t(n)};
        for (int i = 0; i < n * n; ++i) inverse.m.data[i] = a.m.data[i];
        ASSERT_EQ(qmMatrix_invertMatrix(&inverse.m), 0) << n;
        DenseMatrix product{0, 0, nullptr};
        ASSERT_EQ(qmMatrix_multMatrix(&product, 0, &a.m, 0, &inverse.m), 0);
        for (int r = 0; r < n; ++r) {
            for (int c = 0; c < n; ++c) {
                EXPECT_NEAR(qmMatrix_getElementMatrix(&product, r, c), r == c ? 1.0 : 0.0, 1e-12) << n;
            }
        }
        qmMatrix_freeMatrix(&product);
    }
}

TEST(Matrices, FullPivotingAndSingularity) {
    // A zero leading element: partial-free elimination would divide by it.
    Matrix a({{0, 2, 1}, {1, 0, 3}, {4, 1, 0}});
    const double original[3][3] = {{0, 2, 1}, {1, 0, 3}, {4, 1, 0}};
    ASSERT_EQ(qmMatrix_invertMatrix(&a.m), 0);
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            double sum = 0.0;
            for (int k = 0; k < 3; ++k) sum += original[r][k] * a.get(k, c);
            EXPECT_NEAR(sum, r == c ? 1.0 : 0.0, 1e-14);
        }
    }
    Matrix four(std::vector<std::vector<double>>{{4.0}});
    ASSERT_EQ(qmMatrix_invertMatrix(&four.m), 0);
    EXPECT_EQ(four.get(0, 0), 0.25);
    Matrix zero(std::vector<std::vector<double>>{{0.0}});
    EXPECT_EQ(qmMatrix_invertMatrix(&zero.m), ERR_FAILURE);
    Matrix rankTwo({{1, 2, 3}, {2, 4, 6}, {1, 0, 1}});
    EXPECT_EQ(qmMatrix_invertMatrix(&rankTwo.m), ERR_FAILURE);
    Matrix notSquare({{1, 2}});
    EXPECT_EQ(qmMatrix_invertMatrix(&notSquare.m), ERR_FAILURE);
    EXPECT_EQ(qmMatrix_invertMatrix(nullptr), ERR_FAILURE);
}

TEST(Matrices, IndexVectorsCoverTheirRange) {
    for (const auto& range : {std::pair<int, int>{0, 4}, {3, 9}, {-5, 2}, {-7, -3}, {1, 1}}) {
        int32_t* v = qmMatrix_ivector(range.first, range.second);
        ASSERT_NE(v, nullptr);
        for (int i = range.first; i <= range.second; ++i) {
            EXPECT_EQ(v[i], 0);
            v[i] = i;  // every index in range is writable (the sanitizers watch)
        }
        qmMatrix_freeIvector(v, range.first);
    }
    EXPECT_EQ(qmMatrix_ivector(3, 2), nullptr);
}

Point3d moved(const Transform3x4& t, Point3d p) {
    Point3d out{};
    EXPECT_EQ(qmTransform_movePoint(&t, &out, &p), 0);
    return out;
}

void expectPoint(Point3d p, double x, double y, double z) {
    EXPECT_NEAR(p.x, x, 1e-12);
    EXPECT_NEAR(p.y, y, 1e-12);
    EXPECT_NEAR(p.z, z, 1e-12);
}

TEST(Transforms, CompositionOrderIsKeptAsDesigned) {
    const double quarter = std::acos(0.0);  // 90 degrees
    Transform3x4 t;
    qmTransform_setIdentity(&t);
    qmTransform_setTranslation(&t, 10, 0, 0);
    // Scaling is appended on the right: it acts first, then the translation.
    qmTransform_scale(&t, 2, 3, 4);
    expectPoint(moved(t, {1, 1, 1}), 12, 3, 4);
    // So is the 2-D rotation: (1, 0) turns to (0, 1), is scaled to (0, 3), then shifted.
    qmTransform_rotateByAngle2d(&t, quarter);
    expectPoint(moved(t, {1, 0, 0}), 10, 3, 0);
    // The 3-D rotation acts after everything: about z by 90 degrees maps (10, 3) to (-3, 10).
    qmTransform_rotateByAngle3d(&t, 0, 0, quarter);
    expectPoint(moved(t, {1, 0, 0}), -3, 10, 0);
    // translate acts first as well.
    Transform3x4 u;
    qmTransform_setIdentity(&u);
    qmTransform_rotateByAngle2d(&u, quarter);
    qmTransform_translate(&u, 1, 0, 0);
    expectPoint(moved(u, {0, 0, 0}), 0, 1, 0);
    // 3-D rotations: z first, then y, then x.  (1, 0, 0) -> z90 -> (0, 1, 0) -> y90 -> (0, 1, 0)
    // -> x90 -> (0, 0, 1).
    Transform3x4 r;
    qmTransform_setIdentity(&r);
    qmTransform_rotateByAngle3d(&r, quarter, quarter, quarter);
    expectPoint(moved(r, {1, 0, 0}), 0, 0, 1);
    // Ry sends z to x: r02 = sin.
    qmTransform_setIdentity(&r);
    qmTransform_rotateByAngle3d(&r, 0, quarter, 0);
    expectPoint(moved(r, {0, 0, 1}), 1, 0, 0);
}

TEST(Transforms, MultiplyOriginDirectionsAndAngles) {
    const double quarter = std::acos(0.0);
    Transform3x4 a;
    Transform3x4 b;
    qmTransform_setIdentity(&a);
    qmTransform_setTranslation(&a, 5, 0, 0);
    qmTransform_setIdentity(&b);
    qmTransform_rotateByAngle2d(&b, quarter);
    // a * b: b acts first; the result may be an operand.
    qmTransform_multiply(&a, &a, &b);
    expectPoint(moved(a, {1, 0, 0}), 5, 1, 0);
    // A rotation about the point (1, 0, 0) fixes that point.
    Transform3x4 spin;
    qmTransform_setIdentity(&spin);
    qmTransform_rotateByAngle2d(&spin, quarter);
    const Point3d pivot{1, 0, 0};
    qmTransform_setOrigin(&spin, &pivot);
    expectPoint(moved(spin, pivot), 1, 0, 0);
    expectPoint(moved(spin, {2, 0, 0}), 1, 1, 0);
    // Directions ignore the translation; angles come back in (-pi, pi].
    Point3d direction{1, 0, 7};
    qmTransform_moveDirection2d(&spin, &direction);
    expectPoint(direction, 0, 1, 0);
    double angle = 3 * quarter;  // 270 degrees, turned by 90: 360 -> atan2 gives 0
    qmTransform_moveAngle(&spin, &angle);
    EXPECT_NEAR(angle, 0.0, 1e-12);
    angle = quarter;
    qmTransform_moveAngle(&spin, &angle);
    EXPECT_NEAR(angle, 2 * quarter, 1e-12);
    EXPECT_EQ(qmTransform_moveAngle(&spin, nullptr), ERR_FAILURE);
    EXPECT_EQ(qmTransform_moveDirection2d(nullptr, &direction), ERR_FAILURE);
}

TEST(Transforms, PrintFormat) {
    Transform3x4 t;
    qmTransform_setIdentity(&t);
    qmTransform_setTranslation(&t, 1.5, -2, 1e6);
    testing::internal::CaptureStdout();
    qmTransform_printf(&t);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "====MATH BEGIN====\n1.000000,0.000000,0.000000,1.500000\n"
              "0.000000,1.000000,0.000000,-2.000000\n0.000000,0.000000,1.000000,1000000.000000\n"
              "====MATH END====\n");
}

}  // namespace
