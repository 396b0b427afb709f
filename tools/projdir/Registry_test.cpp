#include "tools/projdir/Registry.h"

#include <algorithm>
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"

namespace ProjDir {
namespace {

using testing::HasSubstr;
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

TEST(RegistryTest, TellsTheKindsApart) {
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

// NTF (Paris), Bern 1898 (Bern) and MGI (Ferro) have the datum on Greenwich that a longitude rotation without an error
// of its own leads to. Tokyo 1892 is on Greenwich itself; Madrid 1870 (Madrid) has no such datum.
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

}  // namespace
}  // namespace ProjDir
