// The program from outside: arguments, descriptors, signals and exit codes.

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <ostream>
#include <pty.h>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/CrsctlProgram.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TemporaryFile.h"
#include "tools/crsctl/Session.h"

namespace crsctl {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

// UTM zone 32: 9 degrees east is the central meridian.
const std::vector<std::string> TO_UTM = {"transform", "--from", "EPSG:4326", "--to", "EPSG:25832"};
constexpr char POINT[] = "50 9\n";
constexpr char POINT_IN_UTM[] = "5538630.703";

std::vector<std::string> toUtm(const std::vector<std::string>& more) {
    std::vector<std::string> arguments = TO_UTM;
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

// Returns the text between `head` and `tail` of each line that has both.
std::vector<std::string> textsBetween(const std::string& text, const std::string& head, const std::string& tail) {
    std::vector<std::string> found;
    for (const std::string& line : linesOf(text)) {
        const std::size_t begin = line.find(head);
        if (begin == std::string::npos) continue;
        const std::string rest = line.substr(begin + head.size());
        if (rest.find(tail) != std::string::npos) found.push_back(rest.substr(0, rest.find(tail)));
    }
    return found;
}

std::string repeated(const std::string& text, std::size_t count) {
    std::string all;
    all.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) all += text;
    return all;
}

TEST(AWrongStart, IsReportedInOneLine) {
    const TemporaryFile malformed("<CrsConfiguration>");
    const std::vector<std::vector<std::string>> commandLines = {{},
                                                                {"frob"},
                                                                {"resolve"},
                                                                {"transform", "--from", "4326"},
                                                                {"check", "/no/such/file"},
                                                                {"names", "--config", malformed.path()},
                                                                {"resolve", "--config", "/no/such/file", "4326"},
                                                                toUtm({"/no/such/file"}),
                                                                toUtm({"/"}),
                                                                toUtm({"--columns", "x"})};
    for (const std::vector<std::string>& arguments : commandLines) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, 2) << outcome.errors;
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(linesOf(outcome.errors), ElementsAre(StartsWith("crsctl")));
    }
}

// The tests pass their own --proj-dir first. The second one counts.
TEST(AWrongStart, NamesTheProjDirectory) {
    const TemporaryFile noDirectory("");
    const Outcome outcome = run({"names", "--proj-dir", noDirectory.path()});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.errors, "crsctl names: Configured Proj4 directory \"" + noDirectory.path() + "\" not found!\n");
}

TEST(ARefusedCrs, IsReportedBeforeAnyInputIsRead) {
    const Outcome outcome = run({"transform", "--from", "epsg:4326", "--to", "EPSG:25832"}, POINT);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(linesOf(outcome.errors), ElementsAre(HasSubstr("try EPSG:4326")));
}

TEST(Transforming, WritesPointsInTheOtherCrs) {
    const Outcome outcome = run(TO_UTM, "50 9\n50 9 100 name\n");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "500000.000\t5538630.703\n500000.000\t5538630.703 100.000 name\n");
    EXPECT_THAT(linesOf(outcome.errors),
                ElementsAre(MatchesRegex("crsctl transform: 2 lines: 2 transformed, 0 refused, 0 ignored; .* s, .* "
                                         "lines/s")));
}

TEST(Transforming, ExchangesTheCrsWithInverse) {
    const Outcome outcome = run(toUtm({"--inverse"}), "500000 5538630.702743\n");
    EXPECT_EQ(outcome.output, "50.00000000\t9.00000000\n");
}

TEST(Transforming, ReadsFilesOneAfterAnother) {
    const TemporaryFile first("50 9");
    const TemporaryFile second("bad\n50 9\n");
    const Outcome outcome = run(toUtm({first.path(), "-", second.path(), "--errors", "skip"}), "50 9 middle\n");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "500000.000\t5538630.703\n500000.000\t5538630.703 middle\n500000.000\t5538630.703\n");
    EXPECT_THAT(outcome.errors, HasSubstr(second.path() + ":1: "));
}

