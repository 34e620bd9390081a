// korvel profile: jobs on longitudinal profiles (station, level).
//   profile fit  - design a vertical alignment within the tolerances of a survey
//   profile diff - cut and fill between two profiles
//   profile fill - fill missing elevations along a 3-D polylineed profile
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <fmt/format.h>

#include "cli/alignment.hpp"
#include "cli/commands.hpp"
#include "cli/errors.hpp"
#include "cli/report.hpp"
#include "cli/svg.hpp"
#include "cli/table.hpp"
#include "korvelbase/bestfit_vertical.h"
#include "korvelbase/mem.h"
#include "korvelbase/blockarray.h"
#include "korvelbase/utmat_polylines.h"
#include "korvelbase/utmat_profiles.h"

namespace korvel {

namespace {

constexpr double kPercent = 100.0;
constexpr int kPlotSamplesPerIpGap = 24;

struct FitOptions {
    std::string input;
    double upTol = 0.05;
    double loTol = 0.05;
    double hog = 30.0;
    double sag = 30.0;
    double minLength = 20.0;
    double cog = 1.0;
    bool startTie = false;
    bool endTie = false;
    bool debug = false;
    std::string svg;
    OutputOptions output;
};

// Runs the library's fit; throws InputError when it finds no alignment.
VerticalAlignment fitAlignment(const FitOptions& o, const std::vector<double>& stations,
                               const std::vector<double>& levels) {
    qmBestFit_verticalProfileInitialize(o.upTol, o.loTol, o.hog, o.sag, o.minLength, o.cog,
                                        o.startTie ? 1 : 0, o.endTie ? 1 : 0, o.debug ? 1 : 0);
    double* s = nullptr;
    double* l = nullptr;
    double* v = nullptr;
    int count = 0;
    const int status = qmBestFit_verticalComputeProfile(&s, &l, &v, &count, stations.data(),
                                                        levels.data(),
                                                        static_cast<int>(stations.size()));
    if (status != 0) throw InputError(o.input + ": no vertical alignment fits these levels");
    std::vector<VerticalIp> ips;
    for (int i = 0; i < count; ++i) ips.push_back({s[i], l[i], v[i]});
    qmMem_free(s);
    qmMem_free(l);
    qmMem_free(v);
    return VerticalAlignment(std::move(ips));
}

Report ipTable(const VerticalAlignment& alignment) {
    Report report({"ip", "station", "level", "grade_in_pct", "grade_out_pct", "curve_length", "k"});
    const auto& ips = alignment.ips();
    for (std::size_t i = 0; i < ips.size(); ++i) {
        const double change = (alignment.gradeOut(i) - alignment.gradeIn(i)) * kPercent;
        const bool interior = i > 0 && i + 1 < ips.size();
        report.add({std::to_string(i + 1), fixed(ips[i].station, 3), fixed(ips[i].level, 3),
                    i > 0 ? fixed(alignment.gradeIn(i) * kPercent, 4) : "",
                    i + 1 < ips.size() ? fixed(alignment.gradeOut(i) * kPercent, 4) : "",
                    fixed(ips[i].curveLength, 3),
                    interior && change != 0.0 ? fixed(ips[i].curveLength / std::fabs(change), 2) : ""});
    }
    return report;
}

void plotFit(const FitOptions& o, const std::vector<double>& stations,
             const std::vector<double>& levels, const VerticalAlignment& alignment) {
    std::vector<PlotPoint> survey;
    std::vector<PlotPoint> band;
    for (std::size_t i = 0; i < stations.size(); ++i) {
        survey.push_back({stations[i], levels[i]});
        band.push_back({stations[i], levels[i] + o.upTol});
    }
    for (std::size_t i = stations.size(); i-- > 0;) band.push_back({stations[i], levels[i] - o.loTol});
    // The alignment drawn through its curves: dense samples between and across the IPs.
    std::vector<PlotPoint> line;
    const auto& ips = alignment.ips();
    for (std::size_t i = 0; i + 1 < ips.size(); ++i) {
        for (int k = 0; k < kPlotSamplesPerIpGap; ++k) {
            const double x = ips[i].station + (ips[i + 1].station - ips[i].station) * k / kPlotSamplesPerIpGap;
            line.push_back({x, alignment.levelAt(x)});
        }
    }
    line.push_back({ips.back().station, ips.back().level});
    Range x = rangeOf(survey, true);
    Range y = rangeOf(band, false);
    for (const VerticalIp& ip : ips) y.include(ip.level);
    SvgPlot plot(x, y);
    const double exaggeration = plot.yScale() / plot.xScale();
    plot.title("Vertical profile fit: " + o.input,
               fmt::format("{} IPs, tolerances +{} / -{}, vertical exaggeration {:.1f}x", ips.size(),
                           o.upTol, o.loTol, exaggeration));
    plot.axes("chainage (m)", "level (m)");
    plot.polygon(band, "#9ecae1", 0.5);
    plot.markers(survey, "#636363", survey.size() > 2000 ? 0.6 : 1.2);
    plot.polyline(line, "#d62728", 1.8);
    for (std::size_t i = 0; i < ips.size(); ++i) {
        plot.cross({ips[i].station, ips[i].level}, "#2ca02c", 4);
        plot.label({ips[i].station, ips[i].level}, fmt::format("IP{}", i + 1), "#2ca02c");
    }
    plot.legend("#9ecae1", "tolerance band");
    plot.legend("#636363", "surveyed levels");
    plot.legend("#d62728", "fitted alignment");
    plot.legend("#2ca02c", "IPs");
    plot.save(o.svg);
}

void runFit(const FitOptions& o) {
    const Table table = readTable(o.input, {{"station"}, {"level"}});
    requireIncreasing(table, "station");
    if (table.rows() < 2) throw InputError(o.input + ": a profile needs at least two points");
    const std::vector<double>& stations = table.column("station");
    const std::vector<double>& levels = table.column("level");
    const VerticalAlignment alignment = fitAlignment(o, stations, levels);
    double worst = 0.0;
    double worstAt = stations.front();
    std::size_t outside = 0;
    for (std::size_t i = 0; i < stations.size(); ++i) {
        const double d = alignment.levelAt(stations[i]) - levels[i];
        if (std::fabs(d) > std::fabs(worst)) {
            worst = d;
            worstAt = stations[i];
        }
        if (d > o.upTol + 1e-9 || d < -o.loTol - 1e-9) ++outside;
    }
    const OutputFile out(o.output.output);
    const std::string prefix = o.output.csv ? "# " : "";
    out.write(ipTable(alignment).render(o.output.csv));
    out.write(fmt::format("{}{} IPs; maximum deviation {:+.4f} m at chainage {:.3f}; {} of {} points "
                          "outside the envelope\n",
                          prefix, alignment.ips().size(), worst, worstAt, outside, stations.size()));
    if (!o.svg.empty()) plotFit(o, stations, levels, alignment);
}

struct DiffOptions {
    std::string first;
    std::string second;
    std::string svg;
    OutputOptions output;
};

std::vector<Point2d> readProfile(const std::string& path) {
    const Table t = readTable(path, {{"station"}, {"level"}});
    requireIncreasing(t, "station");
    if (t.rows() < 2) throw InputError(path + ": a profile needs at least two points");
    std::vector<Point2d> points;
    for (std::size_t i = 0; i < t.rows(); ++i) points.push_back({t.column("station")[i], t.column("level")[i]});
    return points;
}

template <typename T>
std::vector<T> takeBlockArray(T*& block, int count) {
    std::vector<T> out;
    if (block != nullptr) {
        out.assign(block, block + count);
        MEM_LibererTableau(reinterpret_cast<void**>(&block));
    }
    return out;
}

double levelOn(const std::vector<Point2d>& p, double x) {
    for (std::size_t i = 1; i < p.size(); ++i) {
        if (x <= p[i].x) return p[i - 1].y + (p[i].y - p[i - 1].y) * (x - p[i - 1].x) / (p[i].x - p[i - 1].x);
    }
    return p.back().y;
}

const char* sideName(int code, bool after) {
    const int bits = after ? (code >> 16) & 0x7 : code & 0xFF;
    return bits == 4 ? "above" : (bits == 2 ? "below" : "level");
}

void plotDiff(const DiffOptions& o, const std::vector<Point2d>& a, const std::vector<Point2d>& b,
              const std::vector<Point2d>& crossings) {
    // Shade each stretch between crossings: green where profile 1 is above (fill), red below.
    const double from = std::fmax(a.front().x, b.front().x), to = std::fmin(a.back().x, b.back().x);
    std::vector<double> cuts{from};
    for (const Point2d& c : crossings) cuts.push_back(c.x);
    cuts.push_back(to);
    std::vector<PlotPoint> pa, pb;
    for (const Point2d& p : a) pa.push_back({p.x, p.y});
    for (const Point2d& p : b) pb.push_back({p.x, p.y});
    Range x = rangeOf(pa, true), y = rangeOf(pa, false);
    for (const PlotPoint& p : pb) {
        x.include(p.x);
        y.include(p.y);
    }
    SvgPlot plot(x, y);
    plot.title("Profile difference: " + o.first + " against " + o.second,
               fmt::format("{} crossings, vertical exaggeration {:.1f}x", crossings.size(),
                           plot.yScale() / plot.xScale()));
    plot.axes("chainage (m)", "level (m)");
    for (std::size_t z = 0; z + 1 < cuts.size(); ++z) {
        std::vector<PlotPoint> zone;
        std::vector<double> xs{cuts[z]};
        for (const auto* p : {&a, &b}) {
            for (const Point2d& q : *p) {
                if (q.x > cuts[z] && q.x < cuts[z + 1]) xs.push_back(q.x);
            }
        }
        xs.push_back(cuts[z + 1]);
        std::sort(xs.begin(), xs.end());
        for (const double v : xs) zone.push_back({v, levelOn(a, v)});
        for (auto v = xs.rbegin(); v != xs.rend(); ++v) zone.push_back({*v, levelOn(b, *v)});
        const double mid = (cuts[z] + cuts[z + 1]) / 2.0;
        plot.polygon(zone, levelOn(a, mid) > levelOn(b, mid) ? "#2ca02c" : "#d62728", 0.45);
    }
    plot.polyline(pa, "#1f77b4", 1.6);
    plot.polyline(pb, "#444444", 1.2, "6,3");
    for (const Point2d& c : crossings) plot.cross({c.x, c.y}, "#000000", 4);
    plot.legend("#1f77b4", o.first + " (profile 1)");
    plot.legend("#444444", o.second + " (profile 2)");
    plot.legend("#2ca02c", "profile 1 above (fill)");
    plot.legend("#d62728", "profile 1 below (cut)");
    plot.save(o.svg);
}

void runDiff(const DiffOptions& o) {
    const std::vector<Point2d> a = readProfile(o.first);
    const std::vector<Point2d> b = readProfile(o.second);
    double lengthAbove = 0, areaAbove = 0, lengthBelow = 0, areaBelow = 0;
    Point2d* crossingBlock = nullptr;
    int32_t* sideBlock = nullptr;
    double* zoneBlock = nullptr;
    int count = 0;
    UTMAT_CalculateDiff2Lines(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()),
                              &lengthAbove, &areaAbove, &lengthBelow, &areaBelow, &crossingBlock, &sideBlock,
                              &count, &zoneBlock, nullptr, nullptr, nullptr);
    const std::vector<Point2d> crossings = takeBlockArray(crossingBlock, count);
    const std::vector<int32_t> sides = takeBlockArray(sideBlock, count);
    const std::vector<double> zones = takeBlockArray(zoneBlock, count + 1);
    Report totals({"measure", "value"});
    totals.add({"length_above_m", fixed(lengthAbove, 3)});
    totals.add({"area_above_m2", fixed(areaAbove, 3)});
    totals.add({"length_below_or_level_m", fixed(lengthBelow, 3)});
    totals.add({"area_below_m2", fixed(areaBelow, 3)});
    Report crossingTable({"crossing", "station", "level", "before", "after"});
    for (std::size_t k = 0; k < crossings.size(); ++k) {
        crossingTable.add({std::to_string(k + 1), fixed(crossings[k].x, 3), fixed(crossings[k].y, 3),
                           sideName(sides[k], false), sideName(sides[k], true)});
    }
    Report zoneTable({"zone", "from", "to", "signed_area_m2"});
    const double from = std::fmax(a.front().x, b.front().x), to = std::fmin(a.back().x, b.back().x);
    for (std::size_t z = 0; z < zones.size(); ++z) {
        zoneTable.add({std::to_string(z + 1), fixed(z == 0 ? from : crossings[z - 1].x, 3),
                       fixed(z < crossings.size() ? crossings[z].x : to, 3), fixed(zones[z], 3)});
    }
    const OutputFile out(o.output.output);
    const std::string hash = o.output.csv ? "# " : "";
    out.write(hash + "totals (profile 1 against profile 2)\n" + totals.render(o.output.csv) + "\n" + hash +
              "crossings\n" + crossingTable.render(o.output.csv) + "\n" + hash +
              "zones (positive: profile 1 above)\n" + zoneTable.render(o.output.csv));
    if (!o.svg.empty()) plotDiff(o, a, b, crossings);
}

struct FillOptions {
    std::string input;
    OutputOptions output;
};

// Reads x, y and z where an empty z is an unknown elevation.
void runFill(const FillOptions& o) {
    const Table t = readTable(o.input, {{"x"}, {"y"}, {"z", false, 0.0, true}});
    std::vector<Point3d> points;
    std::vector<int32_t> known;
    for (std::size_t i = 0; i < t.rows(); ++i) {
        const std::string& text = t.textColumn("z")[i];
        double z = 0.0;
        if (!text.empty()) {
            char* end = nullptr;
            z = std::strtod(text.c_str(), &end);
            if (*end != '\0' || !std::isfinite(z)) {
                throw InputError(t.where(i) + ": z '" + text + "' is not a number");
            }
        }
        points.push_back({t.column("x")[i], t.column("y")[i], z});
        known.push_back(text.empty() ? 0 : 1);
    }
    int status = 0;
    UTMAT_CalculerInterpolationCurviligneDuZ(points.data(), static_cast<int>(points.size()), known.data(), &status);
    switch (status) {
        case UTMAT_FILL_TOO_FEW_POINTS: throw InputError(o.input + ": at least two points are needed");
        case UTMAT_FILL_NO_ELEVATION: throw InputError(o.input + ": no point has an elevation");
        case UTMAT_FILL_COINCIDENT_POINTS: throw InputError(o.input + ": two consecutive points coincide in plan");
        default: break;
    }
    Report report({"x", "y", "z", "filled"});
    for (std::size_t i = 0; i < points.size(); ++i) {
        report.add({fixed(points[i].x, 4), fixed(points[i].y, 4), fixed(points[i].z, 4), known[i] != 0 ? "0" : "1"});
    }
    OutputFile(o.output.output).write(report.render(o.output.csv));
}

}  // namespace

