// How long do arrays of points take, and how many points per second do several threads transform, compared with PROJ
// and GDAL?

#include <atomic>
#include <chrono>
#include <cstdio>
#include <deque>
#include <exception>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "benchmarks/ArrayWays.h"
#include "benchmarks/ProcessFigures.h"
#include "benchmarks/Team.h"
#include "benchmarks/ThreadsReport.h"

using namespace CoordinateTransformation;

namespace {

// The work of one thread on arrays of one pair.
class Task {
public:
    Task(const PairOfCrs& pair, const Way& way)
        : transform(way.make(pair)), points(pair.pointsIn(way.form)), moved(points) {}

    void run() {
        moved = points;
        transform(POINTS, moved.x.data(), moved.y.data());
        benchmark::DoNotOptimize(moved);
    }

private:
    ArrayTransform transform;
    Arrays points;
    Arrays moved;
};

using Pairs = std::vector<const PairOfCrs*>;

constexpr double NANOSECONDS = 1e9;

double perPoint(double seconds, const benchmark::State& state, std::size_t arrays) {
    return seconds * NANOSECONDS / (static_cast<double>(state.iterations()) * static_cast<double>(arrays * POINTS));
}

// The ways take turns after each array, so that noise affects all of them equally.
void measureAlone(benchmark::State& state, const PairOfCrs& pair, const std::vector<Way>& ways) {
    std::vector<Task> tasks;
    for (const Way& way : ways) tasks.emplace_back(pair, way);
    std::vector<double> seconds(ways.size());
    std::size_t first = 0;
    for (auto _ : state) {
        ++first;
        for (std::size_t i = 0; i < ways.size(); ++i) {
            const std::size_t turn = (first + i) % ways.size();
            const double before = processorSecondsOfThread();
            tasks[turn].run();
            seconds[turn] += processorSecondsOfThread() - before;
        }
    }
    for (std::size_t i = 0; i < ways.size(); ++i) {
        state.counters[ways[i].name] = perPoint(seconds[i], state, 1);
        for (std::size_t j = 0; j < ways.size(); ++j)
            state.counters[nameOf(ways[i], ways[j])] = seconds[i] / seconds[j];
    }
}

// Each thread takes the next array until all are done, so that no thread waits for another at the end.
TeamTime transformTogether(const Pairs& pairs, const Way& way, unsigned int threads) {
    std::atomic<std::size_t> next{0};
    return runTogether(threads, [&pairs, &way, &next] {
        std::vector<Task> tasks;
        for (const PairOfCrs* pair : pairs) tasks.emplace_back(*pair, way);
        return [tasks = std::move(tasks), &next]() mutable {
            for (std::size_t i = next.fetch_add(1); i < ARRAYS; i = next.fetch_add(1)) tasks[i % tasks.size()].run();
        };
    });
}

// Teams of each size take turns.
void measureTogether(benchmark::State& state, const Pairs& pairs, const Way& way) {
    std::map<unsigned int, TeamTime> times;
    for (auto _ : state) {
        double all = 0;
        for (const unsigned int threads : TEAMS) {
            const TeamTime time = transformTogether(pairs, way, threads);
            times[threads].wall += time.wall;
            times[threads].processor += time.processor;
            all += time.wall;
        }
        state.SetIterationTime(all);
    }
    for (const auto& [threads, time] : times) {
        state.counters[nameOf(threads)] = perPoint(time.wall, state, ARRAYS);
        for (const auto& [others, otherTime] : times) {
            state.counters[nameOfScale(threads, others)] = otherTime.wall / time.wall;
            state.counters[nameOfProcessorTime(threads, others)] = time.processor / otherTime.processor;
        }
    }
}

void registerAlone(const PairOfCrs& pair) {
    std::vector<Way> ways = WAYS_ON_THREADS;
    ways.insert(ways.end(), {PROJ_TRANS, PROJ_WHOLE});
    for (const Way& way : ways) requireAgreement(pair, way);
    benchmark::RegisterBenchmark(nameOfOneThread(pair.name()).c_str(), [&pair, ways](benchmark::State& state) {
        measureAlone(state, pair, ways);
    })->MinTime(0.2);
}

void registerTogether(const std::string& name, const Pairs& pairs, const Way& way) {
    benchmark::RegisterBenchmark(nameOf(name, way).c_str(),
                                 [pairs, way](benchmark::State& state) { measureTogether(state, pairs, way); })
        ->UseManualTime()
        ->MinTime(0.2);
}

void registerConstruction(const PairOfCrs& pair) {
    benchmark::RegisterBenchmark(nameOfConstruction(pair.name()).c_str(), [&pair](benchmark::State& state) {
        for (auto _ : state) {
            PointTransformer transformer(pair.from(), pair.to());
            benchmark::DoNotOptimize(transformer);
        }
    });
}

// Returns the codes of data/proj between which points are transformed. The code of the default CRS has no name, and the
// geocentric CRS has no point without a height.
std::vector<std::string> readCodes() {
    constexpr const char* DEFAULT_CRS = "0";
    constexpr const char* GEOCENTRIC = "4978";
    std::ifstream table(COORDTRANS_SOURCE_DIR "/data/proj/epsg-axisorder.csv");
    std::vector<std::string> codes;
    for (std::string line; std::getline(table, line);) {
        const std::string code = line.substr(0, line.find(';'));
        if (code != DEFAULT_CRS && code != GEOCENTRIC) codes.push_back(code);
    }
    return codes;
}

// Makes transformers for pairs of CRS from data/proj, a new pair each time. After the last pair it starts again, long
// after the library has released the operation of the first pair.
class NewPairs {
public:
    explicit NewPairs(const CrsConfig& config) {
        for (const std::string& code : readCodes()) crs.push_back(config.getCreator().createFromName(code, true, true));
    }

