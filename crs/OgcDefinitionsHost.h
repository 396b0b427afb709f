#pragma once

namespace CoordinateTransformation {

// The host of OGC's http CRS URIs, read and written alike (OGC 09-048).
constexpr char OGC_DEFINITIONS_HOST[] = "www.opengis.net";

}  // namespace CoordinateTransformation
