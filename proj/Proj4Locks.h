#pragma once

#include <map>
#include <mutex>

#include "proj/classic/ClassicProj.h"

namespace CoordinateTransformation {

// Serialises every use of pj_transform.
extern std::mutex proj4TransformLock;

// Guards the binding of codes to PROJ objects, and proj4DefCache.
extern std::mutex proj4DefLock;

// Primary EPSG code to its PROJ object; entries are never removed.
extern std::map<unsigned int, ClassicProj::projPJ>& proj4DefCache;

}  // namespace CoordinateTransformation
