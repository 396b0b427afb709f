#pragma once

// The library's use of PROJ: contexts that search for files in the library's directories, and objects that are
// complete.

#include <array>
#include <cstddef>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "proj/classic/ProjHandles.h"

namespace ClassicProj {

// Sets the directories that are searched before PROJ's own. A relative one refers to the current working directory,
// even if that changes later. Returns whether all of them are directories.
//
// Every use of PROJ reads them. REQUIRES: nothing else runs.
bool setSearchDirectories(std::vector<std::string> directories);

// The first directory that holds a regular file `name`, joined with it; empty when none does.
std::filesystem::path findInSearchDirectories(const std::string& name);

// Compares the names only, without the file system.
bool isBelow(const std::filesystem::path& file, const std::filesystem::path& directory);
bool isInSearchDirectories(const std::filesystem::path& file);

// Held while PROJ makes or releases an object. Several threads may hold it at a time, each with its own context.
//
// A fork waits until no thread holds it, because a child would inherit PROJ's own locks as they are. At the end of the
// process PROJ's tables are destroyed while other threads may still run: from then on no object is made or released,
// and existing objects continue to work.
//
// Taken before the locks of the pool and of the open files and after all others, and not twice by one thread.
class ProjWork {
public:
    ProjWork() : place(takePlace()) {}

    // Whether objects may be made and released; false at the end of the process.
    bool isAllowed() const { return !isOver; }

    static void lockForFork();
    static void unlockAfterFork();
    static void end();

private:
    // A thread at work holds one place, a fork holds all. A shared mutex would not do: it identifies its writer by the
    // thread, and the child cannot unlock it.
    static constexpr std::size_t PLACES = 32;
    using Places = std::array<std::mutex, PLACES>;

    static std::unique_lock<std::mutex> takePlace();

    static Places places;
    static bool isOver;

    std::unique_lock<std::mutex> place;
};

// Makes a PROJ context that is silent and offline. It searches for files in the search directories, then in PROJ's data
// directories, and nowhere else. It shares nothing with other users of PROJ in the process. Never released. Throws
// std::bad_alloc.
PJ_CONTEXT* makeContext();

// Makes `context` read PROJ's files (grids, proj.ini, the search for proj.db) through this library.
//
// Only regular files are opened, read-only and by an absolute path. PROJ's user-writable directory and the working
// directory are never used. Every file has its own position, which a fork does not share, and programs that the process
// starts do not inherit its descriptor.
void readFilesThroughLibrary(PJ_CONTEXT* context);

// Whether a file could not be opened or read on this thread for a temporary reason, such as too many open files. PROJ
// takes such a file for a missing one. Resets the answer to false.
bool takeFileFailure();

// Guards the list of open files. Taken after all other locks.
extern std::mutex projFilesLock;

// Closes the files that the child of a fork has inherited; PROJ must not use them afterwards. Neither allocates nor
// waits.
void closeInheritedFiles();

// Makes the PROJ object of the text, always complete. Returns null, with the reason in the error number of the context,
// if PROJ cannot make it. Throws std::bad_alloc when memory runs out. In that case make no more objects with `context`:
// PROJ miscounts its nesting, and after a few times the context fails. Objects already made with it remain usable.
// Silences the context.
//
// REQUIRES: no other thread uses `context`. With several threads, ProjWork is held.
ProjectionPtr makeProjection(PJ_CONTEXT* context, const std::string& text);

// Makes a grid shift in the same way. All its grids are open and complete, except optional grids that are missing.
ProjectionPtr makeGridShift(PJ_CONTEXT* context, const std::string& text);

}  // namespace ClassicProj
