#include "CoordinateTransformation/CrsDescriptions.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

#include <boost/filesystem/operations.hpp>

#include "CoordinateTransformation/Misconfigured.h"
#include "proj/AxisOrderTable.h"
#include "proj/SettledCrsDescriptions.h"
#include "text/FileText.h"
#include "text/InitFile.h"
#include "text/NumericText.h"
#include "text/QuotedCsv.h"

namespace CoordinateTransformation {
namespace {

using Kind = CrsDescription::Kind;
using Cells = std::vector<std::string>;

enum Column {
    CODE,
    NAME,
    KIND,
    AREA,
    WEST,
    SOUTH,
    EAST,
    NORTH,
    UNIT,
    UNIT_LENGTH,
    DATUM,
    DATUM_ID,
    SHIFT_SOURCE,
    SHIFT_ACCURACY,
    LARGEST_DISTANCE,
    REPLACED_BY,
    COLUMN_COUNT
};

static_assert(COLUMN_COUNT == DESCRIPTION_COLUMNS.size());

constexpr double GREATEST_LONGITUDE = 180;
constexpr double GREATEST_LATITUDE = 90;

// The fault in a line, in words.
struct BadLine {
    std::string reason;
};

[[noreturn]] void refuse(Column column, const std::string& cell) {
    throw BadLine{std::string(DESCRIPTION_COLUMNS[column]) + ": \"" + cell + "\" is not valid"};
}

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

std::string takeText(Column column, Cells& cells) {
    if (std::any_of(cells[column].begin(), cells[column].end(), isControl))
        throw BadLine{std::string(DESCRIPTION_COLUMNS[column]) + ": a control character is in it"};
    return std::move(cells[column]);
}

std::string takeNonEmptyText(Column column, Cells& cells) {
    if (cells[column].empty()) refuse(column, cells[column]);
    return takeText(column, cells);
}

// code = digits; the least code is 1
unsigned int readCodeText(std::string_view text, Column column) {
    unsigned int code = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), code);
    if (error != std::errc() || end != text.data() + text.size() || code == 0) refuse(column, std::string(text));
    return code;
}

double readNumber(Column column, const Cells& cells, double least, double greatest) {
    std::string_view rest = cells[column];
    const std::optional<double> number = takeDouble(rest);
    if (!number || !rest.empty() || !(*number >= least && *number <= greatest)) refuse(column, cells[column]);
    return *number;
}

constexpr double GREATEST_NUMBER = std::numeric_limits<double>::max();

std::optional<double> readDistance(Column column, const Cells& cells) {
    if (cells[column].empty()) return std::nullopt;
    return readNumber(column, cells, 0, GREATEST_NUMBER);
}

// If the registry does not know the area of a CRS, all four cells are empty.
std::optional<GeographicBox> readBox(const Cells& cells) {
    if (std::all_of(&cells[WEST], &cells[NORTH] + 1, [](const std::string& cell) { return cell.empty(); })) return {};
    const GeographicBox box{readNumber(WEST, cells, -GREATEST_LONGITUDE, GREATEST_LONGITUDE),
                            readNumber(SOUTH, cells, -GREATEST_LATITUDE, GREATEST_LATITUDE),
                            readNumber(EAST, cells, -GREATEST_LONGITUDE, GREATEST_LONGITUDE),
                            readNumber(NORTH, cells, -GREATEST_LATITUDE, GREATEST_LATITUDE)};
    if (box.south > box.north) refuse(SOUTH, cells[SOUTH]);
    return box;
}

Kind readKind(const std::string& cell) {
    if (cell == "geographic") return Kind::GEOGRAPHIC;
    if (cell == "geocentric") return Kind::GEOCENTRIC;
    if (cell == "projected") return Kind::PROJECTED;
    if (cell == "compound") return Kind::COMPOUND;
    refuse(KIND, cell);
}

// codes = [ code { " " code } ]
std::vector<unsigned int> readCodes(std::string_view text) {
    std::vector<unsigned int> codes;
    while (!text.empty()) {
        const std::size_t blank = text.find(' ');
        codes.push_back(readCodeText(text.substr(0, blank), REPLACED_BY));
        text.remove_prefix(blank == std::string_view::npos ? text.size() : blank + 1);
    }
    return codes;
}

