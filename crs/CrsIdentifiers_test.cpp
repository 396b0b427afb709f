#include <climits>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/CRSindicationFormatInfo.h"
#include "QSHelpers/UnexpectedException.h"
#include "QuarvelSrv/SrsFormattingOptions.h"
#include "tests/support/AbstractCrsTest.h"
#include "tests/support/GroupingLocale.h"
#include "tests/support/NameTable.h"
#include "tests/support/WrittenForms.h"

namespace CoordinateTransformation {
namespace {

using QuarvelSrv::SrsFormattingOptions;
using TestSupport::FormRequest;
using TestSupport::NameRow;
using TestSupport::WRITTEN_FORMS;
using Writer = std::function<std::string(const AbstractCrs&, bool useAlias)>;

constexpr unsigned int OGC_URN = 0;
constexpr unsigned int TEMPLATE_URL = 1;
constexpr unsigned int OGC_URL = 2;
constexpr unsigned int IDENTIFIER = 3;

constexpr int URN_STYLE = 0;
constexpr int URL_STYLE = 2;

// The characters that represent the codes in a URL template.
const std::string P = "\x01";
const std::string S = "\x02";

const std::string NUL(1, '\0');

std::string writeIdentifier(const AbstractCrs& crs, bool useAlias) { return crs.getAliasOrIdentifier(useAlias); }

std::string writeUrn(const AbstractCrs& crs, bool useAlias) { return crs.getAliasOrAsOgcURN(nullptr, useAlias); }

std::string writeText(const AbstractCrs& crs, bool /*useAlias*/) { return crs.getAsText(); }

Writer withOptions(const SrsFormattingOptions& options) {
    return [options](const AbstractCrs& crs, bool useAlias) { return crs.getAliasOrAsOgcURN(&options, useAlias); };
}

Writer inFormat(const CRSindicationFormatInfo& info) {
    return [info](const AbstractCrs& crs, bool useAlias) { return crs.getAliasOrAsFormat(info, useAlias); };
}

class CrsIdentifiersTest : public AbstractCrsTest {
protected:
    BareCrs givenWgs84() const {
        BareCrs crs = given({4326, 0, 2, 0});
        crs.identifier = "EPSG:4326";
        crs.axisOrderEastNorthOrLonLat = false;
        return crs;
    }
    BareCrs givenAliased() const {
        BareCrs crs = givenWgs84();
        crs.alias = "WGS84";
        return crs;
    }
    BareCrs givenCompound() const {
        BareCrs crs = given({27700, 5701, 2, 1});
        crs.identifier = "EPSG:27700*EPSG:5701";
        crs.axisOrderEastNorthOrLonLat = false;
        return crs;
    }
    BareCrs givenCrsOf(const NameRow& row) const {
        const unsigned int secondary = row.secondaryCode();
        BareCrs crs = given({row.primaryCode(), secondary, 2, secondary == 0 ? 0U : 1U});
        crs.identifier = row["identifier"];
        crs.epsgVersion = row["version"];
        crs.axisOrderEastNorthOrLonLat = row["axis order"] == "EN";
        return crs;
    }
    BareCrs givenUnknown() const { return given({0, 0, 2, 0}); }
    BareCrs givenDefault() const { return given({0, 1, 2, 1}); }
};

TEST_F(CrsIdentifiersTest, WritesTheFormsOfTheTable) {
    for (const NameRow& row : TestSupport::nameRowsWith("identifier")) {
        SCOPED_TRACE(row.where());
        BareCrs crs = givenCrsOf(row);
        for (const FormRequest& form : WRITTEN_FORMS) {
            crs.alias = "";
            EXPECT_EQ(form.write(crs, false), row[form.title]);
            EXPECT_EQ(form.write(crs, true), row[form.title]);
            crs.alias = "alias";
            EXPECT_EQ(form.write(crs, false), row[form.title]);
            EXPECT_EQ(form.write(crs, true), "alias");
        }
    }
}

TEST_F(CrsIdentifiersTest, WritesTheTextOfTheTable) {
    for (const NameRow& row : TestSupport::nameRowsWith("text")) {
        BareCrs crs = givenCrsOf(row);
        EXPECT_EQ(crs.getAsText(), row["text"]) << row.where();
        crs.alias = "alias";
        EXPECT_EQ(crs.getAsText(), row["text"]) << row.where();
    }
}

TEST_F(CrsIdentifiersTest, WritesEveryFormatOfFormatInfo) {
    const struct {
        unsigned int format;
        const char* simple;
        const char* compound;
    } rows[] = {
        {OGC_URN, "urn:ogc:def:crs:EPSG:8.5:4326", "urn:ogc:def:crs,crs:EPSG:8.5:27700,crs:EPSG:8.5:5701"},
        {TEMPLATE_URL, "base#simple4326", "base#compound27700,5701"},
        {OGC_URL, "http://www.opengis.net/def/crs/EPSG/8.5/4326",
         "http://www.opengis.net/def/crs,crs/EPSG/8.5/27700,crs/EPSG/8.5/5701"},
        {IDENTIFIER, "EPSG:4326", "EPSG:27700*EPSG:5701"},
        {4, "", ""},
        {5, "", ""},
        {UINT_MAX, "", ""},
    };
    for (const auto& row : rows) {
        const Writer write = inFormat({row.format, "8.5", "base", "simple" + P, "compound" + P + "," + S});
        EXPECT_EQ(write(givenAliased(), false), row.simple) << row.format;
        EXPECT_EQ(write(givenCompound(), false), row.compound) << row.format;
        EXPECT_EQ(write(givenAliased(), true), "WGS84") << row.format;
    }
}

TEST_F(CrsIdentifiersTest, TakesEveryStyleButOneForUrn) {
    const struct {
        int style;
        const char* text;
    } rows[] = {
        {URL_STYLE, "http://www.opengis.net/def/crs/EPSG/0/4326"},
        {URN_STYLE, "urn:ogc:def:crs:EPSG::4326"},
        {1, "urn:ogc:def:crs:EPSG::4326"},
        {3, "urn:ogc:def:crs:EPSG::4326"},
        {-2, "urn:ogc:def:crs:EPSG::4326"},
        {INT_MAX, "urn:ogc:def:crs:EPSG::4326"},
        {INT_MIN, "urn:ogc:def:crs:EPSG::4326"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(withOptions({"", "", row.style})(givenWgs84(), false), row.text) << row.style;
}

TEST_F(CrsIdentifiersTest, PrefersThePrefixToStyleAndVersion) {
    for (const int style : {URN_STYLE, 1, URL_STYLE}) {
        const Writer write = withOptions({"6.12", "urn:x:", style});
        BareCrs crs = givenAliased();
        crs.epsgVersion = "6.9";
        EXPECT_EQ(write(crs, false), "urn:x:4326") << style;
        EXPECT_EQ(write(crs, true), "WGS84") << style;
        EXPECT_EQ(write(givenCompound(), false), "urn:x:27700,urn:x:5701") << style;
    }
}

TEST_F(CrsIdentifiersTest, PrefersTheVersionAskedForToItsOwn) {
    const struct {
        const char* own;
        const char* wanted;
        const char* urn;
        const char* url;
    } rows[] = {
        {"", "", "urn:ogc:def:crs:EPSG::4326", "http://www.opengis.net/def/crs/EPSG/0/4326"},
        {"6.9", "", "urn:ogc:def:crs:EPSG:6.9:4326", "http://www.opengis.net/def/crs/EPSG/6.9/4326"},
        {"", "6.12", "urn:ogc:def:crs:EPSG:6.12:4326", "http://www.opengis.net/def/crs/EPSG/6.12/4326"},
        {"6.9", "6.12", "urn:ogc:def:crs:EPSG:6.12:4326", "http://www.opengis.net/def/crs/EPSG/6.12/4326"},
        {"0", "", "urn:ogc:def:crs:EPSG:0:4326", "http://www.opengis.net/def/crs/EPSG/0/4326"},
        {"6.9", "0", "urn:ogc:def:crs:EPSG:0:4326", "http://www.opengis.net/def/crs/EPSG/0/4326"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "own '" << row.own << "', wanted '" << row.wanted << "'");
        BareCrs crs = givenWgs84();
        crs.epsgVersion = row.own;
        EXPECT_EQ(withOptions({row.wanted, "", URN_STYLE})(crs, false), row.urn);
        EXPECT_EQ(withOptions({row.wanted, "", URL_STYLE})(crs, false), row.url);
        EXPECT_EQ(inFormat({OGC_URN, row.wanted, "", "", ""})(crs, false), row.urn);
        EXPECT_EQ(inFormat({OGC_URL, row.wanted, "", "", ""})(crs, false), row.url);
    }
}

TEST_F(CrsIdentifiersTest, WritesTheVersionAskedForIntoBothComponents) {
    BareCrs crs = givenCompound();
    crs.epsgVersion = "6.126.12";
    EXPECT_EQ(withOptions({"7", "", URN_STYLE})(crs, false), "urn:ogc:def:crs,crs:EPSG:7:27700,crs:EPSG:7:5701");
}

TEST_F(CrsIdentifiersTest, WritesACompoundReducedToTwoDimensionsAsItsPrimaryInUrnAndUrl) {
    const struct {
        Writer write;
        const char* text;
    } rows[] = {
        {writeUrn, "urn:ogc:def:crs:EPSG::27700"},
        {withOptions({"6.12", "", URN_STYLE}), "urn:ogc:def:crs:EPSG:6.12:27700"},
        {withOptions({"", "", URL_STYLE}), "http://www.opengis.net/def/crs/EPSG/0/27700"},
        {withOptions({"", "EPSG:", URN_STYLE}), "EPSG:27700"},
        {inFormat({OGC_URN, "", "", "", ""}), "urn:ogc:def:crs:EPSG::27700"},
        {inFormat({OGC_URL, "", "", "", ""}), "http://www.opengis.net/def/crs/EPSG/0/27700"},
        {inFormat({TEMPLATE_URL, "", "base", "simple", P + "," + S}), "base#27700,5701"},
        {inFormat({IDENTIFIER, "", "", "", ""}), "EPSG:27700*EPSG:5701"},
        {writeIdentifier, "EPSG:27700*EPSG:5701"},
        {writeText, "EPSG:27700*EPSG:5701;NE;1;1"},
    };
    BareCrs crs = givenCompound();
    crs.forceDim2D();
    for (const auto& row : rows) EXPECT_EQ(row.write(crs, false), row.text);
}

TEST_F(CrsIdentifiersTest, TakesForACompoundWhatHasASecondCodeAndThreeDimensions) {
    const struct {
        Shape shape;
        const char* urn;
    } rows[] = {
        {{4979, 0, 3, 0}, "urn:ogc:def:crs:EPSG::4979"},
        {{27700, 0, 2, 1}, "urn:ogc:def:crs:EPSG::27700"},
        {{27700, 5701, 1, 1}, "urn:ogc:def:crs:EPSG::27700"},
        {{27700, 5701, 0, 1}, "urn:ogc:def:crs:EPSG::27700"},
        {{27700, 5701, 3, 0}, "urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701"},
        {{4979, 5773, 3, 1}, "urn:ogc:def:crs,crs:EPSG::4979,crs:EPSG::5773"},
    };
    for (const auto& row : rows) EXPECT_EQ(writeUrn(given(row.shape), false), row.urn) << row.shape;
}

TEST_F(CrsIdentifiersTest, WritesCodesInPlainDecimal) {
    const BareCrs largest = given({UINT_MAX, UINT_MAX, 2, 1});
    EXPECT_EQ(largest.getAsURL("base", "", P + "/" + S), "base#4294967295/4294967295");
}

TEST_F(CrsIdentifiersTest, WritesTheCodesOfTheMomentAndTheIdentifierItHolds) {
    BareCrs crs = givenWgs84();
    crs.setDim(3);
    EXPECT_EQ(writeUrn(crs, false), "urn:ogc:def:crs:EPSG::4979");
    EXPECT_EQ(crs.getAsURL("base", P, ""), "base#4979");
    EXPECT_EQ(writeIdentifier(crs, false), "EPSG:4326");
    EXPECT_EQ(writeText(crs, false), "EPSG:4326;NE;1");
}

TEST_F(CrsIdentifiersTest, FillsThePlaceholdersOfAUrlTemplate) {
    const struct {
        std::string urlTemplate;
        std::string filled;
    } rows[] = {
        {"", ""},
        {"4326", "4326"},
        {"12", "12"},
        {"%1$2 \\1", "%1$2 \\1"},
        {P, "27700"},
        {S, "5701"},
        {P + P, "2770027700"},
        {S + P + S + P, "570127700570127700"},
        {"a" + P + "b" + S + "c" + P + "d", "a27700b5701c27700d"},
        {"\x03\x10\x7f\xff", "\x03\x10\x7f\xff"},
        {NUL, NUL},
        {"a" + NUL + P + NUL + NUL + S + "b", "a" + NUL + "27700" + NUL + NUL + "5701" + "b"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(givenCompound().getAsURL("base", "unused" + P, row.urlTemplate), "base#" + row.filled);
    }
}

TEST_F(CrsIdentifiersTest, CopiesTheUrlBaseUnchanged) {
    const std::string bases[] = {"", "http://host/a#b", P + "base" + S, NUL + "base" + NUL, "#"};
    for (const std::string& base : bases) EXPECT_EQ(givenWgs84().getAsURL(base, P, ""), base + "#4326");
}

TEST_F(CrsIdentifiersTest, ChoosesTheUrlTemplateByTheSecondCodeAlone) {
    const struct {
        Shape shape;
        const char* url;
    } rows[] = {
        {{4326, 0, 2, 0}, "base#simple 4326 0"},           {{4979, 0, 3, 0}, "base#simple 4979 0"},
        {{27700, 0, 2, 1}, "base#simple 27700 0"},         {{27700, 5701, 2, 1}, "base#compound 27700 5701"},
        {{27700, 5701, 2, 0}, "base#compound 27700 5701"},
    };
    const std::string codes = " " + P + " " + S;
    for (const auto& row : rows) {
        BareCrs crs = given(row.shape);
        crs.alias = "never used";
        EXPECT_EQ(crs.getAsURL("base", "simple" + codes, "compound" + codes), row.url) << row.shape;
    }
}

TEST_F(CrsIdentifiersTest, WritesNothingForAnUnknownOrDefaultCrs) {
    const Writer writers[] = {
        writeUrn,
        withOptions({"6.12", "", URN_STYLE}),
        withOptions({"6.12", "", URL_STYLE}),
        withOptions({"", "EPSG:", URN_STYLE}),
        inFormat({OGC_URN, "6.12", "base", P, P}),
        inFormat({OGC_URL, "6.12", "base", P, P}),
        inFormat({4, "6.12", "base", P, P}),
        writeIdentifier,
        inFormat({IDENTIFIER, "6.12", "base", P, P}),
    };
    for (const Writer& write : writers) {
        for (BareCrs crs : {givenUnknown(), givenDefault()}) {
            EXPECT_EQ(write(crs, false), "");
            EXPECT_EQ(write(crs, true), "");
            crs.alias = "none";
            EXPECT_EQ(write(crs, true), "none");
        }
    }
}

TEST_F(CrsIdentifiersTest, WritesTheIdentifierThatAnUnknownCrsStillHolds) {
    BareCrs crs = givenWgs84();
    crs.setUnknown();
    EXPECT_EQ(writeIdentifier(crs, false), "EPSG:4326");
    EXPECT_EQ(inFormat({IDENTIFIER, "", "", "", ""})(crs, false), "EPSG:4326");
    EXPECT_EQ(writeUrn(crs, false), "");
}

void expectRefused(const AbstractCrs& crs, const Writer& write, const std::string& message) {
    try {
        ADD_FAILURE() << "written as " << write(crs, false);
    } catch (const QSHelpers::UnexpectedException& failure) {
        EXPECT_EQ(failure.what(), message);
        EXPECT_EQ(failure.getDetailedMessage(), message);
        EXPECT_EQ(failure.getServiceExceptionCode(), "qvUnexpectedException");
    }
}

TEST_F(CrsIdentifiersTest, RefusesUrlAndTextOfAnUnknownOrDefaultCrs) {
    const Writer writeUrl = [](const AbstractCrs& crs, bool) { return crs.getAsURL("base", P, P); };
    const Writer writeTemplateUrl = inFormat({TEMPLATE_URL, "", "base", P, P});
    for (BareCrs crs : {givenUnknown(), givenDefault()}) {
        for (const char* const alias : {"", "alias"}) {
            crs.alias = alias;
            expectRefused(crs, writeUrl, "URL representation for unknown or default SRS requested.");
            expectRefused(crs, writeTemplateUrl, "URL representation for unknown or default SRS requested.");
            expectRefused(crs, writeText, "Text representation of an unknown or the default SRS requested.");
        }
        EXPECT_EQ(writeTemplateUrl(crs, true), "alias");
    }
}

TEST_F(CrsIdentifiersTest, WritesAxisOrderAndScaleFactorAsText) {
    const struct {
        double factor;
        std::string text;
    } rows[] = {
        {1, "1"},
        {0.9996, "0.9996"},
        {2.5e-7, "0.00000025"},
        {1e20, "100000000000000000000"},
        {-1, "-1"},
        {-0.3048, "-0.3048"},
        {1234567.5, "1234567.5"},
        {0, "0"},
        {100, "100"},
        {1.0 / 3, "0.333333333333333"},
        {0.1 + 0.2, "0.3"},
    };
    for (const auto& row : rows) {
        BareCrs crs = givenAliased();
        crs.setScaleFactors(row.factor, 5);
        EXPECT_EQ(crs.getAsText(), "EPSG:4326;NE;" + row.text);
        crs.forceWmsAxisOrder();
        EXPECT_EQ(crs.getAsText(), "EPSG:4326;EN;" + row.text);
    }
}

TEST_F(CrsIdentifiersTest, WritesTheHeightFactorOfWhatHasASecondCodeAsText) {
    const struct {
        Shape shape;
        double primary;
        double secondary;
        const char* text;
    } rows[] = {
        {{27700, 5701, 2, 1}, 0.9996, 0.3048, ";EN;0.9996;0.3048"},
        {{27700, 5701, 2, 1}, 1e20, 2.5e-7, ";EN;100000000000000000000;0.00000025"},
        {{27700, 5701, 2, 1}, -2, -0.5, ";EN;-2;-0.5"},
        {{27700, 5701, 2, 0}, 0.9996, 0.3048, ";EN;0.9996;1"},
        {{27700, 5701, 3, 0}, 0.9996, 0.3048, ";EN;0.9996;0.9996"},
        {{4979, 0, 3, 0}, 0.9996, 0.3048, ";EN;0.9996"},
        {{27700, 0, 2, 1}, 0.9996, 0.3048, ";EN;0.9996"},
    };
    for (const auto& row : rows) {
        BareCrs crs = given(row.shape);
        crs.identifier = "id";
        crs.setScaleFactors(row.primary, row.secondary);
        EXPECT_EQ(crs.getAsText(), std::string("id") + row.text) << row.shape;
    }
}

TEST_F(CrsIdentifiersTest, WritesTheSameInEveryLocale) {
    const GroupingLocale locale;
    BareCrs crs = givenCompound();
    crs.setScaleFactors(1234567.25, 0.3048);
    EXPECT_EQ(writeText(crs, false), "EPSG:27700*EPSG:5701;NE;1234567.25;0.3048");
    EXPECT_EQ(writeUrn(crs, false), "urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701");
    EXPECT_EQ(withOptions({"", "", URL_STYLE})(crs, false),
              "http://www.opengis.net/def/crs,crs/EPSG/0/27700,crs/EPSG/0/5701");
    EXPECT_EQ(withOptions({"", "EPSG:", URN_STYLE})(crs, false), "EPSG:27700,EPSG:5701");
    EXPECT_EQ(crs.getAsURL("base", P, P + "," + S), "base#27700,5701");
}

TEST_F(CrsIdentifiersTest, WritesOneCrsOnSeveralThreads) {
    BareCrs compound = givenCompound();
    compound.alias = "British National Grid + ODN";
    const auto writeAll = [&compound] {
        for (int i = 0; i < 1000; ++i) {
            EXPECT_EQ(compound.getAliasOrIdentifier(true), "British National Grid + ODN");
            EXPECT_EQ(writeUrn(compound, false), "urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701");
            EXPECT_EQ(inFormat({IDENTIFIER, "", "", "", ""})(compound, false), "EPSG:27700*EPSG:5701");
            EXPECT_EQ(compound.getAsURL("base", P, S), "base#5701");
            EXPECT_EQ(writeText(compound, false), "EPSG:27700*EPSG:5701;NE;1;1");
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back(writeAll);
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace CoordinateTransformation
