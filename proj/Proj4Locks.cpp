#include "proj/Proj4Locks.h"

namespace CoordinateTransformation {

std::mutex proj4TransformLock;
std::mutex proj4DefLock;
// Never released: threads may still run when the process ends.
std::map<unsigned int, ClassicProj::projPJ>& proj4DefCache = *new std::map<unsigned int, ClassicProj::projPJ>;

}  // namespace CoordinateTransformation
