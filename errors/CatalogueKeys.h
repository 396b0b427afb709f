#pragma once

// Keys of the message catalogue that more than one place uses.

namespace CoordinateTransformation {

// The pair under which every platform fault reports.
constexpr char PLATFORM_FAULT_SUBSYSTEM[] = "exception";
constexpr char PLATFORM_FAULT_SITUATION[] = "default";

// Both exceptions about a CRS that cannot be had report under this one situation.
constexpr char CRS_UNAVAILABLE_SITUATION[] = "CrsUnknownSyntaxOrAlias";

}  // namespace CoordinateTransformation
