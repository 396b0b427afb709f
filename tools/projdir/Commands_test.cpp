#include "tools/projdir/Commands.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"
#include "tools/projdir/DirectoryFiles.h"
#include "tools/projdir/Registry.h"

namespace ProjDir {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

RegistryCrs makeCrs(unsigned int code, bool isDeprecated, const std::optional<Area>& area) {
    RegistryCrs crs;
    crs.code = code;
    crs.isDeprecated = isDeprecated;
    crs.area = area;
    return crs;
}

std::vector<unsigned int> selectCodes(const Options& options) {
    std::vector<unsigned int> codes;
    for (const RegistryCrs& crs : selectCrs(options, {makeCrs(10, false, Area{0, 0, 10, 10}),
                                                      makeCrs(20, true, Area{20, 20, 30, 30}), makeCrs(30, false, {})}))
        codes.push_back(crs.code);
    return codes;
}

TEST(CrsSelectionTest, TakesDeprecatedOnesOnlyWhenAdmitted) {
    Options options;
    EXPECT_THAT(selectCodes(options), ElementsAre(10, 30));
    options.includeDeprecated = true;
    EXPECT_THAT(selectCodes(options), ElementsAre(10, 20, 30));
}

TEST(CrsSelectionTest, SelectsByArea) {
    Options options;
    options.area = Area{5, 5, 6, 6};
    EXPECT_THAT(selectCodes(options), ElementsAre(10));
    options.area = Area{-6, -6, -5, -5};
    EXPECT_THROW(selectCodes(options), FileError);
}

class MakeDirectoryTest : public testing::Test {
protected:
    MakeDirectoryTest() {
        options.directory = work.file("out");
        options.codesFile = work.write("codes", "4326\n25832\n");
    }

