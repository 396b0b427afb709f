#include "tools/projdir/MakeDirectory.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <fstream>
#include <optional>
#include <system_error>
#include <thread>

#include "QSHelpers/NumericText.h"
#include "tools/common/Stopwatch.h"
#include "tools/projdir/CodeList.h"
#include "tools/projdir/DirectoryText.h"
#include "tools/projdir/Generation.h"
#include "tools/projdir/Line.h"
#include "tools/projdir/MemoryWatch.h"
#include "tools/projdir/OutputFile.h"
#include "tools/projdir/Report.h"
#include "tools/projdir/Verification.h"

namespace ProjDir {
namespace {

// Each thread reads the database on its own; more of them would only take memory.
constexpr unsigned int LARGEST_THREAD_COUNT = 4;

unsigned int countThreads() { return std::clamp(std::thread::hardware_concurrency(), 1U, LARGEST_THREAD_COUNT); }

std::vector<ListedCode> readCodesFile(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw CodeListError("cannot read \"" + path + "\": " + std::generic_category().message(errno));
    return readCodeList(file, path);
}

std::vector<RegistryCrs> selectCrs(const Options& options, const std::vector<RegistryCrs>& registry) {
    if (options.codesFile.empty()) return selectAll(registry, options.includeDeprecated);
    return selectListed(registry, readCodesFile(options.codesFile), options.includeDeprecated);
}

// Nothing stays on the disk while the definitions are made: whatever ends the program leaves nothing behind.
void probeOutput(const Options& options) {
    const BlockedSignals blocked;
    const OutputDirectory directory(options.directory);
    OutputFile(directory.file(INIT_FILE), options.force).probe();
    OutputFile(directory.file(AXIS_ORDER_FILE), options.force).probe();
    if (!options.reportFile.empty()) OutputFile(options.reportFile, options.force).probe();
}

void publishDirectory(const Options& options, const std::string& definitions, const std::string& axisOrders) {
    const BlockedSignals blocked;
    OutputDirectory directory(options.directory);
    OutputFile initFile(directory.file(INIT_FILE), options.force);
    OutputFile axisOrderFile(directory.file(AXIS_ORDER_FILE), options.force);
    initFile.write(definitions);
    axisOrderFile.write(axisOrders);
    axisOrderFile.publish();
    initFile.publish();
    directory.keep();
}

void publishReport(const Options& options, const std::string& text) {
    std::optional<BlockedSignals> blocked;
    OutputFile report(options.reportFile, options.force);
    if (!report.isStream()) blocked.emplace();
    report.write(text);
    report.publish();
}

std::vector<CrsOutcome> makeOutcomes(const Options& options, const std::vector<RegistryCrs>& list) {
    PercentBar progress(stderr, "Definitions", list.size());
    return makeAll(list, {options.useGrids, options.verify}, countThreads(), progress);
}

std::vector<Agreement> verifyOutcomes(const Options& options, const std::vector<CrsOutcome>& outcomes) {
    if (!options.verify) return {};
    PercentBar progress(stderr, "Verification", outcomes.size());
    return verifyDirectory(options.directory, outcomes, progress);
}

void print(const std::string& text) {
    if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0)
        throw OutputError("cannot write to the standard output");
}

bool isAccepted(const std::vector<Agreement>& agreements) {
    return std::all_of(agreements.begin(), agreements.end(), [](const auto& one) { return one.failure.empty(); });
}

// Who names a code counts on its definition.
void requireDefinitions(const Options& options, const std::vector<CrsOutcome>& outcomes) {
    const std::string leftOut = options.codesFile.empty() ? "" : writeLeftOut(outcomes);
    if (!leftOut.empty())
        throw CodeListError(options.codesFile + " names CRS that no definition can be made for:\n" +
                            leftOut.substr(0, leftOut.size() - 1));
}

std::vector<CrsOutcome> makeFiles(const Options& options, const RegistryVersion& version,
                                  const std::vector<RegistryCrs>& list) {
    std::vector<CrsOutcome> outcomes = makeOutcomes(options, list);
    requireDefinitions(options, outcomes);
    const std::string definitions = writeInitFile(version, outcomes);
    const std::string axisOrders = writeAxisOrderFile(outcomes);
    MemoryWatch::requireNoShortage();
    publishDirectory(options, definitions, axisOrders);
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
    const std::vector<Agreement> agreements = verifyOutcomes(options, outcomes);
    if (!agreements.empty()) print("\n" + writeAgreement(agreements));
    if (!options.reportFile.empty()) publishReport(options, writeReport(version, outcomes, agreements));
    MemoryWatch::requireNoShortage();
    return isAccepted(agreements) ? 0 : 1;
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
