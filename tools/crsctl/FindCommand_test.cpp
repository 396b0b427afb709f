#include "tools/crsctl/FindCommand.h"

#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/TemporaryFile.h"
#include "tools/crsctl/Session.h"

namespace crsctl {
namespace {

TEST(ABox, IsReadFromFourNumbers) {
    for (const char* text : {"6,47,15,55", "-180,-90,180,90", "176.81,-20.81,-178.15,-12.42", "-0.5,0,0,0"})
        EXPECT_EQ(boxText(readBox(text)), text);
    EXPECT_EQ(boxText(readBox("+6,4.70e1,15.,.5e2")), "6,47,15,50");
}

TEST(ABox, IsRefusedUnlessItIsOnEarth) {
    for (const char* text : {"", "6", "6,47,15", "6,47,15,55,", "6,47,15,55,1", "6 47 15 55", "6, 47,15,55",
                             "6,47,x,55", "181,0,0,0", "0,-91,0,0", "0,0,0,nan", "0,0,1e999,0", "6,55,15,47"})
        EXPECT_THROW(readBox(text), SetUpError) << text;
}

struct Pair {
    const char* left;
    const char* right;
    bool leftCovers;
    bool rightCovers;
    bool intersect;
};

void PrintTo(const Pair& pair, std::ostream* stream) { *stream << pair.left << " and " << pair.right; }

class Boxes : public testing::TestWithParam<Pair> {};

TEST_P(Boxes, CoverAndIntersect) {
    const GeographicBox left = readBox(GetParam().left);
    const GeographicBox right = readBox(GetParam().right);
    EXPECT_EQ(covers(left, right), GetParam().leftCovers);
    EXPECT_EQ(covers(right, left), GetParam().rightCovers);
    EXPECT_EQ(intersects(left, right), GetParam().intersect);
    EXPECT_EQ(intersects(right, left), GetParam().intersect);
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

constexpr char HEADER[] =
    "code,name,kind,area,west,south,east,north,unit,unit_length,datum,datum_id,shift_source,shift_accuracy,"
    "largest_distance,replaced_by\n";

// Names and boxes of the EPSG dataset, areas cut short.
constexpr char LINES[] =
    "3045,ETRS89 / UTM zone 32N (N-E),projected,Europe; Germany,6,38.76,12.01,84.33,metre,1,ETRS89,EPSG:6258,,,,\n"
    "3067,\"ETRS89 / TM35FIN(E,N)\",projected,Finland,19.08,58.84,31.59,70.09,metre,1,ETRS89,EPSG:6258,,,,\n"
    "3460,Fiji 1986 / Fiji Map Grid,projected,Fiji,176.81,-20.81,-178.15,-12.42,metre,1,Fiji 1986,EPSG:6720,,,,\n"
    "3857,WGS 84 / Pseudo-Mercator,projected,World,-180,-85.06,180,85.06,metre,1,WGS 1984,EPSG:6326,,,,\n"
    "4258,ETRS89,geographic,Europe: Germany; Finland,-16.1,32.88,40.18,84.73,degree,0.017,ETRS89,EPSG:6258,,,,\n"
    "4314,DHDN,geographic,Germany,5.86,47.27,13.84,55.09,degree,0.017,Deutsches Hauptdreiecksnetz,EPSG:6314,,,,\n"
    "4326,WGS 84,geographic,World,-180,-90,180,90,degree,0.017,WGS 1984,EPSG:6326,,,,\n"
    "4978,WGS 84,geocentric,World,-180,-90,180,90,metre,1,WGS 1984,EPSG:6326,,,,\n"
    "5555,ETRS89 / UTM zone 32N + DHHN92,compound,Germany,6,47.27,12,55.47,metre,1,ETRS89,EPSG:6258,,,,\n"
    "7777,Zone without an area,projected,,,,,,metre,1,,,,,,\n"
    "8001,Way of the longer name,geographic,Atlantis; Atlantis East; Atlantis West,,,,,degree,0.017,,,,,,\n"
    "8002,Sea of a name,geographic,Atlantis Sea,,,,,degree,0.017,,,,,,\n"
    "8003,Lemuria of the longest name,geographic,Lemuria; Sea,,,,,degree,0.017,Atlantis 1900,,,,,\n"
    "25832,ETRS89 / UTM zone 32N,projected,Europe; Germany,6,38.76,12.01,84.33,metre,1,ETRS89,EPSG:6258,,,,\n"
    "31467,DHDN / 3-degree Gauss-Kruger zone 3,projected,Germany,7.5,47.27,10.51,55.09,metre,1,DHDN,EPSG:6314,,,,\n"
    "32600,WGS 84 / UTM zone,projected,Germany,6,47,12,55,metre,1,WGS 1984,EPSG:6326,,,,32632\n"
    "32632,WGS 84 / UTM zone 32N,projected,World; Germany,6,0,12,84,metre,1,WGS 1984,EPSG:6326,,,,\n";

CrsDescriptions descriptions() {
    const TemporaryFile file(std::string(HEADER) + LINES);
    return CrsDescriptions(file.path());
}

struct Search {
    const char* name;
    std::vector<std::string> words;
    const char* area;
    const char* kind;
    std::vector<unsigned int> codes;
};

void PrintTo(const Search& search, std::ostream* stream) { *stream << search.name; }

class ASearch : public testing::TestWithParam<Search> {};

TEST_P(ASearch, FindsTheBestFirst) {
    SearchedCrs searched;
    searched.words = GetParam().words;
    if (*GetParam().area != '\0') searched.area = readBox(GetParam().area);
    for (const CrsDescription::Kind kind : CRS_KINDS)
        if (kindName(kind) == std::string(GetParam().kind)) searched.kind = kind;
    const CrsDescriptions all = descriptions();
    std::vector<unsigned int> codes;
    for (const FoundCrs& found : findCrs(all, searched)) codes.push_back(found.crs->code);
    EXPECT_EQ(codes, GetParam().codes);
}

constexpr char HAMBURG[] = "9.7,53.4,10.3,53.7";

INSTANTIATE_TEST_SUITE_P(
    All, ASearch,
    testing::Values(
        Search{"ByCode", {"25832"}, "", "", {25832}}, Search{"ByIdentifier", {"EPSG:25832"}, "", "", {25832}},
        Search{"NotByAPartOfACode", {"2583"}, "", "", {}},
        Search{"ByCodeBeforeAWord", {"3857", "world"}, "", "", {3857}},
        Search{"ByWholeName", {"etrs89"}, "", "", {4258, 3067, 25832, 3045, 5555}},
        Search{"ByWholeNameWithBlanks", {"WGS 84"}, "", "", {4326, 4978, 32632, 3857, 32600}},
        Search{"ByWordsOfOneArgument", {"utm 32 etrs89"}, "", "", {25832, 3045, 5555}},
        Search{"ByWordsOfSeveral", {"UTM", "32N", "WGS"}, "", "", {32632}},
        Search{"ByABeginning", {"gau"}, "", "", {31467}}, Search{"NotByAMiddle", {"auss"}, "", "", {}},
        Search{"BehindDigits", {"35FIN"}, "", "", {3067}}, Search{"BehindDigitsAlone", {"fin"}, "", "", {3067, 4258}},
        Search{"ByNameBeforeArea", {"fiji", "map"}, "", "", {3460}},
        Search{"ByDatum", {"hauptdreiecksnetz"}, "", "", {4314}}, Search{"ByEveryWord", {"utm", "finland"}, "", "", {}},
        Search{"ByAWordOfTheArea", {"germany", "zone", "3"}, "", "", {5555, 31467, 25832, 32632, 3045}},
        Search{"ByTheShareOfOtherWordsOfTheArea", {"atlantis", "of"}, "", "", {8003, 8001, 8002}},
        Search{"DeprecatedLast", {"WGS", "UTM"}, "", "", {32632, 32600}},
        Search{"ByKind", {"wgs"}, "", "geocentric", {4978}}, Search{"ByKindAlone", {}, "", "compound", {5555}},
        Search{"ByPlace", {}, HAMBURG, "projected", {31467, 25832, 3045, 32632, 3857, 32600}},
        Search{"ByPlaceAndWord", {"utm"}, HAMBURG, "", {5555, 25832, 3045, 32632, 32600}},
        Search{"CoveringBeforeMeeting", {"DHDN"}, "10,53,13,54", "", {4314, 31467}},
        Search{"ByPlaceAcrossTheAntimeridian", {}, "179,-18,-179,-17", "projected", {3460, 3857}},
        Search{"NothingWithoutAnAreaInAPlace", {"without"}, HAMBURG, "", {}},
        Search{"WithoutAnArea", {"without"}, "", "", {7777}}, Search{"Nothing", {"nowhere"}, "", "", {}}),
    [](const auto& search) { return std::string(search.param.name); });

TEST(ASearchByArea, MarksCrsThatCoverOnlyAPart) {
    SearchedCrs searched;
    searched.words = {"DHDN"};
    searched.area = readBox("10,53,13,54");
    const CrsDescriptions all = descriptions();
    const std::vector<FoundCrs> found = findCrs(all, searched);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_TRUE(found[0].coversArea);
    EXPECT_FALSE(found[1].coversArea);
}

}  // namespace
}  // namespace crsctl
