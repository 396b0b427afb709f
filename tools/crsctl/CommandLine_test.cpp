#include "tools/crsctl/CommandLine.h"

#include <ostream>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/crsctl/Session.h"

namespace crsctl {

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

void readArguments(std::vector<std::string> arguments, CommandRequest& request) {
    arguments.insert(arguments.begin(), "crsctl");
    std::vector<const char*> argv;
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    readCommandLine(static_cast<int>(argv.size()), argv.data(), request);
}

CommandRequest requestOf(const std::vector<std::string>& arguments) {
    CommandRequest request;
    readArguments(arguments, request);
    return request;
}

TEST(ACommandLine, AcceptsCommonOptionsBeforeAndAfterTheCommand) {
    for (const auto& arguments :
         {std::vector<std::string>{"--json", "--config", "c.xml", "--proj-dir", "p", "resolve", "EPSG:4326", "4258"},
          std::vector<std::string>{"resolve", "EPSG:4326", "4258", "--proj-dir", "p", "--config=c.xml", "--json"}}) {
        const CommandRequest request = requestOf(arguments);
        EXPECT_EQ(request.commandName, "crsctl resolve");
        EXPECT_THAT(request.names, ElementsAre("EPSG:4326", "4258"));
        EXPECT_TRUE(request.common.json);
        EXPECT_EQ(request.common.configFile, "c.xml");
        EXPECT_EQ(request.common.projDir, "p");
    }
}

TEST(ACommandLine, ReadsPropertiesOfTheConfiguration) {
    const CommandRequest request = requestOf({"resolve", "--property", "A=B", "EPSG:4326", "--property=C=D=E", "x"});
    EXPECT_THAT(request.common.properties, ElementsAre("A=B", "C=D=E"));
    EXPECT_THAT(request.names, ElementsAre("EPSG:4326", "x"));
    EXPECT_THAT(requestOf({"--property", "A=", "resolve", "x"}).common.properties, ElementsAre("A="));
}

TEST(ACommandLine, KeepsNamesUnchanged) {
    EXPECT_THAT(requestOf({"resolve", "", " ", "[a,b]", "%x", "a=b"}).names,
                ElementsAre("", " ", "[a,b]", "%x", "a=b"));
    EXPECT_THAT(requestOf({"resolve", "\x01x", "\x01[a]", "[", "]", "[]", "[[a]]"}).names,
                ElementsAre("\x01x", "\x01[a]", "[", "]", "[]", "[[a]]"));
}

TEST(ACommandLine, ReadsTheOptionsOfATransformation) {
    const TransformOptions options =
        requestOf({"transform",   "--from",   "A",        "--to",      "B",  "--inverse", "--columns", "id,x,y",
                   "--separator", "comma",    "--header", "--comment", "//", "--output",  "csv",       "--decimals",
                   "4",           "--errors", "stop",     "--jobs",    "2",  "a.txt",     "-"})
            .transform;
    EXPECT_EQ(options.from, "A");
    EXPECT_EQ(options.to, "B");
    EXPECT_TRUE(options.inverse);
    EXPECT_EQ(options.columns, "id,x,y");
    EXPECT_EQ(options.separator, Separator::COMMA);
    EXPECT_TRUE(options.header);
    EXPECT_EQ(options.lines.comment, "//");
    EXPECT_EQ(options.output, OutputFormat::CSV);
    EXPECT_EQ(options.decimals, 4);
    EXPECT_EQ(options.lines.errors, ErrorMode::STOP);
    EXPECT_EQ(options.jobs, 2U);
    EXPECT_THAT(options.files, ElementsAre("a.txt", "-"));
    EXPECT_EQ(requestOf({"transform", "--from", "A", "--to", "B", "--comment", ""}).transform.lines.comment, "");
}

TEST(ACommandLine, ReadsBoxesWithNegativeNumbers) {
    const std::vector<std::string> names = {"--from", "A", "--to", "B"};
    for (const bool namesFirst : {true, false}) {
        std::vector<std::string> arguments = {"transform", "--bounds",          "-6", "-.5",
                                              "-1e-1",     "--points-per-edge", "0",  "+5"};
        arguments.insert(namesFirst ? arguments.begin() + 1 : arguments.end(), names.begin(), names.end());
        const TransformOptions options = requestOf(arguments).transform;
        EXPECT_TRUE(options.bounds);
        EXPECT_EQ(options.lines.pointsPerEdge, 0U);
        EXPECT_THAT(options.files, ElementsAre("-6", "-.5", "-1e-1", "+5"));
    }
}

TEST(ACommandLine, ReadsTheConditionsOfASearch) {
    const SearchedCrs searched =
        requestOf({"find", "utm", "32 [a]", "[b]", "--area", "-6,47,15,55", "--kind", "projected"}).searched;
    EXPECT_THAT(searched.words, ElementsAre("utm", "32 [a]", "[b]"));
    ASSERT_TRUE(searched.area);
    EXPECT_EQ(boxText(*searched.area), "-6,47,15,55");
    EXPECT_EQ(searched.kind, CrsDescription::Kind::PROJECTED);
    EXPECT_EQ(boxText(*requestOf({"find", "--area", "-.5,1,.5,2"}).searched.area), "-0.5,1,0.5,2");
    EXPECT_FALSE(requestOf({"find", "utm"}).searched.area || requestOf({"find", "utm"}).searched.kind);
}

TEST(ACommandLine, ReadsTheRequirementsOfACheck) {
    const Expectations expected = requestOf({"check", "--area=6,47,15,55", "--accuracy", "2.5", "crs.xml"}).expected;
    EXPECT_EQ(boxText(*expected.area), "6,47,15,55");
    EXPECT_EQ(expected.accuracy, 2.5);
    EXPECT_TRUE(expected.areGiven);
    const Expectations usual = requestOf({"check", "crs.xml"}).expected;
    EXPECT_FALSE(usual.area);
    EXPECT_EQ(usual.accuracy, 10);
    EXPECT_FALSE(usual.areGiven);
}

struct BadCase {
    std::vector<std::string> arguments;
    const char* commandName;
    const char* message;
};

void PrintTo(const BadCase& bad, std::ostream* stream) {
    *stream << "crsctl";
    for (const std::string& argument : bad.arguments) *stream << " " << argument;
}

class ABadCommandLine : public testing::TestWithParam<BadCase> {};

TEST_P(ABadCommandLine, IsRefusedInOneLineThatNamesTheMistake) {
    CommandRequest request;
    try {
        readArguments(GetParam().arguments, request);
        FAIL() << "accepted";
    } catch (const SetUpError& failure) {
        EXPECT_EQ(request.commandName, GetParam().commandName);
        EXPECT_THAT(failure.what(), HasSubstr(GetParam().message));
        EXPECT_THAT(failure.what(), testing::Not(HasSubstr("\n")));
        EXPECT_THAT(failure.what(), testing::Not(HasSubstr("\\x01")));
        EXPECT_EQ(failure.getExitCode(), 2);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Lines, ABadCommandLine,
    testing::Values(
        BadCase{{}, "crsctl", "a command is needed"}, BadCase{{"frob"}, "crsctl", "frob"},
        BadCase{{"--frob"}, "crsctl", "--frob"}, BadCase{{"resolve"}, "crsctl resolve", "NAME"},
        BadCase{{"resolve", "--frob", "x"}, "crsctl resolve", "--frob"},
        BadCase{{"resolve", "x", "--config"}, "crsctl resolve", "--config"}, BadCase{{"check"}, "crsctl check", "FILE"},
        BadCase{{"check", "a", "b"}, "crsctl check", "b"},
        BadCase{{"check", "--accuracy", "-1", "a"}, "crsctl check", "-1"},
        BadCase{{"check", "--area", "1,2,3", "a"}, "crsctl check", "--area 1,2,3: four numbers"},
        BadCase{{"find"}, "crsctl find", "TEXT"}, BadCase{{"find", "--kind", "projected"}, "crsctl find", "TEXT"},
        BadCase{{"resolve", "--property", "AxisOrderConvention", "x"},
                "crsctl resolve",
                "AxisOrderConvention is not KEY=VALUE"},
        BadCase{{"resolve", "--property", "=x", "x"}, "crsctl resolve", "=x is not KEY=VALUE"},
        BadCase{{"find", "--kind", "vertical", "x"}, "crsctl find", "vertical is not one of geographic"},
        BadCase{{"find", "--area", "[1,2,3,4]", "x"}, "crsctl find", "--area [1,2,3,4]: four numbers"},
        BadCase{{"find", "--area", "9,55,10,50"}, "crsctl find", "--area 9,55,10,50: not a box"},
        BadCase{{"names", "x"}, "crsctl names", "x"}, BadCase{{"help", "frob"}, "crsctl", "frob"},
        BadCase{{"[frob]"}, "crsctl", "[frob]"}, BadCase{{"names", "[a]", "[b]"}, "crsctl names", "[a]"},
        BadCase{{"help", "fin"}, "crsctl", "no command fin; did you mean find?"},
        BadCase{{"transform", "--decimals", "[4]"}, "crsctl transform", "[4]"},
        BadCase{{"transform", "--separator", "[x]"}, "crsctl transform", "[x]"},
        BadCase{{"transform"}, "crsctl transform", "--from"},
        BadCase{{"transform", "--from", "A"}, "crsctl transform", "--to"},
        BadCase{{"transform", "--errors", "sip"}, "crsctl transform", "did you mean skip?"},
        BadCase{{"trasform"}, "crsctl", "did you mean transform?"},
        BadCase{{"resolve", "--jsn", "x"}, "crsctl resolve", "did you mean --json?"},
        BadCase{{"transform", "--output", "xml"}, "crsctl transform", "xml"},
        BadCase{{"transform", "--separator", "|"}, "crsctl transform", "|"},
        BadCase{{"transform", "--decimals", "19"}, "crsctl transform", "19"},
        BadCase{{"transform", "--decimals", "x"}, "crsctl transform", "x"},
        BadCase{{"transform", "--decimals", "-.5"}, "crsctl transform", "-.5"},
        BadCase{{"transform", "--from", "A", "--to", "B", "-.x"}, "crsctl transform", "-.x"},
        BadCase{{"transform", "--from", "A", "--to", "B", "--points-per-edge", "5"}, "crsctl transform", "--bounds"},
        BadCase{{"transform", "--bounds", "--points-per-edge", "-1"}, "crsctl transform", "-1"},
        BadCase{{"transform", "--bounds", "--points-per-edge", "10001"}, "crsctl transform", "10001"},
        BadCase{{"transform", "--jobs", "0"}, "crsctl transform", "0"}));

constexpr const char* COMMANDS[] = {"resolve", "transform", "check", "names", "find"};

TEST(Help, IsGivenForEveryCommandInTwoWays) {
    EXPECT_EQ(requestOf({"help"}).text, requestOf({"--help"}).text);
    for (const char* const command : COMMANDS) {
        const std::string help = requestOf({command, "--help"}).text;
        EXPECT_EQ(help, requestOf({"help", command}).text);
        for (const char* const section :
             {"Options:", "Examples:", "Exit codes:", "Environment:", "Files:", "See also:"})
            EXPECT_THAT(help, HasSubstr(std::string("\n") + section + "\n"));
    }
}

TEST(Help, FitsATerminalExceptForExamples) {
    for (const char* const command : COMMANDS) {
        const std::string help = requestOf({command, "--help"}).text;
        const std::size_t synopsis = help.find('\n') + 1;
        const std::size_t examples = help.find("Examples:");
        const std::string text = help.substr(synopsis, examples - synopsis) + help.substr(help.find("Exit codes:"));
        for (std::size_t begin = 0, end = 0; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1)
            EXPECT_LE(end - begin, 80U) << text.substr(begin, end - begin);
    }
}

TEST(TheVersion, IsGivenForEveryCommand) {
    EXPECT_THAT(requestOf({"-V"}).text, testing::StartsWith("crsctl "));
    for (const char* const command : COMMANDS)
        EXPECT_THAT(requestOf({command, "--version"}).text, testing::StartsWith("crsctl "));
}

TEST(Completion, OffersEveryCommand) {
    for (const char* const shell : {"bash", "zsh", "fish"}) {
        const std::string script = requestOf({"completion", shell}).text;
        for (const char* const command : COMMANDS) EXPECT_THAT(script, HasSubstr(command));
    }
}

// Every example is a valid command line.
TEST(TheExamples, AreValid) {
    for (const char* const command : COMMANDS) {
        std::istringstream help(requestOf({"help", command}).text);
        for (std::string line; std::getline(help, line);) {
            if (line.rfind("  crsctl ", 0) != 0) continue;
            std::istringstream words(line.substr(9, line.find(" <") - 9));
            std::vector<std::string> arguments;
            for (std::string word; words >> word;) arguments.push_back(word);
            EXPECT_NO_THROW(requestOf(arguments)) << line;
        }
    }
}

}  // namespace
}  // namespace crsctl
