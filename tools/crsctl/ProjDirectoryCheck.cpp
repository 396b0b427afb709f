#include "tools/crsctl/ProjDirectoryCheck.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <proj.h>

#include "text/FileText.h"
#include "text/InitFile.h"
#include "text/NumericText.h"
#include "text/ParameterList.h"
#include "tools/common/Text.h"

namespace crsctl {

using CoordinateTransformation::AXIS_ORDER_FILE;
using CoordinateTransformation::INIT_FILE;
using CoordinateTransformation::InitFileDefinition;
using CoordinateTransformation::ParameterList;
using CoordinateTransformation::readFile;
using CoordinateTransformation::readInitFileText;
using Tools::printable;

void sortByPlace(Findings& findings) {
    // std::stable_sort of some standard libraries calls deprecated functions. Sorting a list is stable too.
    std::list<Finding> sorted(std::make_move_iterator(findings.begin()), std::make_move_iterator(findings.end()));
    sorted.sort([](const Finding& left, const Finding& right) {
        return std::tie(left.place.file, left.place.line, left.place.column) <
               std::tie(right.place.file, right.place.line, right.place.column);
    });
    findings.assign(std::make_move_iterator(sorted.begin()), std::make_move_iterator(sorted.end()));
}

namespace {

const std::set<std::string>& numberKeys() {
    static const std::set<std::string> keys = {"a",   "b",   "rf",  "f",        "es",        "e",       "R",      "k",
                                               "k_0", "x_0", "y_0", "to_meter", "vto_meter", "zone",    "h",      "z_0",
                                               "W",   "M",   "n",   "m",        "q",         "towgs84", "R_lat_a"};
    return keys;
}

const std::set<std::string>& angleKeys() {
    static const std::set<std::string> keys = {"lat_0", "lat_1", "lat_2",   "lat_ts",   "lat_b", "lon_0",
                                               "lon_1", "lon_2", "lonc",    "lon_wrap", "alpha", "gamma",
                                               "azi",   "theta", "o_lat_p", "o_lon_p"};
    return keys;
}

// Returns whether PROJ reads the text as a number: a length may be "1/3", an angle "10d30'E".
bool isNumber(std::string_view text, bool isAngle) {
    std::string_view rest = text;
    const std::optional<double> number = CoordinateTransformation::takeDouble(rest);
    if (!number || !std::isfinite(*number)) return false;
    if (rest.empty()) return true;
    if (isAngle) return rest.find_first_not_of("0123456789.dDrR'\"NSEWnsew") == std::string_view::npos;
    return rest.front() == '/' && isNumber(rest.substr(1), false);
}

}  // namespace

std::vector<std::string> splitAtCommas(const std::string& text) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, ',');) parts.push_back(part);
    return parts;
}

bool isBrokenNumber(const std::string& key, const std::string& value) {
    const bool isAngle = angleKeys().count(key) != 0;
    if (!isAngle && numberKeys().count(key) == 0) return false;
    if (value.empty()) return true;
    const std::vector<std::string> numbers = key == "towgs84" ? splitAtCommas(value) : std::vector<std::string>{value};
    return !std::all_of(numbers.begin(), numbers.end(),
                        [isAngle](const std::string& number) { return isNumber(number, isAngle); });
}

namespace {

Place onLine(std::size_t line) {
    Place place;
    place.line = line;
    return place;
}

std::string trimmed(const std::string& text, const char* characters) {
    const std::size_t begin = text.find_first_not_of(characters);
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(characters) - begin + 1);
}

// Returns "4326" for " +04326 ".
std::string canonicalCode(const std::string& cell) {
    const std::string digits = trimmed(cell, " +");
    const std::size_t begin = digits.find_first_not_of('0');
    return begin == std::string::npos ? "0" : digits.substr(begin);
}

class AxisOrderExamination {
public:
    Findings run(const std::string& text) {
        std::size_t begin = 0;
        for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin)) {
            examineLine(text.substr(begin, end - begin), ++line);
            begin = end + 1;
        }
        if (begin < text.size())
            warn(line + 1, "not read, because the line end is missing: " + printable(text.substr(begin)));
        return std::move(findings);
    }

private:
    struct AxisOrder {
        std::string order;
        std::size_t line;
    };

    void warn(std::size_t place, const std::string& text) {
        findings.push_back({Severity::WARNING, onLine(place), text});
    }

    void examineLine(const std::string& row, std::size_t place) {
        const std::size_t separator = row.find(';');
        if (separator == std::string::npos) return;
        const std::string code = canonicalCode(row.substr(0, separator));
        const std::string order = trimmed(row.substr(separator + 1), "; \t\r\n");
        const auto [first, isNew] = orders.emplace(code, AxisOrder{order, place});
        if (!isNew && first->second.order != order)
            warn(place, "ignored: " + printable(code) + " has the axis order " + printable(first->second.order) +
                            " of line " + std::to_string(first->second.line));
    }

    std::size_t line = 0;
    std::map<std::string, AxisOrder> orders;
    Findings findings;
};

