#include "tools/projdir/Commands.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <list>
#include <new>
#include <sstream>
#include <thread>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "text/NumericText.h"
#include "tools/common/ProgressBar.h"
#include "tools/projdir/Diff.h"
#include "tools/projdir/DirectoryFiles.h"
#include "tools/projdir/Report.h"

namespace ProjDir {

using CoordinateTransformation::writeDouble;

namespace {

constexpr char VERSION[] = "crs-projdir " PROJDIR_VERSION;

constexpr char DESCRIPTION[] =
    "Makes a PROJ directory, the files \"epsg\", \"epsg-axisorder.csv\" and \"epsg-info.csv\", from the EPSG registry\n"
    "of the installed PROJ.";

constexpr char DIFF_DESCRIPTION[] =
    "Compares two PROJ directories: the codes that were added, removed and changed. For each changed code it prints\n"
    "the largest distance between the two definitions over the area of use. The exit code is 0 if the directories\n"
    "are the same, 1 if they differ, 2 after a failure.";

constexpr char AREA_FORM[] = "an area is W,S,E,N in degrees, west and east from -180 to 180, south not above north";

enum ExitCode { SUCCESS = 0, FAILURE = 1, USAGE_ERROR = 2 };
enum DiffExitCode { SAME = 0, DIFFERENT = 1, TROUBLE = 2 };

// Each thread has its own copy of the registry in memory.
constexpr unsigned int LARGEST_THREAD_COUNT = 4;

// Watches for allocations that fail during its life, including those after which PROJ continues with incomplete data.
// One in a process at a time.
class MemoryWatch {
public:
    MemoryWatch() {
        shortageSeen = false;
        before = std::set_new_handler(noteShortage);
    }
    MemoryWatch(const MemoryWatch&) = delete;
    MemoryWatch& operator=(const MemoryWatch&) = delete;
    ~MemoryWatch() { std::set_new_handler(before); }

    static bool sawShortage() { return shortageSeen; }
    // std::bad_alloc if an allocation has failed.
    static void requireNoShortage() {
        if (shortageSeen) throw std::bad_alloc();
    }

private:
    static void noteShortage() {
        shortageSeen = true;
        throw std::bad_alloc();
    }

    static inline std::atomic<bool> shortageSeen{false};
    std::new_handler before = nullptr;
};

double readSide(const std::string& text, double largest) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (!isNumber || !(std::fabs(value) <= largest)) throw CLI::ValidationError("--area", AREA_FORM);
    return value;
}

// West is greater than east in an area that crosses the 180th meridian.
Area readArea(const std::string& text) {
    std::vector<std::string> cells;
    std::istringstream stream(text);
    for (std::string cell; std::getline(stream, cell, ',');) cells.push_back(cell);
    if (cells.size() != 4) throw CLI::ValidationError("--area", AREA_FORM);
    const Area area{readSide(cells[0], 180), readSide(cells[1], 90), readSide(cells[2], 180), readSide(cells[3], 90)};
    if (area.south > area.north) throw CLI::ValidationError("--area", AREA_FORM);
    return area;
}

void addOptions(CLI::App& app, Options& options) {
    const auto addFile = [&app](const char* name, std::string& file, const char* text) {
        app.add_option(name, file, text)->type_name("FILE");
    };
    app.add_option("OUTDIR", options.directory, "The directory to make; it may exist already")->required();
    addFile("--codes", options.codesFile, "Only the codes in FILE, one per line");
    addFile("--from-config", options.configFile, "Only the codes that the configuration fragment in FILE names");
    app.add_option_function<std::string>(
           "--area", [&options](const std::string& text) { options.area = readArea(text); },
           "Only CRS whose area of use overlaps this one, in degrees")
        ->type_name("W,S,E,N");
    app.add_flag("--include-deprecated", options.includeDeprecated, "Deprecated CRS as well");
    app.add_flag("--grids", options.useGrids,
                 "Use a grid where PROJ prefers it all over an area of use, and list the files in \"epsg-grids.csv\"");
    app.add_flag("--fit", options.fit, "Fit a shift where no published one is within a metre");
    app.add_option("--worst", options.worst,
                   "Leave out a CRS whose shift is more than METRES off at a tenth of its points; 100 unless given")
        ->type_name("METRES")
        ->check(CLI::NonNegativeNumber);
    addFile("--report", options.reportFile, "Write a report with every CRS left out, and the reasons, to FILE");
    app.add_flag("--verify", options.verify, "Compare the definitions with PROJ's own best operations");
    app.add_flag("--force", options.force, "Overwrite existing files");
    app.add_flag("-q,--quiet", options.quiet, "Print nothing but failures");
    app.footer("crs-projdir diff OLD NEW compares two directories; see crs-projdir help diff.");
}

// Whether there is something to do. The messages of failures begin with the name of the app.
bool parse(CLI::App& app, std::vector<std::string> arguments, int& exitCode) {
    app.set_version_flag("-V,--version", VERSION);
    app.failure_message([](const CLI::App* failed, const CLI::Error& failure) {
        return failed->get_name() + ": " + failure.what() + "; see " + failed->get_name() + " --help\n";
    });
    std::reverse(arguments.begin(), arguments.end());
    try {
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& end) {
        exitCode = app.exit(end) == 0 ? SUCCESS : USAGE_ERROR;
        return false;
    }
    return true;
}

// "help" and "help diff" are other words for "--help" and "diff --help".
std::vector<std::string> readArguments(int argc, const char* const* argv) {
    std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
    if (arguments.empty() || arguments.front() != "help") return arguments;
    arguments.erase(arguments.begin());
    arguments.emplace_back("--help");
    return arguments;
}

bool isDiff(const std::vector<std::string>& arguments) { return !arguments.empty() && arguments.front() == "diff"; }

void print(const std::string& text) {
    if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0)
        throw FileError("cannot write to the standard output");
}

