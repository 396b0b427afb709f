#include "tools/crsctl/points/BlockTransformer.h"

#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/CrsctlSession.h"
#include "tools/crsctl/points/BlockReader.h"
#include "tools/crsctl/start/Failures.h"

namespace crsctl {
namespace {

using testing::HasSubstr;

constexpr char CONFIGURATION[] =
    "<CrsConfiguration>"
    "<CRS>4326</CRS><CRS numberOfDecimalPlaces='5'>4258</CRS><CRS>CRS:84</CRS><CRS "
    "numberOfDecimalPlaces='1'>25832</CRS>"
    "<CRS mapToEpsgCode='25832' numberOfDecimalPlaces='2'>UTM32</CRS><CRS mapToEpsgCode='25832'>PLAIN32</CRS>"
    "<CRS mapToEpsgCode='25833' numberOfDecimalPlaces='4'>UTM33</CRS>"
    "<CRS numberOfDecimalPlaces='-2'>25831</CRS><CRS numberOfDecimalPlaces='99'>25830</CRS>"
    "</CrsConfiguration>";

LineOptions lineOptions(ErrorMode errors = ErrorMode::MARK) {
    LineOptions options;
    options.errors = errors;
    options.inputNames = {"points.txt"};
    return options;
}

class Transforming : public testing::Test {
protected:
    Transforming() : session(CONFIGURATION), transform(*session, "CRS:84", "UTM32") {}

    BlockResult resultOf(const std::string& lines, const LineOptions& options = lineOptions()) {
        content = lines;
        blocks = std::make_unique<BlockTransformer>(transform, options);
        return blocks->process({content, 1, 0, false});
    }

