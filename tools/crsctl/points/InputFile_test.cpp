#include "tools/crsctl/points/InputFile.h"

#include <gtest/gtest.h>

#include "tests/support/TemporaryFile.h"
#include "tools/crsctl/start/Failures.h"

namespace crsctl {
namespace {

template <typename Action>
std::string failureOf(Action action) {
    try {
        action();
    } catch (const SetUpError& failure) {
        return failure.what();
    }
    return "";
}

// It may have gone since it was found to be there.
TEST(AnInputFile, SaysWhyItCannotBeOpened) {
    EXPECT_EQ(failureOf([] { const InputFile file("/no/such/file"); }), "/no/such/file: No such file or directory");
    const TemporaryFile noDirectory("");
    const std::string path = noDirectory.path() + "/file";
    EXPECT_EQ(failureOf([&path] { const InputFile file(path); }), path + ": Not a directory");
}

TEST(AnInputFile, SaysWhyItCannotBeRead) {
    char byte = 0;
    EXPECT_EQ(failureOf([&byte] { InputFile("/").read(&byte, 1); }), "/: Is a directory");
}

TEST(AnInputFile, IsReadToItsEnd) {
    const TemporaryFile content("text");
    InputFile file(content.path());
    char text[8] = {};
    EXPECT_EQ(file.read(text, sizeof(text)), 4U);
    EXPECT_STREQ(text, "text");
    EXPECT_EQ(file.read(text, sizeof(text)), 0U);
}

}  // namespace
}  // namespace crsctl
