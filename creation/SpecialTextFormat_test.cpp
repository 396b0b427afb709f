#include <cmath>
#include <cstddef>
#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "CoordinateTransformation/CrsNotConfigured.h"
#include "CoordinateTransformation/FatalSubsystemError.h"
#include "QSHelpers/ConversionError.h"
#include "tests/support/PooledCreator.h"

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;
using TestSupport::FakeCrs;

constexpr std::size_t MEGABYTE = 1 << 20;

class SpecialTextFormatTest : public testing::Test {
protected:
    struct Reading {
        unsigned int primary;
        unsigned int secondary;
        bool eastNorth;
        double primaryScale;
        double secondaryScale;
    };

    // EPSG:4326 in north-east order with scale factors of its own.
    SpecialTextFormatTest() : configured(creator.givenConfigured("EPSG:4326", 4326)) {
        configured.setAxisOrderEastNorthOrLonLat(false);
        configured.setScaleFactors(7, 9);
        configured.setAlias("alias");
    }

    std::unique_ptr<AbstractCrs> read(const std::string& text) const {
        return std::unique_ptr<AbstractCrs>(creator.createFromSpecialTextFormat(text));
    }
    static Reading readingOf(const AbstractCrs& crs) {
        Reading reading{};
        crs.get(reading.primary, reading.secondary, reading.eastNorth, reading.primaryScale, reading.secondaryScale);
        return reading;
    }
    static void expectReading(const AbstractCrs* crs, const Reading& expected) {
        ASSERT_NE(crs, nullptr);
        const Reading actual = readingOf(*crs);
        EXPECT_EQ(actual.primary, expected.primary);
        EXPECT_EQ(actual.secondary, expected.secondary);
        EXPECT_EQ(actual.eastNorth, expected.eastNorth);
        EXPECT_DOUBLE_EQ(actual.primaryScale, expected.primaryScale);
        EXPECT_DOUBLE_EQ(actual.secondaryScale, expected.secondaryScale);
    }

    void expectConversionError(const std::string& text, const std::string& value) {
        SCOPED_TRACE(text.substr(0, 60));
        try {
            read(text);
            ADD_FAILURE() << "read";
        } catch (const QSHelpers::ConversionError& error) {
            EXPECT_EQ(error.getDetailedMessage(), "convertTextToNumeric: Value '" + value + "'");
            EXPECT_EQ(error.getServiceExceptionCode(), "qvConversionError");
        }
        EXPECT_EQ(live.count(), 1U);
    }
    void expectNotConfigured(const std::string& text, const std::string& name) {
        SCOPED_TRACE(text.substr(0, 60));
        try {
            read(text);
            ADD_FAILURE() << "read";
        } catch (const CrsNotConfigured& error) {
            EXPECT_EQ(error.getDetailedMessage(), "The requested CRS " + name + " is not set up in the configuration");
            EXPECT_EQ(error.getServiceExceptionCode(), "qvCrsUnavailable");
        }
        EXPECT_EQ(live.count(), 1U);
    }

    TestSupport::LiveCrs live;
    PooledCreator creator{&live};
    FakeCrs& configured;
};

TEST_F(SpecialTextFormatTest, ReadsAxisOrderAndScaleFactors) {
    const struct {
        std::string text;
        Reading reading;
    } accepted[] = {
        {"EPSG:4326;NE;1", {4326, 0, false, 1, 9}},
        {"EPSG:4326;EN;1", {4326, 0, true, 1, 9}},
        {"EPSG:4326;EN;0.9996;0.3048", {4326, 0, true, 0.9996, 0.3048}},
        {"EPSG:4326;NE;1,5;2,5", {4326, 0, false, 1.5, 2.5}},
        {"EPSG:4326;EN;-2;1e3", {4326, 0, true, -2, 1000}},
        {"EPSG:4326;EN; +2 ;0", {4326, 0, true, 2, 0}},
        {"EPSG:4326;EN;1;2;ignored", {4326, 0, true, 1, 2}},
        {"EPSG:4326;EN;1;2;", {4326, 0, true, 1, 2}},
        {"EPSG:4326;EN;1;2;;;" + std::string(MEGABYTE, ';'), {4326, 0, true, 1, 2}},
    };
    for (const auto& row : accepted) {
        SCOPED_TRACE(row.text.substr(0, 60));
        expectReading(read(row.text).get(), row.reading);
    }
}

TEST_F(SpecialTextFormatTest, TakesEveryAxisOrderButExactlyEnForNorthEast) {
    for (const std::string& axisOrder :
         {"NE"s, ""s, "en"s, "En"s, " EN"s, "EN "s, "ENE"s, "E"s, "EN\0"s, "\xC3\xA9"s}) {
        configured.setAxisOrderEastNorthOrLonLat(true);
        EXPECT_FALSE(read("EPSG:4326;" + axisOrder + ";1")->isAxisOrderEastNorthOrLonLat()) << axisOrder;
    }
}

TEST_F(SpecialTextFormatTest, ChangesACopyAndLeavesTheConfiguredObjectAlone) {
    const std::unique_ptr<AbstractCrs> crs = read("EPSG:4326;EN;1;2");
    EXPECT_NE(crs.get(), &configured);
    EXPECT_EQ(crs->getAlias(), "alias");
    EXPECT_EQ(live.count(), 2U);
    expectReading(&configured, {4326, 0, false, 7, 9});
}

