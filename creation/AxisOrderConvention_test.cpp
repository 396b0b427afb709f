// The axis order of names under both conventions, with the real creator.

#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/CrsCreator.h"
#include "CoordinateTransformation/CrsNotConfigured.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "QSHelpers/ConversionError.h"
#include "tests/support/Failures.h"
#include "tests/support/FakeCrs.h"

namespace CoordinateTransformation {
namespace {

using testing::Contains;
using testing::Not;
using TestSupport::messageOf;

constexpr char PROPERTY[] = "AxisOrderConvention";

using ConfigPtr = std::unique_ptr<CrsConfig>;

ConfigPtr uninitialised(const std::string& convention, const std::string& entries) {
    ConfigPtr config(CrsConfig::createConfigFromId("proj4"));
    config->setConfigProperty("Proj4ConfigDir", COORDTRANS_SOURCE_DIR "/data/proj");
    config->setConfigProperty("AcceptSafeCuries", "true");
    config->setConfigProperty(PROPERTY, convention);
    std::istringstream document("<CrsConfiguration>" + entries + "</CrsConfiguration>");
    config->configure(document);
    return config;
}

ConfigPtr initialised(const std::string& convention, const std::string& entries) {
    ConfigPtr config = uninitialised(convention, entries);
    config->init();
    return config;
}

std::string orderOf(const AbstractCrs& crs) { return crs.isAxisOrderEastNorthOrLonLat() ? "EN" : "NE"; }

std::string orderIn(const CrsConfig& config, const std::string& name) {
    return orderOf(*config.getCreator().createFromName(name, true, true).get());
}

// EPSG puts the latitude or northing of 4326 and 31467 first, and the easting of 25832 and 27700.
constexpr char ENTRIES[] =
    "<CRS>4326</CRS><CRS>CRS:84</CRS><CRS>31467</CRS><CRS>25832</CRS><CRS>EPSG:31467*EPSG:5783</CRS>"
    "<CRS mapToEpsgCode='31467'>GK3</CRS><CRS mapToEpsgCode='31467' axisOrder='EN'>GK3-EN</CRS>"
    "<CRS mapToEpsgCode='25832' axisOrder='NE'>UTM-NE</CRS>";

struct NameOrders {
    const char* name;
    const char* registry;
    const char* established;
};

void PrintTo(const NameOrders& row, std::ostream* stream) { *stream << row.name; }

constexpr NameOrders NAMES[] = {
    {"EPSG:4326", "NE", "EN"},
    {"EPSG:31467", "NE", "EN"},
    {"EPSG:25832", "EN", "EN"},
    {"EPSG:31467*EPSG:5783", "NE", "EN"},
    {"EPSG:4326*EPSG:5783", "NE", "EN"},  // not registered
    {"http://www.opengis.net/gml/srs/epsg.xml#4326", "NE", "EN"},
    {"http://www.opengis.net/gml/srs/epsg.xml#31467", "NE", "EN"},
    {"epsg.xml#4326", "NE", "EN"},
    {"4326", "NE", "NE"},
    {"31467*5783", "NE", "NE"},
    {"04326", "NE", "NE"},  // not registered
    {"[EPSG:4326]", "NE", "NE"},
    {"urn:EPSG:geographicCRS:4326", "NE", "NE"},
    {"urn:ogc:def:crs:EPSG::4326", "NE", "NE"},
    {"urn:ogc:def:crs:EPSG:6.12:4326", "NE", "NE"},
    {"urn:ogc:def:crs:EPSG:9.9:4326", "NE", "NE"},  // not registered
    {"urn:x-ogc:def:crs:EPSG::31467", "NE", "NE"},
    {"urn:ogc:def:crs,crs:EPSG::31467,crs:EPSG::5783", "NE", "NE"},
    {"http://www.opengis.net/def/crs/EPSG/0/4326", "NE", "NE"},
    {"urn:ogc:def:crs:EPSG::25832", "EN", "EN"},
    {"CRS:84", "EN", "EN"},
    {"GK3", "NE", "NE"},
    {"GK3-EN", "EN", "EN"},
    {"UTM-NE", "NE", "NE"},
    {"EPSG:4326;NE;1", "NE", "NE"},
};

class AxisOrderOfNameTest : public testing::TestWithParam<NameOrders> {};

TEST_P(AxisOrderOfNameTest, IsThatOfTheRegistryByDefault) {
    for (const char* const convention : {"", "registry"})
        EXPECT_EQ(orderIn(*initialised(convention, ENTRIES), GetParam().name), GetParam().registry);
}

TEST_P(AxisOrderOfNameTest, FollowsTheConvention) {
    EXPECT_EQ(orderIn(*initialised("established", ENTRIES), GetParam().name), GetParam().established);
}

TEST_P(AxisOrderOfNameTest, IsTheSameAfterAnotherInitialisation) {
    const ConfigPtr config = initialised("established", ENTRIES);
    config->init();
    EXPECT_EQ(orderIn(*config, GetParam().name), GetParam().established);
    CrsConfig other;
    config->merge(other);
    EXPECT_EQ(orderIn(*config, GetParam().name), GetParam().established);
}

TEST_P(AxisOrderOfNameTest, IsGivenToAResponseUnderTheName) {
    for (const auto& [convention, order] :
         {std::pair("registry", GetParam().registry), {"established", GetParam().established}}) {
        const ConfigPtr config = initialised(convention, ENTRIES);
        const CrsCreator& creator = config->getCreator();
        for (const bool eastNorth : {false, true}) {
            Crs requested = creator.createFromName("urn:ogc:def:crs:EPSG::31467", true, true);
            requested.mod()->setAxisOrderEastNorthOrLonLat(eastNorth);
            EXPECT_EQ(orderOf(*creator.createInOrderOf(GetParam().name, *requested.get()).get()), order) << convention;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Names, AxisOrderOfNameTest, testing::ValuesIn(NAMES));

TEST(AxisOrderConventionTest, LeavesEverythingButTheOrderAlone) {
    const ConfigPtr registry = initialised("registry", ENTRIES);
    const ConfigPtr established = initialised("established", ENTRIES);
    EXPECT_EQ(established->getConfiguredCrsIdentifiers(), registry->getConfiguredCrsIdentifiers());
    for (const NameOrders& row : NAMES) {
        const Crs left = registry->getCreator().createFromName(row.name, true, true);
        const Crs right = established->getCreator().createFromName(row.name, true, true);
        EXPECT_EQ(right->getAliasOrIdentifier(true), left->getAliasOrIdentifier(true)) << row.name;
        EXPECT_EQ(right->getAliasOrAsOgcURN(nullptr, true), left->getAliasOrAsOgcURN(nullptr, true)) << row.name;
        EXPECT_EQ(right->getDim(), left->getDim()) << row.name;
        EXPECT_EQ(right.isHoldingConst(), left.isHoldingConst()) << row.name;
        EXPECT_EQ(established->getEntryFor(*right.get())->getAliasOrIdentifier(),
                  registry->getEntryFor(*left.get())->getAliasOrIdentifier())
            << row.name;
    }
}

TEST(AxisOrderConventionTest, RegistersTheTextFormsOfBothOrders) {
    const ConfigPtr registry = initialised("registry", ENTRIES);
    EXPECT_THAT(registry->getRegisteredNames(), Not(Contains("EPSG:4326;EN;1")));
    const ConfigPtr established = initialised("established", ENTRIES);
    EXPECT_EQ(orderIn(*established, "EPSG:4326;EN;1"), "EN");
    EXPECT_EQ(orderIn(*established, "EPSG:4326;NE;1"), "NE");
    EXPECT_THAT(established->getRegisteredNames(), Not(Contains("EPSG:25832;NE;1")));
}

TEST(AxisOrderConventionTest, KeepsTheTextFormAsItIs) {
    const ConfigPtr config = initialised("established", ENTRIES);
    for (const char* const order : {"EN", "NE"}) {
        const Crs crs(config->getCreator().createFromSpecialTextFormat(std::string("EPSG:4326;") + order + ";1"));
        EXPECT_EQ(orderOf(*crs.get()), order);
    }
}

TEST(AxisOrderConventionTest, SharesOneObjectWhereBothOrdersAreTheSame) {
    const ConfigPtr config = initialised("established", ENTRIES);
    EXPECT_EQ(config->getFromNameCache("EPSG:25832", true), config->getFromNameCache("25832", true));
    EXPECT_NE(config->getFromNameCache("EPSG:4326", true), config->getFromNameCache("4326", true));
}

// An alias is a name like any other; its attribute is an exception that somebody has asked for.
TEST(AxisOrderConventionTest, HoldsForAnAliasThatIsSuchAName) {
    const std::string name = "http://www.opengis.net/gml/srs/epsg.xml#31467";
    const ConfigPtr plain = initialised("established", "<CRS mapToEpsgCode='31467'>" + name + "</CRS>");
    EXPECT_EQ(orderIn(*plain, name), "EN");
    const ConfigPtr exception =
        initialised("established", "<CRS mapToEpsgCode='31467' axisOrder='NE'>" + name + "</CRS>");
    EXPECT_EQ(orderIn(*exception, name), "NE");
    const ConfigPtr registry = initialised("registry", "<CRS mapToEpsgCode='31467'>" + name + "</CRS>");
    EXPECT_EQ(orderIn(*registry, name), "NE");
}

TEST(AxisOrderConventionTest, DoesNotHoldForAnAliasWithoutCode) {
    for (const char* const alias : {"EPSG:GK3", "epsg.xml#GK3"}) {
        const std::string entry = std::string("<CRS mapToEpsgCode='31467'>") + alias + "</CRS>";
        EXPECT_EQ(orderIn(*initialised("established", entry), alias), "NE") << alias;
    }
}

TEST(AxisOrderConventionTest, LeavesTheOtherNamesOfAnIdentifierThatIsAnAliasAlone) {
    const ConfigPtr config =
        initialised("established", "<CRS mapToEpsgCode='4326' axisOrder='NE'>EPSG:4326</CRS><CRS>4326</CRS>");
    for (const char* const name : {"EPSG:4326", "urn:ogc:def:crs:EPSG::4326", "4326"})
        EXPECT_EQ(orderIn(*config, name), "NE") << name;
    EXPECT_EQ(orderIn(*config, "epsg.xml#4326"), "EN");
}

TEST(AxisOrderConventionTest, IsRefusedWithoutASenseForIt) {
    for (const char* const value : {"Established", "established ", "true", "EN"}) {
        const ConfigPtr config = uninitialised(value, "<CRS>4326</CRS>");
        EXPECT_EQ(
            messageOf<Misconfigured>([&] { config->init(); }),
            std::string("The property AxisOrderConvention is \"") + value + "\", not \"registry\" or \"established\"");
        EXPECT_FALSE(config->isCrsConfigured("EPSG:4326"));
        EXPECT_THROW(config->initReporting([](auto...) {}), Misconfigured);
    }
}

TEST(AxisOrderConventionTest, IsOfOneConfigurationAlone) {
    const ConfigPtr established = initialised("established", ENTRIES);
    const ConfigPtr registry = initialised("registry", ENTRIES);
    EXPECT_EQ(orderIn(*established, "EPSG:4326"), "EN");
    EXPECT_EQ(orderIn(*registry, "EPSG:4326"), "NE");
}

// 9 degrees east and 50 degrees north, in the order of the name.
TEST(AxisOrderConventionTest, ReachesTheCoordinates) {
    const ConfigPtr config = initialised("established", ENTRIES);
    const CrsCreator& creator = config->getCreator();
    const Crs utm = creator.createFromName("EPSG:25832", true, true);
    for (const char* const name : {"EPSG:4326", "epsg.xml#4326", "urn:ogc:def:crs:EPSG::4326"}) {
        double x = 500000;
        double y = 5538630.7027;
        utm->transformTo(creator.createFromName(name, true, true).get(), x, y);
        const bool isEastFirst = std::string(name).rfind("urn", 0) != 0;
        EXPECT_NEAR(x, isEastFirst ? 9 : 50, 1e-8) << name;
        EXPECT_NEAR(y, isEastFirst ? 50 : 9, 1e-8) << name;
    }
}

TEST(CreateInOrderOfTest, ChangesNothingButTheOrder) {
    const ConfigPtr config = initialised("established", ENTRIES);
    const CrsCreator& creator = config->getCreator();
    Crs requested = creator.createFromName("EPSG:31467*EPSG:5783", true, true);
    requested.mod()->setScaleFactors(2, 3);
    const Crs written = creator.createInOrderOf("urn:ogc:def:crs:EPSG::4326", *requested.get());
    EXPECT_FALSE(written.isHoldingConst());
    EXPECT_FALSE(written->isAxisOrderEastNorthOrLonLat());
    EXPECT_TRUE(requested->isAxisOrderEastNorthOrLonLat());
    Crs back = written;
    back.mod()->setAxisOrderEastNorthOrLonLat(true);
    EXPECT_TRUE(*back.get() == *requested.get());
    EXPECT_EQ(written->getPrimaryScaleFactor(), 2);
    EXPECT_EQ(written->getCompoundScaleFactor(), 3);
}

TEST(CreateInOrderOfTest, LeavesTheOrderUnderATextThatIsNotAName) {
    const ConfigPtr config = initialised("established", ENTRIES);
    const CrsCreator& creator = config->getCreator();
    for (const char* const name : {"EPSG:4326", "urn:ogc:def:crs:EPSG::4326"}) {
        const Crs crs = creator.createFromName(name, true, true);
        for (const char* const text : {"", "https://example.org/crs/4326", "EPSG:x"})
            EXPECT_TRUE(*creator.createInOrderOf(text, *crs.get()).get() == *crs.get()) << name << " as " << text;
    }
}

TEST(CreateInOrderOfTest, FailsAsTheNameDoes) {
    const ConfigPtr config = initialised("registry", ENTRIES);
    const Crs crs = config->getCreator().createFromName("EPSG:4326", true, true);
    EXPECT_THROW(config->getCreator().createInOrderOf("urn:ogc:def:crs:EPSG::x", *crs.get()),
                 QSHelpers::ConversionError);
    EXPECT_THROW(config->getCreator().createInOrderOf("EPSG:999999", *crs.get()), Misconfigured);
}

// A creator that reads no configuration follows the registry.
TEST(AxisOrderConventionTest, IsThatOfTheRegistryForACreatorWithoutConfiguration) {
    TestSupport::FakeCreator creator;
    const Crs crs = creator.createFromName("EPSG:4326", true, false);
    EXPECT_EQ(orderOf(*crs.get()), orderOf(*creator.createFromName("urn:ogc:def:crs:EPSG::4326", true, false).get()));
}

}  // namespace
}  // namespace CoordinateTransformation
