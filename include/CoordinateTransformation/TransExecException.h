#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/TransformationException.h"

namespace CoordinateTransformation {

/// A point cannot be transformed. Service exception code "qvUnexpectedException". No other subclass of
/// structured_exception in the library requests a reserve buffer.
class COORDTRANS_EXPORT TransExecException : public TransformationException {
public:
    /// \param text the message; the transformer passes PROJ's own text for the failure.
    explicit TransExecException(std::string text = "Transformation of coordinates failed");
    ~TransExecException() override;
};

}  // namespace CoordinateTransformation
