#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace crsctl {

// Whole lines of one input, in the order in which they stand there.
struct Block {
    std::string_view lines;
    std::uint64_t firstLine = 1;  // its number within its input
    std::uint32_t input = 0;      // which of the inputs
    // `lines` is the beginning of a single line that is longer than a line may be.
    bool tooLong = false;
};

struct Counts {
    std::uint64_t lines = 0;
    std::uint64_t points = 0;  // transformed
    std::uint64_t refused = 0;
    std::uint64_t passedOver = 0;  // blank lines and comments

    Counts& operator+=(const Counts& other) {
        lines += other.lines;
        points += other.points;
        refused += other.refused;
        passedOver += other.passedOver;
        return *this;
    }
};

// What becomes of a block. The texts belong to whoever made the result and hold until it makes the next.
struct BlockResult {
    std::string_view output;   // for standard output
    std::string_view reports;  // a line for each refused line
    Counts counts;
    bool stopped = false;  // at a refused line: nothing behind it was looked at
};

// What turns blocks into results, wherever that happens.
class BlockProcessor {
public:
    virtual ~BlockProcessor() = default;
    virtual BlockResult process(const Block& block) = 0;
};

}  // namespace crsctl
