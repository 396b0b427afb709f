#include "tools/projdir/Report.h"

#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ProjDir {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr char TRANSLATION[] = "+proj=helmert +x=1";
constexpr char OFFSET[] = "+proj=geogoffset +dlat=1";

OperationShare makeShare(const char* source, std::size_t points, const char* text = TRANSLATION, const char* grid = "",
                         bool isBallpark = false) {
    return {{source, text, isBallpark, grid}, points};
}

CrsOutcome makeOutcome(unsigned int code, const std::string& name, std::vector<OperationShare> shares) {
    CrsOutcome outcome;
    outcome.crs.code = code;
    outcome.crs.name = name;
    outcome.definition = ClassicDefinition{};
    outcome.shares = std::move(shares);
    return outcome;
}

std::string explanationFor(const std::vector<OperationShare>& shares, const std::string& failure = "") {
    const CrsOutcome outcome = makeOutcome(1, "Name", shares);
    return explain({&outcome, 20, 20, failure});
}

TEST(ReportTest, ExplainsWhatNoShiftCanFollow) {
    EXPECT_EQ(
        explanationFor({makeShare("EPSG:1", 50), makeShare("EPSG:2", 30), makeShare("EPSG:3", 1)}),
        "PROJ changes between 3 operations in the area: EPSG:1 (50 points), EPSG:2 (30 points), EPSG:3 (1 point); "
        "only a definition of its own for each region would follow them");
    EXPECT_EQ(explanationFor({makeShare("EPSG:1", 81, "+proj=hgridshift", "a.gsb")}),
              "PROJ uses the grid a.gsb (EPSG:1), which no parameters follow more closely; --grids brings it in");
    EXPECT_EQ(explanationFor({makeShare("EPSG:1", 81, OFFSET)}),
              "PROJ uses EPSG:1, which is no shift of geocentric coordinates; the definition language has no other");
    EXPECT_THAT(explanationFor({makeShare("EPSG:1", 50, "+proj=hgridshift", "a.gsb"), makeShare("EPSG:2", 31)}),
                HasSubstr("the grid does not reach all over it"));
    EXPECT_EQ(explanationFor({makeShare("EPSG:1", 1)}, "bad"), "the library refuses it: bad");
}

TEST(ReportTest, LeavesOutWhatPROJDoesNotKnow) {
    EXPECT_EQ(explanationFor({makeShare("none", 60, "+proj=noop", "", true), makeShare("EPSG:2", 21)}),
              "PROJ uses EPSG:2");
    EXPECT_EQ(explanationFor({makeShare("none", 81, "+proj=noop", "", true)}), "PROJ knows no operation");
}

TEST(ReportTest, ShowsFourOperationsAtMost) {
    std::vector<OperationShare> shares;
    for (const char* source : {"EPSG:1", "EPSG:2", "EPSG:3", "EPSG:4", "EPSG:5"})
        shares.push_back(makeShare(source, 9));
    EXPECT_THAT(explanationFor(shares), HasSubstr("between 5 operations"));
    EXPECT_THAT(explanationFor(shares), HasSubstr("EPSG:4 (9 points), ..."));
    EXPECT_THAT(explanationFor(shares), Not(HasSubstr("EPSG:5")));
}

TEST(ReportTest, CountsDistancesByClass) {
    const double nowhere = std::numeric_limits<double>::infinity();
    EXPECT_EQ(countByClass({0, 0.01, 0.02, 1, 1.5, 2, 5, 9.9, 10, 10.1, nowhere}), (Distribution{2, 2, 2, 1, 2, 2}));
    EXPECT_EQ(countByClass({}), Distribution{});
}

TEST(ReportTest, CountsDefinitionsByTheirShift) {
    std::vector<CrsOutcome> outcomes = {makeOutcome(1, "A", {}), makeOutcome(2, "B", {}), makeOutcome(3, "C", {})};
    outcomes[0].definition->shift.kind = ShiftKind::FITTED;
    outcomes[1].definition->shift.kind = ShiftKind::FITTED;
    outcomes[2].definition.reset();
    const std::string summary = writeSummary(outcomes);
    EXPECT_THAT(summary, HasSubstr("     2 definitions\n"));
    EXPECT_THAT(summary, HasSubstr("     2 with a fitted shift\n"));
    EXPECT_THAT(summary, HasSubstr("     0 with a grid\n"));
    EXPECT_THAT(summary, HasSubstr("     1 CRS left out\n"));
}

