// Makes a PROJ directory from the registry of the installed PROJ.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "tools/projdir/MakeDirectory.h"
#include "tools/projdir/MemoryWatch.h"

namespace {

// After a shortage of memory PROJ may hold a lock for ever, and its static destructors would wait for it.
int end(int exitCode) {
    if (!ProjDir::MemoryWatch::sawShortage()) return exitCode;
    std::fflush(nullptr);
    std::_Exit(exitCode);
}

}  // namespace

int main(int argc, char** argv) {
    // A file beyond the size limit is then a failure like a full disk, which leaves nothing behind.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        ProjDir::Options options;
        int exitCode = 0;
        if (!ProjDir::readOptions(argc, argv, options, exitCode)) return exitCode;
        return end(ProjDir::makeDirectory(options));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "crs-projdir: %s\n", failure.what());
        return end(1);
    }
}
