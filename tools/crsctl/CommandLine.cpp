#include "tools/crsctl/CommandLine.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <CLI/CLI.hpp>
#include <boost/algorithm/string/join.hpp>

#include "HelpTexts.h"
#include "text/InitFile.h"
#include "tools/common/CommandLineParser.h"
#include "tools/common/FixedDecimals.h"
#include "tools/common/Text.h"
#include "tools/crsctl/NamesCommand.h"
#include "tools/crsctl/Output.h"
#include "tools/crsctl/ResolveCommand.h"

namespace crsctl {

using CoordinateTransformation::AXIS_ORDER_FILE;
using CoordinateTransformation::BUILT_IN_PROJ_DIRECTORY;
using CoordinateTransformation::DESCRIPTION_FILE;
using CoordinateTransformation::INIT_FILE;
using CoordinateTransformation::PROJ_DIRECTORY_VARIABLE;
using Tools::helpSection;

namespace {

constexpr unsigned int MAX_JOBS = 64;
constexpr unsigned int MAX_POINTS_PER_EDGE = 10000;

constexpr char EXAMPLES[] = "\nExamples:\n";

std::string closingSections() {
    return helpSection("Exit codes",
                       {{"0", "Everything was accepted."},
                        {"1",
                         "A name, a line or a configuration was refused, the reader of the output has ended, or a "
                         "signal ended the program."},
                        {"2", "Wrong usage, a file that cannot be read or written, or a library that does not start."},
                        {"130", "Interrupted."}}) +
           helpSection("Environment", {{PROJ_DIRECTORY_VARIABLE, "The PROJ directory, unless --proj-dir is given."},
                                       {"NO_COLOR", "If it is set and not empty, no progress bar is drawn."},
                                       {"TERM", "If it is \"dumb\", no progress bar is drawn."}}) +
           helpSection("Files", {{BUILT_IN_PROJ_DIRECTORY, "The PROJ directory that the library uses by default."},
                                 {"PREFIX/share/CoordinateTransformation/proj",
                                  "The PROJ directory that is installed with the library; used if there is no other."},
                                 {INIT_FILE, "In a PROJ directory: the definition of each CRS."},
                                 {AXIS_ORDER_FILE, "In a PROJ directory: the axis order of each CRS."},
                                 {DESCRIPTION_FILE, "In a PROJ directory, optional: names, areas and accuracies."}}) +
           helpSection("See also", {{"",
                                     "crsctl(1), crsctl-resolve(1), crsctl-transform(1), crsctl-check(1), "
                                     "crsctl-names(1), crsctl-find(1), crs-projdir(1), cs2cs(1)"}});
}

// Returns a validator that replaces a word with its value.
template <typename Value>
CLI::Validator oneOf(const std::vector<std::pair<std::string, Value>>& choices) {
    const auto replace = [choices](std::string& word) -> std::string {
        std::vector<std::string> known;
        for (const auto& [name, value] : choices) {
            if (name == word) return word = std::to_string(static_cast<int>(value)), std::string();
            known.push_back(name);
        }
        const std::optional<std::string> meant = Tools::closest(word, known);
        return Tools::printable(word) + " is not one of " + boost::algorithm::join(known, ", ") +
               (meant ? "; did you mean " + *meant + "?" : "");
    };
    return {replace, ""};
}

template <typename Value>
CLI::Option* addOption(CLI::App& app, const char* name, Value& value, const char* kind, const std::string& text) {
    return app.add_option(name, value, text)->type_name(kind);
}

// Both the program and its commands accept these options.
void addCommonOptions(CLI::App& app, CommonOptions& common) {
    addOption(app, "--config", common.configFile, "FILE",
              "The CRS configuration of the server (\"-\": standard input).");
    addOption(app, "--proj-dir", common.projDir, "DIR",
              std::string("The PROJ directory. Without it the one that ") + PROJ_DIRECTORY_VARIABLE + " names, else " +
                  BUILT_IN_PROJ_DIRECTORY + " if it exists, else the one that is installed with the library.");
    addOption(app, "--property", common.properties, "KEY=VALUE",
              "A property of the configuration, such as AxisOrderConvention=established.")
        ->allow_extra_args(false)
        ->check([](const std::string& text) {
            const std::size_t end = text.find('=');
            return end == 0 || end == std::string::npos ? Tools::printable(text) + " is not KEY=VALUE" : std::string();
        });
    app.add_flag("--json", common.json, "Write JSON.");
    app.add_flag("-q,--quiet", common.quiet, "Write only errors to standard error: no progress, summary or hints.");
}

std::string descriptionIn(const std::string& help) { return help.substr(0, help.find(EXAMPLES)); }

std::string footerOf(const std::string& help) { return help.substr(help.find(EXAMPLES)) + closingSections(); }

CLI::App& addCommand(CLI::App& program, CommandRequest& request, const char* name, const char* help,
                     std::function<int(const CommandRequest&)> run) {
    CLI::App& command = Tools::addCommand(program, name, descriptionIn(help));
    addCommonOptions(command, request.common);
    command.footer(footerOf(help));
    command.callback([&request, run = std::move(run)] { request.run = run; });
    return command;
}

CLI::Option* addArea(CLI::App& app, CommandRequest& request, const char* text) {
    const auto readArea = [&request](const std::string& area) {
        request.searched.area = request.expected.area = readBox(area);
        request.expected.areGiven = true;
    };
    return app.add_option_function<std::string>("--area", readArea, text)->type_name("W,S,E,N");
}

void addResolve(CLI::App& program, CommandRequest& request) {
    const auto run = [](const CommandRequest& it) {
        return report(it.commandName, resolveCommand(it.common, it.names));
    };
    addCommand(program, request, "resolve", RESOLVE, run).add_option("NAME", request.names)->required();
}

void addCheck(CLI::App& program, CommandRequest& request) {
    const auto run = [](const CommandRequest& it) {
        return report(it.commandName, checkCommand(it.common, it.file, it.expected));
    };
    CLI::App& app = addCommand(program, request, "check", CHECK, run);
    addArea(app, request, "Warn of CRS whose area of use does not cover this box, in degrees.");
    const auto readAccuracy = [&request](const double& accuracy) {
        request.expected.accuracy = accuracy;
        request.expected.areGiven = true;
    };
    app.add_option_function<double>("--accuracy", readAccuracy,
                                    "Warn of CRS whose shift is less accurate; 10 by default.")
        ->type_name("METRES")
        ->check(CLI::NonNegativeNumber);
    app.add_option("FILE", request.file)->required();
}

void addNames(CLI::App& program, CommandRequest& request) {
    const auto run = [](const CommandRequest& it) { return report(it.commandName, namesCommand(it.common)); };
    addCommand(program, request, "names", NAMES, run);
}

void addFind(CLI::App& program, CommandRequest& request) {
    const auto run = [](const CommandRequest& it) {
        return report(it.commandName, findCommand(it.common, it.searched));
    };
    CLI::App& app = addCommand(program, request, "find", FIND, run);
    CLI::Option* const area = addArea(
        app, request, "A box of longitudes and latitudes in degrees; W is greater than E across the antimeridian.");
    std::vector<std::pair<std::string, CrsDescription::Kind>> kinds;
    for (const CrsDescription::Kind kind : CRS_KINDS) kinds.emplace_back(kindName(kind), kind);
    addOption(app, "--kind", request.searched.kind, "KIND",
              "Only CRS of this kind: geographic, geocentric, projected or compound.")
        ->transform(oneOf(kinds));
    CLI::Option* const text = app.add_option("TEXT", request.searched.words);
    app.callback([&request, area, text, run] {
        if (area->count() == 0 && text->count() == 0) throw CLI::RequiredError("a TEXT or an --area");
        request.run = run;
    });
}

void addInputOptions(CLI::App& app, TransformOptions& options) {
    addOption(app, "--from", options.from, "NAME", "CRS of the input, in any spelling that the server accepts.")
        ->required();
    addOption(app, "--to", options.to, "NAME", "CRS of the output.")->required();
    app.add_flag("--inverse", options.inverse, "Exchange the two.");
    addOption(app, "--columns", options.columns, "LIST",
              "The names of the columns, from the left: x, y and z, or lon and lat, longitude and latitude, easting "
              "and northing, height. Columns with other names, and those after the list, are copied. Named by "
              "direction, the coordinates stay in their columns whatever the axis order. Without it x, y and, if it is "
              "a number, z.");
    addOption(app, "--separator", options.separator, "KIND", "auto, space, comma or semicolon.")
        ->transform(oneOf<Separator>({{"auto", Separator::AUTOMATIC},
                                      {"space", Separator::BLANK},
                                      {"comma", Separator::COMMA},
                                      {"semicolon", Separator::SEMICOLON}}));
    app.add_flag("--header", options.header,
                 "The first line of each file has column names: it is not a point, and CSV and JSON use the names.");
    addOption(app, "--comment", options.lines.comment, "TEXT",
              "The text that begins a comment line; \"#\" by default, none if the text is empty.");
}

void addOutputOptions(CLI::App& app, TransformOptions& options) {
    addOption(app, "--output", options.output, "FORMAT", "text, csv or json (one object a line).")
        ->transform(oneOf<OutputFormat>(
            {{"text", OutputFormat::TEXT}, {"csv", OutputFormat::CSV}, {"json", OutputFormat::JSON}}));
    addOption(app, "--decimals", options.decimals, "N",
              "Decimal places of every coordinate, 0 to 18. Without it those of the configured entry, else 8 for "
              "degrees and 3 for metres; a height above a geographic CRS has 3.")
        ->check(CLI::Range(0, Tools::MAX_DECIMALS));
    addOption(app, "--errors", options.lines.errors, "MODE",
              "What to do with a line that fails: mark it in the output with \"*\" (the default), skip it, or stop.")
        ->transform(
            oneOf<ErrorMode>({{"stop", ErrorMode::STOP}, {"mark", ErrorMode::MARK}, {"skip", ErrorMode::SKIP}}));
    CLI::Option* const bounds =
        app.add_flag("--bounds", options.bounds, "Lines have boxes; --columns names minx, miny, maxx and maxy.");
    addOption(app, "--points-per-edge", options.lines.pointsPerEdge, "N",
              "How many points of each edge of a box, between its corners, are transformed: 0 to 10000, by default 21.")
        ->check(CLI::Range(0U, MAX_POINTS_PER_EDGE))
        ->needs(bounds);
    addOption(app, "--jobs", options.jobs, "N", "Number of threads; by default one for each processor, at most 8.")
        ->check(CLI::Range(1U, MAX_JOBS));
}

void addTransform(CLI::App& program, CommandRequest& request) {
    const auto run = [](const CommandRequest& it) { return transformCommand(it.common, it.transform); };
    CLI::App& app = addCommand(program, request, "transform", TRANSFORM, run);
    addInputOptions(app, request.transform);
    addOutputOptions(app, request.transform);
    app.add_option("FILE", request.transform.files);
}

int writeRequestedText(const CommandRequest& request) { return report("crsctl", {request.text, EXIT_DONE, {}}); }

void addCommands(CLI::App& program, CommandRequest& request) {
    Tools::addProgramOptions(program, "crsctl " COORDTRANS_VERSION);
    addCommonOptions(program, request.common);
    addResolve(program, request);
    addTransform(program, request);
    addCheck(program, request);
    addNames(program, request);
    addFind(program, request);
    program.require_subcommand(0, 1);
    program.footer(footerOf(PROGRAM));
}

}  // namespace

void readCommandLine(int argc, const char* const* argv, CommandRequest& request) {
    CLI::App program(descriptionIn(PROGRAM), "crsctl");
    addCommands(program, request);
    std::optional<std::string> text;
    std::optional<std::string> failure;
    try {
        text = Tools::parseArguments(program, {argv + std::min(argc, 1), argv + argc});
    } catch (const std::runtime_error& refused) {
        failure = refused.what();
    }
    request.commandName = Tools::fullName(program);
    if (failure) throw SetUpError(*failure);
    if (text) {
        request.text = *text;
        request.run = writeRequestedText;
    }
    if (!request.run) throw SetUpError("a command is needed: resolve, transform, check, names or find (see --help)");
}

}  // namespace crsctl
