#include "tools/projdir/Program.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <exception>
#include <fstream>
#include <memory>
#include <system_error>
#include <thread>

#include "tools/projdir/CodeList.h"
#include "tools/projdir/DirectoryText.h"
#include "tools/projdir/Generation.h"
#include "tools/projdir/Numbers.h"
#include "tools/projdir/OutputFile.h"
#include "tools/projdir/Report.h"
#include "tools/projdir/Verification.h"

namespace ProjDir {

namespace {

// Each thread reads the database on its own; more of them would only take memory.
constexpr unsigned int MOST_THREADS = 4;

unsigned int countThreads() { return std::clamp(std::thread::hardware_concurrency(), 1U, MOST_THREADS); }

std::vector<ListedCode> readCodesFile(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw CodeListError("cannot read \"" + path + "\": " + std::generic_category().message(errno));
    return readCodeList(file, path);
}

std::vector<RegistryCrs> selectCrs(const Options& options, const std::vector<RegistryCrs>& registry) {
    if (options.codesFile.empty()) return selectAll(registry, options.includeDeprecated);
    return selectListed(registry, readCodesFile(options.codesFile), options.includeDeprecated);
}

// The files of one run. What is not published is gone when they are.
struct Output {
    explicit Output(const Options& options)
        : directory(options.directory),
          initFile(directory.file(INIT_FILE), options.force),
          axisOrderFile(directory.file(AXIS_ORDER_FILE), options.force) {
        if (!options.reportFile.empty()) report = std::make_unique<OutputFile>(options.reportFile, options.force);
        initFile.probe();
        if (report) report->probe();
    }

    OutputDirectory directory;
    OutputFile initFile;
    OutputFile axisOrderFile;
    std::unique_ptr<OutputFile> report;
};

void publishDirectory(const RegistryVersion& version, const std::vector<Outcome>& outcomes, Output& output) {
    output.initFile.write(writeInitFile(version, outcomes));
    output.axisOrderFile.write(writeAxisOrderFile(outcomes));
    output.axisOrderFile.publish();
    output.initFile.publish();
    output.directory.keep();
}

std::vector<Outcome> makeOutcomes(const Options& options, const std::vector<RegistryCrs>& list) {
    Progress progress(stderr, "Definitions", list.size());
    return makeAll(list, {options.useGrids, options.verify}, countThreads(), progress);
}

std::vector<Agreement> verifyOutcomes(const Options& options, const std::vector<Outcome>& outcomes) {
    if (!options.verify) return {};
    Progress progress(stderr, "Verification", outcomes.size());
    return verifyDirectory(options.directory, outcomes, progress);
}

void print(const std::string& text) {
    if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0)
        throw OutputError("cannot write to the standard output");
}

bool isAccepted(const std::vector<Agreement>& agreements) {
    return std::all_of(agreements.begin(), agreements.end(), [](const auto& one) { return one.failure.empty(); });
}

class Stopwatch {
public:
    double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(); }

private:
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

int runOrRaise(const Options& options) {
    const Stopwatch stopwatch;
    const ProjContext context;
    const RegistryVersion version = readRegistryVersion(context);
    const std::vector<RegistryCrs> list = selectCrs(options, readRegistry(context));
    Output output(options);
    const std::vector<Outcome> outcomes = makeOutcomes(options, list);
    publishDirectory(version, outcomes, output);
    print(describe(version) + "\n\n" + writeSummary(outcomes) + "Made in " + writeFixed(stopwatch.seconds(), 1) +
          " s\n");
    const std::vector<Agreement> agreements = verifyOutcomes(options, outcomes);
    if (!agreements.empty()) print("\n" + writeAgreement(agreements));
    if (output.report) {
        output.report->write(writeReport(version, outcomes, agreements));
        output.report->publish();
    }
    return isAccepted(agreements) ? 0 : 1;
}

}  // namespace

int run(const Options& options) {
    try {
        return runOrRaise(options);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "crs-projdir: %s\n", failure.what());
        return 1;
    }
}

}  // namespace ProjDir
