// Makes a PROJ directory from the registry of the installed PROJ.

#include <csignal>
#include <cstdio>
#include <exception>

#include "tools/projdir/Program.h"

int main(int argc, char** argv) {
    // A file beyond the size limit is then a failure like a full disk, which leaves nothing behind.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        ProjDir::Options options;
        int exitCode = 0;
        if (!ProjDir::readCommandLine(argc, argv, options, exitCode)) return exitCode;
        return ProjDir::run(options);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "crs-projdir: %s\n", failure.what());
        return 1;
    }
}
