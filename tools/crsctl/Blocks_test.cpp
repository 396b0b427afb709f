#include "tools/crsctl/Blocks.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <thread>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryFile.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

using testing::ElementsAre;

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

std::string failureOfReading(BlockReader& reader) {
    return failureOf([&reader] { reader.next(); });
}

// The file may be removed between the check and the opening.
TEST(AnInput, ReportsWhyItCannotBeOpened) {
    auto file = std::make_unique<TemporaryFile>("1\n");
    const std::string path = file->path();
    BlockReader reader({path}, false);
    file.reset();
    EXPECT_EQ(failureOfReading(reader), path + ": No such file or directory");
    EXPECT_EQ(failureOf([&path] { BlockReader({path}, false); }), path + ": No such file or directory");
}

TEST(AnInput, ReportsWhyItCannotBeRead) {
    BlockReader reader({"/proc/self/mem"}, false);
    EXPECT_EQ(failureOfReading(reader), "/proc/self/mem: Input/output error");
    EXPECT_EQ(failureOf([] { BlockReader({"/"}, false); }), "/: Is a directory");
}

struct ReadLine {
    std::size_t input;
    std::uint64_t number;
    std::string text;
    bool tooLong = false;

    bool operator==(const ReadLine& other) const {
        return input == other.input && number == other.number && text == other.text && tooLong == other.tooLong;
    }
};

void addLines(const Block& block, std::vector<ReadLine>& lines) {
    std::string_view rest = block.lines;
    for (std::uint64_t number = block.firstLine; !rest.empty(); ++number) {
        const std::size_t end = std::min(rest.find('\n'), rest.size() - 1) + 1;
        lines.push_back({block.input, number, std::string(rest.substr(0, end)), block.tooLong});
        rest.remove_prefix(end);
    }
}

std::vector<ReadLine> linesOf(BlockReader& reader) {
    std::vector<ReadLine> lines;
    while (const std::optional<Block> block = reader.next()) addLines(*block, lines);
    return lines;
}

std::vector<ReadLine> linesOf(const std::string& content, bool header = false) {
    const TemporaryFile file(content);
    BlockReader reader({file.path()}, header);
    return linesOf(reader);
}

TEST(Reading, FindsNothingInAnEmptyInput) {
    EXPECT_THAT(linesOf(""), ElementsAre());
    EXPECT_THAT(linesOf("\xEF\xBB\xBF"), ElementsAre());
    EXPECT_THAT(linesOf("", true), ElementsAre());
    EXPECT_THAT(linesOf("a header alone", true), ElementsAre());
}

TEST(Reading, AcceptsALastLineWithoutALineEnd) {
    EXPECT_THAT(linesOf("1\n2\n3"), ElementsAre(ReadLine{0, 1, "1\n"}, ReadLine{0, 2, "2\n"}, ReadLine{0, 3, "3"}));
}

TEST(Reading, DropsAByteOrderMarkAtTheBeginningOnly) {
    EXPECT_THAT(linesOf("\xEF\xBB\xBF"
                        "1\n"),
                ElementsAre(ReadLine{0, 1, "1\n"}));
    EXPECT_THAT(linesOf("\xEF\xBB\n"), ElementsAre(ReadLine{0, 1, "\xEF\xBB\n"}));
    EXPECT_THAT(linesOf("1\n\xEF\xBB\xBF"
                        "2\n"),
                ElementsAre(ReadLine{0, 1, "1\n"}, ReadLine{0, 2,
                                                            "\xEF\xBB\xBF"
                                                            "2\n"}));
}

TEST(Reading, KeepsCarriageReturnsAndNuls) {
    const std::string content("1\r\n2\0x\n", 7);
    EXPECT_THAT(linesOf(content), ElementsAre(ReadLine{0, 1, "1\r\n"}, ReadLine{0, 2, std::string("2\0x\n", 4)}));
}

TEST(Reading, CountsTheLinesOfEachInput) {
    const TemporaryFile first("1\n2");
    const TemporaryFile second(
        "\xEF\xBB\xBF"
        "3\n");
    BlockReader reader({first.path(), second.path()}, false);
    EXPECT_EQ(reader.bytesInAll(), 8U);
    EXPECT_THAT(linesOf(reader), ElementsAre(ReadLine{0, 1, "1\n"}, ReadLine{0, 2, "2"}, ReadLine{1, 1, "3\n"}));
}

TEST(Blocks, AreNumberedAndEndWhereTheNextOneBegins) {
    const TemporaryFile first("1\n2");
    const TemporaryFile second(
        "\xEF\xBB\xBF"
        "hi\n");
    BlockReader reader({first.path(), second.path()}, false);
    for (const std::uint64_t end : {2U, 3U, 9U}) EXPECT_EQ(reader.next()->end, end);
    EXPECT_FALSE(reader.next());
    BlockReader numbered({first.path(), second.path()}, false);
    for (const std::uint64_t number : {0U, 1U, 2U}) EXPECT_EQ(numbered.next()->number, number);
}

