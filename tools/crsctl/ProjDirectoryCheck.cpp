#include "tools/crsctl/ProjDirectoryCheck.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>
#include <tuple>
#include <utility>

#include <proj.h>

#include "names/CrsName.h"
#include "text/FileText.h"
#include "text/InitFile.h"
#include "text/NumericText.h"
#include "text/ParameterList.h"
#include "tools/common/Text.h"

namespace crsctl {

using CoordinateTransformation::InitFileDefinition;
using CoordinateTransformation::ParameterList;
using Tools::printable;

void sortByPlace(Findings& findings) {
    // std::stable_sort of some standard libraries calls deprecated functions. Sorting a list is stable too.
    std::list<Finding> sorted(findings.begin(), findings.end());
    sorted.sort([](const Finding& left, const Finding& right) {
        return std::tie(left.place.file, left.place.line, left.place.column) <
               std::tie(right.place.file, right.place.line, right.place.column);
    });
    findings.assign(sorted.begin(), sorted.end());
}

namespace {

const std::set<std::string_view> NUMBER_KEYS = {"a",   "b",   "rf",       "f",         "es",     "e", "R",   "k", "k_0",
                                                "x_0", "y_0", "to_meter", "vto_meter", "zone",   "h", "z_0", "W", "M",
                                                "n",   "m",   "q",        "towgs84",   "R_lat_a"};
const std::set<std::string_view> ANGLE_KEYS = {"lat_0", "lat_1", "lat_2",   "lat_ts",   "lat_b", "lon_0",
                                               "lon_1", "lon_2", "lonc",    "lon_wrap", "alpha", "gamma",
                                               "azi",   "theta", "o_lat_p", "o_lon_p"};

// Returns whether PROJ reads the text as a number: a length may be "1/3", an angle "10d30'E".
bool isNumber(std::string_view text, bool isAngle) {
    std::string_view rest = text;
    const std::optional<double> number = CoordinateTransformation::takeDouble(rest);
    if (!number || !std::isfinite(*number)) return false;
    if (rest.empty()) return true;
    if (isAngle) return rest.find_first_not_of("0123456789.dDrR'\"NSEWnsew") == std::string_view::npos;
    return rest.front() == '/' && isNumber(rest.substr(1), false);
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
    return parts;
}

}  // namespace

bool isBrokenNumber(const std::string& key, const std::string& value) {
    const bool isAngle = ANGLE_KEYS.count(key) != 0;
    if (!isAngle && NUMBER_KEYS.count(key) == 0) return false;
    if (value.empty()) return true;
    const std::vector<std::string> numbers = key == "towgs84" ? split(value, ',') : std::vector<std::string>{value};
    return !std::all_of(numbers.begin(), numbers.end(),
                        [isAngle](const std::string& number) { return isNumber(number, isAngle); });
}

namespace {

class DefinitionCheck {
public:
    explicit DefinitionCheck(const std::function<bool(const std::string&)>& gridExists) : exists(gridExists) {}

    Findings run(const std::string& text) {
        const std::vector<InitFileDefinition> definitions = CoordinateTransformation::readInitFileText(text);
        for (const InitFileDefinition& definition : definitions) check(definition);
        for (const auto& [grid, users] : missingGrids) reportGrid(grid.first, grid.second, users);
        sortByPlace(findings);
        return std::move(findings);
    }

private:
    using Definitions = std::vector<const InitFileDefinition*>;

    void add(Severity severity, const InitFileDefinition& definition, const std::string& text) {
        findings.push_back({severity, {definition.line}, text});
    }

    // The first of two definitions with the same code counts.
    void check(const InitFileDefinition& definition) {
        const ParameterList parameters(definition.text);
        const auto [first, isNew] = firstOf.emplace(definition.code, &definition);
        if (isNew)
            for (const auto& [key, value] : parameters) checkParameter(definition, key, value);
        else if (ParameterList(first->second->text).toText() != parameters.toText())
            add(Severity::WARNING, definition,
                "ignored: " + printable(definition.code) + " is defined differently in line " +
                    std::to_string(first->second->line));
    }

