#include "tools/crsctl/RowWriter.h"

#include <gtest/gtest.h>

namespace crsctl {
namespace {

constexpr Decimals PLACES = {2, 2, 1, 0};

class Rows {
public:
    Rows(OutputFormat output, const ColumnLayout& layout, Separator separator = Separator::AUTOMATIC)
        : writer(makeRowWriter(output, {layout, separator, PLACES})) {}

    // Returns the row of a line with the results 1, 2, 3 and 4.
    std::string of(const std::string& line, const char* lineEnd = "\n") {
        std::string out;
        writer->row(out, {line, lineEnd, 1}, read(line), {1, 2, 3, 4});
        return out;
    }

    std::string markOf(const std::string& line) {
        std::string out;
        writer->mark(out, {line, "\n", 7}, &read(line), "the reason");
        return out;
    }

    std::string markOfUnreadable(const std::string& line) const {
        std::string out;
        writer->mark(out, {line, "\n", 7}, nullptr, "the reason");
        return out;
    }

    std::string headerOf(const std::string& line) const {
        std::string out;
        writer->header(out, line);
        return out;
    }

    std::string ignored(const std::string& line) const {
        std::string out;
        writer->ignored(out, {line, "\n", 1});
        return out;
    }

private:
    const CoordinateLine& read(const std::string& line) {
        std::string reason;
        const RowFormat& format = writer->format;
        EXPECT_TRUE(readCoordinates(line, format.layout, format.separator, coordinates, reason)) << reason;
        return coordinates;
    }

