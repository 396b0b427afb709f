#include "proj/Proj4Locks.h"

namespace CoordinateTransformation {

std::mutex proj4TransformLock;
std::mutex proj4DefLock;
std::map<unsigned int, ClassicProj::projPJ> proj4DefCache;

}  // namespace CoordinateTransformation
