#include <cmath>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "CoordinateTransformation/CrsNotConfigured.h"
#include "CoordinateTransformation/FatalSubsystemError.h"
#include "QSHelpers/ConversionError.h"
#include "tests/support/Failures.h"
#include "tests/support/PooledCreator.h"

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;
using TestSupport::FakeCrs;

constexpr std::size_t MEGABYTE = 1 << 20;
const std::string BYTE_ORDER_MARK = "\xEF\xBB\xBF";

class CrsCreatorSpecialTextFormatTest : public testing::Test {
protected:
    struct ReadFields {
        unsigned int primary;
        unsigned int secondary;
        bool eastNorth;
        double primaryScale;
        double secondaryScale;
    };

    // EPSG:4326 in north-east order with its own scale factors.
    CrsCreatorSpecialTextFormatTest() : configured(creator.givenConfigured("EPSG:4326", 4326)) {
        configured.setAxisOrderEastNorthOrLonLat(false);
        configured.setScaleFactors(7, 9);
        configured.setAlias("alias");
    }

    std::unique_ptr<AbstractCrs> read(const std::string& text) const {
        return std::unique_ptr<AbstractCrs>(creator.createFromSpecialTextFormat(text));
    }
    static ReadFields readingOf(const AbstractCrs& crs) {
        ReadFields reading{};
        crs.get(reading.primary, reading.secondary, reading.eastNorth, reading.primaryScale, reading.secondaryScale);
        return reading;
    }
    static void expectReading(const AbstractCrs* crs, const ReadFields& expected) {
        ASSERT_NE(crs, nullptr);
        const ReadFields actual = readingOf(*crs);
        EXPECT_EQ(actual.primary, expected.primary);
        EXPECT_EQ(actual.secondary, expected.secondary);
        EXPECT_EQ(actual.eastNorth, expected.eastNorth);
        EXPECT_DOUBLE_EQ(actual.primaryScale, expected.primaryScale);
        EXPECT_DOUBLE_EQ(actual.secondaryScale, expected.secondaryScale);
    }

    // Expects reading to throw an E and to leave no object behind. Returns the report of the failure.
    template <typename E>
    std::string reportOfReading(const std::string& text) {
        const std::string report = TestSupport::reportOf<E>([&] { read(text); });
        EXPECT_EQ(live.count(), 1U) << text.substr(0, 60);
        return report;
    }
    void expectConversionError(const std::string& text, const std::string& value) {
        EXPECT_EQ(reportOfReading<QSHelpers::ConversionError>(text),
                  "qvConversionError: convertTextToNumeric: Value '" + value + "'");
    }
    void expectNotConfigured(const std::string& text, const std::string& name) {
        EXPECT_EQ(reportOfReading<CrsNotConfigured>(text),
                  "qvCrsUnavailable: The requested CRS " + name + " is not set up in the configuration");
    }

    TestSupport::LiveCrs live;
    PooledCreator creator{&live};
    FakeCrs& configured;
};

