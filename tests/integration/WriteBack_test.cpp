#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "QuarvelSrv/SrsFormattingOptions.h"
#include "tests/support/IntegrationServer.h"
#include "tests/support/NameTable.h"
#include "tests/support/WrittenForms.h"

// The library reads each form that it writes as the same CRS.
namespace IntegrationTest {
namespace {

using QuarvelSrv::SrsFormattingOptions;
using TestSupport::FormRequest;
using TestSupport::NameRow;
using TestSupport::WRITTEN_FORMS;

std::string identifier(const AbstractCrs& crs) { return crs.getAliasOrIdentifier(false); }
std::string urn(const AbstractCrs& crs) { return crs.getAliasOrAsOgcURN(nullptr, false); }

class WriteBackTest : public testing::Test {
protected:
    void expectReadsBack(const std::string& name, const AbstractCrs& crs) const {
        const Crs again = server.request(name);
        EXPECT_EQ(again->getPrimaryCode(), crs.getPrimaryCode());
        EXPECT_EQ(again->getSecCompoundCode(), crs.getSecCompoundCode());
        EXPECT_EQ(again->getDim(), crs.getDim());
        EXPECT_EQ(again->isAxisOrderEastNorthOrLonLat(), crs.isAxisOrderEastNorthOrLonLat());
        EXPECT_TRUE(again->isCompatible(&crs));
    }
    void expectForms(const NameRow& row) const {
        const Crs crs = server.request(row["name"]);
        EXPECT_EQ(crs->getAsText(), row["text"]);
        for (const FormRequest& form : WRITTEN_FORMS) {
            EXPECT_EQ(form.write(*crs.get(), false), row[form.title]);
            if (form.readsBackCompounds || row.secondaryCode() == 0) expectReadsBack(row[form.title], *crs.get());
        }
    }

    const Server server;
};

TEST_F(WriteBackTest, WritesTheFormsOfTheTable) {
    for (const NameRow& row : TestSupport::nameRowsWith("identifier")) {
        if (!row.isAnswered()) continue;
        SCOPED_TRACE(row.where());
        EXPECT_NO_THROW(expectForms(row));
    }
}

TEST_F(WriteBackTest, WritesTheRequestedVersion) {
    const SrsFormattingOptions asUrn{"8.5", "", 1};
    const SrsFormattingOptions asUrl{"8.5", "", 2};
    const Crs crs = server.request("31467*5783");
    for (const SrsFormattingOptions* const options : {&asUrn, &asUrl}) {
        const std::string written = crs->getAliasOrAsOgcURN(options, false);
        EXPECT_EQ(server.creator().explainName(written).version, "8.58.5") << written;
        expectReadsBack(written, *crs.get());
    }
}

// Reading a compound joins its two versions. Writing puts the joined version into both components.
TEST(CompoundVersionTest, GrowsWhenItIsReadAgain) {
    const Server server;
    const Crs crs = server.request("urn:ogc:def:crs,crs:EPSG:6.12:27700,crs:EPSG:6.12:5701");
    EXPECT_EQ(server.request(urn(*crs.get()))->getEpsgVersion(), "6.126.126.126.12");
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

TEST_P(TextFormTest, IsTheSameAfterReadingAndWriting) {
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
    static void expectNoName(const AbstractCrs& crs) {
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
    expectNoName(*unknown);
    expectNoName(*defaultCrs);
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