    // Returns the exit code and keeps the printed text in `output` and `error`.
    int runHere() {
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

TEST_F(MakeDirectoryTest, MakesTheThreeFiles) {
    EXPECT_EQ(runHere(), 0);
    EXPECT_EQ(error, "");
    EXPECT_THAT(output, HasSubstr("2 definitions"));
    EXPECT_THAT(work.read("out/epsg"),
                HasSubstr("# ETRS89 / UTM zone 32N; shift EPSG:1149\n<25832> +proj=utm +zone=32"));
    EXPECT_EQ(work.read("out/epsg-axisorder.csv"), "0;en\n4326;ne\n25832;en\n");
    EXPECT_THAT(work.read("out/epsg-info.csv"),
                AllOf(HasSubstr("\n4326,WGS 84,geographic,"), HasSubstr(",-180,-90,180,90,degree,"),
                      HasSubstr("\n25832,ETRS89 / UTM zone 32N,projected,")));
    EXPECT_EQ(listOutput(), (std::set<std::string>{"epsg", "epsg-axisorder.csv", "epsg-info.csv"}));
}

// The content depends on the registry, the program and the options alone.
TEST_F(MakeDirectoryTest, StatesItsOrigin) {
    options.area = Area{5, 45, 15.5, 55};
    options.fit = true;
    EXPECT_EQ(runHere(), 0);
    EXPECT_THAT(work.read("out/epsg"), HasSubstr(", from the database of PROJ "));
    EXPECT_THAT(work.read("out/epsg"), HasSubstr("\n# Made by " + describeOptions(options) + "\n"));
    EXPECT_THAT(describeOptions(options), EndsWith(" --codes --area 5,45,15.5,55 --fit"));
}

TEST_F(MakeDirectoryTest, SelectsByAllOptions) {
    work.write("codes", "4326\n25832\n31467\n3031\n");
    options.configFile = work.write("config",
                                    "<CrsConfiguration><CRS>EPSG:31467</CRS><CRS>4326</CRS>"
                                    "<CRS mapToEpsgCode=\"3031\">polar</CRS></CrsConfiguration>");
    options.area = Area{5, 45, 15, 55};
    EXPECT_EQ(runHere(), 0);
    EXPECT_EQ(work.read("out/epsg-axisorder.csv"), "0;en\n4326;ne\n31467;ne\n");
}

TEST_F(MakeDirectoryTest, NamesAnEntryOfAConfigurationThatTheRegistryLacks) {
    options.codesFile.clear();
    options.configFile = work.write("config", "<CrsConfiguration><CRS>4326</CRS><CRS>999999</CRS></CrsConfiguration>");
    EXPECT_EQ(runHere(), 1);
    EXPECT_EQ(error,
              "crs-projdir: " + options.configFile + ", entry EPSG:999999: the registry has no CRS EPSG:999999\n");
    EXPECT_TRUE(isNothingMade());
}

TEST_F(MakeDirectoryTest, RefusesOptionsThatLeaveNothing) {
    options.area = Area{-30, -89, -29, -88};
    work.write("codes", "25832\n");
    EXPECT_EQ(runHere(), 1);
    EXPECT_THAT(error, HasSubstr("no CRS of the registry matches all options"));
    EXPECT_TRUE(isNothingMade());
}

// Names and definitions do not depend on the installed grids. Only the list shows which are installed.
TEST_F(MakeDirectoryTest, ListsTheGridFilesThatAreNeeded) {
    work.write("codes", "31467\n27700\n");
    options.useGrids = true;
    EXPECT_EQ(runHere(), 0);
    EXPECT_THAT(work.read("out/epsg"), HasSubstr("+nadgrids=de_adv_BETA2007.tif +datum_id=EPSG:6314"));
    EXPECT_THAT(work.read("out/epsg-grids.csv"),
                testing::MatchesRegex(
                    "file,sha256\nde_adv_BETA2007.tif,[0-9a-f]*\nuk_os_OSTN15_NTv2_OSGBtoETRS.tif,[0-9a-f]*\n"));
}

class MakeDirectoryWithoutGridsTest : public MakeDirectoryTest {
protected:
    MakeDirectoryWithoutGridsTest() {
        const std::filesystem::path database = proj_context_get_database_path(ProjContext().get());
        std::filesystem::create_directory(work.file("proj"));
        std::filesystem::copy_file(database, work.file("proj/proj.db"));
    }

    // In a process of its own, as PROJ keeps the files that it has found. An empty path means PROJ's own data.
    std::string makeText(const std::string& projData) {
        const pid_t child = fork();
        if (child == 0) {
            if (!projData.empty()) setenv("PROJ_DATA", projData.c_str(), 1);
            _exit(std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : makeDirectory(options));
        }
        EXPECT_EQ(waitFor(child), 0);
        options.force = true;
        return work.read("out/epsg") + work.read("out/epsg-axisorder.csv") + work.read("out/epsg-info.csv");
    }
};

TEST_F(MakeDirectoryWithoutGridsTest, MakesTheSameBytes) {
    work.write("codes", "4326\n4314\n31467\n27572\n4267\n26741\n4272\n27200\n21781\n4269\n");
    for (const bool useGrids : {false, true}) {
        options.useGrids = useGrids;
        const std::string withGrids = makeText("");
        EXPECT_EQ(makeText(work.file("proj")), withGrids) << useGrids;
    }
    EXPECT_THAT(work.read("out/epsg-grids.csv"), HasSubstr("de_adv_BETA2007.tif,\n"));
}

TEST_F(MakeDirectoryTest, WritesTheReport) {
    options.reportFile = work.file("report");
    EXPECT_EQ(runHere(), 0);
    EXPECT_THAT(work.read("report"), HasSubstr("     2 definitions\n"));
}

TEST_F(MakeDirectoryTest, WritesTheReportInTheFormatOfItsSuffix) {
    for (const auto& [suffix, start] : {std::pair{".json", "{\"registry\": "}, std::pair{".html", "<!DOCTYPE html>"},
                                        std::pair{".txt", "EPSG Geodetic Parameter Dataset"}}) {
        options.reportFile = work.file(std::string("report") + suffix);
        options.force = true;
        EXPECT_EQ(runHere(), 0);
        EXPECT_THAT(work.read(std::string("report") + suffix), StartsWith(start));
    }
}

TEST_F(MakeDirectoryTest, PrintsNothingWhenItIsQuiet) {
    options.quiet = true;
    EXPECT_EQ(runHere(), 0);
    EXPECT_EQ(output + error, "");
    EXPECT_EQ(work.read("out/epsg-axisorder.csv"), "0;en\n4326;ne\n25832;en\n");
    EXPECT_EQ(runHere(), 1);
    EXPECT_NE(error, "");
}

TEST_F(MakeDirectoryTest, MakesTheSameBytesAgain) {
    EXPECT_EQ(runHere(), 0);
    const std::string first = work.read("out/epsg") + work.read("out/epsg-axisorder.csv");
    options.force = true;
    EXPECT_EQ(runHere(), 0);
    EXPECT_EQ(work.read("out/epsg") + work.read("out/epsg-axisorder.csv"), first);
}

TEST_F(MakeDirectoryTest, OverwritesNothingUnlessForced) {
    std::filesystem::create_directory(options.directory);
    for (const char* name : {"out/epsg", "out/epsg-axisorder.csv", "out/epsg-info.csv"}) {
        work.write(name, "mine");
        EXPECT_EQ(runHere(), 1);
        EXPECT_THAT(error, AllOf(HasSubstr(name), HasSubstr("--force")));
        EXPECT_EQ(work.read(name), "mine");
        std::filesystem::remove(work.file(name));
        EXPECT_THAT(work.list(), ElementsAre("codes", "out"));
    }
}

TEST_F(MakeDirectoryTest, OverwritesNoReportUnlessForced) {
    options.reportFile = work.write("report", "mine");
    EXPECT_EQ(runHere(), 1);
    EXPECT_THAT(error, HasSubstr(options.reportFile));
    EXPECT_EQ(work.read("report"), "mine");
    EXPECT_TRUE(isNothingMade());
}

TEST_F(MakeDirectoryTest, NamesACodeThatIsUnknown) {
    work.write("codes", "4326\n999999\n");
    EXPECT_EQ(runHere(), 1);
    EXPECT_EQ(error, "crs-projdir: " + options.codesFile + ", line 2: the registry has no CRS EPSG:999999\n");
    EXPECT_TRUE(isNothingMade());
}

TEST_F(MakeDirectoryTest, NamesEveryListedCodeThatHasNoDefinition) {
    work.write("codes", "4326\n5701\n7400\n");
    EXPECT_EQ(runHere(), 1);
    EXPECT_EQ(output, "");
    EXPECT_THAT(error,
                StartsWith("crs-projdir: " + options.codesFile + " names CRS without a definition:\n  EPSG:5701 "));
    EXPECT_THAT(error, AllOf(HasSubstr(": a vertical CRS has no classic definition\n  EPSG:7400 "),
                             EndsWith("are in degrees\n")));
    EXPECT_TRUE(isNothingMade());
}

TEST_F(MakeDirectoryTest, NamesAListThatCannotBeRead) {
    options.codesFile = work.file("none");
    EXPECT_EQ(runHere(), 1);
    EXPECT_THAT(error, HasSubstr(options.codesFile));
    EXPECT_TRUE(isNothingMade());
}

TEST_F(MakeDirectoryTest, NamesADirectoryThatCannotBeMade) {
    options.directory = work.file("codes");
    EXPECT_EQ(runHere(), 1);
    EXPECT_THAT(error, HasSubstr(options.directory));
}

TEST_F(MakeDirectoryTest, LeavesTheDirectoryWholeWhenTheReportDoesNotFit) {
    options.reportFile = "/dev/full";
    EXPECT_EQ(runHere(), 1);
    EXPECT_EQ(error, "crs-projdir: cannot write \"/dev/full\": No space left on device\n");
    EXPECT_EQ(work.read("out/epsg-axisorder.csv"), "0;en\n4326;ne\n25832;en\n");
}

// At any moment there is either no directory or a complete one.
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
        EXPECT_TRUE(isNothingMade() ||
                    listOutput() == (std::set<std::string>{"epsg", "epsg-axisorder.csv", "epsg-info.csv"}));
    }
    EXPECT_GT(interruptions, 0);
}

// PROJ reads the variables again for every context.
TEST_F(MakeDirectoryTest, NamesADatabaseThatIsMissing) {
    const char* const before = std::getenv("PROJ_DATA");
    const std::string kept = before == nullptr ? "" : before;
    setenv("PROJ_DATA", work.file("nowhere").c_str(), 1);
    EXPECT_EQ(runHere(), 1);
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
