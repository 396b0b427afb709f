#include "tools/projdir/PercentBar.h"

#include <unistd.h>
#include <utility>

namespace ProjDir {
namespace {

constexpr std::size_t WIDTH = 40;
constexpr std::size_t HUNDRED = 100;

}  // namespace

std::string drawBar(const std::string& label, std::size_t percent) {
    const std::size_t filled = WIDTH * percent / HUNDRED;
    const std::string number = std::to_string(percent);
    return label + " [" + std::string(filled, '#') + std::string(WIDTH - filled, '.') + "] " +
           std::string(number.size() < 3 ? 3 - number.size() : 0, ' ') + number + " %";
}

PercentBar::PercentBar(std::FILE* output, std::string text, std::size_t steps)
    : stream(output), label(std::move(text)), total(steps), isShown(isatty(fileno(output)) != 0) {}

PercentBar::~PercentBar() {
    if (isShown) std::fputs("\r\033[K", stream);
}

void PercentBar::advance() {
    const std::lock_guard<std::mutex> guard(lock);
    ++done;
    const std::size_t percent = HUNDRED * done / total;
    if (!isShown || percent == shownPercent) return;
    shownPercent = percent;
    std::fprintf(stream, "\r%s", drawBar(label, percent).c_str());
    std::fflush(stream);
}

}  // namespace ProjDir
