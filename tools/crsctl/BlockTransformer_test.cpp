#include "tools/crsctl/BlockTransformer.h"

#include <ostream>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/CrsctlSession.h"
#include "tools/crsctl/Blocks.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr char CONFIGURED_DECIMALS[] =
    "<CrsConfiguration>"
    "<CRS>4326</CRS><CRS numberOfDecimalPlaces='5'>4258</CRS><CRS>CRS:84</CRS><CRS "
    "numberOfDecimalPlaces='1'>25832</CRS>"
    "<CRS mapToEpsgCode='25832' numberOfDecimalPlaces='2'>UTM32</CRS><CRS mapToEpsgCode='25832'>PLAIN32</CRS>"
    "<CRS mapToEpsgCode='25833' numberOfDecimalPlaces='4'>UTM33</CRS>"
    "<CRS numberOfDecimalPlaces='-2'>25831</CRS><CRS numberOfDecimalPlaces='99'>25830</CRS>"
    "</CrsConfiguration>";

struct DecimalsCase {
    const char* target;
    int horizontal;
    int height;
};

void PrintTo(const DecimalsCase& decimals, std::ostream* stream) { *stream << decimals.target; }

class TheDecimals : public testing::TestWithParam<DecimalsCase> {};

TEST_P(TheDecimals, AreThoseOfTheBestEntry) {
    const ConfiguredSession session(CONFIGURED_DECIMALS);
    const CrsPair pair(*session, "4326", GetParam().target);
    const int horizontal = GetParam().horizontal;
    const Decimals ofPoints = pair.decimals(Shape::POINT);
    EXPECT_THAT(std::vector<int>(ofPoints.begin(), ofPoints.begin() + 3),
                ElementsAre(horizontal, horizontal, GetParam().height));
    EXPECT_THAT(pair.decimals(Shape::BOX), Each(horizontal));
}

INSTANTIATE_TEST_SUITE_P(Targets, TheDecimals,
                         testing::Values(DecimalsCase{"4326", 8, 3}, DecimalsCase{"CRS:84", 8, 3},
                                         DecimalsCase{"4258", 5, 3}, DecimalsCase{"EPSG:25832", 1, 1},
                                         DecimalsCase{"UTM32", 2, 2}, DecimalsCase{"PLAIN32", 3, 3},
                                         DecimalsCase{"urn:ogc:def:crs:EPSG::25832", 1, 1},
                                         DecimalsCase{"epsg.xml#25832", 1, 1}, DecimalsCase{"25833", 4, 4},
                                         DecimalsCase{"25831", 3, 3}, DecimalsCase{"25830", 3, 3}));

TEST(APoint, LooksExchangedIfOnlyItsExchangeIsInTheAreaOfUse) {
    const UnconfiguredSession session;
    const CrsPair pair(session, "EPSG:4326", "EPSG:25832");
    EXPECT_FALSE(pair.looksExchanged({53.5, 9.9}));
    EXPECT_TRUE(pair.looksExchanged({9.9, 53.5}));
    EXPECT_FALSE(pair.looksExchanged({-30, 100}));
    EXPECT_FALSE(CrsPair(session, "EPSG:25832", "EPSG:4326").looksExchanged({9.9, 53.5}));
    EXPECT_FALSE(CrsPair(session, "EPSG:25832", "EPSG:4326").looksExchanged({53.5, 9.9}));
    EXPECT_FALSE(CrsPair(session, "EPSG:4326", "EPSG:3857").looksExchanged({9.9, 53.5}));
    EXPECT_TRUE(CrsPair(session, "EPSG:4258", "EPSG:3857").looksExchanged({9.9, 53.5}));
}

TEST(ARefusedPoint, HasTheMessageOfTheLibrary) {
    const ConfiguredSession session(CONFIGURED_DECIMALS);
    const CrsPair pair(*session, "4326", "UTM32");
    for (const std::size_t count : {2U, 3U}) {
        const CoordinateLine noSuchLatitude{{95, 9, 0, 0}, {}, count, ' '};
        EXPECT_EQ(pair.failureReason(noSuchLatitude), "Invalid coordinate");
        const CoordinateLine accepted{{50, 9, 0, 0}, {}, count, ' '};
        EXPECT_EQ(pair.failureReason(accepted), "the result is not finite");
    }
}

TEST(ARefusedCrs, EndsTheTransformationWithTheMessageOfTheServer) {
    const ConfiguredSession session(CONFIGURED_DECIMALS);
    try {
        const CrsPair pair(*session, "CRS:84", "EPSG:3857");
        FAIL() << "3857 is not offered";
    } catch (const InputRefused& refused) {
        EXPECT_STREQ(refused.what(),
                     "EPSG:3857: qvCrsUnavailable: The requested CRS EPSG:3857 is not set up in the configuration "
                     "(known, but not offered)");
    }
}

constexpr char CONFIGURATION[] =
    "<CrsConfiguration>"
    "<CRS>4326</CRS><CRS>CRS:84</CRS><CRS mapToEpsgCode='25832' numberOfDecimalPlaces='2'>UTM32</CRS>"
    "</CrsConfiguration>";