TEST(Transforming, WritesCsvAndJsonLines) {
    const std::string table = "id;lat;lon;name\nA1;50;9;\"x;y\"\n";
    const std::vector<std::string> columns = {"--header", "--columns", "id,x,y", "--output"};
    std::vector<std::string> csv = toUtm(columns);
    csv.emplace_back("csv");
    EXPECT_EQ(run(csv, table).output, "id,x,y,name\nA1,500000.000,5538630.703,\"x;y\"\n");
    std::vector<std::string> json = toUtm(columns);
    json.emplace_back("json");
    EXPECT_EQ(run(json, table).output, "{\"x\":500000.000,\"y\":5538630.703,\"id\":\"A1\",\"name\":\"x;y\"}\n");
    EXPECT_EQ(run(toUtm({"--json"}), POINT).output, "{\"x\":500000.000,\"y\":5538630.703}\n");
}

TEST(Transforming, DoesNothingWithEmptyInput) {
    for (const Outcome& outcome : {run(TO_UTM, ""), runOnPipe(TO_UTM, ""), run(toUtm({"--header"}), "")}) {
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_THAT(outcome.errors, StartsWith("crsctl transform: 0 lines: "));
    }
}

// Every bad line is reported with its number, and every line after it is transformed.
TEST(Transforming, ReportsEveryBadLineAndTransformsTheOthers) {
    using std::string;
    const string longLine(2000000, '7');
    const string input =
        "\xEF\xBB\xBF"
        "50 9 first\r\n"         // 1, after a byte-order mark
        "fifty nine\n"           // 2
        "\n"                     // 3
        "50\n"                   // 4
        "1e999 9\n"              // 5
        "50 nan\n"               // 6
        "50 9 inf\n" +           // 7
        string("50\0 9\n", 6) +  // 8
        "1e300 1e300\n" +        // 9
        longLine +
        " 9\n" +                                // 10
        "50 9 " + string(100000, 'x') + "\n" +  // 11, long but not too long
        string("50 9 a\0b\n", 9) +              // 12, copied
        "95 9\r\n"                              // 13, no such latitude
        "50 9 last";                            // 14
    for (const Outcome& outcome :
         {run(toUtm({"--errors", "skip"}), input), runOnPipe(toUtm({"--errors", "skip"}), input),
          run(toUtm({"--errors", "skip", "--jobs", "2"}), input)}) {
        EXPECT_EQ(outcome.exitCode, 1);
        const string moved = "500000.000\t5538630.703";
        EXPECT_EQ(outcome.output, moved + " first\r\n\n" + moved + " " + string(100000, 'x') + "\n" + moved +
                                      string(" a\0b\n", 5) + moved + " last\n");
        EXPECT_THAT(textsBetween(outcome.errors, "standard input:", ": "),
                    ElementsAre("2", "4", "5", "6", "7", "8", "9", "10", "13"));
        for (const string& line : linesOf(outcome.errors)) EXPECT_LT(line.size(), 400U);
        EXPECT_THAT(outcome.errors, HasSubstr("14 lines: 4 transformed, 9 refused, 1 ignored"));
    }
}

TEST(Transforming, MarksOneLineForEachBadOne) {
    const Outcome outcome = run(TO_UTM, "bad\n95 9\n50 9\n");
    EXPECT_EQ(outcome.output, "*\t* bad\n*\t*\n500000.000\t5538630.703\n");
    EXPECT_EQ(outcome.exitCode, 1);
}

TEST(Transforming, StopsAtABadLineOnRequest) {
    for (const char* jobs : {"1", "3"}) {
        const std::string input = repeated(POINT, 100000) + "bad\n" + repeated(POINT, 100000);
        const Outcome outcome = run(toUtm({"--errors", "stop", "--jobs", jobs}), input);
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(linesOf(outcome.output).size(), 100000U);
        EXPECT_THAT(outcome.errors, HasSubstr("standard input:100001: "));
        EXPECT_THAT(outcome.errors, HasSubstr("100,001 lines: 100,000 transformed, 1 refused"));
    }
}

