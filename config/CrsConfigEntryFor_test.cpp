#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/CrsConfigData.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "tests/support/JournaledConfig.h"

namespace CoordinateTransformation {
namespace {

// "alias=identifier", "identifier", or "" for null.
std::string written(const CrsConfigData* entry) {
    if (entry == nullptr) return "";
    return (entry->isMapped() ? entry->getAlias() + "=" : "") + entry->getIdentifier();
}

class EntryForTest : public testing::Test {
protected:
    // Of the CRS that a request names so.
    std::string entryOf(const std::string& name) const {
        const Crs crs = server.creator->createFromName(name, false, false);
        return written(server.config.getEntryFor(*crs.get()));
    }
    std::string entryOf(unsigned int primary, unsigned int secondary, const std::string& alias) const {
        const std::unique_ptr<AbstractCrs> crs(server.creator->createFromCode(primary, secondary, true));
        crs->setAlias(alias);
        return written(server.config.getEntryFor(*crs));
    }

    JournaledConfig server;
};

TEST_F(EntryForTest, IsTheSameForEverySpelling) {
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS>EPSG:27700*EPSG:5701</CRS>"});
    for (const char* const name :
         {"EPSG:4326", "4326", "urn:ogc:def:crs:EPSG::4326", "urn:ogc:def:crs:EPSG:7.1:4326",
          "http://www.opengis.net/def/crs/EPSG/0/4326", "http://www.opengis.net/gml/srs/epsg.xml#4326",
          "urn:EPSG:geographicCRS:4326", "EPSG:4326;NE;1"})
        EXPECT_EQ(entryOf(name), "EPSG:4326") << name;
    for (const char* const name :
         {"27700*5701", "urn:ogc:def:crs,crs:EPSG:1:27700,crs:EPSG:1:5701", "EPSG:27700*EPSG:5701"})
        EXPECT_EQ(entryOf(name), "EPSG:27700*EPSG:5701") << name;
}

TEST_F(EntryForTest, IsTheOneWithTheAlias) {
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS>CRS:84</CRS>", "<CRS mapToEpsgCode=\"4326\">WGS84</CRS>",
                             "<CRS mapToEpsgCode=\"31467\">GK3</CRS>"});
    for (const char* const name : {"CRS:84", "WGS84"}) EXPECT_EQ(entryOf(name), name + std::string("=EPSG:4326"));
    EXPECT_EQ(entryOf("GK3"), "GK3=EPSG:31467");
}

TEST_F(EntryForTest, NeedsTheCodesBesideTheAlias) {
    server.givenInitialised({"<CRS mapToEpsgCode=\"31467\">GK</CRS>", "<CRS mapToEpsgCode=\"31468\">GK</CRS>"});
    EXPECT_EQ(entryOf(31467, 0, "GK"), "GK=EPSG:31467");
    EXPECT_EQ(entryOf(31468, 0, "GK"), "GK=EPSG:31468");
    EXPECT_EQ(entryOf(31469, 0, "GK"), "");
}

TEST_F(EntryForTest, IsTheOneWithoutAliasForAnAliasThatIsNotConfigured) {
    server.givenInitialised({"<CRS mapToEpsgCode=\"4326\">WGS84</CRS>", "<CRS>4326</CRS>"});
    EXPECT_EQ(entryOf("epsg.xml#4326"), "EPSG:4326");
    EXPECT_EQ(entryOf("EPSG:4326"), "EPSG:4326");
}

TEST_F(EntryForTest, IsTheFirstMappedOneWhenAllAreMapped) {
    server.givenInitialised({"<CRS mapToEpsgCode=\"4326\">Z</CRS>", "<CRS mapToEpsgCode=\"4326\">A</CRS>"});
    EXPECT_EQ(entryOf("EPSG:4326"), "Z=EPSG:4326");
}

TEST_F(EntryForTest, PrefersTheSecondaryCodeToTheAlias) {
    server.givenInitialised({"<CRS mapToEpsgCode=\"EPSG:31467*EPSG:5783\">GK3</CRS>", "<CRS>31467</CRS>"});
    EXPECT_EQ(entryOf(31467, 0, "GK3"), "EPSG:31467");
    EXPECT_EQ(entryOf(31467, 5783, ""), "GK3=EPSG:31467*EPSG:5783");
}

// As the primary code alone decides whether the server offers a CRS.
TEST_F(EntryForTest, IsThatOfThePrimaryCodeWhenTheCompoundIsNotConfigured) {
    server.givenInitialised({"<CRS>27700</CRS>", "<CRS>EPSG:31467*EPSG:5783</CRS>"});
    EXPECT_EQ(entryOf("27700*5701"), "EPSG:27700");
    EXPECT_EQ(entryOf("EPSG:31467"), "EPSG:31467*EPSG:5783");
}

TEST_F(EntryForTest, IsNullForACrsThatIsNotConfigured) {
    server.givenInitialised({"<CRS>4326</CRS>"});
    EXPECT_EQ(entryOf("EPSG:4258"), "");
    EXPECT_EQ(entryOf(0, 0, ""), "");
}

TEST_F(EntryForTest, IsNullBeforeInitialisation) {
    server.givenConfigured({"<CRS>4326</CRS>"});
    EXPECT_EQ(entryOf("EPSG:4326"), "");
}

TEST_F(EntryForTest, IsTheEntryOfTheListForAsLongAsTheConfigurationLives) {
    server.givenInitialised({"<CRS>4326</CRS>"});
    const Crs crs = server.creator->createFromName("4326", false, false);
    const CrsConfigData* const entry = server.config.getEntryFor(*crs.get());
    EXPECT_EQ(entry, &server.config.getConfiguredCrs()->front());
    server.givenConfigured({"<CRS>25832</CRS>"});
    server.config.reinit();
    EXPECT_EQ(entryOf("EPSG:25832"), "EPSG:25832");
    EXPECT_EQ(server.config.getEntryFor(*server.named("4326")), entry);
}

TEST_F(EntryForTest, IsNullAfterAFailedReinitialisation) {
    server.givenInitialised({"<CRS>4326</CRS>"});
    server.creator->onInit = [] { throw Misconfigured("no directory"); };
    EXPECT_THROW(server.config.reinit(), Misconfigured);
    EXPECT_EQ(entryOf("EPSG:4326"), "");
}

}  // namespace
}  // namespace CoordinateTransformation
