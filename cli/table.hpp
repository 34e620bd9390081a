// Reading CSV tables of numbers with a header row.
//
// A table file has a header row naming its columns, then one record a line; blank lines and
// lines starting with '#' are skipped, fields may be quoted, and extra columns are ignored.
// "-" reads standard input.  Every value must be a finite number: anything else stops the run
// with one line naming the file, the line and the column.
#ifndef KORVEL_CLI_TABLE_HPP
#define KORVEL_CLI_TABLE_HPP

#include <cstddef>
#include <string>
#include <vector>

namespace korvel {

struct ColumnRule {
    std::string name;
    bool required = true;
    double fallback = 0.0;  // value of an optional column that is absent or empty
    bool text = false;      // kept as text (names, codes) instead of read as a number
};

class Table {
public:
    std::string source;                       // file name as given ("-" for standard input)
    std::vector<std::string> names;           // as requested
    std::vector<std::vector<double>> columns;  // one vector per requested number column
    std::vector<std::vector<std::string>> texts;  // one vector per requested text column
    std::vector<unsigned> lines;              // file line of each record
    std::vector<bool> present;                // whether each column was in the header

    std::size_t rows() const { return lines.size(); }
    const std::vector<double>& column(const std::string& name) const;
    const std::vector<std::string>& textColumn(const std::string& name) const;
    bool has(const std::string& name) const;
    // "file:line" of record i, for messages.
    std::string where(std::size_t record) const;
};

// Reads the named columns (at most six) of a table.  Throws InputError.
Table readTable(const std::string& path, const std::vector<ColumnRule>& columns);

// Throws InputError unless the column increases strictly from record to record.
void requireIncreasing(const Table& table, const std::string& name);

}  // namespace korvel

#endif  // KORVEL_CLI_TABLE_HPP
