#include <memory>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/IntegrationServer.h"

// Starts a server, runs two of them in one process, and shuts them down.
namespace IntegrationTest {
namespace {

using CoordinateTransformation::CrsConfigData;
using testing::ElementsAre;

Server givenServer(const std::string& entries) {
    return Server(std::istringstream("<SRSList>" + entries + "</SRSList>"));
}

TEST(StartUpTest, ConfiguresEveryEntry) {
    const Server server;
    EXPECT_FALSE(server.config->getConfiguredCrs()->empty());
    for (const CrsConfigData& entry : *server.config->getConfiguredCrs()) {
        EXPECT_TRUE(server.config->isCrsConfigured(entry.getAliasOrIdentifier())) << entry.getAliasOrIdentifier();
        EXPECT_EQ(server.config->getConfiguredCrsIdentifiers().count(entry.getAliasOrIdentifier()), 1U);
    }
}

TEST(StartUpTest, OffersOnlyConfiguredCodesAndNames) {
    const Server server = givenServer("<SRS>4326</SRS><SRS>CRS:84</SRS><SRS>EPSG:27700*EPSG:5701</SRS>");
    EXPECT_THAT(server.config->getConfiguredCrsIdentifiers(),
                ElementsAre("27700", "4326", "CRS:84", "EPSG:27700*EPSG:5701", "EPSG:4326"));
    EXPECT_TRUE(server.config->isCrsConfigured(27700U));
    EXPECT_FALSE(server.config->isCrsConfigured(5701U));
    EXPECT_FALSE(server.config->isCrsConfigured(25832U));
}

TEST(StartUpTest, KeepsTheOutputSettingsForTheServer) {
    const Server server;
    for (const CrsConfigData& entry : *server.config->getConfiguredCrs()) {
        if (entry.getAliasOrIdentifier() != "EPSG:25832") continue;
        EXPECT_EQ(entry.getNumberOfDecimalPlaces().value_or(-1), 3);
        EXPECT_TRUE(entry.getPreventDoubleCoordinateOutput());
        return;
    }
    FAIL() << "EPSG:25832 is not configured";
}

TEST(StartUpTest, WorksWithoutAnyEntry) {
    const Server server{std::istringstream()};
    EXPECT_THAT(server.config->getConfiguredCrsIdentifiers(), testing::IsEmpty());
    EXPECT_EQ(server.known("EPSG:25832")->getPrimaryCode(), 25832U);
    EXPECT_EQ(raisedBy([&] { server.request("EPSG:25832"); }).type, "CrsNotConfigured");
}

TEST(StartUpTest, ReadsTheDirectoryFromTheEnvironment) {
    setenv("QUARVELSRV_PROJ4_CONF_DIR", COORDTRANS_SOURCE_DIR "/data/proj", 1);
    const std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
    config->addCrsConfigData(CrsConfigData("EPSG:4326"));
    config->init();
    unsetenv("QUARVELSRV_PROJ4_CONF_DIR");
    EXPECT_TRUE(config->isCrsConfigured("urn:ogc:def:crs:EPSG::4326"));
}

TEST(StartUpTest, RefusesAnotherSubsystem) {
    setenv("USE_COORD_TRANSFORMATION_SUBSYSTEM", "", 1);
    const Raised raised = raisedBy([] { CrsConfig::createDefaultConfigOrFromEnvVar(); });
    unsetenv("USE_COORD_TRANSFORMATION_SUBSYSTEM");
    EXPECT_EQ(raised, (Raised{"Misconfigured", "The coordinate transformation subsystem  is unknown and not available!",
                              "qvConfigurationError"}));
}

TEST(StartUpTest, FailsAtTheFirstUndefinedEntry) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
    config->setConfigProperty("Proj4ConfigDir", COORDTRANS_SOURCE_DIR "/data/proj");
    config->addCrsConfigData(CrsConfigData("EPSG:4326"));
    config->addCrsConfigData(CrsConfigData("EPSG:9999"));
    EXPECT_EQ(raisedBy([&] { config->init(); }).type, "Misconfigured");
    EXPECT_TRUE(config->isCrsConfigured("EPSG:4326"));
    EXPECT_FALSE(config->isCrsConfigured("EPSG:9999"));
}

TEST(StartUpTest, ReportsTheTextOfAnUnknownEntry) {
    EXPECT_EQ(
        raisedBy([] { givenServer("<SRS>urn:ogc:def:crs:EPSG::4326</SRS>"); }),
        (Raised{"Misconfigured", "The EPSG code \"URN:OGC:DEF:CRS:EPSG::4326\" is unknown", "qvConfigurationError"}));
}

TEST(SecondConfigurationTest, KeepsTheDirectoryOfTheFirst) {
    const Server first;
    const std::unique_ptr<CrsConfig> second(CrsConfig::createConfigFromId("proj4"));
    second->setConfigProperty("Proj4ConfigDir", "/no/such/directory");
    second->addCrsConfigData(CrsConfigData("EPSG:3395"));
    second->init();
    EXPECT_TRUE(second->isCrsConfigured(3395U));
    EXPECT_FALSE(first.config->isCrsConfigured(3395U));
}

TEST(SecondConfigurationTest, SharesTransformationWithTheFirst) {
    const Server first;
    auto second = std::make_unique<Server>();
    double x = 52;
    double y = 9;
    first.request("EPSG:4326")->transformTo(second->request("EPSG:25832").get(), x, y);
    second.reset();
    EXPECT_NEAR(x, 500000, 1e-5);
    first.request("EPSG:25832")->transformTo(first.request("EPSG:4326").get(), x, y);
    EXPECT_NEAR(x, 52, 1e-10);
}

TEST(MergeTest, OffersTheCrsOfBothOnEach) {
    const Server first = givenServer("<SRS>4326</SRS><SRS mapToEpsgCode='25832'>UTM32</SRS>");
    const Server second = givenServer("<SRS>3857</SRS><SRS>4326</SRS>");
    first.config->merge(*second.config);
    for (const Server* const server : {&first, &second})
        for (const char* const name : {"EPSG:4326", "UTM32", "urn:ogc:def:crs:EPSG::3857"})
            EXPECT_TRUE(server->request(name).isHoldingConst()) << name;
}

TEST(ShutDownTest, LeavesOwnedCrsUsable) {
    auto server = std::make_unique<Server>();
    const Crs owned = server->request("http://www.opengis.net/def/crs/EPSG/0/4326");
    ASSERT_FALSE(owned.isHoldingConst());
    server.reset();
    EXPECT_EQ(owned->getAliasOrIdentifier(false), "EPSG:4326");
}

TEST(ShutDownTest, AllowsAnotherStart) {
    for (int i = 0; i < 3; ++i) {
        const Server server;
        EXPECT_EQ(server.request("UTM32")->getPrimaryCode(), 25832U);
    }
}

}  // namespace
}  // namespace IntegrationTest