class Transforming : public testing::Test {
protected:
    Transforming() : session(CONFIGURATION), pair(*session, "CRS:84", "UTM32") {}

    LineOptions lineOptions(Shape shape = Shape::POINT, ErrorMode errors = ErrorMode::MARK) const {
        LineOptions options;
        options.writer = writerOf(shape, pair.decimals(shape));
        options.errors = errors;
        options.inputNames = {"points.txt"};
        return options;
    }

    static std::shared_ptr<const RowWriter> writerOf(Shape shape, const Decimals& decimals) {
        return makeRowWriter(OutputFormat::TEXT, {ColumnLayout(shape), Separator::AUTOMATIC, decimals});
    }

    BlockResult resultOf(const Block& block, const LineOptions& options) const {
        return transformBlock(pair, options, block);
    }
    BlockResult resultOf(const std::string& lines, const LineOptions& options) const {
        return resultOf(Block{lines}, options);
    }
    BlockResult resultOf(const std::string& lines) const { return resultOf(lines, lineOptions()); }
    std::string outputOf(const std::string& lines) const { return resultOf(lines).output; }

    ConfiguredSession session;
    CrsPair pair;
};

// 9 degrees east is the central meridian of the zone; the northing is that of README.md's example.
TEST_F(Transforming, WritesALineForEachLine) {
    const BlockResult result = resultOf("9 50\n9 50 100 name\n");
    EXPECT_EQ(result.output, "500000.00\t5538630.70\n500000.00\t5538630.70 100.00 name\n");
    EXPECT_EQ(result.reports, "");
    EXPECT_EQ(result.counts.lines(), 2U);
    EXPECT_EQ(result.counts.transformed, 2U);
}

TEST_F(Transforming, EndsALastLineThatHasNoEnd) { EXPECT_EQ(resultOf("9 50").output, "500000.00\t5538630.70\n"); }

TEST_F(Transforming, IgnoresBlankLinesAndComments) {
    const BlockResult result = resultOf("# 9 50\n\n \t\n9 50\n");
    EXPECT_EQ(result.output, "# 9 50\n\n \t\n500000.00\t5538630.70\n");
    EXPECT_EQ(result.counts.ignored, 3U);
}

TEST_F(Transforming, AcceptsAnotherCommentMarkOrNone) {
    LineOptions options = lineOptions();
    options.comment = "//";
    EXPECT_EQ(resultOf("// 9\n# 9\n", options).counts.refused, 1U);
    options.comment = "";
    EXPECT_EQ(resultOf("# 9\n9 50\n", options).counts.refused, 1U);
}

TEST_F(Transforming, MarksBadLinesAndContinues) {
    const BlockResult result = resultOf("abc\n9 95\n9 50\n");
    EXPECT_EQ(result.output, "*\t* abc\n*\t*\n500000.00\t5538630.70\n");
    EXPECT_EQ(result.counts.refused, 2U);
    EXPECT_FALSE(result.stopped);
    EXPECT_THAT(result.reports,
                testing::StartsWith("crsctl transform: points.txt:1: column 1 (x) is not a number: \"abc\": abc\n"
                                    "crsctl transform: points.txt:2: "));
}

TEST_F(Transforming, SkipsBadLinesAndReportsThem) {
    const BlockResult result = resultOf("abc\n9 50\n", lineOptions(Shape::POINT, ErrorMode::SKIP));
    EXPECT_EQ(result.output, "500000.00\t5538630.70\n");
    EXPECT_THAT(result.reports, HasSubstr("points.txt:1:"));
}

TEST_F(Transforming, StopsAtABadLine) {
    const BlockResult result = resultOf("9 50\nabc\n9 50\n", lineOptions(Shape::POINT, ErrorMode::STOP));
    EXPECT_EQ(result.output, "500000.00\t5538630.70\n");
    EXPECT_THAT(result.reports, HasSubstr("points.txt:2:"));
    EXPECT_TRUE(result.stopped);
    EXPECT_EQ(result.counts.lines(), 2U);
}

TEST_F(Transforming, ReportsTheBeginningOfAnOverlongLine) {
    const BlockResult result = resultOf(Block{"9 50 xxx", 12, 0, true}, lineOptions());
    EXPECT_EQ(result.reports, "crsctl transform: points.txt:12: the line is longer than 1048576 bytes: 9 50 xxx\n");
    EXPECT_EQ(result.counts.refused, 1U);
    EXPECT_EQ(resultOf("9 50 " + std::string(LONGEST_LINE, 'x') + "\n9 50\n").counts.refused, 1U);
}

TEST_F(Transforming, ReportsEveryInputInOneLine) {
    const BlockResult result = resultOf("\x1B[31m" + std::string(1000, 'y') + "\r\n");
    EXPECT_EQ(std::count(result.reports.begin(), result.reports.end(), '\n'), 1);
    EXPECT_EQ(result.reports.find('\x1B'), std::string::npos);
    EXPECT_LT(result.reports.size(), 400U);
}

