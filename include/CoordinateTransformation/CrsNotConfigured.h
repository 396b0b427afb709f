#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/TransformationException.h"

namespace CoordinateTransformation {

/// A CRS that the library understands but the server does not offer.
class COORDTRANS_EXPORT CrsNotConfigured : public TransformationException {
public:
    /// \param name the CRS as the caller named it; becomes part of the message.
    explicit CrsNotConfigured(std::string name);
    ~CrsNotConfigured() override;

    /// "qvCrsUnavailable".
    std::string getServiceExceptionCode() const override;
};

}  // namespace CoordinateTransformation
