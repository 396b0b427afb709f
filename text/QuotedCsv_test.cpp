#include "text/QuotedCsv.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;

constexpr std::size_t MOST_CELLS = 4;

using Cells = std::vector<std::string>;
using Records = std::vector<Cells>;

// The records up to the end or the first fault.
Records recordsOf(QuotedCsv& reader) {
    Records records;
    for (Cells cells; reader.readRecord(cells);) records.push_back(cells);
    return records;
}

TEST(QuotedCsvTest, ReadsRecordsOfCells) {
    const struct {
        std::string text;
        Records records;
    } accepted[] = {
        {"", {}},
        {"a", {{"a"}}},
        {"a\n", {{"a"}}},
        {"a,b\nc,d\n", {{"a", "b"}, {"c", "d"}}},
        {"a,b\r\nc,d", {{"a", "b"}, {"c", "d"}}},
        {"a,b,c\nd\n", {{"a", "b", "c"}, {"d"}}},
        {"\n", {{""}}},
        {"\n\n", {{""}, {""}}},
        {",", {{"", ""}}},
        {",a,\n", {{"", "a", ""}}},
        {" a , b \n", {{" a ", " b "}}},
        {"\"\"\n", {{""}}},
        {"\"a\",\"b\"\n", {{"a", "b"}}},
        {"\"a,b\",c\n", {{"a,b", "c"}}},
        {"\"a \"\"b\"\" c\"\n", {{"a \"b\" c"}}},
        {"\"\"\"\"\n", {{"\""}}},
        {"\"\"\"\"\"\"", {{"\"\""}}},
        {"\"a\nb\",c\r\n\"d\r\ne\"\n", {{"a\nb", "c"}, {"d\r\ne"}}},
        {"a'b;c\td\n", {{"a'b;c\td"}}},
        {"Bj\xC3\xB8rn\xC3\xB8ya,\"\xE2\x82\xAC\"\n", {{"Bj\xC3\xB8rn\xC3\xB8ya", "\xE2\x82\xAC"}}},
    };
    for (const auto& [text, records] : accepted) {
        QuotedCsv reader(text, MOST_CELLS);
        EXPECT_EQ(recordsOf(reader), records) << text;
        EXPECT_EQ(reader.getFault(), "") << text;
    }
}

TEST(QuotedCsvTest, RefusesWhatIsMalformedAndNamesItsLine) {
    const struct {
        std::string text;
        std::size_t line;
        std::string fault;
    } refused[] = {
        {"a\"b\n", 1, "a quotation mark is inside a cell without quotes"},
        {"a,b\nc, \"d\"\n", 2, "a quotation mark is inside a cell without quotes"},
        {"\"", 1, "a quotation mark is not closed"},
        {"a\n\"b\nc\nd\n", 2, "a quotation mark is not closed"},
        {"\"a\"\"\n", 1, "a quotation mark is not closed"},
        {"\"a\"b\n", 1, "a cell does not end at a comma or at the end of its line"},
        {"\"a\nb\"\n\"c\" ,d\n", 3, "a cell does not end at a comma or at the end of its line"},
        {"a\rb\n", 1, "a cell does not end at a comma or at the end of its line"},
        {"a\r", 1, "a cell does not end at a comma or at the end of its line"},
        {"a\r\r\n", 1, "a cell does not end at a comma or at the end of its line"},
        {"a\0b\n"s, 1, "a cell has a NUL byte"},
        {"a\n\"\0\"\n"s, 2, "a cell has a NUL byte"},
        {"a\n\n\xFC\n", 3, "a cell is not UTF-8"},
        {"a,b,c,d\na,b,c,d,\n", 2, "a line has too many cells"},
        {std::string(1 << 24, ','), 1, "a line has too many cells"},
    };
    for (const auto& row : refused) {
        QuotedCsv reader(row.text, MOST_CELLS);
        recordsOf(reader);
        EXPECT_EQ(reader.getFault(), row.fault) << row.text.substr(0, 20);
        EXPECT_EQ(reader.getLine(), row.line) << row.text.substr(0, 20);
    }
}

TEST(QuotedCsvTest, ReadsNothingBehindAFault) {
    QuotedCsv reader("a\n\"b\"c\nd\n", MOST_CELLS);
    EXPECT_EQ(recordsOf(reader), (Records{{"a"}}));
    EXPECT_EQ(recordsOf(reader), Records());
    EXPECT_EQ(reader.getLine(), 2U);
}

TEST(QuotedCsvTest, CountsTheLinesInsideQuotes) {
    QuotedCsv reader("\"a\nb\nc\"\nd\ne", MOST_CELLS);
    Cells cells;
    std::vector<std::size_t> lines;
    while (reader.readRecord(cells)) lines.push_back(reader.getLine());
    EXPECT_THAT(lines, testing::ElementsAre(1, 4, 5));
}

TEST(QuotedCsvTest, ReadsLongCells) {
    const std::string longCell(1 << 20, 'x');
    std::string quotes;
    for (int i = 0; i < 100000; ++i) quotes += "\"\"";
    const std::string text = longCell + ",\"" + quotes + "\"\n";
    QuotedCsv reader(text, MOST_CELLS);
    EXPECT_EQ(recordsOf(reader), (Records{{longCell, std::string(100000, '"')}}));
}

// RFC 3629, section 4.
TEST(Utf8Test, IsEveryShortestSequenceOfACharacter) {
    for (const std::string& text :
         {""s, "a\0\x7F"s, "\xC2\x80\xDF\xBF"s, "\xE0\xA0\x80\xE1\x80\x80\xEC\xBF\xBF"s, "\xED\x80\x80\xED\x9F\xBF"s,
          "\xEE\x80\x80\xEF\xBF\xBF"s, "\xF0\x90\x80\x80\xF1\x80\x80\x80"s, "\xF3\xBF\xBF\xBF\xF4\x8F\xBF\xBF"s})
        EXPECT_TRUE(isUtf8(text)) << text;
    for (const std::string& text :
         {"\x80"s, "\xBF"s, "\xC0\x80"s, "\xC1\xBF"s, "\xC2"s, "\xC2\x41"s, "\xE0\x9F\xBF"s, "\xE1\x80"s,
          "\xE1\x80\x41"s, "\xED\xA0\x80"s, "\xED\xBF\xBF"s, "\xF0\x8F\xBF\xBF"s, "\xF1\x80\x80"s, "\xF4\x90\x80\x80"s,
          "\xF5\x80\x80\x80"s, "\xFE"s, "\xFF"s, "\xC2\x80\x80"s})
        EXPECT_FALSE(isUtf8("a" + text)) << text;
}

}  // namespace
}  // namespace CoordinateTransformation
