// Operations on single Point3d records: copies, comparisons, distances and directions, arcs,
// planes, lines and the text reader.
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "base/heap.hpp"
#include "base/optional_output.hpp"
#include "geometry/plane_math.hpp"
#include "geometry/point_math.hpp"
#include "korvelbase/bestfit_horizontal.h"
#include "korvelbase/qmmath.h"
#include "korvelbase/qmtransform.h"
#include "korvelbase/qmpoint.h"
#include "text/string_clean.hpp"

namespace {

constexpr double kLargestDouble = std::numeric_limits<double>::max();
constexpr double kDisconnectBand = 1.0;
constexpr double kUndefinedElevation = 3.4028234663852886e38;
constexpr double kCollinearArcOffset = 1e-7;
constexpr double kTwoPi = 6.283185307179586476925286766559;
constexpr double kPi = 3.14159265358979323846;

bool isDisconnectValue(double v) noexcept {
    return std::fabs(std::fabs(v) - kLargestDouble) < kDisconnectBand;
}

Point3d planPoint(double x, double y) noexcept { return Point3d{x, y, 0.0}; }

// The text reader's limits: 511 characters into a 512-byte buffer.
constexpr std::size_t kTextBufferSize = 512;

// Splits at the next single blank: returns the token start and advances *cursor past the
// blank (or to the end).  A token may be empty.
const char* nextToken(char** cursor) noexcept {
    char* start = *cursor;
    char* blank = std::strchr(start, ' ');
    if (blank == nullptr) {
        *cursor = start + std::strlen(start);
    } else {
        *blank = '\0';
        *cursor = blank + 1;
    }
    return start;
}

}  // namespace

