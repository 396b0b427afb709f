#include "tools/crsctl/points/RowWriter.h"

#include <gtest/gtest.h>

namespace crsctl {
namespace {

constexpr Decimals TWO_PLACES = {2, 2, 1};

class Rows {
public:
    Rows(OutputFormat format, ColumnLayout columnLayout, Separator inputSeparator = Separator::AUTOMATIC)
        : layout(std::move(columnLayout)),
          separator(inputSeparator),
          writer(makeRowWriter(format, layout, separator, TWO_PLACES)) {}

    // The row of a line whose ordinates have become 1, 2 and 3.
    std::string of(const std::string& line, const char* lineEnd = "\n") {
        PointLine point;
        OutputBuffer out;
        writer->point(out, {line, lineEnd, 1}, read(line, point), {1, 2, 3});
        return std::string(out.view());
    }

    std::string markOf(const std::string& line) {
        PointLine point;
        OutputBuffer out;
        writer->mark(out, {line, "\n", 7}, &read(line, point), "the reason");
        return std::string(out.view());
    }

    std::string markOfUnreadable(const std::string& line) {
        OutputBuffer out;
        writer->mark(out, {line, "\n", 7}, nullptr, "the reason");
        return std::string(out.view());
    }

    std::string headerOf(const std::string& line) {
        OutputBuffer out;
        writer->header(out, {line, "\n", 1});
        return std::string(out.view());
    }

    std::string passedOver(const std::string& line) {
        OutputBuffer out;
        writer->passOver(out, {line, "\n", 1});
        return std::string(out.view());
    }

private:
    const PointLine& read(const std::string& line, PointLine& point) {
        std::string reason;
        EXPECT_TRUE(readPoint(line, layout, separator, point, reason)) << reason;
        return point;
    }

