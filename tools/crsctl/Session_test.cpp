#include "tools/crsctl/Session.h"

#include <cstdlib>
#include <ostream>

#include <gtest/gtest.h>

#include "tests/support/CrsctlSession.h"

namespace crsctl {
namespace {

struct MadeChoice {
    ProjDirectoryChoice choice;
    const char* property;
    const char* directory;
};

void PrintTo(const MadeChoice& tried, std::ostream* stream) {
    *stream << tried.choice.option << " " << tried.choice.environment << " " << tried.choice.builtInExists;
}

class TheProjDirectory : public testing::TestWithParam<MadeChoice> {};

TEST_P(TheProjDirectory, IsChosenInOrder) {
    EXPECT_EQ(projDirectoryProperty(GetParam().choice), GetParam().property);
    EXPECT_EQ(projDirectory(GetParam().choice), GetParam().directory);
}

INSTANTIATE_TEST_SUITE_P(Choices, TheProjDirectory,
                         testing::Values(MadeChoice{{"option", "environment", true, "installed"}, "option", "option"},
                                         MadeChoice{{"", "environment", true, "installed"}, "", "environment"},
                                         MadeChoice{{"", "environment", false, "installed"}, "", "environment"},
                                         MadeChoice{{"", "", true, "installed"}, "", "/opt/quarvelserver/share/proj4"},
                                         MadeChoice{{"", "", false, "installed"}, "installed", "installed"}));

TEST(TheChoice, ReadsTheEnvironment) {
    setenv("QUARVELSRV_PROJ4_CONF_DIR", "/from/the/environment", 1);
    EXPECT_EQ(projDirectoryChoice("given").environment, "/from/the/environment");
    unsetenv("QUARVELSRV_PROJ4_CONF_DIR");
    EXPECT_EQ(projDirectoryChoice("given").environment, "");
    EXPECT_EQ(projDirectoryChoice("given").option, "given");
    EXPECT_NE(projDirectoryChoice("").installed, "");
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
