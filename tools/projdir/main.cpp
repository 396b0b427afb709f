// Makes a PROJ directory from the registry of the installed PROJ, or compares two.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "tools/projdir/DiffCommand.h"
#include "tools/projdir/MakeDirectory.h"
#include "tools/projdir/MemoryWatch.h"

namespace {

// After a shortage of memory PROJ may hold a lock for ever, and its static destructors would wait for it.
int end(int exitCode) {
    if (!ProjDir::MemoryWatch::sawShortage()) return exitCode;
    std::fflush(nullptr);
    std::_Exit(exitCode);
}

int diff(int argc, const char* const* argv) {
    ProjDir::DiffOptions options;
    int exitCode = 0;
    return ProjDir::readDiffOptions(argc, argv, options, exitCode) ? ProjDir::diffDirectories(options) : exitCode;
}

int make(int argc, const char* const* argv) {
    ProjDir::Options options;
    int exitCode = 0;
    return ProjDir::readOptions(argc, argv, options, exitCode) ? end(ProjDir::makeDirectory(options)) : exitCode;
}

}  // namespace

int main(int argc, char** argv) {
    // A file beyond the size limit is then a failure like a full disk, which leaves nothing behind.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return ProjDir::isDiffCommand(argc, argv) ? diff(argc, argv) : make(argc, argv);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "crs-projdir: %s\n", failure.what());
        return end(1);
    }
}
