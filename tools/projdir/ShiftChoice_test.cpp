#include "tools/projdir/ShiftChoice.h"

#include <gtest/gtest.h>

namespace ProjDir {
namespace {

const Area REGION{5, 47, 15, 55};
const Helmert RIGHT{{100, 50, -20}, {0.5, -0.3, 0.8}, 3};
const Helmert TRANSLATION{{100, 50, -20}, Vector::Zero(), 0};

Helmert movedNorth(const Helmert& helmert, double metres) {
    return compose(helmert, {{-0.7 * metres, 0, 0.7 * metres}, Vector::Zero(), 0});
}

ShiftSample makeSample(const LonLat& place, const Helmert& shift) {
    const Vector source = toGeocentric(WGS_84_ELLIPSOID, place);
    return {source, shift.apply(source), localFrameAt(place)};
}

std::vector<ShiftSample> makeSamples(const Area& area, const Helmert& shift) {
    std::vector<ShiftSample> samples;
    for (const LonLat& place : sampleArea(area, 9)) samples.push_back(makeSample(place, shift));
    return samples;
}

ShiftEvidence makeEvidence(const Helmert& truth) { return {makeSamples(REGION, truth), true, {}, "", {}, false}; }

ShiftEvidence makeEvidenceToFit(const Helmert& truth) {
    ShiftEvidence evidence = makeEvidence(truth);
    evidence.mayFit = true;
    return evidence;
}

std::vector<PublishedShift> publishNothing() { return {}; }

TEST(ShiftChoiceTest, ChoosesNothingWherePROJKnowsNothing) {
    const ShiftChoice choice = chooseShift({}, publishNothing);
    EXPECT_EQ(choice.kind, ShiftKind::UNKNOWN);
    EXPECT_EQ(writeDatumShift(choice), "");
    EXPECT_EQ(describeShift(choice), "PROJ knows no shift");
}

TEST(ShiftChoiceTest, TakesWhatPROJUsesWithoutAskingTheRegistry) {
    ShiftEvidence evidence = makeEvidence(RIGHT);
    evidence.used = {{"EPSG:2", RIGHT}};
    const ShiftChoice choice = chooseShift(evidence, []() -> std::vector<PublishedShift> {
        ADD_FAILURE() << "asked";
        return {};
    });
    EXPECT_EQ(choice.kind, ShiftKind::PUBLISHED);
    EXPECT_EQ(writeDatumShift(choice), "+towgs84=100,50,-20,0.5,-0.3,0.8,3");
    EXPECT_EQ(describeShift(choice), "shift EPSG:2");
}

TEST(ShiftChoiceTest, TakesThePublishedShiftThatAgreesBest) {
    const ShiftChoice choice = chooseShift(makeEvidence(RIGHT), [] {
        return std::vector<PublishedShift>{
            {"EPSG:1", movedNorth(RIGHT, 0.9)}, {"EPSG:2", movedNorth(RIGHT, 0.3)}, {"EPSG:3", movedNorth(RIGHT, 5)}};
    });
    EXPECT_EQ(choice.source, "EPSG:2");
    EXPECT_NEAR(choice.residual.largest, 0.3, 0.05);
    EXPECT_EQ(describeShift(choice), "shift EPSG:2");
}

TEST(ShiftChoiceTest, FitsWhereNoPublishedShiftIsWithinAMetre) {
    const ShiftChoice choice = chooseShift(makeEvidenceToFit(RIGHT), [] {
        return std::vector<PublishedShift>{{"EPSG:1", movedNorth(RIGHT, 1.5)}};
    });
    EXPECT_EQ(choice.kind, ShiftKind::FITTED);
    EXPECT_LT(choice.residual.largest, 0.1);
}

TEST(ShiftChoiceTest, FitsThreeParametersWhereTheyDo) {
    const ShiftChoice choice = chooseShift(makeEvidenceToFit(TRANSLATION), publishNothing);
    EXPECT_EQ(choice.fitted, FitParameters::TRANSLATION);
    EXPECT_LT(choice.residual.largest, 0.02);
    EXPECT_EQ(describeShift(choice).find("shift fitted, 3 parameters, residual 0.0"), 0U);
}

TEST(ShiftChoiceTest, FitsSevenParametersWhereTheyPay) {
    const ShiftChoice choice = chooseShift(makeEvidenceToFit(RIGHT), publishNothing);
    EXPECT_EQ(choice.fitted, FitParameters::ALL_SEVEN);
    EXPECT_EQ(describeShift(choice).find("shift fitted, 7 parameters, residual 0.0"), 0U);
}

TEST(ShiftChoiceTest, NeverFitsSevenParametersToACorner) {
    ShiftEvidence evidence = makeEvidenceToFit(RIGHT);
    evidence.coversHalf = false;
    EXPECT_EQ(chooseShift(evidence, publishNothing).fitted, FitParameters::TRANSLATION);
}

// In one point out of 81 PROJ uses something that is 200 m away. No shift can follow, so the one that is right
// everywhere else must not give way to a compromise.
TEST(ShiftChoiceTest, KeepsAPublishedShiftInSpiteOfAStrayPoint) {
    ShiftEvidence evidence = makeEvidenceToFit(TRANSLATION);
    evidence.samples.front() = makeSample({5, 47}, movedNorth(TRANSLATION, 200));
    evidence.used = {{"EPSG:1", TRANSLATION}};
    const ShiftChoice choice = chooseShift(evidence, publishNothing);
    EXPECT_EQ(choice.kind, ShiftKind::PUBLISHED);
    EXPECT_NEAR(choice.residual.largest, 200, 3);
    EXPECT_NEAR(choice.residual.rootMeanSquare, choice.residual.largest / 9, 1e-9);
    EXPECT_EQ(describeShift(choice).find("shift EPSG:1, residual 2"), 0U);
}

// Half the area uses a shift 6 m away from that of the other half: the mean of both is within 5 m everywhere.
TEST(ShiftChoiceTest, PrefersAFitThatIsInABetterClass) {
    ShiftEvidence evidence = makeEvidenceToFit(TRANSLATION);
    for (std::size_t i = 0; i < evidence.samples.size(); i += 2)
        evidence.samples[i].target = evidence.samples[i].target + 6.0 * evidence.samples[i].frame.north;
    evidence.used = {{"EPSG:1", TRANSLATION}};
    const ShiftChoice choice = chooseShift(evidence, publishNothing);
    EXPECT_EQ(choice.kind, ShiftKind::FITTED);
    EXPECT_LT(choice.residual.largest, 5);
}

TEST(ShiftChoiceTest, TakesAGridRatherThanAFitWhenThereIsOne) {
    ShiftEvidence evidence = makeEvidence(RIGHT);
    evidence.grid = "a.gsb";
    const ShiftChoice choice = chooseShift(evidence, publishNothing);
    EXPECT_EQ(choice.kind, ShiftKind::GRID);
    EXPECT_EQ(writeDatumShift(choice), "+nadgrids=a.gsb");
    EXPECT_EQ(describeShift(choice), "shift by grid a.gsb");
}

TEST(ShiftChoiceTest, TakesAGridRatherThanAPublishedShift) {
    ShiftEvidence evidence = makeEvidence(RIGHT);
    evidence.grid = "a.gsb";
    evidence.gridAccuracy = 0.1;
    evidence.used = {{"EPSG:1", RIGHT}};
    const ShiftChoice choice = chooseShift(evidence, publishNothing);
    EXPECT_EQ(choice.kind, ShiftKind::GRID);
    EXPECT_EQ(choice.accuracy, 0.1);
}

TEST(ShiftChoiceTest, FitsNothingUnlessAsked) {
    const ShiftChoice choice = chooseShift(makeEvidence(RIGHT), [] {
        return std::vector<PublishedShift>{{"EPSG:1", movedNorth(RIGHT, 50), 7}};
    });
    EXPECT_EQ(choice.kind, ShiftKind::PUBLISHED);
    EXPECT_EQ(choice.accuracy, 7);
    EXPECT_NEAR(choice.residual.largest, 50, 1);
    EXPECT_EQ(chooseShift(makeEvidence(RIGHT), publishNothing).kind, ShiftKind::UNKNOWN);
}

struct Sanity {
    const char* name;
    Helmert helmert;
    bool isSane;
};

class ShiftSanityTest : public testing::TestWithParam<Sanity> {};

TEST_P(ShiftSanityTest, BoundsEveryParameter) { EXPECT_EQ(isSane(GetParam().helmert), GetParam().isSane); }

INSTANTIATE_TEST_SUITE_P(Shifts, ShiftSanityTest,
                         testing::Values(Sanity{"Null", {}, true},
                                         Sanity{"Bounds", {{1000, -1000, 1000}, {-15, 15, 15}, -25}, true},
                                         Sanity{"Translation", {{0, -1000.1, 0}, Vector::Zero(), 0}, false},
                                         Sanity{"Rotation", {Vector::Zero(), {0, 0, 15.1}, 0}, false},
                                         Sanity{"Scale", {Vector::Zero(), Vector::Zero(), 25.1}, false}),
                         [](const auto& row) { return std::string(row.param.name); });

// Seven parameters follow it, but not as a shift between two datums does.
TEST(ShiftChoiceTest, FitsThreeParametersWhereSevenWouldBeNoShift) {
    const Helmert wild{{100, 50, -20}, {60, -40, 80}, 3};
    const ShiftChoice choice = chooseShift(makeEvidenceToFit(wild), publishNothing);
    EXPECT_NE(choice.fitted, FitParameters::ALL_SEVEN);
}

TEST(ShiftChoiceTest, WritesWgs84ByItsName) {
    ShiftChoice choice;
    choice.kind = ShiftKind::WGS_84;
    EXPECT_EQ(writeDatumShift(choice), "+datum=WGS84");
    EXPECT_EQ(describeShift(choice), "");
}

}  // namespace
}  // namespace ProjDir
