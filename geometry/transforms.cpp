// Three-dimensional affine transforms: three rows of rotation/scale and translation.
#include <cmath>
#include <cstdio>

#include "base/boundary.hpp"
#include "base/number_text.hpp"
#include "korvelbase/qmtransform.h"

namespace {

constexpr int kRows = 3;
constexpr int kColumns = 4;
constexpr int kTranslation = 3;

double& element(Transform3x4& t, int row, int column) { return t.m[row * kColumns + column]; }
double element(const Transform3x4& t, int row, int column) { return t.m[row * kColumns + column]; }

Transform3x4 identity() {
    Transform3x4 t{};
    for (int i = 0; i < kRows; ++i) element(t, i, i) = 1.0;
    return t;
}

// A * B with the implicit last row (0 0 0 1) of both.
Transform3x4 product(const Transform3x4& a, const Transform3x4& b) {
    Transform3x4 out{};
    for (int i = 0; i < kRows; ++i) {
        for (int j = 0; j < kColumns; ++j) {
            double sum = j == kTranslation ? element(a, i, kTranslation) : 0.0;
            for (int k = 0; k < kRows; ++k) sum += element(a, i, k) * element(b, k, j);
            element(out, i, j) = sum;
        }
    }
    return out;
}

// A rotation about one axis: the plane (first, second) turns by angle.
Transform3x4 rotation(int first, int second, double angle) {
    Transform3x4 r = identity();
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    element(r, first, first) = c;
    element(r, first, second) = -s;
    element(r, second, first) = s;
    element(r, second, second) = c;
    return r;
}

constexpr int kX = 0;
constexpr int kY = 1;
constexpr int kZ = 2;

Transform3x4 rotationZ(double angle) { return rotation(kX, kY, angle); }
Transform3x4 rotationX(double angle) { return rotation(kY, kZ, angle); }
// About y the plane is (z, x), so that r02 = sin and r20 = -sin.
Transform3x4 rotationY(double angle) { return rotation(kZ, kX, angle); }

Point3d linearPart(const Transform3x4& t, double x, double y, double z) {
    return {element(t, 0, 0) * x + element(t, 0, 1) * y + element(t, 0, 2) * z,
            element(t, 1, 0) * x + element(t, 1, 1) * y + element(t, 1, 2) * z,
            element(t, 2, 0) * x + element(t, 2, 1) * y + element(t, 2, 2) * z};
}

// A direction in the plane moved by R: (vx, vy, 0) less (0, 0, 0), both moved.
Point3d movedDirection(const Transform3x4& t, double vx, double vy) {
    const Point3d moved = linearPart(t, vx, vy, 0.0);
    return {moved.x, moved.y, 0.0};
}

int printTransform(const Transform3x4& t) {
    constexpr int kPrintfDecimals = 6;  // "%f"
    kb::String text = "====MATH BEGIN====\n";
    for (int i = 0; i < kRows; ++i) {
        for (int j = 0; j < kColumns; ++j) {
            if (j > 0) text += ',';
            text += kb::fixedText(element(t, i, j), kPrintfDecimals);
        }
        text += '\n';
    }
    text += "====MATH END====\n";
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

}  // namespace

extern "C" {

int qmTransform_setIdentity(Transform3x4* transform) noexcept {
    if (transform == nullptr) return ERR_FAILURE;
    *transform = identity();
    return 0;
}

int qmTransform_setTranslation(Transform3x4* transform, double tx, double ty, double tz) noexcept {
    if (transform == nullptr) return ERR_FAILURE;
    element(*transform, 0, kTranslation) = tx;
    element(*transform, 1, kTranslation) = ty;
    element(*transform, 2, kTranslation) = tz;
    return 0;
}

int qmTransform_scale(Transform3x4* transform, double sx, double sy, double sz) noexcept {
    if (transform == nullptr) return ERR_FAILURE;
    Transform3x4 s = identity();
    element(s, 0, 0) = sx;
    element(s, 1, 1) = sy;
    element(s, 2, 2) = sz;
    *transform = product(*transform, s);
    return 0;
}

int qmTransform_rotateByAngle2d(Transform3x4* transform, double angle) noexcept {
    if (transform == nullptr) return ERR_FAILURE;
    *transform = product(*transform, rotationZ(angle));
    return 0;
}

int qmTransform_translate(Transform3x4* transform, double dx, double dy, double dz) noexcept {
    if (transform == nullptr) return ERR_FAILURE;
    Transform3x4 shift = identity();
    element(shift, 0, kTranslation) = dx;
    element(shift, 1, kTranslation) = dy;
    element(shift, 2, kTranslation) = dz;
    *transform = product(*transform, shift);
    return 0;
}

int qmTransform_rotateByAngle3d(Transform3x4* transform, double angleX, double angleY,
                                double angleZ) noexcept {
    if (transform == nullptr) return ERR_FAILURE;
    *transform = product(rotationZ(angleZ), *transform);
    *transform = product(rotationY(angleY), *transform);
    *transform = product(rotationX(angleX), *transform);
    return 0;
}

int qmTransform_multiply(Transform3x4* result, const Transform3x4* a, const Transform3x4* b) noexcept {
    if (result == nullptr || a == nullptr || b == nullptr) return ERR_FAILURE;
    *result = product(*a, *b);  // through a temporary: result may alias an operand
    return 0;
}

int qmTransform_setOrigin(Transform3x4* transform, const Point3d* point) noexcept {
    if (transform == nullptr || point == nullptr) return ERR_FAILURE;
    const Point3d rp = linearPart(*transform, point->x, point->y, point->z);
    return qmTransform_setTranslation(transform, point->x - rp.x, point->y - rp.y, point->z - rp.z);
}

int qmTransform_movePoint(const Transform3x4* transform, Point3d* out, const Point3d* point) noexcept {
    if (transform == nullptr || out == nullptr || point == nullptr) return ERR_FAILURE;
    const Point3d rp = linearPart(*transform, point->x, point->y, point->z);
    *out = {rp.x + element(*transform, 0, kTranslation), rp.y + element(*transform, 1, kTranslation),
            rp.z + element(*transform, 2, kTranslation)};
    return 0;
}

int qmTransform_moveDirection2d(const Transform3x4* transform, Point3d* vector) noexcept {
    if (transform == nullptr || vector == nullptr) return ERR_FAILURE;
    *vector = movedDirection(*transform, vector->x, vector->y);
    return 0;
}

int qmTransform_moveAngle(const Transform3x4* transform, double* angle) noexcept {
    if (transform == nullptr || angle == nullptr) return ERR_FAILURE;
    const Point3d moved = movedDirection(*transform, std::cos(*angle), std::sin(*angle));
    *angle = std::atan2(moved.y, moved.x);
    return 0;
}

int qmTransform_printf(const Transform3x4* transform) noexcept {
    if (transform == nullptr) return ERR_FAILURE;
    return kb::callGuarded(ERR_FAILURE, [&] { return printTransform(*transform); });
}

}  // extern "C"
