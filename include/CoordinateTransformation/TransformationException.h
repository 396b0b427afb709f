#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/structured_exception.h"

namespace CoordinateTransformation {

/// Base of the library's own failures: a readable message and the service exception code that the server
/// writes into its exception report.
///
/// Thread-compatible, thrown by value and caught by reference.
///
/// Owns its texts; a copy is deep (see structured_exception for what a copy and an assignment keep).
/// The finished message is also the catalogue's first parameter.
class COORDTRANS_EXPORT TransformationException : public structured_exception {
public:
    /// \param auxiliary kept with the object and read by nothing.
    /// \param situationName catalogue situation, borrowed (a string literal).
    /// \param text the message.
    /// \param reserve ask for a reserve buffer.
    TransformationException(const std::string& auxiliary, const char* situationName, std::string text, bool reserve);
    /// A deep copy, with the peculiarities of structured_exception.
    TransformationException(const TransformationException& other);
    ~TransformationException() override;
    /// As structured_exception's assignment, and the message is copied.
    TransformationException& operator=(const TransformationException& other);

    /// The message.
    const char* what() const noexcept override;
    /// A copy of the message.
    std::string getDetailedMessage() const override;
    /// Code for the OGC exception report; "qvUnexpectedException" unless a subclass says otherwise.
    virtual std::string getServiceExceptionCode() const;

    /// Replaces the message. The catalogue parameter keeps the message given at construction.
    void setMessage(const std::string& text);

private:
    std::string auxiliaryText;
    std::string message;
};

}  // namespace CoordinateTransformation