    std::unique_ptr<const RowWriter> writer;
    CoordinateLine coordinates{};
};

TEST(ATextRow, IsTheLineWithItsOrdinatesReplaced) {
    Rows rows(OutputFormat::TEXT, ColumnLayout(Shape::POINT));
    EXPECT_EQ(rows.of("9 50"), "1.00\t2.00\n");
    EXPECT_EQ(rows.of("9 50 100"), "1.00\t2.00 3.0\n");
    EXPECT_EQ(rows.of("  9   50  100 foo\tbar "), "1.00\t2.00 3.0 foo\tbar \n");
    EXPECT_EQ(rows.of("9 50\tname"), "1.00\t2.00\tname\n");
    EXPECT_EQ(rows.of("9 50", "\r\n"), "1.00\t2.00\r\n");
}

TEST(ATextRow, KeepsTheSeparatorOfTheLine) {
    Rows rows(OutputFormat::TEXT, ColumnLayout(Shape::POINT));
    EXPECT_EQ(rows.of("9,50"), "1.00,2.00\n");
    EXPECT_EQ(rows.of("9; 50 ;100;a b"), "1.00;2.00;3.0;a b\n");
}

TEST(ATextRow, KeepsOtherColumnsInPlace) {
    EXPECT_EQ(Rows(OutputFormat::TEXT, ColumnLayout(Shape::POINT, "id,x,y")).of("A1;9;50;foo"), "A1;1.00;2.00;foo\n");
    EXPECT_EQ(Rows(OutputFormat::TEXT, ColumnLayout(Shape::POINT, "x,name,y")).of("9 foo 50"), "1.00 foo 2.00\n");
    EXPECT_EQ(Rows(OutputFormat::TEXT, ColumnLayout(Shape::POINT, "y,x,z")).of("50 9 100"), "2.00\t1.00 3.0\n");
    EXPECT_EQ(Rows(OutputFormat::TEXT, ColumnLayout(Shape::POINT, "z,x,y")).of("100 9 50"), "3.0\t1.00\t2.00\n");
}

TEST(ATextRow, IsMarkedAsCs2csDoes) {
    Rows rows(OutputFormat::TEXT, ColumnLayout(Shape::POINT));
    EXPECT_EQ(rows.markOf("9 95 100 foo"), "*\t* inf foo\n");
    EXPECT_EQ(rows.markOf("9 95 foo"), "*\t* foo\n");
    EXPECT_EQ(rows.markOf("9,95"), "*,*\n");
    EXPECT_EQ(rows.markOfUnreadable("abc"), "*\t* abc\n");
}

TEST(ATextRow, CopiesBlankLinesCommentsAndHeader) {
    Rows rows(OutputFormat::TEXT, ColumnLayout(Shape::POINT));
    EXPECT_EQ(rows.ignored("# a comment"), "# a comment\n");
    EXPECT_EQ(rows.ignored(""), "\n");
    EXPECT_EQ(rows.headerOf("lon lat"), "lon lat\n");
}

TEST(ACsvRow, HasTheColumnsOfTheLine) {
    Rows rows(OutputFormat::CSV, ColumnLayout(Shape::POINT));
    EXPECT_EQ(rows.of("9 50"), "1.00,2.00\n");
    EXPECT_EQ(rows.of("9;50;100;foo"), "1.00,2.00,3.0,foo\n");
    EXPECT_EQ(rows.of("9 50 foo"), "1.00,2.00,foo\n");
    EXPECT_EQ(Rows(OutputFormat::CSV, ColumnLayout(Shape::POINT, "id,x,y")).of("A1 9 50 foo"), "A1,1.00,2.00,foo\n");
}

TEST(ACsvRow, QuotesValuesThatNeedIt) {
    Rows rows(OutputFormat::CSV, ColumnLayout(Shape::POINT));
    EXPECT_EQ(rows.of("9;50;a,b"), "1.00,2.00,\"a,b\"\n");
    EXPECT_EQ(rows.of("9;50;say \"x\""), "1.00,2.00,\"say \"\"x\"\"\"\n");
    EXPECT_EQ(rows.of("9,50,\"a,b\""), "1.00,2.00,\"a,b\"\n");
    EXPECT_EQ(rows.of("9 50 \"a\""), "1.00,2.00,\"\"\"a\"\"\"\n");
}

TEST(ACsvRow, HasAMarkForEveryOrdinate) {
    EXPECT_EQ(Rows(OutputFormat::CSV, ColumnLayout(Shape::POINT)).markOf("9 95 100 foo"), "*,*,*,foo\n");
    EXPECT_EQ(Rows(OutputFormat::CSV, ColumnLayout(Shape::POINT)).markOfUnreadable("abc"), "*,*\n");
    EXPECT_EQ(Rows(OutputFormat::CSV, ColumnLayout(Shape::POINT, "id,x,y")).markOfUnreadable("A1;b"), "A1,*,*\n");
}

TEST(ACsvRow, NamesTheOrdinatesInTheHeader) {
    EXPECT_EQ(Rows(OutputFormat::CSV, ColumnLayout(Shape::POINT)).headerOf("lon lat name"), "x,y,name\n");
    EXPECT_EQ(Rows(OutputFormat::CSV, ColumnLayout(Shape::POINT, "id,x,y,z")).headerOf("no;lat;lon;h;name"),
              "no,x,y,z,name\n");
    EXPECT_EQ(Rows(OutputFormat::CSV, ColumnLayout(Shape::POINT)).ignored("# a comment"), "");
}

TEST(AJsonRow, HasOrdinatesAndOtherColumns) {
    Rows rows(OutputFormat::JSON, ColumnLayout(Shape::POINT));
    EXPECT_EQ(rows.of("9 50"), "{\"x\":1.00,\"y\":2.00}\n");
    EXPECT_EQ(rows.of("9 50 100 foo bar"), "{\"x\":1.00,\"y\":2.00,\"z\":3.0,\"rest\":[\"foo\",\"bar\"]}\n");
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout(Shape::POINT, "id,x,y")).of("A1;9;50;foo"),
              "{\"x\":1.00,\"y\":2.00,\"id\":\"A1\",\"rest\":[\"foo\"]}\n");
}

TEST(AJsonRow, HasEachKeyOnce) {
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout(Shape::POINT, "x,y,a,a,rest")).of("9 50 1 2 3"),
              "{\"x\":1.00,\"y\":2.00,\"a\":\"1\",\"rest\":[\"2\",\"3\"]}\n");
}

TEST(AJsonRow, RemovesQuotesAndEscapesTheRest) {
    Rows rows(OutputFormat::JSON, ColumnLayout(Shape::POINT));
    EXPECT_EQ(rows.of("9,50,\"a \"\"b\"\", c\""), "{\"x\":1.00,\"y\":2.00,\"rest\":[\"a \\\"b\\\", c\"]}\n");
    EXPECT_EQ(rows.of("9 50 \x01"), "{\"x\":1.00,\"y\":2.00,\"rest\":[\"\\u0001\"]}\n");
    EXPECT_EQ(rows.of("9 50 100" + std::string(" a\0b", 4)),
              "{\"x\":1.00,\"y\":2.00,\"z\":3.0,\"rest\":[\"a\\u0000b\"]}\n");
}

