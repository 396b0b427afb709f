#pragma once

#include <map>
#include <mutex>

#include "platform/SpinningMutex.h"
#include "platform/ThreadSafety.h"
#include "proj/classic/ClassicProj.h"

namespace CoordinateTransformation {

// All locks around PROJ are held while the process forks, taken in the order proj4DefLock, proj4TransformLock, locks of
// the classic interface. A child therefore finds them free and the guarded data consistent. A new lock must get a place
// in that order. The catalogue's lock is never taken together with others, and the catalogue handles forks itself.

// Serialises every use of pj_transform.
//
// Threads that find it held spin before they sleep: a point takes less time than falling asleep.
extern SpinningMutex proj4TransformLock;

// Holds proj4TransformLock and the role that clang's analysis requires for pj_transform.
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

// Primary EPSG code to PROJ object. Entries are never removed. Made at first use, because a host's static initialisers
// may run before those of a static library.
std::map<unsigned int, ClassicProj::projPJ>& getProj4DefCache();

// The same cache, as a variable. It is null until the library is loaded, so the library itself calls the function.
extern std::map<unsigned int, ClassicProj::projPJ>& proj4DefCache;

}  // namespace CoordinateTransformation
