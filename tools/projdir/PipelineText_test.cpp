#include "tools/projdir/PipelineText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ProjDir {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(PipelineTextTest, ReadsParametersInOrder) {
    EXPECT_THAT(parseParameters(" +proj=utm zone=32  +south\n+x= "),
                ElementsAre(Pair("proj", "utm"), Pair("zone", "32"), Pair("south", ""), Pair("x", "")));
    EXPECT_TRUE(parseParameters("").empty());
}

TEST(PipelineTextTest, ReadsTheStepsOfAPipeline) {
    const auto steps = parsePipeline(
        "+proj=pipeline +step +inv +proj=utm +zone=32 +ellps=intl +step +proj=push +v_3 +step +proj=helmert +x=-87.5");
    ASSERT_EQ(steps.size(), 3U);
    EXPECT_EQ(steps[0].projection, "utm");
    EXPECT_TRUE(steps[0].isInverse);
    EXPECT_EQ(steps[1].projection, "push");
    EXPECT_TRUE(steps[1].has("v_3"));
    EXPECT_FALSE(steps[1].isInverse);
    EXPECT_EQ(steps[2].number("x"), -87.5);
    EXPECT_EQ(steps[2].number("y"), 0);
}

TEST(PipelineTextTest, AnOperationAloneIsOneStep) {
    const auto steps = parsePipeline("+proj=noop");
    ASSERT_EQ(steps.size(), 1U);
    EXPECT_EQ(steps.front().projection, "noop");
}

}  // namespace
}  // namespace ProjDir
