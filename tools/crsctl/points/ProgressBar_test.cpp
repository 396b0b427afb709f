#include "tools/crsctl/points/ProgressBar.h"

#include <gtest/gtest.h>

namespace crsctl {
namespace {

TEST(ANumber, IsGroupedByThousands) {
    EXPECT_EQ(grouped(0), "0");
    EXPECT_EQ(grouped(999), "999");
    EXPECT_EQ(grouped(1000), "1,000");
    EXPECT_EQ(grouped(12345678), "12,345,678");
    EXPECT_EQ(grouped(18446744073709551615U), "18,446,744,073,709,551,615");
}

TEST(TheProgress, ShowsBarPercentRateAndTimeLeft) {
    EXPECT_EQ(progressLine({0, 100, 0, 0}), "[........................]   0 %  0 lines/s  - left");
    EXPECT_EQ(progressLine({50, 100, 3000, 2}), "[############............]  50 %  1,500 lines/s  0:02 left");
    EXPECT_EQ(progressLine({1, 100, 10, 60}), "[........................]   1 %  0 lines/s  1:39:00 left");
    EXPECT_EQ(progressLine({100, 100, 10, 1}), "[########################] 100 %  10 lines/s  0:00 left");
}

TEST(TheProgress, StaysWithinATerminal) {
    EXPECT_LE(progressLine({1, 18446744073709551615U, 18446744073709551U, 1e9}).size(), 79U);
    EXPECT_LE(progressLine({200, 100, 10, 1}).size(), 79U);
    EXPECT_LE(progressLine({0, 0, 0, 1}).size(), 79U);
}

TEST(TheSummary, CountsEveryLine) {
    Counts counts;
    counts.lines = 1002;
    counts.transformed = 999;
    counts.refused = 1;
    counts.passedOver = 2;
    EXPECT_EQ(summaryLine(counts, 0.5),
              "1,002 lines: 999 transformed, 1 refused, 2 passed over; 0.500 s, 2,004 lines/s");
    EXPECT_EQ(summaryLine({1, 1, 0, 0}, 0), "1 line: 1 transformed, 0 refused, 0 passed over; 0.000 s, 0 lines/s");
}

}  // namespace
}  // namespace crsctl
