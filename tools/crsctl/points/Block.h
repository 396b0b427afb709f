#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "tools/crsctl/points/OutputBuffer.h"

namespace crsctl {

// Whole lines of one input, in their order.
struct Block {
    std::string_view lines;
    std::uint64_t firstLine = 1;  // its number within its input
    std::uint32_t input = 0;      // which of the inputs
    // `lines` is the beginning of a single line that is longer than a line may be.
    bool tooLong = false;
};

struct Counts {
    std::uint64_t lines = 0;
    std::uint64_t transformed = 0;
    std::uint64_t refused = 0;
    std::uint64_t passedOver = 0;  // blank lines and comments

    Counts& operator+=(const Counts& other) {
        lines += other.lines;
        transformed += other.transformed;
        refused += other.refused;
        passedOver += other.passedOver;
        return *this;
    }
};

// What becomes of a block.
struct BlockResult {
    OutputBuffer output;   // for standard output
    OutputBuffer reports;  // a line for each refused line
    Counts counts;
    bool stopped = false;  // at a refused line: nothing behind it was looked at

    void clear() {
        output.clear();
        reports.clear();
        counts = {};
        stopped = false;
    }
};

// Adds what becomes of a block to a result that is empty.
using ProcessBlock = std::function<void(const Block&, BlockResult&)>;

}  // namespace crsctl
