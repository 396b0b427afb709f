#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/TransformationException.h"

namespace CoordinateTransformation {

/// A point could not be transformed. Service exception code "qvUnexpectedException". The only subclass of
/// structured_exception in the library that asks for a reserve buffer.
class COORDTRANS_EXPORT TransExecException : public TransformationException {
public:
    /// \param text the message, from the transformer PROJ's own text for the failure.
    explicit TransExecException(std::string text = "Transformation of coordinates failed");
    ~TransExecException() override;
};

}  // namespace CoordinateTransformation
