#include "tools/projdir/DirectoryText.h"

#include <gtest/gtest.h>

#include "tools/projdir/Line.h"

namespace ProjDir {
namespace {

CrsOutcome makeOutcome(unsigned int code, const char* name, const char* text, bool isNorthFirst) {
    CrsOutcome outcome;
    outcome.crs.code = code;
    outcome.crs.name = name;
    outcome.definition = ClassicDefinition{};
    outcome.definition->text = text;
    outcome.definition->isNorthFirst = isNorthFirst;
    outcome.definition->shift.kind = ShiftKind::PUBLISHED;
    outcome.definition->shift.source = "EPSG:1";
    return outcome;
}

std::vector<CrsOutcome> makeOutcomes() {
    std::vector<CrsOutcome> outcomes = {makeOutcome(10, "First", "+proj=longlat", true),
                                        makeOutcome(15, "Nothing", "", true),
                                        makeOutcome(20, "Second / Zone", "+proj=utm", false)};
    outcomes[1].definition.reset();
    return outcomes;
}

const RegistryVersion VERSION{"v1.2", "2022-08-31", "9.1.1"};

TEST(DirectoryTextTest, WritesEntriesUnderTheirNames) {
    EXPECT_EQ(writeInitFile(VERSION, makeOutcomes()),
              "# EPSG Geodetic Parameter Dataset v1.2 of 2022-08-31, from the database of PROJ 9.1.1\n"
              "# Unknown and default CRS\n"
              "<0> +proj=longlat +datum=WGS84 +no_defs <>\n"
              "# First; shift EPSG:1\n"
              "<10> +proj=longlat <>\n"
              "# Second / Zone; shift EPSG:1\n"
              "<20> +proj=utm <>\n");
}

TEST(DirectoryTextTest, NamesTheProgramThatMadeIt) {
    EXPECT_EQ(writeInitFile(VERSION, {}, "crs-projdir 1.0.0 --fit"),
              "# EPSG Geodetic Parameter Dataset v1.2 of 2022-08-31, from the database of PROJ 9.1.1\n"
              "# Made by crs-projdir 1.0.0 --fit\n"
              "# Unknown and default CRS\n"
              "<0> +proj=longlat +datum=WGS84 +no_defs <>\n");
}

constexpr char INFO_HEAD[] =
    "code,name,kind,area,west,south,east,north,unit,unit_length,datum,datum_id,shift_source,shift_accuracy,"
    "largest_distance,replaced_by\n";

TEST(DirectoryTextTest, WritesWhatIsKnownOfEachCrs) {
    std::vector<CrsOutcome> outcomes = makeOutcomes();
    outcomes[0].crs.area = Area{170, -5.25, -170, 10};
    outcomes[0].description = {CrsKind::GEOGRAPHIC,
                               "Here, \"there\"\nand\relsewhere",
                               "degree",
                               0.017453292519943295,
                               "Datum",
                               "EPSG:6258",
                               {5, 7}};
    outcomes[0].shiftAccuracy = 0.5;
    outcomes[0].largestDistance = 12.345;
    EXPECT_EQ(writeDescriptionFile(outcomes),
              std::string(INFO_HEAD) +
                  "10,First,geographic,\"Here, \"\"there\"\" and elsewhere\",170,-5.25,-170,10,degree,"
                  "0.017453292519943295,Datum,EPSG:6258,EPSG:1,0.5,12.35,5 7\n"
                  "20,Second / Zone,other,,,,,,,0,,,EPSG:1,,,\n");
}

TEST(DirectoryTextTest, NamesTheSourceOfEveryKindOfShift) {
    std::vector<CrsOutcome> outcomes = {makeOutcome(10, "Name", "text", true)};
    const std::pair<ShiftKind, const char*> rows[] = {{ShiftKind::PUBLISHED, ",a.tif,"},
                                                      {ShiftKind::FITTED, ",fitted,"},
                                                      {ShiftKind::GRID, ",grid a.tif,"},
                                                      {ShiftKind::UNKNOWN, ",0,,,,,,"},
                                                      {ShiftKind::WGS_84, ",0,,,,,,"}};
    outcomes[0].definition->shift.source = "a.tif";
    for (const auto& [kind, text] : rows) {
        outcomes[0].definition->shift.kind = kind;
        EXPECT_NE(writeDescriptionFile(outcomes).find(text), std::string::npos) << text;
    }
}

// What a registry holds that somebody has tampered with.
TEST(DirectoryTextTest, KeepsEveryNameInItsComment) {
    std::vector<CrsOutcome> outcomes = {
        makeOutcome(10, "A\n<666> +proj=merc <>\r<667>\v#\f\x1B[2J<B>", "+proj=longlat", true)};
    outcomes[0].definition->shift.source = "EPSG:1\n<668>";
    EXPECT_EQ(writeInitFile({"v1\n<669>", "2022-08-31", "9.1.1"}, outcomes),
              "# EPSG Geodetic Parameter Dataset v1 <669> of 2022-08-31, from the database of PROJ 9.1.1\n"
              "# Unknown and default CRS\n"
              "<0> +proj=longlat +datum=WGS84 +no_defs <>\n"
              "# A <666> +proj=merc <> <667> #  [2J<B>; shift EPSG:1 <668>\n"
              "<10> +proj=longlat <>\n");
    EXPECT_EQ(writeAxisOrderFile(outcomes), "0;en\n10;ne\n");
}

TEST(DirectoryTextTest, KnowsWhatEndsADefinition) {
    EXPECT_TRUE(isWholeDefinition("+proj=utm +zone=32 +nadgrids=a-b_c.gsb"));
    for (const char* text : {"+proj=utm <>", "<1>", "+proj=utm #", "+proj=utm\n", "+a=\t1"})
        EXPECT_FALSE(isWholeDefinition(text)) << text;
}

TEST(DirectoryTextTest, WritesALineForEveryEntry) {
    EXPECT_EQ(writeAxisOrderFile(makeOutcomes()), "0;en\n10;ne\n20;en\n");
}

TEST(DirectoryTextTest, SaysWhereNoShiftIsKnown) {
    std::vector<CrsOutcome> outcomes = {makeOutcome(10, "Name", "text", true)};
    const auto comment = [&] {
        const std::string text = writeInitFile(VERSION, outcomes);
        const std::size_t begin = text.find("# Name");
        return text.substr(begin, text.find('\n', begin) - begin);
    };
    outcomes[0].definition->farPoints = 3;
    EXPECT_EQ(comment(), "# Name; shift EPSG:1; far off at 3 points");
    outcomes[0].definition->farPoints = 0;
    outcomes[0].definition->hasUnknownPart = true;
    EXPECT_EQ(comment(), "# Name; shift EPSG:1; PROJ knows no shift in part of the area");
    outcomes[0].definition->shift.kind = ShiftKind::UNKNOWN;
    EXPECT_EQ(comment(), "# Name; PROJ knows no shift");
    outcomes[0].definition->shift.kind = ShiftKind::WGS_84;
    outcomes[0].definition->hasUnknownPart = false;
    EXPECT_EQ(comment(), "# Name");
}

}  // namespace
}  // namespace ProjDir
