#pragma once

#include <map>
#include <mutex>

#include "platform/SpinningMutex.h"
#include "platform/ThreadSafety.h"
#include "proj/classic/ClassicProj.h"

namespace CoordinateTransformation {

// All locks around PROJ are held while the process forks, in the order proj4DefLock, proj4TransformLock, those of the
// classic interface. So a child finds them free and what they guard in order. A new lock takes its place in that
// order. The catalogue, whose lock is taken alone, sees to its own.

// Serialises every use of pj_transform.
//
// Threads that meet at it spin before they sleep: a point takes less time than falling asleep.
extern SpinningMutex proj4TransformLock;

// Holds it, and with it the role without which clang lets nobody call pj_transform.
class COORDTRANS_THREAD_SAFETY(scoped_lockable) TransformGuard {
public:
    TransformGuard() COORDTRANS_THREAD_SAFETY(acquire_capability(ClassicProj::transformRole))
        : guard(proj4TransformLock) {}
    ~TransformGuard() COORDTRANS_THREAD_SAFETY(release_capability()) = default;
    TransformGuard(const TransformGuard&) = delete;
    TransformGuard& operator=(const TransformGuard&) = delete;

private:
    const std::lock_guard<SpinningMutex> guard;
};

// Guards the binding of codes to PROJ objects, and proj4DefCache.
extern std::mutex proj4DefLock;

// Primary EPSG code to its PROJ object; entries are never removed. Made at first use: a host's static
// initialisers may run before those of a static library.
std::map<unsigned int, ClassicProj::projPJ>& getProj4DefCache();

// The same cache under the name that it has once the library is loaded. Null before, so the library reads it
// through the function.
extern std::map<unsigned int, ClassicProj::projPJ>& proj4DefCache;

}  // namespace CoordinateTransformation
