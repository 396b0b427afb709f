#pragma once

#include <mutex>
#include <proj.h>

namespace ClassicProj {

// Lets `context` read PROJ's files (grids, proj.ini, the search for proj.db) through this library.
//
// Only regular files are opened, for reading alone, by an absolute path. PROJ's user-writable directory and the
// working directory are never used. Every file has a position of its own, which no fork shares, and its
// descriptor does not reach programs that the process starts.
void readFilesThroughLibrary(PJ_CONTEXT* context);

// Whether a file could not be opened or read on this thread for a reason that may pass, such as too many open
// files. PROJ takes such a file for missing. Forgets it.
bool takeFileTrouble();

// Guards the list of open files. Taken last of all locks.
extern std::mutex projFilesLock;

// Closes the files that a child has inherited; PROJ must not use them afterwards. For the child of a fork: neither
// allocates nor waits.
void closeInheritedFiles();

}  // namespace ClassicProj
