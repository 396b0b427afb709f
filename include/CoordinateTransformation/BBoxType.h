#pragma once

#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

/// A bounding box as the server sees it. The server may implement it; the library neither derives from it nor calls it.
///
/// Threads and ownership are up to the implementation. Has no state; a copy copies nothing.
class COORDTRANS_EXPORT BBoxType {
public:
    virtual ~BBoxType();
    /// Extends the box to contain the point.
    virtual void extend(double x, double y) = 0;
    /// Whether the box contains no point.
    virtual bool isEmpty() const = 0;
};

}  // namespace CoordinateTransformation
