#include "tools/crsctl/points/BlockThreads.h"

#include <atomic>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "tools/crsctl/start/Failures.h"

namespace crsctl {
namespace {

// Answers each block with its number and its own lines, and stops where one asks for it.
void echo(const Block& block, BlockResult& result) {
    result.output.append(std::to_string(block.firstLine) + ":" + std::string(block.lines));
    result.reports.append("reported");
    result.counts.lines = block.lines.size();
    result.stopped = block.lines == "stop";
}

// Raises on a block of this text.
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

TEST(AThread, KeepsWhatItsProcessorSays) {
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

// What was in order before the failure is still given.
TEST(AFailure, IsRaisedWhereItsResultIsDue) {
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

TEST(AFailure, OfAProcessorThatCannotBeMadeIsRaised) {
    BlockThreads threads(1, []() -> ProcessBlock { throw std::bad_alloc(); });
    threads.submit(blockOf("block"));
    EXPECT_THROW(threads.take(), std::bad_alloc);
}

TEST(Blocks, ThatNobodyTakesDoNoHarm) {
    BlockThreads threads(2, [] { return &echo; });
    while (!threads.isFull()) threads.submit(blockOf("block"));
}

}  // namespace
}  // namespace crsctl
