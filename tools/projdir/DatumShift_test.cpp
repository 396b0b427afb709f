#include "tools/projdir/DatumShift.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "tools/projdir/Geodesy.h"
#include "tools/projdir/Registry.h"

namespace ProjDir {
namespace {

struct Text {
    const char* name;
    std::string operation;
    // The value of "+towgs84"; empty if there is none.
    std::string shift;
};

void PrintTo(const Text& row, std::ostream* stream) { *stream << row.name; }

class ReadShiftTest : public testing::TestWithParam<Text> {};

TEST_P(ReadShiftTest, ReadsTheDatumSteps) {
    const std::optional<Helmert> shift = readShift(GetParam().operation);
    EXPECT_EQ(shift ? writeHelmert(*shift) : "", GetParam().shift);
}

constexpr char FROM[] =
    "+proj=pipeline +step +proj=axisswap +order=2,1 +step +proj=unitconvert +xy_in=deg +xy_out=rad ";
constexpr char TO[] = " +step +inv +proj=cart +ellps=WGS84 +step +proj=pop +v_3 +step +proj=axisswap +order=2,1";

INSTANTIATE_TEST_SUITE_P(
    Operations, ReadShiftTest,
    testing::Values(
        Text{"Null", "+proj=noop", "0,0,0,0,0,0,0"},
        Text{"Translation", std::string(FROM) + "+step +proj=helmert +x=-87 +y=-98 +z=-121" + TO,
             "-87,-98,-121,0,0,0,0"},
        Text{"PositionVector",
             std::string(FROM) +
                 "+step +proj=helmert +x=1 +y=2 +z=3 +rx=0.4 +ry=0.5 +rz=-0.6 +s=7 "
                 "+convention=position_vector" +
                 TO,
             "1,2,3,0.4,0.5,-0.6,7"},
        Text{"CoordinateFrame",
             std::string(FROM) +
                 "+step +proj=helmert +x=1 +y=2 +z=3 +rx=0.4 +ry=0.5 +rz=-0.6 +s=7 "
                 "+convention=coordinate_frame" +
                 TO,
             "1,2,3,-0.4,-0.5,0.6,7"},
        Text{"TurnedRound", std::string(FROM) + "+step +inv +proj=helmert +x=1 +y=2 +z=3" + TO, "-1,-2,-3,0,0,0,0"},
        Text{"OverAnotherDatum",
             std::string(FROM) + "+step +proj=helmert +x=1 +y=2 +z=3 +step +proj=helmert +x=10" + TO, "11,2,3,0,0,0,0"},
        Text{"BehindAProjection",
             "+proj=pipeline +step +inv +proj=tmerc +x_0=500000 +ellps=intl +step +proj=helmert +x=5", "5,0,0,0,0,0,0"},
        Text{"RatesOfChange", std::string(FROM) + "+step +proj=helmert +x=1 +dx=0.1 +t_epoch=2010" + TO,
             "1,0,0,0,0,0,0"},
        Text{"Grid", std::string(FROM) + "+step +proj=hgridshift +grids=a.gsb", ""},
        Text{"GridAndTranslation", std::string(FROM) + "+step +proj=hgridshift +grids=a.gsb +step +proj=helmert +x=1",
             ""},
        Text{"GeographicOffset", std::string(FROM) + "+step +proj=geogoffset +dlat=-5.86 +dlon=0.28", ""}),
    [](const auto& row) { return std::string(row.param.name); });

// The worked example of IOGP Guidance Note 7-2, La Canoa to REGVEN, which gives centimetres.
TEST(ShiftCandidatesTest, MovesThePivotOfMolodenskyBadekas) {
    const std::optional<Helmert> shift = readShift(
        "+proj=molobadekas +convention=coordinate_frame +x=-270.933 +y=115.599 +z=-360.226 +rx=-5.266 +ry=-1.238 "
        "+rz=2.381 +s=-5.109 +px=2464351.59 +py=-5783466.61 +pz=974809.81");
    ASSERT_TRUE(shift);
    const Vector moved = shift->apply({2550408.96, -5749912.26, 1054891.11});
    EXPECT_NEAR(moved.x(), 2550138.45, 0.01);
    EXPECT_NEAR(moved.y(), -5749799.87, 0.01);
    EXPECT_NEAR(moved.z(), 1054530.82, 0.01);
}

// An operation without an area of use: its centre is on the equator and the meridian of Greenwich.
TEST(ShiftCandidatesTest, MovesTheCentreLikeAnExactRotation) {
    const ProjContext context;
    const std::string text = "+proj=helmert +exact +convention=position_vector +x=10 +y=20 +z=30 +rz=1000";
    const ProjPtr<PJ> operation(proj_create(context.get(), text.c_str()));
    const std::optional<Helmert> shift = findShift(context, operation.get(), text);
    ASSERT_TRUE(shift);
    const double angle = 1000 * RADIANS_PER_ARC_SECOND;
    const double radius = WGS_84_ELLIPSOID.semiMajor;
    const Vector moved = shift->apply({radius, 0, 0});
    EXPECT_NEAR(moved.x(), 10 + radius * std::cos(angle), 1e-4);
    EXPECT_NEAR(moved.y(), 20 + radius * std::sin(angle), 1e-4);
    EXPECT_NEAR(moved.z(), 30, 1e-6);
    EXPECT_EQ(shift->rotation.z(), 1000);
    const std::string smallAngles = "+proj=helmert +convention=position_vector +x=10 +y=20 +z=30 +rz=1000";
    EXPECT_EQ(writeHelmert(*findShift(context, operation.get(), smallAngles)), "10,20,30,0,0,1000,0");
    EXPECT_FALSE(findShift(context, operation.get(), "+proj=hgridshift +grids=a.gsb"));
}

TEST(ShiftCandidatesTest, KnowsASingleGridShift) {
    EXPECT_EQ(findGridShift("+proj=pipeline +step +inv +proj=utm +zone=32 +step +proj=hgridshift +grids=a.gsb"),
              "a.gsb");
    EXPECT_EQ(findGridShift("+proj=pipeline +step +inv +proj=hgridshift +grids=a.gsb"), "");
    EXPECT_EQ(findGridShift("+proj=pipeline +step +proj=hgridshift +grids=a.gsb +step +proj=helmert +x=1"), "");
    EXPECT_EQ(findGridShift("+proj=noop"), "");
}

std::vector<Operation> publishedFor(unsigned int code) {
    const ProjContext context;
    return findPublishedShifts(context, createCrs(context, code).get());
}

const Operation* findSource(const std::vector<Operation>& shifts, const std::string& source) {
    const auto found = std::find_if(shifts.begin(), shifts.end(), [&](const auto& s) { return s.source == source; });
    return found == shifts.end() ? nullptr : &*found;
}

// Parameters as the EPSG dataset publishes them.
TEST(ShiftCandidatesTest, FindsThePublishedShifts) {
    const auto shifts = publishedFor(4277);
    const Operation* const petroleum = findSource(shifts, "EPSG:1314");
    ASSERT_NE(petroleum, nullptr);
    EXPECT_EQ(writeHelmert(*petroleum->shift), "446.448,-125.157,542.06,0.15,0.247,0.842,-20.489");
    const Operation* const mean = findSource(shifts, "EPSG:1195");
    ASSERT_NE(mean, nullptr);
    EXPECT_EQ(writeHelmert(*mean->shift), "375,-111,431,0,0,0,0");
}

TEST(ShiftCandidatesTest, FindsShiftsOfRegionsAsWell) { EXPECT_GT(publishedFor(4230).size(), 20U); }

TEST(ShiftCandidatesTest, NamesEveryTransformationOfAConcatenatedOperation) {
    const auto shifts = publishedFor(4805);  // MGI (Ferro): a longitude rotation comes first
    EXPECT_NE(findSource(shifts, "EPSG:3895 + EPSG:1618"), nullptr);
}

TEST(ShiftCandidatesTest, TakesNoBallparkForPublished) { EXPECT_TRUE(publishedFor(4610).empty()); }  // Xian 1980

class ReferenceTest : public testing::Test {
protected:
    Reference makeReference(unsigned int code, PROJ_GRID_AVAILABILITY_USE availability =
                                                   PROJ_GRID_AVAILABILITY_DISCARD_OPERATION_IF_MISSING_GRID) const {
        return Reference(context, createCrs(context, code).get(), availability);
    }

