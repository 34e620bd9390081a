// The two kinds of failure of a korvel run: bad input data (exit status 1) and a wrong command
// line (exit status 2).  Each carries the one line that is printed.
#ifndef KORVEL_CLI_ERRORS_HPP
#define KORVEL_CLI_ERRORS_HPP

#include <stdexcept>
#include <string>

namespace korvel {

constexpr int kExitBadInput = 1;
constexpr int kExitUsage = 2;

// Data that cannot be used: "survey.csv:17: level 'abc' is not a number".
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A command line that does not make sense beyond what the option parser checks.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace korvel

#endif  // KORVEL_CLI_ERRORS_HPP
