#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/structured_exception.h"

namespace QSHelpers {

/// Base of the failures of the shared helpers (number conversion, files). Abstract.
///
/// Thread-compatible, thrown by value and caught by reference.
///
/// Owns its texts; a copy is deep (see structured_exception for what a copy and an assignment keep).
class COORDTRANS_EXPORT Exception : public structured_exception {
public:
    /// \param auxiliary kept with the object and read by nothing.
    /// \param situationName catalogue situation, borrowed (a string literal).
    /// \param text the message.
    /// \param reserve ask for a reserve buffer.
    Exception(const std::string& auxiliary, const char* situationName, std::string text, bool reserve);
    /// A deep copy, with the peculiarities of structured_exception.
    Exception(const Exception& other);
    ~Exception() override;
    /// As structured_exception's assignment, and the message is copied.
    Exception& operator=(const Exception& other);

    /// The message, in every concrete class.
    const char* what() const noexcept override = 0;
    /// A copy of the message.
    std::string getDetailedMessage() const override;
    /// Code for the OGC exception report.
    virtual std::string getServiceExceptionCode() const = 0;

    /// Replaces the message. The catalogue parameter keeps the message given at construction.
    void setMessage(const std::string& text);

protected:
    /// The message, for the `what()` of the concrete classes.
    const std::string& getMessage() const noexcept { return message; }

private:
    std::string auxiliaryText;
    std::string message;
};

}  // namespace QSHelpers
