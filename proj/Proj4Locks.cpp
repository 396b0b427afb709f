#include "proj/Proj4Locks.h"

namespace CoordinateTransformation {

std::mutex proj4TransformLock;
std::mutex proj4DefLock;

std::map<unsigned int, ClassicProj::projPJ>& getProj4DefCache() {
    // Never released: threads may still run when the process ends.
    static auto& cache = *new std::map<unsigned int, ClassicProj::projPJ>;
    return cache;
}

std::map<unsigned int, ClassicProj::projPJ>& proj4DefCache = getProj4DefCache();

}  // namespace CoordinateTransformation