TEST(Reading, DropsTheHeaderOfEveryInput) {
    const TemporaryFile first("\xEF\xBB\xBFlon lat\r\n1\n");
    const TemporaryFile second("longitude latitude\n2\n");
    BlockReader reader({first.path(), second.path()}, true);
    EXPECT_EQ(reader.header(), "lon lat");
    EXPECT_THAT(linesOf(reader), ElementsAre(ReadLine{0, 2, "1\n"}, ReadLine{1, 2, "2\n"}));
}

// The input is 3 MB of lines with 0 to 996 characters.
TEST(Reading, LosesNothingBetweenBlocks) {
    std::string content;
    for (int i = 0; content.size() < 3000000; ++i)
        content += std::string(static_cast<std::size_t>(i % 997), 'x') + "\n";
    const TemporaryFile file(content);
    BlockReader reader({file.path()}, false);
    std::string read;
    std::uint64_t expectedNumber = 1;
    while (const std::optional<Block> block = reader.next()) {
        EXPECT_EQ(block->firstLine, expectedNumber);
        EXPECT_EQ(block->lines.back(), '\n');
        expectedNumber += static_cast<std::uint64_t>(std::count(block->lines.begin(), block->lines.end(), '\n'));
        read += block->lines;
    }
    EXPECT_EQ(read, content);
}

TEST(Reading, AcceptsTheLongestLine) {
    const std::string line = std::string(LONGEST_LINE - 1, 'x') + "\n";
    EXPECT_THAT(linesOf(line + "2\n"), ElementsAre(ReadLine{0, 1, line}, ReadLine{0, 2, "2\n"}));
}

TEST(Reading, ReturnsTheBeginningOfAnOverlongLine) {
    const std::string endless(5 * LONGEST_LINE, 'x');
    const auto lines = linesOf("1\n" + endless + "\n3\n" + endless);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0], (ReadLine{0, 1, "1\n"}));
    EXPECT_TRUE(lines[1].tooLong);
    EXPECT_EQ(lines[1].number, 2U);
    EXPECT_LT(lines[1].text.size(), 1000U);
    EXPECT_EQ(lines[2], (ReadLine{0, 3, "3\n"}));
    EXPECT_TRUE(lines[3].tooLong);
}

TEST(Reading, RefusesAnEndlessHeader) {
    const TemporaryFile file(std::string(3 * LONGEST_LINE, 'x'));
    BlockReader reader({file.path()}, true);
    EXPECT_THROW(reader.header(), SetUpError);
}

TEST(Reading, RefusesADirectoryOrAMissingFileBeforeReading) {
    const TemporaryFile file("1\n");
    EXPECT_THROW(BlockReader({file.path(), "/no/such/file"}, false), SetUpError);
    EXPECT_THROW(BlockReader({file.path(), "/"}, false), SetUpError);
}

TEST(Reading, ReadsATextInPlaceOfAFile) {
    BlockReader reader("1\n2\n3");
    EXPECT_EQ(reader.bytesInAll(), 5U);
    EXPECT_EQ(reader.header(), "");
    EXPECT_THAT(linesOf(reader), ElementsAre(ReadLine{0, 1, "1\n"}, ReadLine{0, 2, "2\n"}, ReadLine{0, 3, "3"}));
}

std::string nextLines(BlockReader& reader) {
    const std::optional<Block> block = reader.next();
    return block ? block->lines : "the end";
}

// A line is read when its line end has arrived.
TEST(Reading, DoesNotWaitForTheRestOfALine) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    BlockReader reader({"/dev/fd/" + std::to_string(ends[0])}, false);
    ASSERT_EQ(write(ends[1], "1\n2", 3), 3);
    EXPECT_EQ(nextLines(reader), "1\n");
    ASSERT_EQ(write(ends[1], "\n3", 2), 2);
    EXPECT_EQ(nextLines(reader), "2\n");
    close(ends[1]);
    EXPECT_EQ(nextLines(reader), "3");
    EXPECT_EQ(nextLines(reader), "the end");
    close(ends[0]);
}

// The bytes of a header and of an overlong line arrive one part after another.
TEST(Reading, JoinsThePartsOfAPipe) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::thread writer([&ends] {
        const std::string part(60000, 'x');
        for (const std::string& text : {std::string("\xEF"),
                                        std::string("\xBB\xBF"
                                                    "he"),
                                        std::string("ader\r\n")})
            EXPECT_EQ(write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
        for (int i = 0; i < 40; ++i) EXPECT_EQ(write(ends[1], part.data(), part.size()), 60000);
        EXPECT_EQ(write(ends[1], "\n3\n", 3), 3);
        close(ends[1]);
    });
    BlockReader reader({"/dev/fd/" + std::to_string(ends[0])}, true);
    EXPECT_EQ(reader.header(), "header");
    EXPECT_THAT(linesOf(reader), ElementsAre(ReadLine{0, 2, std::string(256, 'x'), true}, ReadLine{0, 3, "3\n"}));
    writer.join();
    close(ends[0]);
}

TEST(Reading, DoesNotKnowTheSizeOfADevice) {
    BlockReader reader({"/dev/null"}, false);
    EXPECT_FALSE(reader.bytesInAll());
    EXPECT_THAT(linesOf(reader), ElementsAre());
}

}  // namespace
}  // namespace crsctl
