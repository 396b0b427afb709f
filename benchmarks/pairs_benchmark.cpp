// How long does the first point of a new pair of CRS take, and how much memory and how many open files do many codes
// and pairs keep?

#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "benchmarks/ProcessFigures.h"
#include "benchmarks/ProjDirectory.h"
#include "benchmarks/Ratios.h"

using namespace CoordinateTransformation;

namespace {

constexpr unsigned int CODES = 6500;
constexpr unsigned int PAIRS = 10000;

std::vector<Crs> bindAll(const CrsConfig& config, const ProjDirectory& directory) {
    std::vector<Crs> bound;
    for (unsigned int i = 0; i < CODES; ++i)
        bound.push_back(config.getCreator().createFromName("EPSG:" + directory.code(i), true, false));
    return bound;
}

// Source and target of pair i. All 10,000 pairs differ.
const AbstractCrs* sourceOf(const std::vector<Crs>& bound, std::size_t i) { return bound[i % CODES].get(); }
const AbstractCrs* targetOf(const std::vector<Crs>& bound, std::size_t i) {
    return bound[(i * 7 + i / CODES + 13) % CODES].get();
}

// Measures the creation of the operation, so the point may be outside the projection.
void transformOnePoint(const std::vector<Crs>& bound, std::size_t pair) {
    double x = sourceOf(bound, pair)->isGeographic() ? 9 : 500000;
    double y = sourceOf(bound, pair)->isGeographic() ? 9 : 500000;
    try {
        sourceOf(bound, pair)->transformTo(targetOf(bound, pair), x, y);
    } catch (const TransExecException&) {
    }
    benchmark::DoNotOptimize(x);
}

void measureFirstPoint(benchmark::State& state, const std::vector<Crs>& bound) {
    std::size_t pair = 0;
    for (auto _ : state) transformOnePoint(bound, pair++ % PAIRS);
}

void reportMemory(benchmark::State& state, const std::vector<Crs>& bound) {
    for (auto _ : state)
        for (std::size_t pair = 0; pair < PAIRS; ++pair) transformOnePoint(bound, pair);
    state.counters["resident_MB"] = residentMegabytes();
    state.counters["open_files"] = openFiles();
}

}  // namespace

int main(int argc, char** argv) {
    const ProjDirectory directory(CODES);
    const std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
    config->setConfigProperty("Proj4ConfigDir", directory.getPath());
    config->init();
    std::printf("at start:               %6.1f MB, %2.0f files\n", residentMegabytes(), openFiles());
    const std::vector<Crs> bound = bindAll(*config, directory);
    std::printf("with %u codes bound:  %6.1f MB, %2.0f files\n", CODES, residentMegabytes(), openFiles());
    benchmark::RegisterBenchmark("first point of a new pair",
                                 [&bound](benchmark::State& state) { measureFirstPoint(state, bound); });
    benchmark::RegisterBenchmark("10,000 pairs in turn",
                                 [&bound](benchmark::State& state) { reportMemory(state, bound); })
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
    Ratios none;
    const int result = runAndCompare(argc, argv, none);
    std::printf("after %u pairs:      %6.1f MB, %2.0f files\n", PAIRS, residentMegabytes(), openFiles());
    return result;
}
