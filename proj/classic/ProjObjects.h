#pragma once

// What the classic interface has of PROJ: contexts that look for files where this library says, and objects that are
// whole.

#include <array>
#include <cstddef>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "proj/classic/ProjHandles.h"

namespace ClassicProj {

// The directories that come before PROJ's own when files are looked for. A relative one is taken from where the
// process works now, wherever it works later. Whether each is a directory.
//
// Read by every use of PROJ; written only while nothing else runs.
bool setSearchDirectories(std::vector<std::string> directories);

// The first directory that holds a regular file `name`, joined with it; empty when none does.
std::filesystem::path findInSearchDirectories(const std::string& name);

// By their names alone: nothing is looked up on disk.
bool isBelow(const std::filesystem::path& file, const std::filesystem::path& directory);
bool isInSearchDirectories(const std::filesystem::path& file);

// Held while PROJ makes or releases something, by several threads at a time, each with a context of its own. PROJ has
// locks, which no thread may hold when the process forks: the fork waits for the work that goes on. And when the
// process ends, PROJ's tables go while other threads may still run: nothing is made or released any more then. What is
// made goes on. Taken before the locks of the pool and of the open files, after all others; not twice by one thread.
class ProjWork {
public:
    ProjWork() : place(takePlace()) {}

    // False once the process ends.
    bool isAllowed() const { return !isOver; }

    static void lockForFork();
    static void unlockAfterFork();
    static void end();

private:
    // Who works has one of them, who forks all: a lock for readers and a writer knows its writer by the thread, and
    // does not let itself be unlocked in the child.
    static constexpr std::size_t PLACES = 32;
    using Places = std::array<std::mutex, PLACES>;

    static std::unique_lock<std::mutex> takePlace();

    static Places places;
    static bool isOver;

    std::unique_lock<std::mutex> place;
};

// A PROJ context of the library's own: silent, off the network, looking for files in the search directories
// first, then in PROJ's data directories, and nowhere else. Nothing of it is shared with other users of PROJ in
// the process. Never released. Throws std::bad_alloc.
PJ_CONTEXT* makeContext();

// Lets `context` read PROJ's files (grids, proj.ini, the search for proj.db) through this library.
//
// Only regular files are opened, for reading alone, by an absolute path. PROJ's user-writable directory and the
// working directory are never used. Every file has a position of its own, which no fork shares, and its
// descriptor does not reach programs that the process starts.
void readFilesThroughLibrary(PJ_CONTEXT* context);

// Whether a file could not be opened or read on this thread for a reason that may pass, such as too many open
// files. PROJ takes such a file for missing. Forgets it.
bool takeFileFailure();

// Guards the list of open files. Taken last of all locks.
extern std::mutex projFilesLock;

// Closes the files that a child has inherited; PROJ must not use them afterwards. For the child of a fork: neither
// allocates nor waits.
void closeInheritedFiles();

// The PROJ object of the text, or null with the reason in the error number of the context. It is whole: when
// memory ends on the way, std::bad_alloc is thrown. PROJ loses count of its nesting then, and after a few times the
// context makes nothing more: give it up for making. What it has made may be used. Silences the context.
//
// REQUIRES: no other thread uses `context`. ProjWork is held where there are threads.
ProjectionPtr makeProjection(PJ_CONTEXT* context, const std::string& text);

// The same for a grid shift, whose grids are open and complete afterwards but for those that may be missing and are.
ProjectionPtr makeGridShift(PJ_CONTEXT* context, const std::string& text);

}  // namespace ClassicProj
