#include "tools/projdir/CommandLine.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <sstream>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>

#include "text/NumericText.h"
#include "tools/common/CommandLineParser.h"
#include "tools/common/Text.h"

namespace ProjDir {

using CoordinateTransformation::writeDouble;
using Tools::exampleSection;
using Tools::helpSection;
using Tools::HelpTerms;

namespace {

constexpr char VERSION[] = "crs-projdir " PROJDIR_VERSION;

constexpr char DESCRIPTION[] =
    "Make a PROJ directory from the EPSG registry of the installed PROJ.\n\n"
    "Writes the files \"epsg\", \"epsg-axisorder.csv\" and \"epsg-info.csv\" to OUTDIR, which is created if it does "
    "not exist. Each definition has the published datum shift that agrees best, over the area of use of the CRS, with "
    "PROJ's best operation that needs no grid.\n\n"
    "The files depend on the version of PROJ, on its database and on the options. They do not depend on the installed "
    "grids. Each file is written completely or not at all, and a run that fails leaves nothing behind.\n\n"
    "A command is the first argument. A directory with the name of a command is written with a path, such as ./diff.";

constexpr char DIFF_DESCRIPTION[] =
    "Compare two PROJ directories.\n\n"
    "Lists the codes that were added, removed and changed from OLD to NEW. For each changed code it prints the largest "
    "distance, over the area of use, between the places that the two definitions give for the same coordinates.\n\n"
    "The areas of use are those of \"epsg-info.csv\" in NEW. If that file lacks a code, they are those of the "
    "installed registry.";

constexpr char AREA_FORM[] = "an area is W,S,E,N in degrees, west and east from -180 to 180, south not above north";

const HelpTerms EXAMPLES = {{"crs-projdir proj", "Use the whole registry."},
                            {"crs-projdir --from-config crs.xml proj", "Use the codes that a configuration names."},
                            {"crs-projdir --area 5,47,16,56 --verify --report report.html proj",
                             "Use the CRS of a region, and write a page about their accuracy."},
                            {"crs-projdir diff old new", "Show what has changed."}};

const HelpTerms EXIT_CODES = {
    {"0", "The directory is made."},
    {"1",
     "A failure; the message names the file or the code. With --verify also a definition that the library refuses, or "
     "an error of more than a millimetre in a conversion within a datum or in a round trip."},
    {"2", "Wrong usage."}};

const HelpTerms FILES = {{"OUTDIR/epsg", "The definitions."},
                         {"OUTDIR/epsg-axisorder.csv", "The axis order of each definition: \"en\" or \"ne\"."},
                         {"OUTDIR/epsg-info.csv", "Name, kind, area of use, unit, datum and shift of each definition."},
                         {"OUTDIR/epsg-grids.csv", "The grid files that definitions name; only with --grids."},
                         {"proj.db", "The database of the installed PROJ, from which the definitions are made."}};

const HelpTerms DIFF_EXAMPLES = {{"crs-projdir diff old new", "Show what has changed."},
                                 {"crs-projdir diff --format json old new", "Show it to a program."},
                                 {"crs-projdir diff --quiet old new || echo changed", "Only compare."}};

const HelpTerms DIFF_EXIT_CODES = {
    {"0", "The directories are the same."}, {"1", "They differ."}, {"2", "A failure, or wrong usage."}};

const HelpTerms DIFF_FILES = {{"epsg", "In a PROJ directory: the definitions."},
                              {"epsg-axisorder.csv", "In a PROJ directory: the axis order of each definition."},
                              {"epsg-info.csv", "In a PROJ directory, optional: names and areas of use."},
                              {"proj.db", "The database of the installed PROJ."}};

const HelpTerms ENVIRONMENT = {
    {"PROJ_DATA, PROJ_LIB", "The directories in which PROJ finds its database and its grids."},
    {"NO_COLOR", "If it is set and not empty, no progress bar is drawn."},
    {"TERM", "If it is \"dumb\", no progress bar is drawn."}};

std::string closingSections(const HelpTerms& examples, const HelpTerms& exitCodes, const HelpTerms& files) {
    return exampleSection(examples) + helpSection("Exit codes", exitCodes) + helpSection("Environment", ENVIRONMENT) +
           helpSection("Files", files) +
           helpSection("See also", {{"", "crs-projdir(1), crs-projdir-diff(1), crsctl(1)"}});
}

double readSide(const std::string& text, double largest) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (!isNumber || !(std::fabs(value) <= largest)) throw CLI::ValidationError("--area", AREA_FORM);
    return value;
}

// West is greater than east in an area that crosses the 180th meridian.
Area readArea(const std::string& text) {
    std::vector<std::string> sides;
    std::istringstream stream(text);
    for (std::string side; std::getline(stream, side, ',');) sides.push_back(side);
    if (sides.size() != 4) throw CLI::ValidationError("--area", AREA_FORM);
    const Area area{readSide(sides[0], 180), readSide(sides[1], 90), readSide(sides[2], 180), readSide(sides[3], 90)};
    if (area.south > area.north) throw CLI::ValidationError("--area", AREA_FORM);
    return area;
}

void addSelection(CLI::App& program, Options& options) {
    program
        .add_option("--codes", options.codesFile,
                    "Only the codes in FILE, one per line; # begins a comment. A code without a definition is an "
                    "error.")
        ->type_name("FILE");
    program
        .add_option("--from-config", options.configFile,
                    "Only the codes that the configuration fragment in FILE names. A code without a definition is an "
                    "error.")
        ->type_name("FILE");
    program
        .add_option_function<std::string>(
            "--area", [&options](const std::string& text) { options.area = readArea(text); },
            "Only CRS whose area of use overlaps this one, in degrees. W is greater than E for an area that crosses "
            "the 180th meridian. If several of these three options are given, a CRS must satisfy all of them.")
        ->type_name("W,S,E,N");
    program.add_flag("--include-deprecated", options.includeDeprecated, "Deprecated CRS as well.");
}

void addShifts(CLI::App& program, Options& options) {
    program.add_flag("--grids", options.useGrids,
                     "Use a grid where PROJ, with all grids installed, prefers it all over an area of use. The file "
                     "\"epsg-grids.csv\" then lists the grid files that the definitions name, with the checksums "
                     "(SHA-256) of those that are installed.");
    program.add_flag("--fit", options.fit,
                     "Fit a shift where no published one is within a metre. It is used if it agrees better and is "
                     "plausible between datums.");
    program
        .add_option("--worst", options.worst,
                    "Leave out a CRS whose shift is farther than METRES from PROJ's operations at more than a tenth of "
                    "the points; 100 unless given.")
        ->type_name("METRES")
        ->check(CLI::NonNegativeNumber);
}

void addOutput(CLI::App& program, Options& options) {
    program
        .add_option("--report", options.reportFile,
                    "Write a report to FILE: every CRS that is left out, with the reason, and the measurements of "
                    "--verify. A FILE that ends in .json has every CRS as JSON. One that ends in .html is a page with "
                    "a map, a histogram and a table.")
        ->type_name("FILE");
    program.add_flag("--verify", options.verify,
                     "Compare the definitions with PROJ's own best operations, and conversions within each datum with "
                     "the registry's own; transform points to WGS 84 and back; and print the agreement.");
    program.add_flag("--force", options.force, "Overwrite existing files.");
    program.add_flag("-q,--quiet", options.quiet, "Print nothing but failures.");
}

void addDiff(CLI::App& program, DiffOptions& options) {
    CLI::App& diff = Tools::addCommand(program, "diff", DIFF_DESCRIPTION);
    diff.add_option("OLD", options.before)->required();
    diff.add_option("NEW", options.after)->required();
    diff.add_option_function<std::string>(
            "--format", [&options](const std::string& format) { options.asJson = format == "json"; },
            "text, the default, or json.")
        ->check(CLI::IsMember({"text", "json"}))
        ->type_name("FORMAT");
    diff.add_flag("-q,--quiet", options.quiet, "Print nothing but failures; the exit code is the result.");
    diff.footer(closingSections(DIFF_EXAMPLES, DIFF_EXIT_CODES, DIFF_FILES));
}

void addEverything(CLI::App& program, Request& request) {
    program.require_subcommand(0, 1);
    Tools::addProgramOptions(program, VERSION);
    program.add_option("OUTDIR", request.options.directory)->required();
    addSelection(program, request.options);
    addShifts(program, request.options);
    addOutput(program, request.options);
    addDiff(program, request.diff);
    program.footer(closingSections(EXAMPLES, EXIT_CODES, FILES));
}

// Without this, "dif" would be the directory to make.
void refuseMistypedCommand(const CLI::App& program, const std::string& word) {
    if (word.find('/') != std::string::npos) return;
    const std::optional<std::string> meant = Tools::mistypedCommand(program, word);
    std::error_code ignored;
    if (meant && !std::filesystem::is_directory(word, ignored))
        throw Tools::UsageError("there is no command " + Tools::printable(word) + "; did you mean " + *meant +
                                "? A directory of this name is written ./" + Tools::printable(word));
}

}  // namespace

