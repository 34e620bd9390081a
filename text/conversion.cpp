// Conversion of angle units, feet, degrees of curvature and azimuths, rounding to a step and
// the plain decimal text of a double.
#include "korvelbase/conversion.h"

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "base/optional_output.hpp"
#include "korvelbase/constants.h"
#include "korvelbase/qmmath.h"

namespace {

// The one tolerance of the family: carries of minutes and seconds, the grid test and the
// tie margin of rounding, the near-zero guards of the curvature conversions, the shift of the
// quadrant boundaries.
constexpr double kTolerance = 5e-08;

constexpr double kMinutesPerDegree = 60.0;
constexpr double kSecondsPerMinute = 60.0;
constexpr double kSecondsPerDegree = 3600.0;

// Length factors, stored exactly as these doubles.  The two foot-to-foot factors are rounded
// values and are deliberately not reciprocal to each other.
constexpr double kUsSurveyFootToMetre = 0.3048006096012192;      // 1200 / 3937
constexpr double kInternationalFootToMetre = 0.3048;
constexpr double kMetreToUsSurveyFoot = 3.2808333333333333;      // 3937 / 1200
constexpr double kMetreToInternationalFoot = 3.280839895013123;  // 1 / 0.3048
constexpr double kUsSurveyFootToInternationalFoot = 1.000002000004;
constexpr double kInternationalFootToUsSurveyFoot = 0.999998;

// Degree of curvature: the angle subtended by a 100-unit station, measured along the arc
// (arc definition) or as a chord whose half is 50 units (chord definition).
constexpr double kArcStation = 100.0;
constexpr double kDegreesPerTurn = 360.0;
constexpr double kHalfChordStation = 50.0;

// Rounding modes of qmConversion_roundDouble.
constexpr int kRoundUp = 1;
constexpr int kRoundDown = 2;
constexpr int kRoundNearest = 3;

// Bearing quadrants.
constexpr int kNoQuadrant = 0;
constexpr int kNorthEast = 1;
constexpr int kSouthEast = 2;
constexpr int kSouthWest = 3;
constexpr int kNorthWest = 4;

// Text of a double: at most 8 decimals.
constexpr int kMaxDecimals = 8;

// Truncation toward zero of an angle in degrees to whole degrees; false when the angle is NaN
// or the whole degrees, moved by one carry, could leave the int range (a conversion or an
// addition that would be undefined).
bool truncateToInt(double value, int* whole) noexcept {
    const double truncated = std::trunc(value);
    if (!(truncated > static_cast<double>(INT_MIN) && truncated < static_cast<double>(INT_MAX)))
        return false;
    *whole = static_cast<int>(truncated);
    return true;
}

// Carry of a signed sixty-part (minutes or seconds) that is within the tolerance of +60 or
// -60: the part becomes 0 and the returned step (+1, -1 or 0) moves the next larger unit.
int carryOfSixty(double* part) noexcept {
    if (std::fabs(*part - 60.0) < kTolerance) {
        *part = 0.0;
        return 1;
    }
    if (std::fabs(*part + 60.0) < kTolerance) {
        *part = 0.0;
        return -1;
    }
    return 0;
}

// Result of mode 3 for a value off the grid: the neighbour toward zero when the remainder is
// below half a step, else the one away from zero.  The tie margin leans toward plus infinity:
// the threshold is lowered for positive values and raised for negative ones.
double roundToNearest(double value, double remainder, double step, double towardZero,
                      double awayFromZero) noexcept {
    const double halfStep = step / 2.0;
    const double threshold = value >= 0.0 ? halfStep - kTolerance : halfStep + kTolerance;
    return std::fabs(remainder) < threshold ? towardZero : awayFromZero;
}

double roundToStep(double value, double step, int mode) noexcept {
    step = std::fabs(step);
    if (step < kTolerance) return value;

    const double remainder = std::fmod(value, step);  // has the sign of value
    if (std::fabs(remainder) < kTolerance) return value;  // already on the grid

    const double towardZero = value - remainder;
    const double awayFromZero = value >= 0.0 ? towardZero + step : towardZero - step;
    const double lower = std::fmin(towardZero, awayFromZero);
    const double upper = std::fmax(towardZero, awayFromZero);

    switch (mode) {
        case kRoundUp: return upper;
        case kRoundDown: return lower;
        case kRoundNearest:
            return roundToNearest(value, remainder, step, towardZero, awayFromZero);
        default: return 0.0;  // unknown mode, kept as it stands
    }
}

}  // namespace

