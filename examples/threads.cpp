// Uses one configuration from many threads: one thread initialises it, then all create CRS and transform points without
// locks of their own. The results are those of a single thread, bit for bit.

#include <algorithm>
#include <cstdio>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "CoordinateTransformation/CoordinateTransformation.h"

using namespace CoordinateTransformation;

namespace {

constexpr int THREADS = 16;
constexpr int POINTS = 500;

using Results = std::vector<double>;

// The handles belong to this thread; the configured CRS behind them are shared. A change through a handle makes a
// private copy, so the other threads keep the latitude first.
Results serveRequests(const CrsCreator& creator) {
    Results results;
    for (int i = 0; i < POINTS; ++i) {
        const Crs utm = creator.createFromName("UTM32", true, true);
        Crs geographic = creator.createFromName(i % 2 == 0 ? "EPSG:4326" : "epsg.xml#4326", true, true);
        if (i % 3 == 0) geographic.forceWmsAxisOrder();
        double x = 400000.0 + 100.0 * i, y = 5500000.0;
        utm->transformTo(geographic.get(), x, y);
        results.insert(results.end(), {x, y});
    }
    return results;
}

}  // namespace

int main(int argc, char** argv) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    if (argc > 1) config->setConfigProperty("Proj4ConfigDir", argv[1]);  // or QUARVELSRV_PROJ4_CONF_DIR
    config->addCrsConfigData(CrsConfigData("EPSG:4326"));
    config->addCrsConfigData(CrsConfigData("UTM32", "25832"));
    config->init();  // must return before the first request

    const CrsCreator& creator = config->getCreator();
    const Results expected = serveRequests(creator);
    std::vector<std::future<Results>> threads;
    threads.reserve(THREADS);
    for (int i = 0; i < THREADS; ++i)
        threads.push_back(std::async(std::launch::async, [&creator] { return serveRequests(creator); }));

    // Joins the thread, and raises its exception if it failed.
    const auto agrees = [&expected](std::future<Results>& thread) { return thread.get() == expected; };
    const auto agreeing = std::count_if(threads.begin(), threads.end(), agrees);
    std::printf("%d threads, %d points each: %d give the same results\n", THREADS, POINTS, static_cast<int>(agreeing));
    std::printf("first point, longitude first: %.8f %.8f\n", expected[0], expected[1]);
    std::printf("second point, latitude first: %.8f %.8f\n", expected[2], expected[3]);
    return agreeing == THREADS ? 0 : 1;
}
