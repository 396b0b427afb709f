#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>

namespace Tools {

// Measures the seconds since its construction.
class Stopwatch {
public:
    double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(); }

private:
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

// The state of a run. A run with a total of 0 is done.
struct Progress {
    std::uint64_t done;
    std::uint64_t total;
    double seconds;
};

// Returns the line of a progress bar: "Work [######..................]  25 %  1,500 lines/s  0:06 left".
// The label and the note ("1,500 lines/s") may be empty.
std::string progressLine(const std::string& label, const Progress& progress, const std::string& note);

// A progress bar on a terminal, drawn a few times a second. On any other output, on a terminal without a cursor, and if
// NO_COLOR is set, it writes nothing.
// Any thread may advance it.
class ProgressBar {
public:
    // The bar is never drawn unless `isWanted`. REQUIRES: `output` outlives the bar.
    ProgressBar(std::FILE* output, std::string labelText, std::uint64_t stepCount, bool isWanted = true);
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    ~ProgressBar() { clear(); }

    // Adds one step.
    void advance();
    void advanceTo(std::uint64_t steps, const std::string& note);
    // Clears the line for other output; the next step may draw the bar again.
    void clear();

private:
    void draw(const std::string& note);

    std::mutex lock;
    std::FILE* const stream;
    const std::string label;
    const std::uint64_t total;
    const bool isShown;
    const Stopwatch stopwatch;
    std::uint64_t done = 0;
    double nextDrawing = 0;
    bool isDrawn = false;
};

}  // namespace Tools
