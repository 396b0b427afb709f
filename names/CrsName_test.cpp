#include "names/CrsName.h"

#include <algorithm>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/NameTable.h"

namespace CoordinateTransformation {

static void PrintTo(const NameSyntax& syntax, std::ostream* stream) { *stream << syntax.example; }

namespace {

using namespace std::string_literals;
using Fault = NameExplanation::Fault;
using TestSupport::NameRow;
using TestSupport::nameTable;

const NameTexts* textsOf(const ParsedName& parsed) { return std::get_if<NameTexts>(&parsed); }

bool acceptEverything(const char* /*property*/) { return true; }

bool acceptNothing(const char* /*property*/) { return false; }

// The spelling that the name has or resembles; null if it resembles none.
const NameSyntax* syntaxOf(const NameRow& row) {
    for (const NameSyntax& syntax : NAME_SYNTAXES)
        if (std::string(syntax.description).find(" " + row["spelling"]) != std::string::npos &&
            !row["spelling"].empty())
            return &syntax;
    return nullptr;
}

Fault faultOf(const NameRow& row) {
    if (row.isAccepted()) return Fault::NONE;
    if (row["fault"].empty()) return Fault::UNKNOWN_SPELLING;
    return row["fault"] == "code" ? Fault::BAD_CODE : Fault::BAD_SYNTAX;
}

std::string explanationOf(const NameRow& row) {
    const NameSyntax* const syntax = syntaxOf(row);
    if (syntax == nullptr) return "no known spelling of a CRS";
    if (!row.isAccepted())
        return std::string(syntax->description) + " " + row["reason"] + ", at character " + row["position"];
    const std::string text =
        std::string(syntax->description) + " for " + writeEpsgName({row.primaryCode(), row.secondaryCode()});
    return row["version"].empty() ? text : text + ", version " + row["version"];
}

TEST(ExplainNameTest, DescribesANameOrItsFault) {
    for (const NameRow& row : nameTable()) {
        SCOPED_TRACE(row.where());
        const NameExplanation explanation = explainName(row["name"], acceptEverything);
        const bool accepted = row.isAccepted();
        EXPECT_EQ(explanation.fault, faultOf(row));
        EXPECT_EQ(explanation.spelling, row["spelling"]);
        EXPECT_EQ(explanation.primaryCode, accepted ? row.primaryCode() : 0);
        EXPECT_EQ(explanation.secondaryCode, accepted ? row.secondaryCode() : 0);
        EXPECT_EQ(explanation.version, accepted ? row["version"] : "");
        EXPECT_EQ(explanation.position, row["position"].empty() ? 0 : std::stoul(row["position"]));
        std::string text = explanationOf(row);
        std::replace(text.begin(), text.end(), '\0', '?');
        EXPECT_EQ(explanation.text, text);
    }
}

void expectReadInPlace(const CodeText& code, unsigned int expected, const std::string& name) {
    EXPECT_EQ(readCode(code.text), expected);
    EXPECT_EQ(name.substr(code.position, code.text.size()), code.text);
}

TEST(ParsedNameTest, HasTheCodesWhereTheyStandInTheName) {
    for (const NameRow& row : nameTable()) {
        if (!row.isAccepted()) continue;
        SCOPED_TRACE(row.where());
        const ParsedName parsed = syntaxOf(row)->parse(row["name"]);
        const NameTexts* const texts = textsOf(parsed);
        ASSERT_NE(texts, nullptr);
        expectReadInPlace(texts->first, row.primaryCode(), row["name"]);
        ASSERT_EQ(texts->second.has_value(), row.secondaryCode() != 0);
        if (texts->second) expectReadInPlace(*texts->second, row.secondaryCode(), row["name"]);
        EXPECT_EQ(texts->version, row["version"]);
    }
}

TEST(ParsedNameTest, RaisesOutOfRangeWhereTheTableDoes) {
    for (const NameRow& row : nameTable()) {
        for (const NameSyntax& syntax : NAME_SYNTAXES) {
            const ParsedName parsed = syntax.parse(row["name"]);
            const NameFault* const fault = std::get_if<NameFault>(&parsed);
            const bool raised = syntax.spelling == Spelling::EPSG_CODE && row["result"] == "std::out_of_range";
            EXPECT_EQ(fault != nullptr && fault->isBeyondEnd, raised) << row.where() << syntax.description;
        }
    }
}

class NameSyntaxTest : public testing::TestWithParam<NameSyntax> {
protected:
    static void expectReadBack(const CodePair& codes) {
        const std::string name = GetParam().write(codes);
        const ParsedName parsed = GetParam().parse(name);
        const NameTexts* const texts = textsOf(parsed);
        ASSERT_NE(texts, nullptr) << name;
        EXPECT_EQ(readCode(texts->first.text), codes.primary) << name;
        EXPECT_EQ(name.substr(texts->first.position, texts->first.text.size()), texts->first.text);
        ASSERT_EQ(texts->second.has_value(), codes.secondary != 0) << name;
        if (codes.secondary == 0) return;
        EXPECT_EQ(readCode(texts->second->text), codes.secondary) << name;
        EXPECT_EQ(name.substr(texts->second->position, texts->second->text.size()), texts->second->text);
    }
};

TEST_P(NameSyntaxTest, ReadsWhatItWrites) {
    for (const unsigned int code : {4326U, 1U, 4294967295U}) expectReadBack({code, 0});
}

TEST_P(NameSyntaxTest, ReadsTheCompoundThatItWrites) {
    const Spelling spelling = GetParam().spelling;
    if (spelling == Spelling::OGC_URN || spelling == Spelling::OGC_URL || spelling == Spelling::EPSG_CODE)
        expectReadBack({27700, 5701});
}

TEST_P(NameSyntaxTest, HasAnExampleThatIsWhatItWrites) { EXPECT_EQ(GetParam().write({4326, 0}), GetParam().example); }

// A bare code may be any text of up to thirteen characters.
TEST_P(NameSyntaxTest, ReadsNoExampleOfAnother) {
    for (const NameSyntax& other : NAME_SYNTAXES) {
        const bool isShort = std::string(other.example).size() <= 13;
        const bool expected =
            other.spelling == GetParam().spelling || (GetParam().spelling == Spelling::EPSG_CODE && isShort);
        EXPECT_EQ(textsOf(GetParam().parse(other.example)) != nullptr, expected) << other.example;
    }
}

INSTANTIATE_TEST_SUITE_P(All, NameSyntaxTest, testing::ValuesIn(NAME_SYNTAXES));

TEST(WriterTest, WritesTheFormsOfTheTable) {
    for (const NameRow& row : TestSupport::nameRowsWith("identifier")) {
        SCOPED_TRACE(row.where());
        const CodePair codes = {row.primaryCode(), row.secondaryCode()};
        EXPECT_EQ(writeOgcUrn(codes, row["version"]), row["urn"]);
        EXPECT_EQ(writeOgcUrl(codes, row["version"]), row["url"]);
        EXPECT_EQ(writeGmlReference(codes), row["gmlReference"]);
        EXPECT_EQ(writePrefixed(codes, "EPSG:"), row["prefixAndCode"]);
        EXPECT_EQ(writeEpsgName(codes), row["identifier"]);
        EXPECT_EQ(writeCodeKey(codes), row["codes"]);
    }
}

std::vector<std::string> firstOfEach(std::vector<std::string> names) {
    std::set<std::string> seen;
    const auto isRepeated = [&seen](const std::string& name) { return !seen.insert(name).second; };
    names.erase(std::remove_if(names.begin(), names.end(), isRepeated), names.end());
    return names;
}

// The first three are the CRS's own names.
TEST(RegisteredNamesTest, AreThoseOfTheTableInTheirOrder) {
    for (const CodePair& codes : {CodePair{4326, 0}, CodePair{27700, 5701}}) {
        const std::vector<std::string> expected = TestSupport::registeredNamesInTable(writeCodeKey(codes));
        ASSERT_EQ(expected.size(), 8U);
        std::vector<std::string> names(expected.begin(), expected.begin() + 3);
        for (const std::string& name : registeredCodeNames(codes)) names.push_back(name);
        for (const RegisteredUrns& urns : registeredUrns(codes))
            names.insert(names.end(), {urns.name, urns.alternative});
        EXPECT_EQ(firstOfEach(names), expected);
    }
}

TEST(ExplainNameTest, PutsWhatItExplainsOnOneLine) {
    const NameExplanation explanation = explainName("urn:ogc:def:crs:EPSG:a\nb:4326", acceptNothing);
    EXPECT_EQ(explanation.version, "a\nb");
    EXPECT_EQ(explanation.text, "an OGC URN for EPSG:4326, version a?b");
}

TEST(ExplainNameTest, AsksWhetherTheConfigurationAcceptsASyntax) {
    const NameExplanation refused = explainName("[EPSG:4326]", acceptNothing);
    EXPECT_EQ(refused.fault, Fault::BAD_SYNTAX);
    EXPECT_EQ(refused.text, "a safe CURIE that the configuration does not accept, at character 1");
    const NameExplanation accepted =
        explainName("[EPSG:4326]", [](const char* property) { return property == "AcceptSafeCuries"s; });
    EXPECT_EQ(accepted.fault, Fault::NONE);
    EXPECT_EQ(accepted.text, "a safe CURIE for EPSG:4326");
}

}  // namespace
}  // namespace CoordinateTransformation
