#include "tools/crsctl/names/NameReport.h"

#include <gtest/gtest.h>
#include <ostream>

#include "tools/crsctl/names/NameReportOutput.h"
#include "tests/support/CrsctlSession.h"

namespace crsctl {
namespace {

constexpr char CONFIGURATION[] =
    "<CrsConfiguration>"
    "<CRS>4326</CRS>"
    "<CRS>CRS:84</CRS>"
    "<CRS mapToEpsgCode='25832'>UTM32</CRS>"
    "<CRS mapToEpsgCode='3857'>EPSG:900913</CRS>"
    "<CRS>EPSG:27700*EPSG:5701</CRS>"
    "</CrsConfiguration>";

std::string formOf(const NameReport& report, const std::string& key) {
    for (const WrittenForm& form : report.crs->forms)
        if (form.key == key) return form.text;
    return "no such form";
}

TEST(AReport, SaysWhatACrsIs) {
    const UnconfiguredSession session;
    const NameReport report = reportOn("urn:ogc:def:crs:EPSG:6.12:4326", session);
    ASSERT_TRUE(report.crs);
    EXPECT_EQ(report.spelling, "OGC URN");
    EXPECT_EQ(report.crs->primary, 4326U);
    EXPECT_EQ(report.crs->secondary, 0U);
    EXPECT_EQ(report.crs->version, "6.12");
    EXPECT_EQ(report.crs->alias, "");
    EXPECT_EQ(report.crs->dimension, 2U);
    EXPECT_TRUE(report.crs->geographic);
    EXPECT_EQ(report.crs->axisOrder, "latitude, longitude");
    EXPECT_DOUBLE_EQ(report.crs->unitInMetres, 111319.4907931134);
}

TEST(AReport, WritesTheCrsBackInEveryForm) {
    const UnconfiguredSession session;
    const NameReport report = reportOn("27700*5701", session);
    ASSERT_TRUE(report.crs);
    EXPECT_EQ(formOf(report, "identifier"), "EPSG:27700*EPSG:5701");
    EXPECT_EQ(formOf(report, "aliasOrIdentifier"), "EPSG:27700*EPSG:5701");
    EXPECT_EQ(formOf(report, "urn"), "urn:ogc:def:crs,crs:EPSG::27700,crs:EPSG::5701");
    EXPECT_EQ(formOf(report, "url"), "http://www.opengis.net/def/crs,crs/EPSG/0/27700,crs/EPSG/0/5701");
    EXPECT_EQ(formOf(report, "gmlReference"), "http://www.opengis.net/gml/srs/epsg.xml#27700");
    EXPECT_EQ(formOf(report, "prefixAndCode"), "EPSG:27700,EPSG:5701");
    EXPECT_EQ(formOf(report, "text"), "EPSG:27700*EPSG:5701;EN;1;1");
}

TEST(AReport, CannotSayWhatIsOfferedWithoutAConfiguration) {
    const UnconfiguredSession session;
    const NameReport report = reportOn("EPSG:25832", session);
    EXPECT_FALSE(report.offered);
    EXPECT_NE(asText(report).find("offered     no configuration given"), std::string::npos) << asText(report);
    EXPECT_TRUE(asJson(report)["offered"].is_null());
}

TEST(AReport, KeepsTheAliasOfAGmlReference) {
    const UnconfiguredSession session;
    const NameReport report = reportOn("epsg.xml#4326", session);
    EXPECT_EQ(report.spelling, "GML reference");
    EXPECT_EQ(report.crs->alias, "epsg.xml#4326");
    EXPECT_EQ(formOf(report, "aliasOrIdentifier"), "epsg.xml#4326");
}

TEST(AReport, WritesNothingForACrsWithoutACode) {
    const UnconfiguredSession session;
    const NameReport report = reportOn("EPSG:0", session);
    ASSERT_TRUE(report.crs);
    EXPECT_EQ(formOf(report, "urn"), "");
    EXPECT_EQ(formOf(report, "text"), "Text representation of an unknown or the default SRS requested.");
    EXPECT_TRUE(asJson(report)["forms"]["text"].is_null());
}

struct OfferCase {
    const char* name;
    const char* spelling;
    bool registered;
    bool offered;
};

void PrintTo(const OfferCase& offer, std::ostream* stream) { *stream << offer.name; }

class Offering : public testing::TestWithParam<OfferCase> {};

TEST_P(Offering, GoesByTheConfiguration) {
    const ConfiguredSession session(CONFIGURATION);
    const NameReport report = reportOn(GetParam().name, *session);
    EXPECT_EQ(report.spelling, GetParam().spelling);
    EXPECT_EQ(report.registered, GetParam().registered);
    ASSERT_TRUE(report.offered);
    EXPECT_EQ(*report.offered, GetParam().offered);
    EXPECT_EQ(report.crs.has_value(), GetParam().offered);
    EXPECT_EQ(report.refusal.has_value(), !GetParam().offered);
}

INSTANTIATE_TEST_SUITE_P(
    Names, Offering,
    testing::Values(OfferCase{"UTM32", "configured name", true, true},
                    OfferCase{"EPSG:900913", "configured name", true, true},
                    OfferCase{"CRS:84", "configured name", true, true},
                    OfferCase{"EPSG:4326;NE;1", "configured name", true, true},
                    OfferCase{"EPSG:4326", "EPSG code", true, true},
                    OfferCase{"urn:ogc:def:crs:EPSG::25832", "OGC URN", true, true},
                    OfferCase{"http://www.opengis.net/def/crs/EPSG/0/25832", "OGC http URL", false, true},
                    OfferCase{"epsg.xml#4326", "GML reference", false, true},
                    OfferCase{"EPSG:25833", "EPSG code", false, false}, OfferCase{"utm32", "none", false, false}));

struct RefusalCase {
    const char* name;
    const char* code;
    const char* text;
    Reason reason;
    const char* suggestion;
};

void PrintTo(const RefusalCase& refusal, std::ostream* stream) { *stream << refusal.name; }

class Refusing : public testing::TestWithParam<RefusalCase> {};

TEST_P(Refusing, GivesCodeTextReasonAndWhatWouldHelp) {
    const ConfiguredSession session(CONFIGURATION);
    const NameReport report = reportOn(GetParam().name, *session);
    ASSERT_TRUE(report.refusal);
    EXPECT_EQ(report.refusal->serviceExceptionCode, GetParam().code);
    EXPECT_EQ(report.refusal->text, GetParam().text);
    EXPECT_EQ(report.refusal->reason, GetParam().reason) << wordsFor(report.refusal->reason);
    EXPECT_EQ(report.refusal->suggestion ? report.refusal->suggestion->name : "", GetParam().suggestion);
}

INSTANTIATE_TEST_SUITE_P(
    Names, Refusing,
    testing::Values(
        RefusalCase{
            "epsg:4326", "qvCrsUnavailable",
            "The requested CRS epsg:4326 is not available due to an unknown syntax or a missing identifier mapping",
            Reason::UnknownSyntax, "EPSG:4326"},
        RefusalCase{"utm32", "qvCrsUnavailable",
                    "The requested CRS utm32 is not available due to an unknown syntax or a missing identifier mapping",
                    Reason::UnknownSyntax, "UTM32"},
        RefusalCase{
            "EPSG:x", "qvCrsUnavailable",
            "The requested CRS EPSG:x is not available due to an unknown syntax or a missing identifier mapping",
            Reason::BadCode, ""},
        RefusalCase{"urn:ogc:def:crs:EPSG::abc", "qvConversionError", "convertTextToNumeric: Value 'abc'",
                    Reason::BadCode, ""},
        RefusalCase{"EPSG:27700*5701", "", "invalid string position", Reason::BadCode, "EPSG:27700*EPSG:5701"},
        RefusalCase{"EPSG:99999", "qvConfigurationError",
                    "Failed to configure CRS 99999. Please ensure that the CRS is defined properly in the proj4 "
                    "configuration for QuarvelServer.",
                    Reason::NotInEpsgFile, ""},
        RefusalCase{"EPSG:25833", "qvCrsUnavailable", "The requested CRS EPSG:25833 is not set up in the configuration",
                    Reason::NotOffered, ""}));

TEST(ASuggestedName, IsOneThatTheServerOffers) {
    const ConfiguredSession session(CONFIGURATION);
    EXPECT_FALSE(reportOn("epsg:25833", *session).refusal->suggestion);
}

TEST(ARefusal, FitsIntoOneLine) {
    const UnconfiguredSession session;
    EXPECT_EQ(refusalInOneLine(reportOn("epsg:4326\n", session)).find('\n'), std::string::npos);
    EXPECT_EQ(refusalInOneLine(reportOn("epsg:4326", session)),
              "epsg:4326: qvCrsUnavailable: The requested CRS epsg:4326 is not available due to an unknown syntax or a "
              "missing identifier mapping (unknown syntax); try EPSG:4326 (with the prefix in capitals)");
}

TEST(TheAxisOrder, IsSaidInWords) {
    EXPECT_STREQ(axisOrderWords(true, false), "latitude, longitude");
    EXPECT_STREQ(axisOrderWords(true, true), "longitude, latitude");
    EXPECT_STREQ(axisOrderWords(false, true), "easting, northing");
    EXPECT_STREQ(axisOrderWords(false, false), "northing, easting");
}

}  // namespace
}  // namespace crsctl
