#include "CoordinateTransformation/CrsConfig.h"

#include <boost/property_tree/xml_parser.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <list>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "CoordinateTransformation/CrsNotConfigured.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "tests/support/GroupingLocale.h"
#include "tests/support/JournaledConfig.h"

namespace CoordinateTransformation {
namespace {

using boost::property_tree::xml_parser_error;
using testing::ElementsAre;
using testing::IsEmpty;
using Names = std::vector<std::string>;

struct Document {
    const char* behaviour;
    std::string xml;
    Names entries;
};

void PrintTo(const Document& document, std::ostream* stream) { *stream << document.behaviour; }

class DocumentTest : public testing::TestWithParam<Document> {};

TEST_P(DocumentTest, GivesItsEntries) {
    JournaledConfig server;
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
    JournaledConfig server;
    server.configure("<SRSList><SRS>1</SRS></SRSList>");
    server.configure("<CrsConfiguration><CRS>2</CRS></CrsConfiguration><SRSList><SRS>1</SRS><SRS>3</SRS></SRSList>");
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:1", "EPSG:2", "EPSG:3"));
}

TEST(ConfigureTest, KeepsTheSettingsOfTheFirstOfEqualEntries) {
    JournaledConfig server;
    server.givenConfigured({"<CRS numberOfDecimalPlaces='2'>4326</CRS>", "<CRS numberOfDecimalPlaces='7'>4326</CRS>"});
    ASSERT_EQ(server.entries().size(), 1U);
    EXPECT_EQ(server.config.getConfiguredCrs()->front().getNumberOfDecimalPlaces().value_or(-1), 2);
}

TEST(ConfigureTest, NeitherInitialisesNorReinitialises) {
    JournaledConfig server;
    server.givenConfigured({"<CRS>4326</CRS>"});
    EXPECT_EQ(server.journal.initialisations, 0);
    server.config.init();
    server.givenConfigured({"<CRS>4258</CRS>"});
    EXPECT_EQ(server.journal.initialisations, 1);
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
    JournaledConfig server;
    server.givenInitialised({"<CRS numberOfDecimalPlaces='12'>31467</CRS>"});
    EXPECT_EQ(server.config.getConfiguredCrs()->front().getNumberOfDecimalPlaces().value_or(-1), 12);
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:31467;EN;1"));
}

TEST(ConfigureTest, ReadsAHugeDocument) {
    constexpr int count = 3000;
    std::string xml = "<SRSList>";
    for (int i = 0; i < count; ++i) xml += "<SRS>" + std::to_string(i) + "</SRS>" + std::string(1000, ' ');
    JournaledConfig server;
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

    JournaledConfig server;
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

// What the property tree's reader accepts, or would not survive, and `configure` refuses.
struct Refused {
    const char* behaviour;
    std::string xml;
    const char* message;
    unsigned long line;
};

void PrintTo(const Refused& refused, std::ostream* stream) { *stream << refused.behaviour; }

class RefusedDocumentTest : public testing::TestWithParam<Refused> {};

TEST_P(RefusedDocumentTest, RaisesTheReadersErrorAndAddsNothing) {
    JournaledConfig server;
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

std::string asUtf16(const std::string& text, bool littleEndian) {
    std::string wide;
    for (const char character : text)
        wide += littleEndian ? std::string{character, '\0'} : std::string{'\0', character};
    return wide;
}

INSTANTIATE_TEST_SUITE_P(Markup, RefusedDocumentTest,
                         testing::Values(Refused{"a wrong end tag", "<SRSList>\n<SRS>4326</CRS>\n</SRSList>",
                                                 "end tag </CRS> does not match <SRS> of line 2", 2},
                                         Refused{"end tags that cross", "<SRSList>\n<SRS>\n4326</SRSList></SRS>",
                                                 "end tag </SRSList> does not match <SRS> of line 2", 3},
                                         Refused{"an end tag in another case", "<SRSList></srslist>",
                                                 "end tag </srslist> does not match <SRSList> of line 1", 1},
                                         Refused{"an end tag without a name", "<SRSList></>",
                                                 "end tag </> does not match <SRSList> of line 1", 1}));

INSTANTIATE_TEST_SUITE_P(
    References, RefusedDocumentTest,
    testing::Values(
        Refused{"an undeclared entity", "<SRSList>\n<SRS>&bogus;</SRS></SRSList>",
                "&bogus; is no entity that is known; known are amp, lt, gt, quot and apos", 2},
        Refused{"a bare ampersand", "<SRSList><SRS>A & B</SRS></SRSList>", "& without an entity; write &amp;", 1},
        Refused{"an ampersand at the end of a text", "<SRSList><SRS>A&</SRS></SRSList>",
                "& without an entity; write &amp;", 1},
        Refused{"a bare ampersand in an attribute", "<SRSList>\n\n<SRS mapToEpsgCode='4&6'>A</SRS></SRSList>",
                "& without an entity; write &amp;", 3},
        Refused{"an undeclared entity in an attribute", "<SRSList><SRS mapToEpsgCode=\"&x;\">A</SRS></SRSList>",
                "&x; is no entity that is known; known are amp, lt, gt, quot and apos", 1},
        Refused{"an ampersand of a URL", "<SRSList><SRS mapToEpsgCode='1'>http://a?b=1&c=2</SRS></SRSList>",
                "& without an entity; write &amp;", 1},
        Refused{"a reference to no character", "<SRSList><SRS>&#0;</SRS></SRSList>", "&#0; is no character", 1},
        Refused{"a reference without digits", "<SRSList><SRS>&#;</SRS></SRSList>", "&#; is no character", 1},
        Refused{"a reference that runs over", "<SRSList><SRS>&#x10000000000000041;</SRS></SRSList>",
                "&#x10000000000000041; is no character", 1},
        Refused{"a decimal reference of hexadecimal digits", "<SRSList><SRS>&#4A;</SRS></SRSList>",
                "&#4A; is no character", 1}));

INSTANTIATE_TEST_SUITE_P(
    Bytes, RefusedDocumentTest,
    testing::Values(Refused{"text behind a NUL byte",
                            "<SRSList>\n<SRS>1</SRS></SRSList>" + std::string("\0<SRS>2</SRS>", 14), "a NUL byte", 2},
                    Refused{"a NUL byte alone", std::string(1, '\0'), "a NUL byte", 1},
                    Refused{"UTF-16 without a mark, big end first", asUtf16("<SRSList/>", false),
                            "the text is UTF-16; it must be UTF-8", 1}));

INSTANTIATE_TEST_SUITE_P(
    Depth, RefusedDocumentTest,
    testing::Values(Refused{"257 nested elements", nested(257), "elements are nested more than 256 deep", 1},
                    Refused{"an empty element below 256", nested(255).insert(255 * 3, "<b>\n<c/></b>"),
                            "elements are nested more than 256 deep", 2},
                    Refused{"elements without end", nested(100000).substr(0, 300000),
                            "elements are nested more than 256 deep", 1}));

class Utf16DocumentTest : public testing::TestWithParam<std::string> {};

TEST_P(Utf16DocumentTest, IsMalformed) {
    JournaledConfig server;
    EXPECT_THROW(server.configure(GetParam()), xml_parser_error);
    EXPECT_THAT(server.entries(), IsEmpty());
}

constexpr char SRS_LIST[] = "<SRSList><SRS>4326</SRS></SRSList>";
INSTANTIATE_TEST_SUITE_P(Orders, Utf16DocumentTest,
                         testing::Values("\xFF\xFE" + asUtf16(SRS_LIST, true), "\xFE\xFF" + asUtf16(SRS_LIST, false),
                                         asUtf16(SRS_LIST, true), asUtf16(SRS_LIST, false),
                                         asUtf16("\n <SRSList/>", true), asUtf16("\n <SRSList/>", false)));

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

TEST(AddEntryTest, AppendsACopy) {
    JournaledConfig server;
    EXPECT_TRUE(server.config.addCrsConfigData(CrsConfigData("EPSG:1")));
    EXPECT_TRUE(server.config.addCrsConfigData(CrsConfigData("A", "1")));
    EXPECT_TRUE(server.config.addCrsConfigData(CrsConfigData("B", "1")));
    EXPECT_TRUE(server.config.addCrsConfigData(CrsConfigData("A", "2")));
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:1", "A=EPSG:1", "B=EPSG:1", "A=EPSG:2"));
}

TEST(AddEntryTest, DropsAnEntryWithTheSameIdentifierAndAlias) {
    JournaledConfig server;
    server.givenConfigured({"<CRS>1</CRS>", "<CRS mapToEpsgCode='1' axisOrder='EN'>A</CRS>"});
    EXPECT_FALSE(server.config.addCrsConfigData(CrsConfigData("EPSG:1")));
    EXPECT_FALSE(server.config.addCrsConfigData(CrsConfigData("A", "1")));
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:1", "A=EPSG:1"));
    EXPECT_EQ(server.config.getConfiguredCrs()->back().getAxisOrderEastNorthOrLonLat().value_or(false), true);
}

TEST(AddEntryTest, ComparesExactly) {
    JournaledConfig server;
    EXPECT_TRUE(server.config.addCrsConfigData(CrsConfigData("EPSG:1")));
    EXPECT_TRUE(server.config.addCrsConfigData(CrsConfigData("epsg:1")));
    EXPECT_TRUE(server.config.addCrsConfigData(CrsConfigData("EPSG:1 ")));
}

// A copy shares the entries, so neither may miss what the other has added.
TEST(AddEntryTest, ComparesWithWhatAShallowCopyHasAdded) {
    JournaledConfig server;
    EXPECT_TRUE(server.config.addCrsConfigData(CrsConfigData("EPSG:1")));
    auto* const copy = new CrsConfig(server.config);
    EXPECT_FALSE(copy->addCrsConfigData(CrsConfigData("EPSG:1")));
    EXPECT_TRUE(copy->addCrsConfigData(CrsConfigData("EPSG:2")));
    EXPECT_FALSE(server.config.addCrsConfigData(CrsConfigData("EPSG:2")));
    EXPECT_TRUE(server.config.addCrsConfigData(CrsConfigData("EPSG:3")));
    EXPECT_FALSE(copy->addCrsConfigData(CrsConfigData("EPSG:3")));
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:1", "EPSG:2", "EPSG:3"));
    server.leaveAlive();
    delete copy;
}

TEST(AddEntryTest, ComparesWithTheEntriesThatWereAssigned) {
    JournaledConfig source;
    source.givenConfigured({"<CRS>1</CRS>"});
    auto* const target = new CrsConfig;
    EXPECT_TRUE(target->addCrsConfigData(CrsConfigData("EPSG:2")));
    std::unique_ptr<const std::list<CrsConfigData>> left(target->getConfiguredCrs());
    *target = source.config;
    EXPECT_FALSE(target->addCrsConfigData(CrsConfigData("EPSG:1")));
    EXPECT_TRUE(target->addCrsConfigData(CrsConfigData("EPSG:2")));
    EXPECT_THAT(source.entries(), ElementsAre("EPSG:1", "EPSG:2"));
    source.leaveAlive();
    delete target;
}

TEST(AddEntryTest, LeavesTheCachesToTheNextInitialisation) {
    JournaledConfig server;
    server.givenInitialised({"<CRS>4326</CRS>"});
    EXPECT_TRUE(server.config.addCrsConfigData(CrsConfigData("EPSG:4258")));
    EXPECT_FALSE(server.config.isCrsConfigured(4258U));
    EXPECT_FALSE(server.config.isCrsConfigured("EPSG:4258"));
    server.config.reinit();
    EXPECT_TRUE(server.config.isCrsConfigured(4258U));
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:4258"));
}

TEST(PropertiesTest, KeepTheirFirstValue) {
    CrsConfig config;
    config.setConfigProperty("Proj4ConfigDir", "a");
    config.setConfigProperty("Proj4ConfigDir", "b");
    EXPECT_EQ(config.getConfigProperty("Proj4ConfigDir"), "a");
}

TEST(PropertiesTest, KeepAnEmptyFirstValue) {
    CrsConfig config;
    config.setConfigProperty("Proj4ConfigDir", "");
    config.setConfigProperty("Proj4ConfigDir", "b");
    EXPECT_EQ(config.getConfigProperty("Proj4ConfigDir"), "");
}

TEST(PropertiesTest, AreEmptyUntilSet) {
    CrsConfig config;
    EXPECT_EQ(config.getConfigProperty("Proj4ConfigDir"), "");
    EXPECT_EQ(config.getConfigProperty(""), "");
}

TEST(PropertiesTest, HaveAnyCaseSensitiveKey) {
    CrsConfig config;
    config.setConfigProperty("colour", "red");
    config.setConfigProperty("", "value of the empty key");
    EXPECT_EQ(config.getConfigProperty("colour"), "red");
    EXPECT_EQ(config.getConfigProperty("Colour"), "");
    EXPECT_EQ(config.getConfigProperty(""), "value of the empty key");
}

TEST(NewConfigTest, IsEmpty) {
    const CrsConfig config;
    EXPECT_THAT(*config.getConfiguredCrs(), IsEmpty());
    EXPECT_THAT(config.getConfiguredCrsIdentifiers(), IsEmpty());
    EXPECT_FALSE(config.isCrsConfigured(0U));
    EXPECT_FALSE(config.isCrsConfigured(""));
    EXPECT_EQ(config.getFromNameCache("", false), nullptr);
    EXPECT_EQ(config.getFromCodeCache("", false), nullptr);
}

TEST(NewConfigTest, CarriesTheCreatorItIsGiven) {
    const JournaledConfig server;
    EXPECT_EQ(&server.config.getCreator(), server.creator);
}

TEST(NewConfigTest, IsAPoolWithAVirtualDestructor) {
    EXPECT_TRUE((std::is_base_of<CrsPool, CrsConfig>::value));
    EXPECT_TRUE(std::has_virtual_destructor<CrsConfig>::value);
    EXPECT_FALSE(std::has_virtual_destructor<CrsPool>::value);
}

TEST(IsConfiguredTest, IsFalseBeforeInitialisation) {
    JournaledConfig server;
    server.givenConfigured({"<CRS>4326</CRS>", "<CRS mapToEpsgCode='31467'>GK3</CRS>"});
    EXPECT_FALSE(server.config.isCrsConfigured(4326U));
    EXPECT_FALSE(server.config.isCrsConfigured("EPSG:4326"));
    EXPECT_FALSE(server.config.isCrsConfigured("GK3"));
    EXPECT_THAT(server.config.getConfiguredCrsIdentifiers(), IsEmpty());
}

TEST(IsConfiguredTest, KnowsTheCodesOfTheEntriesAfterwards) {
    JournaledConfig server;
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS mapToEpsgCode='EPSG:27700*EPSG:5701'>OSGB</CRS>"});
    EXPECT_TRUE(server.config.isCrsConfigured(4326U));
    EXPECT_TRUE(server.config.isCrsConfigured(27700U));
    EXPECT_FALSE(server.config.isCrsConfigured(5701U));
    EXPECT_FALSE(server.config.isCrsConfigured(0U));
}

TEST(IsConfiguredTest, MatchesNamesExactly) {
    JournaledConfig server;
    server.givenInitialised({"<CRS>4326</CRS>"});
    EXPECT_TRUE(server.config.isCrsConfigured("urn:ogc:def:crs:EPSG::4326"));
    for (const char* const name : {"URN:OGC:DEF:CRS:EPSG::4326", "urn:ogc:def:crs:EPSG::4326 ", " 4326", "4326 ",
                                   "epsg:4326", "EPSG:432", "EPSG:43266", ""})
        EXPECT_FALSE(server.config.isCrsConfigured(name)) << name;
}

TEST(IsConfiguredTest, HoldsCodesOfAllSizes) {
    JournaledConfig server;
    server.givenInitialised({"<CRS>2147483647</CRS>", "<CRS>2147483648</CRS>", "<CRS>4294967295</CRS>"});
    EXPECT_TRUE(server.config.isCrsConfigured(2147483647U));
    EXPECT_TRUE(server.config.isCrsConfigured(2147483648U));
    EXPECT_TRUE(server.config.isCrsConfigured(4294967295U));
    EXPECT_FALSE(server.config.isCrsConfigured(2147483649U));
    EXPECT_TRUE(server.config.isCrsConfigured("urn:ogc:def:crs:EPSG::4294967295"));
    EXPECT_NE(server.config.getFromCodeCache("2147483648", false), nullptr);
    EXPECT_EQ(server.config.getFromCodeCache("-2147483648", false), nullptr);
}

TEST(IdentifiersTest, AreCodesIdentifiersAndAliasesInOrder) {
    JournaledConfig server;
    server.givenInitialised({"<CRS>4326</CRS>", "<CRS>CRS:84</CRS>", "<CRS mapToEpsgCode='31467'>GK3</CRS>",
                             "<CRS>EPSG:27700*EPSG:5701</CRS>"});
    EXPECT_THAT(
        server.config.getConfiguredCrsIdentifiers(),
        ElementsAre("27700", "31467", "4326", "CRS:84", "EPSG:27700*EPSG:5701", "EPSG:31467", "EPSG:4326", "GK3"));
}

TEST(IdentifiersTest, AreACopy) {
    JournaledConfig server;
    server.givenInitialised({"<CRS>4326</CRS>"});
    const std::set<std::string> before = server.config.getConfiguredCrsIdentifiers();
    server.config.addCrsConfigData(CrsConfigData("EPSG:4258"));
    server.config.reinit();
    EXPECT_THAT(before, ElementsAre("4326", "EPSG:4326"));
}

struct MergeCase {
    bool thisInitialised;
    bool otherInitialised;
};

void PrintTo(const MergeCase& mergeCase, std::ostream* stream) {
    *stream << (mergeCase.thisInitialised ? "initialised" : "plain") << " with "
            << (mergeCase.otherInitialised ? "initialised" : "plain");
}

class MergeTest : public testing::TestWithParam<MergeCase> {
protected:
    MergeTest() {
        server.givenConfigured({"<CRS>1</CRS>", "<CRS mapToEpsgCode='2'>A</CRS>", "<CRS>3</CRS>"});
        other.givenConfigured({"<CRS>4</CRS>", "<CRS>3</CRS>", "<CRS mapToEpsgCode='2'>B</CRS>"});
        if (GetParam().thisInitialised) server.config.init();
        if (GetParam().otherInitialised) other.config.init();
    }

    static void expectCaches(const JournaledConfig& merged, bool initialised) {
        EXPECT_EQ(merged.journal.initialisations, initialised ? 2 : 0);
        for (const char* const name : {"EPSG:1", "A", "EPSG:3", "EPSG:4", "B"})
            EXPECT_EQ(merged.config.isCrsConfigured(name), initialised) << name;
        for (const unsigned int code : {1U, 2U, 3U, 4U}) EXPECT_EQ(merged.config.isCrsConfigured(code), initialised);
    }

    JournaledConfig server;
    JournaledConfig other;
};

TEST_P(MergeTest, GivesBothTheUnionInTheirOwnOrder) {
    server.config.merge(other.config);
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:1", "A=EPSG:2", "EPSG:3", "EPSG:4", "B=EPSG:2"));
    EXPECT_THAT(other.entries(), ElementsAre("EPSG:4", "EPSG:3", "B=EPSG:2", "EPSG:1", "A=EPSG:2"));
}

TEST_P(MergeTest, ReinitialisesWhatWasInitialised) {
    server.config.merge(other.config);
    expectCaches(server, GetParam().thisInitialised);
    expectCaches(other, GetParam().otherInitialised);
}

TEST_P(MergeTest, ReinitialisesFromEmptyCachesAndSets) {
    for (JournaledConfig* const merged : {&server, &other})
        merged->creator->onInit = [merged] {
            EXPECT_EQ(merged->journal.held(), 0U);
            EXPECT_THAT(merged->config.getConfiguredCrsIdentifiers(), IsEmpty());
        };
    server.config.merge(other.config);
}

TEST_P(MergeTest, KeepsThePropertiesApart) {
    server.config.setConfigProperty("key", "this");
    other.config.setConfigProperty("other key", "other");
    server.config.merge(other.config);
    EXPECT_EQ(server.config.getConfigProperty("other key"), "");
    EXPECT_EQ(other.config.getConfigProperty("key"), "");
}

INSTANTIATE_TEST_SUITE_P(Combinations, MergeTest,
                         testing::Values(MergeCase{false, false}, MergeCase{false, true}, MergeCase{true, false},
                                         MergeCase{true, true}));

TEST(MergeWithItselfTest, AddsNothing) {
    JournaledConfig server;
    server.givenConfigured({"<CRS>1</CRS>", "<CRS>2</CRS>"});
    server.config.merge(server.config);
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:1", "EPSG:2"));
    EXPECT_EQ(server.journal.initialisations, 0);
}

TEST(MergeWithItselfTest, ReinitialisesOncePerSide) {
    JournaledConfig server;
    server.givenInitialised({"<CRS>1</CRS>", "<CRS>2</CRS>"});
    const std::size_t held = server.journal.held();
    server.config.merge(server.config);
    EXPECT_EQ(server.journal.initialisations, 3);
    EXPECT_EQ(server.journal.held(), held);
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:2"));
}

class MergeFailureTest : public testing::Test {
protected:
    MergeFailureTest() {
        server.givenInitialised({"<CRS>1</CRS>"});
        other.givenInitialised({"<CRS>2</CRS>"});
    }

    static void failOnCode(JournaledConfig& config, unsigned int failing) {
        config.creator->onCode = [failing](unsigned int code) {
            if (code == failing) throw std::runtime_error("out of order");
        };
    }

    JournaledConfig server;
    JournaledConfig other;
};

TEST_F(MergeFailureTest, OfTheOtherSideComesBeforeAnythingIsTakenFromIt) {
    failOnCode(other, 1);
    EXPECT_EQ(messageOf<std::runtime_error>([this] { server.config.merge(other.config); }), "out of order");
    EXPECT_THAT(other.entries(), ElementsAre("EPSG:2", "EPSG:1"));
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:1"));
    EXPECT_EQ(server.journal.initialisations, 1);
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:1"));
}

TEST_F(MergeFailureTest, OfThisSideLeavesBothWithTheUnion) {
    failOnCode(server, 2);
    EXPECT_EQ(messageOf<std::runtime_error>([this] { server.config.merge(other.config); }), "out of order");
    EXPECT_THAT(server.entries(), ElementsAre("EPSG:1", "EPSG:2"));
    EXPECT_THAT(other.entries(), ElementsAre("EPSG:2", "EPSG:1"));
    EXPECT_TRUE(other.config.isCrsConfigured("EPSG:1"));
}

TEST_F(MergeFailureTest, CanBeMadeGoodByAnotherMerge) {
    failOnCode(server, 2);
    EXPECT_THROW(server.config.merge(other.config), std::runtime_error);
    server.creator->onCode = nullptr;
    server.config.merge(other.config);
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:1"));
    EXPECT_TRUE(server.config.isCrsConfigured("EPSG:2"));
}

class ShallowCopyTest : public testing::Test {
protected:
    ShallowCopyTest() {
        source.givenInitialised({"<CRS>4326</CRS>", "<CRS>CRS:84</CRS>"});
        source.config.setConfigProperty("key", "value");
    }

    void expectIsACopy(const ExposedConfig& copy) {
        EXPECT_EQ(copy.getConfiguredCrs(), source.config.getConfiguredCrs());
        EXPECT_EQ(&copy.getCreator(), source.creator);
        for (const char* const name : {"EPSG:4326", "CRS:84", "urn:ogc:def:crs:EPSG::4326"})
            EXPECT_EQ(copy.getFromNameCache(name, true), source.named(name));
        EXPECT_EQ(copy.getFromCodeCache("4326", true), source.config.getFromCodeCache("4326", true));
        EXPECT_TRUE(copy.isCrsConfigured(4326U));
        EXPECT_EQ(copy.getConfiguredCrsIdentifiers(), source.config.getConfiguredCrsIdentifiers());
        EXPECT_EQ(copy.getConfigProperty("key"), "value");
    }

    // The destructor of the copy releases what both share.
    void destroyInsteadOfTheSource(std::unique_ptr<ExposedConfig> copy) {
        source.leaveAlive();
        copy.reset();
        EXPECT_EQ(source.journal.held(), 0U);
        EXPECT_TRUE(source.journal.destroyed);
    }

    JournaledConfig source;
};

TEST_F(ShallowCopyTest, SharesEntriesCreatorAndCrsWhenConstructed) {
    auto copy = std::make_unique<ExposedConfig>(source.config);
    expectIsACopy(*copy);
    destroyInsteadOfTheSource(std::move(copy));
}

TEST_F(ShallowCopyTest, SharesThemWhenAssigned) {
    auto copy = std::make_unique<ExposedConfig>();
    const std::unique_ptr<const std::list<CrsConfigData>> listOfItsOwn(copy->getConfiguredCrs());
    *copy = source.config;
    expectIsACopy(*copy);
    destroyInsteadOfTheSource(std::move(copy));
}

TEST_F(ShallowCopyTest, SharesEntriesAddedLater) {
    auto copy = std::make_unique<ExposedConfig>(source.config);
    copy->addCrsConfigData(CrsConfigData("EPSG:4258"));
    EXPECT_EQ(source.entries().size(), 3U);
    destroyInsteadOfTheSource(std::move(copy));
}

TEST_F(ShallowCopyTest, HasPropertiesOfItsOwn) {
    auto copy = std::make_unique<ExposedConfig>(source.config);
    copy->setConfigProperty("other key", "other value");
    EXPECT_EQ(source.config.getConfigProperty("other key"), "");
    destroyInsteadOfTheSource(std::move(copy));
}

TEST_F(ShallowCopyTest, LeavesTheSourceToBeDestroyedInstead) {
    static const ExposedConfig* leftAlive;
    leftAlive = new ExposedConfig(source.config);
    source.destroy();
    EXPECT_EQ(source.journal.held(), 0U);
    EXPECT_TRUE(source.journal.destroyed);
    EXPECT_EQ(leftAlive->getConfigProperty("key"), "value");
}

}  // namespace
}  // namespace CoordinateTransformation
