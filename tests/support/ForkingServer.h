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

// The one PROJ directory of the program: the first that serves is settled for the process.
inline const std::string& projDirectory() {
    static const TestSupport::TemporaryDirectory directory;
    return directory.name();
}

// Codes of the directory that only those tests use that want a new one.
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

// A forked process that does `work` and ends with what it returns.
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

    // False for a child that failed, and for one that hangs.
    bool succeeds() {
        const std::optional<bool> success = endsWithin(std::chrono::seconds(120));
        return success.has_value() && *success;
    }

    // The same for the child of a process whose threads are at work. ThreadSanitizer does not free the locks of its
    // allocator in a child: one that another thread held stays locked. There alone a child may hang.
    bool succeedsBesideThreads() {
        if (!IS_UNDER_THREAD_SANITIZER) return succeeds();
        return endsWithin(std::chrono::seconds(10)).value_or(true);
    }

private:
    // Nothing where it goes on.
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

// The text of the installed PROJ, asked for before any fork.
inline const std::string INVALID_COORDINATE = proj_context_errno_string(nullptr, PROJ_ERR_COORD_TRANSFM_INVALID_COORD);

inline bool failsAsItShould() {
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

// Whether it gives what transformTo gives from EPSG:4314 to EPSG:25832, and a box around it.
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

// Transforms through a grid and by parameters, binds a code that the parent never does, and fails.
inline bool doesEverything() {
    const Point shifted = moved(server(), "EPSG:4314", "EPSG:4326", {GRIDDED_LATITUDE, GRIDDED_LONGITUDE});
    const Point bound = moved(server(), "EPSG:4258", "EPSG:25832", {9, 52});
    return std::abs(shifted.x - SHIFTED_LATITUDE) < GRID_TOLERANCE && std::abs(bound.x - 500000) < 1e-6 &&
           transformsArrays() && failsAsItShould();
}

}  // namespace ProcessTest
