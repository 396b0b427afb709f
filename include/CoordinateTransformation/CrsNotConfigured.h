#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/TransformationException.h"

namespace CoordinateTransformation {

/// The library knows the CRS, but the server does not offer it.
class COORDTRANS_EXPORT CrsNotConfigured : public TransformationException {
public:
    /// \param name the CRS name that the caller gave; part of the message.
    explicit CrsNotConfigured(std::string name);
    ~CrsNotConfigured() override;

    /// "qvCrsUnavailable".
    std::string getServiceExceptionCode() const override;
};

}  // namespace CoordinateTransformation
