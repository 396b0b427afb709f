#include "CoordinateTransformation/Misconfigured.h"

#include <utility>

#include "errors/ServiceExceptionCodes.h"

namespace CoordinateTransformation {

Misconfigured::Misconfigured(std::string text)
    : TransformationException(std::string(), "Misconfigured", std::move(text), false) {}

Misconfigured::Misconfigured(const Misconfigured& other) = default;
Misconfigured::~Misconfigured() = default;
Misconfigured& Misconfigured::operator=(const Misconfigured& other) = default;

std::string Misconfigured::getServiceExceptionCode() const { return ServiceExceptionCodes::CONFIGURATION_ERROR; }

}  // namespace CoordinateTransformation
