#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "QSHelpers/Exception.h"

namespace QSHelpers {

/// A file that must exist does not, or is not a regular file; the message holds its path. Never leaves the
/// library, whose start-up turns it into CoordinateTransformation::Misconfigured.
class COORDTRANS_EXPORT FileNotFoundException : public Exception {
public:
    /// \param text the message.
    explicit FileNotFoundException(std::string text);
    ~FileNotFoundException() override;

    /// The message.
    const char* what() const noexcept override;
    /// "qvFileNotFound".
    std::string getServiceExceptionCode() const override;
};

}  // namespace QSHelpers
