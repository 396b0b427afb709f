#include "tools/crsctl/points/PointLine.h"

#include <optional>
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/crsctl/start/Failures.h"
#include "tools/crsctl/text/Printable.h"

namespace crsctl {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

struct AcceptedLine {
    const char* line;
    double x;
    double y;
    std::optional<double> z;
};

void PrintTo(const AcceptedLine& accepted, std::ostream* stream) { *stream << printable(accepted.line); }

class APointLine : public testing::TestWithParam<AcceptedLine> {};

TEST_P(APointLine, IsRead) {
    PointLine point;
    std::string reason;
    ASSERT_TRUE(readPoint(GetParam().line, ColumnLayout(), Separator::AUTOMATIC, point, reason)) << reason;
    EXPECT_EQ(point.value[X], GetParam().x);
    EXPECT_EQ(point.value[Y], GetParam().y);
    EXPECT_EQ(point.hasHeight, GetParam().z.has_value());
    if (GetParam().z) {
        EXPECT_EQ(point.value[Z], *GetParam().z);
    }
}

INSTANTIATE_TEST_SUITE_P(Separators, APointLine,
                         testing::Values(AcceptedLine{"9 50", 9, 50, {}}, AcceptedLine{"9\t50", 9, 50, {}},
                                         AcceptedLine{"  9 \t 50  ", 9, 50, {}}, AcceptedLine{"9,50", 9, 50, {}},
                                         AcceptedLine{"9, 50", 9, 50, {}}, AcceptedLine{"9 ,50", 9, 50, {}},
                                         AcceptedLine{"9;50", 9, 50, {}}, AcceptedLine{" 9 ; 50 ; 100", 9, 50, 100},
                                         AcceptedLine{"9 50 100", 9, 50, 100},
                                         AcceptedLine{"9,50,100,and more", 9, 50, 100},
                                         AcceptedLine{"9 50 name", 9, 50, {}}, AcceptedLine{"9 50 12b", 9, 50, {}},
                                         AcceptedLine{"9,50,,x", 9, 50, {}}, AcceptedLine{"9;50;Nancy", 9, 50, {}},
                                         AcceptedLine{"9 50 with, comma; and so on", 9, 50, {}}));

INSTANTIATE_TEST_SUITE_P(Numbers, APointLine,
                         testing::Values(AcceptedLine{"+9 -50.5", 9, -50.5, {}}, AcceptedLine{"9. .5", 9, 0.5, {}},
                                         AcceptedLine{"9e0 5E+1", 9, 50, {}}, AcceptedLine{"1e-999 -1e-999", 0, 0, {}},
                                         AcceptedLine{"1e308 -1e308", 1e308, -1e308, {}},
                                         AcceptedLine{"-0 0", 0, 0, {}},
                                         AcceptedLine{"0.000000000000000000000000000001 1", 1e-30, 1, {}}));

struct BadLine {
    const char* line;
    const char* reason;
};

void PrintTo(const BadLine& refused, std::ostream* stream) { *stream << printable(refused.line); }

class ABadLine : public testing::TestWithParam<BadLine> {};

TEST_P(ABadLine, IsRefusedWithItsReason) {
    PointLine point;
    std::string reason;
    EXPECT_FALSE(readPoint(GetParam().line, ColumnLayout(), Separator::AUTOMATIC, point, reason));
    EXPECT_EQ(reason, GetParam().reason);
}

INSTANTIATE_TEST_SUITE_P(Lines, ABadLine,
                         testing::Values(BadLine{"9", "column 2 (y) is missing"},
                                         BadLine{"9,", "column 2 (y) is not a number: \"\""},
                                         BadLine{"abc 50", "column 1 (x) is not a number: \"abc\""},
                                         BadLine{"9 50x", "column 2 (y) is not a number: \"50x\""},
                                         BadLine{"9,5 50,5", "column 2 (y) is not a number: \"5 50\""},
                                         BadLine{"1e999 50", "column 1 (x) is too large: \"1e999\""},
                                         BadLine{"9 -1e999", "column 2 (y) is too large: \"-1e999\""},
                                         BadLine{"9 50 1e999", "column 3 (z) is too large: \"1e999\""},
                                         BadLine{"nan 50", "column 1 (x) is not finite: \"nan\""},
                                         BadLine{"9 inf", "column 2 (y) is not finite: \"inf\""},
                                         BadLine{"9 50 -inf", "column 3 (z) is not finite: \"-inf\""},
                                         BadLine{"0x10 50", "column 1 (x) is not a number: \"0x10\""},
                                         BadLine{"+-9 50", "column 1 (x) is not a number: \"+-9\""},
                                         BadLine{"- 50", "column 1 (x) is not a number: \"-\""}));

TEST(ABadLine, IsRefusedForAnEmbeddedNul) {
    using namespace std::string_view_literals;
    PointLine point;
    std::string reason;
    EXPECT_FALSE(readPoint("9\0 50"sv, ColumnLayout(), Separator::AUTOMATIC, point, reason));
    EXPECT_EQ(reason, "column 1 (x) is not a number: \"9\\x00\"");
}

TEST(ABadLine, IsRefusedForAnEndlessNumber) {
    PointLine point;
    std::string reason;
    EXPECT_FALSE(readPoint(std::string(100000, '9') + " 50", ColumnLayout(), Separator::AUTOMATIC, point, reason));
    EXPECT_THAT(reason, HasSubstr("column 1 (x) is too large"));
    EXPECT_LT(reason.size(), 100U);
}

bool reads(const std::string& line, const ColumnLayout& layout, PointLine& point) {
    std::string reason;
    return readPoint(line, layout, Separator::AUTOMATIC, point, reason);
}

TEST(ALayout, SaysWhereTheOrdinatesStand) {
    PointLine point;
    ASSERT_TRUE(reads("A1;9;50;100;x", layoutFrom("id,x,y,z"), point));
    EXPECT_THAT(point.value, ElementsAre(9, 50, 100));
    ASSERT_TRUE(reads("50 9", layoutFrom("y,x"), point));
    EXPECT_EQ(point.value[X], 9);
    EXPECT_EQ(point.value[Y], 50);
}

TEST(ALayout, MakesNoHeightOfAColumnThatItDoesNotName) {
    PointLine point;
    ASSERT_TRUE(reads("9 50 100", layoutFrom("x,y"), point));
    EXPECT_FALSE(point.hasHeight);
}

TEST(ALayout, InsistsOnTheHeightItNames) {
    PointLine point;
    EXPECT_FALSE(reads("9 50", layoutFrom("x,y,z"), point));
    EXPECT_FALSE(reads("9 50 name", layoutFrom("x,y,z"), point));
}

TEST(ALayout, ReadsPastQuotedColumns) {
    PointLine point;
    ASSERT_TRUE(reads("\"Bad Homburg, \"\"v.d.H.\"\"\",8.6,50.2", layoutFrom("name,x,y"), point));
    EXPECT_EQ(point.value[X], 8.6);
    EXPECT_EQ(point.value[Y], 50.2);
}

TEST(ALayout, TellsAMissingColumn) {
    PointLine point;
    std::string reason;
    EXPECT_FALSE(readPoint("A1", layoutFrom("id,name,x,y"), Separator::AUTOMATIC, point, reason));
    EXPECT_EQ(reason, "column 2 is missing");
}

class ABadLayout : public testing::TestWithParam<const char*> {};

TEST_P(ABadLayout, IsAnErrorOfSetUp) { EXPECT_THROW(layoutFrom(GetParam()), SetUpError); }

INSTANTIATE_TEST_SUITE_P(Lists, ABadLayout, testing::Values("x", "y", "x,z", "x,x,y", "x,y,z,z", "id", "X,Y", ","));

TEST(ASeparatorOfTheUsers, Decides) {
    PointLine point;
    std::string reason;
    const ColumnLayout layout = layoutFrom("name,x,y");
    EXPECT_FALSE(readPoint("Bad Homburg;8.6;50.2", layout, Separator::AUTOMATIC, point, reason));
    EXPECT_TRUE(readPoint("Bad Homburg;8.6;50.2", layout, Separator::SEMICOLON, point, reason)) << reason;
    EXPECT_TRUE(readPoint("a;b 8.6 50.2", layout, Separator::BLANK, point, reason)) << reason;
    EXPECT_TRUE(readPoint("a;b c,8.6,50.2", layout, Separator::COMMA, point, reason)) << reason;
}

std::vector<std::string> columnsOf(std::string_view line) {
    ColumnScanner scanner(line, Separator::AUTOMATIC);
    std::vector<std::string> columns;
    std::string_view column;
    while (scanner.next(column)) columns.emplace_back(column);
    return columns;
}

TEST(Columns, AreSplitByWhatFollowsTheFirst) {
    EXPECT_THAT(columnsOf("a b,c d"), ElementsAre("a", "b,c", "d"));
    EXPECT_THAT(columnsOf("a,b c;d"), ElementsAre("a", "b c;d"));
    EXPECT_THAT(columnsOf("a , b,, c ,"), ElementsAre("a", "b", "", "c", ""));
    EXPECT_THAT(columnsOf("\"a,b\",c"), ElementsAre("\"a,b\"", "c"));
    EXPECT_THAT(columnsOf("a,\"b;\"\",\",c"), ElementsAre("a", "\"b;\"\",\"", "c"));
    EXPECT_THAT(columnsOf("a,\"never closed,b"), ElementsAre("a", "\"never closed,b"));
    EXPECT_THAT(columnsOf("   "), ElementsAre());
    EXPECT_THAT(columnsOf(""), ElementsAre());
}

TEST(ABlankLine, HoldsNothingButBlanks) {
    EXPECT_TRUE(isBlank(""));
    EXPECT_TRUE(isBlank(" \t "));
    EXPECT_FALSE(isBlank(" ,"));
}

}  // namespace
}  // namespace crsctl
