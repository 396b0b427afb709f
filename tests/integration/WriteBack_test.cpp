#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "QuarvelSrv/SrsFormattingOptions.h"
#include "tests/support/IntegrationServer.h"

// What is written out is read again as the same CRS.
namespace IntegrationTest {
namespace {

using CoordinateTransformation::CRSindicationFormatInfo;
using QuarvelSrv::SrsFormattingOptions;
using Writer = std::function<std::string(const AbstractCrs&)>;

std::string identifier(const AbstractCrs& crs) { return crs.getAliasOrIdentifier(false); }
std::string identifierOrAlias(const AbstractCrs& crs) { return crs.getAliasOrIdentifier(true); }
std::string urn(const AbstractCrs& crs) { return crs.getAliasOrAsOgcURN(nullptr, false); }
std::string urnOrAlias(const AbstractCrs& crs) { return crs.getAliasOrAsOgcURN(nullptr, true); }

Writer withOptions(const SrsFormattingOptions& options) {
    return [options](const AbstractCrs& crs) { return crs.getAliasOrAsOgcURN(&options, false); };
}

Writer inFormat(unsigned int format, const std::string& version) {
    return [=](const AbstractCrs& crs) {
        return crs.getAliasOrAsFormat({format, version, "http://www.opengis.net/gml/srs/epsg.xml", "\x01", "\x01"},
                                      false);
    };
}

struct Written {
    const char* behaviour;
    const char* requested;
    Writer write;
    const char* text;
};

void PrintTo(const Written& written, std::ostream* stream) {
    *stream << written.behaviour << " of " << written.requested;
}

class WriteBackTest : public testing::TestWithParam<Written> {
protected:
    const Server server;
    const Crs crs = server.request(GetParam().requested);
};

TEST_P(WriteBackTest, WritesTheForm) { EXPECT_EQ(GetParam().write(*crs.get()), GetParam().text); }

TEST_P(WriteBackTest, ReadsTheFormAgain) {
    const Crs again = server.request(GetParam().write(*crs.get()));
    EXPECT_EQ(again->getPrimaryCode(), crs->getPrimaryCode());
    EXPECT_EQ(again->getSecCompoundCode(), crs->getSecCompoundCode());
    EXPECT_EQ(again->getDim(), crs->getDim());
    EXPECT_EQ(again->isAxisOrderEastNorthOrLonLat(), crs->isAxisOrderEastNorthOrLonLat());
    EXPECT_TRUE(again->isCompatible(crs.get()));
}

INSTANTIATE_TEST_SUITE_P(
    Simple, WriteBackTest,
    testing::Values(
        Written{"identifier", "urn:ogc:def:crs:EPSG::4326", identifier, "EPSG:4326"},
        Written{"URN", "EPSG:4326", urn, "urn:ogc:def:crs:EPSG::4326"},
        Written{"URN with its version", "urn:ogc:def:crs:EPSG:7.9:25832", urn, "urn:ogc:def:crs:EPSG:7.9:25832"},
        Written{"URN with another version", "EPSG:25832", withOptions({"6.12", "", 0}),
                "urn:ogc:def:crs:EPSG:6.12:25832"},
        Written{"URL", "EPSG:25832", withOptions({"", "", 2}), "http://www.opengis.net/def/crs/EPSG/0/25832"},
        Written{"URL with another version", "EPSG:3857", withOptions({"8.5", "", 2}),
                "http://www.opengis.net/def/crs/EPSG/8.5/3857"},
        Written{"prefixed code", "4979", withOptions({"", "EPSG:", 2}), "EPSG:4979"},
        Written{"WFS 1.1 URN", "31467", withOptions({"", "urn:EPSG:geographicCRS:", 0}),
                "urn:EPSG:geographicCRS:31467"},
        Written{"format 0", "EPSG:4326", inFormat(0, ""), "urn:ogc:def:crs:EPSG::4326"},
        Written{"format 1", "EPSG:4326", inFormat(1, ""), "http://www.opengis.net/gml/srs/epsg.xml#4326"},
        Written{"format 2", "EPSG:4326", inFormat(2, "6.12"), "http://www.opengis.net/def/crs/EPSG/6.12/4326"},
        Written{"format 3", "EPSG:4326", inFormat(3, "6.12"), "EPSG:4326"},
        Written{"alias as identifier", "CRS:84", identifierOrAlias, "CRS:84"},
        Written{"alias as URN", "UTM32-NE", urnOrAlias, "UTM32-NE"},
        Written{"reference as URN", "epsg.xml#25832", urnOrAlias, "epsg.xml#25832"}));

INSTANTIATE_TEST_SUITE_P(Compound, WriteBackTest,
                         testing::Values(Written{"identifier", "27700*5701", identifier, "EPSG:27700*EPSG:5701"},
                                         Written{"URN", "31467*5783", urn,
                                                 "urn:ogc:def:crs,crs:EPSG::31467,crs:EPSG::5783"},
                                         Written{"URN with another version", "31467*5783", withOptions({"8.5", "", 1}),
                                                 "urn:ogc:def:crs,crs:EPSG:8.5:31467,crs:EPSG:8.5:5783"},
                                         Written{"URL", "27700*5701", withOptions({"", "", 2}),
                                                 "http://www.opengis.net/def/crs,crs/EPSG/0/27700,crs/EPSG/0/5701"},
                                         Written{"format 2", "27700*5701", inFormat(2, "8.5"),
                                                 "http://www.opengis.net/def/crs,crs/EPSG/8.5/27700,crs/EPSG/8.5/5701"},
                                         Written{"format 3", "27700*5701", inFormat(3, ""), "EPSG:27700*EPSG:5701"},
                                         Written{"alias as URN", "UTM32-DHHN92", urnOrAlias, "UTM32-DHHN92"}));

// Read once, the version of a compound stands in it twice, joined; written again, in each of its components.
TEST(CompoundVersionTest, GrowsWhenItIsReadAgain) {
    const Server server;
    const Crs crs = server.request("urn:ogc:def:crs,crs:EPSG:6.12:27700,crs:EPSG:6.12:5701");
    EXPECT_EQ(urn(*crs.get()), "urn:ogc:def:crs,crs:EPSG:6.126.12:27700,crs:EPSG:6.126.12:5701");
    EXPECT_EQ(server.request(urn(*crs.get()))->getEpsgVersion(), "6.126.126.126.12");
}

TEST(CompoundVersionTest, GrowsInUrlsToo) {
    const Server server;
    const Crs crs = server.request("http://www.opengis.net/def/crs,crs/EPSG/0/27700,crs/EPSG/0/5701");
    EXPECT_EQ(withOptions({"", "", 2})(*crs.get()),
              "http://www.opengis.net/def/crs,crs/EPSG/00/27700,crs/EPSG/00/5701");
}

TEST(CompoundTest, IsWrittenWithAPrefixBeforeEachCode) {
    const Server server;
    const SrsFormattingOptions options{"", "EPSG:", 0};
    EXPECT_EQ(server.request("27700*5701")->getAliasOrAsOgcURN(&options, false), "EPSG:27700,EPSG:5701");
}

TEST(CompoundTest, IsWrittenAsItsHorizontalPartWhenReducedToTwoDimensions) {
    const Server server;
    Crs crs = server.request("27700*5701");
    crs.forceDim2D();
    EXPECT_EQ(crs.get()->getAliasOrAsOgcURN(nullptr, false), "urn:ogc:def:crs:EPSG::27700");
    EXPECT_EQ(crs.get()->getAliasOrIdentifier(false), "EPSG:27700*EPSG:5701");
    EXPECT_EQ(server.request("27700*5701")->getDim(), 3U);
}

TEST(NumberTest, IsWrittenByTheLibraryForResponses) {
    const Server server;
    EXPECT_EQ(QSHelpers::convertNumericToText(server.request("EPSG:4326")->getPrimaryCode()), "4326");
    EXPECT_EQ(QSHelpers::convertNumericToText(-1), "-1");
    EXPECT_EQ(QSHelpers::convertNumericToText(5538630.7034, 3, false), "5538630.703");
    EXPECT_EQ(QSHelpers::convertNumericToText(0.9996, -1, false), "0.9996");
    EXPECT_THROW(QSHelpers::convertNumericToText(1, 500, false), QSHelpers::UnexpectedException);
}

class TextFormTest : public testing::TestWithParam<const char*> {
protected:
    const Server server;
};

TEST_P(TextFormTest, IsReadAndWrittenAlike) {
    const std::unique_ptr<AbstractCrs> crs(server.creator().createFromSpecialTextFormat(GetParam()));
    ASSERT_NE(crs, nullptr);
    EXPECT_EQ(crs->getAsText(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Texts, TextFormTest,
                         testing::Values("EPSG:4326;NE;1", "EPSG:4326;EN;1", "EPSG:25832;NE;0.9996",
                                         "EPSG:25832;EN;0.00000025", "EPSG:25832;EN;-1000.5",
                                         "EPSG:27700*EPSG:5701;EN;1;1", "EPSG:25832*EPSG:5783;NE;0.001;100"));

TEST(TextFormTest, OfAnAliasNamesTheIdentifier) {
    const Server server;
    EXPECT_EQ(server.request("CRS:84")->getAsText(), "EPSG:4326;EN;1");
    EXPECT_EQ(server.request("UTM32-DHHN92")->getAsText(), "EPSG:25832*EPSG:5783;EN;1;1");
}

TEST(TextFormTest, KeepsAnAliasThatItIsReadFrom) {
    const Server server;
    const std::unique_ptr<AbstractCrs> crs(server.creator().createFromSpecialTextFormat("CRS:84;NE;1"));
    EXPECT_EQ(crs->getAlias(), "CRS:84");
    EXPECT_FALSE(crs->isAxisOrderEastNorthOrLonLat());
    EXPECT_TRUE(server.request("CRS:84")->isAxisOrderEastNorthOrLonLat());
}

struct RefusedText {
    const char* text;
    Raised raised;
};

void PrintTo(const RefusedText& refused, std::ostream* stream) { *stream << '"' << refused.text << '"'; }

class RefusedTextFormTest : public testing::TestWithParam<RefusedText> {};

TEST_P(RefusedTextFormTest, IsReported) {
    const Server server;
    EXPECT_EQ(raisedBy([&] { server.creator().createFromSpecialTextFormat(GetParam().text); }), GetParam().raised);
}

RefusedText notConfigured(const char* text, const std::string& name) {
    return {
        text,
        {"CrsNotConfigured", "The requested CRS " + name + " is not set up in the configuration", "qvCrsUnavailable"}};
}

RefusedText badFactor(const char* text, const std::string& factor) {
    return {text, {"ConversionError", "convertTextToNumeric: Value '" + factor + "'", "qvConversionError"}};
}

INSTANTIATE_TEST_SUITE_P(Texts, RefusedTextFormTest,
                         testing::Values(notConfigured("", ""), notConfigured("EPSG:3395;EN;1", "EPSG:3395"),
                                         notConfigured(";EN;1", ""), badFactor("EPSG:4326;EN;", ""),
                                         badFactor("EPSG:4326;EN;one", "one"), badFactor("EPSG:4326;EN;1;", ""),
                                         badFactor("EPSG:4326;EN;1;x", "x")));

class UnknownAndDefaultTest : public testing::Test {
protected:
    static void expectHasNoName(const AbstractCrs& crs) {
        EXPECT_EQ(identifier(crs), "");
        EXPECT_EQ(urn(crs), "");
        EXPECT_EQ(raisedBy([&] { crs.getAsText(); }),
                  (Raised{"UnexpectedException", "Text representation of an unknown or the default SRS requested.",
                          "qvUnexpectedException"}));
        EXPECT_EQ(raisedBy([&] { crs.getAsURL("base", "\x01", "\x02"); }),
                  (Raised{"UnexpectedException", "URL representation for unknown or default SRS requested.",
                          "qvUnexpectedException"}));
    }

    const Server server;
    const std::unique_ptr<AbstractCrs> unknown{server.creator().createUnknown()};
    const std::unique_ptr<AbstractCrs> defaultCrs{server.creator().createDefault()};
};

TEST_F(UnknownAndDefaultTest, DifferInTheSecondaryCode) {
    EXPECT_TRUE(unknown->isUnknown());
    EXPECT_FALSE(unknown->isDefault());
    EXPECT_TRUE(defaultCrs->isDefault());
    EXPECT_FALSE(defaultCrs->isUnknown());
    EXPECT_EQ(unknown->getSecCompoundCode(), 0U);
    EXPECT_EQ(defaultCrs->getSecCompoundCode(), 1U);
}

TEST_F(UnknownAndDefaultTest, HaveTwoDimensionsAndTheLongitudeFirst) {
    for (const AbstractCrs* const crs : {unknown.get(), defaultCrs.get()}) {
        EXPECT_EQ(crs->getPrimaryCode(), 0U);
        EXPECT_EQ(crs->getDim(), 2U);
        EXPECT_TRUE(crs->isAxisOrderEastNorthOrLonLat());
        EXPECT_TRUE(crs->isGeographic());
    }
}

TEST_F(UnknownAndDefaultTest, HaveNoName) {
    expectHasNoName(*unknown);
    expectHasNoName(*defaultCrs);
}

TEST_F(UnknownAndDefaultTest, TransformAsLongitudeAndLatitude) {
    double x = 9;
    double y = 52;
    unknown->transformTo(server.request("EPSG:4326").get(), x, y);
    EXPECT_NEAR(x, 52, 1e-12);
    EXPECT_NEAR(y, 9, 1e-12);
}

}  // namespace
}  // namespace IntegrationTest
