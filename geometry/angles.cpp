// Angles and directions of the plane-mathematics family.
#include "base/angles.hpp"
#include "korvelbase/qmmath.h"

extern "C" {

double qmMath_normalizeAngle(double angle) noexcept { return kb::normalizeAngle(angle); }

}  // extern "C"
