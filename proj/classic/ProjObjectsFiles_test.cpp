// The places of PROJ's files. PROJ remembers opened files by name, so each test uses names of its own.

#include <array>
#include <cmath>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "proj/classic/ProjObjects.h"
#include "tests/support/TemporaryDirectory.h"

namespace ClassicProj {
namespace {

using TestSupport::TemporaryDirectory;

constexpr char GRID[] = "/usr/share/proj/BETA2007.gsb";

// Contexts are never released, as in the library.
PJ_CONTEXT* newContext() {
    static auto& all = *new std::vector<PJ_CONTEXT*>;
    return all.emplace_back(makeContext());
}

bool canShift(const std::string& grid) {
    return makeGridShift(newContext(), "+proj=hgridshift +grids=" + grid) != nullptr;
}

// Sets environment variables, or unsets those with null, until it is destroyed.
class Environment {
public:
    using Variables = std::map<std::string, const char*>;

    explicit Environment(const Variables& variables) {
        for (const auto& [name, value] : variables) {
            const char* const before = std::getenv(name.c_str());
            replaced[name] = before == nullptr ? std::nullopt : std::optional<std::string>(before);
            set(name, value);
        }
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    ~Environment() {
        for (const auto& [name, value] : replaced) set(name, value ? value->c_str() : nullptr);
    }

private:
    static void set(const std::string& name, const char* value) {
        value == nullptr ? unsetenv(name.c_str()) : setenv(name.c_str(), value, 1);
    }

    std::map<std::string, std::optional<std::string>> replaced;
};

class ProjObjectsFilesTest : public testing::Test {
protected:
    void SetUp() override { setSearchDirectories({}); }
    void TearDown() override { setSearchDirectories({}); }

    std::string givenGrid(const std::string& name) const {
        const std::filesystem::path file = directory.file(name);
        std::filesystem::create_directories(file.parent_path());
        std::filesystem::copy_file(GRID, file);
        return file.string();
    }

