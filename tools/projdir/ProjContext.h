#pragma once

#include <string>

#include "proj/classic/ProjHandles.h"

namespace ProjDir {

using ClassicProj::ProjPtr;

enum class GridUse { NONE, INSTALLED };

// A PROJ context of its own: off the network, and keeping PROJ's messages instead of printing them. Owns the
// context, which outlives every object made with it. One thread at a time.
//
// Without grids it finds the database and no other file, neither grids nor a proj.ini: what PROJ computes then depends
// on its version and its database alone.
//
// std::bad_alloc when PROJ has no memory for one.
class ProjContext {
public:
    explicit ProjContext(GridUse grids = GridUse::INSTALLED);
    ProjContext(const ProjContext&) = delete;
    ProjContext& operator=(const ProjContext&) = delete;

    PJ_CONTEXT* get() const { return context.get(); }
    // Reads the database through a handle of its own. All contexts that spell its path alike share one, and wait for
    // one another.
    void openDatabaseUnshared() const;
    // What PROJ said last, and forgets it.
    std::string takeMessage();
    // What PROJ said when it first failed over its database; empty while that is sound.
    const std::string& databaseFailure() const { return failure; }

private:
    static void keepMessage(void* self, int level, const char* text);

    std::string message;
    std::string failure;
    ProjPtr<PJ_CONTEXT> context;
};

// PROJ's texts may be null.
inline std::string textOrEmpty(const char* text) { return text == nullptr ? std::string() : std::string(text); }

}  // namespace ProjDir
