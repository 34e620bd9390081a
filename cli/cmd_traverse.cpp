// korvel traverse: the legs of an open traverse (azimuth and distance), the circle through
// each three consecutive stations, the offsets of the stations from the first-to-last chord
// and the intersection of the first and last legs.
#include <CLI/CLI.hpp>
#include <cmath>
#include <fmt/format.h>

#include "cli/angles.hpp"
#include "cli/commands.hpp"
#include "cli/errors.hpp"
#include "cli/report.hpp"
#include "cli/table.hpp"
#include "korvelbase/korvelbase.h"

namespace korvel {

namespace {

struct Station {
    std::string name;
    Point2d position;
};

std::vector<Station> readStations(const std::string& path) {
    const Table table = readTable(path, {{"name", false, 0.0, true}, {"easting"}, {"northing"}});
    std::vector<Station> stations;
    for (std::size_t i = 0; i < table.rows(); ++i) {
        const std::string& name = table.textColumn("name")[i];
        stations.push_back({name.empty() ? fmt::format("P{}", i + 1) : name,
                            {table.column("easting")[i], table.column("northing")[i]}});
    }
    if (stations.size() < 2) throw InputError(path + ": a traverse needs at least two stations");
    return stations;
}

Report legs(const std::vector<Station>& st) {
    Report report({"from", "to", "azimuth", "azimuth_deg", "distance_m"});
    for (std::size_t i = 1; i < st.size(); ++i) {
        const Point2d a = st[i - 1].position;
        const Point2d b = st[i].position;
        // The azimuth/direction conversion is its own inverse.
        const double azimuth = qmConversion_azimuthToDirection(qmMath_direction2d(a.x, a.y, b.x, b.y));
        double distance = 0.0;
        qmConversion_roundDouble(&distance, qmMath_distance2d(a.x, a.y, b.x, b.y), 0.001, 3);
        report.add({st[i - 1].name, st[i].name, dmsText(qmConversion_radianToDegree(azimuth)),
                    fixed(qmConversion_radianToDegree(azimuth), 6), fixed(distance, 3)});
    }
    return report;
}

Report curves(const std::vector<Station>& st) {
    Report report({"stations", "radius_m", "degree_of_curve", "centre_e", "centre_n"});
    for (std::size_t i = 2; i < st.size(); ++i) {
        const Point2d a = st[i - 2].position;
        const Point2d b = st[i - 1].position;
        const Point2d c = st[i].position;
        double cx = 0.0;
        double cy = 0.0;
        double radius = 0.0;
        const std::string names = st[i - 2].name + "-" + st[i - 1].name + "-" + st[i].name;
        if (qmMath_computeCurveRadiusFromThreePoints(a.x, a.y, b.x, b.y, c.x, c.y, &cx, &cy,
                                                     &radius) != 0) {
            report.add({names, "straight", "", "", ""});
            continue;
        }
        report.add({names, fixed(radius, 3), fixed(qmConversion_radiusToDegree(radius), 4),
                    fixed(cx, 3), fixed(cy, 3)});
    }
    return report;
}

Report chordOffsets(const std::vector<Station>& st) {
    Report report({"station", "offset_m"});
    UtDroite chord;
    uint32_t error = 0;
    uint32_t detail = 0;
    UTMAT_CalculerDroite2Pt(&st.front().position, &st.back().position, &chord);
    UTMAT_GetErreur(&error, &detail);
    if (error != 0) return report;
    for (const Station& s : st) {
        double offset = 0.0;
        UTMAT_CalculerDeportPtDroite(&chord, &s.position, &offset);
        report.add({s.name, fixed(offset, 3)});
    }
    return report;
}

std::string tangentIntersection(const std::vector<Station>& st) {
    if (st.size() < 4) return "";
    UtDroite first;
    UtDroite last;
    Point2d meeting{0.0, 0.0};
    int found = 0;
    UTMAT_CalculerDroite2Pt(&st[0].position, &st[1].position, &first);
    UTMAT_CalculerDroite2Pt(&st[st.size() - 2].position, &st.back().position, &last);
    UTMAT_CalculerIntersection2Droite(&first, &last, &meeting, &found);
    if (!found) return "first and last legs are parallel\n";
    const Point2d p0 = st[0].position;
    const Point2d p1 = st[1].position;
    const Point2d q0 = st[st.size() - 2].position;
    const Point2d q1 = st.back().position;
    // Signed turn in (-pi, pi]: positive counter-clockwise, that is to the left.
    const double turn = qmMath_angleBetweenDirections(qmMath_direction2d(p0.x, p0.y, p1.x, p1.y),
                                                      qmMath_direction2d(q0.x, q0.y, q1.x, q1.y));
    return fmt::format("intersection of the first and last legs: ({:.3f}, {:.3f}), deflection {} {}\n",
                       meeting.x, meeting.y, dmsText(qmConversion_radianToDegree(std::fabs(turn))),
                       turn < 0.0 ? "right" : "left");
}

}  // namespace

void addTraverse(CLI::App& app) {
    auto* command = app.add_subcommand(
        "traverse", "leg azimuths and distances, radii through consecutive stations, chord offsets");
    static std::string input;
    static OutputOptions output;
    command->add_option("TRAVERSE", input, "CSV with columns name (optional), easting, northing")
        ->required();
    addOutputOptions(*command, output);
    command->footer("Example:\n  korvel traverse examples/data/traverse.csv");
    command->callback([] {
        const std::vector<Station> stations = readStations(input);
        const OutputFile out(output.output);
        const auto section = [&](const std::string& title, const Report& report) {
            out.write((output.csv ? "# " : "") + title + "\n" + report.render(output.csv) + "\n");
        };
        section("legs (azimuth clockwise from north)", legs(stations));
        section("circle through three consecutive stations", curves(stations));
        section("offsets from the chord " + stations.front().name + " -> " + stations.back().name +
                    " (positive to the right)",
                chordOffsets(stations));
        const std::string meeting = tangentIntersection(stations);
        if (!meeting.empty()) out.write((output.csv ? "# " : "") + meeting);
    });
}

}  // namespace korvel
