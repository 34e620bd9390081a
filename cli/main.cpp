// korvel: a surveyor's toolbox over the KorvelBase library.  Each subcommand runs one of the
// library's jobs on CSV files; bad data gets one line naming file, line and column (exit 1),
// a wrong command line exit 2.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

#include "cli/commands.hpp"
#include "cli/errors.hpp"

namespace korvel {

void addOutputOptions(CLI::App& command, OutputOptions& options) {
    command.add_option("-o,--output", options.output, "where the table goes ('-': standard output)")
        ->capture_default_str();
    command.add_flag("--csv", options.csv, "write CSV instead of an aligned table");
}

}  // namespace korvel

int main(int argc, char** argv) {
    CLI::App app{"korvel: road-design and survey computations over the KorvelBase library"};
    app.require_subcommand(1);
    app.footer("Run 'korvel <subcommand> --help' for the options and an example of each.");
    korvel::addTraverse(app);
    korvel::addConvert(app);
    korvel::addProfile(app);
    korvel::addGeoid(app);
    korvel::addTransform(app);
    korvel::addFit(app);
    korvel::addIntersect(app);
    korvel::addSpiral(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& help) {
        return app.exit(help);
    } catch (const CLI::CallForAllHelp& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        app.exit(error);
        return korvel::kExitUsage;
    } catch (const korvel::UsageError& error) {
        std::fprintf(stderr, "korvel: %s\n", error.what());
        return korvel::kExitUsage;
    } catch (const korvel::InputError& error) {
        std::fprintf(stderr, "korvel: %s\n", error.what());
        return korvel::kExitBadInput;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "korvel: %s\n", error.what());
        return korvel::kExitBadInput;
    }
    return 0;
}