void addProfile(CLI::App& app) {
    auto* profile = app.add_subcommand("profile", "jobs on longitudinal profiles (station, level)");
    profile->require_subcommand(1);
    static FitOptions fit;
    auto* command = profile->add_subcommand(
        "fit", "design a vertical alignment (IPs, grades, curves) within the tolerances of a survey");
    command->add_option("SURVEY", fit.input, "CSV with columns station, level ('-': standard input)")
        ->required();
    command->add_option("--up-tol", fit.upTol, "upper tolerance (m)")->capture_default_str();
    command->add_option("--lo-tol", fit.loTol, "lower tolerance (m)")->capture_default_str();
    command->add_option("--hog", fit.hog, "K value of crest curves (m per % of grade change)")
        ->capture_default_str();
    command->add_option("--sag", fit.sag, "K value of sag curves (m per % of grade change)")
        ->capture_default_str();
    command->add_option("--min-length", fit.minLength, "shortest vertical curve (m)")
        ->capture_default_str();
    command->add_option("--cog", fit.cog, "starting grade change (%) below which IPs are filtered")
        ->capture_default_str();
    command->add_flag("--start-tie", fit.startTie, "put the second IP on the first two points' line");
    command->add_flag("--end-tie", fit.endTie, "put the last-but-one IP on the last two points' line");
    command->add_flag("--trace", fit.debug, "write the fit's trace file");
    command->add_option("--svg", fit.svg, "draw the survey, the tolerance band and the alignment");
    addOutputOptions(*command, fit.output);
    command->footer("Example:\n  korvel profile fit examples/data/survey_profile.csv --svg profile.svg");
    command->callback([] {
        if (!(fit.upTol >= 0.0) || !(fit.loTol >= 0.0)) throw UsageError("tolerances must not be negative");
        runFit(fit);
    });

    static DiffOptions diff;
    auto* diffCommand = profile->add_subcommand("diff", "cut and fill between two profiles: lengths, areas, crossings");
    diffCommand->add_option("A", diff.first, "profile 1: CSV with columns station, level")->required();
    diffCommand->add_option("B", diff.second, "profile 2: CSV with columns station, level")->required();
    diffCommand->add_option("--svg", diff.svg, "draw both profiles with cut and fill shaded");
    addOutputOptions(*diffCommand, diff.output);
    diffCommand->footer("Example:\n  korvel profile diff examples/data/proposed_profile.csv examples/data/survey_profile.csv --svg diff.svg");
    diffCommand->callback([] { runDiff(diff); });

    static FillOptions fill;
    auto* fillCommand = profile->add_subcommand("fill", "fill missing elevations along a 3-D polyline");
    fillCommand->add_option("POINTS", fill.input, "CSV with columns x, y, z (an empty z is unknown)")->required();
    addOutputOptions(*fillCommand, fill.output);
    fillCommand->footer("Example:\n  korvel profile fill examples/data/string_3d.csv");
    fillCommand->callback([] { runFill(fill); });
}

}  // namespace korvel
