#include "tools/crsctl/find/Boxes.h"

#include <string>

#include <gtest/gtest.h>

#include "tools/crsctl/start/Failures.h"

namespace crsctl {
namespace {

TEST(ABox, IsReadFromFourNumbers) {
    for (const char* text : {"6,47,15,55", "-180,-90,180,90", "176.81,-20.81,-178.15,-12.42", "-0.5,0,0,0"})
        EXPECT_EQ(boxInWords(readBox(text)), text);
    EXPECT_EQ(boxInWords(readBox("+6,4.70e1,15.,.5e2")), "6,47,15,50");
}

TEST(ABox, IsRefusedWhenItIsNone) {
    for (const char* text : {"", "6", "6,47,15", "6,47,15,55,", "6,47,15,55,1", "6 47 15 55", "6, 47,15,55",
                             "6,47,x,55", "181,0,0,0", "0,-91,0,0", "0,0,0,nan", "0,0,1e999,0", "6,55,15,47"})
        EXPECT_THROW(readBox(text), SetUpError) << text;
}

struct Pair {
    const char* left;
    const char* right;
    bool leftCovers;
    bool rightCovers;
    bool doMeet;
};

class Boxes : public testing::TestWithParam<Pair> {};

TEST_P(Boxes, CoverAndMeet) {
    const GeographicBox left = readBox(GetParam().left);
    const GeographicBox right = readBox(GetParam().right);
    EXPECT_EQ(covers(left, right), GetParam().leftCovers);
    EXPECT_EQ(covers(right, left), GetParam().rightCovers);
    EXPECT_EQ(meet(left, right), GetParam().doMeet);
    EXPECT_EQ(meet(right, left), GetParam().doMeet);
}

INSTANTIATE_TEST_SUITE_P(All, Boxes,
                         testing::Values(Pair{"6,47,15,55", "7,48,8,49", true, false, true},
                                         Pair{"6,47,15,55", "6,47,15,55", true, true, true},
                                         Pair{"6,47,15,55", "7,48,16,49", false, false, true},
                                         Pair{"6,47,15,55", "7,40,8,49", false, false, true},
                                         Pair{"6,47,15,55", "15,55,16,56", false, false, true},
                                         Pair{"6,47,15,55", "16,48,17,49", false, false, false},
                                         Pair{"6,47,15,55", "7,56,8,57", false, false, false},
                                         Pair{"-180,-90,180,90", "6,47,15,55", true, false, true},
                                         Pair{"-180,-90,180,90", "170,0,-170,1", true, false, true},
                                         Pair{"170,-10,-170,10", "175,0,-175,1", true, false, true},
                                         Pair{"170,-10,-170,10", "-175,0,-174,1", true, false, true},
                                         Pair{"170,-10,-170,10", "160,0,175,1", false, false, true},
                                         Pair{"170,-10,-170,10", "-175,0,175,1", false, false, true},
                                         Pair{"170,-10,-170,10", "0,0,1,1", false, false, false},
                                         Pair{"6,47,15,55", "170,0,-170,60", false, false, false},
                                         Pair{"6,47,15,55", "10,50,10,50", true, false, true}));

TEST(ABox, TakesItsShareOfTheEarth) {
    EXPECT_DOUBLE_EQ(shareOfTheEarth(readBox("-180,-90,180,90")), 1);
    EXPECT_DOUBLE_EQ(shareOfTheEarth(readBox("90,0,-90,90")), 0.25);
    EXPECT_EQ(shareOfTheEarth(readBox("9,50,9,51")), 0);
}

}  // namespace
}  // namespace crsctl