    ConfiguredSession session;
    PointTransform transform;

private:
    std::string content;
    std::unique_ptr<BlockTransformer> blocks;
};

// 9 degrees east is the central meridian of the zone; the northing is that of README.md's example.
TEST_F(Transforming, WritesALineForEachLine) {
    const BlockResult result = resultOf("9 50\n9 50 100 name\n");
    EXPECT_EQ(result.output, "500000.00\t5538630.70\n500000.00\t5538630.70 100.00 name\n");
    EXPECT_EQ(result.reports, "");
    EXPECT_EQ(result.counts.lines, 2U);
    EXPECT_EQ(result.counts.points, 2U);
}

TEST_F(Transforming, EndsALastLineThatHasNoEnd) { EXPECT_EQ(resultOf("9 50").output, "500000.00\t5538630.70\n"); }

TEST_F(Transforming, PassesOverBlankLinesAndComments) {
    const BlockResult result = resultOf("# 9 50\n\n \t\n9 50\n");
    EXPECT_EQ(result.output, "# 9 50\n\n \t\n500000.00\t5538630.70\n");
    EXPECT_EQ(result.counts.passedOver, 3U);
}

TEST_F(Transforming, TakesAnotherBeginningOfCommentsOrNone) {
    LineOptions options = lineOptions();
    options.comment = "//";
    EXPECT_EQ(resultOf("// 9\n# 9\n", options).counts.refused, 1U);
    options.comment = "";
    EXPECT_EQ(resultOf("# 9\n9 50\n", options).counts.refused, 1U);
}

TEST_F(Transforming, MarksBadLinesAndGoesOn) {
    const BlockResult result = resultOf("abc\n9 95\n9 50\n");
    EXPECT_EQ(result.output, "*\t* abc\n*\t*\n500000.00\t5538630.70\n");
    EXPECT_EQ(result.counts.refused, 2U);
    EXPECT_FALSE(result.stopped);
    EXPECT_THAT(std::string(result.reports),
                testing::StartsWith("crsctl transform: points.txt:1: column 1 (x) is not a number: \"abc\": abc\n"
                                    "crsctl transform: points.txt:2: "));
}

TEST_F(Transforming, SkipsBadLinesAndReportsThem) {
    const BlockResult result = resultOf("abc\n9 50\n", lineOptions(ErrorMode::SKIP));
    EXPECT_EQ(result.output, "500000.00\t5538630.70\n");
    EXPECT_THAT(std::string(result.reports), HasSubstr("points.txt:1:"));
}

TEST_F(Transforming, StopsAtABadLine) {
    const BlockResult result = resultOf("9 50\nabc\n9 50\n", lineOptions(ErrorMode::STOP));
    EXPECT_EQ(result.output, "500000.00\t5538630.70\n");
    EXPECT_THAT(std::string(result.reports), HasSubstr("points.txt:2:"));
    EXPECT_TRUE(result.stopped);
    EXPECT_EQ(result.counts.lines, 2U);
}

TEST_F(Transforming, ReportsALineTooLongWithItsBeginning) {
    BlockTransformer transformer(transform, lineOptions());
    const BlockResult result = transformer.process({"9 50 xxx", 12, 0, true});
    EXPECT_EQ(result.reports, "crsctl transform: points.txt:12: the line is longer than 1048576 bytes: 9 50 xxx\n");
    EXPECT_EQ(result.counts.refused, 1U);
    EXPECT_EQ(resultOf("9 50 " + std::string(LONGEST_LINE, 'x') + "\n9 50\n").counts.refused, 1U);
}

TEST_F(Transforming, ReportsInOneLineWhateverTheInput) {
    const BlockResult result = resultOf("\x1B[31m" + std::string(1000, 'y') + "\r\n");
    EXPECT_EQ(std::count(result.reports.begin(), result.reports.end(), '\n'), 1);
    EXPECT_EQ(result.reports.find('\x1B'), std::string::npos);
    EXPECT_LT(result.reports.size(), 400U);
}

TEST_F(Transforming, RefusesAResultThatIsNotFinite) {
    const PointTransform same(*session, "EPSG:4326", "EPSG:4326");
    std::array<double, ORDINATES> ordinates = {1e308, 1e308, 0};
    std::string reason;
    EXPECT_TRUE(same.run(ordinates, false, reason));
    ordinates = {1e300, 1e300, 0};
    EXPECT_FALSE(transform.run(ordinates, false, reason));
    EXPECT_NE(reason, "");
}

struct DecimalsCase {
    const char* target;
    int horizontal;
    int height;
};

void PrintTo(const DecimalsCase& decimals, std::ostream* stream) { *stream << decimals.target; }

class TheDecimals : public testing::TestWithParam<DecimalsCase> {};

TEST_P(TheDecimals, AreThoseOfTheEntryThatFitsBest) {
    const ConfiguredSession session(CONFIGURATION);
    const PointTransform transform(*session, "4326", GetParam().target);
    EXPECT_EQ(transform.decimals()[X], GetParam().horizontal);
    EXPECT_EQ(transform.decimals()[Y], GetParam().horizontal);
    EXPECT_EQ(transform.decimals()[Z], GetParam().height);
}

INSTANTIATE_TEST_SUITE_P(Targets, TheDecimals,
                         testing::Values(DecimalsCase{"4326", 8, 3}, DecimalsCase{"CRS:84", 8, 3},
                                         DecimalsCase{"4258", 5, 3}, DecimalsCase{"EPSG:25832", 1, 1},
                                         DecimalsCase{"UTM32", 2, 2}, DecimalsCase{"PLAIN32", 3, 3},
                                         DecimalsCase{"urn:ogc:def:crs:EPSG::25832", 1, 1},
                                         DecimalsCase{"epsg.xml#25832", 1, 1}, DecimalsCase{"25833", 4, 4},
                                         DecimalsCase{"25831", 3, 3}, DecimalsCase{"25830", 3, 3}));

TEST_F(Transforming, TakesTheDecimalsThatAreAskedFor) {
    LineOptions options = lineOptions();
    options.decimals = 0;
    EXPECT_EQ(resultOf("9 50 100\n", options).output, "500000\t5538631 100\n");
}

TEST(ARefusedCrs, EndsTheTransformationWithTheServersWords) {
    const ConfiguredSession session(CONFIGURATION);
    try {
        const PointTransform transform(*session, "CRS:84", "EPSG:3857");
        FAIL() << "3857 is not offered";
    } catch (const InputRefused& refused) {
        EXPECT_STREQ(refused.what(),
                     "EPSG:3857: qvCrsUnavailable: The requested CRS EPSG:3857 is not set up in the configuration "
                     "(known, but not offered)");
    }
}

}  // namespace
}  // namespace crsctl