extern "C" {

int qmPoint_copy(Point3d* destination, const Point3d* source) noexcept {
    if (destination == nullptr || source == nullptr) return ERR_FAILURE;
    *destination = *source;
    return 0;
}

int qmPoint_setValue(Point3d* point, double x, double y, double z) noexcept {
    if (point == nullptr) return ERR_FAILURE;
    *point = Point3d{x, y, z};
    return 0;
}

int qmPoint_clear(Point3d* point) noexcept { return qmPoint_setValue(point, 0.0, 0.0, 0.0); }

Point3d* qmPoint_initialize2d(Point3d* point) noexcept {
    if (point != nullptr) *point = Point3d{0.0, 0.0, kUndefinedElevation};
    return point;
}

void qmPoint_setZvalue(int count, Point3d* points, double z) noexcept {
    if (points == nullptr) return;
    for (int i = 0; i < count; ++i) points[i].z = z;
}

int qmPoint_swap(Point3d* a, Point3d* b) noexcept {
    if (a == nullptr || b == nullptr) return ERR_FAILURE;
    const Point3d t = *a;
    *a = *b;
    *b = t;
    return 0;
}

int qmPoint_equal2d(const Point3d* a, const Point3d* b) noexcept {
    return a != nullptr && b != nullptr && a->x == b->x && a->y == b->y;
}

int qmPoint_equal3d(const Point3d* a, const Point3d* b) noexcept {
    return qmPoint_equal2d(a, b) && a->z == b->z;
}

int qmPoint_nearEqual2d(const Point3d* a, const Point3d* b, double tolerance) noexcept {
    return a != nullptr && b != nullptr && kb::points::planDistance(*a, *b) <= tolerance;
}

int qmPoint_nearEqual3d(const Point3d* a, const Point3d* b, double tolerance) noexcept {
    return a != nullptr && b != nullptr && qmPoint_distance3d(a, b) <= tolerance;
}

int qmPoint_isDisconnect(const Point3d* point) noexcept {
    if (point == nullptr) return 0;
    return isDisconnectValue(point->x) || isDisconnectValue(point->y) ||
           isDisconnectValue(point->z);
}

int qmPoint_isInRange2d(const Point3d* point, const Point3d* low, const Point3d* high) noexcept {
    if (point == nullptr || low == nullptr || high == nullptr) return 0;
    // The upper y bound comes from the low corner as well; kept for compatibility.
    return low->x <= point->x && point->x <= high->x && low->y <= point->y &&
           point->y <= low->y;
}

double qmPoint_distance2d(const Point3d* a, const Point3d* b) noexcept {
    if (a == nullptr || b == nullptr) return 0.0;
    return kb::points::planDistance(*a, *b);
}

double qmPoint_distance3d(const Point3d* a, const Point3d* b) noexcept {
    if (a == nullptr || b == nullptr) return 0.0;
    return qmMath_distance3d(a->x, a->y, a->z, b->x, b->y, b->z);
}

double qmPoint_direction2d(const Point3d* from, const Point3d* to) noexcept {
    if (from == nullptr || to == nullptr) return 0.0;
    return qmMath_direction2d(from->x, from->y, to->x, to->y);
}

int qmPoint_distanceDirection2d(double* distance, double* direction, const Point3d* from,
                                const Point3d* to) noexcept {
    if (from == nullptr || to == nullptr) {
        kb::storeOptional(distance, 0.0);
        kb::storeOptional(direction, 0.0);
        return ERR_FAILURE;
    }
    kb::storeOptional(distance, qmPoint_distance2d(from, to));
    kb::storeOptional(direction, qmPoint_direction2d(from, to));
    return 0;
}

int qmPoint_locatePointByDistanceDirection2d(Point3d* out, double distance, double direction,
                                             const Point3d* origin) noexcept {
    if (out == nullptr || origin == nullptr) return ERR_FAILURE;
    const double z = origin->z;
    const int status = qmMath_locateByDistanceDirection2d(&out->x, &out->y, origin->x,
                                                          origin->y, distance, direction);
    if (status == 0) out->z = z;
    return status;
}

int qmPoint_locatePointByDistanceTangent2d(Point3d* out, double distance,
                                           const Point3d* tangentPoint,
                                           const Point3d* origin) noexcept {
    if (out == nullptr || tangentPoint == nullptr || origin == nullptr) return ERR_FAILURE;
    double tx = tangentPoint->x - origin->x, ty = tangentPoint->y - origin->y;
    if (qmMath_normalizeVector2d(&tx, &ty) != 0) return ERR_FAILURE;
    const Point3d o = *origin;
    const int status = qmMath_locateByDistanceTangent2d(&out->x, &out->y, o.x, o.y, distance,
                                                        tx, ty);
    if (status == 0) out->z = o.z;
    return status;
}

int qmPoint_locatePointByTranslationRotation2d(const Point3d* point, double dx, double dy,
                                               double rotation, Point3d* out) noexcept {
    if (point == nullptr || out == nullptr) return ERR_FAILURE;
    const Point3d p = *point;
    const int status =
        qmMath_locateByTranslationRotation2d(&out->x, &out->y, p.x, p.y, dx, dy, rotation);
    if (status == 0) out->z = p.z;
    return status;
}

int qmPoint_rotateByAngle2d(Point3d* point, double angle) noexcept {
    if (point == nullptr) return ERR_FAILURE;
    Transform3x4 rotation;
    qmTransform_setIdentity(&rotation);
    qmTransform_rotateByAngle2d(&rotation, angle);
    qmTransform_movePoint(&rotation, point, point);
    return 0;
}

int qmPoint_getDirectionVector2d(const Point3d* from, Point3d* out, const Point3d* to) noexcept {
    if (from == nullptr || out == nullptr || to == nullptr) return ERR_FAILURE;
    Point3d v = planPoint(to->x - from->x, to->y - from->y);
    const double length = std::hypot(v.x, v.y);
    if (qmMath_isDivisionPossible(1.0, length)) {
        v.x /= length;
        v.y /= length;
    }
    *out = v;
    return 0;
}

double qmPoint_getDistanceToRectangle2d(const Point3d* point, const Point3d* low,
                                        const Point3d* high) noexcept {
    if (point == nullptr || low == nullptr || high == nullptr) return 0.0;
    // Distance outside the extent along each axis (0 within it); their hypotenuse is the
    // perpendicular distance to a side or the distance to a corner.
    const double minX = std::fmin(low->x, high->x), maxX = std::fmax(low->x, high->x);
    const double minY = std::fmin(low->y, high->y), maxY = std::fmax(low->y, high->y);
    const double ox = point->x < minX ? minX - point->x : (point->x > maxX ? point->x - maxX : 0.0);
    const double oy = point->y < minY ? minY - point->y : (point->y > maxY ? point->y - maxY : 0.0);
    return std::hypot(ox, oy);
}

int qmPoint_calculateSweepAngle2d(const Point3d* centre, double* sweep, const Point3d* start,
                                  const Point3d* end, int counterClockwise) noexcept {
    if (centre == nullptr || sweep == nullptr || start == nullptr || end == nullptr)
        return ERR_FAILURE;
    if (qmPoint_equal2d(start, centre) || qmPoint_equal2d(end, centre)) return ERR_FAILURE;
    const double a1 = std::atan2(start->y - centre->y, start->x - centre->x);
    const double a2 = std::atan2(end->y - centre->y, end->x - centre->x);
    double s = a2 - a1;
    if (a2 < a1) s += kTwoPi;
    *sweep = counterClockwise != 0 ? s : s - kTwoPi;
    return 0;
}

int qmPoint_calculateArcInfoFor3pts(Point3d* centre, double* radius, double* startDirection,
                                    double* sweep, const Point3d* p1, const Point3d* p2,
                                    const Point3d* p3) noexcept {
    if (p1 == nullptr || p2 == nullptr || p3 == nullptr) return ERR_FAILURE;
    double offset = 0.0;
    if (qmMath_projectOnLine2d(nullptr, nullptr, &offset, p2->x, p2->y, p1->x, p1->y, p3->x,
                               p3->y) != 0 ||
        std::fabs(offset) <= kCollinearArcOffset)
        return ERR_FAILURE;
    double cx = 0.0, cy = 0.0, r = 0.0;
    if (qmBestFit_horz3PtCurveCalc(&cx, &cy, &r, p1->x, p1->y, p2->x, p2->y, p3->x, p3->y) != 0)
        return ERR_FAILURE;
    const double firstDirection = qmMath_direction2d(cx, cy, p1->x, p1->y);
    const double lastDirection = qmMath_direction2d(cx, cy, p3->x, p3->y);
    double s = std::fabs(qmMath_angleBetweenDirections(firstDirection, lastDirection));
    if (std::fabs(offset) > r) s = kTwoPi - s;
    kb::storeOptional(centre, planPoint(cx, cy));
    kb::storeOptional(radius, r);
    kb::storeOptional(startDirection, firstDirection);
    kb::storeOptional(sweep, offset >= 0.0 ? s : -s);
    return 0;
}

int qmPoint_calculatePointAlongArc(Point3d* out, const Point3d* start, const Point3d* centre,
                                   double arcLength, int reverse) noexcept {
    if (out == nullptr || start == nullptr || centre == nullptr) return ERR_FAILURE;
    const double radius = kb::points::planDistance(*centre, *start);
    if (!(radius > 0.0)) return ERR_FAILURE;
    double increment = arcLength / radius;
    if (reverse != 0) increment *= -1.0;
    const double direction =
        qmMath_normalizeAngle(qmMath_direction2d(centre->x, centre->y, start->x, start->y) +
                              increment);
    const double z = start->z;
    const Point3d c = *centre;
    if (qmMath_locateByDistanceDirection2d(&out->x, &out->y, c.x, c.y, radius, direction) != 0)
        return ERR_FAILURE;
    out->z = z;
    return 0;
}

int qmPoint_lineTangentToCircleByPoint(Point3d* left, Point3d* right, const Point3d* centre,
                                       double radius, const Point3d* point,
                                       double tolerance) noexcept {
    if (left == nullptr || right == nullptr || centre == nullptr || point == nullptr)
        return ERR_FAILURE;
    double xl, yl, xr, yr;
    const int status = qmMath_lineTangentToCircleByPoint(&xl, &yl, &xr, &yr, centre->x, centre->y,
                                                         radius, point->x, point->y, tolerance);
    *left = planPoint(xl, yl);
    *right = planPoint(xr, yr);
    return status;
}

int qmPoint_passTangentCurveThruPoint(double* radius, const Point3d* a, const Point3d* b,
                                      const Point3d* v, const Point3d* point) noexcept {
    if (radius == nullptr) return ERR_FAILURE;
    *radius = 0.0;
    if (a == nullptr || b == nullptr || v == nullptr || point == nullptr) return ERR_FAILURE;
    return qmMath_passTangentCurveThruPoint(radius, a->x, a->y, b->x, b->y, v->x, v->y, point->x,
                                            point->y);
}

int qmPoint_passTangentParabolaThruPoint(double* length, const Point3d* a, const Point3d* b,
                                         const Point3d* v, const Point3d* point) noexcept {
    if (length == nullptr) return ERR_FAILURE;
    *length = 0.0;
    if (a == nullptr || b == nullptr || v == nullptr || point == nullptr) return ERR_FAILURE;
    return qmMath_passTangentParabolaThruPoint(length, a->x, a->y, b->x, b->y, v->x, v->y,
                                               point->x, point->y);
}

int qmPoint_setFromYXZString(Point3d* point, const char* text) noexcept {
    if (point == nullptr || text == nullptr || text[0] == '\0') return ERR_FAILURE;
    char buffer[kTextBufferSize];
    std::size_t length = 0;
    while (length + 1 < kTextBufferSize && text[length] != '\0') {
        buffer[length] = text[length];
        ++length;
    }
    buffer[length] = '\0';
    kb::text::cleanString(buffer, kb::text::CleanOptions{true, true, true});

    char* cursor = buffer;
    const char* northing = nextToken(&cursor);
    if (northing[0] == '\0' || *cursor == '\0') return ERR_FAILURE;
    const char* easting = nextToken(&cursor);
    if (easting[0] == '\0') return ERR_FAILURE;
    const bool hasElevation = *cursor != '\0';
    const char* elevation = hasElevation ? nextToken(&cursor) : nullptr;

    point->y = std::atof(northing);
    point->x = std::atof(easting);
    point->z = hasElevation ? std::atof(elevation) : 0.0;
    return 0;
}

int qmPoint_computePlane(Point3d* pointOnPlane, PlaneCoefficients* plane,
                         double* standardError, const Point3d* points, int count) noexcept {
    if (points == nullptr || count < 3) return ERR_FAILURE;
    double mx, my, mz, a, b, c, error;
    if (qmBestFit_planeCalc(&mx, &my, &mz, &a, &b, &c, &error, count, points) != 0)
        return ERR_FAILURE;
    kb::storeOptional(pointOnPlane, Point3d{mx, my, mz});
    kb::storeOptional(plane, PlaneCoefficients{a, b, c});
    kb::storeOptional(standardError, error);
    return 0;
}

int KB_CALLEE_POPS qmApiPoint_computePlane(Point3d* pointOnPlane, PlaneCoefficients* plane,
                                           double* standardError, const Point3d* points,
                                           int count) noexcept {
    return qmPoint_computePlane(pointOnPlane, plane, standardError, points, count);
}

int qmPoint_computeOnPlaneGivenXY(double* difference, Point3d* out, const Point3d* point,
                                  const PlaneCoefficients* plane) noexcept {
    if (point == nullptr || plane == nullptr) return ERR_FAILURE;
    const Point3d p = *point;
    const double zPlane = plane->b * p.y + plane->a * p.x + plane->c;
    kb::storeOptional(out, Point3d{p.x, p.y, zPlane});
    kb::storeOptional(difference, p.z - zPlane);
    return 0;
}

int qmPoint_computeMinimumDistancefromPlane(double* distance, Point3d* foot,
                                            const Point3d* point,
                                            const PlaneCoefficients* plane) noexcept {
    if (point == nullptr || plane == nullptr) return ERR_FAILURE;
    const Point3d p = *point;
    const double d = p.z - plane->c - plane->a * p.x - plane->b * p.y;
    const double q = plane->a * plane->a + plane->b * plane->b + 1.0;
    const Point3d f{p.x + plane->a * d / q, p.y + plane->b * d / q, p.z - d / q};
    const double length = qmMath_distance3d(p.x, p.y, p.z, f.x, f.y, f.z);
    kb::storeOptional(distance, p.z - f.z < 0.0 ? -length : length);
    kb::storeOptional(foot, f);
    return 0;
}

}  // extern "C"

