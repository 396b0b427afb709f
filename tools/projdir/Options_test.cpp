#include "tools/projdir/Options.h"

#include <fstream>
#include <set>
#include <sstream>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ProjDir {
namespace {

using testing::HasSubstr;

struct Result {
    bool isToRun = false;
    int exitCode = 0;
    Options options;
    std::string output;
    std::string error;
};

Result read(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "crs-projdir");
    Result result;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    result.isToRun = readOptions(static_cast<int>(arguments.size()), arguments.data(), result.options, result.exitCode);
    result.output = testing::internal::GetCapturedStdout();
    result.error = testing::internal::GetCapturedStderr();
    return result;
}

TEST(OptionsTest, NeedsNoMoreThanADirectory) {
    const Result result = read({"out"});
    EXPECT_TRUE(result.isToRun);
    EXPECT_EQ(result.options.directory, "out");
    EXPECT_TRUE(result.options.codesFile.empty());
    EXPECT_TRUE(result.options.reportFile.empty());
    EXPECT_FALSE(result.options.includeDeprecated || result.options.useGrids || result.options.verify ||
                 result.options.force);
}

TEST(OptionsTest, ReadsEveryOption) {
    const Result result =
        read({"--codes", "c", "--include-deprecated", "--grids", "--report", "r", "--verify", "--force", "o"});
    EXPECT_TRUE(result.isToRun);
    EXPECT_EQ(result.options.codesFile, "c");
    EXPECT_EQ(result.options.reportFile, "r");
    EXPECT_TRUE(result.options.includeDeprecated && result.options.useGrids && result.options.verify &&
                result.options.force);
}

TEST(OptionsTest, ReadsWhatChoosesAndShifts) {
    const Result result = read({"o", "--area", "-10.5,36,4,44", "--from-config", "x.xml", "--fit", "--worst", "250"});
    EXPECT_TRUE(result.isToRun);
    EXPECT_EQ(result.options.configFile, "x.xml");
    EXPECT_TRUE(result.options.fit);
    EXPECT_EQ(result.options.worst, 250);
    ASSERT_TRUE(result.options.area);
    EXPECT_EQ(result.options.area->west, -10.5);
    EXPECT_EQ(result.options.area->south, 36);
    EXPECT_EQ(result.options.area->east, 4);
    EXPECT_EQ(result.options.area->north, 44);
    EXPECT_TRUE(read({"o", "--area", "170,-50,-170,-30"}).isToRun);
}

TEST(OptionsTest, DescribesWhatTheContentDependsOn) {
    EXPECT_THAT(describeOptions(read({"o", "--verify", "--force", "--report", "r"}).options),
                testing::MatchesRegex("crs-projdir [0-9.]+ without options"));
    EXPECT_THAT(describeOptions(read({"o", "--codes", "c", "--from-config", "f", "--area", "-10,36,4,44.5", "--grids",
                                      "--fit", "--include-deprecated", "--worst", "20"})
                                    .options),
                testing::EndsWith(" --codes --from-config --area -10,36,4,44.5 --include-deprecated --grids --fit "
                                  "--worst 20"));
}

TEST(OptionsTest, HelpsAndTellsItsVersion) {
    const Result help = read({"--help"});
    EXPECT_FALSE(help.isToRun);
    EXPECT_EQ(help.exitCode, 0);
    for (const char* option : {"OUTDIR", "--codes", "--from-config", "--area", "--include-deprecated", "--grids",
                               "--fit", "--worst", "--report", "--verify", "--force"})
        EXPECT_THAT(help.output, HasSubstr(option));
    const Result version = read({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_THAT(version.output, testing::MatchesRegex("crs-projdir [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

std::string escapeDashes(const std::string& text) {
    std::string escaped;
    for (const char c : text) escaped += c == '-' ? std::string("\\-") : std::string(1, c);
    return escaped;
}

TEST(OptionsTest, HasAManualPageWithEveryOption) {
    std::ifstream file(COORDTRANS_SOURCE_DIR "/tools/projdir/crs-projdir.1.in");
    std::ostringstream page;
    page << file.rdbuf();
    std::istringstream words(read({"--help"}).output);
    std::set<std::string> options;
    for (std::string word; words >> word;)
        if (const std::size_t dashes = word.find("--"); dashes != std::string::npos)
            options.insert(word.substr(dashes, word.find_first_of(",;", dashes) - dashes));
    EXPECT_EQ(options.size(), 12U);
    for (const std::string& option : options) EXPECT_THAT(page.str(), HasSubstr(escapeDashes(option)));
}

TEST(OptionsTest, RefusesWhatItDoesNotKnow) {
    for (const std::vector<const char*>& arguments : {std::vector<const char*>{},
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
        const Result result = read(arguments);
        EXPECT_FALSE(result.isToRun);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(result.error, testing::StartsWith("crs-projdir: "));
    }
}

}  // namespace
}  // namespace ProjDir
