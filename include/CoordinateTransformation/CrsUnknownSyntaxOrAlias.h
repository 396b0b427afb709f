#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/TransformationException.h"

namespace CoordinateTransformation {

/// No recogniser accepts the CRS name, and the configuration does not have it.
class COORDTRANS_EXPORT CrsUnknownSyntaxOrAlias : public TransformationException {
public:
    /// \param name the CRS name that the caller gave; part of the message.
    explicit CrsUnknownSyntaxOrAlias(std::string name);
    ~CrsUnknownSyntaxOrAlias() override;

    /// "qvCrsUnavailable".
    std::string getServiceExceptionCode() const override;
};

}  // namespace CoordinateTransformation
