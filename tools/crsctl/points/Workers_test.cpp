#include "tools/crsctl/points/Workers.h"

#include <string>

#include <gtest/gtest.h>

#include "tools/crsctl/start/Failures.h"

namespace crsctl {
namespace {

// Answers each block with its own lines, and stops where one says so.
class Echo : public BlockProcessor {
public:
    BlockResult process(const Block& block) override {
        output = std::to_string(block.firstLine) + ":" + std::string(block.lines);
        Counts counts;
        counts.lines = block.lines.size();
        return {output, "reported", counts, block.lines == "stop"};
    }

private:
    std::string output;
};

TEST(AWorker, AnswersItsBlocks) {
    Workers workers(3, [] { return std::make_unique<Echo>(); });
    const std::string large(3000000, 'x');
    workers.send(0, {"first", 1, 0, false});
    workers.send(1, {large, 2, 0, false});
    workers.send(2, {"stop", 3, 0, false});
    EXPECT_EQ(workers.receive(0).output, "1:first");
    EXPECT_EQ(workers.receive(1).output, "2:" + large);
    const BlockResult last = workers.receive(2);
    EXPECT_TRUE(last.stopped);
    EXPECT_EQ(last.reports, "reported");
    EXPECT_EQ(last.counts.lines, 4U);
    workers.send(0, {"again", 9, 0, false});
    EXPECT_EQ(workers.receive(0).output, "9:again");
}

TEST(AWorker, IsMissedWhenItHasGone) {
    Workers workers(1, []() -> std::unique_ptr<BlockProcessor> { throw SetUpError("cannot start"); });
    workers.send(0, {"block", 1, 0, false});
    EXPECT_THROW(workers.receive(0), SetUpError);
}

}  // namespace
}  // namespace crsctl
