// Writing results: an aligned table for people or CSV for programs, to a file or "-".
#ifndef KORVEL_CLI_REPORT_HPP
#define KORVEL_CLI_REPORT_HPP

#include <cstdio>
#include <string>
#include <vector>

namespace korvel {

// Where text goes: standard output for "-", else a file created for writing.
class OutputFile {
public:
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    std::FILE* get() const { return file_; }
    void write(const std::string& text) const;

private:
    std::FILE* file_;
    bool owned_;
};

// A table of text cells under a header row.
class Report {
public:
    explicit Report(std::vector<std::string> header) : header_(std::move(header)) {}
    void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }
    // CSV (quoted where needed) or columns aligned on their widths, numbers to the right.
    std::string csv() const;
    std::string aligned() const;
    std::string render(bool asCsv) const { return asCsv ? csv() : aligned(); }

private:
    std::vector<std::string> header_;
    std::vector<std::vector<std::string>> rows_;
};

// Fixed-point text of a number with the given decimals.
std::string fixed(double value, int decimals);

}  // namespace korvel

#endif  // KORVEL_CLI_REPORT_HPP
