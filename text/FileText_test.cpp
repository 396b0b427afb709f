#include "text/FileText.h"

#include <filesystem>
#include <ios>
#include <sstream>
#include <string>
#include <system_error>

#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"

namespace CoordinateTransformation {
namespace {

// Delivers `text` `times` times, and then ends or breaks off.
class RepeatingBuffer : public std::streambuf {
public:
    RepeatingBuffer(std::string theText, std::size_t times, bool breaksOff)
        : text(std::move(theText)), left(times), breaks(breaksOff) {}

protected:
    int_type underflow() override {
        if (left == 0 && breaks) throw std::ios_base::failure("broken", std::make_error_code(std::errc::io_error));
        if (left == 0) return traits_type::eof();
        --left;
        setg(text.data(), text.data(), text.data() + text.size());
        return traits_type::to_int_type(text.front());
    }

private:
    std::string text;
    std::size_t left;
    bool breaks;
};

constexpr char IO_ERROR[] = "Input/output error";

TEST(FileTextTest, IsReadUpToItsEndOrTheLimit) {
    std::stringbuf ten("0123456789");
    EXPECT_EQ(readUpTo(ten, 4), "0123");
    EXPECT_EQ(readUpTo(ten, 4), "4567");
    EXPECT_EQ(readUpTo(ten, 4), "89");
    EXPECT_EQ(readUpTo(ten, 4), "");
    RepeatingBuffer endless("0123456789", 1 << 20, false);
    EXPECT_EQ(readUpTo(endless, 1000003).size(), 1000003U);
}

TEST(FileTextTest, KeepsNothingOfATextThatBreaksOff) {
    RepeatingBuffer breaking("4326;ne\n", 100000, true);
    const FileText read = readToEnd(breaking);
    EXPECT_EQ(read.failure, IO_ERROR);
    EXPECT_EQ(read.content, "");
    RepeatingBuffer ending("4326;ne\n", 100000, false);
    EXPECT_EQ(readToEnd(ending).failure, "");
}

TEST(FileTextTest, IsRefusedBeyondTheBound) {
    RepeatingBuffer justFits(std::string(1 << 20, 'x'), 256, false);
    const FileText read = readToEnd(justFits);
    EXPECT_EQ(read.failure, "");
    EXPECT_EQ(read.content.size(), LARGEST_FILE);
    RepeatingBuffer endless(std::string(1 << 20, 'x'), 1000000, false);
    const FileText refused = readToEnd(endless);
    EXPECT_EQ(refused.failure, "it is larger than 256 MB");
    EXPECT_EQ(refused.content, "");
}

TEST(FileTextTest, IsThatOfTheFileAsItIs) {
    const TestSupport::TemporaryDirectory directory;
    const std::string content("a\0b\r\n\xFF\x1A\n", 8);
    const FileText read = readFile(directory.write("file", content));
    EXPECT_EQ(read.content, content);
    EXPECT_EQ(read.failure, "");
    EXPECT_TRUE(read.opened);
}

TEST(FileTextTest, HasTheReasonForAFileThatCannotBeOpened) {
    const FileText read = readFile("/no/such/file");
    EXPECT_EQ(read.failure, "No such file or directory");
    EXPECT_FALSE(read.opened);
}

// "/proc/self/mem" is a regular file by its type, but no process can read its first byte, not even the administrator's.
TEST(FileTextTest, HasTheReasonForAReadThatBreaksOff) {
    ASSERT_TRUE(std::filesystem::is_regular_file("/proc/self/mem"));
    const FileText read = readFile("/proc/self/mem");
    EXPECT_EQ(read.failure, IO_ERROR);
    EXPECT_TRUE(read.opened);
    EXPECT_EQ(readFile("/").failure, "Is a directory");
}

}  // namespace
}  // namespace CoordinateTransformation