    ColumnLayout layout;
    Separator separator;
    std::unique_ptr<RowWriter> writer;
};

TEST(ATextRow, IsTheLineWithItsOrdinatesReplaced) {
    Rows rows(OutputFormat::TEXT, ColumnLayout());
    EXPECT_EQ(rows.of("9 50"), "1.00\t2.00\n");
    EXPECT_EQ(rows.of("9 50 100"), "1.00\t2.00 3.0\n");
    EXPECT_EQ(rows.of("  9   50  100 foo\tbar "), "1.00\t2.00 3.0 foo\tbar \n");
    EXPECT_EQ(rows.of("9 50\tname"), "1.00\t2.00\tname\n");
    EXPECT_EQ(rows.of("9 50", "\r\n"), "1.00\t2.00\r\n");
}

TEST(ATextRow, KeepsTheSeparatorOfTheLine) {
    Rows rows(OutputFormat::TEXT, ColumnLayout());
    EXPECT_EQ(rows.of("9,50"), "1.00,2.00\n");
    EXPECT_EQ(rows.of("9; 50 ;100;a b"), "1.00;2.00;3.0;a b\n");
}

TEST(ATextRow, LeavesCarriedColumnsWhereTheyAre) {
    EXPECT_EQ(Rows(OutputFormat::TEXT, layoutFrom("id,x,y")).of("A1;9;50;foo"), "A1;1.00;2.00;foo\n");
    EXPECT_EQ(Rows(OutputFormat::TEXT, layoutFrom("x,name,y")).of("9 foo 50"), "1.00 foo 2.00\n");
    EXPECT_EQ(Rows(OutputFormat::TEXT, layoutFrom("y,x,z")).of("50 9 100"), "2.00\t1.00 3.0\n");
    EXPECT_EQ(Rows(OutputFormat::TEXT, layoutFrom("z,x,y")).of("100 9 50"), "3.0\t1.00\t2.00\n");
}

TEST(ATextRow, IsMarkedAsCs2csDoes) {
    Rows rows(OutputFormat::TEXT, ColumnLayout());
    EXPECT_EQ(rows.markOf("9 95 100 foo"), "*\t* inf foo\n");
    EXPECT_EQ(rows.markOf("9 95 foo"), "*\t* foo\n");
    EXPECT_EQ(rows.markOf("9,95"), "*,*\n");
    EXPECT_EQ(rows.markOfUnreadable("abc"), "*\t* abc\n");
}

TEST(ATextRow, LetsBlankLinesCommentsAndHeaderPass) {
    Rows rows(OutputFormat::TEXT, ColumnLayout());
    EXPECT_EQ(rows.passedOver("# a comment"), "# a comment\n");
    EXPECT_EQ(rows.passedOver(""), "\n");
    EXPECT_EQ(rows.headerOf("lon lat"), "lon lat\n");
}

TEST(ACsvRow, HasTheColumnsOfTheLine) {
    Rows rows(OutputFormat::CSV, ColumnLayout());
    EXPECT_EQ(rows.of("9 50"), "1.00,2.00\n");
    EXPECT_EQ(rows.of("9;50;100;foo"), "1.00,2.00,3.0,foo\n");
    EXPECT_EQ(rows.of("9 50 foo"), "1.00,2.00,foo\n");
    EXPECT_EQ(Rows(OutputFormat::CSV, layoutFrom("id,x,y")).of("A1 9 50 foo"), "A1,1.00,2.00,foo\n");
}

TEST(ACsvRow, QuotesWhatNeedsIt) {
    Rows rows(OutputFormat::CSV, ColumnLayout());
    EXPECT_EQ(rows.of("9;50;a,b"), "1.00,2.00,\"a,b\"\n");
    EXPECT_EQ(rows.of("9;50;say \"x\""), "1.00,2.00,\"say \"\"x\"\"\"\n");
    EXPECT_EQ(rows.of("9,50,\"a,b\""), "1.00,2.00,\"a,b\"\n");
    EXPECT_EQ(rows.of("9 50 \"a\""), "1.00,2.00,\"\"\"a\"\"\"\n");
}

TEST(ACsvRow, HasAMarkForEveryOrdinate) {
    EXPECT_EQ(Rows(OutputFormat::CSV, ColumnLayout()).markOf("9 95 100 foo"), "*,*,*,foo\n");
    EXPECT_EQ(Rows(OutputFormat::CSV, ColumnLayout()).markOfUnreadable("abc"), "*,*\n");
    EXPECT_EQ(Rows(OutputFormat::CSV, layoutFrom("id,x,y")).markOfUnreadable("A1;b"), "A1,*,*\n");
}

TEST(ACsvRow, NamesTheOrdinatesInTheHeader) {
    EXPECT_EQ(Rows(OutputFormat::CSV, ColumnLayout()).headerOf("lon lat name"), "x,y,name\n");
    EXPECT_EQ(Rows(OutputFormat::CSV, layoutFrom("id,x,y,z")).headerOf("no;lat;lon;h;name"), "no,x,y,z,name\n");
    EXPECT_EQ(Rows(OutputFormat::CSV, ColumnLayout()).passedOver("# a comment"), "");
}

TEST(AJsonRow, HasOrdinatesAndCarriedColumns) {
    Rows rows(OutputFormat::JSON, ColumnLayout());
    EXPECT_EQ(rows.of("9 50"), "{\"x\":1.00,\"y\":2.00}\n");
    EXPECT_EQ(rows.of("9 50 100 foo bar"), "{\"x\":1.00,\"y\":2.00,\"z\":3.0,\"rest\":[\"foo\",\"bar\"]}\n");
    EXPECT_EQ(Rows(OutputFormat::JSON, layoutFrom("id,x,y")).of("A1;9;50;foo"),
              "{\"x\":1.00,\"y\":2.00,\"id\":\"A1\",\"rest\":[\"foo\"]}\n");
}

TEST(AJsonRow, HasEachKeyOnce) {
    EXPECT_EQ(Rows(OutputFormat::JSON, layoutFrom("x,y,a,a,rest")).of("9 50 1 2 3"),
              "{\"x\":1.00,\"y\":2.00,\"a\":\"1\",\"rest\":[\"2\",\"3\"]}\n");
}

TEST(AJsonRow, TakesQuotesOffAndEscapesTheRest) {
    Rows rows(OutputFormat::JSON, ColumnLayout());
    EXPECT_EQ(rows.of("9,50,\"a \"\"b\"\", c\""), "{\"x\":1.00,\"y\":2.00,\"rest\":[\"a \\\"b\\\", c\"]}\n");
    EXPECT_EQ(rows.of("9 50 \x01"), "{\"x\":1.00,\"y\":2.00,\"rest\":[\"\\u0001\"]}\n");
    EXPECT_EQ(rows.of("9 50 100" + std::string(" a\0b", 4)),
              "{\"x\":1.00,\"y\":2.00,\"z\":3.0,\"rest\":[\"a\\u0000b\"]}\n");
}

// In Latin-1, "M\xFCnchen".
TEST(AJsonRow, SaysWhereBytesWereReplaced) {
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout()).of("9 50 M\xFCnchen"),
              "{\"x\":1.00,\"y\":2.00,\"rest\":[\"M\xEF\xBF\xBDnchen\"],\"bytesReplaced\":true}\n");
    EXPECT_EQ(Rows(OutputFormat::JSON, layoutFrom("x,y,Gr\xF6\xDF"
                                                  "e,bytesReplaced"))
                  .of("9 50 1 2"),
              "{\"x\":1.00,\"y\":2.00,\"Gr\xEF\xBF\xBD\xEF\xBF\xBD"
              "e\":\"1\",\"rest\":[\"2\"],\"bytesReplaced\":true}\n");
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout()).of("9 50 M\xC3\xBCnchen"),
              "{\"x\":1.00,\"y\":2.00,\"rest\":[\"M\xC3\xBCnchen\"]}\n");
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout()).markOfUnreadable("\xFC"),
              "{\"line\":7,\"error\":\"the reason\",\"input\":\"\xEF\xBF\xBD\",\"bytesReplaced\":true}\n");
}

TEST(AJsonRow, SaysWhatIsWrong) {
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout()).markOfUnreadable("abc"),
              "{\"line\":7,\"error\":\"the reason\",\"input\":\"abc\"}\n");
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout()).passedOver("# a comment"), "");
    EXPECT_EQ(Rows(OutputFormat::JSON, ColumnLayout()).headerOf("lon lat"), "");
}

}  // namespace
}  // namespace crsctl
