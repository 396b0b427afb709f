#include "proj/Proj4Transformer.h"

#include <new>
#include <pthread.h>
#include <utility>

#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/Proj4Crs.h"
#include "CoordinateTransformation/TransExecException.h"
#include "platform/ErrnoGuard.h"
#include "proj/Proj4Locks.h"
#include "proj/classic/ClassicProj.h"

namespace CoordinateTransformation {

SpinningMutex proj4TransformLock;
std::mutex proj4DefLock;

std::map<unsigned int, ClassicProj::projPJ>& getProj4DefCache() {
    // Never released: threads may still run when the process ends.
    static auto& cache = *new std::map<unsigned int, ClassicProj::projPJ>;
    return cache;
}

std::map<unsigned int, ClassicProj::projPJ>& proj4DefCache = getProj4DefCache();

namespace {

void beforeFork() {
    proj4DefLock.lock();
    proj4TransformLock.lock();
    ClassicProj::lockForFork();
}

void afterFork() {
    ClassicProj::unlockAfterFork();
    proj4TransformLock.unlock();
    proj4DefLock.unlock();
}

void afterForkInChild() {
    ClassicProj::resetInChild();
    afterFork();
}

// At load: handlers of a host that use the library are registered later, and so run while its locks are free. The C
// library forgets the handlers when the library is unloaded.
[[maybe_unused]] const int registered = pthread_atfork(beforeFork, afterFork, afterForkInChild);

ClassicProj::projPJ projectionOf(const AbstractCrs* crs) {
    // Only Proj4CrsCreator hands this transformer out, to Proj4Crs alone, so the type needs no check. The CRS that is
    // missing has no identifier to name.
    if (crs == nullptr) throw Misconfigured("No PROJ4 definition for CRS  found");
    return static_cast<ClassicProj::projPJ>(static_cast<const Proj4Crs*>(crs)->getProjDef());
}

}  // namespace

Proj4Transformer* getProj4Transformer() {
    static auto* const transformer = new (std::nothrow) Proj4Transformer;
    return transformer;
}

Proj4Transformer* theProj4Transformer = getProj4Transformer();

// PROJ takes easting first. Intended: the result is exchanged before the error is looked at, also for a failure.
void Proj4Transformer::transformCoordinates(const AbstractCrs* source, const AbstractCrs* target, double& x, double& y,
                                            double* z) const {
    const ErrnoGuard errnoGuard;
    const TransformGuard guard;
    const ClassicProj::projPJ from = projectionOf(source);
    const ClassicProj::projPJ to = projectionOf(target);
    const bool sourceEastNorth = source->isAxisOrderEastNorthOrLonLat();
    const int error = sourceEastNorth ? ClassicProj::pj_transform(from, to, 1, 1, &x, &y, z)
                                      : ClassicProj::pj_transform(from, to, 1, 1, &y, &x, z);
    if (sourceEastNorth != target->isAxisOrderEastNorthOrLonLat()) std::swap(x, y);
    if (error != 0) throw TransExecException(ClassicProj::pj_strerrno(error));
}

}  // namespace CoordinateTransformation