    const TemporaryDirectory directory;
};

TEST_F(ProjObjectsFilesTest, ComeFromTheConfiguredDirectoryFirst) {
    givenGrid("configured.gsb");
    EXPECT_FALSE(canShift("configured.gsb"));
    setSearchDirectories({directory.name()});
    EXPECT_TRUE(canShift("configured.gsb"));
}

TEST_F(ProjObjectsFilesTest, ComeFromTheDataDirectoryThatTheOperatorNames) {
    givenGrid("of_data.gsb");
    givenGrid("of_lib.gsb");
    EXPECT_FALSE(canShift("of_data.gsb"));
    {
        const Environment environment(Environment::Variables{{"PROJ_DATA", directory.name().c_str()}});
        EXPECT_TRUE(canShift("of_data.gsb"));
    }
    const Environment environment(
        Environment::Variables{{"PROJ_DATA", nullptr}, {"PROJ_LIB", directory.name().c_str()}});
    EXPECT_TRUE(canShift("of_lib.gsb"));
}

TEST_F(ProjObjectsFilesTest, ComeFromWhereADefinitionPutsThem) { EXPECT_TRUE(canShift(givenGrid("absolute.gsb"))); }

TEST_F(ProjObjectsFilesTest, NeverComeFromAUserWritableDirectory) {
    const std::string home = directory.name();
    const std::string data = directory.file("data");
    givenGrid(".local/share/proj/of_home.gsb");
    givenGrid("data/proj/of_xdg.gsb");
    givenGrid("writable/of_user.gsb");
    {
        const Environment environment(Environment::Variables{{"HOME", home.c_str()}, {"XDG_DATA_HOME", nullptr}});
        EXPECT_FALSE(canShift("of_home.gsb"));
    }
    {
        const Environment environment(Environment::Variables{{"XDG_DATA_HOME", data.c_str()}});
        EXPECT_FALSE(canShift("of_xdg.gsb"));
    }
    const std::string writable = directory.file("writable");
    const Environment environment(Environment::Variables{{"PROJ_USER_WRITABLE_DIRECTORY", writable.c_str()}});
    EXPECT_FALSE(canShift("of_user.gsb"));
    setSearchDirectories({writable});
    EXPECT_TRUE(canShift("of_user.gsb"));
}

// Every user may write to "/tmp", which PROJ uses when there is no home directory.
TEST_F(ProjObjectsFilesTest, NeverComeFromTheTemporaryDirectory) {
    const Environment environment(Environment::Variables{{"HOME", nullptr}, {"XDG_DATA_HOME", nullptr}});
    const std::string stranger = "/tmp/proj/coordtrans_" + std::to_string(getpid()) + ".gsb";
    std::error_code ignored;
    const bool isMine = std::filesystem::create_directory("/tmp/proj", ignored);
    std::filesystem::copy_file(GRID, stranger);
    EXPECT_FALSE(canShift(std::filesystem::path(stranger).filename().string()));
    std::filesystem::remove(stranger);
    if (isMine) std::filesystem::remove("/tmp/proj");
}

TEST_F(ProjObjectsFilesTest, NeverComeFromTheWorkingDirectory) {
    givenGrid("working.gsb");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(directory.name());
    const Environment environment(Environment::Variables{{"PROJ_DATA", "."}});
    for (const char* const name : {"working.gsb", "./working.gsb", "../working.gsb"})
        EXPECT_FALSE(canShift(name)) << name;
    std::filesystem::current_path(before);
}

TEST_F(ProjObjectsFilesTest, AreFoundInARelativeDirectoryWhereverTheProcessGoes) {
    givenGrid("relative/there.gsb");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(directory.name());
    setSearchDirectories({"relative"});
    std::filesystem::current_path(before);
    EXPECT_TRUE(canShift("there.gsb"));
}

// A thousand kilometres from the central meridian the results of PROJ's two formulas differ.
double eastingFarOff() {
    const ProjectionPtr projection = makeProjection(newContext(), "+proj=tmerc +lon_0=9 +ellps=GRS80");
    return proj_trans(projection.get(), PJ_FWD, proj_coord(0.8, 0.5, 0, HUGE_VAL)).xyz.x;
}

constexpr char OTHER_FORMULA[] = "[general]\ntmerc_default_algo = evenden_snyder\n";

TEST_F(ProjObjectsFilesTest, IncludeSettingsOfTheConfiguredDirectoryAlone) {
    const double usual = eastingFarOff();
    directory.makeDirectory("proj");
    directory.write("proj/proj.ini", OTHER_FORMULA);
    {
        const Environment environment(Environment::Variables{{"XDG_DATA_HOME", directory.name().c_str()}});
        EXPECT_EQ(eastingFarOff(), usual);
    }
    setSearchDirectories({directory.file("proj")});
    EXPECT_NE(eastingFarOff(), usual);
}

TEST_F(ProjObjectsFilesTest, IncludeADatabaseOfNoStranger) {
    directory.makeDirectory("proj");
    std::filesystem::copy_file("/usr/share/proj/proj.db", directory.file("proj/proj.db"));
    {
        const Environment environment(Environment::Variables{{"XDG_DATA_HOME", directory.name().c_str()}});
        EXPECT_STREQ(proj_context_get_database_path(newContext()), "/usr/share/proj/proj.db");
    }
    setSearchDirectories({directory.file("proj")});
    EXPECT_EQ(proj_context_get_database_path(newContext()), directory.file("proj/proj.db"));
}

TEST_F(ProjObjectsFilesTest, OfADefaultContextAreNotTheLibrarys) {
    directory.makeDirectory("proj");
    const std::string database = directory.file("own.db");
    std::filesystem::copy_file("/usr/share/proj/proj.db", database);
    ASSERT_EQ(proj_context_set_database_path(nullptr, database.c_str(), nullptr, nullptr), 1);
    EXPECT_STREQ(proj_context_get_database_path(newContext()), "/usr/share/proj/proj.db");
    ASSERT_EQ(proj_context_set_database_path(nullptr, nullptr, nullptr, nullptr), 1);
}

bool isOpenAndClosedOnExec(const std::string& name) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        if (std::filesystem::read_symlink(entry, error).filename() != name) continue;
        return (fcntl(std::stoi(entry.path().filename().string()), F_GETFD) & FD_CLOEXEC) != 0;
    }
    return false;
}

TEST_F(ProjObjectsFilesTest, AreClosedWhenTheProcessBecomesAnotherProgram) {
    const std::string grid = givenGrid("closed.gsb");
    const ProjectionPtr shift = makeGridShift(newContext(), "+proj=hgridshift +grids=" + grid);
    ASSERT_NE(shift, nullptr);
    EXPECT_TRUE(isOpenAndClosedOnExec("closed.gsb"));
    EXPECT_TRUE(isOpenAndClosedOnExec("proj.db"));
}

}  // namespace
}  // namespace ClassicProj