// A file of the directory, by name and content.
using DirectoryFile = std::pair<std::string, std::string>;

// Checks that all files can be written. Nothing remains on the disk while the definitions are made, so an interruption
// leaves nothing behind.
void probeOutput(const Options& options) {
    const BlockedSignals blocked;
    const OutputDirectory directory(options.directory);
    std::vector<std::string> names = {INIT_FILE, AXIS_ORDER_FILE, DESCRIPTION_FILE};
    if (options.useGrids) names.emplace_back(GRIDS_FILE);
    for (const std::string& name : names) OutputFile(directory.file(name), options.force).probe();
    if (!options.reportFile.empty()) OutputFile(options.reportFile, options.force).probe();
}

// All files are complete before the first one is renamed. The definitions are renamed last: where they exist, the other
// files do.
void publishDirectory(const Options& options, const std::vector<DirectoryFile>& files) {
    const BlockedSignals blocked;
    OutputDirectory directory(options.directory);
    std::list<OutputFile> outputs;
    for (const auto& [name, text] : files) {
        outputs.emplace_front(directory.file(name), options.force);
        outputs.front().write(text);
    }
    for (OutputFile& output : outputs) output.publish();
    directory.keep();
}

void publishReport(const Options& options, const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes,
                   const Verification& verification) {
    const std::string suffix = std::filesystem::path(options.reportFile).extension().string();
    std::string text;
    if (suffix == ".json" || suffix == ".html")
        text = writeJsonReport(version, outcomes, verification);
    else
        text = writeReport(version, outcomes, verification);
    if (suffix == ".html") text = writeHtmlReport(text);
    std::optional<BlockedSignals> blocked;
    OutputFile report(options.reportFile, options.force);
    if (!report.isStream()) blocked.emplace();
    report.write(text);
    report.publish();
}

// A listed code without a definition is an error.
void requireDefinitions(const Options& options, const std::vector<CrsOutcome>& outcomes) {
    const std::string& list = options.codesFile.empty() ? options.configFile : options.codesFile;
    const std::string leftOut = list.empty() ? "" : writeLeftOut(outcomes);
    if (!leftOut.empty())
        throw FileError(list + " names CRS without a definition:\n" + leftOut.substr(0, leftOut.size() - 1));
}

std::vector<CrsOutcome> makeOutcomes(const Options& options, const std::vector<RegistryCrs>& list) {
    Tools::ProgressBar progress(stderr, "Definitions", list.size(), !options.quiet);
    const unsigned int threads = std::clamp(std::thread::hardware_concurrency(), 1U, LARGEST_THREAD_COUNT);
    std::vector<CrsOutcome> outcomes = makeAll(list, {options.useGrids, options.verify, options.fit, options.worst},
                                               threads, [&progress] { progress.advance(); });
    requireDefinitions(options, outcomes);
    return outcomes;
}

// Returns the lines for grid files that are not installed.
std::string writeFiles(const Options& options, const RegistryVersion& version,
                       const std::vector<CrsOutcome>& outcomes) {
    std::vector<DirectoryFile> files = {{INIT_FILE, writeInitFile(version, outcomes, describeOptions(options))},
                                        {AXIS_ORDER_FILE, writeAxisOrderFile(outcomes)},
                                        {DESCRIPTION_FILE, writeDescriptionFile(outcomes)}};
    std::vector<GridFile> grids;
    if (options.useGrids) {
        grids = listGridFiles(ProjContext(), outcomes);
        files.emplace_back(GRIDS_FILE, writeGridFiles(grids));
    }
    MemoryWatch::requireNoShortage();
    publishDirectory(options, files);
    return writeMissingGrids(grids);
}

Verification verifyOutcomes(const Options& options, const std::vector<CrsOutcome>& outcomes) {
    if (!options.verify) return {};
    Tools::ProgressBar progress(stderr, "Verification", 2 * outcomes.size(), !options.quiet);
    return verifyDirectory(options.directory, outcomes, [&progress] { progress.advance(); });
}

