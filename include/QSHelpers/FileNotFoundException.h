#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "QSHelpers/Exception.h"

namespace QSHelpers {

/// A required file does not exist or is not a regular file; the message contains its path. Never leaves the library:
/// its start-up converts it to CoordinateTransformation::Misconfigured.
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
