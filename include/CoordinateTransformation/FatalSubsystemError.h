#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/TransformationException.h"

namespace CoordinateTransformation {

/// An internal fault of the library that should be reported as a bug. Service exception code
/// "qvUnexpectedException".
class COORDTRANS_EXPORT FatalSubsystemError : public TransformationException {
public:
    /// \param errorCode identifies the place of the fault; the end of the message.
    explicit FatalSubsystemError(std::string errorCode = "");
    ~FatalSubsystemError() override;
};

}  // namespace CoordinateTransformation
