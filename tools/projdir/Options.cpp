#include "tools/projdir/Options.h"

#include <charconv>
#include <cmath>
#include <sstream>
#include <vector>

#include <CLI/CLI.hpp>

#include "text/NumericText.h"

namespace ProjDir {

using CoordinateTransformation::writeDouble;

namespace {

constexpr char DESCRIPTION[] =
    "Makes a PROJ directory, the files \"epsg\", \"epsg-axisorder.csv\" and \"epsg-info.csv\", from the EPSG registry\n"
    "that the installed PROJ carries.";

constexpr int USAGE_ERROR = 2;

std::string describeFailure(const CLI::App* /*app*/, const CLI::Error& failure) {
    return std::string("crs-projdir: ") + failure.what() + "; see crs-projdir --help\n";
}

constexpr char AREA_FORM[] = "an area is W,S,E,N in degrees, west and east from -180 to 180, south not above north";

bool isLongitude(double value) { return value >= -180 && value <= 180; }
bool isLatitude(double value) { return value >= -90 && value <= 90; }

std::optional<double> readNumber(const std::string& text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

// West is greater than east in an area that crosses the 180th meridian.
Area readArea(const std::string& text) {
    std::vector<double> sides;
    std::istringstream cells(text);
    for (std::string cell; std::getline(cells, cell, ',');) sides.push_back(readNumber(cell).value_or(HUGE_VAL));
    if (sides.size() != 4) throw CLI::ValidationError("--area", AREA_FORM);
    const Area area{sides[0], sides[1], sides[2], sides[3]};
    const bool isOnEarth =
        isLongitude(area.west) && isLongitude(area.east) && isLatitude(area.south) && isLatitude(area.north);
    if (!isOnEarth || area.south > area.north) throw CLI::ValidationError("--area", AREA_FORM);
    return area;
}

void addChoosingOptions(CLI::App& app, Options& options) {
    app.add_option("--codes", options.codesFile, "Only the codes in FILE, one a line")->type_name("FILE");
    app.add_option("--from-config", options.configFile, "Only the codes that the configuration fragment in FILE names")
        ->type_name("FILE");
    app.add_option_function<std::string>(
           "--area", [&options](const std::string& text) { options.area = readArea(text); },
           "Only CRS whose area of use has a part in common with this one, in degrees")
        ->type_name("W,S,E,N");
    app.add_flag("--include-deprecated", options.includeDeprecated, "Deprecated CRS as well");
}

void addShiftOptions(CLI::App& app, Options& options) {
    app.add_flag("--grids", options.useGrids,
                 "The grid that PROJ prefers all over an area of use, and \"epsg-grids.csv\", the list of the files");
    app.add_flag("--fit", options.fit, "Fit a shift where no published one is within a metre");
    app.add_option("--worst", options.worst,
                   "Leave out a CRS whose shift is more than METRES off at a tenth of its points; 100 unless given")
        ->type_name("METRES")
        ->check(CLI::NonNegativeNumber);
}

void addOptions(CLI::App& app, Options& options) {
    app.add_option("OUTDIR", options.directory, "The directory to make; it may be there already")->required();
    addChoosingOptions(app, options);
    addShiftOptions(app, options);
    app.add_option("--report", options.reportFile, "Write what was left out, and why, to FILE")->type_name("FILE");
    app.add_flag("--verify", options.verify, "Compare the definitions with PROJ's own best operations");
    app.add_flag("--force", options.force, "Overwrite files that are there");
    app.footer("crs-projdir diff OLD NEW compares two directories and has a help of its own.");
    app.set_version_flag("--version", std::string("crs-projdir ") + PROJDIR_VERSION);
}

void appendIf(std::string& text, bool isGiven, const std::string& part) {
    if (isGiven) text += " " + part;
}

std::string writeArea(const Area& area) {
    return writeDouble(area.west) + "," + writeDouble(area.south) + "," + writeDouble(area.east) + "," +
           writeDouble(area.north);
}

}  // namespace

std::string describeOptions(const Options& options) {
    std::string text;
    appendIf(text, !options.codesFile.empty(), "--codes");
    appendIf(text, !options.configFile.empty(), "--from-config");
    if (options.area) text += " --area " + writeArea(*options.area);
    appendIf(text, options.includeDeprecated, "--include-deprecated");
    appendIf(text, options.useGrids, "--grids");
    appendIf(text, options.fit, "--fit");
    appendIf(text, options.worst != Options{}.worst, "--worst " + writeDouble(options.worst));
    return "crs-projdir " PROJDIR_VERSION + (text.empty() ? " without options" : text);
}

bool readOptions(int argc, const char* const* argv, Options& options, int& exitCode) {
    CLI::App app(DESCRIPTION, "crs-projdir");
    app.failure_message(describeFailure);
    addOptions(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& end) {
        exitCode = app.exit(end) == 0 ? 0 : USAGE_ERROR;
        return false;
    }
    return true;
}

}  // namespace ProjDir
