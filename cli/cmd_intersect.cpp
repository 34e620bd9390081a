// korvel intersect: every crossing of two plan polylines, with the chainage on each.
#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "cli/commands.hpp"
#include "cli/errors.hpp"
#include "cli/report.hpp"
#include "cli/svg.hpp"
#include "cli/table.hpp"
#include "korvelbase/utmat_polylines.h"

namespace korvel {

namespace {

struct Options {
    std::string first;
    std::string second;
    double tolerance = 1e-6;
    std::string svg;
    OutputOptions output;
};

std::vector<Point2d> readPolyline(const std::string& path) {
    const Table t = readTable(path, {{"x"}, {"y"}});
    if (t.rows() < 2) throw InputError(path + ": a polyline needs at least two points");
    std::vector<Point2d> points;
    for (std::size_t i = 0; i < t.rows(); ++i) points.push_back({t.column("x")[i], t.column("y")[i]});
    return points;
}

std::vector<PlotPoint> plotPoints(const std::vector<Point2d>& points) {
    std::vector<PlotPoint> out;
    for (const Point2d& p : points) out.push_back({p.x, p.y});
    return out;
}

void run(const Options& o) {
    std::vector<Point2d> a = readPolyline(o.first);
    std::vector<Point2d> b = readPolyline(o.second);
    // Room for as many crossings as the two polylines have vertices (two profiles can cross at
    // most that often); a full list is reported as such.
    const int capacity = static_cast<int>(std::min<std::size_t>(a.size() + b.size() + 64, 100000000));
    std::vector<Point2d> points(static_cast<std::size_t>(capacity));
    std::vector<double> onA(points.size()), onB(points.size());
    UtDonneesIntersection request{a.data(), static_cast<int32_t>(a.size()), b.data(), static_cast<int32_t>(b.size()),
                                  o.tolerance, capacity, nullptr, nullptr};
    int found = 0, count = 0, overlapFound = 0, overlapCount = 0;
    UTMAT_CalculerIntersectionPolylignePolyligne(&request, &found, &count, points.data(), onA.data(), onB.data(),
                                                 &overlapFound, &overlapCount, nullptr, nullptr, nullptr);
    uint32_t error = 0, detail = 0;
    UTMAT_GetErreur(&error, &detail);
    if (error != 0) throw InputError(o.first + ", " + o.second + ": the intersection failed (a zero-length segment?)");
    Report report({"crossing", "x", "y", "chainage_a", "chainage_b"});
    for (int k = 0; k < count; ++k) {
        report.add({std::to_string(k + 1), fixed(points[k].x, 4), fixed(points[k].y, 4), fixed(onA[k], 4), fixed(onB[k], 4)});
    }
    const OutputFile out(o.output.output);
    out.write(report.render(o.output.csv));
    out.write(fmt::format("{}{}{} crossings, {} collinear overlaps\n", o.output.csv ? "# " : "",
                          count == capacity ? "at least " : "", count, overlapCount));
    if (o.svg.empty()) return;
    const std::vector<PlotPoint> pa = plotPoints(a), pb = plotPoints(b);
    Range x = rangeOf(pa, true), y = rangeOf(pa, false);
    for (const PlotPoint& p : pb) {
        x.include(p.x);
        y.include(p.y);
    }
    SvgPlot plot(x, y, true);
    plot.title("Crossings: " + o.first + " and " + o.second, fmt::format("{} crossings", count));
    plot.axes("x (m)", "y (m)");
    plot.polyline(pa, "#1f77b4", 1.6);
    plot.polyline(pb, "#ff7f0e", 1.6);
    for (int k = 0; k < count; ++k) plot.cross({points[k].x, points[k].y}, "#d62728", 4);
    plot.legend("#1f77b4", o.first);
    plot.legend("#ff7f0e", o.second);
    plot.legend("#d62728", "crossings");
    plot.save(o.svg);
}

}  // namespace

void addIntersect(CLI::App& app) {
    static Options o;
    auto* command = app.add_subcommand("intersect", "every crossing of two polylines, with the chainage on each");
    command->add_option("A", o.first, "CSV with columns x, y")->required();
    command->add_option("B", o.second, "CSV with columns x, y")->required();
    command->add_option("--tolerance", o.tolerance, "points closer than this are one")->capture_default_str();
    command->add_option("--svg", o.svg, "draw both polylines and their crossings");
    addOutputOptions(*command, o.output);
    command->footer("Example:\n  korvel intersect examples/data/centreline_a.csv examples/data/centreline_b.csv --svg crossings.svg");
    command->callback([] { run(o); });
}

}  // namespace korvel
