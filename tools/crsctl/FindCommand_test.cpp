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

TEST(ABox, IsQuotedWithTheReasonOfItsRefusal) {
    const auto refusalOf = [](const char* text) -> std::string {
        try {
            return boxText(readBox(text));
        } catch (const SetUpError& failure) {
            return failure.what();
        }
    };
    EXPECT_EQ(refusalOf("1,2,3\n"), "--area 1,2,3\\n: four numbers W,S,E,N are needed");
    EXPECT_EQ(refusalOf("1,2,3,4,"), "--area 1,2,3,4,: four numbers W,S,E,N are needed");
    for (const char* const text : {"-181,0,0,0", "0,0,181,0", "0,0,0,91", "0,2,0,1"})
        EXPECT_EQ(refusalOf(text), std::string("--area ") + text + ": not a box of longitudes and latitudes");
}

CrsDescription described(unsigned int code) {
    const CrsDescriptions all = descriptions();
    return *all.find(code);
}

TEST(ADescription, ShowsOnlyWhatIsKnown) {
    EXPECT_EQ(descriptionAsText(described(7777), "  "),
              "  name   Zone without an area\n  datum\n  unit   metre\n  shift  none\n");
}

TEST(ADescription, ShowsTheShiftAndTheReplacement) {
    CrsDescription crs = described(32600);
    crs.shiftSource = "EPSG:1";
    crs.replacedBy = {32632, 32633};
    crs.largestDistance = 0.125;
    EXPECT_EQ(descriptionAsText(crs, ""),
              "name         WGS 84 / UTM zone\n"
              "area         Germany\n"
              "box          6,47,12,55 (W,S,E,N)\n"
              "datum        WGS 1984 (EPSG:6326)\n"
              "unit         metre\n"
              "shift        EPSG:1, of unknown accuracy\n"
              "from PROJ    at most 0.12 m\n"
              "replaced by  32632 32633\n");
    crs.shiftAccuracy = 2.5;
    EXPECT_NE(descriptionAsText(crs, "").find("shift        EPSG:1, accurate to 2.5 m\n"), std::string::npos);
}

// A degree has no length in metres.
TEST(ADescription, ShowsTheLengthOfAUnitThatIsNotTheMetre) {
    CrsDescription crs = described(25832);
    crs.unit = "foot";
    crs.unitLength = 0.3048;
    EXPECT_NE(descriptionAsText(crs, "").find("unit   foot (0.3048 m)\n"), std::string::npos);
    EXPECT_NE(descriptionAsText(described(4326), "").find("unit   degree\n"), std::string::npos);
}

TEST(ADescription, HasEveryMemberAsJson) {
    EXPECT_EQ(descriptionAsJson(described(32600)), Json::parse(R"({"code": 32600, "name": "WGS 84 / UTM zone",
        "kind": "projected", "area": "Germany", "box": {"west": 6, "south": 47, "east": 12, "north": 55},
        "unit": "metre", "unitLength": 1, "datum": "WGS 1984", "datumId": "EPSG:6326", "shiftSource": "",
        "shiftAccuracy": null, "largestDistance": null, "replacedBy": [32632]})"));
    EXPECT_TRUE(descriptionAsJson(described(7777))["box"].is_null());
}

TEST(TheFoundCrs, AreATableWithOneLineForEach) {
    CrsDescription whole = described(4326);
    whole.shiftAccuracy = 1;
    CrsDescription part = described(32600);
    part.area = std::string(61, 'x');
    EXPECT_EQ(asText({{&whole, true}, {&part, false}}),
              "code   kind        accuracy  name                                   area\n"
              "4326   geographic  1 m       WGS 84                                 World\n"
              "32600  projected             WGS 84 / UTM zone (replaced by 32632)  (in part) " +
                  std::string(60, 'x') + "...\n");
    EXPECT_EQ(asText(std::vector<FoundCrs>()), "");
    EXPECT_EQ(asJson({{&whole, true}, {&part, false}})[1]["coversArea"], false);
}

struct NamedKind {
    CrsDescription::Kind kind;
    const char* name;
};

TEST(TheKindOfACrs, HasAName) {
    for (const NamedKind& named : {NamedKind{CrsDescription::Kind::GEOGRAPHIC, "geographic"},
                                   NamedKind{CrsDescription::Kind::GEOCENTRIC, "geocentric"},
                                   NamedKind{CrsDescription::Kind::PROJECTED, "projected"},
                                   NamedKind{CrsDescription::Kind::COMPOUND, "compound"}})
        EXPECT_STREQ(kindName(named.kind), named.name);
}
}  // namespace
}  // namespace crsctl
