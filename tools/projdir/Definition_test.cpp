#include "tools/projdir/Definition.h"

#include <locale>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/projdir/DirectoryFiles.h"
#include "tools/projdir/Geodesy.h"

namespace ProjDir {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

class DefinitionMakerTest : public testing::Test {
protected:
    static const RegistryCrs& find(unsigned int code) {
        static const ProjContext context;
        static const std::vector<RegistryCrs> registry = readRegistry(context);
        for (const RegistryCrs& crs : registry)
            if (crs.code == code) return crs;
        throw std::runtime_error("no CRS " + std::to_string(code));
    }

    static CrsOutcome make(unsigned int code, const DefinitionOptions& options = {}) {
        DefinitionMaker maker(options);
        return maker.make(find(code));
    }

    static std::string textOf(unsigned int code, const DefinitionOptions& options = {}) {
        const CrsOutcome outcome = make(code, options);
        return outcome.definition ? outcome.definition->text : "left out: " + outcome.omission;
    }
};

// Parameters as the EPSG dataset publishes them. PROJ uses these shifts of the datums.
TEST_F(DefinitionMakerTest, TakesThePublishedShiftThatPROJUses) {
    EXPECT_THAT(textOf(27700), HasSubstr("+ellps=airy +towgs84=446.448,-125.157,542.06,0.15,0.247,0.842,-20.489 "));
    EXPECT_THAT(textOf(31370),
                HasSubstr("+ellps=intl +towgs84=-106.8686,52.2978,-103.7239,0.3366,-0.457,1.8422,-1.2747 "));
    EXPECT_THAT(textOf(21781), HasSubstr("+ellps=bessel +towgs84=674.374,15.056,405.346,0,0,0,0 "));
    EXPECT_THAT(textOf(28992), HasSubstr("+towgs84=565.4171,50.3319,465.5524,"));
}

TEST_F(DefinitionMakerTest, WritesANullShiftWhereItIsPublished) {
    EXPECT_EQ(textOf(25832),
              "+proj=utm +zone=32 +ellps=GRS80 +towgs84=0,0,0,0,0,0,0 +datum_id=EPSG:6258 +units=m +no_defs");
    EXPECT_EQ(textOf(4936), "+proj=geocent +ellps=GRS80 +towgs84=0,0,0,0,0,0,0 +datum_id=EPSG:6258 +units=m +no_defs");
}

TEST_F(DefinitionMakerTest, WritesNoShiftWherePROJKnowsNone) {
    const CrsOutcome outcome = make(2334);  // Xian 1980
    EXPECT_EQ(outcome.definition->text,
              "+proj=tmerc +lat_0=0 +lon_0=117 +k=1 +x_0=20500000 +y_0=0 +ellps=IAU76 "
              "+datum_id=EPSG:6610 +units=m +no_defs");
    EXPECT_EQ(outcome.definition->shift.kind, ShiftKind::UNKNOWN);
    EXPECT_TRUE(outcome.definition->hasUnknownPart);
}

TEST_F(DefinitionMakerTest, WritesWgs84ByItsName) {
    EXPECT_EQ(textOf(4326), "+proj=longlat +datum=WGS84 +datum_id=EPSG:6326 +no_defs");
    EXPECT_EQ(textOf(4978), "+proj=geocent +datum=WGS84 +datum_id=EPSG:6326 +units=m +no_defs");
    EXPECT_EQ(textOf(3857), "+proj=webmerc +datum=WGS84 +datum_id=EPSG:6326 +units=m +no_defs");
    EXPECT_EQ(make(4326).definition->shift.kind, ShiftKind::WGS_84);
}

// For the waters and countries of the zone PROJ has several published shifts.
TEST_F(DefinitionMakerTest, FitsParametersOnlyWhenItMay) {
    const CrsOutcome published = make(23030);
    EXPECT_EQ(published.definition->shift.kind, ShiftKind::PUBLISHED);
    DefinitionOptions options;
    options.fit = true;
    const CrsOutcome fitted = make(23030, options);
    EXPECT_EQ(fitted.definition->shift.kind, ShiftKind::FITTED);
    EXPECT_LT(*fitted.largestDistance, *published.largestDistance);
    EXPECT_FALSE(fitted.definition->shift.accuracy);
}

TEST_F(DefinitionMakerTest, TakesTheGridWhenItMay) {
    EXPECT_EQ(textOf(31467, {true, false}),
              "+proj=tmerc +lat_0=0 +lon_0=9 +k=1 +x_0=3500000 +y_0=0 +ellps=bessel +nadgrids=de_adv_BETA2007.tif "
              "+datum_id=EPSG:6314 +units=m +no_defs");
    // Whether it is installed makes no difference.
    EXPECT_THAT(textOf(27700, {true, false}), HasSubstr("+nadgrids=uk_os_OSTN15_NTv2_OSGBtoETRS.tif "));
}

// Canada, Alaska and the other states of the USA have grids of their own.
TEST_F(DefinitionMakerTest, TakesNoGridThatDoesNotReachAllOverTheArea) {
    EXPECT_THAT(textOf(4267, {true, false}), HasSubstr("+towgs84="));
}

TEST_F(DefinitionMakerTest, StatesTheAccuracyOfTheShift) {
    const CrsOutcome published = make(27700);
    EXPECT_EQ(published.definition->shift.accuracy, 2);
    ASSERT_TRUE(published.largestDistance);
    EXPECT_LT(*published.largestDistance, 0.001);
    EXPECT_EQ(make(4805).definition->shift.accuracy, 1.5);  // of a longitude rotation, 0, and of EPSG:1618
    EXPECT_FALSE(make(2334).largestDistance);
    EXPECT_EQ(make(31467, {true, false}).definition->shift.accuracy, 1);
    EXPECT_FALSE(make(31467, {true, false}).largestDistance);
    EXPECT_EQ(make(4326).largestDistance, 0);
}

struct Described {
    unsigned int code;
    CrsKind kind;
    const char* unit;
    double unitLength;
    const char* datumId;
};

// Datums and units of the registry. Prime meridians do not count.
TEST_F(DefinitionMakerTest, DescribesTheCrs) {
    for (const Described& row : {Described{25832, CrsKind::PROJECTED, "metre", 1, "EPSG:6258"},
                                 Described{4275, CrsKind::GEOGRAPHIC, "degree", RADIANS_PER_DEGREE, "EPSG:6275"},
                                 Described{27572, CrsKind::PROJECTED, "metre", 1, "EPSG:6275"},
                                 Described{32040, CrsKind::PROJECTED, "US survey foot", 12 / 39.37, "EPSG:6267"},
                                 Described{4978, CrsKind::GEOCENTRIC, "metre", 1, "EPSG:6326"},
                                 Described{7405, CrsKind::COMPOUND, "metre", 1, "EPSG:6277"},
                                 // MGI (Ferro) is MGI. It is not MGI 1901.
                                 Described{4805, CrsKind::GEOGRAPHIC, "degree", RADIANS_PER_DEGREE, "EPSG:6312"}}) {
        const CrsOutcome outcome = make(row.code);
        EXPECT_EQ(outcome.crs.kind, row.kind) << row.code;
        EXPECT_EQ(outcome.unit, row.unit) << row.code;
        EXPECT_NEAR(outcome.unitLength, row.unitLength, 1e-12) << row.code;
        EXPECT_EQ(outcome.crs.datum.id, row.datumId) << row.code;
        EXPECT_NE(outcome.crs.areaName, "") << row.code;
        EXPECT_TRUE(outcome.replacedBy.empty()) << row.code;
    }
    EXPECT_EQ(make(2036).replacedBy, std::vector<unsigned int>{2953});
}

// Compounds of the registry with their horizontal parts.
TEST_F(DefinitionMakerTest, DefinesACompoundByItsHorizontalPart) {
    const std::pair<unsigned int, unsigned int> rows[] = {{7405, 27700}, {5555, 25832}, {7407, 32037}, {5628, 4619}};
    for (const auto& [compound, horizontal] : rows) {
        EXPECT_EQ(textOf(compound), textOf(horizontal)) << compound;
        EXPECT_EQ(make(compound).definition->isNorthFirst, make(horizontal).definition->isNorthFirst) << compound;
    }
    EXPECT_THAT(textOf(7400), StartsWith("left out: its horizontal part EPSG:4807 is left out: its angular unit"));
}

// Tokyo 1892 differs from Tokyo by a longitude rotation, which a geocentric shift cannot express.
TEST_F(DefinitionMakerTest, LeavesOutACrsWhoseShiftIsFarOffUnlessAllowed) {
    EXPECT_THAT(textOf(5132), AllOf(StartsWith("left out: its best shift (EPSG:"),
                                    HasSubstr("is farther than 100 m from PROJ's operations at 25 of 25 points")));
    DefinitionOptions options;
    options.worst = 1000;
    EXPECT_THAT(textOf(5132, options), HasSubstr("+towgs84="));
    options.worst = 5;
    EXPECT_THAT(textOf(4230, options), StartsWith("left out: its best shift"));
}

// Offsets of longitude and latitude by 568 m and 13 m, without a published equivalent.
TEST_F(DefinitionMakerTest, LeavesOutACrsThatNoShiftFits) {
    EXPECT_THAT(textOf(4600), StartsWith("left out: its best shift (none) is farther than 100 m"));
    DefinitionOptions options;
    options.fit = true;
    EXPECT_THAT(textOf(4600, options), HasSubstr("+towgs84="));
}

// PROJ uses another operation in a corner, which is not a sufficient reason.
TEST_F(DefinitionMakerTest, KeepsACrsOfWhichASmallPartIsFarOff) {
    const CrsOutcome outcome = make(6316);
    ASSERT_TRUE(outcome.definition) << outcome.omission;
    EXPECT_GT(outcome.definition->farPoints, 0U);
    EXPECT_GT(*outcome.largestDistance, 1000);
}

TEST_F(DefinitionMakerTest, KeepsTheMeridianAndTheUnits) {
    EXPECT_THAT(textOf(27572), HasSubstr("+towgs84=-168,-60,320,0,0,0,0 +datum_id=EPSG:6275 +pm=paris +units=m"));
    EXPECT_THAT(textOf(32040), HasSubstr("+units=us-ft"));
}

TEST_F(DefinitionMakerTest, KnowsTheAxisOrder) {
    EXPECT_TRUE(make(31467).definition->isNorthFirst);
    EXPECT_FALSE(make(25832).definition->isNorthFirst);
    EXPECT_FALSE(make(2053).definition->isNorthFirst);
}

TEST_F(DefinitionMakerTest, GivesTheReasonForAnOmission) {
    EXPECT_THAT(textOf(4807), StartsWith("left out: its angular unit is the grad"));
    EXPECT_EQ(textOf(5701), "left out: a vertical CRS has no classic definition");
    EXPECT_EQ(textOf(4296), "left out: it has no area of use");
}

TEST_F(DefinitionMakerTest, CountsTheOperationsOfTheArea) {
    const CrsOutcome outcome = make(5514);  // PROJ has one operation for Czechia, another for Slovakia
    ASSERT_GE(outcome.shares.size(), 2U);
    EXPECT_GE(outcome.shares[0].points, outcome.shares[1].points);
    std::size_t points = 0;
    for (const OperationShare& share : outcome.shares) points += share.points;
    EXPECT_EQ(points, 81U);
}

TEST_F(DefinitionMakerTest, LooksCloserWherePROJKnowsAnOperationInACornerOnly) {
    const CrsOutcome outcome = make(2164);  // Locodjo 1965, whose operation reaches over a part of Ivory Coast
    std::size_t points = 0;
    for (const OperationShare& share : outcome.shares) points += share.points;
    EXPECT_EQ(points, 625U);
    EXPECT_EQ(outcome.definition->shift.kind, ShiftKind::PUBLISHED);
    EXPECT_TRUE(outcome.definition->hasUnknownPart);
}

TEST_F(DefinitionMakerTest, MakesCheckPointsOnDemand) {
    EXPECT_TRUE(make(25832).checkPoints.empty());
    const CrsOutcome outcome = make(31467, {false, true});
    ASSERT_EQ(outcome.checkPoints.size(), 64U);
    EXPECT_GT(outcome.checkPoints.front().crs[0], 5e6);  // northing first
    EXPECT_TRUE(outcome.checkPoints.front().isKnown);
    EXPECT_LT(distanceInMetres(outcome.checkPoints.front().wgs84, {7.5, 47.27}), 1);
}

TEST_F(DefinitionMakerTest, DoesNotDependOnWhatItMadeBefore) {
    DefinitionMaker maker({});
    for (const unsigned int code : {4314U, 31466U, 31467U, 31468U})
        EXPECT_EQ(maker.make(find(code)).definition->text, textOf(code)) << code;
}

std::string makeFiles(unsigned int threads) {
    const ProjContext context;
    const auto list = selectListed(
        readRegistry(context), {{4326, ""}, {31466, ""}, {31467, ""}, {4314, ""}, {27700, ""}, {2334, ""}, {5701, ""}});
    const auto outcomes = makeAll(list, {}, threads, [] {});
    return writeInitFile(readRegistryVersion(context), outcomes) + writeAxisOrderFile(outcomes);
}

TEST(GenerationTest, DoesNotDependOnTheNumberOfThreads) {
    const std::string expected = makeFiles(1);
    EXPECT_EQ(makeFiles(2), expected);
    EXPECT_EQ(makeFiles(4), expected);
}

struct CommaAndGrouping : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(GenerationTest, DoesNotDependOnTheLocale) {
    const std::string expected = makeFiles(1);
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaAndGrouping));
    const std::string actual = makeFiles(1);
    std::locale::global(before);
    EXPECT_EQ(actual, expected);
}

TEST(GenerationTest, KeepsTheOrderOfTheList) {
    const ProjContext context;
    const auto list = selectListed(readRegistry(context), {{4258, ""}, {4326, ""}, {25832, ""}});
    const auto outcomes = makeAll(list, {}, 2, [] {});
    ASSERT_EQ(outcomes.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(outcomes[i].crs.code, list[i].code);
}

}  // namespace
}  // namespace ProjDir
