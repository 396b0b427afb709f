// The exceptions of the library and its helpers. Their destructors are defined here, which anchors their type
// information in the library.

#include <utility>

#include "CoordinateTransformation/BBoxOutOfBounds.h"
#include "CoordinateTransformation/CrsNotConfigured.h"
#include "CoordinateTransformation/CrsUnknownSyntaxOrAlias.h"
#include "CoordinateTransformation/FatalSubsystemError.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/TransExecException.h"
#include "CoordinateTransformation/TransformationException.h"
#include "QSHelpers/ConversionError.h"
#include "QSHelpers/Exception.h"
#include "QSHelpers/FileNotFoundException.h"
#include "QSHelpers/UnexpectedException.h"

namespace {

// The codes that the server writes into its OGC exception reports.
constexpr char UNEXPECTED_EXCEPTION[] = "qvUnexpectedException";
constexpr char CONFIGURATION_ERROR[] = "qvConfigurationError";
constexpr char CRS_UNAVAILABLE[] = "qvCrsUnavailable";
constexpr char CONVERSION_ERROR[] = "qvConversionError";
constexpr char FILE_NOT_FOUND[] = "qvFileNotFound";

// The situation of both exceptions about an unavailable CRS.
constexpr char CRS_UNAVAILABLE_SITUATION[] = "CrsUnknownSyntaxOrAlias";

}  // namespace

namespace QSHelpers {

Exception::Exception(const std::string& auxiliary, const char* situationName, std::string text, bool reserve)
    : structured_exception("Exception", reserve, "QSHelpers", situationName, 0, nullptr, false),
      auxiliaryText(auxiliary),
      message(std::move(text)) {
    const char* const list[] = {message.c_str()};
    setParameters(1, list);
}

Exception::Exception(const Exception& other) = default;
Exception::~Exception() = default;
Exception& Exception::operator=(const Exception& other) = default;

std::string Exception::getDetailedMessage() const { return message; }

void Exception::setMessage(const std::string& text) { message = text; }

ConversionError::ConversionError(std::string text)
    : Exception(std::string(), "ConversionError", std::move(text), false) {}

ConversionError::~ConversionError() = default;

const char* ConversionError::what() const noexcept { return getMessage().c_str(); }

std::string ConversionError::getServiceExceptionCode() const { return CONVERSION_ERROR; }

FileNotFoundException::FileNotFoundException(std::string text)
    : Exception(std::string(), "FileNotFound", std::move(text), false) {}

FileNotFoundException::~FileNotFoundException() = default;

const char* FileNotFoundException::what() const noexcept { return getMessage().c_str(); }

std::string FileNotFoundException::getServiceExceptionCode() const { return FILE_NOT_FOUND; }

UnexpectedException::UnexpectedException(std::string text)
    : Exception(std::string(), "UnexpectedException", std::move(text), false) {}

UnexpectedException::~UnexpectedException() = default;

const char* UnexpectedException::what() const noexcept { return getMessage().c_str(); }

std::string UnexpectedException::getServiceExceptionCode() const { return UNEXPECTED_EXCEPTION; }

}  // namespace QSHelpers

namespace CoordinateTransformation {

TransformationException::TransformationException(const std::string& auxiliary, const char* situationName,
                                                 std::string text, bool reserve)
    : structured_exception("TransformationException", reserve, "CoordTransformation", situationName, 0, nullptr, false),
      auxiliaryText(auxiliary),
      message(std::move(text)) {
    const char* const list[] = {message.c_str()};
    setParameters(1, list);
}

TransformationException::TransformationException(const TransformationException& other) = default;
TransformationException::~TransformationException() = default;
TransformationException& TransformationException::operator=(const TransformationException& other) = default;

const char* TransformationException::what() const noexcept { return message.c_str(); }

std::string TransformationException::getDetailedMessage() const { return message; }

std::string TransformationException::getServiceExceptionCode() const { return UNEXPECTED_EXCEPTION; }

void TransformationException::setMessage(const std::string& text) { message = text; }

BBoxOutOfBounds::BBoxOutOfBounds(std::string text)
    : TransformationException(std::string(), "BBoxOutOfBounds", std::move(text), false) {}

BBoxOutOfBounds::~BBoxOutOfBounds() = default;

CrsNotConfigured::CrsNotConfigured(std::string name)
    : TransformationException(std::string(), CRS_UNAVAILABLE_SITUATION,
                              "The requested CRS " + name + " is not set up in the configuration", false) {}

CrsNotConfigured::~CrsNotConfigured() = default;

std::string CrsNotConfigured::getServiceExceptionCode() const { return CRS_UNAVAILABLE; }

CrsUnknownSyntaxOrAlias::CrsUnknownSyntaxOrAlias(std::string name)
    : TransformationException(
          std::string(), CRS_UNAVAILABLE_SITUATION,
          "The requested CRS " + name + " is not available due to an unknown syntax or a missing identifier mapping",
          false) {}

CrsUnknownSyntaxOrAlias::~CrsUnknownSyntaxOrAlias() = default;

std::string CrsUnknownSyntaxOrAlias::getServiceExceptionCode() const { return CRS_UNAVAILABLE; }

FatalSubsystemError::FatalSubsystemError(std::string errorCode)
    : TransformationException(std::string(), "FatalSubsystemError",
                              "An unknown fatal error occurred in the transformation subsystem. \t\t\tPlease report "
                              "this bug! Error code: " +
                                  errorCode,
                              false) {}

FatalSubsystemError::~FatalSubsystemError() = default;

Misconfigured::Misconfigured(std::string text)
    : TransformationException(std::string(), "Misconfigured", std::move(text), false) {}

Misconfigured::~Misconfigured() = default;

std::string Misconfigured::getServiceExceptionCode() const { return CONFIGURATION_ERROR; }

TransExecException::TransExecException(std::string text)
    : TransformationException(std::string(), "TransExecException", std::move(text), true) {}

TransExecException::~TransExecException() = default;

}  // namespace CoordinateTransformation