// In Latin-1, "M\xFCnchen".
TEST(AJsonRow, IsMarkedIfBytesAreReplaced) {
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout(Shape::POINT)).of("9 50 M\xFCnchen"),
              "{\"x\":1.00,\"y\":2.00,\"rest\":[\"M\xEF\xBF\xBDnchen\"],\"bytesReplaced\":true}\n");
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout(Shape::POINT,
                                                    "x,y,Gr\xF6\xDF"
                                                    "e,bytesReplaced"))
                  .of("9 50 1 2"),
              "{\"x\":1.00,\"y\":2.00,\"Gr\xEF\xBF\xBD\xEF\xBF\xBD"
              "e\":\"1\",\"rest\":[\"2\"],\"bytesReplaced\":true}\n");
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout(Shape::POINT)).of("9 50 M\xC3\xBCnchen"),
              "{\"x\":1.00,\"y\":2.00,\"rest\":[\"M\xC3\xBCnchen\"]}\n");
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout(Shape::POINT)).markOfUnreadable("\xFC"),
              "{\"line\":7,\"error\":\"the reason\",\"input\":\"\xEF\xBF\xBD\",\"bytesReplaced\":true}\n");
}

TEST(ABoxRow, HasItsFourOrdinatesInEveryFormat) {
    const ColumnLayout box(Shape::BOX);
    EXPECT_EQ(Rows(OutputFormat::TEXT, box).of(" 6  47\t15 55 Europe"), "1.00 2.00 3.0 4 Europe\n");
    EXPECT_EQ(Rows(OutputFormat::TEXT, box).of("6; 47;15;55"), "1.00;2.00;3.0;4\n");
    EXPECT_EQ(Rows(OutputFormat::CSV, box).of("6 47 15 55 Europe"), "1.00,2.00,3.0,4,Europe\n");
    EXPECT_EQ(Rows(OutputFormat::JSON, box).of("6 47 15 55 Europe"),
              "{\"minx\":1.00,\"miny\":2.00,\"maxx\":3.0,\"maxy\":4,\"rest\":[\"Europe\"]}\n");
}

TEST(ABoxRow, HasTheOrdinatesInTheColumnsOfTheLayout) {
    const ColumnLayout layout(Shape::BOX, "id,minx,maxx,miny,maxy,x");
    EXPECT_EQ(Rows(OutputFormat::TEXT, layout).of("E1 6 15 47 55 7"), "E1 1.00 3.0 2.00 4 7\n");
    EXPECT_EQ(Rows(OutputFormat::CSV, layout).of("E1 6 15 47 55 7"), "E1,1.00,3.0,2.00,4,7\n");
    EXPECT_EQ(Rows(OutputFormat::JSON, layout).of("E1 6 15 47 55 7"),
              "{\"minx\":1.00,\"miny\":2.00,\"maxx\":3.0,\"maxy\":4,\"id\":\"E1\",\"x\":\"7\"}\n");
    EXPECT_EQ(Rows(OutputFormat::CSV, layout).headerOf("no w e s n h"), "no,minx,maxx,miny,maxy,h\n");
}

TEST(ABoxRow, HasAMarkForEveryOrdinate) {
    const ColumnLayout box(Shape::BOX);
    EXPECT_EQ(Rows(OutputFormat::TEXT, box).markOf("6 95 15 99 Europe"), "* * * * Europe\n");
    EXPECT_EQ(Rows(OutputFormat::TEXT, box).markOfUnreadable("6 47"), "* * * * 6 47\n");
    EXPECT_EQ(Rows(OutputFormat::CSV, box).markOf("6,95,15,99"), "*,*,*,*\n");
    EXPECT_EQ(Rows(OutputFormat::CSV, box).markOfUnreadable("6"), "*,*,*,*\n");
}

TEST(AJsonRow, HasUnnamedColumnsInTheRest) {
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout(Shape::BOX, "minx,miny,maxx,maxy,")).of("6 47 15 55 a"),
              "{\"minx\":1.00,\"miny\":2.00,\"maxx\":3.0,\"maxy\":4,\"rest\":[\"a\"]}\n");
}

TEST(AJsonRow, HasTheErrorOfARefusedLine) {
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout(Shape::POINT)).markOfUnreadable("abc"),
              "{\"line\":7,\"error\":\"the reason\",\"input\":\"abc\"}\n");
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout(Shape::POINT)).ignored("# a comment"), "");
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout(Shape::POINT)).headerOf("lon lat"), "");
}

}  // namespace
}  // namespace crsctl
