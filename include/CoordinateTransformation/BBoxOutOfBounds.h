#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/TransformationException.h"

namespace CoordinateTransformation {

/// A bounding box lies outside the area that can be transformed. PointTransformer::transformBounds throws it; callers
/// may throw it too. Service exception code "qvUnexpectedException".
class COORDTRANS_EXPORT BBoxOutOfBounds : public TransformationException {
public:
    /// \param text the message.
    explicit BBoxOutOfBounds(std::string text = "BoundingBox: out of bounds!");
    ~BBoxOutOfBounds() override;
};

}  // namespace CoordinateTransformation
