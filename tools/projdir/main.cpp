// Makes a PROJ directory from the registry of the installed PROJ.

#include "tools/projdir/Program.h"

int main(int argc, char** argv) {
    ProjDir::Options options;
    int exitCode = 0;
    if (!ProjDir::readCommandLine(argc, argv, options, exitCode)) return exitCode;
    return ProjDir::run(options);
}
