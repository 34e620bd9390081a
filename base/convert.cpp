// Converters between 2-D and 3-D points.
#include "korvelbase/convert.h"
#include "korvelbase/mem.h"

namespace {

// Allocates n records of type T with the library heap; null for n <= 0 or on failure.
template <typename T>
T* allocateRecords(int n) {
    if (n <= 0) return nullptr;
    return static_cast<T*>(qmMem_malloc(static_cast<size_t>(n) * sizeof(T)));
}

}  // namespace

extern "C" {

void ConvertPoint32(const Point3d* in, Point2d* out) noexcept {
    out->x = in->x;
    out->y = in->y;
}

void ConvertPoint23(const Point2d* in, Point3d* out) noexcept {
    out->x = in->x;
    out->y = in->y;
    out->z = 0.0;
}

Point2d* ConvertArray32(const Point3d* in, int n) noexcept {
    Point2d* out = allocateRecords<Point2d>(n);
    if (out == nullptr) return nullptr;
    for (int i = 0; i < n; ++i) ConvertPoint32(&in[i], &out[i]);
    return out;
}

Point3d* ConvertArray23(const Point2d* in, int n) noexcept {
    Point3d* out = allocateRecords<Point3d>(n);
    if (out == nullptr) return nullptr;
    for (int i = 0; i < n; ++i) ConvertPoint23(&in[i], &out[i]);
    return out;
}

}  // extern "C"
