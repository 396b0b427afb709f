#include "tools/projdir/Registry.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"
#include "tools/projdir/Commands.h"

namespace ProjDir {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const RegistryCrs& findCrs(const std::vector<RegistryCrs>& registry, unsigned int code) {
    const auto found =
        std::find_if(registry.begin(), registry.end(), [&](const auto& crs) { return crs.code == code; });
    if (found == registry.end()) throw std::runtime_error("no CRS " + std::to_string(code));
    return *found;
}

TEST(RegistryTest, KnowsItsVersion) {
    const ProjContext context;
    const RegistryVersion version = readRegistryVersion(context);
    EXPECT_THAT(version.dataset, StartsWith("v"));
    EXPECT_THAT(version.date, testing::MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}"));
    EXPECT_THAT(version.proj, HasSubstr("."));
}

TEST(RegistryTest, ListsEveryCodeOnceInOrder) {
    const ProjContext context;
    const auto registry = readRegistry(context);
    EXPECT_GT(registry.size(), 6000U);
    EXPECT_TRUE(std::adjacent_find(registry.begin(), registry.end(),
                                   [](const auto& a, const auto& b) { return a.code >= b.code; }) == registry.end());
}

TEST(RegistryTest, DistinguishesTheKinds) {
    const ProjContext context;
    const auto registry = readRegistry(context);
    EXPECT_EQ(findCrs(registry, 4326).kind, CrsKind::GEOGRAPHIC);
    EXPECT_EQ(findCrs(registry, 4979).kind, CrsKind::GEOGRAPHIC);
    EXPECT_EQ(findCrs(registry, 4978).kind, CrsKind::GEOCENTRIC);
    EXPECT_EQ(findCrs(registry, 25832).kind, CrsKind::PROJECTED);
    EXPECT_EQ(findCrs(registry, 5701).kind, CrsKind::VERTICAL);
    EXPECT_EQ(findCrs(registry, 7405).kind, CrsKind::COMPOUND);
    EXPECT_STREQ(nameOfKind(findCrs(registry, 25832).kind), "projected");
}

TEST(RegistryTest, HasNamesAreasAndDeprecations) {
    const ProjContext context;
    const auto registry = readRegistry(context);
    const RegistryCrs& rd = findCrs(registry, 28992);
    EXPECT_EQ(rd.name, "Amersfoort / RD New");
    EXPECT_FALSE(rd.isDeprecated);
    ASSERT_TRUE(rd.area);
    EXPECT_GT(rd.area->west, 3);
    EXPECT_LT(rd.area->north, 54);
    EXPECT_TRUE(findCrs(registry, 25838).isDeprecated);
}

TEST(RegistryTest, NamesACrsThatCannotBeMade) {
    const ProjContext context;
    try {
        createCrs(context, 999999);
        FAIL() << "opened";
    } catch (const RegistryError& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("EPSG:999999"));
    }
}

TEST(RegistryTest, TakesTheDatabaseForSoundUntilPROJFailsOverIt) {
    const ProjContext context;
    readRegistry(context);
    const ProjPtr<PJ> crs = createCrs(context, 5701);
    proj_as_proj_string(context.get(), createCrs(context, 2193).get(), PJ_PROJ_4, nullptr);
    EXPECT_NO_THROW(requireSoundDatabase(context, "here"));
    EXPECT_EQ(proj_create_from_database(context.get(), "EPSG", "999999", PJ_CATEGORY_CRS, 0, nullptr), nullptr);
    EXPECT_THROW(requireSoundDatabase(context, "here"), RegistryError);
}

TEST(RegistryTest, NamesTheDatabaseThatIsMissing) {
    const TestSupport::TemporaryDirectory empty;
    const ProjContext context;
    const std::string& name = empty.name();
    const char* const directories[] = {name.c_str()};
    proj_context_set_search_paths(context.get(), 1, directories);
    try {
        readRegistryVersion(context);
        FAIL() << "accepted";
    } catch (const RegistryError& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("proj.db"));
    }
}

struct Link {
    unsigned int code;
    const char* datumId;
    unsigned int geodeticCode;
    unsigned int horizontalCode;
};

// An exact longitude rotation leads from NTF (Paris), Bern 1898 (Bern) and MGI (Ferro) to a datum on Greenwich. Tokyo
// 1892 is on Greenwich itself, and Madrid 1870 (Madrid) has no such datum.
TEST(RegistryLinksTest, LeadToDatumBaseAndHorizontalPart) {
    const ProjContext context;
    std::map<unsigned int, RegistryCrs> byCode;
    for (const RegistryCrs& crs : readRegistry(context)) byCode[crs.code] = crs;
    for (const Link& row :
         {Link{4258, "EPSG:6258", 4258, 0}, Link{25832, "EPSG:6258", 4258, 0}, Link{4979, "EPSG:6326", 4979, 0},
          Link{4807, "EPSG:6275", 4807, 0}, Link{27572, "EPSG:6275", 4807, 0}, Link{4801, "EPSG:6149", 4801, 0},
          Link{4805, "EPSG:6312", 4805, 0}, Link{5132, "EPSG:1048", 5132, 0}, Link{4903, "EPSG:6903", 4903, 0},
          Link{7405, "EPSG:6277", 4277, 27700}, Link{5701, "", 0, 0}}) {
        const RegistryCrs& crs = byCode.at(row.code);
        EXPECT_EQ(crs.datum.id, row.datumId) << row.code;
        EXPECT_EQ(crs.geodeticCode, row.geodeticCode) << row.code;
        EXPECT_EQ(crs.horizontal == nullptr ? 0 : crs.horizontal->code, row.horizontalCode) << row.code;
    }
    EXPECT_EQ(byCode.at(27572).datum.name, byCode.at(4275).datum.name);
    EXPECT_EQ(byCode.at(4258).areaName.substr(0, 6), "Europe");
}

constexpr std::size_t PAGE = 4096;

std::string readDatabase() {
    const ProjContext context;
    const std::ifstream file(proj_context_get_database_path(context.get()), std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

// The program with a database of the test.
class DatabaseTest : public testing::Test {
protected:
    DatabaseTest() { options.codesFile = work.write("codes", "25832\n27700\n"); }

    // In a process of its own, as PROJ keeps the variable and every database that it has opened.
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

TEST_F(DatabaseTest, IsNamedWhenItIsNotADatabase) {
    EXPECT_EQ(runOn("no database\n"), 1);
    EXPECT_THAT(error, AllOf(StartsWith("crs-projdir: PROJ finds no usable database proj.db"),
                             HasSubstr(work.file("proj")), HasSubstr("file is not a database")));
    EXPECT_TRUE(isNothingMade());
}

// The lengths are equal, so the pages remain valid.
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
