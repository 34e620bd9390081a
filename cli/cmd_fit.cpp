// korvel fit: best-fit circle, line or plane through surveyed points, with residuals.
#include <CLI/CLI.hpp>
#include <cmath>
#include <fmt/format.h>

#include "cli/commands.hpp"
#include "cli/errors.hpp"
#include "cli/report.hpp"
#include "cli/svg.hpp"
#include "cli/table.hpp"
#include "korvelbase/bestfit_horizontal.h"

namespace korvel {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int kCirclePlotSegments = 360;

struct FitOptions {
    std::string input;
    double sd = 0.01;
    std::string svg;
    OutputOptions output;
};

std::vector<double> observations(const Table& t, double defaultSd) {
    std::vector<double> out;
    for (std::size_t i = 0; i < t.rows(); ++i) {
        const double sd = t.column("sd")[i] > 0.0 ? t.column("sd")[i] : defaultSd;
        out.insert(out.end(), {t.column("x")[i], sd, t.column("y")[i], sd});
    }
    return out;
}

void writeSections(const FitOptions& o, const std::string& element, const Report& parameters,
                   const Report& residuals) {
    const OutputFile out(o.output.output);
    const std::string hash = o.output.csv ? "# " : "";
    out.write(hash + element + "\n" + parameters.render(o.output.csv) + "\n" + hash +
              "residuals\n" + residuals.render(o.output.csv));
}

void plotCircle(const FitOptions& o, const Table& t, double cx, double cy, double r) {
    std::vector<PlotPoint> points;
    for (std::size_t i = 0; i < t.rows(); ++i) points.push_back({t.column("x")[i], t.column("y")[i]});
    std::vector<PlotPoint> circle;
    for (int k = 0; k <= kCirclePlotSegments; ++k) {
        const double a = 2.0 * kPi * k / kCirclePlotSegments;
        circle.push_back({cx + r * std::cos(a), cy + r * std::sin(a)});
    }
    Range x = rangeOf(points, true);
    Range y = rangeOf(points, false);
    x.include(cx);
    y.include(cy);
    SvgPlot plot(x, y, true);
    plot.title("Best-fit circle: " + o.input, fmt::format("radius {:.4f}, centre ({:.4f}, {:.4f})", r, cx, cy));
    plot.axes("x (m)", "y (m)");
    plot.polyline(circle, "#d62728", 1.5);
    plot.markers(points, "#1f77b4", 3.0);
    plot.cross({cx, cy}, "#d62728", 5);
    plot.label({cx, cy}, "centre", "#d62728");
    plot.legend("#1f77b4", "surveyed points");
    plot.legend("#d62728", "fitted circle");
    plot.save(o.svg);
}

void fitCircle(const FitOptions& o) {
    const Table t = readTable(o.input, {{"x"}, {"y"}, {"sd", false, 0.0}});
    if (t.rows() < 3) throw InputError(o.input + ": a circle needs at least 3 points");
    const std::vector<double> obs = observations(t, o.sd);
    double cx = 0.0, cy = 0.0, r = 0.0;
    if (qmBestFit_horzCurveCalc(&cy, &cx, &r, static_cast<int>(t.rows()), obs.data()) != 0) {
        throw InputError(o.input + ": no circle fits these points (collinear, or the adjustment failed)");
    }
    Report parameters({"parameter", "value"});
    parameters.add({"centre_x", fixed(cx, 4)});
    parameters.add({"centre_y", fixed(cy, 4)});
    parameters.add({"radius", fixed(r, 4)});
    Report residuals({"point", "x", "y", "radial_residual"});
    double sum = 0.0;
    for (std::size_t i = 0; i < t.rows(); ++i) {
        const double d = std::hypot(t.column("x")[i] - cx, t.column("y")[i] - cy) - r;
        sum += d * d;
        residuals.add({std::to_string(i + 1), fixed(t.column("x")[i], 4), fixed(t.column("y")[i], 4), fixed(d, 4)});
    }
    parameters.add({"rms_residual", fixed(std::sqrt(sum / t.rows()), 4)});
    writeSections(o, "circle", parameters, residuals);
    if (!o.svg.empty()) plotCircle(o, t, cx, cy, r);
}

void fitLine(const FitOptions& o) {
    const Table t = readTable(o.input, {{"x"}, {"y"}, {"sd", false, 0.0}});
    if (t.rows() < 2) throw InputError(o.input + ": a line needs at least 2 points");
    const std::vector<double> obs = observations(t, o.sd);
    double direction = 0.0, constant = 0.0, start = 0.0, end = 0.0, rms = 0.0;
    if (qmBestFit_lineCalc(&direction, &constant, &start, &end, &rms, static_cast<int>(t.rows()), obs.data()) != 0) {
        throw InputError(o.input + ": no line fits these points");
    }
    const double a = std::sin(direction), b = -std::cos(direction);
    const double fx = -a * constant, fy = -b * constant;
    Report parameters({"parameter", "value"});
    parameters.add({"direction_deg", fixed(direction * 180.0 / kPi, 6)});
    parameters.add({"start_x", fixed(fx + start * std::cos(direction), 4)});
    parameters.add({"start_y", fixed(fy + start * std::sin(direction), 4)});
    parameters.add({"end_x", fixed(fx + end * std::cos(direction), 4)});
    parameters.add({"end_y", fixed(fy + end * std::sin(direction), 4)});
    parameters.add({"length", fixed(end - start, 4)});
    parameters.add({"rms_residual", fixed(rms, 4)});
    Report residuals({"point", "x", "y", "offset_right"});
    for (std::size_t i = 0; i < t.rows(); ++i) {
        const double d = a * t.column("x")[i] + b * t.column("y")[i] + constant;
        residuals.add({std::to_string(i + 1), fixed(t.column("x")[i], 4), fixed(t.column("y")[i], 4), fixed(d, 4)});
    }
    writeSections(o, "line", parameters, residuals);
}

void fitPlane(const FitOptions& o) {
    const Table t = readTable(o.input, {{"x"}, {"y"}, {"z"}});
    if (t.rows() < 3) throw InputError(o.input + ": a plane needs at least 3 points");
    std::vector<Point3d> points;
    for (std::size_t i = 0; i < t.rows(); ++i) points.push_back({t.column("x")[i], t.column("y")[i], t.column("z")[i]});
    double mx = 0.0, my = 0.0, mz = 0.0, a = 0.0, b = 0.0, c = 0.0, se = 0.0;
    if (qmBestFit_planeCalc(&mx, &my, &mz, &a, &b, &c, &se, static_cast<int>(points.size()), points.data()) != 0) {
        throw InputError(o.input + ": no plane fits these points (all on one line in plan?)");
    }
    Report parameters({"parameter", "value"});
    parameters.add({"a (dz/dx)", fmt::format("{:.8f}", a)});
    parameters.add({"b (dz/dy)", fmt::format("{:.8f}", b)});
    parameters.add({"c", fixed(c, 4)});
    parameters.add({"z_at_centroid", fixed(mz, 4)});
    parameters.add({"standard_error", fmt::format("{:.6f}", se)});
    Report residuals({"point", "x", "y", "z_residual"});
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Point3d& p = points[i];
        residuals.add({std::to_string(i + 1), fixed(p.x, 4), fixed(p.y, 4), fixed(p.z - (a * p.x + b * p.y + c), 4)});
    }
    writeSections(o, "plane z = a x + b y + c", parameters, residuals);
}

}  // namespace

