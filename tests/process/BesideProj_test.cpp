// An application and the library both use PROJ in one process, without effect on each other.

#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/Application.h"

namespace ProcessTest {
namespace {

PJ_COORD transformed(PJ* projection, double x, double y) {
    return proj_trans(projection, PJ_FWD, proj_coord(x, y, 0, 0));
}

// An application with operations in the default context and in a context of its own, which has a logger.
class Application {
public:
    Application() {
        proj_log_func(context.get(), &messages, countMessage);
        proj_log_level(context.get(), PJ_LOG_TRACE);
        const char* const directories[] = {"/usr/share/proj", "/no/such/directory"};
        proj_context_set_search_paths(context.get(), 2, directories);
        byRegistry.reset(proj_create_crs_to_crs(context.get(), "EPSG:4326", "EPSG:25832", nullptr));
        byText.reset(proj_create(context.get(), "+proj=hgridshift +grids=BETA2007.gsb"));
        inDefaultContext.reset(proj_create(nullptr, "+proj=utm +zone=32 +ellps=GRS80"));
    }

    std::vector<double> results() const {
        constexpr double RADIANS = 0.017453292519943295;
        std::vector<double> numbers;
        for (const PJ_COORD& point :
             {transformed(byRegistry.get(), 52, 9), transformed(byText.get(), 9 * RADIANS, 50 * RADIANS),
              transformed(inDefaultContext.get(), 9 * RADIANS, 52 * RADIANS)}) {
            numbers.push_back(point.xy.x);
            numbers.push_back(point.xy.y);
        }
        return numbers;
    }

    int messages = 0;
    const ProjPtr<PJ_CONTEXT> context{proj_context_create()};
    ProjPtr<PJ> byRegistry;
    ProjPtr<PJ> byText;
    ProjPtr<PJ> inDefaultContext;
};

std::vector<double> resultsOf(const CrsConfig& config) {
    std::vector<double> numbers;
    for (const char* const source : {"EPSG:4314", "EPSG:4277", "urn:ogc:def:crs:EPSG::4326"})
        for (const char* const target : {"EPSG:25832", "EPSG:3857"}) {
            const Point point = moved(config, source, target, {50, 9});
            numbers.push_back(point.x);
            numbers.push_back(point.y);
        }
    return numbers;
}

class BesideProjTest : public testing::Test {
protected:
    const Application application;
};

TEST_F(BesideProjTest, LeavesTheDefaultContextUnchanged) {
    const Settings before(nullptr);
    const std::string searchPath = defaultSearchPath();
    useTheLibrary(*startServer(projDirectory()));
    EXPECT_EQ(Settings(nullptr), before);
    EXPECT_EQ(defaultSearchPath(), searchPath);
}

TEST_F(BesideProjTest, LeavesAContextOfTheApplicationUnchanged) {
    const Settings before(application.context.get());
    useTheLibrary(*startServer(projDirectory()));
    EXPECT_EQ(Settings(application.context.get()), before);
    EXPECT_EQ(before.logLevel, PJ_LOG_TRACE);
}

TEST_F(BesideProjTest, LeavesTheErrorsOfTheApplicationUnchanged) {
    transformed(application.inDefaultContext.get(), 0, 99);
    const int error = proj_errno(application.inDefaultContext.get());
    const int contextError = proj_context_errno(nullptr);
    ASSERT_NE(error, 0);
    ASSERT_NE(contextError, 0);
    const auto config = startServer(projDirectory());
    useTheLibrary(*config);
    moved(*config, "EPSG:4326", "EPSG:25832", {52, 9});
    EXPECT_EQ(proj_errno(application.inDefaultContext.get()), error);
    EXPECT_EQ(proj_context_errno(nullptr), contextError);
}

TEST_F(BesideProjTest, SendsNothingToTheLoggersOfTheApplication) {
    static int defaultMessages = 0;
    const PJ_LOG_LEVEL level = proj_log_level(nullptr, PJ_LOG_TRACE);
    proj_log_func(nullptr, &defaultMessages, countMessage);
    defaultMessages = 0;
    const int before = application.messages;
    useTheLibrary(*startServer(projDirectory()));
    EXPECT_EQ(defaultMessages, 0);
    EXPECT_EQ(application.messages, before);

    const ProjPtr<PJ> nonsense(proj_create(nullptr, "+proj=nonsense"));
    EXPECT_GT(defaultMessages, 0);
    proj_log_level(nullptr, level);
}

TEST_F(BesideProjTest, KeepsTheResultsOfBoth) {
    const std::vector<double> applicationResults = application.results();
    const auto config = startServer(projDirectory());
    const std::vector<double> libraryResults = resultsOf(*config);
    for (int round = 0; round < 3; ++round) {
        useTheLibrary(*config);
        EXPECT_EQ(application.results(), applicationResults);
        EXPECT_EQ(Application().results(), applicationResults);
        transformed(application.byText.get(), 0, 99);
        EXPECT_EQ(resultsOf(*config), libraryResults);
    }
}

TEST_F(BesideProjTest, MayRunOnAnotherThreadThanTheApplication) {
    const auto config = startServer(projDirectory());
    const std::vector<double> libraryResults = resultsOf(*config);
    const std::vector<double> applicationResults = application.results();
    std::thread library([&] {
        for (int round = 0; round < 50; ++round) EXPECT_EQ(resultsOf(*config), libraryResults);
    });
    for (int round = 0; round < 50; ++round) EXPECT_EQ(application.results(), applicationResults);
    library.join();
}

}  // namespace
}  // namespace ProcessTest
