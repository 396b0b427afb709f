#include "tools/crsctl/Session.h"

#include <cstdlib>
#include <ostream>

#include <gtest/gtest.h>

#include "CoordinateTransformation/CrsNotConfigured.h"
#include "CoordinateTransformation/CrsUnknownSyntaxOrAlias.h"
#include "tests/support/CrsctlSession.h"

namespace crsctl {
namespace {

struct MadeChoice {
    ProjDirectoryChoice choice;
    const char* directory;
};

void PrintTo(const MadeChoice& tried, std::ostream* stream) {
    *stream << tried.choice.option << " " << tried.choice.environment << " " << tried.choice.builtInExists;
}

class TheProjDirectory : public testing::TestWithParam<MadeChoice> {};

TEST_P(TheProjDirectory, IsChosenInOrder) { EXPECT_EQ(chosenProjDirectory(GetParam().choice), GetParam().directory); }

INSTANTIATE_TEST_SUITE_P(Choices, TheProjDirectory,
                         testing::Values(MadeChoice{{"option", "environment", true, "installed"}, "option"},
                                         MadeChoice{{"", "environment", true, "installed"}, "environment"},
                                         MadeChoice{{"", "environment", false, "installed"}, "environment"},
                                         MadeChoice{{"", "", true, "installed"}, "/opt/quarvelserver/share/proj4"},
                                         MadeChoice{{"", "", false, "installed"}, "installed"},
                                         MadeChoice{{"", "", false, ""}, "/opt/quarvelserver/share/proj4"}));

TEST(TheProjDirectoryOfAProcess, IsReadFromTheOptionAndTheEnvironment) {
    setenv("QUARVELSRV_PROJ4_CONF_DIR", "/from/the/environment", 1);
    EXPECT_EQ(projDirectory("given"), "given");
    EXPECT_EQ(projDirectory(""), "/from/the/environment");
    unsetenv("QUARVELSRV_PROJ4_CONF_DIR");
    EXPECT_NE(projDirectory(""), "");
    EXPECT_NE(projDirectory(""), "/from/the/environment");
}

std::string failureOf(const CommonOptions& options) {
    try {
        const Session session(options);
    } catch (const SetUpError& failure) {
        return failure.what();
    }
    return "started";
}

TEST(AStart, NamesTheConfigurationThatFails) {
    EXPECT_EQ(failureOf(optionsFor("/no/such/file")), "/no/such/file: No such file or directory");
    const TemporaryFile unknown("<CrsConfiguration><CRS>x</CRS></CrsConfiguration>");
    EXPECT_EQ(failureOf(optionsFor(unknown.path())), unknown.path() + ": The EPSG code \"X\" is unknown");
    const TemporaryFile malformed("<CrsConfiguration>\n<CRS>");
    EXPECT_EQ(failureOf(optionsFor(malformed.path())).rfind(malformed.path() + ":2: ", 0), 0U);
}

TEST(AStart, SetsTheProperties) {
    CommonOptions options = optionsFor();
    EXPECT_FALSE(Session(options).createFromName("EPSG:4326", true)->isAxisOrderEastNorthOrLonLat());
    options.properties = {"AxisOrderConvention=established", "AcceptSafeCuries=true"};
    const Session session(options);
    EXPECT_TRUE(session.createFromName("EPSG:4326", true)->isAxisOrderEastNorthOrLonLat());
    EXPECT_FALSE(session.createFromName("[EPSG:4326]", true)->isAxisOrderEastNorthOrLonLat());
    options.properties = {"AxisOrderConvention=x"};
    EXPECT_EQ(failureOf(options), "The property AxisOrderConvention is \"x\", not \"registry\" or \"established\"");
}

TEST(AStart, FailsForAnUnknownSubsystem) {
    setenv("USE_COORD_TRANSFORMATION_SUBSYSTEM", "other", 1);
    EXPECT_EQ(failureOf(optionsFor()), "The coordinate transformation subsystem other is unknown and not available!");
    unsetenv("USE_COORD_TRANSFORMATION_SUBSYSTEM");
}

TEST(AStart, KnowsWhetherThereIsAConfiguration) {
    EXPECT_FALSE(UnconfiguredSession().isConfigured());
    EXPECT_TRUE(ConfiguredSession("")->isConfigured());
}

TEST(ATextFile, IsReadUnchanged) {
    const std::string content("a\0b\r\n\xFF", 6);
    EXPECT_EQ(readTextFile(TemporaryFile(content).path()), content);
    EXPECT_THROW(readTextFile("/"), SetUpError);
    EXPECT_EQ(inputName("-"), "standard input");
    EXPECT_EQ(inputName("a.txt"), "a.txt");
}

TEST(ATextFile, IsReadWholeIfItIsLargerThanABlock) {
    const std::string content = std::string(65536, 'a') + std::string(65537, 'b');
    EXPECT_TRUE(readTextFile(TemporaryFile(content).path()) == content);
    EXPECT_EQ(readTextFile(TemporaryFile("").path()), "");
}

struct UnreadableFile {
    const char* path;
    const char* message;
};

TEST(ATextFile, IsNamedWithTheReasonOfTheSystem) {
    for (const UnreadableFile& file : {UnreadableFile{"/no/file", "/no/file: No such file or directory"},
                                       UnreadableFile{"/etc/passwd/x", "/etc/passwd/x: Not a directory"},
                                       UnreadableFile{"/", "/: Is a directory"}}) {
        try {
            readTextFile(file.path);
            FAIL() << file.path;
        } catch (const SetUpError& failure) {
            EXPECT_STREQ(failure.what(), file.message);
        }
    }
}

TEST(AFailureOfACommand, HasTheExitCodeOfItsKind) {
    EXPECT_EQ(InputRefused("x").getExitCode(), 1);
    EXPECT_EQ(SetUpError("x").getExitCode(), 2);
    EXPECT_EQ(CommandFailure(EXIT_INTERRUPTED, "x").getExitCode(), 130);
    EXPECT_STREQ(InputRefused("a name").what(), "a name");
}

constexpr const char* OGC_NAMES[] = {"CRS:84", "OGC:CRS84", "urn:ogc:def:crs:OGC:1.3:CRS84",
                                     "urn:ogc:def:crs:OGC::CRS84", "http://www.opengis.net/def/crs/OGC/1.3/CRS84"};

TEST(TheOgcNamesOfWgs84, AreCaseSensitive) {
    for (const char* const name : OGC_NAMES) EXPECT_TRUE(isCrs84(name)) << name;
    for (const char* const name : {"", "CRS:8", "CRS:840", "crs:84", "OGC:CRS84 ", "urn:ogc:def:crs:OGC:1.4:CRS84",
                                   "https://www.opengis.net/def/crs/OGC/1.3/CRS84", "EPSG:4326"})
        EXPECT_FALSE(isCrs84(name)) << name;
}

TEST(TheOgcNamesOfWgs84, AreKeptAsTheAliasWithoutAConfiguration) {
    const UnconfiguredSession session;
    for (const char* const name : OGC_NAMES) {
        const CoordinateTransformation::Crs crs = session.createFromName(name, false);
        ASSERT_TRUE(crs != nullptr) << name;
        EXPECT_EQ(crs->getAlias(), name);
        EXPECT_TRUE(crs->isAxisOrderEastNorthOrLonLat()) << name;
    }
    EXPECT_FALSE(session.createFromName("EPSG:4326", true)->isAxisOrderEastNorthOrLonLat());
}

TEST(AConfiguredSession, AnswersOnlyWhatIsOffered) {
    const ConfiguredSession session(
        "<CrsConfiguration><CRS mapToEpsgCode='25832'>OGC:CRS84</CRS><CRS>4258</CRS></CrsConfiguration>");
    EXPECT_EQ(session->createFromName("OGC:CRS84", true)->getPrimaryCode(), 25832U);
    EXPECT_EQ(session->createFromName("urn:ogc:def:crs:EPSG::4258", true)->getPrimaryCode(), 4258U);
    EXPECT_THROW(session->createFromName("EPSG:4326", true), CoordinateTransformation::CrsNotConfigured);
    EXPECT_THROW(session->createFromName("CRS:84", true), CoordinateTransformation::CrsUnknownSyntaxOrAlias);
    EXPECT_EQ(UnconfiguredSession().createFromName("EPSG:4326", true)->getPrimaryCode(), 4326U);
}

// The first "=" ends the key, and the first value of a property stays.
TEST(AStart, ReadsThePropertiesInTheirOrder) {
    CommonOptions options = optionsFor();
    options.properties = {"AxisOrderConvention=registry=x"};
    EXPECT_EQ(failureOf(options),
              "The property AxisOrderConvention is \"registry=x\", not \"registry\" or \"established\"");
    options.properties = {"AxisOrderConvention=established", "AxisOrderConvention=registry"};
    EXPECT_TRUE(Session(options).createFromName("EPSG:4326", true)->isAxisOrderEastNorthOrLonLat());
}
}  // namespace
}  // namespace crsctl
