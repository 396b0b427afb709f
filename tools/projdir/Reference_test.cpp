#include "tools/projdir/Reference.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tools/projdir/Geodesy.h"
#include "tools/projdir/Registry.h"

namespace ProjDir {
namespace {

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

// By the areas and accuracies of the registry: the east of Germany has a shift of its own that is better; over the
// border of both the better one counts.
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
    for (const UsedOperation& operation : reference.operations())
        EXPECT_EQ(operation.text.find("grids"), std::string::npos) << operation.text;
}

// With all grids counted, whether or not they are installed.
TEST_F(ReferenceTest, ChoosesGridsThatAreNotThere) {
    const Reference reference = makeReference(4314, PROJ_GRID_AVAILABILITY_IGNORED);
    const auto chosen = reference.choose({9, 51}, reference.rank({5, 47, 15, 56}));
    EXPECT_EQ(reference.operations()[chosen].gridShift, "de_adv_BETA2007.tif");
    EXPECT_EQ(reference.operations()[chosen].accuracy, 1);
}

TEST_F(ReferenceTest, KnowsWherePROJKnowsNothing) {
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

// PROJ takes both datums for one, where it has no operation.
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

}  // namespace
}  // namespace ProjDir