TEST_F(SpecialTextFormatTest, AnswersNullAndLeavesTheCopyBehindWhenTheScaleFactorIsMissing) {
    const struct {
        const char* text;
        bool leftEastNorth;
    } refused[] = {{"EPSG:4326;EN", true}, {"EPSG:4326;NE", false}, {"EPSG:4326;", false}, {"EPSG:4326", false}};
    std::size_t alive = 1;
    for (const auto& row : refused) {
        EXPECT_EQ(creator.createFromSpecialTextFormat(row.text), nullptr) << row.text;
        EXPECT_EQ(live.count(), ++alive) << row.text;
    }
}

TEST_F(SpecialTextFormatTest, RaisesCrsNotConfiguredForANameThatThePoolLacks) {
    expectNotConfigured("", "");
    expectNotConfigured(";EN;1", "");
    expectNotConfigured(";", "");
    expectNotConfigured("EPSG:9999;EN;1", "EPSG:9999");
    expectNotConfigured("EPSG:9999", "EPSG:9999");
    expectNotConfigured("epsg:4326;EN;1", "epsg:4326");
    expectNotConfigured("4326;EN;1", "4326");
    expectNotConfigured(" EPSG:4326;EN;1", " EPSG:4326");
    expectNotConfigured("EPSG:4326,EN,1", "EPSG:4326,EN,1");
    expectNotConfigured("EPSG:4326\0;EN;1"s, "EPSG:4326\0"s);
    expectNotConfigured(std::string(MEGABYTE, ';'), "");
    expectNotConfigured(std::string(MEGABYTE, 'a'), std::string(MEGABYTE, 'a'));
    expectNotConfigured(
        "\xEF\xBB\xBF"
        "EPSG:4326;EN;1",
        "\xEF\xBB\xBF"
        "EPSG:4326");
}

TEST_F(SpecialTextFormatTest, RaisesConversionErrorForAScaleFactorThatIsNoNumber) {
    const std::string nines(MEGABYTE, '9');
    expectConversionError("EPSG:4326;EN;", "");
    expectConversionError("EPSG:4326;EN;1;", "");
    expectConversionError("EPSG:4326;EN;;2", "");
    expectConversionError("EPSG:4326;EN;abc", "abc");
    expectConversionError("EPSG:4326;EN;1;abc", "abc");
    expectConversionError("EPSG:4326;EN;1.2.3", "1.2.3");
    expectConversionError("EPSG:4326;EN;1\t", "1\t");
    expectConversionError("EPSG:4326;EN;1\0"s, "1\0"s);
    expectConversionError("EPSG:4326;EN;inf", "inf");
    expectConversionError("EPSG:4326;EN;1e400", "1e400");
    expectConversionError("EPSG:4326;EN;" + nines, nines);
    expectConversionError("EPSG:4326" + std::string(MEGABYTE, ';'), "");
}

TEST_F(SpecialTextFormatTest, ReportsItsOwnFaultForAnEmptyTextWhenThePoolKnowsTheEmptyName) {
    creator.givenConfigured("", 4326);
    try {
        read("");
        ADD_FAILURE() << "read";
    } catch (const FatalSubsystemError& error) {
        EXPECT_EQ(error.getDetailedMessage(),
                  "An unknown fatal error occurred in the transformation subsystem. \t\t\t"
                  "Please report this bug! Error code: 114");
        EXPECT_EQ(error.getServiceExceptionCode(), "qvUnexpectedException");
    }
    EXPECT_EQ(live.count(), 3U);
}

TEST_F(SpecialTextFormatTest, ReadsTheEmptyNameWhenThePoolKnowsIt) {
    creator.givenConfigured("", 25832);
    expectReading(read(";EN;1").get(), {25832, 0, true, 1, 1});
    EXPECT_EQ(read(";EN"), nullptr);
    EXPECT_EQ(read(";"), nullptr);
}

TEST_F(SpecialTextFormatTest, IsNoSpellingOfRequests) {
    EXPECT_EQ(creator.createFromName("EPSG:4326;EN;1", false, false).get(), nullptr);
}

TEST_F(SpecialTextFormatTest, ReadsBackWhatIsWritten) {
    FakeCrs& compound = creator.givenConfigured("EPSG:27700*EPSG:5701", 27700, 5701);
    // 15 significant digits are written.
    constexpr double WRITTEN = 1e-14;
    const double factors[] = {1, 0.9996, 0.3048006096, 2.5e-7, 1e20, -3, 0, 1.0 / 3};
    for (const bool eastNorth : {false, true}) {
        for (const double factor : factors) {
            for (FakeCrs* const crs : {&configured, &compound}) {
                const std::unique_ptr<AbstractCrs> written(crs->copy());
                written->setAxisOrderEastNorthOrLonLat(eastNorth);
                written->setScaleFactors(factor, 2 * factor);
                const std::string text = written->getAsText();
                const std::unique_ptr<AbstractCrs> back = read(text);
                EXPECT_TRUE(*back == *written) << text;
                EXPECT_NEAR(back->getPrimaryScaleFactor(), factor, std::abs(factor) * WRITTEN) << text;
                EXPECT_NEAR(back->getCompoundScaleFactor(), written->getCompoundScaleFactor(),
                            std::abs(2 * factor) * WRITTEN)
                    << text;
                EXPECT_EQ(back->getAsText(), text);
            }
        }
    }
}

}  // namespace
}  // namespace CoordinateTransformation