TEST(Threads, ChangeNothingAboutTheResult) {
    std::string input;
    for (int i = 0; i < 200000; ++i)
        input += std::to_string(40 + i % 20) + "." + std::to_string(i) + " " + std::to_string(i % 997 == 0 ? 9999 : 9) +
                 " line " + std::to_string(i) + "\n";
    const Outcome alone = run(toUtm({"--jobs", "1"}), input);
    const Outcome shared = run(toUtm({"--jobs", "4"}), input);
    EXPECT_EQ(alone.output, shared.output);
    EXPECT_EQ(linesOf(alone.output).size(), 200000U);
    const auto withoutSummary = [](const std::string& errors) { return errors.substr(0, errors.rfind("transform: ")); };
    EXPECT_EQ(withoutSummary(alone.errors), withoutSummary(shared.errors));
}

std::size_t entriesOf(const std::string& folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

// The program waits because nothing reads its output.
TEST(Threads, WorkInOneProcess) {
    const TemporaryFile input(repeated(POINT, 400000));
    Pipe output;
    Program program(toUtm({"--jobs", "3", input.path()}), openFile("/dev/null", O_RDONLY), output.takeWriteEnd(),
                    openFile("/dev/null", O_WRONLY));
    output.read(1);
    const std::string tasks = "/proc/" + std::to_string(program.id()) + "/task";
    EXPECT_GT(entriesOf(tasks), 1U);
    EXPECT_EQ(readTextFile(tasks + "/" + std::to_string(program.id()) + "/children"), "");
    output.closeReadEnd();
    EXPECT_EQ(program.exitCode(), 1);
}

TEST(Transforming, EndsQuietlyIfTheOutputIsClosed) {
    for (const char* jobs : {"1", "2"}) {
        const TemporaryFile input(repeated(POINT, 400000));
        const TemporaryFile errors("");
        Pipe output;
        Program program(toUtm({"--jobs", jobs, input.path()}), openFile("/dev/null", O_RDONLY), output.takeWriteEnd(),
                        openFile(errors.path(), O_WRONLY));
        EXPECT_THAT(output.read(22), HasSubstr(POINT_IN_UTM));
        output.closeReadEnd();
        EXPECT_EQ(program.exitCode(), 1);
        EXPECT_THAT(linesOf(readTextFile(errors.path())), ElementsAre(StartsWith("crsctl transform: ")));
    }
}

TEST(Reports, EndQuietlyIfTheOutputIsClosed) {
    const TemporaryFile errors("");
    Pipe output;
    output.closeReadEnd();
    Program program({"resolve", "4326"}, openFile("/dev/null", O_RDONLY), output.takeWriteEnd(),
                    openFile(errors.path(), O_WRONLY));
    EXPECT_EQ(program.exitCode(), 1);
    EXPECT_EQ(readTextFile(errors.path()), "");
}

TEST(Transforming, FailsIfTheOutputIsFull) {
    const TemporaryFile errors("");
    for (const std::vector<std::string>& arguments : {TO_UTM, std::vector<std::string>{"resolve", "4326"}}) {
        const TemporaryFile input(POINT);
        Program program(arguments, openFile(input.path(), O_RDONLY), openFile("/dev/full", O_WRONLY),
                        openFile(errors.path(), O_WRONLY | O_TRUNC));
        EXPECT_EQ(program.exitCode(), 2);
        EXPECT_THAT(readTextFile(errors.path()), HasSubstr("standard output: No space left on device\n"));
    }
}

// The result of a line is written before the next line arrives.
TEST(Transforming, TransformsEachLineAsItArrives) {
    for (const char* jobs : {"1", "4"}) {
        Pipe input;
        Pipe output;
        Program program(toUtm({"--jobs", jobs}), input.takeReadEnd(), output.takeWriteEnd(),
                        openFile("/dev/null", O_WRONLY));
        for (int i = 0; i < 3; ++i) {
            input.write(POINT);
            EXPECT_EQ(output.read(23), "500000.000\t5538630.703\n");
        }
        input.write("50 9 whole\n50 9 half a li");
        EXPECT_EQ(output.read(29), "500000.000\t5538630.703 whole\n");
        input.write("ne\n");
        EXPECT_EQ(output.read(35), "500000.000\t5538630.703 half a line\n");
        input.closeWriteEnd();
        EXPECT_EQ(program.exitCode(), 0);
    }
}

// No further input arrives.
TEST(Transforming, StopsAtABadLineWithoutWaitingForMore) {
    for (const char* jobs : {"1", "4"}) {
        Pipe input;
        Pipe output;
        Program program(toUtm({"--jobs", jobs, "--errors", "stop"}), input.takeReadEnd(), output.takeWriteEnd(),
                        openFile("/dev/null", O_WRONLY));
        input.write(POINT);
        EXPECT_EQ(output.read(23), "500000.000\t5538630.703\n");
        input.write("bad\n");
        EXPECT_EQ(program.exitCode(), 1);
    }
}

TEST(Transforming, EndsIfTheOutputIsClosedWhileItWaits) {
    for (const char* jobs : {"1", "4"}) {
        Pipe input;
        Pipe output;
        Program program(toUtm({"--jobs", jobs}), input.takeReadEnd(), output.takeWriteEnd(),
                        openFile("/dev/null", O_WRONLY));
        input.write(POINT);
        EXPECT_EQ(output.read(23), "500000.000\t5538630.703\n");
        output.closeReadEnd();
        input.write(POINT);
        EXPECT_EQ(program.exitCode(), 1);
    }
}

TEST(Transforming, WritesTheResultsBeforeAnInputThatCannotBeRead) {
    const TemporaryFile file(POINT);
    for (const char* jobs : {"1", "4"}) {
        const Outcome outcome = run(toUtm({"--jobs", jobs, file.path(), "/proc/self/mem", file.path()}), "");
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.output, "500000.000\t5538630.703\n");
        EXPECT_THAT(linesOf(outcome.errors), ElementsAre("crsctl transform: /proc/self/mem: Input/output error",
                                                         StartsWith("crsctl transform: 1 line: 1 transformed, ")));
    }
}

