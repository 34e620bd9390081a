// The korvel subcommands.  Each add* function registers one subcommand (or a group) on the
// application; its callback runs the job and throws InputError or UsageError on failure.
#ifndef KORVEL_CLI_COMMANDS_HPP
#define KORVEL_CLI_COMMANDS_HPP

#include <string>

namespace CLI {
class App;
}

namespace korvel {

// Options every subcommand that prints a table shares.
struct OutputOptions {
    std::string output = "-";  // file or "-" for standard output
    bool csv = false;          // CSV instead of an aligned table
};

// Adds -o/--output and --csv to a subcommand.
void addOutputOptions(CLI::App& command, OutputOptions& options);

void addTraverse(CLI::App& app);
void addConvert(CLI::App& app);
void addProfile(CLI::App& app);
void addGeoid(CLI::App& app);
void addTransform(CLI::App& app);
void addFit(CLI::App& app);
void addIntersect(CLI::App& app);
void addSpiral(CLI::App& app);

}  // namespace korvel

#endif  // KORVEL_CLI_COMMANDS_HPP
