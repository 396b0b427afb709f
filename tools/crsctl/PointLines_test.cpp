#include "tools/crsctl/PointLines.h"

#include <cmath>
#include <cstdlib>
#include <optional>
#include <ostream>
#include <random>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/common/Text.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

using testing::ElementsAre;
using testing::HasSubstr;
using Tools::printable;

namespace {

struct AcceptedLine {
    const char* line;
    double x;
    double y;
    std::optional<double> z;
};

void PrintTo(const AcceptedLine& accepted, std::ostream* stream) { *stream << printable(accepted.line); }

class APointLine : public testing::TestWithParam<AcceptedLine> {};

TEST_P(APointLine, IsRead) {
    CoordinateLine read;
    std::string reason;
    ASSERT_TRUE(readCoordinates(GetParam().line, ColumnLayout(Shape::POINT), Separator::AUTOMATIC, read, reason))
        << reason;
    EXPECT_EQ(read.value[X], GetParam().x);
    EXPECT_EQ(read.value[Y], GetParam().y);
    EXPECT_EQ(read.count, GetParam().z ? 3U : 2U);
    if (GetParam().z) {
        EXPECT_EQ(read.value[Z], *GetParam().z);
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

double readX(const std::string& number) {
    CoordinateLine read;
    std::string reason;
    EXPECT_TRUE(readCoordinates(number + " 0", ColumnLayout(Shape::POINT), Separator::AUTOMATIC, read, reason));
    return read.value[X];
}

// The numbers have a point before any of their digits, or none.
TEST(ANumber, IsReadAsTheNearestDouble) {
    std::mt19937_64 random(25832);
    for (int i = 0; i < 50000; ++i) {
        std::string number = std::to_string(random());
        number.resize(random() % number.size() + 1);
        if (random() % 8 != 0) number.insert(random() % (number.size() + 1), 1, '.');
        if (random() % 2 == 0) number.insert(0, 1, '-');
        ASSERT_EQ(readX(number), std::strtod(number.c_str(), nullptr)) << number;
    }
    EXPECT_TRUE(std::signbit(readX("-0.0")));
}

struct BadLine {
    const char* line;
    const char* reason;
};

void PrintTo(const BadLine& refused, std::ostream* stream) { *stream << printable(refused.line); }

class ABadLine : public testing::TestWithParam<BadLine> {};

TEST_P(ABadLine, IsRefusedWithItsReason) {
    CoordinateLine read;
    std::string reason;
    EXPECT_FALSE(readCoordinates(GetParam().line, ColumnLayout(Shape::POINT), Separator::AUTOMATIC, read, reason));
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
    CoordinateLine read;
    std::string reason;
    EXPECT_FALSE(readCoordinates("9\0 50"sv, ColumnLayout(Shape::POINT), Separator::AUTOMATIC, read, reason));
    EXPECT_EQ(reason, "column 1 (x) is not a number: \"9\\x00\"");
}

TEST(ABadLine, IsRefusedForAnEndlessNumber) {
    CoordinateLine read;
    std::string reason;
    EXPECT_FALSE(readCoordinates(std::string(100000, '9') + " 50", ColumnLayout(Shape::POINT), Separator::AUTOMATIC,
                                 read, reason));
    EXPECT_THAT(reason, HasSubstr("column 1 (x) is too large"));
    EXPECT_LT(reason.size(), 100U);
}

bool reads(const std::string& line, const ColumnLayout& layout, CoordinateLine& read) {
    std::string reason;
    return readCoordinates(line, layout, Separator::AUTOMATIC, read, reason);
}

TEST(ALayout, HasTheColumnsOfTheOrdinates) {
    CoordinateLine read;
    ASSERT_TRUE(reads("A1;9;50;100;x", ColumnLayout(Shape::POINT, "id,x,y,z"), read));
    EXPECT_EQ(read.value[X], 9);
    EXPECT_EQ(read.value[Y], 50);
    EXPECT_EQ(read.value[Z], 100);
    ASSERT_TRUE(reads("50 9", ColumnLayout(Shape::POINT, "y,x"), read));
    EXPECT_EQ(read.value[X], 9);
    EXPECT_EQ(read.value[Y], 50);
}

TEST(ALayout, ReadsNoHeightUnlessItIsNamed) {
    CoordinateLine read;
    ASSERT_TRUE(reads("9 50 100", ColumnLayout(Shape::POINT, "x,y"), read));
    EXPECT_EQ(read.count, 2U);
}

TEST(ALayout, RequiresTheHeightThatIsNamed) {
    CoordinateLine read;
    EXPECT_FALSE(reads("9 50", ColumnLayout(Shape::POINT, "x,y,z"), read));
    EXPECT_FALSE(reads("9 50 name", ColumnLayout(Shape::POINT, "x,y,z"), read));
}

TEST(ALayout, ReadsPastQuotedColumns) {
    CoordinateLine read;
    ASSERT_TRUE(reads("\"Bad Homburg, \"\"v.d.H.\"\"\",8.6,50.2", ColumnLayout(Shape::POINT, "name,x,y"), read));
    EXPECT_EQ(read.value[X], 8.6);
    EXPECT_EQ(read.value[Y], 50.2);
}

TEST(ALayout, ReportsAMissingColumn) {
    CoordinateLine read;
    std::string reason;
    EXPECT_FALSE(readCoordinates("A1", ColumnLayout(Shape::POINT, "id,name,x,y"), Separator::AUTOMATIC, read, reason));
    EXPECT_EQ(reason, "column 2 is missing");
}

class ABadLayout : public testing::TestWithParam<const char*> {};

TEST_P(ABadLayout, IsRefused) { EXPECT_THROW(ColumnLayout(Shape::POINT, GetParam()), SetUpError); }

INSTANTIATE_TEST_SUITE_P(Lists, ABadLayout, testing::Values("x", "y", "x,z", "x,x,y", "x,y,z,z", "id", "X,Y", ","));

struct BoxLine {
    const char* line;
    const char* columns;  // null: the default layout
    Ordinates box;
};

void PrintTo(const BoxLine& box, std::ostream* stream) { *stream << box.line; }

class ABoxLine : public testing::TestWithParam<BoxLine> {};

TEST_P(ABoxLine, IsRead) {
    const char* const columns = GetParam().columns;
    const ColumnLayout layout = columns == nullptr ? ColumnLayout(Shape::BOX) : ColumnLayout(Shape::BOX, columns);
    CoordinateLine read;
    ASSERT_TRUE(reads(GetParam().line, layout, read));
    EXPECT_EQ(read.count, 4U);
    EXPECT_EQ(read.value, GetParam().box);
}

INSTANTIATE_TEST_SUITE_P(Lines, ABoxLine,
                         testing::Values(BoxLine{"6 47 15 55", nullptr, {6, 47, 15, 55}},
                                         BoxLine{"-6;-47.5;+15;5e1;Europe", nullptr, {-6, -47.5, 15, 50}},
                                         BoxLine{"E1,6,47,15,55", "id,minx,miny,maxx,maxy", {6, 47, 15, 55}},
                                         BoxLine{"6 15 47 55", "minx,maxx,miny,maxy", {6, 47, 15, 55}}));

TEST(ABoxLine, IsRefusedWithItsReason) {
    const BadLine cases[] = {{"6 47 15", "column 4 (maxy) is missing"},
                             {"6 47 15 north", "column 4 (maxy) is not a number: \"north\""},
                             {"6 47 nan 55", "column 3 (maxx) is not finite: \"nan\""}};
    for (const BadLine& refused : cases) {
        CoordinateLine read;
        std::string reason;
        EXPECT_FALSE(readCoordinates(refused.line, ColumnLayout(Shape::BOX), Separator::AUTOMATIC, read, reason));
        EXPECT_EQ(reason, refused.reason);
    }
}

TEST(ABoxLayout, IsRefusedUnlessEachCornerOccursOnce) {
    for (const char* columns : {"x,y", "minx,miny,maxx", "minx,miny,maxx,maxy,minx"})
        EXPECT_THROW(ColumnLayout(Shape::BOX, columns), SetUpError) << columns;
}

TEST(ANumber, IsRecognisedEvenIfItIsTooLarge) {
    for (const char* text : {"6", "-6", "-.5", "+6.5e1", "1e999", "inf"}) EXPECT_TRUE(isNumber(text)) << text;
    for (const char* text : {"", "-", "six", "6m", "./6", "6,5"}) EXPECT_FALSE(isNumber(text)) << text;
}

TEST(AGivenSeparator, IsUsed) {
    CoordinateLine read;
    std::string reason;
    const ColumnLayout layout = ColumnLayout(Shape::POINT, "name,x,y");
    EXPECT_FALSE(readCoordinates("Bad Homburg;8.6;50.2", layout, Separator::AUTOMATIC, read, reason));
    EXPECT_TRUE(readCoordinates("Bad Homburg;8.6;50.2", layout, Separator::SEMICOLON, read, reason)) << reason;
    EXPECT_TRUE(readCoordinates("a;b 8.6 50.2", layout, Separator::BLANK, read, reason)) << reason;
    EXPECT_TRUE(readCoordinates("a;b c,8.6,50.2", layout, Separator::COMMA, read, reason)) << reason;
}

std::vector<std::string> columnsOf(std::string_view line) {
    ColumnScanner scanner(line, Separator::AUTOMATIC);
    std::vector<std::string> columns;
    std::string_view column;
    while (scanner.next(column)) columns.emplace_back(column);
    return columns;
}

TEST(Columns, AreSeparatedByTheCharacterAfterTheFirst) {
    EXPECT_THAT(columnsOf("a b,c d"), ElementsAre("a", "b,c", "d"));
    EXPECT_THAT(columnsOf("a,b c;d"), ElementsAre("a", "b c;d"));
    EXPECT_THAT(columnsOf("a , b,, c ,"), ElementsAre("a", "b", "", "c", ""));
    EXPECT_THAT(columnsOf("\"a,b\",c"), ElementsAre("\"a,b\"", "c"));
    EXPECT_THAT(columnsOf("a,\"b;\"\",\",c"), ElementsAre("a", "\"b;\"\",\"", "c"));
    EXPECT_THAT(columnsOf("a,\"never closed,b"), ElementsAre("a", "\"never closed,b"));
    EXPECT_THAT(columnsOf("   "), ElementsAre());
    EXPECT_THAT(columnsOf(""), ElementsAre());
}

TEST(ABlankLine, HasOnlyBlanks) {
    EXPECT_TRUE(isBlank(""));
    EXPECT_TRUE(isBlank(" \t "));
    EXPECT_FALSE(isBlank(" ,"));
}

TEST(ALayoutByDirection, FollowsTheAxisOrderOfTheCrs) {
    const ColumnLayout northFirst(Shape::POINT, "id,Lon,lat", false);
    EXPECT_TRUE(northFirst.isByDirection);
    EXPECT_THAT(northFirst.ordinates, ElementsAre(MAX_ORDINATES, Y, X));
    EXPECT_EQ(northFirst.ordinateCount, 2U);
    const ColumnLayout eastFirst(Shape::POINT, "northing,easting,height", true);
    EXPECT_THAT(eastFirst.ordinates, ElementsAre(Y, X, Z));
}

TEST(ALayoutByDirection, NamesTheOrdinatesOfTheOutput) {
    ColumnLayout layout(Shape::POINT, "lon,lat", false);
    layout.nameByDirection(false, false);
    EXPECT_EQ(layout.ordinateNames[X], "northing");
    EXPECT_EQ(layout.ordinateNames[Y], "easting");
    layout.nameByDirection(true, true);
    EXPECT_EQ(layout.ordinateNames[X], "lon");
}

TEST(ALayoutByDirection, IsNotReadFromAListWithXOrY) {
    EXPECT_FALSE(ColumnLayout(Shape::POINT, "lat,x,y").isByDirection);
    EXPECT_THROW(ColumnLayout(Shape::POINT, "lon,longitude", true), SetUpError);
}

}  // namespace
}  // namespace crsctl
