#pragma once

#include <cstddef>
#include <cstdio>
#include <mutex>
#include <string>

namespace ProjDir {

// A bar on a terminal, nothing on anything else. Any thread may advance it.
class PercentBar {
public:
    // Borrows the stream.
    PercentBar(std::FILE* output, std::string text, std::size_t steps);
    PercentBar(const PercentBar&) = delete;
    PercentBar& operator=(const PercentBar&) = delete;
    // Clears the line.
    ~PercentBar();

    void advance();

private:
    std::mutex lock;
    std::FILE* stream;
    std::string label;
    std::size_t total;
    std::size_t done = 0;
    std::size_t shownPercent = 0;
    bool isShown;
};

// The bar of a percentage, such as "Definitions [#####.....]  50 %".
std::string drawBar(const std::string& label, std::size_t percent);

}  // namespace ProjDir