ExitCode makeDirectoryOrThrow(const Options& options) {
    const Tools::Stopwatch stopwatch;
    const ProjContext context;
    const RegistryVersion version = readRegistryVersion(context);
    const std::vector<RegistryCrs> list = selectCrs(options, readRegistry(context));
    probeOutput(options);
    const std::vector<CrsOutcome> outcomes = makeOutcomes(options, list);
    const std::string missingGrids = writeFiles(options, version, outcomes);
    const auto printUnlessQuiet = [&options](const std::string& text) {
        if (!options.quiet) print(text);
    };
    printUnlessQuiet(missingGrids + writeLine(describe(version)) + "\n" + writeSummary(outcomes) + "Made in " +
                     QSHelpers::convertNumericToText(stopwatch.seconds(), 1, false) + " s\n");
    const Verification verification = verifyOutcomes(options, outcomes);
    if (options.verify)
        printUnlessQuiet("\n" + writeVerification(verification) + writeDistances(outcomes) + writeAccuracies(outcomes));
    if (!options.reportFile.empty()) publishReport(options, version, outcomes, verification);
    MemoryWatch::requireNoShortage();
    return isAccepted(verification) ? SUCCESS : FAILURE;
}

// After a memory shortage PROJ may hold a lock for ever. Its static destructors would wait for it.
int endProgram(int exitCode) {
    if (!MemoryWatch::sawShortage()) return exitCode;
    std::fflush(nullptr);
    std::_Exit(exitCode);
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

bool readOptions(int argc, const char* const* argv, Options& options, int& exitCode) {
    CLI::App app(DESCRIPTION, "crs-projdir");
    addOptions(app, options);
    return parse(app, readArguments(argc, argv), exitCode);
}

bool readDiffOptions(int argc, const char* const* argv, DiffOptions& options, int& exitCode) {
    CLI::App app(DIFF_DESCRIPTION, "crs-projdir diff");
    std::string format = "text";
    app.add_option("OLD", options.before, "A PROJ directory")->required();
    app.add_option("NEW", options.after, "The directory that replaces it")->required();
    app.add_option("--format", format, "text or json")->check(CLI::IsMember({"text", "json"}))->type_name("FORMAT");
    app.add_flag("-q,--quiet", options.quiet, "Print nothing but failures; the exit code is the result");
    std::vector<std::string> arguments = readArguments(argc, argv);
    if (isDiff(arguments)) arguments.erase(arguments.begin());
    if (!parse(app, arguments, exitCode)) return false;
    options.asJson = format == "json";
    return true;
}

std::vector<RegistryCrs> selectCrs(const Options& options, const std::vector<RegistryCrs>& registry) {
    std::vector<RegistryCrs> list;
    for (const RegistryCrs& crs : registry) {
        const bool isInArea = !options.area || (crs.area && overlap(*crs.area, *options.area));
        if (isInArea && (options.includeDeprecated || !crs.isDeprecated)) list.push_back(crs);
    }
    const auto narrow = [&](const std::string& path, const auto& read) {
        if (path.empty()) return;
        const std::vector<ListedCode> codes = read(readText(path), path);
        requireListed(registry, codes, options.includeDeprecated);
        list = selectListed(list, codes);
    };
    narrow(options.codesFile, readCodeList);
    narrow(options.configFile, readConfigurationCodes);
    if (list.empty()) throw FileError("no CRS of the registry matches all options");
    return list;
}

int makeDirectory(const Options& options) {
    const MemoryWatch watch;
    try {
        return makeDirectoryOrThrow(options);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "crs-projdir: %s\n", MemoryWatch::sawShortage() ? "out of memory" : failure.what());
        return FAILURE;
    }
}

int diffDirectories(const DiffOptions& options) {
    try {
        const DirectoryContent before = readDirectory(options.before);
        const DirectoryContent after = readDirectory(options.after);
        DirectoryDiff diff = compareEntries(before, after);
        const std::map<unsigned int, KnownCrs> known = describeCodes(options.after, diff.codes());
        measureChanges(diff, known);
        const DiffSides sides{before, after, known};
        if (!options.quiet) print(options.asJson ? writeDiffJson(diff, sides) : writeDiffText(diff, sides));
        return diff.isEmpty() ? SAME : DIFFERENT;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "crs-projdir diff: %s\n", failure.what());
        return TROUBLE;
    }
}

int runProgram(int argc, const char* const* argv) {
    // Writing beyond the limit for the size of files then fails, and leaves nothing behind.
    std::signal(SIGXFSZ, SIG_IGN);
    int exitCode = FAILURE;
    try {
        if (isDiff(readArguments(argc, argv))) {
            DiffOptions options;
            return readDiffOptions(argc, argv, options, exitCode) ? diffDirectories(options) : exitCode;
        }
        Options options;
        return readOptions(argc, argv, options, exitCode) ? endProgram(makeDirectory(options)) : exitCode;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "crs-projdir: %s\n", failure.what());
        return endProgram(FAILURE);
    }
}

}  // namespace ProjDir
