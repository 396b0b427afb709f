// How long does the start of a server take, and does the time depend only on the number of CRS? Each start runs in its
// own process, because objects of PROJ stay for the life of a process.

#include <chrono>
#include <filesystem>
#include <malloc.h>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "benchmarks/ProjDirectory.h"
#include "benchmarks/Ratios.h"

using namespace CoordinateTransformation;

namespace {

using Clock = std::chrono::steady_clock;

double initSeconds(const ProjDirectory& directory, unsigned int entries) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
    config->setConfigProperty("Proj4ConfigDir", directory.getPath());
    for (unsigned int i = 0; i < entries; ++i) config->addCrsConfigData(CrsConfigData("EPSG:" + directory.code(i)));
    const Clock::time_point start = Clock::now();
    config->init();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Runs `measure` in a child process and returns its result.
template <typename Measure>
double inChildProcess(Measure measure) {
    int ends[2];
    if (pipe(ends) != 0) return 0;
    if (fork() == 0) {
        const double result = measure();
        const bool written = write(ends[1], &result, sizeof(result)) == sizeof(result);
        _exit(written ? 0 : 1);
    }
    double result = 0;
    const bool received = read(ends[0], &result, sizeof(result)) == sizeof(result);
    close(ends[0]);
    close(ends[1]);
    wait(nullptr);
    return received ? result : 0;
}

void measureInit(benchmark::State& state) {
    const unsigned int entries = static_cast<unsigned int>(state.range(0));
    const ProjDirectory directory(entries);
    for (auto _ : state) state.SetIterationTime(inChildProcess([&] { return initSeconds(directory, entries); }));
    state.counters["entries/s"] =
        benchmark::Counter(static_cast<double>(entries), benchmark::Counter::kIsIterationInvariantRate);
}

// Reads descriptions, as the first init of a process does if its directory has them.
void measureDescriptions(benchmark::State& state) {
    const ProjDirectory directory(static_cast<unsigned int>(state.range(0)));
    const std::string path = directory.writeDescriptions();
    std::unique_ptr<CrsDescriptions> read;
    std::size_t before = 0;
    for (auto _ : state) {
        read.reset();
        before = mallinfo2().uordblks;
        read = std::make_unique<CrsDescriptions>(path);
    }
    state.counters["MB"] = static_cast<double>(mallinfo2().uordblks - before) / 1e6;
    state.counters["file MB"] = static_cast<double>(std::filesystem::file_size(path)) / 1e6;
}

BENCHMARK(measureDescriptions)->Arg(6400)->Unit(benchmark::kMillisecond);

BENCHMARK(measureInit)->Arg(65)->Arg(650)->Arg(6500)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    Ratios none;
    return runAndCompare(argc, argv, none);
}
