#include "tools/projdir/MakeDirectory.h"

#include <chrono>
#include <csignal>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"

namespace ProjDir {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class MakeDirectoryTest : public testing::Test {
protected:
    MakeDirectoryTest() {
        options.directory = work.file("out");
        options.codesFile = work.write("codes", "4326\n25832\n");
    }

    // The exit code; what was printed stays in `output` and `error`.
    int runProgram() {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int exitCode = makeDirectory(options);
        output = testing::internal::GetCapturedStdout();
        error = testing::internal::GetCapturedStderr();
        return exitCode;
    }

    bool isNothingMade() const { return !std::filesystem::exists(options.directory); }

    // In a process of its own.
    pid_t startProgram() const {
        const pid_t child = fork();
        if (child == 0) _exit(std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : makeDirectory(options));
        return child;
    }

    static int waitFor(pid_t child) {
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        return status;
    }

    template <typename Action>
    static std::chrono::steady_clock::duration timeOf(Action action) {
        const auto start = std::chrono::steady_clock::now();
        action();
        return std::chrono::steady_clock::now() - start;
    }

    std::set<std::string> listOutput() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(options.directory))
            names.insert(entry.path().filename().string());
        return names;
    }

    TestSupport::TemporaryDirectory work;
    Options options;
    std::string output;
    std::string error;
};

TEST_F(MakeDirectoryTest, MakesTheTwoFiles) {
    EXPECT_EQ(runProgram(), 0);
    EXPECT_EQ(error, "");
    EXPECT_THAT(output, HasSubstr("2 definitions"));
    EXPECT_THAT(work.read("out/epsg"),
                HasSubstr("# ETRS89 / UTM zone 32N; shift EPSG:1149\n<25832> +proj=utm +zone=32"));
    EXPECT_EQ(work.read("out/epsg-axisorder.csv"), "0;en\n4326;ne\n25832;en\n");
}

TEST_F(MakeDirectoryTest, WritesTheReport) {
    options.reportFile = work.file("report");
    EXPECT_EQ(runProgram(), 0);
    EXPECT_THAT(work.read("report"), HasSubstr("     2 definitions\n"));
}

TEST_F(MakeDirectoryTest, MakesTheSameBytesAgain) {
    EXPECT_EQ(runProgram(), 0);
    const std::string first = work.read("out/epsg") + work.read("out/epsg-axisorder.csv");
    options.force = true;
    EXPECT_EQ(runProgram(), 0);
    EXPECT_EQ(work.read("out/epsg") + work.read("out/epsg-axisorder.csv"), first);
}

TEST_F(MakeDirectoryTest, OverwritesNothingUnlessForced) {
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

TEST_F(MakeDirectoryTest, OverwritesNoReportUnlessForced) {
    options.reportFile = work.write("report", "mine");
    EXPECT_EQ(runProgram(), 1);
    EXPECT_THAT(error, HasSubstr(options.reportFile));
    EXPECT_EQ(work.read("report"), "mine");
    EXPECT_TRUE(isNothingMade());
}

TEST_F(MakeDirectoryTest, NamesACodeThatIsUnknown) {
    work.write("codes", "4326\n999999\n");
    EXPECT_EQ(runProgram(), 1);
    EXPECT_EQ(error, "crs-projdir: " + options.codesFile + ", line 2: the registry has no CRS EPSG:999999\n");
    EXPECT_TRUE(isNothingMade());
}

TEST_F(MakeDirectoryTest, NamesEveryListedCodeThatHasNoDefinition) {
    work.write("codes", "4326\n5701\n7405\n");
    EXPECT_EQ(runProgram(), 1);
    EXPECT_EQ(output, "");
    EXPECT_THAT(error, StartsWith("crs-projdir: " + options.codesFile +
                                  " names CRS that no definition can be made for:\n  EPSG:5701 "));
    EXPECT_THAT(error, AllOf(HasSubstr(": a vertical CRS has no classic definition\n  EPSG:7405 "),
                             EndsWith(": a compound CRS has no classic definition\n")));
    EXPECT_TRUE(isNothingMade());
}

TEST_F(MakeDirectoryTest, NamesAListThatCannotBeRead) {
    options.codesFile = work.file("none");
    EXPECT_EQ(runProgram(), 1);
    EXPECT_THAT(error, HasSubstr(options.codesFile));
    EXPECT_TRUE(isNothingMade());
}

TEST_F(MakeDirectoryTest, NamesADirectoryThatCannotBeMade) {
    options.directory = work.file("codes");
    EXPECT_EQ(runProgram(), 1);
    EXPECT_THAT(error, HasSubstr(options.directory));
}

TEST_F(MakeDirectoryTest, LeavesTheDirectoryWholeWhenTheReportDoesNotFit) {
    options.reportFile = "/dev/full";
    EXPECT_EQ(runProgram(), 1);
    EXPECT_EQ(error, "crs-projdir: cannot write \"/dev/full\": No space left on device\n");
    EXPECT_EQ(work.read("out/epsg-axisorder.csv"), "0;en\n4326;ne\n25832;en\n");
}

// Wherever it is interrupted: there is no directory, or a whole one.
TEST_F(MakeDirectoryTest, LeavesNothingHalfMadeWhenItIsInterrupted) {
    constexpr int MOMENTS = 16;
    work.write("codes", "4326\n25832\n27700\n31467\n2154\n28992\n31370\n4230\n");
    const auto duration = timeOf([this] { waitFor(startProgram()); });
    int interruptions = 0;
    for (int i = 0; i < MOMENTS; ++i) {
        std::filesystem::remove_all(options.directory);
        const pid_t child = startProgram();
        std::this_thread::sleep_for(duration * i / MOMENTS);
        kill(child, i % 2 == 0 ? SIGINT : SIGTERM);
        interruptions += WIFSIGNALED(waitFor(child)) ? 1 : 0;
        EXPECT_TRUE(isNothingMade() || listOutput() == (std::set<std::string>{"epsg", "epsg-axisorder.csv"}));
    }
    EXPECT_GT(interruptions, 0);
}

// PROJ reads the variables anew for every context.
TEST_F(MakeDirectoryTest, NamesADatabaseThatIsMissing) {
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