// The result of the first file is written before standard input is read.
TEST(Transforming, WritesTheResultOfAFileBeforeItWaitsForAPipe) {
    const TemporaryFile file(POINT);
    Pipe input;
    Pipe output;
    Program program(toUtm({file.path(), "-"}), input.takeReadEnd(), output.takeWriteEnd(),
                    openFile("/dev/null", O_WRONLY));
    EXPECT_EQ(output.read(23), "500000.000\t5538630.703\n");
    input.closeWriteEnd();
    EXPECT_EQ(program.exitCode(), 0);
}

// Threads share a stream as they share a file.
TEST(Transforming, KeepsTheOrderOfALongStream) {
    std::string input;
    std::string expected;
    for (int i = 0; i < 100000; ++i) {
        input += "50 9 line" + std::to_string(i) + "\n";
        expected += "500000.000\t5538630.703 line" + std::to_string(i) + "\n";
    }
    EXPECT_EQ(runOnPipe(toUtm({"--jobs", "4"}), input).output, expected);
}

// Returns the peak resident memory of `process` in KiB.
long peakMemoryOf(pid_t process) {
    const std::string status = readTextFile("/proc/" + std::to_string(process) + "/status");
    const std::vector<std::string> found = textsBetween(status, "VmHWM:", " kB");
    return found.empty() ? 0 : std::stol(found.front());
}

