#include "QSHelpers/Exception.h"

#include <utility>

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

}  // namespace QSHelpers