TEST_F(Transforming, RefusesAResultThatIsNotFinite) {
    const BlockResult result = resultOf("1e300 1e300\n9 50\n");
    EXPECT_EQ(result.output, "*\t*\n500000.00\t5538630.70\n");
    EXPECT_EQ(result.counts.refused, 1U);
}

// The input has more lines than one call of the library transforms, among them heights and bad lines.
TEST_F(Transforming, KeepsTheOrderOfLines) {
    std::string lines;
    std::string expected;
    for (int i = 0; i < 2000; ++i) {
        const std::string name = "line" + std::to_string(i);
        const bool isBad = i % 301 == 7;
        const bool hasHeight = i / 150 % 2 == 1;
        lines += (isBad ? "9 95" : "9 50") + std::string(hasHeight ? " 100 " : " ") + name + "\n";
        expected += (isBad ? "*\t*" : "500000.00\t5538630.70") +
                    std::string(hasHeight ? (isBad ? " inf " : " 100.00 ") : " ") + name + "\n";
    }
    EXPECT_EQ(outputOf(lines), expected);
}

// Earth's radius at the equator is 6378137 m. A geocentric CRS needs heights.
TEST_F(Transforming, TransformsHeightsWithTheirPoints) {
    const UnconfiguredSession unconfigured;
    const CrsPair toGeocentric(unconfigured, "EPSG:4326", "EPSG:4978");
    LineOptions options = lineOptions();
    options.writer = writerOf(Shape::POINT, {0, 0, 0, 0});
    const BlockResult result = transformBlock(toGeocentric, options, Block{"0 0 100\n0 0\n0 90 50\n"});
    EXPECT_EQ(result.output, "6378237\t0 0\n*\t*\n0\t6378187 0\n");
}

TEST_F(Transforming, WritesTheRequestedDecimals) {
    LineOptions options = lineOptions();
    options.writer = writerOf(Shape::POINT, {0, 0, 0, 0});
    EXPECT_EQ(resultOf("9 50 100\n", options).output, "500000\t5538631 100\n");
}

struct BoxCase {
    const char* line;
    const char* output;
};

void PrintTo(const BoxCase& box, std::ostream* stream) { *stream << box.line; }

class ABox : public Transforming, public testing::WithParamInterface<BoxCase> {};

TEST_P(ABox, IsWrittenWhereItsLineWas) {
    const std::string lines = "# boxes\n" + std::string(GetParam().line) + "\n";
    EXPECT_EQ(resultOf(lines, lineOptions(Shape::BOX)).output, "# boxes\n" + std::string(GetParam().output) + "\n");
}

// Each box contains the results of cs2cs for the corners and for 21 points between them on each edge.
INSTANTIATE_TEST_SUITE_P(Lines, ABox,
                         testing::Values(BoxCase{"9 50 9 50", "500000.00 5538630.70 500000.00 5538630.70"},
                                         BoxCase{"9 50 9 51 the meridian",
                                                 "500000.00 5538630.70 500000.00 5649824.89 the meridian"},
                                         BoxCase{"6;47;15;55", "271930.43;5205173.13;956095.07;6111268.07"},
                                         BoxCase{"15 55 6 47", "* * * *"}, BoxCase{"6 47 15", "* * * * 6 47 15"}));

TEST_F(Transforming, RefusesABoxWithTheMessageOfTheLibrary) {
    const BlockResult result = resultOf("9 50 9 51\n6 95 15 99\n", lineOptions(Shape::BOX));
    EXPECT_EQ(result.reports,
              "crsctl transform: points.txt:2: BoundingBox: out of bounds! No point of 6, 95, 15, 99 can be "
              "transformed: 6 95 15 99\n");
    EXPECT_EQ(result.counts.lines(), 2U);
    EXPECT_EQ(result.counts.transformed, 1U);
    EXPECT_EQ(result.counts.refused, 1U);
}

TEST_F(Transforming, StopsAtABadBox) {
    const BlockResult result = resultOf("9 50 9 50\n6 95 15 99\n9 50 9 50\n", lineOptions(Shape::BOX, ErrorMode::STOP));
    EXPECT_EQ(result.output, "500000.00 5538630.70 500000.00 5538630.70\n");
    EXPECT_TRUE(result.stopped);
    EXPECT_EQ(result.counts.lines(), 2U);
}

// The middle of the southern edge, on the central meridian, is farther south than its ends.
TEST_F(Transforming, TransformsTheRequestedPointsPerEdge) {
    LineOptions options = lineOptions(Shape::BOX);
    options.pointsPerEdge = 0;
    EXPECT_EQ(resultOf("8 50 10 51\n", options).output, "428333.55 5539109.82 571666.45 5650300.79\n");
    options.pointsPerEdge = 1;
    EXPECT_EQ(resultOf("8 50 10 51\n", options).output, "428333.55 5538630.70 571666.45 5650300.79\n");
}

}  // namespace
}  // namespace crsctl