// The further input is 48 MB. Peak memory grows by less than half of it, even with AddressSanitizer, which would
// otherwise keep 256 MB of released memory.
TEST(Transforming, UsesNoMoreMemoryForMoreInput) {
    const std::string part = repeated("50 9 100 a name\n", 10000);
    Pipe input;
    setenv("ASAN_OPTIONS", "quarantine_size_mb=4:thread_local_quarantine_size_kb=64", 1);
    Program program(toUtm({"--jobs", "4"}), input.takeReadEnd(), openFile("/dev/null", O_WRONLY),
                    openFile("/dev/null", O_WRONLY));
    unsetenv("ASAN_OPTIONS");
    for (int i = 0; i < 20; ++i) input.write(part);
    const long before = peakMemoryOf(program.id());
    for (int i = 0; i < 300; ++i) input.write(part);
    EXPECT_GT(before, 0);
    EXPECT_LT(peakMemoryOf(program.id()), before + 24 * 1024L);
    input.closeWriteEnd();
    EXPECT_EQ(program.exitCode(), 0);
}

// The grid of the definition is missing, so PROJ has no operation.
TEST(ACrsWithoutAnOperation, IsReportedForEachLine) {
    const TestSupport::TemporaryDirectory directory;
    directory.write("epsg",
                    "<1> +proj=longlat +ellps=bessel +nadgrids=no_such_grid.gsb +no_defs <>\n"
                    "<4326> +proj=longlat +datum=WGS84 +no_defs <>\n");
    directory.write("epsg-axisorder.csv", "1;en\n4326;ne\n");
    for (const bool bounds : {false, true}) {
        std::vector<std::string> arguments = {"transform", "--proj-dir", directory.name(), "--from", "1",
                                              "--to",      "4326"};
        if (bounds) arguments.emplace_back("--bounds");
        const Outcome outcome = run(arguments, "9 50 9 50\n9 51 9 51\n");
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(textsBetween(outcome.errors, "standard input:", ": ").size(), 2U) << outcome.errors;
    }
}

// Runs the program with the arguments of `command` in a shell.
Outcome runInShell(const std::string& command) {
    const TemporaryFile out("");
    const TemporaryFile err("");
    const std::string script = "'" + std::string(CRSCTL_PROGRAM) +
                               "' --proj-dir '" COORDTRANS_SOURCE_DIR "/data/proj' " + command + " >'" + out.path() +
                               "' 2>'" + err.path() + "'";
    const int status = std::system(("bash -c " + std::string("\"") + script + "\"").c_str());
    return {WEXITSTATUS(status), readTextFile(out.path()), readTextFile(err.path())};
}

TEST(Transforming, ReadsAConfigurationFromAPipeOnce) {
    const TemporaryFile config(CONFIGURATION);
    const TemporaryFile input(repeated("9 50\n", 200000));
    const Outcome outcome = runInShell("transform --config <(cat '" + config.path() +
                                       "') --from CRS:84 --to UTM32 --jobs 2 '" + input.path() + "'");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(linesOf(outcome.output).size(), 200000U);
}

TEST(Transforming, FailsIfStandardInputIsClosed) {
    const Outcome outcome = runInShell("transform --from 4326 --to 25832 <&-");
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.errors, StartsWith("crsctl transform: standard input: Bad file descriptor\n"));
}

TEST(Transforming, WritesNoHeaderForEmptyInput) {
    EXPECT_EQ(run(toUtm({"--header"}), "").output, "");
    EXPECT_EQ(run(toUtm({"--header", "--output", "csv"}), "lat lon\n").output, "x,y\n");
}

struct SignalCase {
    int signal;
    int exitCode;
};

void PrintTo(const SignalCase& sent, std::ostream* stream) { *stream << "signal " << sent.signal; }

class ASignal : public testing::TestWithParam<SignalCase> {};