extern "C" {

// ---- Angle units ----------------------------------------------------------------------------

double qmConversion_degreeToRadian(double degrees) noexcept { return dc_piover180 * degrees; }

double qmConversion_radianToDegree(double radians) noexcept { return dc_180overpi * radians; }

double qmConversion_gradToRadian(double grads) noexcept { return (dc_pi * 0.005) * grads; }

double qmConversion_radianToGrad(double radians) noexcept { return (200.0 / dc_pi) * radians; }

// ---- Degrees, minutes and seconds -----------------------------------------------------------

int qmConversion_degreeToDM(int* degrees, double* minutes, double angle) noexcept {
    int d = 0;
    if (!truncateToInt(angle, &d)) return ERR_FAILURE;
    double m = (angle - d) * kMinutesPerDegree;
    d += carryOfSixty(&m);
    kb::storeOptional(degrees, d);
    kb::storeOptional(minutes, m);
    return 0;
}

int qmConversion_degreeToDMS(int* degrees, int* minutes, double* seconds, double angle) noexcept {
    int d = 0;
    if (!truncateToInt(angle, &d)) return ERR_FAILURE;
    const double fractionalMinutes = (angle - d) * kMinutesPerDegree;
    int m = static_cast<int>(fractionalMinutes);  // |fractionalMinutes| < 60
    double s = (fractionalMinutes - m) * kSecondsPerMinute;
    m += carryOfSixty(&s);
    if (m == 60) {
        m = 0;
        d += 1;
    } else if (m == -60) {
        m = 0;
        d -= 1;
    }
    kb::storeOptional(degrees, d);
    kb::storeOptional(minutes, m);
    kb::storeOptional(seconds, s);
    return 0;
}

double qmConversion_DMToDegree(double* out, int degrees, double minutes) noexcept {
    const double result = degrees + minutes / kMinutesPerDegree;
    kb::storeOptional(out, result);
    return result;
}

double qmConversion_DMSTodegree(double* out, int degrees, int minutes, double seconds) noexcept {
    const double result =
        (seconds / kSecondsPerDegree + minutes / kMinutesPerDegree) + degrees;
    kb::storeOptional(out, result);
    return result;
}

// ---- Rounding to a step ---------------------------------------------------------------------

double qmConversion_roundDouble(double* out, double value, double step, int mode) noexcept {
    const double result = roundToStep(value, step, mode);
    kb::storeOptional(out, result);
    return result;
}

double qmConversion_roundDoubleByDecimalDigits(double* out, double value, int digits,
                                               int mode) noexcept {
    // Negate in double: -INT_MIN does not exist as an int.
    const double step = std::pow(10.0, -static_cast<double>(digits));
    return qmConversion_roundDouble(out, value, step, mode);
}

// ---- Feet and metres ------------------------------------------------------------------------

double qmConversion_usfootToMeter(double feet) noexcept { return feet * kUsSurveyFootToMetre; }

double qmConversion_internationalFootToMeter(double feet) noexcept {
    return feet * kInternationalFootToMetre;
}

double qmConversion_meterToUsFoot(double metres) noexcept { return metres * kMetreToUsSurveyFoot; }

double qmConversion_meterToInternationalFoot(double metres) noexcept {
    return metres * kMetreToInternationalFoot;
}

double qmConversion_usFootToInternationalFoot(double feet) noexcept {
    return feet * kUsSurveyFootToInternationalFoot;
}

double qmConversion_internationalFootToUsFoot(double feet) noexcept {
    return feet * kInternationalFootToUsSurveyFoot;
}

// ---- Degree of curvature --------------------------------------------------------------------
// The factor pair dc_piover180 * dc_180overpi is multiplied in as the formulas have always
// been written; it is 1 to within rounding.

double qmConversion_radiusToDegree(double radius) noexcept {
    if (std::fabs(radius) <= kTolerance) return 0.0;
    return (kArcStation * kDegreesPerTurn) / (dc_2pi * radius) * dc_piover180 * dc_180overpi;
}

double qmConversion_degreeToRadius(double degree) noexcept {
    if (std::fabs(degree) <= kTolerance) return 0.0;
    return (kArcStation * kDegreesPerTurn) / (dc_piover180 * degree * dc_180overpi * dc_2pi);
}

double qmConversion_radiusToDegreeChord(double radius) noexcept {
    if (!(std::fabs(radius) >= kHalfChordStation)) return 0.0;
    return 2.0 * std::asin(kHalfChordStation / radius) * dc_180overpi;
}

double qmConversion_degreeToRadiusChord(double degree) noexcept {
    if (std::fabs(degree) <= kTolerance) return 0.0;
    return kHalfChordStation / std::sin(dc_piover180 * degree * 0.5);
}

// ---- Azimuths, directions and quadrants -----------------------------------------------------

double qmConversion_azimuthToDirection(double azimuth) noexcept {
    return qmMath_normalizeAngle(dc_piover2 - azimuth);
}

double qmConversion_azimuthToDirectionDegree(double azimuth) noexcept {
    return qmConversion_azimuthToDirection(azimuth * dc_piover180) * dc_180overpi;
}

int qmConversion_quadrantNumber(double direction) noexcept {
    const double a = qmMath_normalizeAngle(direction);
    const double e = kTolerance;
    const double threeHalvesPi = dc_pi + dc_piover2;
    // Half-open ranges [from - e, to - e), tested in this order.
    if (-e <= a && a < dc_piover2 - e) return kNorthEast;
    if (threeHalvesPi - e <= a && a < dc_2pi - e) return kSouthEast;
    if (dc_pi - e <= a && a < threeHalvesPi - e) return kSouthWest;
    if (dc_piover2 - e <= a && a < dc_pi - e) return kNorthWest;
    return kNoQuadrant;
}

// ---- Text -----------------------------------------------------------------------------------

int qmConversion_doubleToString(char* buffer, double value, int decimals) noexcept {
    if (buffer == nullptr) return 0;
    if (decimals < 0) decimals = 0;
    if (decimals > kMaxDecimals) decimals = kMaxDecimals;
    // Format into local scratch first so that the caller's buffer receives exactly the text
    // and its NUL, never a byte more.
    char text[QM_CONVERSION_DOUBLE_TEXT_SIZE];
    const int length = std::snprintf(text, sizeof text, "%-.*lf", decimals, value);
    if (length < 0 || length >= static_cast<int>(sizeof text)) {  // cannot happen for a double
        buffer[0] = '\0';
        return 0;
    }
    std::memcpy(buffer, text, static_cast<size_t>(length) + 1);
    return length;
}

}  // extern "C"
