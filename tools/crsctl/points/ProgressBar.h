#pragma once

#include <cstdint>
#include <string>

#include "tools/crsctl/points/Block.h"

namespace crsctl {

// The number with its digits in groups of three: "1,234,567".
std::string grouped(std::uint64_t number);

// How far a run has come.
struct RunState {
    std::uint64_t bytesDone;
    std::uint64_t bytesInAll;
    std::uint64_t lines;
    double seconds;
};

// One line for a terminal: a bar, percent, rate and the time left. At most 79 columns.
std::string progressLine(const RunState& state);

// The last line of a run: counts, seconds and rate.
std::string summaryLine(const Counts& counts, double seconds);

// The progress line on standard error, drawn anew a few times a second.
class ProgressBar {
public:
    explicit ProgressBar(bool isShown) : shown(isShown) {}
    ~ProgressBar() { clear(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void update(const RunState& state);
    // Makes room for another line; the next update draws the bar again.
    void clear();

private:
    bool shown;
    bool drawn = false;
    double drawnAt = -1;
};

}  // namespace crsctl
