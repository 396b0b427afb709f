#pragma once

#include <memory>
#include <string>
#include <vector>

#include "CoordinateTransformation/CoordinateTransformation.h"

namespace FeatureServer {

using CoordinateTransformation::Bounds;
using CoordinateTransformation::Crs;
using CoordinateTransformation::CrsConfig;
using CoordinateTransformation::CrsDescription;

// What is thrown for a request that is answered with an exception report.
struct Refusal {
    int status;
    std::string code;
    std::string locator;
    std::string text;
};

// The text of the exception that is being handled, behind the service exception code if it has one.
std::string currentFailure();

enum class Protocol { WFS_1_1, WFS_2_0, API };

// A CRS as documents list it. An alias is listed only where its own form is used, so `urn` or `url` may be empty.
struct ListedCrs {
    std::string urn, url;
    bool eastFirst;
    int decimalPlaces;
    CrsDescription description;
};

// The CRS that the server offers, from one reading of the XML fragment.
//
// Threads: never changes; requests share it without locks. A request keeps it alive until its answer is complete,
// because its CRS handles borrow from the configurations.
class Offer {
public:
    // Throws what CrsConfig::init throws, and std::runtime_error if the fragment does not offer CRS:84.
    Offer(const std::string& fragmentFile, const std::string& projDirectory);

    // The CRS in the axis order of its name. Throws Refusal, at the parameter `locator`, for a name that is unknown,
    // bad or not offered.
    Crs named(Protocol protocol, const std::string& name, const std::string& locator) const;
    // The CRS in which an answer writes coordinates of two or three dimensions under `name`.
    Crs written(Protocol protocol, const std::string& name, const Crs& crs, std::size_t dimension) const;
    // The CRS with the easting or longitude first, as GDAL delivers coordinates.
    Crs stored(unsigned int code) const { return Crs(registry->getCreator().createFromCode(code, 0, false)); }
    bool offers(unsigned int code) const { return registry->isCrsConfigured(code); }

    // The name of a CRS in the form in which the request named it.
    static std::string nameLike(const std::string& requested, const Crs& crs);
    static std::string urnOf(const Crs& crs) { return crs->getAliasOrAsOgcURN(nullptr, false); }
    static std::string urlOf(const Crs& crs);
    int decimalPlaces(const Crs& crs) const;
    // The box of a layer, with the longitude first.
    Bounds geographicBox(unsigned int code, const Bounds& extent) const;
    const std::vector<ListedCrs>& listed() const { return list; }

private:
    const CrsConfig& of(Protocol protocol) const { return protocol == Protocol::WFS_1_1 ? *established : *registry; }

    // Clients of WFS 1.1 expect the longitude first under "EPSG:4326", those of the others the order of the registry.
    std::unique_ptr<const CrsConfig> established, registry;
    std::vector<ListedCrs> list;
};

}  // namespace FeatureServer
