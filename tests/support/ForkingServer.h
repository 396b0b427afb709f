#pragma once

#include <chrono>
#include <cmath>
#include <csignal>
#include <fstream>
#include <ios>
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
inline const CrsConfig& server() {
    static const TestSupport::TemporaryDirectory directory;
    static const auto config = [] {
        writeProjDirectory(directory.name());
        std::ofstream(directory.file("epsg"), std::ios::app)
            << "<4258> +proj=longlat +ellps=GRS80 +towgs84=0,0,0 +no_defs <>\n"
               "<5798> +proj=longlat +datum=WGS84 +geoidgrids=egm96_15.gtx +no_defs <>\n";
        return startServer(directory.name());
    }();
    return *config;
}

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
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(120);
        int status = 0;
        while (waitpid(process, &status, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        process = -1;
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
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

// Transforms through a grid and by parameters, binds a code that the parent never does, and fails.
inline bool doesEverything() {
    const Point shifted = moved(server(), "EPSG:4314", "EPSG:4326", {GRIDDED_LATITUDE, GRIDDED_LONGITUDE});
    const Point bound = moved(server(), "EPSG:4258", "EPSG:25832", {9, 52});
    return std::abs(shifted.x - SHIFTED_LATITUDE) < GRID_TOLERANCE && std::abs(bound.x - 500000) < 1e-6 &&
           failsAsItShould();
}

}  // namespace ProcessTest
