#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/TransformationException.h"

namespace CoordinateTransformation {

/// A bounding box leaves its bounds. Offered to callers; the library itself never raises it. Service exception
/// code "qvUnexpectedException".
class COORDTRANS_EXPORT BBoxOutOfBounds : public TransformationException {
public:
    /// \param text the message.
    explicit BBoxOutOfBounds(std::string text = "BoundingBox: out of bounds!");
    ~BBoxOutOfBounds() override;
};

}  // namespace CoordinateTransformation
