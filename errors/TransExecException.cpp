#include "CoordinateTransformation/TransExecException.h"

#include <utility>

namespace CoordinateTransformation {

TransExecException::TransExecException(std::string text)
    : TransformationException(std::string(), "TransExecException", std::move(text), true) {}

TransExecException::TransExecException(const TransExecException& other) = default;
TransExecException::~TransExecException() = default;
TransExecException& TransExecException::operator=(const TransExecException& other) = default;

}  // namespace CoordinateTransformation