TEST_P(ASignal, EndsTheWaitForALineWithTheSummary) {
    const TemporaryFile errors("");
    Pipe input;
    Pipe output;
    Program program(TO_UTM, input.takeReadEnd(), output.takeWriteEnd(), openFile(errors.path(), O_WRONLY));
    input.write(POINT);
    EXPECT_EQ(output.read(23), "500000.000\t5538630.703\n");
    program.send(GetParam().signal);
    EXPECT_EQ(program.exitCode(), GetParam().exitCode);
    EXPECT_THAT(readTextFile(errors.path()), StartsWith("crsctl transform: 1 line: 1 transformed, "));
}

TEST_P(ASignal, EndsALongRunAfterAWholeLine) {
    for (const char* jobs : {"1", "2"}) {
        const TemporaryFile file(repeated(POINT, 1000000));
        const TemporaryFile errors("");
        Pipe output;
        Program program(toUtm({"--jobs", jobs, file.path()}), openFile("/dev/null", O_RDONLY), output.takeWriteEnd(),
                        openFile(errors.path(), O_WRONLY));
        std::string text = output.read(4096);
        program.send(GetParam().signal);
        text += output.readToEnd();
        EXPECT_EQ(program.exitCode(), GetParam().exitCode);
        const std::vector<std::string> lines = linesOf(text);
        EXPECT_EQ(text.back(), '\n');
        EXPECT_EQ(lines.back(), "500000.000\t5538630.703");
        EXPECT_LT(lines.size(), 1000000U);
        const std::string summary = readTextFile(errors.path());
        const auto counts = textsBetween(summary, "lines: ", " transformed");
        ASSERT_EQ(counts.size(), 1U) << summary;
        std::string counted = counts.front();
        counted.erase(std::remove(counted.begin(), counted.end(), ','), counted.end());
        EXPECT_EQ(counted, std::to_string(lines.size()));
    }
}

INSTANTIATE_TEST_SUITE_P(Signals, ASignal,
                         testing::Values(SignalCase{SIGINT, 130}, SignalCase{SIGTERM, 1}, SignalCase{SIGHUP, 1}));

// Returns the text that the program shows on a terminal as standard error. The input is a file.
std::string shownOnTerminal(const std::vector<std::string>& options) {
    const TemporaryFile file(repeated(POINT, 50000));
    int terminal = -1;
    int programEnd = -1;
    if (openpty(&terminal, &programEnd, nullptr, nullptr, nullptr) != 0) return "no terminal";
    std::vector<std::string> arguments = toUtm(options);
    arguments.push_back(file.path());
    Program program(arguments, openFile("/dev/null", O_RDONLY), openFile("/dev/null", O_WRONLY), programEnd);
    std::string shown;
    char character = 0;
    while (read(terminal, &character, 1) == 1) shown += character;
    close(terminal);
    EXPECT_EQ(program.exitCode(), 0);
    return shown;
}

TEST(Transforming, ShowsItsProgressOnATerminal) {
    const std::string shown = shownOnTerminal({"--jobs", "1"});
    EXPECT_THAT(shown, HasSubstr("\r\x1B[K["));
    EXPECT_THAT(shown, HasSubstr(" % "));
    EXPECT_THAT(shown, HasSubstr(" lines/s  "));
    EXPECT_THAT(shown, HasSubstr(" left"));
    EXPECT_THAT(shown, HasSubstr("\r\x1B[Kcrsctl transform: 50,000 lines: "));
}

TEST(Transforming, ShowsNoProgressElsewhere) {
    EXPECT_THAT(run(TO_UTM, repeated(POINT, 50000)).errors, StartsWith("crsctl transform: 50,000 lines: "));
}

constexpr char EXCHANGED_POINTS[] = "9 50\n9 51\n9 52\n";

