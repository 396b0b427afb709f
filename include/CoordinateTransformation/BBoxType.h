#pragma once

#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

/// A bounding box as the server sees it. Offered to the server to implement; the library neither derives from
/// it nor calls it.
///
/// Threads and ownership are the implementation's. No state; a copy copies nothing.
class COORDTRANS_EXPORT BBoxType {
public:
    virtual ~BBoxType();
    /// Makes the box hold the point.
    virtual void extend(double x, double y) = 0;
    /// Whether the box holds no point.
    virtual bool isEmpty() const = 0;
};

}  // namespace CoordinateTransformation
