#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "QSHelpers/Exception.h"

namespace QSHelpers {

/// An operation cannot give the requested result, such as the URL of an unknown CRS.
class COORDTRANS_EXPORT UnexpectedException : public Exception {
public:
    /// \param text the message.
    explicit UnexpectedException(std::string text);
    ~UnexpectedException() override;

    /// The message.
    const char* what() const noexcept override;
    /// "qvUnexpectedException".
    std::string getServiceExceptionCode() const override;
};

}  // namespace QSHelpers
