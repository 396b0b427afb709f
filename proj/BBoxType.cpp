#include "CoordinateTransformation/BBoxType.h"

namespace CoordinateTransformation {

BBoxType::~BBoxType() = default;

}  // namespace CoordinateTransformation
