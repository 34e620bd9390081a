#include "cli/report.hpp"

#include <algorithm>
#include <fmt/format.h>

#include "cli/errors.hpp"

namespace korvel {

OutputFile::OutputFile(const std::string& path) : file_(stdout), owned_(false) {
    if (path == "-") return;
    file_ = std::fopen(path.c_str(), "wb");
    if (file_ == nullptr) throw InputError(path + ": cannot create the file");
    owned_ = true;
}

OutputFile::~OutputFile() {
    if (owned_) std::fclose(file_);
}

void OutputFile::write(const std::string& text) const {
    std::fwrite(text.data(), 1, text.size(), file_);
    std::fflush(file_);
}

namespace {

std::string quoted(const std::string& cell) {
    if (cell.find_first_of(",\"\n") == std::string::npos) return cell;
    std::string out = "\"";
    for (const char c : cell) {
        if (c == '"') out += '"';
        out += c;
    }
    return out + "\"";
}

bool looksNumeric(const std::string& cell) {
    return !cell.empty() && cell.find_first_not_of("0123456789+-.eE") == std::string::npos;
}

}  // namespace

std::string Report::csv() const {
    std::string out;
    const auto line = [&out](const std::vector<std::string>& cells) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (i > 0) out += ',';
            out += quoted(cells[i]);
        }
        out += '\n';
    };
    line(header_);
    for (const auto& row : rows_) line(row);
    return out;
}

std::string Report::aligned() const {
    std::vector<std::size_t> widths(header_.size(), 0);
    const auto measure = [&widths](const std::vector<std::string>& cells) {
        for (std::size_t i = 0; i < cells.size() && i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], cells[i].size());
        }
    };
    measure(header_);
    for (const auto& row : rows_) measure(row);
    std::string out;
    const auto line = [&](const std::vector<std::string>& cells, bool header) {
        for (std::size_t i = 0; i < cells.size() && i < widths.size(); ++i) {
            if (i > 0) out += "  ";
            const bool right = !header && looksNumeric(cells[i]);
            out += right ? fmt::format("{:>{}}", cells[i], widths[i])
                         : fmt::format("{:<{}}", cells[i], widths[i]);
        }
        while (!out.empty() && out.back() == ' ') out.pop_back();
        out += '\n';
    };
    line(header_, true);
    for (const auto& row : rows_) line(row, false);
    return out;
}

std::string fixed(double value, int decimals) { return fmt::format("{:.{}f}", value, decimals); }

}  // namespace korvel
