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

// Registered at load. A host that uses the library registers its handlers later, so they run while the library's locks
// are free. The C library removes the handlers when the library is unloaded.
[[maybe_unused]] const int registered = pthread_atfork(beforeFork, afterFork, afterForkInChild);

ClassicProj::projPJ projectionOf(const AbstractCrs* crs) {
    // Only Proj4CrsCreator gives this transformer to CRS, and all of them are Proj4Crs, so the type needs no check. A
    // missing CRS has no identifier for the message.
    if (crs == nullptr) throw Misconfigured("No PROJ4 definition for CRS  found");
    return static_cast<ClassicProj::projPJ>(static_cast<const Proj4Crs*>(crs)->getProjDef());
}

}  // namespace

Proj4Transformer* getProj4Transformer() {
    static auto* const transformer = new (std::nothrow) Proj4Transformer;
    return transformer;
}

Proj4Transformer* theProj4Transformer = getProj4Transformer();

// PROJ takes easting first. Intended: the result is exchanged before the error is examined, also after a failure.
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
