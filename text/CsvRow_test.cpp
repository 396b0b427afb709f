#include "text/CsvRow.h"

#include <cstddef>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace CoordinateTransformation {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

constexpr std::size_t LARGEST_INDEX = std::numeric_limits<std::size_t>::max();

using Cells = std::vector<std::string>;

Cells cellsOf(const CsvRow& row) {
    Cells cells;
    for (std::size_t i = 0; i < row.size(); ++i) cells.push_back(row[i]);
    return cells;
}

CsvRow rowOf(const std::string& line, char separator = ';') {
    CsvRow row(separator);
    std::istringstream stream(line + "\n");
    row.readNextRow(stream);
    return row;
}

std::vector<Cells> rowsOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<Cells> rows;
    for (CsvRowIterator row(stream, ';'); row != CsvRowIterator(); ++row) rows.push_back(cellsOf(*row));
    return rows;
}

TEST(CsvRowTest, SplitsALineAtItsSeparator) {
    const struct {
        std::string line;
        Cells cells;
    } rows[] = {
        {"4326;ne", {"4326", "ne"}},
        {"4326", {"4326"}},
        {"", {}},
        {";", {""}},
        {";;", {"", ""}},
        {";x", {"", "x"}},
        {"4326;ne;", {"4326", "ne"}},
        {"4326;;ne", {"4326", "", "ne"}},
        {"4326;ne;;", {"4326", "ne", ""}},
        {" 4326 ;\tne\r", {" 4326 ", "\tne\r"}},
        {"\"4326;5\";'ne'", {"\"4326", "5\"", "'ne'"}},
        {"43\\;26;ne", {"43\\", "26", "ne"}},
        {"4326,ne", {"4326,ne"}},
        {"43\0;n\0"s, {"43\0"s, "n\0"s}},
        {"\xC3\xA9;\xFF", {"\xC3\xA9", "\xFF"}},
        {std::string(1 << 20, ';'), Cells(1 << 20)},
        {std::string(1 << 20, 'x'), {std::string(1 << 20, 'x')}},
    };
    for (const auto& row : rows) EXPECT_TRUE(cellsOf(rowOf(row.line)) == row.cells) << row.line.substr(0, 40);
}

TEST(CsvRowTest, IsSeparatedByCommasByDefault) {
    CsvRow row;
    std::istringstream stream("a,b;c\n");
    row.readNextRow(stream);
    EXPECT_THAT(cellsOf(row), ElementsAre("a", "b;c"));
}

TEST(CsvRowTest, ReplacesItsCells) {
    std::istringstream stream("a;b;c\nd\n\n");
    CsvRow row(';');
    row.readNextRow(stream);
    row.readNextRow(stream);
    EXPECT_THAT(cellsOf(row), ElementsAre("d"));
    row.readNextRow(stream);
    EXPECT_EQ(row.size(), 0U);
}

TEST(CsvRowTest, RefusesAnIndexBeyondItsLastCell) {
    const CsvRow row = rowOf("a;b");
    EXPECT_EQ(row[1], "b");
    for (const std::size_t beyond : {std::size_t{2}, std::size_t{3}, LARGEST_INDEX}) {
        try {
            static_cast<void>(row[beyond]);
            ADD_FAILURE() << beyond;
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "CSV row index is out of range");
        }
    }
}

TEST(CsvRowTest, LetsEveryIndexPassTheBoundWhenItIsEmpty) {
    for (const std::size_t i : {std::size_t{0}, std::size_t{1}, LARGEST_INDEX - 1, LARGEST_INDEX}) {
        EXPECT_TRUE(CsvRow().isWithinBound(i)) << i;
        EXPECT_TRUE(rowOf("").isWithinBound(i)) << i;
    }
    EXPECT_TRUE(rowOf("a").isWithinBound(0));
    EXPECT_FALSE(rowOf("a").isWithinBound(1));
}

TEST(CsvRowIteratorTest, ReadsEveryTerminatedLine) {
    EXPECT_THAT(rowsOf("4326;ne\n3857;en\n"), ElementsAre(Cells{"4326", "ne"}, Cells{"3857", "en"}));
    EXPECT_THAT(rowsOf("a\n\nb\n"), ElementsAre(Cells{"a"}, Cells{}, Cells{"b"}));
    EXPECT_THAT(rowsOf("\n"), ElementsAre(Cells{}));
    EXPECT_THAT(rowsOf("a\r\n"), ElementsAre(Cells{"a\r"}));
}

TEST(CsvRowIteratorTest, LosesALineThatIsNotTerminated) {
    EXPECT_THAT(rowsOf(""), ElementsAre());
    EXPECT_THAT(rowsOf("4326;ne"), ElementsAre());
    EXPECT_THAT(rowsOf("4326;ne\n3857;en"), ElementsAre(Cells{"4326", "ne"}));
    EXPECT_THAT(rowsOf("4326;ne\r3857;en\r"), ElementsAre());
}

TEST(CsvRowIteratorTest, EndsOnAnyStateBitOfItsStream) {
    for (const auto bit : {std::ios_base::eofbit, std::ios_base::failbit, std::ios_base::badbit}) {
        std::istringstream stream("a\nb\n");
        stream.setstate(bit);
        EXPECT_TRUE(CsvRowIterator(stream, ';') == CsvRowIterator());
    }
}

TEST(CsvRowIteratorTest, ReadsItsFirstRowWhenItIsMade) {
    std::istringstream stream("a;b\nc\n");
    CsvRowIterator row(stream, ';');
    EXPECT_EQ(row->size(), 2U);
    EXPECT_EQ((*row)[1], "b");
    EXPECT_EQ(&(++row), &row);
    EXPECT_THAT(cellsOf(*row), ElementsAre("c"));
}

TEST(CsvRowIteratorTest, StaysAtItsEnd) {
    std::istringstream stream("a\n");
    CsvRowIterator row(stream, ';');
    ++row;
    EXPECT_TRUE(row == CsvRowIterator());
    ++row;
    EXPECT_TRUE(row == CsvRowIterator());
    stream.clear();
    stream.str("b\n");
    EXPECT_TRUE(++row == CsvRowIterator());
}

TEST(CsvRowIteratorTest, EqualsItselfAndAnyOtherAtItsEnd) {
    std::istringstream stream("a\na\n");
    std::istringstream sameText("a\na\n");
    const CsvRowIterator row(stream, ';');
    const CsvRowIterator other(sameText, ';');
    EXPECT_TRUE(row == row);
    EXPECT_FALSE(row != row);
    EXPECT_FALSE(row == other);
    EXPECT_TRUE(row != other);
    EXPECT_FALSE(row == CsvRowIterator());
    EXPECT_FALSE(CsvRowIterator() == row);
    EXPECT_TRUE(CsvRowIterator() == CsvRowIterator());
}

}  // namespace
}  // namespace CoordinateTransformation
