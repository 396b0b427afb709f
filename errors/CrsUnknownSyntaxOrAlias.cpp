#include "CoordinateTransformation/CrsUnknownSyntaxOrAlias.h"

#include "errors/CatalogueKeys.h"
#include "errors/ServiceExceptionCodes.h"

namespace CoordinateTransformation {

CrsUnknownSyntaxOrAlias::CrsUnknownSyntaxOrAlias(std::string name)
    : TransformationException(
          std::string(), CRS_UNAVAILABLE_SITUATION,
          "The requested CRS " + name + " is not available due to an unknown syntax or a missing identifier mapping",
          false) {}

CrsUnknownSyntaxOrAlias::CrsUnknownSyntaxOrAlias(const CrsUnknownSyntaxOrAlias& other) = default;
CrsUnknownSyntaxOrAlias::~CrsUnknownSyntaxOrAlias() = default;
CrsUnknownSyntaxOrAlias& CrsUnknownSyntaxOrAlias::operator=(const CrsUnknownSyntaxOrAlias& other) = default;

std::string CrsUnknownSyntaxOrAlias::getServiceExceptionCode() const { return ServiceExceptionCodes::CRS_UNAVAILABLE; }

}  // namespace CoordinateTransformation
