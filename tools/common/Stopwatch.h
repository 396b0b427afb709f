#pragma once

#include <chrono>

namespace Tools {

// Seconds since it was made.
class Stopwatch {
public:
    double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(); }

private:
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

}  // namespace Tools