namespace {

// Unit-weight line fit through the plan positions, through a work array of observations.
int fitLine(const Point3d* points, int count, double* theta, double* c, double* t1, double* t2,
            double* rms) noexcept {
    constexpr int kStride = 4;
    double* observations =
        kb::heap::allocateArray<double>(static_cast<std::size_t>(count) * kStride);
    if (observations == nullptr) return ERR_FAILURE;
    for (int i = 0; i < count; ++i) {
        double* o = observations + static_cast<std::size_t>(i) * kStride;
        o[0] = points[i].x;
        o[1] = 1.0;
        o[2] = points[i].y;
        o[3] = 1.0;
    }
    const int status = qmBestFit_lineCalc(theta, c, t1, t2, rms, count, observations);
    kb::heap::release(observations);
    return status;
}

}  // namespace

extern "C" {

int qmPoint_computeLineLeastSquares(Point3d* start, Point3d* end, double* direction,
                                    double* rmsResidual, const Point3d* points,
                                    int count) noexcept {
    if (start == nullptr || end == nullptr || points == nullptr || count < 2) return ERR_FAILURE;
    double theta, c, t1, t2, rms;
    if (fitLine(points, count, &theta, &c, &t1, &t2, &rms) != 0) return ERR_FAILURE;
    const double ux = std::cos(theta), uy = std::sin(theta);
    const double a = uy, b = -ux;
    const double zFirst = points[0].z, zLast = points[count - 1].z;
    *start = Point3d{-a * c + t1 * ux, -b * c + t1 * uy, zFirst};
    *end = Point3d{-a * c + t2 * ux, -b * c + t2 * uy, zLast};
    kb::storeOptional(direction, theta);
    kb::storeOptional(rmsResidual, rms);
    return 0;
}

}  // extern "C"

