#pragma once

#include <chrono>
#include <cmath>
#include <csignal>
#include <fstream>
#include <ios>
#include <optional>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <proj.h>

#include "tests/support/ProcessServer.h"
#include "tests/support/TemporaryDirectory.h"

// A server that forks.
namespace ProcessTest {

// The PROJ directory of the program. There is only one, because a process keeps the first that it starts with.
inline const std::string& projDirectory() {
    static const TestSupport::TemporaryDirectory directory;
    return directory.name();
}

// Codes for the tests that bind new codes. No other test uses them.
constexpr int FIRST_SPARE_CODE = 60000;
constexpr int SPARE_CODES = 100;

inline std::string spareDefinitions() {
    std::string text;
    for (int i = 0; i < SPARE_CODES; ++i)
        text += "<" + std::to_string(FIRST_SPARE_CODE + i) + "> +proj=tmerc +lon_0=" + std::to_string(i % 20) +
                " +ellps=bessel +towgs84=598.1,73.7,418.2 +no_defs <>\n";
    return text;
}

inline const CrsConfig& server() {
    static const auto config = [] {
        writeProjDirectory(projDirectory());
        std::ofstream(projDirectory() + "/epsg", std::ios::app)
            << "<4258> +proj=longlat +ellps=GRS80 +towgs84=0,0,0 +no_defs <>\n"
               "<4313> +proj=longlat +ellps=bessel +nadgrids=gone.gsb +no_defs <>\n"
               "<5798> +proj=longlat +datum=WGS84 +geoidgrids=egm96_15.gtx +no_defs <>\n"
            << spareDefinitions();
        return startServer(projDirectory());
    }();
    return *config;
}

#if defined(__SANITIZE_THREAD__)
constexpr bool IS_UNDER_THREAD_SANITIZER = true;
#elif defined(__has_feature)
constexpr bool IS_UNDER_THREAD_SANITIZER = __has_feature(thread_sanitizer);
#else
constexpr bool IS_UNDER_THREAD_SANITIZER = false;
#endif

// A forked process that runs `work`. It exits with 0 if `work` returns true.
class Child {
public:
    template <typename Work>
    explicit Child(Work work) : process(fork()) {
        if (process != 0) return;
        bool succeeded = false;
        try {
            succeeded = work();
        } catch (...) {
        }
        _exit(succeeded ? 0 : 1);
    }
    Child(Child&& other) noexcept : process(other.process) { other.process = -1; }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() {
        if (process > 0) end();
    }

    // Waits for the child. Returns false if it fails or hangs.
    bool succeeds() {
        const std::optional<bool> success = endsWithin(std::chrono::seconds(120));
        return success.has_value() && *success;
    }

    // Like succeeds(), for a child of a process with running threads. Under ThreadSanitizer such a child may hang: it
    // inherits the locks of the sanitizer's allocator, and a lock that another thread held is never released.
    bool succeedsBesideThreads() {
        if (!IS_UNDER_THREAD_SANITIZER) return succeeds();
        return endsWithin(std::chrono::seconds(10)).value_or(true);
    }

private:
    // Returns nothing if the child is still running after that time.
    std::optional<bool> endsWithin(std::chrono::seconds time) {
        const auto deadline = std::chrono::steady_clock::now() + time;
        int status = 0;
        while (waitpid(process, &status, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() > deadline) return std::nullopt;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        process = -1;
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    void end() const {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
    }

    pid_t process;
};

// The message of the installed PROJ, read before any fork.
inline const std::string INVALID_COORDINATE = proj_context_errno_string(nullptr, PROJ_ERR_COORD_TRANSFM_INVALID_COORD);

inline bool rejectsAnInvalidPoint() {
    try {
        moved(server(), "EPSG:4326", "EPSG:25832", {99, 9});
    } catch (const CoordinateTransformation::TransExecException& failure) {
        return failure.getCatalogMessage() != nullptr && failure.what() == INVALID_COORDINATE;
    }
    return false;
}

using CoordinateTransformation::PointTransformer;

inline PointTransformer transformerOf(const std::string& source, const std::string& target) {
    const Crs from = server().getCreator().createFromName(source, true, false);
    const Crs to = server().getCreator().createFromName(target, true, false);
    return PointTransformer(*from.get(), *to.get());
}

// Returns whether `transformer` agrees with transformTo from EPSG:4314 to EPSG:25832, and whether its box contains the
// point.
inline bool movesThroughTheGrid(PointTransformer& transformer) {
    double x = GRIDDED_LATITUDE;
    double y = GRIDDED_LONGITUDE;
    if (transformer.transform(1, &x, &y) != 0) return false;
    const Point expected = moved(server(), "EPSG:4314", "EPSG:25832", {GRIDDED_LATITUDE, GRIDDED_LONGITUDE});
    const auto box = transformer.transformBounds({49, 8, 51, 10});
    return x == expected.x && y == expected.y && box.minX < x && x < box.maxX && box.minY < y && y < box.maxY;
}

inline bool transformsArrays() {
    PointTransformer transformer = transformerOf("EPSG:4314", "EPSG:25832");
    PointTransformer another = transformerOf("EPSG:4258", "EPSG:3857");
    double x[] = {9, 99, 10};
    double y[] = {50, 99, 51};
    return movesThroughTheGrid(transformer) && another.transform(3, x, y) == 1;
}

// Transforms through a grid and by parameters, point by point and in arrays, and provokes a failure.
inline bool servesEveryRequest() {
    const Point shifted = moved(server(), "EPSG:4314", "EPSG:4326", {GRIDDED_LATITUDE, GRIDDED_LONGITUDE});
    const Point bound = moved(server(), "EPSG:4258", "EPSG:25832", {9, 52});
    return std::abs(shifted.x - SHIFTED_LATITUDE) < GRID_TOLERANCE && std::abs(bound.x - 500000) < 1e-6 &&
           transformsArrays() && rejectsAnInvalidPoint();
}

}  // namespace ProcessTest
