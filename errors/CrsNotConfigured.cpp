#include "CoordinateTransformation/CrsNotConfigured.h"

#include "errors/CatalogueKeys.h"
#include "errors/ServiceExceptionCodes.h"

namespace CoordinateTransformation {

CrsNotConfigured::CrsNotConfigured(std::string name)
    : TransformationException(std::string(), CRS_UNAVAILABLE_SITUATION,
                              "The requested CRS " + name + " is not set up in the configuration", false) {}

CrsNotConfigured::CrsNotConfigured(const CrsNotConfigured& other) = default;
CrsNotConfigured::~CrsNotConfigured() = default;
CrsNotConfigured& CrsNotConfigured::operator=(const CrsNotConfigured& other) = default;

std::string CrsNotConfigured::getServiceExceptionCode() const { return ServiceExceptionCodes::CRS_UNAVAILABLE; }

}  // namespace CoordinateTransformation
