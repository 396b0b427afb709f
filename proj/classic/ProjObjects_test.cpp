#include "proj/classic/ProjObjects.h"

#include <filesystem>
#include <future>

#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"

namespace ClassicProj {
namespace {

using TestSupport::TemporaryDirectory;

class ProjObjectsTest : public testing::Test {
protected:
    void TearDown() override { setSearchDirectories({}); }

    const TemporaryDirectory first;
    const TemporaryDirectory second;
};

TEST_F(ProjObjectsTest, FindsAFileInTheFirstDirectoryThatHasIt) {
    first.write("a", "");
    second.write("a", "");
    second.write("b", "");
    setSearchDirectories({first.name(), second.name()});
    EXPECT_EQ(findInSearchDirectories("a"), first.file("a"));
    EXPECT_EQ(findInSearchDirectories("b"), second.file("b"));
    EXPECT_EQ(findInSearchDirectories("c"), "");
}

TEST_F(ProjObjectsTest, FindsRegularFilesOnly) {
    std::filesystem::create_directory(first.file("a"));
    second.write("a", "");
    setSearchDirectories({first.name(), "/no/such/directory", second.name()});
    EXPECT_EQ(findInSearchDirectories("a"), second.file("a"));
    EXPECT_EQ(findInSearchDirectories(""), "");
    EXPECT_EQ(findInSearchDirectories(std::string(5000, 'x')), "");
}

TEST_F(ProjObjectsTest, HasTheDirectoriesOfTheLastCallOnly) {
    first.write("a", "");
    setSearchDirectories({first.name()});
    setSearchDirectories({second.name()});
    EXPECT_EQ(findInSearchDirectories("a"), "");
    setSearchDirectories({});
    EXPECT_EQ(findInSearchDirectories("a"), "");
}

// A new context inherits the settings of PROJ's default context. It is never released, like all contexts of the
// library.
PJ_CONTEXT* contextWithTalkativeDefaults() {
    static PJ_CONTEXT* const context = [] {
        const int network = proj_context_is_network_enabled(nullptr);
        const PJ_LOG_LEVEL level = proj_log_level(nullptr, PJ_LOG_TRACE);
        proj_context_set_enable_network(nullptr, 1);
        PJ_CONTEXT* const made = makeContext();
        proj_context_set_enable_network(nullptr, network);
        proj_log_level(nullptr, level);
        return made;
    }();
    return context;
}

TEST_F(ProjObjectsTest, SilencesProjWhateverItsDefaultsAre) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const ProjectionPtr missing(proj_create(contextWithTalkativeDefaults(), "+proj=hgridshift +grids=missing.gsb"));
    const ProjectionPtr nonsense(proj_create(contextWithTalkativeDefaults(), "+proj=nonsense +ellps=none"));
    const ProjectionPtr projection(proj_create(contextWithTalkativeDefaults(), "+proj=utm +zone=32"));
    proj_trans(projection.get(), PJ_FWD, proj_coord(0, 2, 0, 0));
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(errors, "");
    EXPECT_EQ(missing, nullptr);
    EXPECT_EQ(nonsense, nullptr);
}

TEST_F(ProjObjectsTest, KeepsProjOffTheNetwork) {
    EXPECT_EQ(proj_context_is_network_enabled(contextWithTalkativeDefaults()), 0);
}

// PROJ remembers results by the whole list of grids, so the list to be refused comes first.
TEST_F(ProjObjectsTest, GivesProjItsGridsFromTheDirectoriesFirst) {
    const auto canShift = [] {
        return ProjectionPtr(proj_create(contextWithTalkativeDefaults(),
                                         "+proj=hgridshift +grids=ntf_r93.gsb,BETA2007.gsb")) != nullptr;
    };
    first.write("ntf_r93.gsb", "no grid at all");
    setSearchDirectories({first.name()});
    EXPECT_FALSE(canShift());
    setSearchDirectories({});
    EXPECT_TRUE(canShift());
}

TEST(ProjWorkTest, IsDoneByManyThreadsAtTheSameTime) {
    const ProjWork mine;
    std::async(std::launch::async, [] { EXPECT_TRUE(ProjWork().isAllowed()); }).get();
}

}  // namespace
}  // namespace ClassicProj
