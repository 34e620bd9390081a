#include "cli/angles.hpp"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <fmt/format.h>
#include <vector>

#include "cli/errors.hpp"
#include "korvelbase/conversion.h"

namespace korvel {

namespace {

constexpr double kFullTurnDegrees = 360.0;

double parseNumberText(const std::string& text, const std::string& what) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(value)) {
        throw UsageError("'" + what + "' is not an angle");
    }
    return value;
}

}  // namespace

std::string dmsText(double degrees) {
    int d = 0;
    int m = 0;
    double s = 0.0;
    if (qmConversion_degreeToDMS(&d, &m, &s, degrees) != 0) return "invalid";
    const bool negative = degrees < 0.0;
    return fmt::format("{}{}d{:02d}'{:05.2f}\"", negative ? "-" : "", std::abs(d), std::abs(m),
                       std::fabs(s));
}

double parseDms(const std::string& text) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == ':') {
            parts.emplace_back();
        } else if (!std::isspace(static_cast<unsigned char>(c))) {
            parts.back() += c;
        }
    }
    if (parts.size() > 3) throw UsageError("'" + text + "' is not D:M:S");
    const bool negative = !parts[0].empty() && parts[0][0] == '-';
    const double d = std::fabs(parseNumberText(parts[0], text));
    const double m = parts.size() > 1 ? parseNumberText(parts[1], text) : 0.0;
    const double s = parts.size() > 2 ? parseNumberText(parts[2], text) : 0.0;
    if (m < 0.0 || m >= 60.0 || s < 0.0 || s >= 60.0) {
        throw UsageError("'" + text + "': minutes and seconds lie in [0, 60)");
    }
    const double value = d + m / 60.0 + s / 3600.0;
    return negative ? -value : value;
}

std::string bearingText(double azimuthDegrees) {
    double a = std::fmod(azimuthDegrees, kFullTurnDegrees);
    if (a < 0.0) a += kFullTurnDegrees;
    const bool north = a <= 90.0 || a >= 270.0;
    const bool east = a <= 180.0;
    double angle = 0.0;
    if (north && east) angle = a;
    else if (!north && east) angle = 180.0 - a;
    else if (!north) angle = a - 180.0;
    else angle = kFullTurnDegrees - a;
    return fmt::format("{} {} {}", north ? 'N' : 'S', dmsText(angle), east ? 'E' : 'W');
}

double parseBearing(const std::string& text) {
    std::string compact;
    for (const char c : text) {
        if (!std::isspace(static_cast<unsigned char>(c))) compact += static_cast<char>(std::toupper(c));
    }
    if (compact.size() < 3 || (compact.front() != 'N' && compact.front() != 'S') ||
        (compact.back() != 'E' && compact.back() != 'W')) {
        throw UsageError("'" + text + "' is not a bearing such as N45.5E or S12:30:00W");
    }
    const double angle = parseDms(compact.substr(1, compact.size() - 2));
    if (angle < 0.0 || angle > 90.0) throw UsageError("'" + text + "': a bearing lies in [0, 90]");
    const bool north = compact.front() == 'N';
    const bool east = compact.back() == 'E';
    if (north) return east ? angle : kFullTurnDegrees - angle;
    return east ? 180.0 - angle : 180.0 + angle;
}

}  // namespace korvel