TEST(ReportTest, StatesTheDistributionAndTheWorst) {
    const CrsOutcome good = makeOutcome(1, "Good", {makeShare("EPSG:1", 81)});
    const CrsOutcome bad = makeOutcome(2, "Bad", {makeShare("EPSG:1", 81, OFFSET)});
    const std::string text = writeAgreement({{&good, 0.5, 70, ""}, {&bad, 12.3456, 12.3456, ""}});
    EXPECT_THAT(text, HasSubstr("  within 1 cm        0   0.00 %\n  within 1 m         1  50.00 %\n"));
    EXPECT_THAT(text, HasSubstr("  beyond 10 m        1  50.00 %\nAnywhere"));
    EXPECT_THAT(text, HasSubstr("  beyond 10 m        2 100.00 %\nThe worst"));
    EXPECT_LT(text.find("12.346 m  EPSG:2 Bad"), text.find("0.500 m  EPSG:1 Good"));
}

Verification withConversion(const CrsOutcome& source, const CrsOutcome& target, double distance,
                            const std::string& failure = "", double inverse = 0) {
    return {{}, {{{&source, &target, {distance, failure}, inverse}}, {}}};
}

TEST(ReportTest, NamesConversionsWithinADatumThatAreNotExact) {
    const CrsOutcome source = makeOutcome(1, "One", {});
    const CrsOutcome target = makeOutcome(2, "Two", {});
    EXPECT_THAT(writeVerification(withConversion(source, target, 0.001)),
                AllOf(HasSubstr("     1 conversions\n     1 within 1 mm\nRound"), Not(HasSubstr("EPSG:"))));
    EXPECT_THAT(writeVerification(withConversion(source, target, 0.0011)),
                HasSubstr("     0 within 1 mm\n         0.001 m  EPSG:1 One to EPSG:2 Two\n"));
    EXPECT_THAT(writeVerification(withConversion(source, target, std::numeric_limits<double>::infinity(), "bad")),
                HasSubstr("  no coordinates  EPSG:1 One to EPSG:2 Two: bad\n"));
    EXPECT_THAT(writeVerification(withConversion(source, target, 0.02, "", 0.02)),
                HasSubstr("0.020 m  EPSG:1 One to EPSG:2 Two (PROJ's own inverse is no better)\n"));
}

TEST(ReportTest, NamesRoundTripsThatAreNotExact) {
    const CrsOutcome outcome = makeOutcome(1, "One", {});
    const std::string text = writeVerification({{}, {{}, {{&outcome, Measurement{0.0004, ""}, {0.002, ""}, 0}}}});
    EXPECT_THAT(text, HasSubstr("of the datum and back: 1, largest distance 0.400 mm\n"));
    EXPECT_THAT(text, HasSubstr("to be small: 1, largest distance 2.000 mm\n"));
    EXPECT_THAT(text, EndsWith("  0.002 m  EPSG:1 One to WGS 84 and back\n"));
    EXPECT_THAT(writeVerification({{}, {{}, {{&outcome, Measurement{0.002, ""}, {0, ""}, 0}}}}),
                EndsWith("  0.002 m  EPSG:1 One to its datum and back\n"));
}

TEST(ReportTest, CountsDistancesFromWhatNeedsNoGrid) {
    std::vector<CrsOutcome> outcomes(4, makeOutcome(1, "One", {}));
    outcomes[0].largestDistance = 1.5;
    outcomes[1].largestDistance = 0;
    outcomes[2].definition.reset();
    outcomes[2].largestDistance = 11;
    const std::string text = writeDistances(outcomes);
    EXPECT_THAT(text, HasSubstr("  within 1 m         1  50.00 %\n  within 2 m         2 100.00 %\n"));
    EXPECT_THAT(text, HasSubstr("  beyond 10 m        0   0.00 %\n     1 where PROJ knows none, or with a grid\n"));
}

