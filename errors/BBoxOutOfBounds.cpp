#include "CoordinateTransformation/BBoxOutOfBounds.h"

#include <utility>

namespace CoordinateTransformation {

BBoxOutOfBounds::BBoxOutOfBounds(std::string text)
    : TransformationException(std::string(), "BBoxOutOfBounds", std::move(text), false) {}

BBoxOutOfBounds::BBoxOutOfBounds(const BBoxOutOfBounds& other) = default;
BBoxOutOfBounds::~BBoxOutOfBounds() = default;
BBoxOutOfBounds& BBoxOutOfBounds::operator=(const BBoxOutOfBounds& other) = default;

}  // namespace CoordinateTransformation
