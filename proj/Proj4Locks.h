#pragma once

#include <map>
#include <mutex>

#include "proj/classic/ClassicProj.h"

namespace CoordinateTransformation {

// Serialises every use of pj_transform.
extern std::mutex proj4TransformLock;

// Guards the binding of codes to PROJ objects, and proj4DefCache.
extern std::mutex proj4DefLock;

// Primary EPSG code to its PROJ object; entries are never removed. Made at first use: a host's static
// initialisers may run before those of a static library.
std::map<unsigned int, ClassicProj::projPJ>& getProj4DefCache();

// The same cache under the name that it has once the library is loaded. Null before, so the library reads it
// through the function.
extern std::map<unsigned int, ClassicProj::projPJ>& proj4DefCache;

}  // namespace CoordinateTransformation
