#include "cli/table.hpp"

// The parser's header relies on <limits> without including it; no reader thread is wanted.
#include <limits>
#define CSV_IO_NO_THREAD
#include <libfccp/csv.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

#include "cli/errors.hpp"

namespace korvel {

namespace {

constexpr std::size_t kMostColumns = 6;

template <unsigned N>
using Reader = io::CSVReader<N, io::trim_chars<' ', '\t', '\r'>, io::double_quote_escape<',', '"'>,
                             io::throw_on_overflow, io::single_and_empty_line_comment<'#'>>;

// A field as a finite double, or an InputError naming where it is.
double parseNumber(const char* text, const std::string& where, const std::string& column) {
    char* end = nullptr;
    const double value = std::strtod(text, &end);
    if (end == text || *end != '\0') {
        throw InputError(where + ": " + column + " '" + text + "' is not a number");
    }
    if (!std::isfinite(value)) {  // NaN, infinities and overflowing text
        throw InputError(where + ": " + column + " '" + text + "' is not a finite number");
    }
    return value;
}

template <unsigned N, std::size_t... I>
Table readWith(Reader<N>& reader, const std::string& path, const std::vector<ColumnRule>& rules,
               std::index_sequence<I...>) {
    Table table;
    table.source = path;
    for (const ColumnRule& rule : rules) table.names.push_back(rule.name);
    table.columns.resize(N);
    table.texts.resize(N);
    try {
        reader.read_header(io::ignore_extra_column | io::ignore_missing_column,
                           rules[I].name...);
    } catch (const io::error::base& error) {
        throw InputError(path + ": " + error.what());
    }
    for (const ColumnRule& rule : rules) {
        const bool present = reader.has_column(rule.name);
        table.present.push_back(present);
        if (rule.required && !present) {
            throw InputError(path + ": missing column '" + rule.name + "'");
        }
    }
    std::array<char*, N> cells{};
    for (;;) {
        bool more = false;
        try {
            more = reader.read_row(cells[I]...);
        } catch (const io::error::base& error) {
            throw InputError(path + ":" + std::to_string(reader.get_file_line()) + ": " +
                             error.what());
        }
        if (!more) break;
        const std::string where = path + ":" + std::to_string(reader.get_file_line());
        for (std::size_t c = 0; c < N; ++c) {
            const ColumnRule& rule = rules[c];
            const bool empty = cells[c] == nullptr || cells[c][0] == '\0';
            if (empty && rule.required) throw InputError(where + ": " + rule.name + " is missing");
            if (rule.text) {
                table.texts[c].emplace_back(empty ? "" : cells[c]);
            } else {
                table.columns[c].push_back(empty ? rule.fallback
                                                 : parseNumber(cells[c], where, rule.name));
            }
        }
        table.lines.push_back(reader.get_file_line());
    }
    if (table.rows() == 0) throw InputError(path + ": no records after the header");
    return table;
}

template <unsigned N>
Table readN(const std::string& path, const std::vector<ColumnRule>& rules) {
    if (path == "-") {
        Reader<N> reader("-", stdin);
        return readWith<N>(reader, "-", rules, std::make_index_sequence<N>{});
    }
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) throw InputError(path + ": cannot open the file");
    Reader<N> reader(path, file);  // the reader closes the file
    return readWith<N>(reader, path, rules, std::make_index_sequence<N>{});
}

}  // namespace

const std::vector<double>& Table::column(const std::string& name) const {
    for (std::size_t c = 0; c < names.size(); ++c) {
        if (names[c] == name) return columns[c];
    }
    throw std::logic_error("no column " + name);
}

const std::vector<std::string>& Table::textColumn(const std::string& name) const {
    for (std::size_t c = 0; c < names.size(); ++c) {
        if (names[c] == name) return texts[c];
    }
    throw std::logic_error("no column " + name);
}

bool Table::has(const std::string& name) const {
    for (std::size_t c = 0; c < names.size(); ++c) {
        if (names[c] == name) return present[c];
    }
    return false;
}

std::string Table::where(std::size_t record) const {
    return source + ":" + std::to_string(lines.at(record));
}

Table readTable(const std::string& path, const std::vector<ColumnRule>& columns) {
    try {
        switch (columns.size()) {
            case 1: return readN<1>(path, columns);
            case 2: return readN<2>(path, columns);
            case 3: return readN<3>(path, columns);
            case 4: return readN<4>(path, columns);
            case 5: return readN<5>(path, columns);
            case kMostColumns: return readN<kMostColumns>(path, columns);
            default: throw std::logic_error("unsupported column count");
        }
    } catch (const io::error::base& error) {
        throw InputError(path + ": " + error.what());
    }
}

void requireIncreasing(const Table& table, const std::string& name) {
    const std::vector<double>& values = table.column(name);
    for (std::size_t i = 1; i < values.size(); ++i) {
        if (!(values[i] > values[i - 1])) {
            throw InputError(table.where(i) + ": " + name + " does not increase (" +
                             std::to_string(values[i]) + " after " +
                             std::to_string(values[i - 1]) + ")");
        }
    }
}

}  // namespace korvel
