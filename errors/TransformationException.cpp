#include "CoordinateTransformation/TransformationException.h"

#include <utility>

#include "errors/ServiceExceptionCodes.h"

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

std::string TransformationException::getServiceExceptionCode() const {
    return ServiceExceptionCodes::UNEXPECTED_EXCEPTION;
}

void TransformationException::setMessage(const std::string& text) { message = text; }

}  // namespace CoordinateTransformation