TEST_F(CrsCreatorSpecialTextFormatTest, ReadsAxisOrderAndScaleFactors) {
    const struct {
        std::string text;
        ReadFields reading;
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

TEST_F(CrsCreatorSpecialTextFormatTest, TakesEveryAxisOrderButExactlyEnForNorthEast) {
    for (const std::string& axisOrder :
         {"NE"s, ""s, "en"s, "En"s, " EN"s, "EN "s, "ENE"s, "E"s, "EN\0"s, "\xC3\xA9"s}) {
        configured.setAxisOrderEastNorthOrLonLat(true);
        EXPECT_FALSE(read("EPSG:4326;" + axisOrder + ";1")->isAxisOrderEastNorthOrLonLat()) << axisOrder;
    }
}

TEST_F(CrsCreatorSpecialTextFormatTest, ChangesACopyAndLeavesTheConfiguredObjectAlone) {
    const std::unique_ptr<AbstractCrs> crs = read("EPSG:4326;EN;1;2");
    EXPECT_NE(crs.get(), &configured);
    EXPECT_EQ(crs->getAlias(), "alias");
    EXPECT_EQ(live.count(), 2U);
    expectReading(&configured, {4326, 0, false, 7, 9});
}

TEST_F(CrsCreatorSpecialTextFormatTest, AnswersNullAndLeavesTheCopyBehindWhenTheScaleFactorIsMissing) {
    std::size_t alive = 1;
    for (const char* const text : {"EPSG:4326;EN", "EPSG:4326;NE", "EPSG:4326;", "EPSG:4326"}) {
        EXPECT_EQ(read(text), nullptr) << text;
        EXPECT_EQ(live.count(), ++alive) << text;
    }
}

TEST_F(CrsCreatorSpecialTextFormatTest, RaisesCrsNotConfiguredForANameThatThePoolLacks) {
    const std::pair<std::string, std::string> namesOfTexts[] = {
        {"", ""},
        {";EN;1", ""},
        {";", ""},
        {"EPSG:9999;EN;1", "EPSG:9999"},
        {"EPSG:9999", "EPSG:9999"},
        {"epsg:4326;EN;1", "epsg:4326"},
        {"4326;EN;1", "4326"},
        {" EPSG:4326;EN;1", " EPSG:4326"},
        {"EPSG:4326,EN,1", "EPSG:4326,EN,1"},
        {"EPSG:4326\0;EN;1"s, "EPSG:4326\0"s},
        {std::string(MEGABYTE, ';'), ""},
        {std::string(MEGABYTE, 'a'), std::string(MEGABYTE, 'a')},
        {BYTE_ORDER_MARK + "EPSG:4326;EN;1", BYTE_ORDER_MARK + "EPSG:4326"}};
    for (const auto& [text, name] : namesOfTexts) expectNotConfigured(text, name);
}

TEST_F(CrsCreatorSpecialTextFormatTest, RaisesConversionErrorForAScaleFactorThatIsNotANumber) {
    const std::string nines(MEGABYTE, '9');
    for (const std::string& factor : {""s, "abc"s, "1.2.3"s, "1\t"s, "1\0"s, "inf"s, "1e400"s, nines}) {
        expectConversionError("EPSG:4326;EN;" + factor, factor);
        expectConversionError("EPSG:4326;EN;1;" + factor, factor);
    }
    expectConversionError("EPSG:4326;EN;;2", "");
    expectConversionError("EPSG:4326" + std::string(MEGABYTE, ';'), "");
}

TEST_F(CrsCreatorSpecialTextFormatTest, ReportsItsOwnFaultForAnEmptyTextWhenThePoolKnowsTheEmptyName) {
    creator.givenConfigured("", 4326);
    EXPECT_EQ(TestSupport::reportOf<FatalSubsystemError>([this] { read(""); }),
              "qvUnexpectedException: An unknown fatal error occurred in the transformation subsystem. \t\t\t"
              "Please report this bug! Error code: 114");
    EXPECT_EQ(live.count(), 3U);
}

TEST_F(CrsCreatorSpecialTextFormatTest, ReadsTheEmptyNameWhenThePoolKnowsIt) {
    creator.givenConfigured("", 25832);
    expectReading(read(";EN;1").get(), {25832, 0, true, 1, 1});
    EXPECT_EQ(read(";EN"), nullptr);
    EXPECT_EQ(read(";"), nullptr);
}

TEST_F(CrsCreatorSpecialTextFormatTest, IsNoSpellingOfRequests) {
    EXPECT_EQ(creator.createFromName("EPSG:4326;EN;1", false, false).get(), nullptr);
}

TEST_F(CrsCreatorSpecialTextFormatTest, ReadsBackWhatIsWritten) {
    FakeCrs& compound = creator.givenConfigured("EPSG:27700*EPSG:5701", 27700, 5701);
    // Numbers are written with 15 significant digits.
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
