#include "tools/projdir/Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/projdir/TestDirectory.h"

namespace ProjDir {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ProgramTest : public testing::Test {
protected:
    ProgramTest() {
        options.directory = work.file("out");
        options.codesFile = work.write("codes", "4326\n25832\n5701\n");
    }

    // The exit code; what was printed stays in `output` and `error`.
    int runProgram() {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int exitCode = run(options);
        output = testing::internal::GetCapturedStdout();
        error = testing::internal::GetCapturedStderr();
        return exitCode;
    }

    bool isNothingMade() const { return !std::filesystem::exists(options.directory); }

    TestDirectory work;
    Options options;
    std::string output;
    std::string error;
};

TEST_F(ProgramTest, MakesTheTwoFiles) {
    EXPECT_EQ(runProgram(), 0);
    EXPECT_EQ(error, "");
    EXPECT_THAT(output, HasSubstr("2 definitions"));
    EXPECT_THAT(work.read("out/epsg"),
                HasSubstr("# ETRS89 / UTM zone 32N; shift EPSG:1149\n<25832> +proj=utm +zone=32"));
    EXPECT_EQ(work.read("out/epsg-axisorder.csv"), "0;en\n4326;ne\n25832;en\n");
}

TEST_F(ProgramTest, WritesTheReport) {
    options.reportFile = work.file("report");
    EXPECT_EQ(runProgram(), 0);
    EXPECT_THAT(work.read("report"), HasSubstr("EPSG:5701 ODN height: a vertical CRS has no classic definition"));
}

TEST_F(ProgramTest, MakesTheSameBytesAgain) {
    EXPECT_EQ(runProgram(), 0);
    const std::string first = work.read("out/epsg") + work.read("out/epsg-axisorder.csv");
    options.force = true;
    EXPECT_EQ(runProgram(), 0);
    EXPECT_EQ(work.read("out/epsg") + work.read("out/epsg-axisorder.csv"), first);
}

TEST_F(ProgramTest, OverwritesNothingUnlessForced) {
    std::filesystem::create_directory(options.directory);
    for (const char* name : {"out/epsg", "out/epsg-axisorder.csv"}) {
        work.write(name, "mine");
        EXPECT_EQ(runProgram(), 1);
        EXPECT_THAT(error, AllOf(HasSubstr(name), HasSubstr("--force")));
        EXPECT_EQ(work.read(name), "mine");
        std::filesystem::remove(work.file(name));
        EXPECT_THAT(work.list(), ElementsAre("codes", "out"));
    }
}

TEST_F(ProgramTest, OverwritesNoReportUnlessForced) {
    options.reportFile = work.write("report", "mine");
    EXPECT_EQ(runProgram(), 1);
    EXPECT_THAT(error, HasSubstr(options.reportFile));
    EXPECT_EQ(work.read("report"), "mine");
    EXPECT_TRUE(isNothingMade());
}

TEST_F(ProgramTest, NamesACodeThatIsUnknown) {
    work.write("codes", "4326\n999999\n");
    EXPECT_EQ(runProgram(), 1);
    EXPECT_EQ(error, "crs-projdir: " + options.codesFile + ", line 2: the registry has no CRS EPSG:999999\n");
    EXPECT_TRUE(isNothingMade());
}

TEST_F(ProgramTest, NamesAListThatCannotBeRead) {
    options.codesFile = work.file("none");
    EXPECT_EQ(runProgram(), 1);
    EXPECT_THAT(error, HasSubstr(options.codesFile));
    EXPECT_TRUE(isNothingMade());
}

TEST_F(ProgramTest, NamesADirectoryThatCannotBeMade) {
    options.directory = work.file("codes");
    EXPECT_EQ(runProgram(), 1);
    EXPECT_THAT(error, HasSubstr(options.directory));
}

TEST_F(ProgramTest, LeavesTheDirectoryWholeWhenTheReportDoesNotFit) {
    options.reportFile = "/dev/full";
    EXPECT_EQ(runProgram(), 1);
    EXPECT_EQ(error, "crs-projdir: cannot write \"/dev/full\": No space left on device\n");
    EXPECT_EQ(work.read("out/epsg-axisorder.csv"), "0;en\n4326;ne\n25832;en\n");
}

// PROJ reads the variables anew for every context.
TEST_F(ProgramTest, NamesADatabaseThatIsMissing) {
    const char* const before = std::getenv("PROJ_DATA");
    const std::string kept = before == nullptr ? "" : before;
    setenv("PROJ_DATA", work.file("nowhere").c_str(), 1);
    EXPECT_EQ(runProgram(), 1);
    EXPECT_EQ(error,
              "crs-projdir: PROJ finds no usable database proj.db (PROJ_DATA is \"" + work.file("nowhere") + "\")\n");
    EXPECT_TRUE(isNothingMade());
    if (before == nullptr)
        unsetenv("PROJ_DATA");
    else
        setenv("PROJ_DATA", kept.c_str(), 1);
}

}  // namespace
}  // namespace ProjDir
