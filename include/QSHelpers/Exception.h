#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/structured_exception.h"

namespace QSHelpers {

/// The base of the failures of the shared helpers (number conversion, files). Abstract.
///
/// Thread-compatible, thrown by value and caught by reference.
///
/// Owns its texts; a copy is deep (structured_exception documents the details of copy and assignment).
class COORDTRANS_EXPORT Exception : public structured_exception {
public:
    /// \param auxiliary stored in the object; nothing reads it.
    /// \param situationName catalogue situation, borrowed (a string literal).
    /// \param text the message.
    /// \param reserve requests a reserve buffer.
    Exception(const std::string& auxiliary, const char* situationName, std::string text, bool reserve);
    /// Makes a deep copy, with the peculiarities of structured_exception.
    Exception(const Exception& other);
    ~Exception() override;
    /// Assigns as structured_exception does, and copies the message.
    Exception& operator=(const Exception& other);

    /// The message. Every concrete class defines it.
    const char* what() const noexcept override = 0;
    /// A copy of the message.
    std::string getDetailedMessage() const override;
    /// The code for the OGC exception report.
    virtual std::string getServiceExceptionCode() const = 0;

    /// Replaces the message. The catalogue parameter remains the message of the constructor.
    void setMessage(const std::string& text);

protected:
    /// The message, for the `what()` of the concrete classes.
    const std::string& getMessage() const noexcept { return message; }

private:
    std::string auxiliaryText;
    std::string message;
};

}  // namespace QSHelpers
