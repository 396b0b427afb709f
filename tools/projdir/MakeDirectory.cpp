#include "tools/projdir/MakeDirectory.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <list>
#include <optional>
#include <sstream>
#include <system_error>
#include <thread>

#include "QSHelpers/NumericText.h"
#include "tools/common/ProgressBar.h"
#include "tools/projdir/CodeList.h"
#include "tools/projdir/DirectoryText.h"
#include "tools/projdir/Generation.h"
#include "tools/projdir/GridFiles.h"
#include "tools/projdir/HtmlReport.h"
#include "tools/projdir/JsonReport.h"
#include "tools/projdir/Line.h"
#include "tools/projdir/MemoryWatch.h"
#include "tools/projdir/OutputFile.h"
#include "tools/projdir/Report.h"
#include "tools/projdir/Verification.h"

namespace ProjDir {
namespace {

// Each thread reads the database on its own; more of them would only take memory.
constexpr unsigned int LARGEST_THREAD_COUNT = 4;

constexpr char JSON_SUFFIX[] = ".json";
constexpr char HTML_SUFFIX[] = ".html";

unsigned int countThreads() { return std::clamp(std::thread::hardware_concurrency(), 1U, LARGEST_THREAD_COUNT); }

std::ifstream openFile(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw CodeListError("cannot read \"" + path + "\": " + std::generic_category().message(errno));
    return file;
}

std::vector<ListedCode> readCodesFile(const std::string& path) {
    std::ifstream file = openFile(path);
    return readCodeList(file, path);
}

std::vector<ListedCode> readConfigFile(const std::string& path) {
    std::ifstream file = openFile(path);
    std::ostringstream text;
    text << file.rdbuf();
    return readConfigurationCodes(text.str(), path);
}

// The options combine: what each of them chooses remains.
std::vector<RegistryCrs> selectCrs(const Options& options, const std::vector<RegistryCrs>& registry) {
    std::vector<RegistryCrs> list = selectAll(registry, options.includeDeprecated);
    const auto narrow = [&](const std::vector<ListedCode>& codes) {
        list = selectCommon(list, selectListed(registry, codes, options.includeDeprecated));
    };
    if (!options.codesFile.empty()) narrow(readCodesFile(options.codesFile));
    if (!options.configFile.empty()) narrow(readConfigFile(options.configFile));
    if (options.area) list = selectOverlapping(list, *options.area);
    if (list.empty()) throw CodeListError("no CRS of the registry is what all options ask for");
    return list;
}

// A file of the directory and what goes into it.
struct DirectoryFile {
    std::string name;
    std::string text;
};

std::vector<std::string> listFileNames(const Options& options) {
    std::vector<std::string> names = {INIT_FILE, AXIS_ORDER_FILE, DESCRIPTION_FILE};
    if (options.useGrids) names.emplace_back(GRIDS_FILE);
    return names;
}

// Nothing stays on the disk while the definitions are made: whatever ends the program leaves nothing behind.
void probeOutput(const Options& options) {
    const BlockedSignals blocked;
    const OutputDirectory directory(options.directory);
    for (const std::string& name : listFileNames(options)) OutputFile(directory.file(name), options.force).probe();
    if (!options.reportFile.empty()) OutputFile(options.reportFile, options.force).probe();
}

// All are whole before the first of them has its name. The definitions come last: where they are, the others are.
void publishDirectory(const Options& options, const std::vector<DirectoryFile>& files) {
    const BlockedSignals blocked;
    OutputDirectory directory(options.directory);
    std::list<OutputFile> outputs;
    for (const DirectoryFile& file : files) {
        outputs.emplace_front(directory.file(file.name), options.force);
        outputs.front().write(file.text);
    }
    for (OutputFile& output : outputs) output.publish();
    directory.keep();
}

std::string writeReportFor(const std::string& path, const RegistryVersion& version,
                           const std::vector<CrsOutcome>& outcomes, const Verification& verification) {
    const std::string suffix = std::filesystem::path(path).extension().string();
    if (suffix != JSON_SUFFIX && suffix != HTML_SUFFIX) return writeReport(version, outcomes, verification);
    const std::string json = writeJsonReport(version, outcomes, verification);
    return suffix == JSON_SUFFIX ? json : writeHtmlReport(json);
}

void publishReport(const Options& options, const std::string& text) {
    std::optional<BlockedSignals> blocked;
    OutputFile report(options.reportFile, options.force);
    if (!report.isStream()) blocked.emplace();
    report.write(text);
    report.publish();
}

std::vector<CrsOutcome> makeOutcomes(const Options& options, const std::vector<RegistryCrs>& list) {
    Tools::ProgressBar progress(stderr, "Definitions", list.size());
    return makeAll(list, {options.useGrids, options.verify, options.fit, options.worst}, countThreads(), progress);
}

Verification verifyOutcomes(const Options& options, const std::vector<CrsOutcome>& outcomes) {
    if (!options.verify) return {};
    Tools::ProgressBar progress(stderr, "Verification", 2 * outcomes.size());
    return verifyDirectory(options.directory, outcomes, progress);
}

void print(const std::string& text) {
    if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0)
        throw OutputError("cannot write to the standard output");
}

// Who names a code counts on its definition.
void requireDefinitions(const Options& options, const std::vector<CrsOutcome>& outcomes) {
    const std::string& list = options.codesFile.empty() ? options.configFile : options.codesFile;
    const std::string leftOut = list.empty() ? "" : writeLeftOut(outcomes);
    if (!leftOut.empty())
        throw CodeListError(list + " names CRS that no definition can be made for:\n" +
                            leftOut.substr(0, leftOut.size() - 1));
}

std::vector<CrsOutcome> makeFiles(const Options& options, const RegistryVersion& version,
                                  const std::vector<RegistryCrs>& list) {
    std::vector<CrsOutcome> outcomes = makeOutcomes(options, list);
    requireDefinitions(options, outcomes);
    std::vector<DirectoryFile> files = {{INIT_FILE, writeInitFile(version, outcomes, describeOptions(options))},
                                        {AXIS_ORDER_FILE, writeAxisOrderFile(outcomes)},
                                        {DESCRIPTION_FILE, writeDescriptionFile(outcomes)}};
    if (options.useGrids) {
        const std::vector<GridFile> grids = listGridFiles(ProjContext(), outcomes);
        files.push_back({GRIDS_FILE, writeGridFiles(grids)});
        print(writeMissingGrids(grids));
    }
    MemoryWatch::requireNoShortage();
    publishDirectory(options, files);
    return outcomes;
}

int makeDirectoryOrThrow(const Options& options) {
    const Tools::Stopwatch stopwatch;
    const ProjContext context;
    const RegistryVersion version = readRegistryVersion(context);
    const std::vector<RegistryCrs> list = selectCrs(options, readRegistry(context));
    probeOutput(options);
    const std::vector<CrsOutcome> outcomes = makeFiles(options, version, list);
    print(writeLine(describe(version)) + "\n" + writeSummary(outcomes) + "Made in " +
          QSHelpers::convertNumericToText(stopwatch.seconds(), 1, false) + " s\n");
    const Verification verification = verifyOutcomes(options, outcomes);
    if (options.verify)
        print("\n" + writeVerification(verification) + writeDistances(outcomes) + writeAccuracies(outcomes));
    if (!options.reportFile.empty())
        publishReport(options, writeReportFor(options.reportFile, version, outcomes, verification));
    MemoryWatch::requireNoShortage();
    return isAccepted(verification) ? 0 : 1;
}

}  // namespace

int makeDirectory(const Options& options) {
    const MemoryWatch watch;
    try {
        return makeDirectoryOrThrow(options);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "crs-projdir: %s\n", MemoryWatch::sawShortage() ? "out of memory" : failure.what());
        return 1;
    }
}

}  // namespace ProjDir