TEST(ReportTest, CountsShiftsByTheAccuracyThatTheRegistryStates) {
    std::vector<CrsOutcome> outcomes(4, makeOutcome(1, "One", {}));
    for (std::size_t i = 0; i < 3; ++i) outcomes[i].definition->shift.kind = ShiftKind::PUBLISHED;
    outcomes[0].shiftAccuracy = 1;
    outcomes[1].shiftAccuracy = 44;
    const std::string text = writeAccuracies(outcomes);
    EXPECT_THAT(text, HasSubstr("  within 1 m         1  50.00 %\n"));
    EXPECT_THAT(text, HasSubstr("  beyond 10 m        1  50.00 %\n     1 without a statement\n"));
}

TEST(ReportTest, ListsTwentyOfTheWorst) {
    const CrsOutcome outcome = makeOutcome(1, "Name", {});
    const std::string text = writeAgreement(std::vector<Agreement>(30, Agreement{&outcome, 3, 3, ""}));
    std::size_t lines = 0;
    for (std::size_t at = text.find("EPSG:1"); at != std::string::npos; at = text.find("EPSG:1", at + 1)) ++lines;
    EXPECT_EQ(lines, 20U);
}

TEST(ReportTest, ListsEveryCodeBeyondTenMetresAndEveryOneLeftOut) {
    std::vector<CrsOutcome> outcomes = {makeOutcome(1, "Far", {makeShare("EPSG:9", 81, OFFSET)}),
                                        makeOutcome(2, "Partly", {makeShare("EPSG:9", 81)}),
                                        makeOutcome(3, "Gone", {})};
    outcomes[2].definition.reset();
    outcomes[2].omission = "no reason";
    const std::string text = writeReport({"v1", "2022-08-31", "9.1.1"}, outcomes,
                                         {{{outcomes.data(), 11, 11, ""}, {&outcomes[1], 1, 99, ""}}, {}});
    EXPECT_THAT(text, HasSubstr("v1 of 2022-08-31"));
    EXPECT_THAT(text,
                HasSubstr("\nBeyond ten metres\n\n        11.000 m  EPSG:1 Far: PROJ uses EPSG:9, which is no shift"));
    EXPECT_THAT(text, HasSubstr("knows no operation\n\n        99.000 m  EPSG:2 Partly\n"));
    EXPECT_THAT(text, HasSubstr("\nLeft out\n\n  EPSG:3 Gone: no reason\n"));
}

TEST(ReportTest, HasALineForEachCrsWhateverItsNameHolds) {
    std::vector<CrsOutcome> outcomes = {makeOutcome(1, "Far\naway", {makeShare("EPSG:9\n", 81, OFFSET)}),
                                        makeOutcome(2, "Partly\rfar", {makeShare("EPSG:9", 81)}),
                                        makeOutcome(3, "Gone\n  EPSG:4 Made up", {})};
    outcomes[2].definition.reset();
    outcomes[2].omission = "no\nreason";
    const std::string text =
        writeReport({"v1\n", "2022-08-31", "9.1.1"}, outcomes,
                    {{{outcomes.data(), 11, 11, ""}, {&outcomes[1], 1, 99, "refused\nagain"}}, {}});
    EXPECT_THAT(text, HasSubstr("        11.000 m  EPSG:1 Far away: PROJ uses EPSG:9 , which is no shift"));
    EXPECT_THAT(text, HasSubstr("        99.000 m  EPSG:2 Partly far\n"));
    EXPECT_THAT(text, HasSubstr(": refused again\n"));
    EXPECT_THAT(text, HasSubstr("\n  EPSG:3 Gone   EPSG:4 Made up: no reason\n"));
    EXPECT_THAT(text, HasSubstr("Dataset v1  of 2022-08-31"));
}

TEST(ReportTest, SaysSoWhereThereIsNothingToList) {
    const std::string text = writeReport({}, {makeOutcome(1, "Good", {})}, {});
    EXPECT_THAT(text, HasSubstr("\nLeft out\n\n  none\n"));
    EXPECT_THAT(text, Not(HasSubstr("Beyond")));
}

}  // namespace
}  // namespace ProjDir
