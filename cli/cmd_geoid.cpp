// korvel geoid: geoid undulation at positions, from one grid file or a model family's tiles.
#include <CLI/CLI.hpp>
#include <cmath>
#include <fmt/format.h>
#include <optional>

#include "cli/commands.hpp"
#include "cli/errors.hpp"
#include "cli/report.hpp"
#include "cli/table.hpp"
#include "korvelbase/qmgeoid.h"

namespace korvel {

namespace {

struct GeoidOptions {
    std::string grid;
    int model = 0;
    std::string directory;
    std::vector<double> position;  // LAT LON
    std::string input;             // CSV of lat, lon
    bool west = false;
    OutputOptions output;
};

// Opens the model for a position; throws InputError when it cannot.
void openFor(const GeoidOptions& o, double lat, double lon, const std::string& where) {
    if (!o.grid.empty()) return;  // opened once, before the positions
    if (qmGeoid_initModelByGeoid(o.model, o.directory.c_str(), lat, lon, o.west ? 0 : 1) != 0) {
        throw InputError(where + fmt::format("no tile of model {} in '{}' covers {:.6f}, {:.6f}",
                                             o.model, o.directory, lat, lon));
    }
}

std::string undulationAt(const GeoidOptions& o, double lat, double lon, const std::string& where) {
    openFor(o, lat, lon, where);
    double n = 0.0;
    if (qmGeoid_getUndulationAtLatLong(&n, lat, lon, o.west ? 0 : 1) != 0) {
        throw InputError(where + fmt::format("{:.6f}, {:.6f} lies outside the geoid grid", lat, lon));
    }
    return fixed(n, 4);
}

void run(const GeoidOptions& o) {
    if (o.grid.empty() == (o.model == 0)) throw UsageError("give either --grid FILE or --model CODE --dir DIR");
    if (o.position.empty() == o.input.empty()) throw UsageError("give either LAT LON or --input FILE");
    if (!o.grid.empty() && qmGeoid_initModelByFile(o.grid.c_str()) != 0) {
        throw InputError(o.grid + ": not a geoid grid file");
    }
    Report report({"latitude", "longitude", "undulation"});
    if (!o.position.empty()) {
        report.add({fixed(o.position[0], 6), fixed(o.position[1], 6),
                    undulationAt(o, o.position[0], o.position[1], "")});
    } else {
        const Table table = readTable(o.input, {{"lat"}, {"lon"}});
        for (std::size_t i = 0; i < table.rows(); ++i) {
            const double lat = table.column("lat")[i];
            const double lon = table.column("lon")[i];
            report.add({fixed(lat, 6), fixed(lon, 6), undulationAt(o, lat, lon, table.where(i) + ": ")});
        }
    }
    qmGeoid_closeModel();
    OutputFile(o.output.output).write(report.render(o.output.csv));
}

}  // namespace

void addGeoid(CLI::App& app) {
    static GeoidOptions o;
    auto* command = app.add_subcommand("geoid", "geoid undulation at positions from a geoid grid");
    command->add_option("--grid", o.grid, "a geoid grid file");
    command->add_option("--model", o.model, "a model family code (2 g2003, 3 s2003, 4 g1999, 5 s1999)");
    command->add_option("--dir", o.directory, "the folder holding the family's tiles");
    command->add_option("POSITION", o.position, "LAT LON in degrees")->expected(2);
    command->add_option("--input", o.input, "CSV with columns lat, lon ('-': standard input)");
    command->add_flag("--west", o.west, "longitudes are west-positive");
    addOutputOptions(*command, o.output);
    command->footer("Example:\n  korvel geoid --grid examples/data/geoid_demo.bin 46.1 7.3");
    command->callback([] { run(o); });
}

}  // namespace korvel
