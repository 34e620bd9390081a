// Angle text for korvel: degree-minute-second and quadrant bearings, in both directions.
#ifndef KORVEL_CLI_ANGLES_HPP
#define KORVEL_CLI_ANGLES_HPP

#include <string>

namespace korvel {

// 123d04'05.60" (seconds to two decimals, sign in front).
std::string dmsText(double degrees);
// "D:M:S", "D:M" or a plain number of degrees; throws UsageError.
double parseDms(const std::string& text);
// Quadrant bearing of an azimuth in degrees: N 45d30'00.00" E.
std::string bearingText(double azimuthDegrees);
// "N45.5E", "S 12:30:00 W", ... to an azimuth in degrees; throws UsageError.
double parseBearing(const std::string& text);

}  // namespace korvel

#endif  // KORVEL_CLI_ANGLES_HPP
