#include "CoordinateTransformation/InstalledProjDirectory.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "creation/ProjDirectoryPlaces.h"
#include "tests/support/TemporaryDirectory.h"

namespace CoordinateTransformation {
namespace {

const ProjDirectoryPlaces PLACES{"../../share/proj", "/configured/share/proj"};

class InstalledProjDirectoryTest : public testing::Test {
protected:
    InstalledProjDirectoryTest() {
        std::filesystem::create_directories(root / "lib/triplet");
        directory.write("lib/triplet/library.so.1", "");
    }
    std::string chosenFor(const std::filesystem::path& file) const { return chooseProjDirectory(file, PLACES); }

    const TestSupport::TemporaryDirectory directory;
    const std::filesystem::path root = std::filesystem::canonical(directory.name());
    const std::filesystem::path library = root / "lib/triplet/library.so.1";
};

TEST_F(InstalledProjDirectoryTest, IsBesideTheLibrary) {
    std::filesystem::create_directories(root / "share/proj");
    EXPECT_EQ(chosenFor(library), root / "share/proj");
}

TEST_F(InstalledProjDirectoryTest, IsBesideTheFileThatALinkLeadsTo) {
    std::filesystem::create_directories(root / "share/proj");
    std::filesystem::create_symlink(library, root / "linked.so");
    EXPECT_EQ(chosenFor(root / "linked.so"), root / "share/proj");
}

TEST_F(InstalledProjDirectoryTest, IsTheConfiguredOneWhenNoDirectoryIsBesideTheLibrary) {
    EXPECT_EQ(chosenFor(library), PLACES.absolute);
    std::filesystem::create_directories(root / "share");
    directory.write("share/proj", "a file");
    EXPECT_EQ(chosenFor(library), PLACES.absolute);
}

TEST_F(InstalledProjDirectoryTest, IsTheConfiguredOneForALibraryThatCannotBeFound) {
    for (const char* const unknown : {"", "library.so", "../lib/library.so", "/no/such/library.so"})
        EXPECT_EQ(chosenFor(unknown), PLACES.absolute) << unknown;
}

TEST_F(InstalledProjDirectoryTest, IsEmptyForABuildWithoutInstallation) {
    EXPECT_EQ(chooseProjDirectory(library, {"", ""}), "");
}

TEST(ConfiguredProjDirectoryTest, IsTheOneOfTheInstallation) {
    EXPECT_EQ(installedProjDirectory(), COORDTRANS_EXPECTED_PROJ_DIR);
}

}  // namespace
}  // namespace CoordinateTransformation
