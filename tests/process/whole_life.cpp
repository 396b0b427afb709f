// A host that uses the library at every moment of its life: in the constructors of namespace-scope objects, in main, in
// destructors of thread_local objects, in functions of std::atexit, in the destructors of namespace-scope objects, and
// after all libraries have ended. The PROJ directory comes from QUARVELSRV_PROJ4_CONF_DIR, because there are no
// arguments before main. Exits with 0 if the library works at each moment.

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
    // strlen reads the whole text.
    if (message == nullptr || std::strlen(message) < 20) fail(moment, "no message");
}

void useTheLibrary(const char* moment) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createDefaultConfigOrFromEnvVar());
    config->addCrsConfigData(CoordinateTransformation::CrsConfigData("EPSG:4326"));
    config->init();
    // The point is on the central meridian of the directory, so the easting is the false easting.
    const Point point = moved(*config, "EPSG:4326", "EPSG:25832", {52, 9});
    if (!(std::abs(point.x - 500000) < 1e-6)) fail(moment, "wrong easting");
    if (movedInArray(*config, "EPSG:4326", "EPSG:25832", {52, 9}).x != point.x)
        fail(moment, "a different easting in an array");
    if (config->getCreator().createFromName("EPSG:4326", true, true)->isAxisOrderEastNorthOrLonLat())
        fail(moment, "wrong axis order");
    try {
        moved(*config, "EPSG:4326", "EPSG:25832", {0, 99});
        fail(moment, "latitude 99 is accepted");
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

// The catalogue entry of platform faults exists from the first moment.
void requireFaultMessage(const char* moment) {
    const structured_exception fault("access violation", false, "exception", "default", 0, nullptr, false);
    if (std::strncmp(fault.getCatalogMessage(), "Meldung: ", 9) != 0) fail(moment, "no message for platform faults");
}

struct AtThreadEnd {
    explicit AtThreadEnd(std::size_t momentOfEnd) : moment(momentOfEnd) {}
    ~AtThreadEnd() { serve(moment); }

    std::size_t moment;
};

// The object is constructed before the thread uses the library, so it is destroyed after all that the library keeps for
// the thread.
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

// Makes serveAtTheVeryEnd run after all libraries have ended: it is registered before any library starts, and unlike
// std::atexit, on_exit does not tie it to a library.
void registerLastHandler() { on_exit(serveAtTheVeryEnd, nullptr); }

__attribute__((section(".preinit_array"), used)) void (*const BEFORE_ALL_LIBRARIES)() = registerLastHandler;

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
