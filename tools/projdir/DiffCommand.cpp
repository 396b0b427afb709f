#include "tools/projdir/DiffCommand.h"

#include <cstdio>
#include <exception>
#include <stdexcept>

#include <CLI/CLI.hpp>

#include "tools/projdir/DirectoryDiffText.h"

namespace ProjDir {
namespace {

constexpr char DESCRIPTION[] =
    "Compares two PROJ directories: codes added, gone and changed, each changed one with the largest distance between\n"
    "its definitions over its area of use. The exit code is 0 when they are the same, 1 when they differ, 2 after a\n"
    "failure.";

enum ExitCode { SAME = 0, DIFFERENT = 1, TROUBLE = 2 };

std::string describeFailure(const CLI::App* /*app*/, const CLI::Error& failure) {
    return std::string("crs-projdir diff: ") + failure.what() + "; see crs-projdir diff --help\n";
}

std::vector<unsigned int> listCodes(const DirectoryDiff& diff) {
    std::vector<unsigned int> codes = diff.added;
    codes.insert(codes.end(), diff.gone.begin(), diff.gone.end());
    for (const EntryChange& change : diff.changed) codes.push_back(change.code);
    return codes;
}

ExitCode compareDirectories(const DiffOptions& options) {
    const DirectoryContent before = readDirectory(options.before);
    const DirectoryContent after = readDirectory(options.after);
    DirectoryDiff diff = compareEntries(before, after);
    const std::map<unsigned int, KnownCrs> known = describeCodes(options.after, listCodes(diff));
    measureChanges(diff, known);
    const DiffSides sides{before, after, known};
    const std::string text = options.asJson ? writeDiffJson(diff, sides) : writeDiffText(diff, sides);
    if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0)
        throw std::runtime_error("cannot write to the standard output");
    return diff.isEmpty() ? SAME : DIFFERENT;
}

}  // namespace

bool isDiffCommand(int argc, const char* const* argv) { return argc > 1 && std::string(argv[1]) == DIFF_COMMAND; }

bool readDiffOptions(int argc, const char* const* argv, DiffOptions& options, int& exitCode) {
    CLI::App app(DESCRIPTION, "crs-projdir diff");
    app.failure_message(describeFailure);
    app.add_option("OLD", options.before, "A PROJ directory")->required();
    app.add_option("NEW", options.after, "The one that takes its place")->required();
    std::string format = "text";
    app.add_option("--format", format, "text or json")->check(CLI::IsMember({"text", "json"}))->type_name("FORMAT");
    try {
        app.parse(argc - 1, argv + 1);
    } catch (const CLI::ParseError& end) {
        exitCode = app.exit(end) == 0 ? SAME : TROUBLE;
        return false;
    }
    options.asJson = format == "json";
    return true;
}

int diffDirectories(const DiffOptions& options) {
    try {
        return compareDirectories(options);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "crs-projdir diff: %s\n", failure.what());
        return TROUBLE;
    }
}

}  // namespace ProjDir