    static std::optional<Reference::Move> move(const Reference& reference, const LonLat& place) {
        return reference.move(place, reference.rank({-180, -90, 180, 90}));
    }

    static std::string sourceAt(const Reference& reference, const LonLat& place) {
        const auto moved = move(reference, place);
        return moved ? reference.operations()[moved->operation].source : "none";
    }

    const ProjContext context{GridUse::NONE};
};

// By the areas and accuracies of the registry: the east of Germany has a better shift of its own, and on the common
// border the better one counts.
TEST_F(ReferenceTest, TakesTheOperationOfThePlace) {
    const Reference reference = makeReference(4314);
    EXPECT_EQ(sourceAt(reference, {7, 51}), "EPSG:1777");
    EXPECT_EQ(sourceAt(reference, {14, 52}), "EPSG:15869");
    EXPECT_EQ(sourceAt(reference, {12, 51}), "EPSG:15869");
}

TEST_F(ReferenceTest, MovesAsPROJItselfDoes) {
    const ProjPtr<PJ> best(proj_create_crs_to_crs(context.get(), "EPSG:4230", "EPSG:4326", nullptr));
    const Reference reference = makeReference(4230);
    for (const LonLat& place : {LonLat{-3, 40}, LonLat{9, 56}, LonLat{23, 38}, LonLat{10, 62}, LonLat{33, 39}}) {
        const PJ_COORD moved = proj_trans(best.get(), PJ_FWD, proj_coord(place.latitude, place.longitude, 0, HUGE_VAL));
        const auto found = move(reference, place);
        ASSERT_TRUE(found) << place.longitude;
        EXPECT_LT(distanceInMetres(found->wgs84, {moved.xy.y, moved.xy.x}), 1e-6) << place.longitude;
    }
}

TEST_F(ReferenceTest, UsesNoGrid) {
    const Reference reference = makeReference(4314);
    for (const Operation& operation : reference.operations()) EXPECT_EQ(operation.gridShift, "") << operation.source;
}

// Grids count whether or not they are installed.
TEST_F(ReferenceTest, ChoosesGridsThatAreNotThere) {
    const Reference reference = makeReference(4314, PROJ_GRID_AVAILABILITY_IGNORED);
    const auto chosen = reference.choose({9, 51}, reference.rank({5, 47, 15, 56}));
    EXPECT_EQ(reference.operations()[chosen].gridShift, "de_adv_BETA2007.tif");
    EXPECT_EQ(reference.operations()[chosen].accuracy, 1);
}

TEST_F(ReferenceTest, KnowsTheAreasWithoutAnOperation) {
    const Reference reference = makeReference(4277);
    EXPECT_FALSE(reference.operations()[move(reference, {-2, 52})->operation].isBallpark);
    EXPECT_TRUE(reference.operations()[move(reference, {-8.95, 60.99})->operation].isBallpark);
}

// Around the coast of Nigeria the registry has a shift for the whole country, and better ones for regions at sea. At
// sea PROJ takes the first of them, on land none of them, however accurate it is.
TEST_F(ReferenceTest, RanksOperationsByTheAreaOfTheCrs) {
    const Reference reference = makeReference(4263);
    const auto sourceFor = [&](const Area& area) {
        return reference.operations()[reference.choose({7, 3}, reference.rank(area))].source;
    };
    EXPECT_EQ(sourceFor({6, 2.61, 7.82, 3.68}), "EPSG:15706");
    EXPECT_EQ(sourceFor({2.66, 1.92, 14.65, 13.9}), "EPSG:1168");
    EXPECT_TRUE(reference.rank({100, 0, 110, 10}).empty());
}

TEST_F(ReferenceTest, CountsTheBorderAsInside) {
    const Reference reference = makeReference(4314);
    for (const LonLat& place : {LonLat{9, 47.27 - 1e-9}, LonLat{9, 55.09 + 1e-9}, LonLat{5.86 - 1e-9, 50}})
        EXPECT_EQ(sourceAt(reference, place), "EPSG:1777");
}

// Where PROJ has no operation, it takes both datums for the same.
TEST_F(ReferenceTest, KnowsNothingBeyondTheAreasOfItsOperations) {
    const Reference reference = makeReference(4314);
    const auto moved = move(reference, {2, 51});
    ASSERT_TRUE(moved);
    EXPECT_TRUE(reference.operations()[moved->operation].isBallpark);
    EXPECT_EQ(moved->wgs84.longitude, 2);
}

struct Form {
    unsigned int code;
    const char* what;
};

// The same place in axes of another order, unit, meridian or kind.
TEST_F(ReferenceTest, WritesPlacesAsTheCrsDoes) {
    for (const Form& form : {Form{4807, "grads east of Paris"}, Form{4275, "degrees"}}) {
        const auto moved = move(makeReference(form.code), {2.5, 48});
        ASSERT_TRUE(moved) << form.what;
        EXPECT_LT(distanceInMetres(moved->wgs84, move(makeReference(4275), {2.5, 48})->wgs84), 0.01) << form.what;
    }
    for (const unsigned int code : {4936U, 4937U, 4258U})
        EXPECT_LT(distanceInMetres(move(makeReference(code), {9, 50})->wgs84, {9, 50}), 1e-6) << code;
}

TEST(BestOperationTest, KeepsTheOrderOfTheRegistry) {
    ProjContext context;
    BestOperation northFirst(context, 4258);
    const auto points = northFirst.sample({{9, 50}});
    ASSERT_EQ(points.size(), 1U);
    EXPECT_NEAR(points.front().crs[0], 50, 1e-9);
    EXPECT_NEAR(points.front().crs[1], 9, 1e-9);
    EXPECT_NEAR(points.front().wgs84.longitude, 9, 1e-9);
    EXPECT_NEAR(points.front().wgs84.latitude, 50, 1e-9);
}

TEST(BestOperationTest, ReturnsToThePlaceItCameFrom) {
    ProjContext context;
    BestOperation best(context, 27700);
    for (const ReferencePoint& point : best.sample({{-2, 52}, {-4, 57}}))
        EXPECT_LT(distanceInMetres(point.wgs84, point.crs[0] > 300000 ? LonLat{-2, 52} : LonLat{-4, 57}), 0.001);
}

TEST(BestOperationTest, NamesTheOperationOfEachPoint) {
    ProjContext context;
    BestOperation best(context, 27700);
    const auto points = best.sample({{-2, 52}, {-8.95, 60.99}}, true);
    ASSERT_EQ(points.size(), 2U);
    const Operation& inside = best.used()[points[0].operation];
    EXPECT_EQ(inside.source, "EPSG:1314");
    EXPECT_FALSE(inside.isBallpark);
    EXPECT_TRUE(inside.gridShift.empty());
    // The registry's operation ends short of the corner of the area.
    EXPECT_TRUE(best.used()[points[1].operation].isBallpark);
}

TEST(BestOperationTest, NamesTheInstalledFileOfAGrid) {
    ProjContext context;
    BestOperation best(context, 31467);
    const auto points = best.sample({{9, 51}}, true);
    ASSERT_EQ(points.size(), 1U);
    EXPECT_EQ(best.used()[points[0].operation].gridShift, "BETA2007.gsb");
}

TEST(BestOperationTest, ReportsTheAbsenceOfAnOperation) {
    ProjContext context;
    BestOperation best(context, 4610);  // Xian 1980
    const auto points = best.sample({{110, 30}}, true);
    ASSERT_EQ(points.size(), 1U);
    EXPECT_TRUE(best.used()[points[0].operation].isBallpark);
}

TEST(BestOperationTest, HasNoPointsWithoutAnOperation) {
    ProjContext context;
    BestOperation best(context, 999999);
    EXPECT_TRUE(best.sample({{9, 50}}).empty());
    EXPECT_TRUE(best.sample({{9, 50}}, true).empty());
}

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

ShiftEvidence makeEvidence(const Helmert& truth) { return {makeSamples(REGION, truth), true, {}, nullptr, false}; }

ShiftEvidence makeEvidenceToFit(const Helmert& truth) {
    ShiftEvidence evidence = makeEvidence(truth);
    evidence.mayFit = true;
    return evidence;
}

Operation published(const std::string& source, const Helmert& shift, std::optional<double> accuracy = {}) {
    return {source, false, "", accuracy, shift};
}

std::vector<Operation> publishNothing() { return {}; }

TEST(ShiftChoiceTest, ChoosesNoShiftWherePROJKnowsNone) {
    const ShiftChoice choice = chooseShift({}, publishNothing);
    EXPECT_EQ(choice.kind, ShiftKind::UNKNOWN);
    EXPECT_EQ(writeDatumShift(choice), "");
    EXPECT_EQ(describeShift(choice), "PROJ knows no shift");
}

TEST(ShiftChoiceTest, PrefersPROJsShiftWithoutListingTheRegistry) {
    ShiftEvidence evidence = makeEvidence(RIGHT);
    evidence.used = {published("EPSG:2", RIGHT)};
    const ShiftChoice choice = chooseShift(evidence, []() -> std::vector<Operation> {
        ADD_FAILURE() << "asked";
        return {};
    });
    EXPECT_EQ(choice.kind, ShiftKind::PUBLISHED);
    EXPECT_EQ(writeDatumShift(choice), "+towgs84=100,50,-20,0.5,-0.3,0.8,3");
    EXPECT_EQ(describeShift(choice), "shift EPSG:2");
}

TEST(ShiftChoiceTest, TakesThePublishedShiftThatAgreesBest) {
    const ShiftChoice choice = chooseShift(makeEvidence(RIGHT), [] {
        return std::vector<Operation>{published("EPSG:1", movedNorth(RIGHT, 0.9)),
                                      published("EPSG:2", movedNorth(RIGHT, 0.3)),
                                      published("EPSG:3", movedNorth(RIGHT, 5))};
    });
    EXPECT_EQ(choice.source, "EPSG:2");
    EXPECT_NEAR(choice.residual.largest, 0.3, 0.05);
    EXPECT_EQ(describeShift(choice), "shift EPSG:2");
}

TEST(ShiftChoiceTest, FitsWhereNoPublishedShiftIsWithinAMetre) {
    const ShiftChoice choice = chooseShift(
        makeEvidenceToFit(RIGHT), [] { return std::vector<Operation>{published("EPSG:1", movedNorth(RIGHT, 1.5))}; });
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

// At one point out of 81 PROJ uses an operation that is 200 m away. No shift can follow it, so the shift that is right
// everywhere else is better than a compromise.
TEST(ShiftChoiceTest, KeepsAPublishedShiftInSpiteOfAStrayPoint) {
    ShiftEvidence evidence = makeEvidenceToFit(TRANSLATION);
    evidence.samples.front() = makeSample({5, 47}, movedNorth(TRANSLATION, 200));
    evidence.used = {published("EPSG:1", TRANSLATION)};
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
    evidence.used = {published("EPSG:1", TRANSLATION)};
    const ShiftChoice choice = chooseShift(evidence, publishNothing);
    EXPECT_EQ(choice.kind, ShiftKind::FITTED);
    EXPECT_LT(choice.residual.largest, 5);
}

TEST(ShiftChoiceTest, TakesAGridRatherThanAFitWhenThereIsOne) {
    ShiftEvidence evidence = makeEvidence(RIGHT);
    const Operation grid{"EPSG:3", false, "a.gsb"};
    evidence.grid = &grid;
    const ShiftChoice choice = chooseShift(evidence, publishNothing);
    EXPECT_EQ(choice.kind, ShiftKind::GRID);
    EXPECT_EQ(writeDatumShift(choice), "+nadgrids=a.gsb");
    EXPECT_EQ(describeShift(choice), "shift by grid a.gsb");
}

TEST(ShiftChoiceTest, TakesAGridRatherThanAPublishedShift) {
    ShiftEvidence evidence = makeEvidence(RIGHT);
    const Operation grid{"EPSG:3", false, "a.gsb", 0.1};
    evidence.grid = &grid;
    evidence.used = {published("EPSG:1", RIGHT)};
    const ShiftChoice choice = chooseShift(evidence, publishNothing);
    EXPECT_EQ(choice.kind, ShiftKind::GRID);
    EXPECT_EQ(choice.accuracy, 0.1);
}

TEST(ShiftChoiceTest, FitsNothingUnlessAsked) {
    const ShiftChoice choice = chooseShift(
        makeEvidence(RIGHT), [] { return std::vector<Operation>{published("EPSG:1", movedNorth(RIGHT, 50), 7)}; });
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

// Seven parameters can follow it, but they are not plausible between two datums.
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
