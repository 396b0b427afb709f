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
    /// A deep copy.
    CrsNotConfigured(const CrsNotConfigured& other);
    ~CrsNotConfigured() override;
    /// As TransformationException's assignment.
    CrsNotConfigured& operator=(const CrsNotConfigured& other);

    /// "qvCrsUnavailable".
    std::string getServiceExceptionCode() const override;
};

}  // namespace CoordinateTransformation
