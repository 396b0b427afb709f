#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/structured_exception.h"

namespace CoordinateTransformation {

/// The base of the library's own failures: a readable message and the service exception code that the server writes
/// into its exception report.
///
/// Thread-compatible, thrown by value and caught by reference.
///
/// Owns its texts; a copy is deep (structured_exception documents the details of copy and assignment). The catalogue's
/// first parameter is the finished message.
class COORDTRANS_EXPORT TransformationException : public structured_exception {
public:
    /// \param auxiliary stored in the object; nothing reads it.
    /// \param situationName catalogue situation, borrowed (a string literal).
    /// \param text the message.
    /// \param reserve requests a reserve buffer.
    TransformationException(const std::string& auxiliary, const char* situationName, std::string text, bool reserve);
    /// Makes a deep copy, with the peculiarities of structured_exception.
    TransformationException(const TransformationException& other);
    ~TransformationException() override;
    /// Assigns as structured_exception does, and copies the message.
    TransformationException& operator=(const TransformationException& other);

    /// The message.
    const char* what() const noexcept override;
    /// A copy of the message.
    std::string getDetailedMessage() const override;
    /// The code for the OGC exception report: "qvUnexpectedException" unless a subclass has another.
    virtual std::string getServiceExceptionCode() const;

    /// Replaces the message. The catalogue parameter remains the message of the constructor.
    void setMessage(const std::string& text);

private:
    std::string auxiliaryText;
    std::string message;
};

}  // namespace CoordinateTransformation
