#include "tools/common/ProgressBar.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <unistd.h>
#include <utility>

namespace Tools {
namespace {

constexpr int BAR_WIDTH = 24;
constexpr double REDRAW_SECONDS = 0.2;
constexpr char CLEAR_LINE[] = "\r\x1B[K";
constexpr double LONGEST_LEFT = 99.0 * 3600;

double shareDone(const Progress& progress) {
    if (progress.total == 0) return 1;
    return std::min(1.0, static_cast<double>(progress.done) / static_cast<double>(progress.total));
}

// Returns the number, with the character before it in as many places as the width has more.
std::string justified(int number, std::size_t width, char before) {
    const std::string digits = std::to_string(number);
    return std::string(width - std::min(width, digits.size()), before) + digits;
}

// Returns "0:07", "12:30" or "3:05:00"; "-" before the first step.
std::string timeLeft(double share, double seconds) {
    if (share <= 0) return "-";
    const int left = static_cast<int>(std::lround(std::min(LONGEST_LEFT, seconds * (1 - share) / share)));
    const std::string hours = left < 3600 ? "" : std::to_string(left / 3600) + ":";
    return hours + justified(left / 60 % 60, hours.empty() ? 1 : 2, '0') + ":" + justified(left % 60, 2, '0');
}

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

// Returns whether the output is a terminal with a cursor, and NO_COLOR is not set.
bool canDrawProgress(std::FILE* output) {
    return isatty(fileno(output)) != 0 && variable("NO_COLOR").empty() && variable("TERM") != "dumb";
}

}  // namespace

std::string progressLine(const std::string& label, const Progress& progress, const std::string& note) {
    const double share = shareDone(progress);
    const auto filled = static_cast<std::size_t>(share * BAR_WIDTH);
    return label + (label.empty() ? "[" : " [") + std::string(filled, '#') + std::string(BAR_WIDTH - filled, '.') +
           "] " + justified(static_cast<int>(share * 100), 3, ' ') + " %  " + note + (note.empty() ? "" : "  ") +
           timeLeft(share, progress.seconds) + " left";
}

ProgressBar::ProgressBar(std::FILE* output, std::string labelText, std::uint64_t stepCount, bool isWanted)
    : stream(output), label(std::move(labelText)), total(stepCount), isShown(isWanted && canDrawProgress(output)) {}

void ProgressBar::advance() {
    const std::lock_guard<std::mutex> guard(lock);
    ++done;
    draw("");
}

void ProgressBar::advanceTo(std::uint64_t steps, const std::string& note) {
    const std::lock_guard<std::mutex> guard(lock);
    done = steps;
    draw(note);
}

void ProgressBar::clear() {
    const std::lock_guard<std::mutex> guard(lock);
    if (!isDrawn) return;
    std::fputs(CLEAR_LINE, stream);
    std::fflush(stream);
    isDrawn = false;
}

void ProgressBar::draw(const std::string& note) {
    const double seconds = isShown ? stopwatch.seconds() : 0;
    if (!isShown || seconds < nextDrawing) return;
    std::fprintf(stream, "%s%s", CLEAR_LINE, progressLine(label, {done, total, seconds}, note).c_str());
    std::fflush(stream);
    nextDrawing = seconds + REDRAW_SECONDS;
    isDrawn = true;
}

}  // namespace Tools
