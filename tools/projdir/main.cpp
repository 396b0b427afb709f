// Makes a PROJ directory from the registry of the installed PROJ, or compares two.

#include "tools/projdir/Commands.h"

int main(int argc, char** argv) { return ProjDir::runProgram(argc, argv); }
