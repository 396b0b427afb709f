#include "tools/crsctl/CommandLine.h"

#include <utility>

#include <CLI/CLI.hpp>

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
using Tools::exampleSection;
using Tools::helpSection;
using Tools::HelpTerms;

namespace {

constexpr unsigned int MAX_JOBS = 64;
constexpr unsigned int MAX_POINTS_PER_EDGE = 10000;

constexpr char PROGRAM[] =
    "Check how a server uses coordinate reference systems (CRS).\n\n"
    "crsctl uses the library exactly as a server does. It shows which CRS a name means, transforms points and boxes, "
    "checks a configuration and finds CRS.";

constexpr char RESOLVE[] =
    "Show which CRS a name means to a server.\n\n"
    "For each name: its spelling, the EPSG codes, dataset version, alias, dimension, axis order and unit of the CRS, "
    "whether the server offers it, and how the library writes it in each form.\n\n"
    "For a name that is refused: the service exception code and the text that a client receives, the reason, and the "
    "nearest name that the server accepts.\n\n"
    "Where the PROJ directory describes its CRS: name, area of use, datum, unit, the source of the shift to WGS 84, "
    "its accuracy according to the registry, and its largest distance from PROJ's best operation.\n\n"
    "Without --config every CRS of the PROJ directory is accepted, and so are CRS:84, its URN and its URL.";

constexpr char TRANSFORM[] =
    "Transform points or boxes from one CRS to another.\n\n"
    "Reads one point a line from the files or from standard input (\"-\") and writes it in the other CRS. A line has "
    "x, y and optionally a height z. The columns after them are copied. Columns are separated by blanks, commas or "
    "semicolons, whichever follows the first column. x is the first axis of the CRS: the latitude if its axis order "
    "is latitude, longitude.\n\n"
    "A line that cannot be read or transformed is reported on standard error with its number, the reason and the "
    "input. The lines after it are transformed, unless --errors stop is given. The last line on standard error has "
    "the counts, the time and the rate.\n\n"
    "Text output is the input line with its coordinates replaced, as cs2cs writes it with the same number of decimals. "
    "It keeps blank lines and comments; CSV and JSON output omit them.\n\n"
    "With --bounds each line has a box: minx, miny, maxx and maxy. Boxes can also be arguments, four numbers each. The "
    "result is the box around the transformed edges, and around a pole inside. A geographic box that crosses the "
    "antimeridian has its least longitude greater than its greatest. A box fails if none of its points can be "
    "transformed; otherwise the result is the box around the part that can.\n\n"
    "Memory does not grow with the input. Input from a pipe or a terminal is answered line by line. Several threads "
    "share the work; the output keeps the order of the input.";

constexpr char CHECK[] =
    "Check whether a server starts with a configuration.\n\n"
    "Reads a CRS configuration fragment as the server does. Prints a table of its entries, then each problem with its "
    "line: entries for which the start fails, duplicates that are dropped, containers, elements and attributes that "
    "are ignored, attribute values that do not convert, an axis order without an alias, names that two entries claim, "
    "blanks around a code.\n\n"
    "Each CRS is checked for a shift to WGS 84, its accuracy (--accuracy) and its area of use (--area). Accuracies and "
    "areas come from the descriptions in the PROJ directory.\n\n"
    "The files of the PROJ directory are checked too: a last line of epsg-axisorder.csv that is not read because its "
    "line end is missing, codes with two axis orders or two definitions, missing grid files, parameters that are not "
    "numbers.\n\n"
    "The exit code is 0 only if a server would start and there is no error.";

constexpr char NAMES[] =
    "List the names that a configuration registers.\n\n"
    "Lists every name in the name cache after a start with the configuration: codes, identifiers, URNs, text forms "
    "and aliases, each with the axis order of its CRS. The server also accepts other spellings of these CRS, which "
    "it reads on request. Without a configuration no name is registered.";

constexpr char FIND[] =
    "Find CRS by words, code and area.\n\n"
    "Lists the CRS of the PROJ directory that have every word in their name, area of use, datum or code. The best "
    "come first: the CRS with this code, then the CRS with this name, then CRS with the words in their names, then "
    "CRS with the words in their areas. Deprecated CRS come last. A word may be incomplete: \"32\" and \"germ\" find "
    "\"zone 32N\" and \"Germany\".\n\n"
    "With --area only CRS whose area of use meets the box are listed. CRS that cover the box come first, those with "
    "the smallest areas before others; the rest are marked \"(in part)\".\n\n"
    "With --config only CRS that the server offers are listed. The PROJ directory must have descriptions of its CRS "
    "(\"epsg-info.csv\").";

std::string closingSections(const HelpTerms& examples) {
    return exampleSection(examples) +
           helpSection("Exit codes",
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
CLI::Validator oneOf(std::vector<std::pair<std::string, Value>> choices) {
    return {[choices](std::string& word) {
                std::vector<std::string> known;
                for (const auto& [name, value] : choices) {
                    if (name == word) return word = std::to_string(static_cast<int>(value)), std::string();
                    known.push_back(name);
                }
                std::string message = Tools::printable(word) + " is not one of";
                for (const std::string& name : known) message += (name == known.front() ? " " : ", ") + name;
                const std::optional<std::string> meant = Tools::closest(word, known);
                return meant ? message + "; did you mean " + *meant + "?" : message;
            },
            ""};
}

// Both the program and its commands accept these options.
void addCommonOptions(CLI::App& app, CommonOptions& common) {
    app.add_option("--config", common.configFile, "The CRS configuration of the server (\"-\": standard input).")
        ->type_name("FILE");
    app.add_option("--proj-dir", common.projDir,
                   std::string("The PROJ directory. Without it the one that ") + PROJ_DIRECTORY_VARIABLE +
                       " names, else " + BUILT_IN_PROJ_DIRECTORY +
                       " if it exists, else the one that is installed with the library.")
        ->type_name("DIR");
    app.add_flag("--json", common.json, "Write JSON.");
    app.add_flag("-q,--quiet", common.quiet, "Write only errors to standard error: no progress, summary or hints.");
}

CLI::App& addCommand(CLI::App& program, CommandRequest& request, const char* name, const char* description,
                     const HelpTerms& examples, std::function<int(const CommandRequest&)> run) {
    CLI::App& command = Tools::addCommand(program, name, description);
    addCommonOptions(command, request.common);
    command.footer(closingSections(examples));
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
    addCommand(
        program, request, "resolve", RESOLVE,
        {{"crsctl resolve EPSG:25832", "Show the CRS of a code."},
         {"crsctl resolve --config crs.xml UTM32 epsg:4326", "An alias of the configuration; a name that fails."},
         {"crsctl resolve --json urn:ogc:def:crs:EPSG::4326", "The same for a program."}},
        [](const CommandRequest& it) { return report(it.commandName, resolveCommand(it.common, it.names)); })
        .add_option("NAME", request.names)
        ->required();
}

void addCheck(CLI::App& program, CommandRequest& request) {
    CLI::App& app = addCommand(
        program, request, "check", CHECK,
        {{"crsctl check crs.xml", "Before a configuration goes into production."},
         {"crsctl check --area 6,47,15,55 --accuracy 2 crs.xml", "For data of Germany, within 2 m."},
         {"crsctl check --json crs.xml", "The same for a program."}},
        [](const CommandRequest& it) { return report(it.commandName, checkCommand(it.common, it.file, it.expected)); });
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
    addCommand(program, request, "names", NAMES,
               {{"crsctl names --config crs.xml", "Every name that is registered."},
                {"crsctl names --config crs.xml --json", "The same for a program."}},
               [](const CommandRequest& it) { return report(it.commandName, namesCommand(it.common)); });
}

void addFind(CLI::App& program, CommandRequest& request) {
    const auto run = [](const CommandRequest& it) {
        return report(it.commandName, findCommand(it.common, it.searched));
    };
    CLI::App& app = addCommand(program, request, "find", FIND,
                               {{"crsctl find utm 32 etrs89", "By words."},
                                {"crsctl find --area 9.7,53.4,10.3,53.7 --kind projected", "By area."},
                                {"crsctl find --json ED50", "The same for a program."}},
                               run);
    CLI::Option* const area = addArea(
        app, request, "A box of longitudes and latitudes in degrees; W is greater than E across the antimeridian.");
    std::vector<std::pair<std::string, CrsDescription::Kind>> kinds;
    for (const CrsDescription::Kind kind : CRS_KINDS) kinds.emplace_back(kindName(kind), kind);
    app.add_option_function<CrsDescription::Kind>(
           "--kind", [&request](const CrsDescription::Kind& kind) { request.searched.kind = kind; },
           "Only CRS of this kind: geographic, geocentric, projected or compound.")
        ->type_name("KIND")
        ->transform(oneOf(kinds));
    CLI::Option* const text = app.add_option("TEXT", request.searched.words);
    app.callback([&request, area, text, run] {
        if (area->count() == 0 && text->count() == 0) throw CLI::RequiredError("a TEXT or an --area");
        request.run = run;
    });
}

void addInputOptions(CLI::App& app, TransformOptions& options) {
    app.add_option("--from", options.from, "CRS of the input, in any spelling that the server accepts.")
        ->type_name("NAME")
        ->required();
    app.add_option("--to", options.to, "CRS of the output.")->type_name("NAME")->required();
    app.add_flag("--inverse", options.inverse, "Exchange the two.");
    app.add_option("--columns", options.columns,
                   "The names of the columns, from the left: x, y and z, or lon and lat, longitude and latitude, "
                   "easting and northing, height. Columns with other names, and those after the list, are copied. "
                   "Named by direction, the coordinates stay in their columns whatever the axis order. Without it x, "
                   "y and, if it is a number, z.")
        ->type_name("LIST");
    app.add_option("--separator", options.separator, "auto, space, comma or semicolon.")
        ->type_name("KIND")
        ->transform(oneOf<Separator>({{"auto", Separator::AUTOMATIC},
                                      {"space", Separator::BLANK},
                                      {"comma", Separator::COMMA},
                                      {"semicolon", Separator::SEMICOLON}}));
    app.add_flag("--header", options.header,
                 "The first line of each file has column names: it is not a point, and CSV and JSON use the names.");
    app.add_option("--comment", options.lines.comment,
                   "The text that begins a comment line; \"#\" by default, none if the text is empty.")
        ->type_name("TEXT");
}

void addOutputOptions(CLI::App& app, TransformOptions& options) {
    app.add_option("--output", options.output, "text, csv or json (one object a line).")
        ->type_name("FORMAT")
        ->transform(oneOf<OutputFormat>(
            {{"text", OutputFormat::TEXT}, {"csv", OutputFormat::CSV}, {"json", OutputFormat::JSON}}));
    app.add_option(
           "--decimals", options.decimals,
           "Decimal places of every coordinate, 0 to 18. Without it those of the configured entry, else 8 for degrees "
           "and 3 for metres; a height above a geographic CRS has 3.")
        ->type_name("N")
        ->check(CLI::Range(0, Tools::MAX_DECIMALS));
    app.add_option("--errors", options.lines.errors,
                   "What to do with a line that fails: mark it in the output with \"*\" (the default), skip it, or "
                   "stop.")
        ->type_name("MODE")
        ->transform(
            oneOf<ErrorMode>({{"stop", ErrorMode::STOP}, {"mark", ErrorMode::MARK}, {"skip", ErrorMode::SKIP}}));
    CLI::Option* const bounds =
        app.add_flag("--bounds", options.bounds, "Lines have boxes; --columns names minx, miny, maxx and maxy.");
    app.add_option("--points-per-edge", options.lines.pointsPerEdge,
                   "How many points of each edge of a box, between its corners, are transformed: 0 to 10000, by "
                   "default 21.")
        ->type_name("N")
        ->check(CLI::Range(0U, MAX_POINTS_PER_EDGE))
        ->needs(bounds);
    app.add_option("--jobs", options.jobs, "Number of threads; by default one for each processor, at most 8.")
        ->type_name("N")
        ->check(CLI::Range(1U, MAX_JOBS));
}

void addTransform(CLI::App& program, CommandRequest& request) {
    CLI::App& app = addCommand(
        program, request, "transform", TRANSFORM,
        {{"crsctl transform --from EPSG:4326 --to EPSG:25832 points.txt", "Latitude and longitude to UTM."},
         {"crsctl transform --from EPSG:4326 --to EPSG:25832 --inverse", "Back, from standard input."},
         {"crsctl transform --from EPSG:4326 --to EPSG:25832 --columns lon,lat points.txt",
          "Points whose longitude comes first."},
         {"crsctl transform --from EPSG:31467 --to EPSG:25832 --header --columns id,x,y --output csv towers.csv",
          "A table whose first column is an identifier."},
         {"crsctl transform --from EPSG:4326 --to EPSG:3857 --errors stop --json < points.txt",
          "JSON lines, up to the first line that fails."},
         {"crsctl transform --from EPSG:4326 --to EPSG:25832 --bounds 47 6 55 15", "The box around an area in UTM."}},
        [](const CommandRequest& it) { return transformCommand(it.common, it.transform); });
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
    program.footer(closingSections(
        {{"crsctl resolve urn:ogc:def:crs:EPSG::25832", "Which CRS is this?"},
         {"crsctl transform --from CRS:84 --to UTM32 --config crs.xml points.txt", "Where are these points?"},
         {"crsctl check crs.xml", "Does a server start with this configuration?"},
         {"crsctl names --config crs.xml", "Under which names does it offer its CRS?"},
         {"crsctl find utm germany", "Which CRS are there for a place?"}}));
}

}  // namespace

void readCommandLine(int argc, const char* const* argv, CommandRequest& request) {
    CLI::App program(PROGRAM, "crsctl");
    addCommands(program, request);
    std::optional<std::string> text;
    try {
        text = Tools::parseArguments(program, {argv + std::min(argc, 1), argv + argc});
        request.commandName = Tools::fullName(program);
    } catch (const Tools::UsageError& failure) {
        request.commandName = Tools::fullName(program);
        throw SetUpError(failure.what());
    } catch (const SetUpError&) {
        request.commandName = Tools::fullName(program);
        throw;
    }
    if (text) {
        request.text = *text;
        request.run = writeRequestedText;
    }
    if (!request.run) throw SetUpError("a command is needed: resolve, transform, check, names or find (see --help)");
}

}  // namespace crsctl
