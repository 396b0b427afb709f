#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"
#include "tools/projdir/MakeDirectory.h"
#include "tools/projdir/ProjContext.h"

namespace ProjDir {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr std::size_t PAGE = 4096;

std::string readDatabase() {
    const ProjContext context;
    const std::ifstream file(proj_context_get_database_path(context.get()), std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

// The program on a database of the test's own.
class DatabaseTest : public testing::Test {
protected:
    DatabaseTest() { options.codesFile = work.write("codes", "25832\n27700\n"); }

    // In a process of its own: PROJ keeps the variable and the databases that it has once met.
    int runOn(const std::string& database) {
        std::filesystem::remove_all(options.directory = work.file("out"));
        std::filesystem::create_directory(work.file("proj"));
        work.write("proj/proj.db", database);
        const pid_t child = fork();
        if (child == 0) _exit(runHere());
        int status = 0;
        waitpid(child, &status, 0);
        error = work.read("error");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    int runHere() const {
        const bool isReady = std::freopen("/dev/null", "w", stdout) != nullptr &&
                             std::freopen(work.file("error").c_str(), "w", stderr) != nullptr &&
                             setenv("PROJ_DATA", work.file("proj").c_str(), 1) == 0;
        const int exitCode = isReady ? makeDirectory(options) : -1;
        std::fflush(nullptr);
        return exitCode;
    }

    bool isNothingMade() const { return !std::filesystem::exists(options.directory); }
    std::string made() const { return work.read("out/epsg") + work.read("out/epsg-axisorder.csv"); }

    TestSupport::TemporaryDirectory work;
    Options options;
    std::string error;
};

TEST_F(DatabaseTest, IsNamedWhereAPageIsDamaged) {
    const std::string sound = readDatabase();
    ASSERT_EQ(runOn(sound), 0) << error;
    const std::size_t pages = sound.size() / PAGE;
    for (std::size_t i = 1; i < 16; ++i) {
        std::string damaged = sound;
        damaged.replace(pages * i / 16 * PAGE, PAGE, std::string(PAGE, i % 2 == 0 ? '\0' : '\xFF'));
        EXPECT_EQ(runOn(damaged), 1) << "page " << pages * i / 16;
        EXPECT_THAT(error, AllOf(StartsWith("crs-projdir: PROJ"), HasSubstr("proj.db")));
        EXPECT_TRUE(isNothingMade());
    }
}

TEST_F(DatabaseTest, IsNamedWhenItIsCutOff) {
    const std::string sound = readDatabase();
    for (const double part : {0.0, 0.001, 0.25, 0.5, 0.75, 0.999}) {
        EXPECT_EQ(
            runOn(sound.substr(0, static_cast<std::size_t>(std::floor(part * static_cast<double>(sound.size()))))), 1);
        EXPECT_THAT(error, AllOf(StartsWith("crs-projdir: PROJ"), HasSubstr("proj.db")));
        EXPECT_TRUE(isNothingMade());
    }
}

TEST_F(DatabaseTest, IsNamedWhenItIsNone) {
    EXPECT_EQ(runOn("no database\n"), 1);
    EXPECT_THAT(error, AllOf(StartsWith("crs-projdir: PROJ finds no usable database proj.db"),
                             HasSubstr(work.file("proj")), HasSubstr("file is not a database")));
    EXPECT_TRUE(isNothingMade());
}

// Of equal length, so that the pages stay sound.
std::string withNameReplaced(std::string database, const std::string& name, const std::string& by) {
    for (std::size_t at = database.find(name); at != std::string::npos; at = database.find(name, at + 1))
        database.replace(at, name.size(), by);
    return database;
}

TEST_F(DatabaseTest, AddsNoEntryByAName) {
    options.codesFile = work.write("codes", "25832\n");
    const std::string name = "ETRS89 / UTM zone 32N";
    const std::string entry = "x\n<666> +proj=merc <>\n";
    ASSERT_EQ(runOn(withNameReplaced(readDatabase(), name, entry.substr(0, name.size()))), 0) << error;
    EXPECT_THAT(made(), AllOf(HasSubstr("\n# x <666> +proj=merc <>"), Not(HasSubstr("\n<666>"))));
}

}  // namespace
}  // namespace ProjDir
