#include "config/Fragment.h"

#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>

#include <boost/property_tree/xml_parser.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace CoordinateTransformation {
namespace {

using boost::property_tree::xml_parser_error;
using testing::ElementsAre;
using testing::StartsWith;

std::string faultOf(const std::string& text) {
    const std::optional<FragmentFault> fault = findFragmentFault(text);
    if (!fault) return "none";
    return std::to_string(fault->place.line) + ":" + std::to_string(fault->place.column) + ": " + fault->message;
}

std::vector<std::string> elementsIn(const std::string& text) {
    std::vector<std::string> elements;
    for (const FragmentElement& element : fragmentElements(text))
        elements.push_back(std::string(element.name) + " " + std::to_string(element.place.line) + ":" +
                           std::to_string(element.place.column));
    return elements;
}

struct Case {
    std::string text;
    const char* fault;
};

void PrintTo(const Case& tried, std::ostream* stream) { *stream << tried.text.substr(0, 60); }

class FragmentTest : public testing::TestWithParam<Case> {};

TEST_P(FragmentTest, HasItsFirstFault) { EXPECT_EQ(faultOf(GetParam().text), GetParam().fault); }

INSTANTIATE_TEST_SUITE_P(WithoutFault, FragmentTest,
                         testing::Values(Case{"", "none"}, Case{" \r\n\t", "none"}, Case{"<a/>", "none"},
                                         Case{"\xEF\xBB\xBF<a></a>", "none"}, Case{"<a/>\n<b></b>\n", "none"},
                                         Case{"<a x='<&gt;>'/>", "none"}, Case{"<a>></a>", "none"},
                                         Case{"<!----><?x?><!x><![CDATA[]]>", "none"},
                                         Case{"<a>&#x10FFFF;&#xD7FF;&#9;</a>", "none"}));

INSTANTIATE_TEST_SUITE_P(WithBrokenMarkup, FragmentTest,
                         testing::Values(Case{"<a>\n<b>", "2:4: the text ends inside <b> of line 2"},
                                         Case{"<", "1:1: a tag has no name"}, Case{"</a>", "1:1: a tag has no name"},
                                         Case{"<a><></a>", "1:4: a tag has no name"},
                                         Case{"4326<a/>", "1:1: the text begins outside of an element"},
                                         Case{"<a/>\n 4326", "2:2: the text begins outside of an element"},
                                         Case{"<a", "1:1: a tag has no >"}, Case{"<a/ >", "1:1: a tag has no />"},
                                         Case{"<a></a", "1:4: a tag has no >"},
                                         Case{"<a></a b>", "1:4: a tag has no >"},
                                         Case{"<a b>", "1:4: attribute b has no value"},
                                         Case{"<a b=1/>", "1:4: the value of attribute b is not quoted"},
                                         Case{"<a\nb='1/>", "2:1: the value of attribute b does not end"},
                                         Case{"<a><!-- </a>", "1:4: a comment does not end"},
                                         Case{"<a><![CDATA[</a>", "1:4: a CDATA section does not end"},
                                         Case{"<?xml", "1:1: an instruction does not end"},
                                         Case{"<!DOCTYPE a [<b>", "1:1: a document type does not end"},
                                         Case{"<!x", "1:1: a declaration does not end"}));

INSTANTIATE_TEST_SUITE_P(
    ThatIsReadInPartOtherwise, FragmentTest,
    testing::Values(Case{"<a>\n <b></a></b>", "2:5: end tag </a> does not match <b> of line 2"},
                    Case{"<a></A>", "1:4: end tag </A> does not match <a> of line 1"},
                    Case{"<a></>", "1:4: end tag </> does not match <a> of line 1"},
                    Case{"<a></" + std::string(50, 'x') + ">",
                         "1:4: end tag </xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...> does not match <a> of line 1"},
                    Case{"<a>&b c;</a>", "1:4: an & does not begin an entity; write &amp;"},
                    Case{"<a>&amp</a>", "1:4: an & does not begin an entity; write &amp;"},
                    Case{"<a>b&</a>", "1:5: an & does not begin an entity; write &amp;"},
                    Case{"<a>?b=1&c=2</a>", "1:8: an & does not begin an entity; write &amp;"},
                    Case{"<a\n b=\"&x;\"/>", "2:5: &x; is not a known entity; these are amp, lt, gt, quot and apos"},
                    Case{"<a>&;</a>", "1:4: an & does not begin an entity; write &amp;"},
                    Case{"<a>&AMP;</a>", "1:4: &AMP; is not a known entity; these are amp, lt, gt, quot and apos"},
                    Case{"<a b='&amp;' c='&b'/>", "1:17: an & does not begin an entity; write &amp;"},
                    Case{"<!DOCTYPE a [<!ENTITY x 'y'>]><a>&x;</a>",
                         "1:34: &x; is not a known entity; these are amp, lt, gt, quot and apos"},
                    Case{"<a>&#0;</a>", "1:4: &#0; is not a character"},
                    Case{"<a>&#;</a>", "1:4: &#; is not a character"},
                    Case{"<a>&#4A;</a>", "1:4: &#4A; is not a character"},
                    Case{"<a>&#x10000000000000041;</a>", "1:4: &#x10000000000000041; is not a character"},
                    Case{"<a>&#1;</a>", "1:4: &#1; is not a character"},
                    Case{"<a>&#xD800;</a>", "1:4: &#xD800; is not a character"},
                    Case{"<a>&#x110000;</a>", "1:4: &#x110000; is not a character"},
                    Case{"<a>&#xFFFE;</a>", "1:4: &#xFFFE; is not a character"},
                    Case{"<a>&#x;</a>", "1:4: &#x; is not a character"},
                    Case{"<a>&#X41;</a>", "1:4: &#X41; is not a character"},
                    Case{std::string("<a/>\n\0<b/>", 10), "2:1: the text has a NUL byte"},
                    Case{std::string(1, '\0'), "1:1: the text has a NUL byte"},
                    Case{std::string("\n\0 \0<\0a\0", 8), "1:1: the text is UTF-16; it must be UTF-8"},
                    Case{std::string("\0\n\0 \0<\0a", 8), "1:1: the text is UTF-16; it must be UTF-8"},
                    Case{std::string("<a>\0</a>", 8), "1:4: the text has a NUL byte"},
                    Case{std::string("<\0a\0/\0>\0", 8), "1:1: the text is UTF-16; it must be UTF-8"},
                    Case{std::string("\0<\0a\0/\0>", 8), "1:1: the text is UTF-16; it must be UTF-8"},
                    Case{"\xFF\xFE<", "1:1: the text is UTF-16; it must be UTF-8"},
                    Case{"\xFE\xFF", "1:1: the text is UTF-16; it must be UTF-8"}));

std::string startTags(std::size_t count) {
    std::string tags;
    for (std::size_t i = 0; i < count; ++i) tags += "<a>";
    return tags;
}

TEST(FragmentBoundTest, IsOfNesting) {
    EXPECT_THAT(faultOf(startTags(256)), StartsWith("1:769: the text ends inside <a>"));
    EXPECT_EQ(faultOf(startTags(257)), "1:769: elements are nested more than 256 deep");
    EXPECT_EQ(faultOf(startTags(255) + "<b>\n<c/>"), "2:1: elements are nested more than 256 deep");
    EXPECT_TRUE(findFragmentFault(startTags(257))->exceedsTreeReader);
    EXPECT_FALSE(findFragmentFault(startTags(256))->exceedsTreeReader);
}

TEST(FragmentBoundTest, IsOfLength) {
    std::string text = "<!--" + std::string(MAX_FRAGMENT_SIZE - 7, 'x') + "-->";
    EXPECT_EQ(faultOf(text), "none");
    text += ' ';
    EXPECT_EQ(faultOf(text), "1:1: the fragment is larger than 256 MB");
    EXPECT_TRUE(findFragmentFault(text)->exceedsTreeReader);
}

TEST(FragmentElementsTest, HaveTheirPlaces) {
    EXPECT_THAT(elementsIn("<a>\n  <b x='1'/><c\n/></a>\n<d></d>"), ElementsAre("a 1:1", "b 2:3", "c 2:13", "d 4:1"));
    EXPECT_THAT(elementsIn("\xEF\xBB\xBF<a/>"), ElementsAre("a 1:4"));
}

TEST(FragmentElementsTest, AreNoneInsideOtherMarkup) {
    EXPECT_THAT(elementsIn("<!-- <x> --><a><![CDATA[<x>]]><?x <x> ?><!DOCTYPE y [<x>]><!x><b y='<x>'/></a>"),
                ElementsAre("a 1:13", "b 1:63"));
}

TEST(FragmentElementsTest, EndWithTheFirstFault) {
    EXPECT_THAT(elementsIn("<a><b></a><c/>"), ElementsAre("a 1:1", "b 1:4"));
}

std::string roleName(FragmentRole role) {
    constexpr const char* NAMES[] = {"container", "entry", "repeated container", "unknown container", "unknown entry"};
    return NAMES[static_cast<int>(role)];
}

std::vector<std::string> visitsTo(const std::string& text) {
    std::vector<std::string> visits;
    visitFragment(readFragmentText(text), [&visits](FragmentRole role, const auto& element, const auto* container) {
        visits.push_back(roleName(role) + " " + element.first + element.second.data() + " of " +
                         (container == nullptr ? "none" : container->name));
    });
    return visits;
}

TEST(FragmentVisitTest, GoesToContainersAndTheirChildren) {
    EXPECT_THAT(visitsTo("<CrsConfiguration><CRS>1</CRS><SRS>2</SRS><CRS>3</CRS></CrsConfiguration>"),
                ElementsAre("container CrsConfiguration of CrsConfiguration", "entry CRS1 of CrsConfiguration",
                            "unknown entry SRS2 of CrsConfiguration", "entry CRS3 of CrsConfiguration"));
    EXPECT_THAT(visitsTo("<SRSList><SRS>1</SRS><EPSGCode>2</EPSGCode><CRS>3</CRS></SRSList>"),
                ElementsAre("container SRSList of SRSList", "entry SRS1 of SRSList", "entry EPSGCode2 of SRSList",
                            "unknown entry CRS3 of SRSList"));
}

TEST(FragmentVisitTest, GoesInTheOrderOfReading) {
    EXPECT_THAT(visitsTo("<a/><SRSList/><CrsConfiguration/><b/>"),
                ElementsAre("container CrsConfiguration of CrsConfiguration", "container SRSList of SRSList",
                            "unknown container a of none", "unknown container b of none"));
}

TEST(FragmentVisitTest, GoesOnlyIntoTheFirstContainerOfAName) {
    EXPECT_THAT(visitsTo("<SRSList/><SRSList><SRS>1</SRS></SRSList><SRSList/>"),
                ElementsAre("container SRSList of SRSList", "repeated container SRSList of SRSList",
                            "repeated container SRSList of SRSList"));
}

TEST(FragmentVisitTest, GoesNeitherIntoEntriesNorToOtherNodes) {
    EXPECT_THAT(
        visitsTo("<!-- a --><SRSList b='c'><!-- d --><SRS e='f'><SRS>1</SRS></SRS></SRSList><g><CRS>2</CRS></g>"),
        ElementsAre("container SRSList of SRSList", "entry SRS of SRSList", "unknown container g of none"));
    EXPECT_THAT(visitsTo(""), ElementsAre());
}

// Delivers `text` again and again. Breaks off after `times` times, unless that is 0.
class EndlessBuffer : public std::streambuf {
public:
    explicit EndlessBuffer(std::string theText, std::size_t times = 0) : text(std::move(theText)), breaksAfter(times) {}

protected:
    int_type underflow() override {
        if (breaksAfter != 0 && ++given > breaksAfter) throw std::runtime_error("broken off");
        setg(text.data(), text.data(), text.data() + text.size());
        return traits_type::to_int_type(text.front());
    }

private:
    std::string text;
    std::size_t breaksAfter;
    std::size_t given = 0;
};

xml_parser_error errorOf(std::istream& stream) {
    try {
        readFragment(stream);
    } catch (const xml_parser_error& error) {
        return error;
    }
    ADD_FAILURE() << "accepted";
    return xml_parser_error("", "", 0);
}

TEST(FragmentStreamTest, IsReadFromItsPositionAndStaysGood) {
    std::istringstream stream("skipped <a>1</a>");
    stream.ignore(8);
    EXPECT_EQ(readFragment(stream).get<std::string>("a"), "1");
    EXPECT_TRUE(stream.good());
    stream.str("<a>2</a>");
    EXPECT_EQ(readFragment(stream).get<std::string>("a"), "2");
}

TEST(FragmentStreamTest, IsRefusedWhenItHasFailed) {
    std::istringstream stream("<a/>");
    stream.setstate(std::ios::failbit);
    EXPECT_EQ(errorOf(stream).message(), "read error");
    EXPECT_EQ(errorOf(stream).line(), 0U);
}

TEST(FragmentStreamTest, IsRefusedWhenItDoesNotEnd) {
    EndlessBuffer buffer(std::string(1 << 20, ' '));
    std::istream stream(&buffer);
    EXPECT_EQ(errorOf(stream).message(), "the fragment is larger than 256 MB");
}

TEST(FragmentStreamTest, FailsWithItsOwnErrorWhenItBreaksOff) {
    EndlessBuffer buffer("<a/>", 3);
    std::istream stream(&buffer);
    EXPECT_THROW(readFragment(stream), std::runtime_error);
}

TEST(FragmentStreamTest, IsReadAsItsTextIs) {
    EXPECT_EQ(readFragmentText("<a>\n<b> x </b></a>").get<std::string>("a.b"), " x ");
    EXPECT_THROW(readFragmentText("<a></b>"), xml_parser_error);
}

}  // namespace
}  // namespace CoordinateTransformation
