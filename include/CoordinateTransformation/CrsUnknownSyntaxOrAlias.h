#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/TransformationException.h"

namespace CoordinateTransformation {

/// A CRS name in a spelling that no recogniser accepts and the configuration does not hold.
class COORDTRANS_EXPORT CrsUnknownSyntaxOrAlias : public TransformationException {
public:
    /// \param name the CRS as the caller named it; becomes part of the message.
    explicit CrsUnknownSyntaxOrAlias(std::string name);
    ~CrsUnknownSyntaxOrAlias() override;

    /// "qvCrsUnavailable".
    std::string getServiceExceptionCode() const override;
};

}  // namespace CoordinateTransformation
