#include "CoordinateTransformation/FatalSubsystemError.h"

namespace CoordinateTransformation {

FatalSubsystemError::FatalSubsystemError(std::string errorCode)
    : TransformationException(std::string(), "FatalSubsystemError",
                              "An unknown fatal error occurred in the transformation subsystem. \t\t\tPlease report "
                              "this bug! Error code: " +
                                  errorCode,
                              false) {}

FatalSubsystemError::FatalSubsystemError(const FatalSubsystemError& other) = default;
FatalSubsystemError::~FatalSubsystemError() = default;
FatalSubsystemError& FatalSubsystemError::operator=(const FatalSubsystemError& other) = default;

}  // namespace CoordinateTransformation
