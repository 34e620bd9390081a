// Internal: plane and space vector arithmetic shared by the kernel's sources.  Pure helpers:
// they neither read nor write the kernel error word.
#ifndef KORVELBASE_UTMAT_VECTOR_MATH_HPP
#define KORVELBASE_UTMAT_VECTOR_MATH_HPP

#include <cmath>

#include "korvelbase/types.h"

namespace kb::utmat {

// The factor of the kernel's relative near-zero guards, 1.0000000000000001e-39 (bits
// 0x37D5C72FB1552D84): one unit in the last place above the literal 1e-39, so it is written
// in hexadecimal to pin the exact value.  It is neither the calculation precision nor the
// distance tolerance.
constexpr double kNearZeroFactor = 0x1.5c72fb1552d84p-130;

inline double norm(const Point2d& v) noexcept { return std::sqrt(v.x * v.x + v.y * v.y); }

inline double norm(const Point3d& v) noexcept {
    return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
}

inline double dot(const Point2d& u, const Point2d& v) noexcept { return u.x * v.x + u.y * v.y; }

// z of the cross product: positive when v lies counter-clockwise of u.
inline double cross(const Point2d& u, const Point2d& v) noexcept { return u.x * v.y - u.y * v.x; }

inline Point3d cross(const Point3d& u, const Point3d& v) noexcept {
    return {u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x};
}

inline Point2d difference(const Point2d& from, const Point2d& to) noexcept {
    return {to.x - from.x, to.y - from.y};
}

inline Point3d difference(const Point3d& from, const Point3d& to) noexcept {
    return {to.x - from.x, to.y - from.y, to.z - from.z};
}

// v divided by its norm; a zero vector is returned unchanged.
inline Point2d unit(const Point2d& v) noexcept {
    const double n = norm(v);
    return n > 0.0 ? Point2d{v.x / n, v.y / n} : v;
}

// v multiplied by the inverse of its norm; a zero vector is returned unchanged.
inline Point3d unit(const Point3d& v) noexcept {
    const double n = norm(v);
    if (!(n > 0.0)) return v;
    const double inverse = 1.0 / n;
    return {v.x * inverse, v.y * inverse, v.z * inverse};
}

}  // namespace kb::utmat

#endif  // KORVELBASE_UTMAT_VECTOR_MATH_HPP
