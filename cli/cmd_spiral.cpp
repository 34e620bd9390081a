// korvel spiral: a clothoid setting-out table (chainage, x, y, tangent direction, radius).
#include <CLI/CLI.hpp>
#include <cmath>
#include <fmt/format.h>

#include "cli/commands.hpp"
#include "cli/errors.hpp"
#include "cli/report.hpp"
#include "korvelbase/utmat_clothoid.h"

namespace korvel {

namespace {

struct Options {
    double a = 0.0;
    double length = 0.0;
    double step = 10.0;
    double offset = 0.0;
    int formula = UTMAT_SPIRAL_FORMULA_VELMORAN;
    OutputOptions output;
};

constexpr double kDegreesPerRadian = 57.29577951308232;

void run(const Options& o) {
    if (o.a == 0.0 || !std::isfinite(o.a)) throw UsageError("--A must be a non-zero number");
    if (!(o.length > 0.0) || !(o.step > 0.0)) throw UsageError("--length and --step must be positive");
    if (o.length / o.step > 1e7) throw UsageError("--step is too small for that length (more than 10,000,000 rows)");
    Report report({"chainage", "x", "y", "tangent_deg", "radius"});
    const auto row = [&](double s) {
        double x = 0.0, y = 0.0, tx = 0.0, ty = 0.0;
        qmMath_calculateSpiralPointByDistanceAndOffset(&x, &y, &tx, &ty, o.a, s, o.offset, o.formula);
        const double radius = s > 0.0 ? o.a * o.a / s : 0.0;
        report.add({fixed(s, 3), fixed(x, 4), fixed(y, 4), fixed(std::atan2(ty, tx) * kDegreesPerRadian, 6),
                    s > 0.0 ? fixed(radius, 3) : "inf"});
    };
    const long steps = static_cast<long>(std::floor(o.length / o.step + 1e-9));
    for (long k = 0; k <= steps; ++k) row(static_cast<double>(k) * o.step);
    if (static_cast<double>(steps) * o.step < o.length - 1e-9) row(o.length);
    OutputFile(o.output.output).write(report.render(o.output.csv));
}

}  // namespace

void addSpiral(CLI::App& app) {
    static Options o;
    auto* command = app.add_subcommand("spiral", "clothoid setting-out table: chainage, x, y, tangent, radius");
    command->add_option("--A", o.a, "clothoid parameter A (A^2 = R L; negative turns right)")->required();
    command->add_option("--length", o.length, "length of the table along the spiral (m)")->required();
    command->add_option("--step", o.step, "chainage interval (m)")->capture_default_str();
    command->add_option("--offset", o.offset, "offset to the right of the spiral (m)")->capture_default_str();
    command->add_option("--formula", o.formula, "1: four-term series; 2: nine-term series and asymptotic form")
        ->capture_default_str();
    addOutputOptions(*command, o.output);
    command->footer("Example:\n  korvel spiral --A 200 --length 100 --step 20");
    command->callback([] { run(o); });
}

}  // namespace korvel
