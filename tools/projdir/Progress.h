#pragma once

#include <cstddef>
#include <cstdio>
#include <mutex>
#include <string>

namespace ProjDir {

// A bar on a terminal, nothing on anything else. Any thread may advance it.
class Progress {
public:
    // Borrows the stream.
    Progress(std::FILE* output, std::string whatIsDone, std::size_t steps);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    // Clears the line.
    ~Progress();

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
