#include "proj/classic/ClassicProj.h"

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <proj.h>

#include "proj/classic/Definition.h"
#include "tests/support/ClassicMoves.h"
#include "tests/support/GoneWorkingDirectory.h"
#include "tests/support/TemporaryDirectory.h"

namespace ClassicProj {
namespace {

using namespace TestSupport;

projPJ tryToDefine(const std::string& text) { return pj_init_plus_ctx(nullptr, text.c_str()); }

void expectRefused(const std::string& text) {
    EXPECT_EQ(tryToDefine(text), nullptr) << text;
    EXPECT_NE(*pj_get_errno_ref(), 0) << text;
    EXPECT_STRNE(pj_strerrno(*pj_get_errno_ref()), "") << text;
}

TEST(DefinitionTest, IsRefusedWithAnErrorNumber) {
    for (const char* text : {"",
                             "+zone=32",
                             "+proj=",
                             "+proj=nonsense",
                             "+proj=UTM +zone=32",
                             "+proj=utm +zone=99",
                             "+proj=utm +zone=0",
                             "+proj=longlat +datum=nowhere",
                             "+proj=longlat +ellps=nobody",
                             "+proj=longlat +pm=nowhere",
                             "+proj=longlat +axis=xyz",
                             "+proj=longlat +axis=en",
                             "+proj=longlat +units=parsec",
                             "+proj=longlat +vunits=parsec",
                             "+proj=utm +zone=32 +datum=nowhere",
                             "+proj=utm +zone=32 +ellps=nobody",
                             "+proj=utm +zone=32 +pm=nowhere",
                             "+proj=utm +zone=32 +axis=xyz",
                             "+proj=utm +zone=32 +units=parsec",
                             "+proj=utm +zone=32 +vunits=parsec",
                             "+proj=utm +zone=32 +to_meter=0",
                             "+proj=merc +a=-1",
                             "+proj=merc +R=0",
                             "+proj=lcc +lat_1=50 +lat_2=-50"})
        expectRefused(text);
}

TEST(DefinitionTest, IsNotLookedForByNameWithoutAProjection) {
    for (const char* text : {"+ellps=bessel", "+proj +ellps=bessel", "+proj= +ellps=bessel", "WGS 84"}) {
        expectRefused(text);
        EXPECT_EQ(*pj_get_errno_ref(), PROJ_ERR_INVALID_OP_MISSING_ARG) << text;
    }
}

TEST(DefinitionTest, IsRefusedForANumberThatIsNotFinite) {
    for (const char* parameter : {"+towgs84=nan,0,0", "+towgs84=1,inf,3", "+towgs84=1,2,3,4,5,6,1e309",
                                  "+towgs84=-infinity", "+x_0=nan", "+y_0=inf", "+k=inf", "+lon_0=nan", "+lat_ts=nan",
                                  "+to_meter=inf", "+to_meter=nan", "+vto_meter=1e400", "+pm=inf", "+unknown=nan"}) {
        expectRefused(std::string("+proj=merc +ellps=bessel ") + parameter);
        expectRefused(std::string("+proj=longlat +ellps=bessel ") + parameter);
    }
}

TEST(DefinitionTest, IsRefusedForAnEllipsoidThatIsNotFiniteAndPositive) {
    for (const char* figure : {"+a=inf",
                               "+a=nan",
                               "+a=1e309",
                               "+a=0",
                               "+a=-6378137",
                               "+a=6378137 +b=nan",
                               "+a=6378137 +b=inf",
                               "+a=6378137 +b=0",
                               "+a=6378137 +b=-6356752",
                               "+a=6378137 +rf=nan",
                               "+a=6378137 +f=nan",
                               "+a=6378137 +f=1",

                               "+a=6378137 +es=nan",
                               "+a=6378137 +es=1",
                               "+a=6378137 +e=inf",
                               "+R=inf",
                               "+R=nan",
                               "+R=-1",
                               "+ellps=bessel +a=inf",
                               "+a=1e308 +f=-1e10",
                               "+a=6378137 +b=1e308"}) {
        expectRefused(std::string("+proj=longlat ") + figure);
        expectRefused(std::string("+proj=merc ") + figure);
    }
}

TEST(DefinitionTest, TakesNoPartInNumbersThatItsDatumDoesNotUse) {
    define("+proj=longlat +ellps=bessel +nadgrids=@a +towgs84=nan");
    define("+proj=longlat +ellps=bessel +title=nan");
}

TEST(DefinitionTest, IsRefusedWithoutAnEllipsoidWhenThereAreToBeNoDefaults) {
    expectRefused("+proj=longlat +no_defs");
    expectRefused("+proj=utm +zone=32 +no_defs");
    expectRefused("+proj=utm +zone=32 +towgs84=1,2,3 +no_defs");
    for (const char* figure : {"+ellps=bessel", "+datum=WGS84", "+a=6378137 +rf=298", "+R=6371000"})
        define(std::string("+proj=merc +no_defs ") + figure);
}

TEST(DefinitionTest, IsNoPipeline) {
    for (const char* text :
         {"+proj=pipeline +step +proj=utm +zone=32", "+proj=pipeline", "+proj=utm +zone=32 +step +proj=merc",
          "+proj=utm +zone=32 +inv", "+step +proj=utm +zone=32"})
        expectRefused(text);
}

TEST(DefinitionTest, MayHaveParametersThatNobodyKnows) {
    for (const char* text :
         {"+proj=utm +zone=32 +wktext", "+proj=utm +zone=32 +type=crs +title=UTM", "+proj=longlat +nonsense=1"})
        define(text);
}

// PROJ's log quotes a definition that names another one.
TEST(DefinitionTest, MayHaveTheWordsByWhichProjReportsTheEndOfMemory) {
    for (const std::string words : {"bad_alloc", "out of memory"}) {
        define("+proj=longlat +ellps=GRS80 +title=" + words);
        expectRefused("+proj=tmerc +ellps=GRS80 +lat_0=" + words + " ++init=none:1");
    }
}

TEST(DefinitionTest, MayBeWrittenWithoutPlusSigns) { define("proj=utm zone=32 ellps=bessel"); }

TEST(DefinitionTest, CountsTheFirstOfTwoParametersWithOneKey) {
    const Point there = moved("+proj=longlat +R=6371000 +R=1", "+proj=geocent +R=6371000", {0, 0, 0});
    EXPECT_NEAR(there.x, 6371000, LENGTH_TOLERANCE);
}

TEST(DefinitionTest, ForgetsAnEarlierErrorNumber) {
    expectRefused("+proj=nonsense");
    define("+proj=longlat");
    EXPECT_EQ(*pj_get_errno_ref(), 0);
}

TEST(LongLatTest, IsRecognisedByItsProjection) {
    for (const char* name : {"longlat", "latlong", "lonlat", "latlon"})
        EXPECT_NE(pj_is_latlong(define(std::string("+proj=") + name)), 0) << name;
    for (const char* text : {"+proj=utm +zone=32", "+proj=merc", "+proj=geocent"})
        EXPECT_EQ(pj_is_latlong(define(text)), 0) << text;
}

TEST(LongLatTest, IsAssumedWhereThereIsNoDefinition) { EXPECT_NE(pj_is_latlong(nullptr), 0); }

// A separate context. No definition refers to it, so it may be released.
TEST(ContextTest, CarriesTheErrorNumberOfItsDefinitions) {
    const projCtx context = pj_ctx_alloc();
    const int ofOthers = *pj_get_errno_ref();
    EXPECT_EQ(pj_init_plus_ctx(context, "+proj=nonsense"), nullptr);
    EXPECT_NE(context->error, 0);
    EXPECT_EQ(*pj_get_errno_ref(), ofOthers);
    pj_ctx_free(context);
    pj_ctx_free(nullptr);
}

TEST(ErrorTextTest, IsThereForEveryNumber) {
    for (int error = -100; error <= 5000; ++error) {
        if (error == 0) continue;
        ASSERT_NE(pj_strerrno(error), nullptr) << error;
        EXPECT_STRNE(pj_strerrno(error), "") << error;
    }
}

TEST(ErrorTextTest, StaysAfterOthersWereAsked) {
    const char* const text = pj_strerrno(PROJ_ERR_COORD_TRANSFM_OUTSIDE_GRID);
    const std::string copy = text;
    for (int error = 1; error <= 5000; ++error) pj_strerrno(error);
    EXPECT_EQ(text, copy);
}

TEST(ErrorTextTest, IsTheSameForEveryThread) {
    std::vector<std::vector<const char*>> texts(4);
    std::vector<std::thread> threads;
    for (std::vector<const char*>& own : texts)
        threads.emplace_back([&own] {
            for (int error = 6000; error < 6200; ++error) own.push_back(pj_strerrno(error));
        });
    for (std::thread& thread : threads) thread.join();
    for (const std::vector<const char*>& own : texts) EXPECT_EQ(own, texts.front());
}

TEST(ErrorTextTest, IsNullWithoutAnError) { EXPECT_EQ(pj_strerrno(0), nullptr); }

class InitDefinitionTest : public testing::Test {
protected:
    void SetUp() override { searchOnlyIn({directory.name()}); }
    void TearDown() override { searchOnlyIn({}); }
    void givenEpsg(const std::string& text) { directory.write("epsg", text); }

