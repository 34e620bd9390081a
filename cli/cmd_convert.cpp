// korvel convert: angles between radians, degrees, grads, degree-minute-second and quadrant
// bearings, and lengths between metres, US survey feet and international feet.
#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <fmt/format.h>
#include <map>

#include "cli/angles.hpp"
#include "cli/commands.hpp"
#include "cli/errors.hpp"
#include "cli/report.hpp"
#include "korvelbase/conversion.h"

namespace korvel {

namespace {

enum class Kind { Angle, Length };

struct Unit {
    Kind kind;
    const char* description;
};

const std::map<std::string, Unit>& units() {
    static const std::map<std::string, Unit> table = {
        {"rad", {Kind::Angle, "radians"}},
        {"deg", {Kind::Angle, "decimal degrees"}},
        {"grad", {Kind::Angle, "grads (400 to the turn)"}},
        {"dms", {Kind::Angle, "degrees:minutes:seconds"}},
        {"bearing", {Kind::Angle, "quadrant bearing of an azimuth (N45:30:00E)"}},
        {"m", {Kind::Length, "metres"}},
        {"usft", {Kind::Length, "US survey feet (1200/3937 m)"}},
        {"ft", {Kind::Length, "international feet (0.3048 m)"}},
    };
    return table;
}

double parseNumber(const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(value)) {
        throw UsageError("'" + text + "' is not a finite number");
    }
    return value;
}

double angleToDegrees(const std::string& value, const std::string& unit) {
    if (unit == "rad") return qmConversion_radianToDegree(parseNumber(value));
    if (unit == "grad") return qmConversion_radianToDegree(qmConversion_gradToRadian(parseNumber(value)));
    if (unit == "dms") return parseDms(value);
    if (unit == "bearing") return parseBearing(value);
    return parseNumber(value);
}

std::string degreesTo(double degrees, const std::string& unit) {
    if (unit == "rad") return fmt::format("{:.12f}", qmConversion_degreeToRadian(degrees));
    if (unit == "grad") {
        return fmt::format("{:.10f}", qmConversion_radianToGrad(qmConversion_degreeToRadian(degrees)));
    }
    if (unit == "dms") return dmsText(degrees);
    if (unit == "bearing") return bearingText(degrees);
    return fmt::format("{:.10f}", degrees);
}

double lengthToMetres(double value, const std::string& unit) {
    if (unit == "usft") return qmConversion_usfootToMeter(value);
    if (unit == "ft") return qmConversion_internationalFootToMeter(value);
    return value;
}

double metresTo(double metres, const std::string& unit) {
    if (unit == "usft") return qmConversion_meterToUsFoot(metres);
    if (unit == "ft") return qmConversion_meterToInternationalFoot(metres);
    return metres;
}

}  // namespace

void addConvert(CLI::App& app) {
    auto* command = app.add_subcommand("convert", "angles and lengths between surveying units");
    static std::string value;
    static std::string from;
    static std::string to;
    std::string unitHelp;
    for (const auto& [name, unit] : units()) unitHelp += fmt::format("\n  {:<8} {}", name, unit.description);
    command->add_option("VALUE", value, "the quantity to convert")->required();
    command->add_option("--from", from, "unit of VALUE")->required();
    command->add_option("--to", to, "unit of the result")->required();
    command->footer("Units:" + unitHelp +
                    "\nExamples:\n  korvel convert 45.5 --from deg --to dms\n"
                    "  korvel convert 1000 --from usft --to m\n"
                    "  korvel convert S12:30:00W --from bearing --to deg");
    command->callback([] {
        const auto source = units().find(from);
        const auto target = units().find(to);
        if (source == units().end()) throw UsageError("unknown unit '" + from + "'");
        if (target == units().end()) throw UsageError("unknown unit '" + to + "'");
        if (source->second.kind != target->second.kind) {
            throw UsageError("cannot convert " + from + " to " + to + ": one is an angle, the other a length");
        }
        std::string result;
        if (source->second.kind == Kind::Angle) {
            result = degreesTo(angleToDegrees(value, from), to);
        } else {
            result = fmt::format("{:.6f}", metresTo(lengthToMetres(parseNumber(value), from), to));
        }
        std::printf("%s\n", result.c_str());
    });
}

}  // namespace korvel