void addFit(CLI::App& app) {
    auto* group = app.add_subcommand("fit", "best-fit circle, line or plane through surveyed points");
    group->require_subcommand(1);
    static FitOptions circle, line, plane;
    const auto common = [](CLI::App* command, FitOptions& o, const char* columns) {
        command->add_option("POINTS", o.input, columns)->required();
        addOutputOptions(*command, o.output);
    };
    auto* c = group->add_subcommand("circle", "weighted best-fit circle with radial residuals");
    common(c, circle, "CSV with columns x, y [, sd]");
    c->add_option("--sd", circle.sd, "standard deviation of points without an sd column")->capture_default_str();
    c->add_option("--svg", circle.svg, "draw the points and the circle");
    c->footer("Example:\n  korvel fit circle examples/data/circle_points.csv --svg circle.svg");
    c->callback([] { fitCircle(circle); });
    auto* l = group->add_subcommand("line", "weighted best-fit straight line with offsets");
    common(l, line, "CSV with columns x, y [, sd]");
    l->add_option("--sd", line.sd, "standard deviation of points without an sd column")->capture_default_str();
    l->footer("Example:\n  korvel fit line points.csv");
    l->callback([] { fitLine(line); });
    auto* p = group->add_subcommand("plane", "least-squares plane z = a x + b y + c");
    common(p, plane, "CSV with columns x, y, z");
    p->footer("Example:\n  korvel fit plane examples/data/plane_points.csv");
    p->callback([] { fitPlane(plane); });
}

}  // namespace korvel
