// The application sets up the default context of PROJ before it starts the library. New contexts inherit its settings.

#include <cmath>

#include <gtest/gtest.h>

#include "tests/support/Application.h"

namespace ProcessTest {
namespace {

const char* findNothing(PJ_CONTEXT* /*context*/, const char* /*name*/, void* calls) {
    ++*static_cast<int*>(calls);
    return nullptr;
}

int messages = 0;
int searches = 0;

// Runs once, because the library starts once.
const TemporaryDirectory& setUpDefaultContext() {
    static const TemporaryDirectory empty;
    const char* const directories[] = {empty.name().c_str()};
    proj_context_set_search_paths(nullptr, 1, directories);
    proj_context_set_file_finder(nullptr, findNothing, &searches);
    proj_context_use_proj4_init_rules(nullptr, 1);
    proj_context_set_enable_network(nullptr, 1);
    proj_log_func(nullptr, &messages, countMessage);
    proj_log_level(nullptr, PJ_LOG_TRACE);
    return empty;
}

class AfterProjTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        setUpDefaultContext();
        config = startServer(projDirectory());
    }
    static void TearDownTestSuite() { config.reset(); }

    static std::unique_ptr<CrsConfig> config;
};

std::unique_ptr<CrsConfig> AfterProjTest::config;

TEST_F(AfterProjTest, FindsTheGridsOfProj) {
    const Point shifted = moved(*config, "EPSG:4314", "EPSG:4326", {GRIDDED_LATITUDE, GRIDDED_LONGITUDE});
    EXPECT_NEAR(shifted.x, SHIFTED_LATITUDE, GRID_TOLERANCE);
    EXPECT_NEAR(shifted.y, SHIFTED_LONGITUDE, GRID_TOLERANCE);
}

TEST_F(AfterProjTest, CallsNeitherLoggerNorFileFinderOfTheApplication) {
    messages = 0;
    searches = 0;
    useTheLibrary(*config);
    EXPECT_EQ(messages, 0);
    EXPECT_EQ(searches, 0);
}

TEST_F(AfterProjTest, LeavesTheDefaultContextUnchanged) {
    const Settings before(nullptr);
    const std::string searchPath = defaultSearchPath();
    useTheLibrary(*config);
    EXPECT_EQ(Settings(nullptr), before);
    EXPECT_EQ(defaultSearchPath(), searchPath);
    EXPECT_EQ(searchPath.find("/usr/share/proj"), std::string::npos);
}

}  // namespace
}  // namespace ProcessTest
