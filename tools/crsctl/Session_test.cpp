#include "tools/crsctl/Session.h"

#include <cstdlib>
#include <ostream>

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace crsctl
