#include "tools/projdir/Commands.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <list>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include "text/NumericText.h"
#include "tools/common/CommandLineParser.h"
#include "tools/common/ProgressBar.h"
#include "tools/projdir/Diff.h"
#include "tools/projdir/DirectoryFiles.h"
#include "tools/projdir/Report.h"

namespace ProjDir {
namespace {

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
    std::vector<CrsOutcome> outcomes = makeAll(list, options, threads, [&progress] { progress.advance(); });
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
    Request request;
    try {
        readCommandLine(argc, argv, request);
        if (!request.text)
            return request.isDiff ? diffDirectories(request.diff) : endProgram(makeDirectory(request.options));
        print(*request.text);
        return SUCCESS;
    } catch (const Tools::UsageError& failure) {
        std::fprintf(stderr, "%s: %s\n", request.name.c_str(), failure.what());
        return USAGE_ERROR;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", request.name.c_str(), failure.what());
        return endProgram(FAILURE);
    }
}

}  // namespace ProjDir
