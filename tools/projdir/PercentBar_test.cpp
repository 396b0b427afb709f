#include "tools/projdir/PercentBar.h"

#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"

namespace ProjDir {
namespace {

TEST(PercentBarTest, DrawsABar) {
    EXPECT_EQ(drawBar("Work", 0), "Work [" + std::string(40, '.') + "]   0 %");
    EXPECT_EQ(drawBar("Work", 50), "Work [" + std::string(20, '#') + std::string(20, '.') + "]  50 %");
    EXPECT_EQ(drawBar("Work", 100), "Work [" + std::string(40, '#') + "] 100 %");
}

TEST(PercentBarTest, WritesNothingToAFile) {
    const TestSupport::TemporaryDirectory directory;
    std::FILE* const file = std::fopen(directory.file("out").c_str(), "w");
    ASSERT_NE(file, nullptr);
    {
        PercentBar progress(file, "Work", 2);
        progress.advance();
        progress.advance();
    }
    std::fclose(file);
    EXPECT_EQ(directory.read("out"), "");
}

}  // namespace
}  // namespace ProjDir