TEST(ManyExchangedPoints, GetAHintBeforeTheSummary) {
    EXPECT_THAT(
        linesOf(run(TO_UTM, EXCHANGED_POINTS).errors),
        ElementsAre("crsctl transform: hint: latitude and longitude look exchanged; the axis order of the input "
                    "is latitude, longitude (--columns lon,lat reads the other order)",
                    StartsWith("crsctl transform: 3 lines: ")));
    EXPECT_THAT(run({"transform", "--from", "CRS:84", "--to", "EPSG:25832"}, "50 9\n").errors,
                HasSubstr("is longitude, latitude (--columns lat,lon reads the other order)\n"));
}

TEST(FewExchangedPoints, GetNoHint) {
    EXPECT_THAT(linesOf(run(TO_UTM, "9 50\n50 9\n").errors), ElementsAre(StartsWith("crsctl transform: 2 lines: ")));
    EXPECT_THAT(linesOf(run(toUtm({"--columns", "lon,lat"}), EXCHANGED_POINTS).errors),
                ElementsAre(StartsWith("crsctl transform: 3 lines: ")));
}

TEST(ExchangedPointsAmongBadLines, GetNoHint) {
    EXPECT_THAT(
        linesOf(run(TO_UTM, "9 50\nbad\n").errors),
        ElementsAre(StartsWith("crsctl transform: standard input:2: "), StartsWith("crsctl transform: 2 lines: ")));
}

TEST(ExchangedBoxes, GetNoHint) {
    EXPECT_THAT(linesOf(run(toUtm({"--bounds"}), "9 50 10 51\n").errors),
                ElementsAre(StartsWith("crsctl transform: 1 line: ")));
}

TEST(AQuietRun, WritesOnlyErrors) {
    EXPECT_EQ(run(toUtm({"--quiet"}), EXCHANGED_POINTS).errors, "");
    const Outcome outcome = run(toUtm({"-q"}), EXCHANGED_POINTS + std::string("bad\n"));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(linesOf(outcome.errors), ElementsAre(StartsWith("crsctl transform: standard input:4: ")));
}

TEST(AQuietRun, WritesTheFailureOfALaterFile) {
    const TemporaryFile unreadable(std::string(std::size_t{2} << 20U, 'x'));
    const Outcome outcome = run(toUtm({"--quiet", "--header", "-", unreadable.path()}), "x y\n50 9\n");
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.errors, "crsctl transform: " + unreadable.path() + ":1: the header is too long\n");
}

TEST(AQuietRun, ShowsNoProgress) { EXPECT_EQ(shownOnTerminal({"--quiet", "--jobs", "1"}), ""); }

TEST(AQuietRun, OmitsTheNoteOfNames) {
    EXPECT_EQ(run({"names"}).errors, "crsctl names: without --config no name is registered\n");
    EXPECT_EQ(run({"names", "--quiet"}).errors, "");
}

// An installation in a temporary folder: bin/crsctl and share/CoordinateTransformation/proj.
class Installation {
public:
    Installation() {
        std::filesystem::create_directories(root / "bin");
        std::filesystem::copy_file(CRSCTL_PROGRAM, root / "bin/crsctl");
        std::filesystem::create_directories(root / "share/CoordinateTransformation");
        std::filesystem::copy(COORDTRANS_SOURCE_DIR "/data/proj", root / "share/CoordinateTransformation/proj");
    }

    int run(const std::string& arguments) const {
        const std::string program = (root / "bin/crsctl").string();
        return WEXITSTATUS(std::system(("env -u QUARVELSRV_PROJ4_CONF_DIR '" + program + "' " + arguments).c_str()));
    }

private:
    const TestSupport::TemporaryDirectory directory;
    const std::filesystem::path root = directory.name();
};

TEST(TheInstalledProgram, FindsTheDirectoryThatWasInstalledWithIt) {
    const Installation installation;
    EXPECT_EQ(installation.run("resolve 4326 >/dev/null"), 0);
}

}  // namespace
}  // namespace crsctl
