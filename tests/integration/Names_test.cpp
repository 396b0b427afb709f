#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "tests/support/IntegrationServer.h"

// The spellings by which requests name a CRS: which are accepted, as what, and which are refused, and how.
namespace IntegrationTest {
namespace {

enum Order { NORTH_EAST, EAST_NORTH };
enum Holding { OWNED, SHARED };

struct Accepted {
    std::string name;
    unsigned int primary;
    unsigned int secondary;
    unsigned int dim;
    Order order;
    std::string version;
    std::string alias;
    Holding holding;
};

void PrintTo(const Accepted& accepted, std::ostream* stream) { *stream << '"' << accepted.name << '"'; }

// Whose name has no version and is no alias.
Accepted crs(const std::string& name, unsigned int primary, Order order, Holding holding) {
    return {name, primary, 0, 2, order, "", "", holding};
}

Accepted compound(const std::string& name, unsigned int primary, unsigned int secondary, Order order, Holding holding) {
    return {name, primary, secondary, 3, order, "", "", holding};
}

Accepted versioned(Accepted accepted, const std::string& version) {
    accepted.version = version;
    return accepted;
}

Accepted aliased(Accepted accepted) {
    accepted.alias = accepted.name;
    return accepted;
}

class AcceptedNameTest : public testing::TestWithParam<Accepted> {
protected:
    const Server server;
    const Crs handle = server.request(GetParam().name);
};

TEST_P(AcceptedNameTest, IsUnderstood) {
    EXPECT_EQ(handle->getPrimaryCode(), GetParam().primary);
    EXPECT_EQ(handle->getSecCompoundCode(), GetParam().secondary);
    EXPECT_EQ(handle->getDim(), GetParam().dim);
    EXPECT_EQ(handle->isAxisOrderEastNorthOrLonLat(), GetParam().order == EAST_NORTH);
    EXPECT_EQ(handle->getEpsgVersion(), GetParam().version);
    EXPECT_EQ(handle->getAlias(), GetParam().alias);
    EXPECT_EQ(handle->getPrimaryScaleFactor(), 1.0);
    EXPECT_EQ(handle->getCompoundScaleFactor(), 1.0);
}

TEST_P(AcceptedNameTest, SharesWhatIsConfiguredAndOwnsWhatIsNew) {
    const bool shared = GetParam().holding == SHARED;
    EXPECT_EQ(handle.isHoldingConst(), shared);
    EXPECT_EQ(server.config->isCrsConfigured(GetParam().name), shared);
    EXPECT_EQ(server.request(GetParam().name).get() == handle.get(), shared);
}

INSTANTIATE_TEST_SUITE_P(
    Configured, AcceptedNameTest,
    testing::Values(aliased(crs("CRS:84", 4326, EAST_NORTH, SHARED)),
                    aliased(crs("urn:ogc:def:crs:OGC:1.3:CRS84", 4326, EAST_NORTH, SHARED)),
                    aliased(crs("http://www.opengis.net/def/crs/OGC/1.3/CRS84", 4326, EAST_NORTH, SHARED)),
                    aliased(crs("https://www.opengis.net/def/crs/EPSG/0/25832", 25832, EAST_NORTH, SHARED)),
                    aliased(crs("EPSG:900913", 3857, EAST_NORTH, SHARED)),
                    aliased(crs("UTM32", 25832, EAST_NORTH, SHARED)),
                    aliased(crs("UTM32-NE", 25832, NORTH_EAST, SHARED)),
                    aliased(crs("LAEA-EN", 3035, EAST_NORTH, SHARED)),
                    aliased(crs("GK3-EN", 31467, EAST_NORTH, SHARED)),
                    aliased(compound("UTM32-DHHN92", 25832, 5783, EAST_NORTH, SHARED)),
                    crs("EPSG:4326;NE;1", 4326, NORTH_EAST, SHARED),
                    compound("EPSG:27700*EPSG:5701;EN;1;1", 27700, 5701, EAST_NORTH, SHARED)));

INSTANTIATE_TEST_SUITE_P(
    OgcUrns, AcceptedNameTest,
    testing::Values(
        crs("urn:ogc:def:crs:EPSG::4326", 4326, NORTH_EAST, SHARED),
        crs("urn:ogc:def:crs:EPSG::25832", 25832, EAST_NORTH, SHARED),
        versioned(crs("urn:ogc:def:crs:EPSG:6.12:4326", 4326, NORTH_EAST, SHARED), "6.12"),
        versioned(crs("urn:x-ogc:def:crs:EPSG:6.12:4326", 4326, NORTH_EAST, SHARED), "6.12"),
        versioned(crs("urn:ogc:def:crs:EPSG:7.9:4326", 4326, NORTH_EAST, OWNED), "7.9"),
        crs("urn:x-ogc:def:crs:EPSG::4326", 4326, NORTH_EAST, OWNED),
        crs("urn:ogc:def:crs:epsg::4326", 4326, NORTH_EAST, OWNED),
        crs("urn:ogc:def:crs,crs:EPSG::4326", 4326, NORTH_EAST, SHARED),
        crs("urn:ogc:def/crs:EPSG/:25832", 25832, EAST_NORTH, OWNED),
        compound("urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701", 27700, 5701, EAST_NORTH, SHARED),
        compound("urn:ogc:def:crs:EPSG::27700,crs:EPSG::5701", 27700, 5701, EAST_NORTH, SHARED),
        compound("urn:ogc:def:crs,crs:EPSG::4326,crs:EPSG::5783", 4326, 5783, NORTH_EAST, OWNED),
        compound("urn:ogc:def:crs:EPSG::4326,crs:EPSG::5783", 4326, 5783, NORTH_EAST, OWNED),
        versioned(compound("urn:ogc:def:crs,crs:EPSG:6.12:27700,crs:EPSG:6.12:5701", 27700, 5701, EAST_NORTH, OWNED),
                  "6.126.12"),
        versioned(compound("urn:ogc:def:crs:EPSG:6.12:27700,crs:EPSG:6.12:5701", 27700, 5701, EAST_NORTH, SHARED),
                  "6.126.12")));

INSTANTIATE_TEST_SUITE_P(
    Urls, AcceptedNameTest,
    testing::Values(versioned(crs("http://www.opengis.net/def/crs/EPSG/0/4326", 4326, NORTH_EAST, OWNED), "0"),
                    versioned(crs("http://www.opengis.net/def/crs/epsg/6.12/3857", 3857, EAST_NORTH, OWNED), "6.12"),
                    versioned(crs("http:www.opengis.net/def/crs/EPSG/0/4326", 4326, NORTH_EAST, OWNED), "0"),
                    versioned(crs("http:////www.opengis.net/def/crs/EPSG/0/4326", 4326, NORTH_EAST, OWNED), "0"),
                    versioned(compound("http://www.opengis.net/def/crs,crs/EPSG/0/27700,crs/EPSG/0/5701", 27700, 5701,
                                       EAST_NORTH, OWNED),
                              "00")));

INSTANTIATE_TEST_SUITE_P(GmlReferences, AcceptedNameTest,
                         testing::Values(aliased(crs("http://www.opengis.net/gml/srs/epsg.xml#4326", 4326, NORTH_EAST,
                                                     OWNED)),
                                         aliased(crs("epsg.xml#4326", 4326, NORTH_EAST, OWNED)),
                                         aliased(crs("x/epsg.xml#4326/epsg.xml#31467", 31467, NORTH_EAST, OWNED))));

INSTANTIATE_TEST_SUITE_P(
    EpsgCodes, AcceptedNameTest,
    testing::Values(crs("EPSG:4326", 4326, NORTH_EAST, SHARED), crs("4326", 4326, NORTH_EAST, SHARED),
                    crs("EPSG:31467", 31467, NORTH_EAST, SHARED), crs("EPSG: 4326", 4326, NORTH_EAST, OWNED),
                    crs("4326 ", 4326, NORTH_EAST, OWNED), crs("0000000004326", 4326, NORTH_EAST, OWNED),
                    crs("EPSG:000000000000004326", 4326, NORTH_EAST, OWNED),
                    Accepted{"EPSG:4979", 4979, 0, 3, NORTH_EAST, "", "", SHARED},
                    Accepted{"EPSG:4979*EPSG:5783", 4979, 5783, 3, NORTH_EAST, "", "", OWNED},
                    compound("EPSG:27700*EPSG:5701", 27700, 5701, EAST_NORTH, SHARED),
                    compound("27700*5701", 27700, 5701, EAST_NORTH, SHARED),
                    compound("EPSG:4326*EPSG:5783", 4326, 5783, NORTH_EAST, OWNED),
                    compound("EPSG:4326*XXXXX5783", 4326, 5783, NORTH_EAST, OWNED),
                    compound("4326*5783", 4326, 5783, NORTH_EAST, OWNED)));

INSTANTIATE_TEST_SUITE_P(Wfs11Urns, AcceptedNameTest,
                         testing::Values(crs("urn:EPSG:geographicCRS:4326", 4326, NORTH_EAST, SHARED),
                                         crs("urn:EPSG:geographicCRS:3857", 3857, EAST_NORTH, SHARED),
                                         crs("urn:EPSG:geographicCRS: 4326", 4326, NORTH_EAST, OWNED)));

class UnknownNameTest : public testing::TestWithParam<const char*> {
protected:
    const Server server;
};

TEST_P(UnknownNameTest, IsReported) {
    const std::string text = std::string("The requested CRS ") + GetParam() +
                             " is not available due to an unknown syntax or a missing identifier mapping";
    for (const bool checkAllowed : {true, false})
        EXPECT_EQ(raisedBy([&] { server.creator().createFromName(GetParam(), true, checkAllowed); }),
                  (Raised{"CrsUnknownSyntaxOrAlias", text, "qvCrsUnavailable"}));
}

TEST_P(UnknownNameTest, GivesAnEmptyHandleWhereFailuresAreNotWanted) {
    for (const bool checkAllowed : {true, false}) {
        const Crs handle = server.creator().createFromName(GetParam(), false, checkAllowed);
        EXPECT_EQ(handle.get(), nullptr);
        EXPECT_FALSE(handle.isHoldingConst());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Names, UnknownNameTest,
    testing::Values("", " ", "anything", "epsg:4326", " EPSG:4326", "crs:84", "utm32", "EPSG:", "EPSG:4326x",
                    "EPSG:4326 1", "EPSG:-4326", "EPSG:4294967296", "EPSG:4326.0", "12345678901234",
                    "EPSG:4326*EPSG:5783*EPSG:5701", "https://www.opengis.net/def/crs/EPSG/0/4326",
                    "HTTP://www.opengis.net/def/crs/EPSG/0/4326", "http://opengis.net/def/crs/EPSG/0/4326",
                    "http://www.example.org/def/crs/EPSG/0/4326", "http://www.opengis.net",
                    "URN:OGC:DEF:CRS:EPSG::4326", "urn:OGC:def:crs:EPSG::4326", "urn:ogc:def:crs:OGC:1.3:CRS27",
                    "urn:ogc:def:crs:Epsg::4326", "urn:ogc:def:crs:EPSG",
                    "urn:ogc:def:crs:EPSG::", "urn:ogc:def:crs:EPSG:4326", "urn:ogc:def:datum:EPSG::4326",
                    "urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701,crs:EPSG::5783", "epsg.xml#", "epsg.xml#abc",
                    "EPSG.XML#4326", "urn:EPSG:geographicCRS:", "urn:EPSG:geographicCRS:abc",
                    "xurn:EPSG:geographicCRS:4326", "urn:epsg:geographicCRS:4326"));

struct Refused {
    const char* name;
    Raised raised;
};

void PrintTo(const Refused& refused, std::ostream* stream) { *stream << '"' << refused.name << '"'; }

Refused badNumber(const char* name, const std::string& number) {
    return {name, {"ConversionError", "convertTextToNumeric: Value '" + number + "'", "qvConversionError"}};
}

Refused undefined(const char* name, const std::string& code) {
    return {name,
            {"Misconfigured",
             "Failed to configure CRS " + code +
                 ". Please ensure that the CRS is defined properly in the proj4 configuration for QuarvelServer.",
             "qvConfigurationError"}};
}

class RefusedNameTest : public testing::TestWithParam<Refused> {
protected:
    const Server server;
};

TEST_P(RefusedNameTest, IsReportedWhetherOrNotFailuresAreWanted) {
    for (const bool throwOnFailure : {true, false})
        EXPECT_EQ(raisedBy([&] { server.creator().createFromName(GetParam().name, throwOnFailure, true); }),
                  GetParam().raised);
}

INSTANTIATE_TEST_SUITE_P(NumbersThatAreNone, RefusedNameTest,
                         testing::Values(badNumber("urn:ogc:def:crs:EPSG::abc", "abc"),
                                         badNumber("urn:ogc:def:crs:EPSG::-4326", "-4326"),
                                         badNumber("urn:ogc:def:crs:EPSG::4326:5783", "4326:5783"),
                                         badNumber("urn:ogc:def:crs:EPSG::4294967296", "4294967296"),
                                         badNumber("http://www.opengis.net/def/crs/EPSG/0/abc", "abc"),
                                         badNumber("urn:ogc:def:crs:EPSG::abc,crs:EPSG::def", "def")));

INSTANTIATE_TEST_SUITE_P(ACompoundWithoutItsSecondPrefix, RefusedNameTest,
                         testing::Values(Refused{"EPSG:4326*5783",
                                                 {"std::out_of_range", "invalid string position", ""}}));

INSTANTIATE_TEST_SUITE_P(CodesThatAreNotDefined, RefusedNameTest,
                         testing::Values(undefined("EPSG:9999", "9999"), undefined("9999", "9999"),
                                         undefined("urn:ogc:def:crs:EPSG::9999", "9999"),
                                         undefined("EPSG:4294967295", "4294967295"),
                                         undefined("EPSG:9999*EPSG:5783", "9999"),
                                         undefined("http://www.opengis.net/def/crs/EPSG/0/9999", "9999")));

TEST(UndefinedCodeTest, IsReportedEveryTime) {
    const Server server;
    const Raised first = raisedBy([&] { server.known("EPSG:9999"); });
    EXPECT_EQ(first.type, "Misconfigured");
    EXPECT_EQ(raisedBy([&] { server.known("EPSG:9999"); }), first);
    EXPECT_EQ(server.known("EPSG:3395")->getPrimaryCode(), 3395U);
}

class NotOfferedTest : public testing::TestWithParam<const char*> {
protected:
    const Server server;
};

TEST_P(NotOfferedTest, IsRefusedToRequests) {
    const std::string text = std::string("The requested CRS ") + GetParam() + " is not set up in the configuration";
    EXPECT_EQ(raisedBy([&] { server.request(GetParam()); }), (Raised{"CrsNotConfigured", text, "qvCrsUnavailable"}));
    EXPECT_EQ(server.creator().createFromName(GetParam(), false, true).get(), nullptr);
}

TEST_P(NotOfferedTest, IsKnownAllTheSame) { EXPECT_NE(server.known(GetParam()).get(), nullptr); }

INSTANTIATE_TEST_SUITE_P(Names, NotOfferedTest,
                         testing::Values("EPSG:3395", "3395", "urn:ogc:def:crs:EPSG::3395",
                                         "http://www.opengis.net/def/crs/EPSG/0/3395", "epsg.xml#3395",
                                         "urn:EPSG:geographicCRS:3395", "EPSG:3395*EPSG:5783", "EPSG:0"));

// Whether a vertical CRS is offered is not asked.
TEST(OfferedTest, IsACompoundWithAnyVerticalCode) {
    const Server server;
    EXPECT_EQ(server.request("EPSG:25832*EPSG:9999")->getSecCompoundCode(), 9999U);
}

}  // namespace
}  // namespace IntegrationTest
