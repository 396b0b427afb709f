#pragma once

// The codes that the server writes into its OGC exception reports.

namespace ServiceExceptionCodes {

constexpr char UNEXPECTED_EXCEPTION[] = "qvUnexpectedException";
constexpr char CONFIGURATION_ERROR[] = "qvConfigurationError";
constexpr char CRS_UNAVAILABLE[] = "qvCrsUnavailable";
constexpr char CONVERSION_ERROR[] = "qvConversionError";
constexpr char FILE_NOT_FOUND[] = "qvFileNotFound";

}  // namespace ServiceExceptionCodes