    static double eastingOf(const std::string& definition) {
        return moved("+proj=longlat +R=1000", definition, {1 / RADIANS, 0, 0}).x;
    }

    const TemporaryDirectory directory;
};

TEST_F(InitDefinitionTest, IsFoundByItsCode) {
    givenEpsg(
        "<1> +proj=merc +R=1000 <>\n<12> +proj=merc +R=1000 +x_0=5\n+units=km # comment <13>\n<> <2> +proj=longlat "
        "+R=1000 <>");
    EXPECT_NEAR(eastingOf("+init=epsg:1"), 1000, LENGTH_TOLERANCE);
    EXPECT_NEAR(eastingOf("+init=epsg:12"), 1.005, LENGTH_TOLERANCE);
    EXPECT_NEAR(eastingOf("  init=epsg:12 "), 1.005, LENGTH_TOLERANCE);
    EXPECT_NE(pj_is_latlong(define("+init=epsg:2")), 0);
}

TEST_F(InitDefinitionTest, IsRefusedWhenItIsNotThere) {
    givenEpsg(
        "<1> +proj=merc +R=1000 <>\n<3> +proj=nonsense <>\n<4> <>\n<5> +proj=pipeline +step +proj=merc <>\n"
        "<epsg> +proj=merc +R=1000 <>");
    for (const char* init : {"epsg:2", "epsg:3", "epsg:4", "epsg:5", "epsg:", "epsg", "", ":1", "EPSG:1", "missing:1",
                             "epsg:1:1", "epsg: 1"})
        expectRefused(std::string("+init=") + init);
}

TEST_F(InitDefinitionTest, IsRefusedAsAWholeForANulByte) {
    using namespace std::string_literals;
    givenEpsg(
        "<1> +proj=merc +R=1000 +x_0=5\0 +y_0=7 <>\n"s
        "<2> +proj=merc +R=1000 \0<>\n"s
        "<3> \0+proj=merc +R=1000 <>\n"s
        "<4> +proj=merc +R=1000 +ellps=bes\0sel <>\n"s
        "<5> +proj=merc +R=1000 +x_0=1 +x_0=\0 <>\n"s
        "<6> +proj=merc +R=1000 <>\n"s);
    for (const char* init : {"1", "2", "3", "4", "5"}) expectRefused(std::string("+init=epsg:") + init);
    expectRefused("+init=epsg:4 +ellps=bessel");
    EXPECT_NEAR(eastingOf("+init=epsg:6"), 1000, LENGTH_TOLERANCE);
}

TEST_F(InitDefinitionTest, MayHaveBlanksAroundCommasAndEqualsSigns) {
    givenEpsg("<1> +proj = merc +R= 1000 +x_0 =5 <>\n<2> +proj=longlat +ellps=bessel +towgs84=598.1,\n73.7 , 418.2 <>");
    EXPECT_NEAR(eastingOf("+init=epsg:1"), 1005, LENGTH_TOLERANCE);
    const Point there = moved("+init=epsg:2", "+proj=geocent +datum=WGS84", {9, 50, 0});
    EXPECT_LT(distance(there, shifted({598.1, 73.7, 418.2}, geocentric(BESSEL, {9, 50, 0}))), 1e-4) << there;
}

TEST_F(InitDefinitionTest, MayBeInAnyFile) {
    directory.write("others", "<a.b> +proj=merc +R=1000 +k=2 <>");
    EXPECT_NEAR(eastingOf("+init=others:a.b"), 2000, LENGTH_TOLERANCE);
}

TEST_F(InitDefinitionTest, GivesWayToTheParametersAroundIt) {
    givenEpsg("<1> +proj=merc +R=1000 +x_0=5 +units=m <>");
    EXPECT_NEAR(eastingOf("+x_0=7 +init=epsg:1"), 1007, LENGTH_TOLERANCE);
    EXPECT_NEAR(eastingOf("+init=epsg:1 +x_0=7"), 1007, LENGTH_TOLERANCE);
    EXPECT_NEAR(eastingOf("+init=epsg:1 +units=km"), 1.005, LENGTH_TOLERANCE);
    EXPECT_NEAR(eastingOf("+k=3 +init=epsg:1"), 3005, LENGTH_TOLERANCE);
}

TEST_F(InitDefinitionTest, LosesItsEllipsoidToAnyOtherFigureOfTheEarth) {
    givenEpsg("<1> +proj=longlat +ellps=bessel <>");
    const auto axisWith = [](const std::string& figure) {
        return moved("+init=epsg:1 " + figure, "+proj=geocent " + figure, {0, 90, 0}).z;
    };
    EXPECT_NEAR(axisWith("+ellps=bessel"), BESSEL.a * (1 - BESSEL.f), LENGTH_TOLERANCE);
    EXPECT_NEAR(axisWith("+datum=WGS84"), WGS84.a * (1 - WGS84.f), LENGTH_TOLERANCE);
    EXPECT_NEAR(axisWith("+ellps=intl"), INTERNATIONAL.a * (1 - INTERNATIONAL.f), LENGTH_TOLERANCE);
    EXPECT_NEAR(axisWith("+a=6000000"), 6000000, LENGTH_TOLERANCE);
    EXPECT_NEAR(axisWith("+a=6000000 +b=5900000"), 5900000, LENGTH_TOLERANCE);
}

// A shift from the definition's ellipsoid would reveal that this ellipsoid was lost.
TEST_F(InitDefinitionTest, ShiftsFromTheFigureThatCounts) {
    givenEpsg("<1> +proj=longlat +ellps=bessel <>");
    const Point there = moved("+init=epsg:1 +datum=GGRS87", "+proj=geocent +datum=WGS84", {24, 38, 0});
    const Point expected = shifted({-199.87, 74.79, 246.62}, geocentric(GRS80, {24, 38, 0}));
    EXPECT_LT(distance(there, expected), 1e-4) << there << expected;
    const Point flat = moved("+init=epsg:1 +a=6370000 +towgs84=1,2,3", "+proj=geocent +datum=WGS84", {24, 38, 0});
    EXPECT_LT(distance(flat, shifted({1, 2, 3}, geocentric({6370000, 0}, {24, 38, 0}))), 1e-4) << flat;
}

TEST_F(InitDefinitionTest, CountsTheFirstOfTwoWithOneCode) {
    givenEpsg("<1> +proj=merc +R=1000 +x_0=5 <>\n<1> +proj=merc +R=1000 +x_0=6 <>");
    EXPECT_NEAR(eastingOf("+init=epsg:1"), 1005, LENGTH_TOLERANCE);
}

TEST_F(InitDefinitionTest, IsFoundOnceTheFileHasIt) {
    expectRefused("+init=epsg:1");
    givenEpsg("<1> +proj=merc +R=1000 <>");
    define("+init=epsg:1");
    expectRefused("+init=epsg:2");
    givenEpsg("<1> +proj=merc +R=1000 <>\n<2> +proj=merc +R=1000 <>");
    define("+init=epsg:2");
}

TEST_F(InitDefinitionTest, IsMadeOnceTheFileHasABetterOne) {
    directory.write("other", "<1> +proj=nonsense +ellps=bessel <>");
    expectRefused("+init=other:1");
    expectRefused("+init=other:1");
    directory.write("other", "<1> +proj=longlat +ellps=bessel <>");
    define("+init=other:1");
}

TEST_F(InitDefinitionTest, IsMadeByManyThreads) {
    std::string text;
    for (int code = 1; code <= 40; ++code) text += "<" + std::to_string(code) + "> +proj=merc +R=1000 <>\n";
    givenEpsg(text);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([] {
            for (int code = 1; code <= 50; ++code) {
                const projCtx context = pj_ctx_alloc();
                const std::string init = "+init=epsg:" + std::to_string(code);
                const projPJ definition = pj_init_plus_ctx(context, init.c_str());
                EXPECT_EQ(definition != nullptr, code <= 40);
                pj_ctx_free(context);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

class SearchPathChangeTest : public testing::Test {
protected:
    void TearDown() override { searchOnlyIn({}); }
    const TemporaryDirectory first;
    const TemporaryDirectory second;
};

TEST_F(SearchPathChangeTest, ReplacesTheDirectories) {
    first.write("epsg", "<1> +proj=longlat +R=1 <>\n<2> +proj=longlat +R=1 <>");
    second.write("epsg", "<1> +proj=merc +R=1 <>");
    searchOnlyIn({first.name()});
    const projPJ old = define("+init=epsg:1");
    EXPECT_NE(pj_is_latlong(old), 0);
    searchOnlyIn({second.name()});
    EXPECT_EQ(pj_is_latlong(define("+init=epsg:1")), 0);
    expectRefused("+init=epsg:2");
    EXPECT_NE(pj_is_latlong(old), 0);
}

TEST_F(SearchPathChangeTest, ForgetsWhatWasReadBefore) {
    first.write("epsg", "<1> +proj=longlat +R=1 <>");
    searchOnlyIn({first.name()});
    define("+init=epsg:1");
    first.write("epsg", "<1> +proj=merc +R=1 <>");
    EXPECT_NE(pj_is_latlong(define("+init=epsg:1")), 0);
    searchOnlyIn({first.name()});
    EXPECT_EQ(pj_is_latlong(define("+init=epsg:1")), 0);
}

TEST_F(SearchPathChangeTest, TakesTheFirstDirectoryThatHasTheFile) {
    first.write("epsg", "<1> +proj=longlat +R=1 <>");
    second.write("epsg", "<1> +proj=merc +R=1 <>\n<2> +proj=merc +R=1 <>");
    searchOnlyIn({"/no/such/directory", first.name(), second.name()});
    EXPECT_NE(pj_is_latlong(define("+init=epsg:1")), 0);
    expectRefused("+init=epsg:2");
}

TEST_F(SearchPathChangeTest, MayLeaveNoDirectory) {
    first.write("epsg", "<1> +proj=longlat +R=1 <>");
    searchOnlyIn({first.name()});
    define("+init=epsg:1");
    pj_set_searchpath(0, nullptr);
    expectRefused("+init=epsg:1");
    define("+proj=utm +zone=32");
}

TEST_F(SearchPathChangeTest, CopiesTheNames) {
    first.write("epsg", "<1> +proj=longlat +R=1 <>");
    std::string name = first.name();
    const char* paths[] = {name.c_str()};
    pj_set_searchpath(1, paths);
    name.assign(name.size(), 'x');
    paths[0] = nullptr;
    define("+init=epsg:1");
}

// The error number of the call that sets the directories.
int errorOf(const std::vector<std::string>& directories) {
    searchOnlyIn(directories);
    return *pj_get_errno_ref();
}

TEST_F(SearchPathChangeTest, ClearsTheErrorNumber) {
    const std::vector<std::string> searched[] = {{}, {first.name()}, {first.name(), second.name()}};
    for (const std::vector<std::string>& directories : searched) {
        expectRefused("+proj=nonsense");
        EXPECT_EQ(errorOf(directories), 0);
    }
}

TEST_F(SearchPathChangeTest, HasAnErrorNumberWhenADirectoryIsNone) {
    const std::string none[] = {first.file("missing"), first.write("file", ""), ""};
    for (const std::string& directory : none) {
        EXPECT_EQ(errorOf({directory}), PROJ_ERR_INVALID_OP_FILE_NOT_FOUND_OR_INVALID) << directory;
        EXPECT_EQ(errorOf({directory, first.name()}), PROJ_ERR_INVALID_OP_FILE_NOT_FOUND_OR_INVALID) << directory;
        EXPECT_EQ(errorOf({first.name(), directory}), PROJ_ERR_INVALID_OP_FILE_NOT_FOUND_OR_INVALID) << directory;
    }
}

// The directory exists but has no absolute name.
TEST_F(SearchPathChangeTest, HasAnErrorNumberWhenTheWorkingDirectoryIsGone) {
    first.makeDirectory("proj");
    const GoneWorkingDirectory gone(first.file("work"));
    ASSERT_TRUE(std::filesystem::is_directory("../proj"));
    EXPECT_EQ(errorOf({"../proj"}), PROJ_ERR_INVALID_OP_FILE_NOT_FOUND_OR_INVALID);
    EXPECT_EQ(errorOf({first.file("proj")}), 0);
}

}  // namespace
}  // namespace ClassicProj