CrsDescription readDescription(Cells& cells) {
    if (cells.size() != COLUMN_COUNT)
        throw BadLine{"the line has " + std::to_string(cells.size()) + " cells instead of " +
                      std::to_string(COLUMN_COUNT)};
    CrsDescription description;
    description.code = readCodeText(cells[CODE], CODE);
    description.name = takeNonEmptyText(NAME, cells);
    description.kind = readKind(cells[KIND]);
    description.area = takeText(AREA, cells);
    description.box = readBox(cells);
    description.unit = takeNonEmptyText(UNIT, cells);
    description.unitLength = readNumber(UNIT_LENGTH, cells, std::numeric_limits<double>::min(), GREATEST_NUMBER);
    description.datum = takeText(DATUM, cells);
    description.datumId = takeText(DATUM_ID, cells);
    description.shiftSource = takeText(SHIFT_SOURCE, cells);
    description.shiftAccuracy = readDistance(SHIFT_ACCURACY, cells);
    description.largestDistance = readDistance(LARGEST_DISTANCE, cells);
    description.replacedBy = readCodes(cells[REPLACED_BY]);
    return description;
}

void requireHeader(QuotedCsv& reader) {
    Cells cells;
    if (!reader.readRecord(cells) && !reader.getFault().empty()) return;
    if (!std::equal(cells.begin(), cells.end(), DESCRIPTION_COLUMNS.begin(), DESCRIPTION_COLUMNS.end()))
        throw BadLine{"the line does not hold the names of the columns, \"code,name,...\""};
}

void add(CrsDescription description, std::vector<CrsDescription>& descriptions) {
    if (!descriptions.empty() && descriptions.back().code >= description.code)
        throw BadLine{std::to_string(description.code) + " is not greater than the code of the line before"};
    descriptions.push_back(std::move(description));
}

std::vector<CrsDescription> readDescriptions(QuotedCsv& reader) {
    std::vector<CrsDescription> descriptions;
    requireHeader(reader);
    for (Cells cells; reader.readRecord(cells);) add(readDescription(cells), descriptions);
    if (!reader.getFault().empty()) throw BadLine{reader.getFault()};
    descriptions.shrink_to_fit();
    return descriptions;
}

std::string readDescriptionFile(const std::string& path) {
    FileText file = readFile(path);
    if (!file.opened) throw Misconfigured("Unable to open CRS description file \"" + path + "\"");
    if (!file.failure.empty())
        throw Misconfigured("Unable to read CRS description file \"" + path + "\": " + file.failure);
    return std::move(file.content);
}

}  // namespace

CrsDescriptions::CrsDescriptions(const std::string& path) {
    const std::string text = readDescriptionFile(path);
    QuotedCsv reader(text, COLUMN_COUNT);
    try {
        descriptions = readDescriptions(reader);
    } catch (const BadLine& bad) {
        throw Misconfigured("Error in CRS description file \"" + path + "\", line " +
                            std::to_string(std::max<std::size_t>(reader.getLine(), 1)) + ": " + bad.reason);
    }
}

const CrsDescriptions& CrsDescriptions::ofProjDirectory() { return getSettledCrsDescriptions(); }

const CrsDescription* CrsDescriptions::find(unsigned int code) const {
    const CrsDescription* const found = std::lower_bound(
        begin(), end(), code,
        [](const CrsDescription& description, unsigned int wanted) { return description.code < wanted; });
    return found != end() && found->code == code ? found : nullptr;
}

CrsDescriptions& getSettledCrsDescriptions() {
    // Never released, like all process-wide objects: threads may still run when the process ends.
    static auto& descriptions = *new CrsDescriptions;
    return descriptions;
}

// A dangling link counts as present.
CrsDescriptions readCrsDescriptionsIfThere(const std::string& path) {
    if (boost::filesystem::symlink_status(path).type() == boost::filesystem::file_not_found) return {};
    requireRegularFile(path);
    return CrsDescriptions(path);
}

}  // namespace CoordinateTransformation
