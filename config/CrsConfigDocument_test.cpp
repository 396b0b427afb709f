// The parts of a document that `configure` reads.

#include <cstddef>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <boost/property_tree/xml_parser.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CoordinateTransformation/CrsConfig.h"
#include "tests/support/GroupingLocale.h"
#include "tests/support/TestConfig.h"

namespace CoordinateTransformation {
namespace {

using boost::property_tree::xml_parser_error;
using testing::ElementsAre;
using Names = std::vector<std::string>;

struct Document {
    const char* behaviour;
    std::string xml;
    Names entries;
};

void PrintTo(const Document& document, std::ostream* stream) { *stream << document.behaviour; }

class DocumentTest : public testing::TestWithParam<Document> {};

TEST_P(DocumentTest, GivesItsEntries) {
    TestConfig server;
    server.configure(GetParam().xml);
    EXPECT_EQ(server.entries(), GetParam().entries);
}

INSTANTIATE_TEST_SUITE_P(
    Containers, DocumentTest,
    testing::Values(Document{"CrsConfiguration",
                             "<CrsConfiguration><CRS>4326</CRS><CRS>4258</CRS></CrsConfiguration>",
                             {"EPSG:4326", "EPSG:4258"}},
                    Document{"SRSList with both names in document order",
                             "<SRSList><EPSGCode>1</EPSGCode><SRS>2</SRS><EPSGCode>3</EPSGCode><SRS>4</SRS></SRSList>",
                             {"EPSG:1", "EPSG:2", "EPSG:3", "EPSG:4"}},
                    Document{"CrsConfiguration goes before SRSList",
                             "<SRSList><SRS>1</SRS></SRSList><CrsConfiguration><CRS>2</CRS></CrsConfiguration>",
                             {"EPSG:2", "EPSG:1"}},
                    Document{"only the first of each container is read",
                             "<CrsConfiguration><CRS>1</CRS></CrsConfiguration><SRSList><SRS>2</SRS></SRSList>"
                             "<CrsConfiguration><CRS>3</CRS></CrsConfiguration><SRSList><SRS>4</SRS></SRSList>",
                             {"EPSG:1", "EPSG:2"}},
                    Document{"a first container without entries counts",
                             "<CrsConfiguration/><CrsConfiguration><CRS>3</CRS></CrsConfiguration>",
                             {}},
                    Document{"attributes of a container are ignored",
                             "<CrsConfiguration mapToEpsgCode='31467' CRS='4258'><CRS>4326</CRS></CrsConfiguration>"
                             "<SRSList SRS='4258' EPSGCode='4258'><SRS>2</SRS></SRSList>",
                             {"EPSG:4326", "EPSG:2"}},
                    Document{
                        "the same entry in both containers is one",
                        "<CrsConfiguration><CRS>4326</CRS></CrsConfiguration><SRSList><SRS>EPSG:4326</SRS></SRSList>",
                        {"EPSG:4326"}},
                    Document{"neither container", "<Configuration><Name>4326</Name></Configuration>", {}},
                    Document{"a container inside another element",
                             "<Server><CrsConfiguration><CRS>4326</CRS></CrsConfiguration></Server>",
                             {}},
                    Document{"a container inside a container",
                             "<CrsConfiguration><SRSList><SRS>4326</SRS></SRSList></CrsConfiguration>",
                             {}},
                    Document{"names of containers are case-sensitive",
                             "<crsConfiguration><CRS>1</CRS></crsConfiguration><SrsList><SRS>2</SRS></SrsList>",
                             {}}));

INSTANTIATE_TEST_SUITE_P(
    Children, DocumentTest,
    testing::Values(
        Document{"CrsConfiguration takes no SRS and no EPSGCode",
                 "<CrsConfiguration><SRS>1</SRS><CRS>2</CRS><EPSGCode>3</EPSGCode></CrsConfiguration>",
                 {"EPSG:2"}},
        Document{"SRSList takes no CRS", "<SRSList><CRS>1</CRS><SRS>2</SRS></SRSList>", {"EPSG:2"}},
        Document{"names of entries are case-sensitive",
                 "<CrsConfiguration><Crs>1</Crs><crs>2</crs></CrsConfiguration>"
                 "<SRSList><Srs>3</Srs><epsgCode>4</epsgCode><EpsgCode>5</EpsgCode></SRSList>",
                 {}},
        Document{"names of entries are whole",
                 "<CrsConfiguration><CRSs>1</CRSs><x:CRS>2</x:CRS><CRS.>3</CRS.></CrsConfiguration>",
                 {}},
        Document{"children of entries are no entries",
                 "<CrsConfiguration><Group><CRS>1</CRS></Group><CRS>2<CRS>3</CRS></CRS></CrsConfiguration>",
                 {"EPSG:2"}},
        Document{"text of a container is ignored",
                 "<CrsConfiguration>4326<CRS>4258</CRS>4979</CrsConfiguration>",
                 {"EPSG:4258"}},
        Document{"comments are ignored",
                 "<!-- a --><CrsConfiguration><!-- <CRS>1</CRS> --><CRS>2<!-- c --></CRS></CrsConfiguration><!-- d -->",
                 {"EPSG:2"}},
        Document{
            "an entry without text has an empty identifier", "<CrsConfiguration><CRS/></CrsConfiguration>", {""}}));

INSTANTIATE_TEST_SUITE_P(
    Entries, DocumentTest,
    testing::Values(
        Document{
            "CRS:84", "<CrsConfiguration><CRS axisOrder='NE'>CRS:84</CRS></CrsConfiguration>", {"CRS:84=EPSG:4326"}},
        Document{"alias", "<SRSList><SRS mapToEpsgCode='31467'>GK3</SRS></SRSList>", {"GK3=EPSG:31467"}},
        Document{"the same text and mapping twice",
                 "<SRSList><SRS mapToEpsgCode='31467'>GK3</SRS><SRS mapToEpsgCode='EPSG:31467'>GK3</SRS></SRSList>",
                 {"GK3=EPSG:31467"}},
        Document{"the same identifier under several aliases",
                 "<SRSList><SRS>31467</SRS><SRS mapToEpsgCode='31467'>A</SRS><SRS mapToEpsgCode='31467'>B</SRS>"
                 "</SRSList>",
                 {"EPSG:31467", "A=EPSG:31467", "B=EPSG:31467"}},
        Document{"the same alias for several identifiers",
                 "<SRSList><SRS mapToEpsgCode='31467'>A</SRS><SRS mapToEpsgCode='31468'>A</SRS></SRSList>",
                 {"A=EPSG:31467", "A=EPSG:31468"}},
        Document{"blanks and line ends are kept",
                 "<CrsConfiguration>\n  <CRS> 4326</CRS>\n  <CRS>\n4326\n</CRS>\n</CrsConfiguration>\n",
                 {" 4326", "\n4326\n"}}));

INSTANTIATE_TEST_SUITE_P(Shells, DocumentTest,
                         testing::Values(Document{"empty", "", {}}, Document{"blanks", " \n\t ", {}},
                                         Document{"comment", "<!-- nothing -->", {}},
                                         Document{"declaration",
                                                  "<?xml version='1.0' encoding='UTF-8'?><CrsConfiguration><CRS>1</CRS>"
                                                  "</CrsConfiguration>",
                                                  {"EPSG:1"}},
                                         Document{"byte order mark",
                                                  "\xef\xbb\xbf<CrsConfiguration><CRS>1</CRS></CrsConfiguration>",
                                                  {"EPSG:1"}}));

TEST(ConfigureTest, AppendsToWhatIsThere) {
    TestConfig server;
    server.configure("<SRSList><SRS>1</SRS></SRSList>");
    server.configure("<CrsConfiguration><CRS>2</CRS></CrsConfiguration><SRSList><SRS>1</SRS><SRS>3</SRS></SRSList>");
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:1", "EPSG:2", "EPSG:3"));
}

TEST(ConfigureTest, NeitherInitialisesNorReinitialises) {
    TestConfig server;
    server.givenConfigured({"<CRS>4326</CRS>"});
    EXPECT_EQ(server.journal.initialisations(), 0);
    server.config.init();
    server.givenConfigured({"<CRS>4258</CRS>"});
    EXPECT_EQ(server.journal.initialisations(), 1);
    EXPECT_TRUE(server.config.isCrsConfigured("4326"));
    EXPECT_FALSE(server.config.isCrsConfigured("4258"));
}

TEST(ConfigureTest, NeedsNoCreator) {
    CrsConfig config;
    std::istringstream document("<SRSList><SRS>4326</SRS></SRSList>");
    config.configure(document);
    EXPECT_EQ(config.getConfiguredCrs()->size(), 1U);
}

TEST(ConfigureTest, IsFreeOfTheLocale) {
    const GroupingLocale locale;
    TestConfig server;
    server.givenInitialised({"<CRS numberOfDecimalPlaces='12'>31467</CRS>"});
    EXPECT_EQ(server.config.getConfiguredCrs()->front().getNumberOfDecimalPlaces().value_or(-1), 12);
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:31467;NE;1"));
}

TEST(ConfigureTest, ReadsAHugeDocument) {
    constexpr int count = 3000;
    std::string xml = "<SRSList>";
    for (int i = 0; i < count; ++i) xml += "<SRS>" + std::to_string(i) + "</SRS>" + std::string(1000, ' ');
    TestConfig server;
    server.configure(xml + "</SRSList>");
    const Names entries = server.entries();
    ASSERT_EQ(entries.size(), 3000U);
    EXPECT_EQ(entries.front(), "EPSG:0");
    EXPECT_EQ(entries.back(), "EPSG:2999");
}

class MalformedDocumentTest : public testing::TestWithParam<const char*> {
protected:
    static xml_parser_error readersError() {
        std::istringstream stream(GetParam());
        boost::property_tree::ptree tree;
        try {
            boost::property_tree::read_xml(stream, tree);
        } catch (const xml_parser_error& error) {
            return error;
        }
        ADD_FAILURE() << "not malformed";
        return xml_parser_error("", "", 0);
    }

