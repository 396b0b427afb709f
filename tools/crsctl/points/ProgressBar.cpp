#include "tools/crsctl/points/ProgressBar.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <unistd.h>

#include "tools/crsctl/start/Descriptor.h"

namespace crsctl {
namespace {

constexpr int BAR_WIDTH = 24;
constexpr double REDRAW_SECONDS = 0.2;
constexpr char CLEAR_LINE[] = "\r\x1B[K";
constexpr double LONGEST_LEFT = 99.0 * 3600;

double partDone(const RunState& state) {
    if (state.bytesInAll == 0) return 1;
    return std::min(1.0, static_cast<double>(state.bytesDone) / static_cast<double>(state.bytesInAll));
}

std::uint64_t rate(std::uint64_t lines, double seconds) {
    return seconds > 0 ? static_cast<std::uint64_t>(std::llround(static_cast<double>(lines) / seconds)) : 0;
}

std::string formatted(const char* format, int a, int b) {
    std::array<char, 32> buffer{};
    std::snprintf(buffer.data(), buffer.size(), format, a, b);
    return buffer.data();
}

// "0:07", "12:30", "3:05:00"; "-" while nothing is known.
std::string timeLeft(const RunState& state) {
    const double done = partDone(state);
    if (done <= 0) return "-";
    const double left = std::min(LONGEST_LEFT, state.seconds * (1 - done) / done);
    const int seconds = static_cast<int>(std::lround(left));
    if (seconds < 3600) return formatted("%d:%02d", seconds / 60, seconds % 60);
    return std::to_string(seconds / 3600) + formatted(":%02d:%02d", seconds / 60 % 60, seconds % 60);
}

std::string plural(std::uint64_t count, const char* noun) {
    return grouped(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace

std::string grouped(std::uint64_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t position = digits.size(); position > 3;) digits.insert(position -= 3, 1, ',');
    return digits;
}

std::string progressLine(const RunState& state) {
    const double done = partDone(state);
    const auto filled = static_cast<std::size_t>(done * BAR_WIDTH);
    const std::string bar = std::string(filled, '#') + std::string(BAR_WIDTH - filled, '.');
    return "[" + bar + "] " + formatted("%*d %%", 3, static_cast<int>(done * 100)) + "  " +
           grouped(rate(state.lines, state.seconds)) + " lines/s  " + timeLeft(state) + " left";
}

std::string summaryLine(const Counts& counts, double seconds) {
    std::array<char, 32> elapsed{};
    std::snprintf(elapsed.data(), elapsed.size(), "%.3f s", seconds);
    return plural(counts.lines, "line") + ": " + grouped(counts.transformed) + " transformed, " +
           grouped(counts.refused) + " refused, " + grouped(counts.passedOver) + " passed over; " + elapsed.data() +
           ", " + grouped(rate(counts.lines, seconds)) + " lines/s";
}

void ProgressBar::update(const RunState& state) {
    if (!shown || state.seconds - drawnAt < REDRAW_SECONDS) return;
    writeAll(STDERR_FILENO, CLEAR_LINE + progressLine(state));
    drawn = true;
    drawnAt = state.seconds;
}

void ProgressBar::clear() {
    if (drawn) writeAll(STDERR_FILENO, CLEAR_LINE);
    drawn = false;
}

}  // namespace crsctl
