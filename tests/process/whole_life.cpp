// A host that uses the library at every moment of its life: while its namespace-scope objects are made, in main, in
// destructors of thread_local objects, in functions of std::atexit, while its namespace-scope objects go, and when all
// libraries have ended. The PROJ directory comes from QUARVELSRV_PROJ4_CONF_DIR, since there are no arguments before
// main. Ends with 0 when the library did its work at each of them.

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <thread>
#include <unistd.h>

#include "tests/support/ProcessServer.h"

namespace {

using namespace ProcessTest;

constexpr const char* MOMENTS[] = {"before main", "main",       "end of a thread", "end of the main thread",
                                   "std::atexit", "after main", "the very end"};
bool served[std::size(MOMENTS)] = {};

[[noreturn]] void fail(const char* moment, const char* what) {
    std::fprintf(stderr, "%s: %s\n", moment, what);
    _exit(1);
}

void requireMessage(const char* moment, const structured_exception& failure) {
    const char* const message = failure.getCatalogMessage();
    // Reads all of the text.
    if (message == nullptr || std::strlen(message) < 20) fail(moment, "no message");
}

void useTheLibrary(const char* moment) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    config->addCrsConfigData(CoordinateTransformation::CrsConfigData("EPSG:4326"));
    config->init();
    // The central meridian of the directory, where the easting is the false easting.
    const Point point = moved(*config, "EPSG:4326", "EPSG:25832", {52, 9});
    if (!(std::abs(point.x - 500000) < 1e-6)) fail(moment, "a wrong easting");
    if (movedInArray(*config, "EPSG:4326", "EPSG:25832", {52, 9}).x != point.x) fail(moment, "another in an array");
    if (config->getCreator().createFromName("EPSG:4326", true, true)->isAxisOrderEastNorthOrLonLat())
        fail(moment, "a wrong axis order");
    try {
        moved(*config, "EPSG:4326", "EPSG:25832", {0, 99});
        fail(moment, "a point at latitude 99");
    } catch (const CoordinateTransformation::TransExecException& failure) {
        requireMessage(moment, failure);
    }
}

void serve(std::size_t moment) {
    try {
        useTheLibrary(MOMENTS[moment]);
        served[moment] = true;
    } catch (const std::exception& failure) {
        fail(MOMENTS[moment], failure.what());
    }
}

// The entry of platform faults is there from the first moment.
void requireFaultMessage(const char* moment) {
    const structured_exception fault("access violation", false, "exception", "default", 0, nullptr, false);
    if (std::strncmp(fault.getCatalogMessage(), "Meldung: ", 9) != 0) fail(moment, "no message of platform faults");
}

struct AtThreadEnd {
    explicit AtThreadEnd(std::size_t momentOfEnd) : moment(momentOfEnd) {}
    ~AtThreadEnd() { serve(moment); }

    std::size_t moment;
};

// Made before the thread uses the library, so gone after whatever the library keeps for the thread.
void serveInThread(std::size_t momentOfEnd) {
    static thread_local const AtThreadEnd end(momentOfEnd);
    useTheLibrary("in a thread");
}

void serveAtExit() { serve(4); }

void serveAtTheVeryEnd(int code, void* /*nothing*/) {
    serve(6);
    for (std::size_t moment = 0; moment < std::size(MOMENTS); ++moment)
        if (!served[moment]) fail(MOMENTS[moment], "not served");
    _exit(code);
}

// Registered before any library starts and, unlike what std::atexit takes, with no library of its own, it runs after
// all of them have ended.
void lingerToTheVeryEnd() { on_exit(serveAtTheVeryEnd, nullptr); }

__attribute__((section(".preinit_array"), used)) void (*const BEFORE_ALL_LIBRARIES)() = lingerToTheVeryEnd;

struct Host {
    Host() {
        std::atexit(serveAtExit);
        requireFaultMessage(MOMENTS[0]);
        serve(0);
    }
    ~Host() { serve(5); }
};

const Host host;

}  // namespace

int main() {
    requireFaultMessage(MOMENTS[1]);
    serve(1);
    std::thread(serveInThread, 2).join();
    serveInThread(3);
    return 0;
}
