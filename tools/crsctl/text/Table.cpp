#include "tools/crsctl/text/Table.h"

#include <algorithm>

#include "tools/crsctl/text/Printable.h"

namespace crsctl {
namespace {

constexpr char GAP[] = "  ";

std::vector<std::size_t> columnWidths(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], displayWidth(row[i]));
    }
    return widths;
}

}  // namespace

std::string alignedColumns(const std::vector<std::vector<std::string>>& rows, const std::string& indent) {
    const std::vector<std::size_t> widths = columnWidths(rows);
    std::string text;
    for (const auto& row : rows) {
        std::string line = indent;
        for (std::size_t i = 0; i < row.size(); ++i) line += padded(row[i], widths[i]) + GAP;
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

}  // namespace crsctl
