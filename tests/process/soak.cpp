// soak DIRECTORY SECONDS THREADS: transforms points and boxes between random pairs of all CRS of a PROJ directory, on
// several threads, with PointTransformer and with transformTo. Prints the number of points, the memory of the process,
// the part of it that is allocated, and the number of open descriptors, every minute and at the end. Exits with 1 if
// the two interfaces differ in a bit.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "tests/support/Bits.h"

namespace {

using namespace CoordinateTransformation;
using Clock = std::chrono::steady_clock;
using TestSupport::haveSameBits;

constexpr std::size_t POINTS = 50;

std::atomic<std::uint64_t> points{0};
std::atomic<std::uint64_t> boxes{0};
std::atomic<std::uint64_t> failures{0};
std::atomic<bool> differ{false};

std::vector<std::string> codesOf(const std::string& directory) {
    std::vector<std::string> codes;
    std::ifstream file(directory + "/epsg");
    for (std::string line; std::getline(file, line);)
        if (line.size() > 2 && line[0] == '<') codes.push_back(line.substr(1, line.find('>') - 1));
    return codes;
}

std::unique_ptr<CrsConfig> start(const std::string& directory) {
    std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    config->setConfigProperty("Proj4ConfigDir", directory);
    config->init();
    return config;
}

// Resident memory in kB, from /proc.
long memory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.compare(0, 6, "VmRSS:") == 0) return std::atol(line.c_str() + 6);
    return 0;
}

// Allocated memory in kB. The C library keeps the rest of the resident memory for later.
std::size_t allocated() {
    const struct mallinfo2 all = mallinfo2();
    return (all.uordblks + all.hblkhd) / 1024;
}

std::ptrdiff_t descriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

void report(Clock::time_point began) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - began).count();
    std::printf("%5lld s %14llu points %10llu boxes %8llu failures %8ld kB %8zu kB allocated %4td descriptors\n",
                static_cast<long long>(seconds), static_cast<unsigned long long>(points),
                static_cast<unsigned long long>(boxes), static_cast<unsigned long long>(failures), memory(),
                allocated(), descriptors());
    std::fflush(stdout);
}

// One thread of a server.
class Requests {
public:
    Requests(const CrsCreator& crsCreator, const std::vector<std::string>& allCodes, unsigned int seed)
        : creator(crsCreator), codes(allCodes), random(seed) {}

    void serveOne() {
        try {
            const Crs source = randomCrs();
            const Crs target = randomCrs();
            PointTransformer transformer(*source.get(), *target.get());
            for (std::size_t i = 0; i < POINTS; ++i) {
                x[i] = randomOrdinate(source);
                y[i] = randomOrdinate(source);
            }
            compare(*source.get(), *target.get(), transformer);
            transformer.transformBounds(
                {std::min(x[0], x[1]), std::min(y[0], y[1]), std::max(x[0], x[1]), std::max(y[0], y[1])});
            ++boxes;
        } catch (const structured_exception&) {
            ++failures;
        }
    }

private:
    Crs randomCrs() { return creator.createFromName("EPSG:" + codes[random() % codes.size()], true, false); }

    double randomOrdinate(const Crs& crs) {
        const double limit = crs->isGeographic() ? 90 : 1e6;
        return std::uniform_real_distribution<double>(-limit, limit)(random);
    }

    void compare(const AbstractCrs& source, const AbstractCrs& target, PointTransformer& transformer) {
        std::copy(x, x + POINTS, movedX);
        std::copy(y, y + POINTS, movedY);
        transformer.transform(POINTS, movedX, movedY, nullptr, 1, failed);
        for (std::size_t i = 0; i < POINTS; i += 10) requireSame(source, target, i);
        points += POINTS + POINTS / 10;
    }

    void requireSame(const AbstractCrs& source, const AbstractCrs& target, std::size_t i) {
        double point[] = {x[i], y[i]};
        bool fails = false;
        try {
            source.transformTo(&target, point[0], point[1]);
        } catch (const TransExecException&) {
            fails = true;
        }
        const bool same = haveSameBits(point[0], movedX[i]) && haveSameBits(point[1], movedY[i]);
        if (fails != failed[i] || (!fails && !same)) {
            differ = true;
            std::printf("different results from %u to %u at %.17g %.17g\n", source.getPrimaryCode(),
                        target.getPrimaryCode(), x[i], y[i]);
        }
    }

    const CrsCreator& creator;
    const std::vector<std::string>& codes;
    std::mt19937_64 random;
    double x[POINTS];
    double y[POINTS];
    double movedX[POINTS];
    double movedY[POINTS];
    bool failed[POINTS];
};

void soak(const std::string& directory, std::chrono::seconds length, unsigned int threadCount) {
    const auto config = start(directory);
    const std::vector<std::string> codes = codesOf(directory);
    const auto began = Clock::now();
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < threadCount; ++i)
        threads.emplace_back([&, i] {
            Requests requests(config->getCreator(), codes, i);
            while (Clock::now() - began < length) requests.serveOne();
        });
    for (auto next = began; Clock::now() - began < length;
         std::this_thread::sleep_for(std::chrono::milliseconds(100))) {
        if (Clock::now() < next) continue;
        report(began);
        next += std::chrono::minutes(1);
    }
    for (std::thread& thread : threads) thread.join();
    report(began);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: soak DIRECTORY SECONDS THREADS\n", stderr);
        return 2;
    }
    soak(argv[1], std::chrono::seconds(std::atoi(argv[2])), static_cast<unsigned int>(std::atoi(argv[3])));
    return differ || points == 0 ? 1 : 0;
}
