#include "tools/projdir/CommandLine.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"
#include "tools/common/CommandLineParser.h"
#include "tools/projdir/Commands.h"

namespace ProjDir {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

using Words = std::vector<std::string>;

Words wordsOf(const std::string& line) {
    std::istringstream words(line);
    return {std::istream_iterator<std::string>(words), {}};
}

// A command line that was read, or the message if it cannot be understood.
struct Result {
    Request request;
    Options options;
    std::string error;
};

// As main() receives them.
std::vector<const char*> pointersTo(const Words& arguments) {
    std::vector<const char*> pointers = {"crs-projdir"};
    for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
    return pointers;
}

Result read(const Words& arguments) {
    const std::vector<const char*> pointers = pointersTo(arguments);
    Result result;
    try {
        readCommandLine(static_cast<int>(pointers.size()), pointers.data(), result.request);
    } catch (const Tools::UsageError& failure) {
        result.error = result.request.name + ": " + failure.what();
    }
    result.options = result.request.options;
    return result;
}

bool isAccepted(const Result& result) { return result.error.empty() && !result.request.text; }

// The exit code and what the program prints.
struct Printed {
    int exitCode = 0;
    std::string output;
    std::string error;
};

Printed run(const Words& arguments) {
    const std::vector<const char*> pointers = pointersTo(arguments);
    Printed result;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    result.exitCode = runProgram(static_cast<int>(pointers.size()), pointers.data());
    result.output = testing::internal::GetCapturedStdout();
    result.error = testing::internal::GetCapturedStderr();
    return result;
}

TEST(OptionsTest, NeedsOnlyADirectory) {
    const Result result = read({"out"});
    EXPECT_TRUE(isAccepted(result));
    EXPECT_EQ(result.options.directory, "out");
    EXPECT_TRUE(result.options.codesFile.empty());
    EXPECT_TRUE(result.options.reportFile.empty());
    EXPECT_FALSE(result.options.includeDeprecated || result.options.useGrids || result.options.verify ||
                 result.options.force);
}

TEST(OptionsTest, ReadsEveryOption) {
    const Result result =
        read({"--codes", "c", "--include-deprecated", "--grids", "--report", "r", "--verify", "--force", "o"});
    EXPECT_TRUE(isAccepted(result));
    EXPECT_EQ(result.options.codesFile, "c");
    EXPECT_EQ(result.options.reportFile, "r");
    EXPECT_TRUE(result.options.includeDeprecated && result.options.useGrids && result.options.verify &&
                result.options.force);
}

TEST(OptionsTest, ReadsTheOptionsWithValues) {
    const Result result = read({"o", "--area", "-10.5,36,4,44", "--from-config", "x.xml", "--fit", "--worst", "250"});
    EXPECT_TRUE(isAccepted(result));
    EXPECT_EQ(result.options.configFile, "x.xml");
    EXPECT_TRUE(result.options.fit);
    EXPECT_EQ(result.options.worst, 250);
    ASSERT_TRUE(result.options.area);
    EXPECT_EQ(result.options.area->west, -10.5);
    EXPECT_EQ(result.options.area->south, 36);
    EXPECT_EQ(result.options.area->east, 4);
    EXPECT_EQ(result.options.area->north, 44);
    EXPECT_TRUE(isAccepted(read({"o", "--area", "170,-50,-170,-30"})));
}

TEST(OptionsTest, ReadsNumbersWithoutALeadingDigitAndNamesInBrackets) {
    const Result result = read({"[o]", "--area", "-.5,36,4,44"});
    EXPECT_TRUE(isAccepted(result));
    EXPECT_EQ(result.options.directory, "[o]");
    ASSERT_TRUE(result.options.area);
    EXPECT_EQ(result.options.area->west, -.5);
}

TEST(OptionsTest, DescribesTheOptionsThatAffectTheContent) {
    EXPECT_THAT(describeOptions(read({"o", "--verify", "--force", "--report", "r"}).options),
                testing::MatchesRegex("crs-projdir [0-9.]+ without options"));
    EXPECT_THAT(describeOptions(read({"o", "--codes", "c", "--from-config", "f", "--area", "-10,36,4,44.5", "--grids",
                                      "--fit", "--include-deprecated", "--worst", "20"})
                                    .options),
                testing::EndsWith(" --codes --from-config --area -10,36,4,44.5 --include-deprecated --grids --fit "
                                  "--worst 20"));
}

constexpr const char* OPTIONS[] = {
    "--codes",  "--from-config", "--area",  "--include-deprecated", "--grids",    "--fit",        "--worst",
    "--report", "--verify",      "--force", "-q, --quiet",          "-h, --help", "-V, --version"};

TEST(OptionsTest, PrintsHelpAndVersion) {
    const Printed help = run({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.output, StartsWith("usage: crs-projdir [OPTION...] OUTDIR\nusage: crs-projdir COMMAND\n"));
    for (const char* option : OPTIONS) EXPECT_THAT(help.output, HasSubstr(option));
    for (const char* section : {"Commands", "Options", "Examples", "Exit codes", "Environment", "Files", "See also"})
        EXPECT_THAT(help.output, HasSubstr(std::string("\n") + section + ":\n"));
    for (const char* option : {"-V", "--version"}) {
        const Printed version = run({option});
        EXPECT_EQ(version.exitCode, 0);
        EXPECT_THAT(version.output, testing::MatchesRegex("crs-projdir [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    }
}

std::string outputOf(const std::string& command) {
    std::FILE* const output = popen(command.c_str(), "r");
    std::array<char, 1024> buffer{};
    std::string text;
    while (std::fgets(buffer.data(), buffer.size(), output) != nullptr) text += buffer.data();
    pclose(output);
    return text;
}

std::string manualOf(const std::string& page, const std::string& help) {
    const TestSupport::TemporaryDirectory directory;
    return outputOf("awk -v page=" + page + " -v version=1 -f " COORDTRANS_SOURCE_DIR "/tools/common/manual.awk " +
                    directory.write("help", help));
}

TEST(ManualTest, HasASynopsisAndEverySection) {
    const std::string page = manualOf("crs-projdir", run({"help"}).output);
    EXPECT_THAT(page, HasSubstr(".SH NAME\ncrs\\-projdir \\- make a PROJ directory from the EPSG registry of the "
                                "installed PROJ\n.SH SYNOPSIS\ncrs\\-projdir [OPTION...] OUTDIR\n.br\n"
                                "crs\\-projdir COMMAND\n.SH DESCRIPTION\n"));
    for (const char* section : {"COMMANDS", "OPTIONS", "EXAMPLES", "EXIT STATUS", "ENVIRONMENT", "FILES", "SEE ALSO"})
        EXPECT_THAT(page, HasSubstr(std::string("\n.SH ") + section + "\n"));
    EXPECT_THAT(manualOf("crs-projdir-diff", run({"help", "diff"}).output),
                HasSubstr("\n.SH SYNOPSIS\ncrs\\-projdir diff [OPTION...] OLD NEW\n.SH DESCRIPTION\n"));
}

TEST(OptionsTest, HaveValidExamples) {
    for (const char* const command : {"--help", "diff --help"}) {
        std::istringstream help(run(wordsOf(command)).output);
        int count = 0;
        for (std::string line; std::getline(help, line);) {
            if (line.rfind("  crs-projdir ", 0) != 0) continue;
            ++count;
            EXPECT_TRUE(isAccepted(read(wordsOf(line.substr(14, line.find(" ||") - 14))))) << line;
        }
        EXPECT_GE(count, 3);
    }
}

TEST(OptionsTest, RefusesUnknownArguments) {
    for (const Words& arguments : {Words{},
                                   {"out", "--frob"},
                                   {"out", "more"},
                                   {"out", "--codes"},
                                   {"out", "--worst", "-1"},
                                   {"out", "--worst", "far"},
                                   {"out", "--area", "1,2,3"},
                                   {"out", "--area", "1,2,3,4,5"},
                                   {"out", "--area", "0,50,10,40"},
                                   {"out", "--area", "0,40,181,50"},
                                   {"out", "--area", "0,-91,10,50"},
                                   {"out", "--area", "0,4O,10,50"},
                                   {"out", "--area", "0,nan,10,50"}}) {
        const Printed result = run(arguments);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.error, StartsWith("crs-projdir: "));
    }
}

TEST(DiffOptionsTest, ReadsTwoDirectoriesAndAFormat) {
    const Result plain = read({"diff", "a", "b"});
    EXPECT_TRUE(isAccepted(plain) && plain.request.isDiff);
    EXPECT_EQ(plain.request.name, "crs-projdir diff");
    EXPECT_EQ(plain.request.diff.before + plain.request.diff.after, "ab");
    EXPECT_FALSE(plain.request.diff.asJson || plain.request.diff.quiet);
    EXPECT_TRUE(read({"diff", "a", "b", "--format", "json"}).request.diff.asJson);
    EXPECT_TRUE(read({"diff", "-q", "a", "b"}).request.diff.quiet);
}

TEST(DiffOptionsTest, TakesTheNameOfACommandForADirectory) {
    const Result result = read({"diff", "diff", "help"});
    EXPECT_TRUE(isAccepted(result) && result.request.isDiff);
    EXPECT_EQ(result.request.diff.before + " " + result.request.diff.after, "diff help");
}

TEST(DiffOptionsTest, HelpsAndRefuses) {
    const Printed help = run({"diff", "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.output, AllOf(StartsWith("usage: crs-projdir diff [OPTION...] OLD NEW\n"), HasSubstr("--format"),
                                   HasSubstr("\nExit codes:\n"), HasSubstr("\nSee also:\n")));
    for (const Words& arguments : {Words{"diff"},
                                   {"diff", "a"},
                                   {"diff", "a", "b", "c"},
                                   {"diff", "a", "b", "--force"},
                                   {"diff", "a", "b", "--format", "xml"}}) {
        const Printed refused = run(arguments);
        EXPECT_EQ(refused.exitCode, 2);
        EXPECT_THAT(refused.error, StartsWith("crs-projdir diff: "));
    }
}

TEST(CommandTest, HelpIsAWordForTheHelpOfACommand) {
    EXPECT_EQ(run({"help"}).output, run({"--help"}).output);
    EXPECT_EQ(run({"help", "diff"}).output, run({"diff", "--help"}).output);
    EXPECT_THAT(run({"help", "diff"}).output, AllOf(HasSubstr("OLD"), HasSubstr("NEW")));
    EXPECT_EQ(run({"help", "diff"}).exitCode, 0);
    EXPECT_EQ(run({"-V"}).output, run({"diff", "-V"}).output);
}

TEST(CommandTest, IsTheFirstArgumentAlone) {
    EXPECT_THAT(run({"diff", "--frob"}).error, StartsWith("crs-projdir diff: "));
    EXPECT_EQ(run({"--quiet", "diff", "a", "b"}).exitCode, 2);
    EXPECT_THAT(run({"./diff", "--frob"}).error, StartsWith("crs-projdir: "));
    EXPECT_THAT(run({"--frob", "diff"}).error, StartsWith("crs-projdir: "));
    EXPECT_EQ(read({"./diff"}).options.directory, "./diff");
    EXPECT_EQ(read({"--force", "diff"}).options.directory, "diff");
    EXPECT_EQ(read({"--", "diff"}).options.directory, "diff");
    for (const Words& arguments : {Words{"out", "diff", "a", "b"}, {"out", "help"}, {"out", "completion", "bash"}}) {
        const Printed refused = run(arguments);
        EXPECT_EQ(refused.exitCode, 2);
        EXPECT_THAT(refused.error, AllOf(StartsWith("crs-projdir: "), HasSubstr(arguments[1])));
    }
}

TEST(CommandTest, IsSuggestedForAMistypedOne) {
    for (const auto& [line, meant] : {std::pair{"hlep", "help"},
                                      {"HELP", "help"},
                                      {"dif", "diff"},
                                      {"dif old new", "diff"},
                                      {"dif --format json old new", "diff"},
                                      {"complation bash", "completion"},
                                      {"help dif", "diff"}})
        EXPECT_THAT(read(wordsOf(line)).error, AllOf(StartsWith("crs-projdir: there is no command "),
                                                     HasSubstr(std::string("; did you mean ") + meant + "?")));
}

TEST(CommandTest, IsNotSuggestedForADirectory) {
    for (const Words& arguments : {Words{"out"}, {"./dif"}, {"dif/"}, {"dif", "--force"}})
        EXPECT_TRUE(isAccepted(read(arguments))) << arguments.front();
}

TEST(CommandTest, IsNotSuggestedForADirectoryThatExists) {
    const TestSupport::TemporaryDirectory work;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(work.file("."));
    EXPECT_FALSE(isAccepted(read({"dif"})));
    std::filesystem::create_directory("dif");
    EXPECT_TRUE(isAccepted(read({"dif"})));
    std::filesystem::current_path(before);
}

TEST(OptionsTest, SuggestsAnOptionForAMistypedOne) {
    EXPECT_THAT(run({"out", "--forse"}).error, HasSubstr("--forse; did you mean --force?"));
    EXPECT_THAT(run({"diff", "a", "b", "--quite"}).error, HasSubstr("--quite; did you mean --quiet?"));
    EXPECT_EQ(run({"out", "--forse"}).exitCode, 2);
}

// What bash offers for the last of the words.
std::string offeredByBash(const std::string& script, const std::string& words, int last) {
    const TestSupport::TemporaryDirectory directory;
    return outputOf("bash -c 'source " + directory.write("completion", script) + "; COMP_WORDS=(" + words +
                    "); COMP_CWORD=" + std::to_string(last) +
                    "; _crs_projdir crs-projdir \"${COMP_WORDS[COMP_CWORD]}\"; echo \"${COMPREPLY[*]}\"'");
}

TEST(CompletionTest, CompletesInBash) {
    const std::string script = run({"completion", "bash"}).output;
    EXPECT_EQ(offeredByBash(script, "crs-projdir d", 1), "diff\n");
    EXPECT_EQ(offeredByBash(script, "crs-projdir --ar", 1), "--area\n");
    EXPECT_EQ(offeredByBash(script, "crs-projdir out --f", 2), "--from-config --fit --force\n");
    EXPECT_EQ(offeredByBash(script, "crs-projdir diff --f", 2), "--format\n");
    EXPECT_EQ(offeredByBash(script, "crs-projdir diff ol", 2), "\n");
    EXPECT_EQ(offeredByBash(script, "crs-projdir help d", 2), "diff\n");
    EXPECT_THAT(script, HasSubstr("\ncomplete -o default -o plusdirs -F _crs_projdir crs-projdir\n"));
}

TEST(CompletionTest, OffersFilesBesideTheCommands) {
    EXPECT_THAT(run({"completion", "zsh"}).output,
                AllOf(StartsWith("#compdef crs-projdir\n"),
                      HasSubstr("'1:word:{compadd help completion diff; _files}'"), HasSubstr("'*:file:_files'")));
    EXPECT_THAT(
        run({"completion", "fish"}).output,
        HasSubstr("\ncomplete -c crs-projdir -n __fish_use_subcommand -a diff -d 'Compare two PROJ directories.'"));
    EXPECT_EQ(run({"completion", "tcsh"}).exitCode, 2);
    EXPECT_EQ(run({"completion"}).exitCode, 2);
}

TEST(CommandTest, EndsWithTheExitCodeOfTheResult) {
    const TestSupport::TemporaryDirectory work;
    const std::string codes = work.write("codes", "4326\n25832\n");
    const std::string fewer = work.write("fewer", "4326\n");
    const std::string before = work.file("before");
    const std::string after = work.file("after");
    const std::string none = work.file("none");
    const Printed made = run({"--quiet", "--codes", codes, before});
    EXPECT_EQ(made.exitCode, 0);
    EXPECT_EQ(made.output + made.error, "");
    EXPECT_EQ(run({"--codes", codes, before}).exitCode, 1);
    EXPECT_EQ(run({after, "-q", "--codes", fewer}).exitCode, 0);
    EXPECT_EQ(run({"diff", before, before}).exitCode, 0);
    const Printed quiet = run({"diff", "--quiet", before, after});
    EXPECT_EQ(quiet.exitCode, 1);
    EXPECT_EQ(quiet.output + quiet.error, "");
    EXPECT_THAT(run({"diff", before, after}).output, HasSubstr("25832"));
    EXPECT_EQ(run({"diff", before, none}).exitCode, 2);
}

}  // namespace
}  // namespace ProjDir
