#pragma once

namespace CoordinateTransformation {

// WGS 84 in two and in three dimensions: one CRS for the library.
constexpr unsigned int EPSG_WGS84_2D = 4326;
constexpr unsigned int EPSG_WGS84_3D = 4979;

}  // namespace CoordinateTransformation