    void checkParameter(const InitFileDefinition& definition, const std::string& key, const std::string& value) {
        if (key == "nadgrids" || key == "geoidgrids")
            for (const std::string& grid : split(value, ',')) checkGrid(definition, grid);
        if (isBrokenNumber(key, value))
            add(Severity::ERROR, definition,
                printable(definition.code) + ": +" + key + "=" + printable(value) + " is not a number");
    }

    void checkGrid(const InitFileDefinition& definition, const std::string& listed) {
        const bool isOptional = listed.rfind('@', 0) == 0;
        const std::string grid = listed.substr(isOptional ? 1 : 0);
        if (grid.empty() || grid == "null") return;
        const auto [known, isNew] = gridCache.emplace(grid, false);
        if (isNew) known->second = exists(grid);
        if (!known->second) missingGrids[{grid, isOptional}].push_back(&definition);
    }

    void reportGrid(const std::string& grid, bool isOptional, const Definitions& users) {
        const std::string more = users.size() == 1 ? "" : " and " + std::to_string(users.size() - 1) + " more";
        add(isOptional ? Severity::NOTE : Severity::ERROR, *users.front(),
            printable(users.front()->code) + more + ": the grid file " + printable(grid) + " is missing" +
                (isOptional ? ", but not required" : ""));
    }

    const std::function<bool(const std::string&)>& exists;
    std::map<std::string, const InitFileDefinition*> firstOf;          // by code
    std::map<std::pair<std::string, bool>, Definitions> missingGrids;  // by name, and whether it is optional
    std::map<std::string, bool> gridCache;
    Findings findings;
};

// Looks in the directory of the library first, then in those that PROJ knows by itself.
bool isGrid(const std::string& name, const std::string& projDirectory) {
    const char* const ofProj = proj_info().searchpath;
    std::vector<std::string> directories = split(ofProj == nullptr ? "" : ofProj, ':');
    directories.insert(directories.begin(), projDirectory);
    return std::any_of(directories.begin(), directories.end(), [&name](const std::string& directory) {
        std::error_code ignored;
        return std::filesystem::is_regular_file(std::filesystem::path(directory) / name, ignored);
    });
}

}  // namespace

Findings checkAxisOrders(const std::string& text) {
    std::map<unsigned int, std::pair<std::string, std::size_t>> orders;  // axis order and line by code
    Findings findings;
    std::istringstream rows(text);
    std::size_t line = 0;
    const auto warn = [&](const std::string& finding) { findings.push_back({Severity::WARNING, {line}, finding}); };
    for (std::string row; std::getline(rows, row);) {
        ++line;
        const std::size_t separator = row.find(';');
        if (rows.eof()) warn("not read, because the line end is missing: " + printable(row));
        if (rows.eof() || separator == std::string::npos) continue;
        const unsigned int code = CoordinateTransformation::readCode(row.substr(0, separator));
        const std::string rest = row.substr(separator + 1);
        const std::string order = QSHelpers::trimWhitespace(rest.substr(0, rest.find(';')), QSHelpers::TRIM_BOTH);
        const auto [first, isNew] = orders.emplace(code, std::pair(order, line));
        const auto& [firstOrder, firstLine] = first->second;
        if (firstOrder != order)
            warn("ignored: " + std::to_string(code) + " has the axis order " + printable(firstOrder) + " of line " +
                 std::to_string(firstLine));
    }
    return findings;
}

Findings checkDefinitions(const std::string& text, const std::function<bool(const std::string& grid)>& exists) {
    return DefinitionCheck(exists).run(text);
}

Findings checkProjDirectory(const std::string& directory) {
    const auto exists = [&directory](const std::string& grid) { return isGrid(grid, directory); };
    Findings findings;
    const auto addFindings = [&](const char* name, const std::function<Findings(const std::string&)>& check) {
        const std::string path = (std::filesystem::path(directory) / name).string();
        for (Finding& finding : check(CoordinateTransformation::readFile(path).content)) {
            finding.place.file = path;
            findings.push_back(std::move(finding));
        }
    };
    addFindings(CoordinateTransformation::INIT_FILE,
                [&exists](const std::string& text) { return checkDefinitions(text, exists); });
    addFindings(CoordinateTransformation::AXIS_ORDER_FILE, checkAxisOrders);
    return findings;
}

}  // namespace crsctl
