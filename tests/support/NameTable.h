#pragma once

#include <cstddef>
#include <fstream>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

// Reads tests/names.csv. The comment at the top of that file describes the columns.
namespace TestSupport {

class NameRow {
public:
    NameRow(std::size_t line, const std::string& text)
        : source("tests/names.csv:" + std::to_string(line) + ": " + text) {}

    // The text of the row, for messages.
    const std::string& where() const { return source; }
    // The cell in the column `title`.
    const std::string& operator[](const std::string& title) const { return cells.at(title); }
    void set(const std::string& title, const std::string& cell) { cells[title] = cell; }

    bool isAccepted() const { return cells.at("result") == "accepted"; }
    // A CRS takes a GML reference as its alias.
    bool isReference() const { return cells.at("spelling") == "GML reference"; }
    // The answer of the server: "alias", "cache", "new", or the class that is raised.
    const std::string& answer() const { return cells.at("server").empty() ? cells.at("result") : cells.at("server"); }
    bool isAnswered() const { return answer() == "alias" || answer() == "cache" || answer() == "new"; }
    bool isRegistered() const { return answer() == "alias" || answer() == "cache"; }
    // REQUIRES: the cell `codes` is not empty.
    unsigned int primaryCode() const { return static_cast<unsigned int>(std::stoul(cells.at("codes"))); }
    // Returns 0 for a CRS that is not compound.
    unsigned int secondaryCode() const {
        const std::size_t star = cells.at("codes").find('*');
        return star == std::string::npos ? 0U
                                         : static_cast<unsigned int>(std::stoul(cells.at("codes").substr(star + 1)));
    }

private:
    std::string source;
    std::map<std::string, std::string> cells;
};

// row  = cell { "," cell }
// cell = { character } | '"' { character | '""' } '"'
//
// The quotes of a cell are not part of it. Escapes are read with and without quotes. Empty cells at the end of a row
// may be missing.
class NameRowReader {
public:
    explicit NameRowReader(const std::string& rowText) : text(rowText) {}

    std::vector<std::string> readCells() {
        std::vector<std::string> cells = {readCell()};
        for (; position < text.size(); cells.push_back(readCell()))
            if (text[position++] != ',') throw std::runtime_error("text after a quoted cell: " + text);
        return cells;
    }

private:
    std::string readCell() {
        const bool quoted = at('"');
        if (quoted) ++position;
        std::string cell;
        while (quoted ? !takeEndOfQuotes() : position < text.size() && !at(',')) cell += readText();
        return cell;
    }

    // A quote that is not doubled ends the cell.
    bool takeEndOfQuotes() {
        if (position >= text.size()) throw std::runtime_error("unterminated quotes: " + text);
        if (!at('"')) return false;
        ++position;
        return !at('"');
    }

    std::string readText() {
        constexpr std::size_t MEGABYTE = 1 << 20;
        if (!at('\\')) return {text[position++]};
        ++position;
        if (at('\\')) return {text[position++]};
        const char kind = text.at(position++);
        if (kind == 'M') return std::string(MEGABYTE, readText().at(0));
        if (kind != 'x') throw std::runtime_error("unknown escape: " + text);
        position += 2;
        return {static_cast<char>(std::stoi(text.substr(position - 2, 2), nullptr, 16))};
    }

    bool at(char character) const { return position < text.size() && text[position] == character; }

    const std::string& text;
    std::size_t position = 0;
};

inline NameRow readNameRow(std::size_t number, const std::string& line, const std::vector<std::string>& titles) {
    std::vector<std::string> cells = NameRowReader(line).readCells();
    if (cells.size() > titles.size()) throw std::runtime_error("more cells than titles: " + line);
    cells.resize(titles.size());
    NameRow row(number, line);
    for (std::size_t i = 0; i < titles.size(); ++i) row.set(titles[i], cells[i]);
    return row;
}

inline std::vector<NameRow> readNameTable() {
    std::ifstream file(COORDTRANS_SOURCE_DIR "/tests/names.csv");
    std::vector<std::string> titles;
    std::vector<NameRow> rows;
    std::set<std::string> names;
    std::size_t number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        if (line.empty() || line.front() == '#') continue;
        if (titles.empty()) {
            titles = NameRowReader(line).readCells();
            continue;
        }
        rows.push_back(readNameRow(number, line, titles));
        if (!names.insert(rows.back()["name"]).second) throw std::runtime_error("two rows for one name: " + line);
    }
    if (rows.empty()) throw std::runtime_error("no rows in tests/names.csv");
    return rows;
}

inline const std::vector<NameRow>& nameTable() {
    static const std::vector<NameRow> table = readNameTable();
    return table;
}

// Returns the rows whose cell in the column `title` is not empty.
inline std::vector<NameRow> nameRowsWith(const std::string& title) {
    std::vector<NameRow> rows;
    for (const NameRow& row : nameTable())
        if (!row[title].empty()) rows.push_back(row);
    return rows;
}

// Returns the names under which a configured CRS with these codes is registered, in the order of registration.
inline std::vector<std::string> registeredNamesInTable(const std::string& codes) {
    std::vector<std::string> names;
    for (const NameRow& row : nameTable())
        if (row.answer() == "cache" && row["codes"] == codes) names.push_back(row["name"]);
    return names;
}

// The report of a failure.
struct NameFailure {
    std::string text;
    std::string serviceExceptionCode;
};

// Returns the report of a failure of class `type` for the name of `row`.
inline NameFailure nameFailure(const NameRow& row, const std::string& type) {
    const std::string requested = "The requested CRS " + row["name"];
    if (type == "CrsUnknownSyntaxOrAlias")
        return {requested + " is not available due to an unknown syntax or a missing identifier mapping",
                "qvCrsUnavailable"};
    if (type == "CrsNotConfigured") return {requested + " is not set up in the configuration", "qvCrsUnavailable"};
    if (type == "ConversionError") return {"convertTextToNumeric: Value '" + row["codes"] + "'", "qvConversionError"};
    if (type == "Misconfigured")
        return {"Failed to configure CRS " + std::to_string(row.primaryCode()) +
                    ". Please ensure that the CRS is defined properly in the proj4 configuration for QuarvelServer.",
                "qvConfigurationError"};
    if (type == "std::out_of_range") return {"invalid string position", ""};
    throw std::runtime_error("unknown class of failure: " + row.where());
}

}  // namespace TestSupport
