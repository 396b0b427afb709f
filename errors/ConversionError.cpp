#include "QSHelpers/ConversionError.h"

#include <utility>

#include "errors/ServiceExceptionCodes.h"

namespace QSHelpers {

ConversionError::ConversionError(std::string text)
    : Exception(std::string(), "ConversionError", std::move(text), false) {}

ConversionError::ConversionError(const ConversionError& other) = default;
ConversionError::~ConversionError() = default;
ConversionError& ConversionError::operator=(const ConversionError& other) = default;

const char* ConversionError::what() const noexcept { return getMessage().c_str(); }

std::string ConversionError::getServiceExceptionCode() const { return ServiceExceptionCodes::CONVERSION_ERROR; }

}  // namespace QSHelpers
