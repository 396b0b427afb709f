#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "QSHelpers/Exception.h"

namespace QSHelpers {

/// A text is not a number, or a number cannot be written; the message contains the value.
class COORDTRANS_EXPORT ConversionError : public Exception {
public:
    /// \param text the message.
    explicit ConversionError(std::string text);
    ~ConversionError() override;

    /// The message.
    const char* what() const noexcept override;
    /// "qvConversionError".
    std::string getServiceExceptionCode() const override;
};

}  // namespace QSHelpers
