#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/TransformationException.h"

namespace CoordinateTransformation {

/// The configuration, the PROJ directory or one of its files is unusable for the request. The message names the file,
/// line or value if there is one.
class COORDTRANS_EXPORT Misconfigured : public TransformationException {
public:
    /// \param text the message.
    explicit Misconfigured(std::string text);
    ~Misconfigured() override;

    /// "qvConfigurationError".
    std::string getServiceExceptionCode() const override;
};

}  // namespace CoordinateTransformation
