// Conversion of angle units, feet, degrees of curvature and azimuths.
#include "korvelbase/constants.h"
#include "korvelbase/conversion.h"
#include "korvelbase/qmmath.h"

extern "C" {

double qmConversion_azimuthToDirection(double azimuth) noexcept {
    return qmMath_normalizeAngle(dc_piover2 - azimuth);
}

}  // extern "C"