std::string describeOptions(const Options& options) {
    std::string text;
    const auto append = [&text](bool isGiven, const char* option) {
        if (isGiven) text += std::string(" ") + option;
    };
    append(!options.codesFile.empty(), "--codes");
    append(!options.configFile.empty(), "--from-config");
    if (const auto& area = options.area)
        text += " --area " + writeDouble(area->west) + "," + writeDouble(area->south) + "," + writeDouble(area->east) +
                "," + writeDouble(area->north);
    append(options.includeDeprecated, "--include-deprecated");
    append(options.useGrids, "--grids");
    append(options.fit, "--fit");
    if (options.worst != Options{}.worst) text += " --worst " + writeDouble(options.worst);
    return VERSION + (text.empty() ? " without options" : text);
}

void readCommandLine(int argc, const char* const* argv, Request& request) {
    CLI::App program(DESCRIPTION, PROGRAM_NAME);
    addEverything(program, request);
    const std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
    if (arguments.size() == 1) refuseMistypedCommand(program, arguments.front());
    try {
        request.text = Tools::parseArguments(program, arguments);
    } catch (const Tools::UsageError&) {
        if (!arguments.empty()) refuseMistypedCommand(program, arguments.front());
        request.name = Tools::fullName(program);
        throw;
    }
    request.name = Tools::fullName(program);
    request.isDiff = program.got_subcommand("diff");
}

}  // namespace ProjDir
