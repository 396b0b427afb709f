#include "proj/AxisOrderTable.h"

#include <sstream>

#include <boost/filesystem/operations.hpp>

#include "CoordinateTransformation/Misconfigured.h"
#include "QSHelpers/ConversionError.h"
#include "QSHelpers/FileNotFoundException.h"
#include "text/CsvRow.h"
#include "text/FileText.h"
#include "text/NumericText.h"

namespace CoordinateTransformation {
namespace {

constexpr char CELL_SEPARATOR = ';';

unsigned int readCodeCell(const std::string& cell, const std::string& place) {
    try {
        return QSHelpers::convertTextToNumeric<unsigned int>(cell, true, true);
    } catch (const QSHelpers::ConversionError&) {
        throw Misconfigured(place + cell + " is not a valid EPSG code");
    }
}

bool readEastNorth(const std::string& cell, const std::string& place) {
    const std::string axisOrder = QSHelpers::trimWhitespace(cell, QSHelpers::TRIM_BOTH);
    if (axisOrder != "en" && axisOrder != "ne")
        throw Misconfigured(place + "only the values \"en\" or \"ne\" are allowed");
    return axisOrder == "en";
}

void addRow(const CsvRow& row, const std::string& place) {
    if (row.size() != 2)
        throw Misconfigured(place + "row does contain less or more than two elements which are separated with a \"" +
                            CELL_SEPARATOR + "\" character");
    const bool eastNorth = readEastNorth(row[1], place);
    getAxisOrderTable().emplace(readCodeCell(row[0], place), eastNorth);
}

}  // namespace

std::map<unsigned int, bool>& getAxisOrderTable() {
    // Never released, like all process-wide objects: threads may still run when the process ends.
    static auto& table = *new std::map<unsigned int, bool>;
    return table;
}

std::map<unsigned int, bool>& axisOrderTable = getAxisOrderTable();
bool searchPathSet = false;

// line = code ";" ( "en" | "ne" ) "\n"
//
// The file is first read completely: a row reader takes a failed read for the end of the file.
void loadAxisOrderTable(const std::string& path) {
    if (!getAxisOrderTable().empty()) return;
    const FileText file = readFile(path);
    if (!file.opened) throw Misconfigured("Unable to open AxisOrder file \"" + path + "\"");
    if (!file.failure.empty()) throw Misconfigured("Unable to read AxisOrder file \"" + path + "\": " + file.failure);
    std::istringstream rows(file.content);
    rows.exceptions(std::ios::badbit);
    // Intended: the count is incremented before a row is examined, so messages call the first line line 2.
    unsigned int line = 1;
    for (CsvRowIterator row(rows, CELL_SEPARATOR); row != CsvRowIterator(); ++row)
        addRow(*row, "Error in AxisOrder configuration file \"" + path + "\", line " +
                         QSHelpers::convertNumericToText(++line) + ": ");
}

void requireRegularFile(const std::string& path) {
    if (!boost::filesystem::is_regular_file(path))
        throw QSHelpers::FileNotFoundException("File \"" + path + "\" not found!\"");
}

}  // namespace CoordinateTransformation
