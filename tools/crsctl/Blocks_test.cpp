#include "tools/crsctl/Blocks.h"

#include <atomic>
#include <new>
#include <string>
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

// The file may be removed between the check and the opening.
TEST(AnInputFile, ReportsWhyItCannotBeOpened) {
    EXPECT_EQ(failureOf([] { const InputFile file("/no/such/file"); }), "/no/such/file: No such file or directory");
    const TemporaryFile noDirectory("");
    const std::string path = noDirectory.path() + "/file";
    EXPECT_EQ(failureOf([&path] { const InputFile file(path); }), path + ": Not a directory");
}

TEST(AnInputFile, ReportsWhyItCannotBeRead) {
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

struct ReadLine {
    std::uint32_t input;
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
    Block block;
    while (reader.next(block) == Next::BLOCK) addLines(block, lines);
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
    EXPECT_EQ(reader.bytesConsumed(), 8U);
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
    Block block;
    while (reader.next(block) == Next::BLOCK) {
        EXPECT_EQ(block.firstLine, expectedNumber);
        EXPECT_EQ(block.lines.back(), '\n');
        expectedNumber += static_cast<std::uint64_t>(std::count(block.lines.begin(), block.lines.end(), '\n'));
        read += block.lines;
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
    BlockReader reader(std::string_view("1\n2\n3"));
    EXPECT_EQ(reader.bytesInAll(), 5U);
    EXPECT_EQ(reader.header(), "");
    EXPECT_THAT(linesOf(reader), ElementsAre(ReadLine{0, 1, "1\n"}, ReadLine{0, 2, "2\n"}, ReadLine{0, 3, "3"}));
}

// A line is read when its line end has arrived.
TEST(Reading, DoesNotWaitForTheRestOfALine) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string path = "/dev/fd/" + std::to_string(ends[0]);
    BlockReader reader({path}, false);
    Block block;
    ASSERT_EQ(write(ends[1], "1\n2", 3), 3);
    EXPECT_EQ(reader.next(block), Next::BLOCK);
    EXPECT_EQ(block.lines, "1\n");
    EXPECT_EQ(reader.next(block), Next::NOT_YET);
    close(ends[1]);
    reader.wait();
    EXPECT_EQ(reader.next(block), Next::BLOCK);
    EXPECT_EQ(block.lines, "2");
    EXPECT_EQ(reader.next(block), Next::END);
    close(ends[0]);
}

TEST(Reading, PausesBeforeItOpensAFurtherPipe) {
    const TemporaryFile file("1\n");
    BlockReader reader({file.path(), file.path(), "/dev/null"}, false);
    Block block;
    EXPECT_EQ(reader.next(block), Next::BLOCK);
    EXPECT_EQ(reader.next(block), Next::BLOCK);
    EXPECT_EQ(reader.next(block), Next::NOT_YET);
    reader.wait();
    EXPECT_EQ(reader.next(block), Next::END);
}

TEST(Reading, DoesNotKnowTheSizeOfADevice) {
    BlockReader reader({"/dev/null"}, false);
    EXPECT_FALSE(reader.bytesInAll());
    EXPECT_THAT(linesOf(reader), ElementsAre());
}

// Returns the number and the lines of each block. Stops at a block that requests it.
void echo(const Block& block, BlockResult& result) {
    result.output.append(std::to_string(block.firstLine) + ":" + std::string(block.lines));
    result.reports.append("reported");
    result.counts.lines = block.lines.size();
    result.stopped = block.lines == "stop";
}

// Throws at a block with this text.
ProcessBlock echoUnless(const std::string& text) {
    return [text](const Block& block, BlockResult& result) {
        if (block.lines == text) throw SetUpError("no " + text);
        echo(block, result);
    };
}

Block blockOf(const std::string& lines, std::uint64_t number = 1) { return {lines, number, 0, false}; }

class NumbersOfThreads : public testing::TestWithParam<std::size_t> {
protected:
    BlockThreads threads{GetParam(), [] { return &echo; }};
};

TEST_P(NumbersOfThreads, GiveResultsInTheOrderOfTheBlocks) {
    std::uint64_t expected = 0;
    const auto expectNext = [&] {
        EXPECT_EQ(threads.take().output.view(), std::to_string(expected) + ":" + std::string(expected % 900, 'x'));
        ++expected;
    };
    for (std::uint64_t number = 0; number < 5000; ++number) {
        if (threads.isFull()) expectNext();
        threads.submit(blockOf(std::string(number % 900, 'x'), number));
    }
    while (!threads.isEmpty()) expectNext();
    EXPECT_EQ(expected, 5000U);
}

TEST_P(NumbersOfThreads, HoldABoundedNumberOfBlocks) {
    std::size_t held = 0;
    for (; !threads.isFull(); ++held) threads.submit(blockOf("block"));
    EXPECT_EQ(held, GetParam() + 2);
    for (; !threads.isEmpty(); --held) threads.take();
    EXPECT_EQ(held, 0U);
}

INSTANTIATE_TEST_SUITE_P(Few, NumbersOfThreads, testing::Values(1U, 2U, 7U));

TEST(AThread, ReturnsEveryPartOfAResult) {
    BlockThreads threads(2, [] { return &echo; });
    const std::string large(3000000, 'x');
    threads.submit(blockOf(large, 2));
    threads.submit(blockOf("stop", 3));
    EXPECT_EQ(threads.take().output.view(), "2:" + large);
    const BlockResult& last = threads.take();
    EXPECT_EQ(last.output.view(), "3:stop");
    EXPECT_EQ(last.reports.view(), "reported");
    EXPECT_EQ(last.counts.lines, 4U);
    EXPECT_TRUE(last.stopped);
}

TEST(AThread, StartsWhenABlockWouldWait) {
    std::atomic<int> processors = 0;
    BlockThreads threads(8, [&processors]() -> ProcessBlock {
        ++processors;
        return &echo;
    });
    EXPECT_EQ(processors, 0);
    for (int i = 0; i < 3; ++i) {
        threads.submit(blockOf("block"));
        threads.take();
    }
    EXPECT_EQ(processors, 1);
}

// The results before the failure are still returned.
TEST(AFailure, IsThrownInPlaceOfItsResult) {
    BlockThreads threads(3, [] { return echoUnless("bad"); });
    for (const char* lines : {"good", "bad", "good"}) threads.submit(blockOf(lines));
    EXPECT_EQ(threads.take().output.view(), "1:good");
    try {
        threads.take();
        FAIL() << "no failure";
    } catch (const SetUpError& failure) {
        EXPECT_STREQ(failure.what(), "no bad");
    }
    EXPECT_EQ(threads.take().output.view(), "1:good");
}

TEST(AFailure, OfMakingAProcessorIsThrown) {
    BlockThreads threads(1, []() -> ProcessBlock { throw std::bad_alloc(); });
    threads.submit(blockOf("block"));
    EXPECT_THROW(threads.take(), std::bad_alloc);
}

TEST(Blocks, MayBeLeftUntaken) {
    BlockThreads threads(2, [] { return &echo; });
    while (!threads.isFull()) threads.submit(blockOf("block"));
}

}  // namespace
}  // namespace crsctl