    TestConfig server;
};

TEST_P(MalformedDocumentTest, RaisesTheReadersOwnErrorUnchanged) {
    const xml_parser_error expected = readersError();
    try {
        server.configure(GetParam());
        FAIL() << "accepted";
    } catch (const xml_parser_error& error) {
        EXPECT_EQ(error.message(), expected.message());
        EXPECT_EQ(error.line(), expected.line());
        EXPECT_STREQ(error.what(), expected.what());
    }
}

TEST_P(MalformedDocumentTest, AddsNothing) {
    server.givenConfigured({"<CRS>4979</CRS>"});
    EXPECT_THROW(server.configure(GetParam()), xml_parser_error);
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:4979"));
}

INSTANTIATE_TEST_SUITE_P(Documents, MalformedDocumentTest,
                         testing::Values("CRS:84", "<CrsConfiguration><CRS>4326</CRS>",
                                         "<CrsConfiguration><CRS>4326</CrsConfiguration>",
                                         "<CrsConfiguration>\n<CRS>4326</CRS>\n<CRS>4258\n",
                                         "<CrsConfiguration><CRS>4326</CRS></CrsConfiguration><SRSList><SRS",
                                         "<CrsConfiguration><CRS>4326</CRS></CrsConfiguration>4258",
                                         "<CrsConfiguration><CRS mapToEpsgCode=4258>A</CRS></CrsConfiguration>",
                                         "<CrsConfiguration><CRS mapToEpsgCode='4258>A</CRS></CrsConfiguration>",
                                         "<CrsConfiguration><CRS mapToEpsgCode>A</CRS></CrsConfiguration>",
                                         "<CrsConfiguration><CRS>4326</CRS><!-- no end </CrsConfiguration>",
                                         "<CrsConfiguration><CRS><![CDATA[4326</CRS></CrsConfiguration>", "<", "<?xml",
                                         "</CrsConfiguration>"));

// Faults that the property tree's reader accepts, or that would crash it.
struct Refused {
    const char* name;
    std::string xml;
    const char* message;
    unsigned long line;
};

void PrintTo(const Refused& refused, std::ostream* stream) { *stream << refused.name; }

class RefusedDocumentTest : public testing::TestWithParam<Refused> {};

TEST_P(RefusedDocumentTest, RaisesTheReadersErrorAndAddsNothing) {
    TestConfig server;
    server.givenConfigured({"<CRS>4979</CRS>"});
    try {
        server.configure(GetParam().xml);
        FAIL() << "accepted";
    } catch (const xml_parser_error& error) {
        EXPECT_EQ(error.message(), GetParam().message);
        EXPECT_EQ(error.line(), GetParam().line);
        EXPECT_EQ(error.filename(), "");
    }
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:4979"));
}

std::string nested(std::size_t depth) {
    std::string xml;
    for (std::size_t i = 0; i < depth; ++i) xml += "<a>";
    for (std::size_t i = 0; i < depth; ++i) xml += "</a>";
    return xml;
}

INSTANTIATE_TEST_SUITE_P(
    Documents, RefusedDocumentTest,
    testing::Values(
        Refused{"wrong end tag", "<SRSList>\n<SRS>4326</CRS>\n</SRSList>",
                "end tag </CRS> does not match <SRS> of line 2", 2},
        Refused{"bare ampersand", "<SRSList>\n\n<SRS mapToEpsgCode='4&6'>A</SRS></SRSList>",
                "an & does not begin an entity; write &amp;", 3},
        Refused{"text behind a NUL byte", "<SRSList>\n<SRS>1</SRS></SRSList>" + std::string("\0<SRS>2</SRS>", 13),
                "the text has a NUL byte", 2},
        Refused{"elements beyond any stack", "\n" + nested(100000), "elements are nested more than 256 deep", 2}));

INSTANTIATE_TEST_SUITE_P(
    WellFormed, DocumentTest,
    testing::Values(
        Document{"the predefined entities",
                 "<SRSList><SRS mapToEpsgCode='1'>&amp;&lt;&gt;&quot;&apos;</SRS></SRSList>",
                 {"&<>\"'=EPSG:1"}},
        Document{"references to characters",
                 "<SRSList><SRS mapToEpsgCode='&#52;&#x33;26'>&#x41;&#66;&#xe4;&#x20AC;&#x1F30D;&#9;</SRS></SRSList>",
                 {"AB\xc3\xa4\xe2\x82\xac\xf0\x9f\x8c\x8d\t=EPSG:4326"}},
        Document{"an ampersand that needs no entity",
                 "<!-- & </b> &x; --><?a & &x; <b>?><SRSList><![CDATA[& &x; <b>]]><SRS>1</SRS></SRSList>",
                 {"EPSG:1"}},
        Document{"CDATA in an entry",
                 "<SRSList><SRS mapToEpsgCode='1'><![CDATA[a & <b>]]></SRS></SRSList>",
                 {"a & <b>=EPSG:1"}},
        Document{
            "a document type", "<!DOCTYPE SRSList [<!ENTITY x '<b>&y;'>]><SRSList><SRS>1</SRS></SRSList>", {"EPSG:1"}},
        Document{"another declaration", "<!ELEMENT SRSList ANY><SRSList><SRS>1</SRS></SRSList>", {"EPSG:1"}},
        Document{"either quote",
                 "<SRSList><SRS mapToEpsgCode=\"1\">a</SRS><SRS mapToEpsgCode = '2' >b</SRS></SRSList>",
                 {"a=EPSG:1", "b=EPSG:2"}},
        Document{"a quote and markup inside the other quote",
                 "<SRSList><SRS x=\"'/>\" y='\"</SRS>'>1</SRS></SRSList>",
                 {"EPSG:1"}},
        Document{"white space in tags", "<SRSList\n>\t<SRS\r\n>1</SRS\n><SRS /></SRSList >", {"EPSG:1", ""}},
        Document{"256 nested elements", "<SRSList><SRS>1</SRS><!-- --></SRSList>" + nested(256), {"EPSG:1"}}));

}  // namespace
}  // namespace CoordinateTransformation