    // Any number of threads may call it.
    PointTransformer make() {
        std::size_t pair = takeNext();
        while (source(pair).isCodeCompatible(&target(pair))) pair = takeNext();
        return PointTransformer(source(pair), target(pair));
    }

private:
    std::size_t takeNext() { return next.fetch_add(1) % (crs.size() * crs.size()); }
    const AbstractCrs& source(std::size_t pair) const { return *crs[pair / crs.size()].get(); }
    const AbstractCrs& target(std::size_t pair) const { return *crs[pair % crs.size()].get(); }

    std::deque<Crs> crs;
    std::atomic<std::size_t> next{1};
};

// Creates as many idle operations as the library keeps.
void reportIdleOperations(NewPairs& pairs) {
    constexpr int IDLE = 512;
    const double before = residentMegabytes();
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < IDLE; ++i) pairs.make();
    const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
    std::printf("%d idle operations of different pairs: %.1f MB, %.0f microseconds each, %.0f open files\n", IDLE,
                residentMegabytes() - before, time.count() / IDLE, openFiles());
}

void registerNewPairs(NewPairs& pairs) {
    const auto make = [&pairs](benchmark::State& state) {
        for (auto _ : state) benchmark::DoNotOptimize(pairs.make());
        state.SetItemsProcessed(state.iterations());
    };
    benchmark::RegisterBenchmark(nameOfConstruction(NEW_PAIRS).c_str(), make);
    benchmark::RegisterBenchmark("new pairs/construction together", make)->ThreadRange(1, 4)->UseRealTime();
}

void registerPair(const PairOfCrs& pair) {
    registerAlone(pair);
    for (const Way& way : WAYS_ON_THREADS) registerTogether(pair.name(), {&pair}, way);
    registerConstruction(pair);
}

void registerAllPairs(const std::deque<PairOfCrs>& pairs) {
    Pairs all;
    for (const PairOfCrs& pair : pairs) all.push_back(&pair);
    for (const Way& way : {POINT_TRANSFORMER, REQUEST, REQUEST_OF_100, REQUEST_OF_10, CONSTRUCTION})
        registerTogether(ALL_PAIRS, all, way);
}

int run(int argc, char** argv) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
    config->setConfigProperty("Proj4ConfigDir", COORDTRANS_SOURCE_DIR "/data/proj");
    for (const std::string& code : readCodes()) config->addCrsConfigData(CrsConfigData(code));
    config->init();

    NewPairs newPairs(*config);
    reportIdleOperations(newPairs);
    registerNewPairs(newPairs);
    std::deque<PairOfCrs> pairs;
    std::vector<std::string> names;
    for (const MeasuredPair& pair : PAIRS) {
        registerPair(pairs.emplace_back(*config, pair));
        names.push_back(pairs.back().name());
    }
    registerAllPairs(pairs);
    ThreadsReport report(names);
    return runAndCompare(argc, argv, report);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
