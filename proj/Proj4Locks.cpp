#include "proj/Proj4Locks.h"

#include <pthread.h>

namespace CoordinateTransformation {

std::mutex proj4TransformLock;
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
    ClassicProj::startAfreshInChild();
    afterFork();
}

// At load: handlers of a host that use the library are registered later, and so run while its locks are free. The C
// library forgets the handlers when the library is unloaded.
[[maybe_unused]] const int registered = pthread_atfork(beforeFork, afterFork, afterForkInChild);

}  // namespace
}  // namespace CoordinateTransformation
