#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>

// Figures of this process.
inline double residentMegabytes() {
    std::ifstream status("/proc/self/statm");
    double total = 0;
    double resident = 0;
    status >> total >> resident;
    return resident * 4096 / 1e6;
}

inline double openFiles() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return static_cast<double>(std::distance(begin(files), end(files)));
}