class DefinitionExamination {
public:
    explicit DefinitionExamination(const std::function<bool(const std::string&)>& gridExists) : exists(gridExists) {}

    Findings run(const std::string& text) {
        for (const InitFileDefinition& definition : readInitFileText(text)) examine(definition);
        for (const auto& [grid, users] : missingGrids) reportGrid(grid.first, grid.second, users);
        sortByPlace(findings);
        return std::move(findings);
    }

private:
    struct First {
        std::string parameters;
        std::size_t line;
    };
    struct Users {
        std::string firstCode;
        std::size_t firstLine;
        std::size_t others = 0;
    };

    // The first of two definitions with the same code counts.
    void examine(const InitFileDefinition& definition) {
        const ParameterList parameters(definition.text);
        const auto [first, isNew] = definitions.emplace(definition.code, First{parameters.toText(), definition.line});
        if (isNew)
            for (const auto& [key, value] : parameters) examineParameter(definition, key, value);
        else if (first->second.parameters != parameters.toText())
            findings.push_back({Severity::WARNING, onLine(definition.line),
                                "ignored: " + printable(definition.code) + " is defined differently in line " +
                                    std::to_string(first->second.line)});
    }

    void examineParameter(const InitFileDefinition& definition, const std::string& key, const std::string& value) {
        if (key == "nadgrids" || key == "geoidgrids")
            for (const std::string& grid : splitAtCommas(value)) examineGrid(definition, grid);
        if (isBrokenNumber(key, value))
            findings.push_back(
                {Severity::ERROR, onLine(definition.line),
                 printable(definition.code) + ": +" + key + "=" + printable(value) + " is not a number"});
    }

    void examineGrid(const InitFileDefinition& definition, const std::string& listed) {
        const bool isOptional = listed.rfind('@', 0) == 0;
        const std::string grid = listed.substr(isOptional ? 1 : 0);
        if (grid.empty() || grid == "null" || lookUp(grid)) return;
        const auto [users, isNew] =
            missingGrids.emplace(std::pair(grid, isOptional), Users{definition.code, definition.line});
        if (!isNew) ++users->second.others;
    }

    bool lookUp(const std::string& grid) {
        const auto known = gridCache.find(grid);
        return known != gridCache.end() ? known->second : gridCache.emplace(grid, exists(grid)).first->second;
    }

    void reportGrid(const std::string& grid, bool isOptional, const Users& users) {
        const std::string whose =
            printable(users.firstCode) + (users.others == 0 ? "" : " and " + std::to_string(users.others) + " more");
        findings.push_back(
            {isOptional ? Severity::NOTE : Severity::ERROR, onLine(users.firstLine),
             whose + ": the grid file " + printable(grid) + " is missing" + (isOptional ? ", but not required" : "")});
    }

    const std::function<bool(const std::string&)>& exists;
    std::map<std::string, First> definitions;
    std::map<std::pair<std::string, bool>, Users> missingGrids;
    std::map<std::string, bool> gridCache;
    Findings findings;
};

// Returns the directories in the order of the search: that of the library, then those that PROJ knows by itself.
std::vector<std::string> gridDirectories(const std::string& directory) {
    std::vector<std::string> directories = {directory};
    const char* const ofProj = proj_info().searchpath;
    std::istringstream paths(ofProj == nullptr ? "" : ofProj);
    for (std::string path; std::getline(paths, path, ':');) directories.push_back(path);
    return directories;
}

bool isFileInAny(const std::vector<std::string>& directories, const std::string& name) {
    for (const std::string& directory : directories) {
        std::error_code ignored;
        if (std::filesystem::is_regular_file(std::filesystem::path(directory) / name, ignored)) return true;
    }
    return false;
}

void addOf(const std::string& path, Findings found, Findings& all) {
    for (Finding& finding : found) {
        finding.place.file = path;
        all.push_back(std::move(finding));
    }
}

}  // namespace

Findings checkAxisOrders(const std::string& text) { return AxisOrderExamination().run(text); }

Findings checkDefinitions(const std::string& text, const std::function<bool(const std::string& grid)>& exists) {
    return DefinitionExamination(exists).run(text);
}

Findings checkProjDirectory(const std::string& directory) {
    const std::string definitions = (std::filesystem::path(directory) / INIT_FILE).string();
    const std::string axisOrders = (std::filesystem::path(directory) / AXIS_ORDER_FILE).string();
    const std::vector<std::string> directories = gridDirectories(directory);
    Findings findings;
    addOf(definitions,
          checkDefinitions(readFile(definitions).content,
                           [&directories](const std::string& grid) { return isFileInAny(directories, grid); }),
          findings);
    addOf(axisOrders, checkAxisOrders(readFile(axisOrders).content), findings);
    return findings;
}

}  // namespace crsctl