namespace {

// Directions from the first point to every later point not within the tolerance of it; a
// pair of consecutive directions differing by d breaks collinearity when d >= tolerance and,
// unless reversals are allowed, also |d - pi| >= tolerance.
int checkCollinear(int count, const Point3d* points, double tolerance, bool allowReversal,
                   unsigned char* collinear) noexcept {
    if (points == nullptr || collinear == nullptr) return ERR_FAILURE;
    bool straight = true;
    bool havePrevious = false;
    double previous = 0.0;
    for (int i = 1; i < count && straight; ++i) {
        if (qmPoint_nearEqual2d(&points[0], &points[i], tolerance)) continue;
        const double current = qmPoint_direction2d(&points[0], &points[i]);
        if (havePrevious) {
            const double d = std::fabs(current - previous);
            const bool reversed = allowReversal && std::fabs(d - kPi) < tolerance;
            if (d >= tolerance && !reversed) straight = false;
        }
        previous = current;
        havePrevious = true;
    }
    *collinear = straight ? 1 : 0;
    return 0;
}

}  // namespace

extern "C" {

int qmPoint_checkForColinear2D(int count, const Point3d* points, double tolerance,
                               unsigned char* collinear) noexcept {
    return checkCollinear(count, points, tolerance, true, collinear);
}

int qmPoint_checkForColinear2DInSameDir(int count, const Point3d* points, double tolerance,
                                        unsigned char* collinear) noexcept {
    return checkCollinear(count, points, tolerance, false, collinear);
}

}  // extern "C"
