#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>

#include "CoordinateTransformation/CoordinateTransformation.h"

// Functions that the fuzz targets share.
namespace Fuzz {

inline std::string text(const std::uint8_t* data, std::size_t size) {
    return std::string(reinterpret_cast<const char*>(data), size);
}

// Aborts the run if a property does not hold.
inline void require(bool holds) {
    if (!holds) std::abort();
}

// Returns the only configuration of the process. It uses data/proj and offers a CRS, an alias and a compound CRS.
inline const CoordinateTransformation::CrsConfig& configuration() {
    using CoordinateTransformation::CrsConfig;
    using CoordinateTransformation::CrsConfigData;
    static const CrsConfig* const config = [] {
        CrsConfig* const made = CrsConfig::createConfigFromId("proj4");
        made->setConfigProperty("Proj4ConfigDir", COORDTRANS_SOURCE_DIR "/data/proj");
        made->addCrsConfigData(CrsConfigData("EPSG:4326"));
        made->addCrsConfigData(CrsConfigData("UTM32", "25832"));
        made->addCrsConfigData(CrsConfigData("EPSG:27700*EPSG:5701"));
        made->init();
        return made;
    }();
    return *config;
}

}  // namespace Fuzz
