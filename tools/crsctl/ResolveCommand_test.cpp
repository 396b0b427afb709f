#include "tools/crsctl/ResolveCommand.h"

#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "names/CrsName.h"
#include "tests/support/CrsctlSession.h"
#include "tests/support/NameTable.h"

namespace crsctl {

using TestSupport::NameRow;
using TestSupport::nameTable;

namespace {

bool isUnderstood(const std::string& name) {
    using CoordinateTransformation::NameExplanation;
    const auto acceptNothing = [](const char* /*property*/) { return false; };
    return CoordinateTransformation::explainName(name, acceptNothing).fault == NameExplanation::Fault::NONE;
}

TEST(ASuggestion, IsTheNearestAcceptedName) {
    for (const NameRow& row : TestSupport::nameRowsWith("suggestion")) {
        SCOPED_TRACE(row.where());
        const auto suggestion = suggest(row["name"], {}, isUnderstood);
        EXPECT_EQ(suggestion ? suggestion->name : "none", row["suggestion"]);
        EXPECT_FALSE(suggestion && suggestion->change.empty());
    }
}

TEST(ASuggestion, IsNotMadeForALongName) { EXPECT_FALSE(suggest(std::string(5000, 'x'), {}, isUnderstood)); }

TEST(ASuggestion, KnowsTheNamesOfTheConfiguration) {
    const auto isConfigured = [](const std::string& name) { return name == "UTM32" || name == "CRS:84"; };
    EXPECT_EQ(suggest("utm32", {"UTM32"}, isConfigured)->name, "UTM32");
    EXPECT_EQ(suggest("urn:ogc:def:crs:OGC:1.3:CRS84", {"UTM32"}, isConfigured)->name, "CRS:84");
    EXPECT_EQ(suggest("crs:84", {"CRS:84"}, isConfigured)->name, "CRS:84");
}

TEST(ASuggestion, IsMadeOnlyWhenTheServerAcceptsIt) {
    EXPECT_FALSE(suggest("epsg:4326", {"EPSG:4326"}, [](const std::string&) { return false; }));
}

TEST(ASuggestion, DescribesTheChange) {
    EXPECT_EQ(suggest("epsg:4326", {}, isUnderstood)->change, "as an EPSG code");
    EXPECT_EQ(suggest("https://www.opengis.net/def/crs/EPSG/0/4326", {}, isUnderstood)->change, "as an OGC http URL");
    EXPECT_EQ(suggest("urn:ogc:def:crs:EPSG:4326", {}, isUnderstood)->change, "as an OGC URN");
}

constexpr char CONFIGURATION[] =
    "<CrsConfiguration>"
    "<CRS>4326</CRS>"
    "<CRS>CRS:84</CRS>"
    "<CRS mapToEpsgCode='25832'>UTM32</CRS>"
    "<CRS mapToEpsgCode='3857'>EPSG:900913</CRS>"
    "<CRS>EPSG:27700*EPSG:5701</CRS>"
    "</CrsConfiguration>";

// The configuration of the server in the table.
std::string exampleConfiguration() {
    std::ifstream file(COORDTRANS_SOURCE_DIR "/data/crs-configuration.xml");
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::string formOf(const NameReport& report, const std::string& key) {
    for (const WrittenForm& form : writtenForms(*report.crs.get()))
        if (form.key == key) return form.text;
    return "no such form";
}

TEST(AReport, ShowsThePropertiesOfACrs) {
    const UnconfiguredSession session;
    const NameReport report = reportOn("urn:ogc:def:crs:EPSG:6.12:4326", session);
    ASSERT_NE(report.crs.get(), nullptr);
    EXPECT_EQ(report.spelling, "OGC URN");
    const Json json = asJson(report);
    EXPECT_EQ(json["primaryCode"], 4326);
    EXPECT_TRUE(json["secondaryCode"].is_null());
    EXPECT_EQ(json["version"], "6.12");
    EXPECT_EQ(json["alias"], "");
    EXPECT_EQ(json["dimension"], 2);
    EXPECT_EQ(json["kind"], "geographic");
    EXPECT_EQ(json["axisOrder"], "latitude, longitude");
    EXPECT_DOUBLE_EQ(json["unitInMetres"].get<double>(), 111319.4907931134);
}

void expectFormsOf(const NameRow& row, const NameReport& report) {
    ASSERT_NE(report.crs.get(), nullptr);
    EXPECT_EQ(formOf(report, "aliasOrIdentifier"), row.isReference() ? row["name"] : row["identifier"]);
    for (const char* const key : {"identifier", "urn", "url", "gmlReference", "prefixAndCode", "text"})
        EXPECT_EQ(formOf(report, key), row[key]) << key;
}

TEST(AReport, WritesTheCrsInEveryForm) {
    const UnconfiguredSession session;
    for (const NameRow& row : TestSupport::nameRowsWith("text")) {
        SCOPED_TRACE(row.where());
        expectFormsOf(row, reportOn(row["name"], session));
    }
}

TEST(AReport, HasNoOfferWithoutAConfiguration) {
    const UnconfiguredSession session;
    const NameReport report = reportOn("EPSG:25832", session);
    EXPECT_FALSE(report.offered);
    EXPECT_NE(asText(report).find("offered     no configuration given"), std::string::npos) << asText(report);
    EXPECT_TRUE(asJson(report)["offered"].is_null());
}

TEST(AReport, HasTheDescriptionOfACrs) {
    const UnconfiguredSession session;
    const NameReport report = reportOn("EPSG:30200", session);
    ASSERT_NE(report.description, nullptr);
    EXPECT_NE(asText(report).find("  described as\n"
                                  "    name       Trinidad 1903 / Trinidad Grid\n"
                                  "    area       Trinidad and Tobago - Trinidad - onshore and offshore.\n"
                                  "    box        -62.09,9.83,-60,11.51 (W,S,E,N)\n"
                                  "    datum      Trinidad 1903 (EPSG:6302)\n"
                                  "    unit       Clarke's link (0.201166195164 m)\n"
                                  "    shift      EPSG:1296, accurate to 2 m\n"
                                  "    from PROJ  at most 0.00 m\n"
                                  "  written as\n"),
              std::string::npos)
        << asText(report);
    const Json json = asJson(report)["description"];
    EXPECT_EQ(json["name"], "Trinidad 1903 / Trinidad Grid");
    EXPECT_EQ(json["box"]["west"], -62.09);
    EXPECT_EQ(json["shiftAccuracy"], 2);
    EXPECT_EQ(json["replacedBy"], Json::array());
}

TEST(AReport, HasTheDescriptionOfTheHorizontalPart) {
    const UnconfiguredSession session;
    const std::string text = asText(reportOn("EPSG:27700*EPSG:5701", session));
    EXPECT_NE(text.find("  described as, its part 27700\n    name       OSGB36 / British National Grid\n"),
              std::string::npos)
        << text;
}

TEST(AReport, HasNoDescriptionOfACodeWithoutOne) {
    const UnconfiguredSession session;
    const NameReport report = reportOn("EPSG:0", session);
    EXPECT_EQ(asText(report).find("described as"), std::string::npos);
    EXPECT_TRUE(asJson(report)["description"].is_null());
}

TEST(TheOgcNamesOfWgs84, PutTheLongitudeFirstWithoutAConfiguration) {
    const UnconfiguredSession session;
    for (const char* name : {"CRS:84", "OGC:CRS84", "urn:ogc:def:crs:OGC:1.3:CRS84", "urn:ogc:def:crs:OGC::CRS84",
                             "http://www.opengis.net/def/crs/OGC/1.3/CRS84"}) {
        const NameReport report = reportOn(name, session);
        ASSERT_NE(report.crs.get(), nullptr) << name;
        EXPECT_EQ(report.crs->getPrimaryCode(), 4326U) << name;
        EXPECT_STREQ(axisOrderText(*report.crs.get()), "longitude, latitude") << name;
        EXPECT_EQ(report.spelling, "OGC name of WGS 84, for a configuration") << name;
        EXPECT_FALSE(report.registered) << name;
    }
    for (const char* name : {"crs:84", "CRS:83", "OGC:CRS84 "}) EXPECT_TRUE(reportOn(name, session).refusal) << name;
}

TEST(TheOgcNamesOfWgs84, AreOnlyThoseOfTheConfiguration) {
    const ConfiguredSession session("<CrsConfiguration><CRS>4326</CRS></CrsConfiguration>");
    EXPECT_TRUE(reportOn("CRS:84", *session).refusal);
    EXPECT_TRUE(reportOn("OGC:CRS84", *session).refusal);
}

TEST(AReport, KeepsTheAliasOfAGmlReference) {
    const UnconfiguredSession session;
    const NameReport report = reportOn("epsg.xml#4326", session);
    EXPECT_EQ(report.spelling, "GML reference");
    EXPECT_EQ(report.crs->getAlias(), "epsg.xml#4326");
    EXPECT_EQ(formOf(report, "aliasOrIdentifier"), "epsg.xml#4326");
}

TEST(AReport, WritesNothingForACrsWithoutACode) {
    const UnconfiguredSession session;
    const NameReport report = reportOn("EPSG:0", session);
    ASSERT_NE(report.crs.get(), nullptr);
    EXPECT_EQ(formOf(report, "urn"), "");
    EXPECT_EQ(formOf(report, "text"), "Text representation of an unknown or the default SRS requested.");
    EXPECT_TRUE(asJson(report)["forms"]["text"].is_null());
}

// A configured name may have the syntax of another CRS, or no known syntax.
std::string spellingOf(const NameRow& row) {
    const bool wellFormed = row.isAccepted() && row.answer() != "CrsUnknownSyntaxOrAlias";
    if (row.isRegistered() && !wellFormed) return "configured name";
    return wellFormed || row["fault"] == "code" ? row["spelling"] : "none";
}

Reason reasonOf(const NameRow& row) {
    if (row.answer() == "Misconfigured") return Reason::NOT_IN_EPSG_FILE;
    if (row.answer() == "CrsNotConfigured") return Reason::NOT_OFFERED;
    return row["fault"] == "code" ? Reason::BAD_CODE : Reason::UNKNOWN_SYNTAX;
}

void expectOffer(const NameRow& row, const NameReport& report) {
    EXPECT_EQ(report.registered, row.isRegistered());
    ASSERT_TRUE(report.offered);
    EXPECT_EQ(*report.offered, row.isAnswered());
    EXPECT_EQ(report.crs != nullptr, row.isAnswered());
    EXPECT_EQ(report.refusal.has_value(), !row.isAnswered());
}

void expectRefusal(const NameRow& row, const Refusal& refusal) {
    const TestSupport::NameFailure failure = TestSupport::nameFailure(row, row.answer());
    EXPECT_EQ(refusal.serviceExceptionCode, failure.serviceExceptionCode);
    // A NUL ends the text of what().
    EXPECT_EQ(refusal.text, failure.text.c_str());
    EXPECT_EQ(refusal.reason, reasonOf(row)) << reasonText(refusal.reason);
    if (row["suggestion"].empty()) return;
    EXPECT_EQ(refusal.suggestion ? refusal.suggestion->name : "none", row["suggestion"]);
}

TEST(AReport, ShowsTheResultOfEveryName) {
    const ConfiguredSession session(exampleConfiguration());
    for (const NameRow& row : nameTable()) {
        SCOPED_TRACE(row.where());
        const NameReport report = reportOn(row["name"], *session);
        EXPECT_EQ(report.spelling, spellingOf(row));
        expectOffer(row, report);
        if (report.refusal) expectRefusal(row, *report.refusal);
    }
}

TEST(AReport, ShowsAMappedNameAsConfiguredWhateverItsSpelling) {
    const ConfiguredSession session(CONFIGURATION);
    EXPECT_EQ(reportOn("EPSG:900913", *session).spelling, "configured name");
}

TEST(ASuggestedName, IsOneThatTheServerOffers) {
    const ConfiguredSession session(CONFIGURATION);
    EXPECT_FALSE(reportOn("epsg:25833", *session).refusal->suggestion);
    EXPECT_EQ(reportOn("utm32", *session).refusal->suggestion->name, "UTM32");
}

TEST(ARefusal, FitsIntoOneLine) {
    const UnconfiguredSession session;
    EXPECT_EQ(refusalInOneLine(reportOn("epsg:4326\n", session)).find('\n'), std::string::npos);
    EXPECT_EQ(refusalInOneLine(reportOn("epsg:4326", session)),
              "epsg:4326: qvCrsUnavailable: The requested CRS epsg:4326 is not available due to an unknown syntax or a "
              "missing identifier mapping (unknown syntax); try EPSG:4326 (as an EPSG code)");
}

TEST(ARefusal, IsWrittenAsATable) {
    const UnconfiguredSession session;
    EXPECT_EQ(
        asText(reportOn("epsg:4326", session)),
        "epsg:4326\n"
        "  spelling  none\n"
        "  refused   qvCrsUnavailable\n"
        "  text      The requested CRS epsg:4326 is not available due to an unknown syntax or a missing identifier "
        "mapping\n"
        "  reason    unknown syntax\n"
        "  try       EPSG:4326 (as an EPSG code)\n"
        "  offered   no configuration given\n");
    EXPECT_EQ(refusalNote(reportOn("epsg:4326", session)), "epsg:4326: refused with qvCrsUnavailable, unknown syntax");
}

TEST(ARefusal, IsWrittenAsJson) {
    const UnconfiguredSession session;
    const Json json = asJson(reportOn("epsg:4326", session));
    EXPECT_EQ(json["accepted"], false);
    EXPECT_EQ(json["serviceExceptionCode"], "qvCrsUnavailable");
    EXPECT_EQ(json["reason"], "unknown syntax");
    EXPECT_EQ(json["suggestion"], Json({{"name", "EPSG:4326"}, {"change", "as an EPSG code"}}));
    EXPECT_FALSE(json.contains("description"));
    EXPECT_TRUE(asJson(reportOn("EPSG:4327", session))["suggestion"].is_null());
}

TEST(TheCodes, AreWrittenInWords) {
    const UnconfiguredSession session;
    EXPECT_EQ(codesText(*reportOn("EPSG:4326", session).crs.get()), "4326");
    EXPECT_EQ(codesText(*reportOn("EPSG:27700*EPSG:5701", session).crs.get()), "27700 and 5701");
}

TEST(EveryReason, HasAText) {
    EXPECT_STREQ(reasonText(Reason::UNKNOWN_SYNTAX), "unknown syntax");
    EXPECT_STREQ(reasonText(Reason::BAD_CODE), "bad code");
    EXPECT_STREQ(reasonText(Reason::NOT_IN_EPSG_FILE), "not in the \"epsg\" file");
    EXPECT_STREQ(reasonText(Reason::NOT_OFFERED), "known, but not offered");
    EXPECT_STREQ(reasonText(Reason::OTHER), "other");
}

TEST(ARefusal, MayHaveNeitherCodeNorSuggestion) {
    NameReport report;
    report.name = "a\nb";
    report.spelling = "none";
    report.refusal = Refusal{"", "The reason\nis long.", Reason::OTHER, std::nullopt};
    EXPECT_EQ(refusalNote(report), "a\\nb: refused, other");
    EXPECT_EQ(refusalInOneLine(report), "a\\nb: The reason\\nis long. (other)");
    EXPECT_EQ(asText(report),
              "a\\nb\n"
              "  spelling  none\n"
              "  refused   no service exception code\n"
              "  text      The reason\\nis long.\n"
              "  reason    other\n"
              "  offered   no configuration given\n");
    EXPECT_TRUE(asJson(report)["serviceExceptionCode"].is_null());
}

std::string offerOf(const std::string& name, const Session& session) {
    const std::string text = asText(reportOn(name, session));
    const std::size_t begin = text.find("  offered ");
    const std::string line = text.substr(begin, text.find('\n', begin) - begin);
    return line.substr(line.find_first_not_of(' ', line.find("offered") + 7));
}

TEST(AReport, ShowsHowTheServerOffersACrs) {
    const ConfiguredSession session(CONFIGURATION);
    EXPECT_EQ(offerOf("UTM32", *session), "yes, registered under this name");
    EXPECT_EQ(offerOf("urn:ogc:def:crs:EPSG:7.9:25832", *session), "yes, made on request");
    EXPECT_EQ(offerOf("EPSG:25833", *session), "no");
    EXPECT_EQ(offerOf("nonsense", *session), "no");
}

// The library takes the code from the last numbers of a name.
TEST(ASuggestion, IsNotMadeForANumberThatIsTooLongForACode) {
    EXPECT_FALSE(suggest("epsg:123456789", {}, isUnderstood));
    EXPECT_EQ(suggest("epsg:12345678", {}, isUnderstood)->name, "EPSG:12345678");
}

TEST(ASuggestion, IsNotAConfiguredNameWithOtherDigits) {
    const auto isConfigured = [](const std::string& name) { return name.rfind("UTM", 0) == 0; };
    EXPECT_FALSE(suggest("utm33", {"UTM32"}, isConfigured));
    EXPECT_EQ(suggest("utm33", {"UTM32", "UTM33"}, isConfigured)->name, "UTM33");
    EXPECT_EQ(suggest("utm33", {"UTM33"}, isConfigured)->change, "as the configuration spells it");
}

TEST(ASuggestion, IsNeverTheNameItself) {
    const auto worksAsItself = [](const std::string& name) { return name == "EPSG:4326" || name == "CRS:84"; };
    EXPECT_FALSE(suggest("EPSG:4326", {"EPSG:4326"}, worksAsItself));
    EXPECT_FALSE(suggest("CRS:84", {"CRS:84"}, worksAsItself));
}

TEST(ASuggestion, MayBeTheNameInSmallLetters) {
    const auto suggestion = suggest("Lake", {}, [](const std::string& name) { return name == "lake"; });
    ASSERT_TRUE(suggestion);
    EXPECT_EQ(suggestion->name, "lake");
    EXPECT_EQ(suggestion->change, "in small letters");
}

// Two fifths of a name, and never less than two characters, may be changed.
TEST(ASuggestion, IsNearToTheName) {
    const auto worksAs = [](const std::string& known) {
        return [known](const std::string& name) { return name == known; };
    };
    EXPECT_TRUE(suggest("abxx", {"ab"}, worksAs("ab")));
    EXPECT_FALSE(suggest("abxxx", {"ab"}, worksAs("ab")));
    EXPECT_TRUE(suggest("abcdefxxxx", {"abcdef"}, worksAs("abcdef")));
    EXPECT_FALSE(suggest("abcdefxxxxx", {"abcdef"}, worksAs("abcdef")));
    EXPECT_TRUE(suggest(std::string(512, 'X'), {}, worksAs(std::string(512, 'x'))));
    EXPECT_FALSE(suggest(std::string(513, 'X'), {}, worksAs(std::string(513, 'x'))));
}

TEST(Resolving, ReportsOnEachName) {
    const CommandResult result = resolveCommand(optionsFor(), {"EPSG:4326", "epsg:4326", "EPSG:4327"});
    const UnconfiguredSession session;
    EXPECT_EQ(result.output, asText(reportOn("EPSG:4326", session)) + "\n" + asText(reportOn("epsg:4326", session)) +
                                 "\n" + asText(reportOn("EPSG:4327", session)));
    EXPECT_EQ(result.exitCode, EXIT_REFUSED);
    EXPECT_EQ(result.notes, (std::vector<std::string>{refusalNote(reportOn("epsg:4326", session)),
                                                      refusalNote(reportOn("EPSG:4327", session))}));
}

TEST(Resolving, WritesAnArrayAsJson) {
    CommonOptions options = optionsFor();
    options.json = true;
    const CommandResult result = resolveCommand(options, {"EPSG:4326", "\xFF"});
    const Json json = Json::parse(result.output);
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(json[0]["accepted"], true);
    EXPECT_FALSE(json[0].contains("bytesReplaced"));
    EXPECT_EQ(json[1]["accepted"], false);
    EXPECT_EQ(json[1]["bytesReplaced"], true);
    EXPECT_EQ(result.notes.size(), 1U);
    EXPECT_EQ(resolveCommand(options, {"EPSG:4326"}).exitCode, EXIT_DONE);
}

TEST(AReport, IsWrittenAsATable) {
    const UnconfiguredSession session;
    const std::string text = asText(reportOn("EPSG:25832", session));
    EXPECT_EQ(text.rfind("EPSG:25832\n", 0), 0U) << text;
    for (const char* const line :
         {"  codes       25832\n", "  version     none\n", "  alias       none\n", "  dimension   2\n",
          "  kind        projected\n", "  axis order  easting, northing\n", "  unit        1 m\n", "  written as\n"})
        EXPECT_NE(text.find(line), std::string::npos) << line << text;
    EXPECT_NE(asText(reportOn("EPSG:4326", session)).find(" m (a degree)\n"), std::string::npos);
}

TEST(TheAxisOrder, IsWrittenInWords) {
    EXPECT_STREQ(axisOrderText(true, false), "latitude, longitude");
    EXPECT_STREQ(axisOrderText(true, true), "longitude, latitude");
    EXPECT_STREQ(axisOrderText(false, true), "easting, northing");
    EXPECT_STREQ(axisOrderText(false, false), "northing, easting");
}

}  // namespace
}  // namespace crsctl
