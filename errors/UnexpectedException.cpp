#include "QSHelpers/UnexpectedException.h"

#include <utility>

#include "errors/ServiceExceptionCodes.h"

namespace QSHelpers {

UnexpectedException::UnexpectedException(std::string text)
    : Exception(std::string(), "UnexpectedException", std::move(text), false) {}

UnexpectedException::UnexpectedException(const UnexpectedException& other) = default;
UnexpectedException::~UnexpectedException() = default;
UnexpectedException& UnexpectedException::operator=(const UnexpectedException& other) = default;

const char* UnexpectedException::what() const noexcept { return getMessage().c_str(); }

std::string UnexpectedException::getServiceExceptionCode() const { return ServiceExceptionCodes::UNEXPECTED_EXCEPTION; }

}  // namespace QSHelpers
