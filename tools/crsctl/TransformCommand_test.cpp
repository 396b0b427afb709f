#include "tools/crsctl/TransformCommand.h"

#include <gtest/gtest.h>

namespace crsctl {
namespace {

TEST(TheSummary, CountsEveryLine) {
    Counts counts;
    counts.transformed = 999;
    counts.refused = 1;
    counts.ignored = 2;
    EXPECT_EQ(summaryLine(counts, 0.5), "1,002 lines: 999 transformed, 1 refused, 2 ignored; 0.500 s, 2,004 lines/s");
    EXPECT_EQ(summaryLine({1, 0, 0, 0}, 0), "1 line: 1 transformed, 0 refused, 0 ignored; 0.000 s, 0 lines/s");
}

}  // namespace
}  // namespace crsctl
