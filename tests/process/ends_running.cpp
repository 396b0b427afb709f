// ends_running transform|arrays|names|pairs|failures DIRECTORY: returns from main while threads still use the library.

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>
#include <thread>

#include "tests/support/ProcessServer.h"

namespace {

using namespace ProcessTest;

using Work = void (*)(const CrsConfig&);

std::atomic<bool> ending{false};

void transform(const CrsConfig& config) {
    static thread_local const Crs source = config.getCreator().createFromName("EPSG:4314", true, false);
    static thread_local const Crs target = config.getCreator().createFromName("EPSG:25832", true, false);
    double x = 50;
    double y = 9;
    source->transformTo(target.get(), x, y);
}

// When the process ends, PROJ makes no more operations.
void transformArrays(const CrsConfig& config) {
    try {
        movedInArray(config, "EPSG:4314", "EPSG:25832", {GRIDDED_LATITUDE, GRIDDED_LONGITUDE});
    } catch (const CoordinateTransformation::TransExecException& failure) {
        if (failure.getCatalogMessage() == nullptr) std::abort();
    }
}

void makeFromNames(const CrsConfig& config) {
    moved(config, "urn:ogc:def:crs:EPSG::4277", "http://www.opengis.net/def/crs/EPSG/0/3857", {50, 9});
}

// Transforms with a new pair each time, and sometimes with a new code. When the process ends, PROJ makes neither.
void transformNewPairs(const CrsConfig& config) {
    static std::atomic<unsigned int> next{0};
    constexpr unsigned int CODES = 200;
    constexpr unsigned int FIRST_CODE = 60000;
    const unsigned int pair = next++;
    const std::string source = "EPSG:" + std::to_string(FIRST_CODE + pair % CODES);
    const std::string target = "EPSG:" + std::to_string(FIRST_CODE + pair / CODES % CODES);
    try {
        moved(config, source, target, {0, 5500000});
    } catch (const std::exception&) {
        if (!ending) std::abort();
    }
}

void fail(const CrsConfig& config) {
    try {
        moved(config, "EPSG:4326", "EPSG:25832", {0, 99});
    } catch (const CoordinateTransformation::TransExecException& failure) {
        if (failure.getCatalogMessage() == nullptr) std::abort();
    }
}

Work workOf(const char* name) {
    if (std::strcmp(name, "transform") == 0) return transform;
    if (std::strcmp(name, "arrays") == 0) return transformArrays;
    if (std::strcmp(name, "names") == 0) return makeFromNames;
    if (std::strcmp(name, "pairs") == 0) return transformNewPairs;
    if (std::strcmp(name, "failures") == 0) return fail;
    return nullptr;
}

std::atomic<int> running{0};

void loop(const CrsConfig& config, Work work) {
    work(config);
    ++running;
    for (;;) work(config);
}

// Sleeps after all libraries have ended, while the threads go on. It is called last, because it is registered before
// any library starts. Unlike std::atexit, on_exit does not tie it to a library.
void registerLastHandler() {
    on_exit([](int, void*) { std::this_thread::sleep_for(std::chrono::milliseconds(20)); }, nullptr);
}

__attribute__((section(".preinit_array"), used)) void (*const BEFORE_ALL_LIBRARIES)() = registerLastHandler;

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 || workOf(argv[1]) == nullptr) return 2;
    constexpr int THREADS = 3;
    // The only object of the application that the threads use. It is never destroyed.
    const CrsConfig& config = *startServer(argv[2]).release();
    for (int i = 0; i < THREADS; ++i) std::thread(loop, std::cref(config), workOf(argv[1])).detach();
    while (running < THREADS) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ending = true;
    return 0;
}
