// How often do arrays of points lock a mutex, and for how long?
//
// The program replaces pthread_mutex_lock and pthread_mutex_unlock in the whole process, so it counts the locks of this
// library, PROJ and GDAL. It does not count locks within the C library, as in malloc.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <dlfcn.h>
#include <exception>
#include <memory>
#include <pthread.h>
#include <string>

#include <benchmark/benchmark.h>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "benchmarks/ArrayWays.h"
#include "benchmarks/MarkdownTable.h"

using namespace CoordinateTransformation;
using Clock = std::chrono::steady_clock;

namespace {

struct Held {
    long locks = 0;
    int depth = 0;
    Clock::time_point since;
    Clock::duration time{0};
};

// The counts of the only thread.
Held held;

using MutexFunction = int (*)(pthread_mutex_t*);

// Two threads may look up the function at the same time. Both find the same one.
int callNext(std::atomic<MutexFunction>& next, const char* name, pthread_mutex_t* mutex) {
    MutexFunction function = next.load();
    if (function == nullptr) {
        function = reinterpret_cast<MutexFunction>(dlsym(RTLD_NEXT, name));
        next.store(function);
    }
    return function(mutex);
}

std::atomic<MutexFunction> nextLock{nullptr};
std::atomic<MutexFunction> nextUnlock{nullptr};

}  // namespace

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) {
    const int result = callNext(nextLock, "pthread_mutex_lock", mutex);
    ++held.locks;
    if (held.depth++ == 0) held.since = Clock::now();
    return result;
}

extern "C" int pthread_mutex_unlock(pthread_mutex_t* mutex) {
    if (--held.depth == 0) held.time += Clock::now() - held.since;
    return callNext(nextUnlock, "pthread_mutex_unlock", mutex);
}

namespace {

constexpr int ROUNDS = 1000;

std::string write(double value, const char* format) {
    char text[32];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

void count(MarkdownTable& table, const Way& way, const PairOfCrs& pair) {
    const ArrayTransform transform = way.make(pair);
    const Arrays points = pair.pointsIn(way.form);
    Arrays moved = points;
    transform(POINTS, moved.x.data(), moved.y.data());
    held.locks = 0;
    held.time = Clock::duration{0};
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < ROUNDS; ++i) {
        moved = points;
        transform(POINTS, moved.x.data(), moved.y.data());
    }
    const std::chrono::duration<double, std::nano> time = Clock::now() - start;
    const std::chrono::duration<double, std::nano> locked = held.time;
    table.add({way.name, pair.name(), write(static_cast<double>(held.locks) / ROUNDS, "%.0f"),
               write(locked.count() / ROUNDS, "%.0f"), write(100 * locked.count() / time.count(), "%.3f") + " %"});
}

int run() {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
    config->setConfigProperty("Proj4ConfigDir", COORDTRANS_SOURCE_DIR "/data/proj");
    for (const char* code : {"4326", "25832", "3857", "31467", "2154"}) config->addCrsConfigData(CrsConfigData(code));
    config->init();
    MarkdownTable table({"way", "pair", "locks for 1,000 points", "ns held", "share of time"});
    for (const MeasuredPair& measured : PAIRS) {
        const PairOfCrs pair(*config, measured);
        for (const Way& way : {POINT_TRANSFORMER, REQUEST, PROJ_GENERIC}) count(table, way, pair);
#if defined(COORDTRANS_HAVE_GDAL)
        count(table, GDAL, pair);
#endif
    }
    table.print("Mutexes, one thread");
    return 0;
}

}  // namespace

int main() {
    try {
        return run();
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
