#include "tools/projdir/Registry.h"

#include <charconv>
#include <cstdlib>
#include <map>
#include <utility>

namespace ProjDir {

namespace {

constexpr char AUTHORITY[] = "EPSG";

CrsKind kindOf(PJ_TYPE type) {
    switch (type) {
        case PJ_TYPE_GEOGRAPHIC_2D_CRS:
        case PJ_TYPE_GEOGRAPHIC_3D_CRS:
            return CrsKind::GEOGRAPHIC;
        case PJ_TYPE_GEOCENTRIC_CRS:
            return CrsKind::GEOCENTRIC;
        case PJ_TYPE_PROJECTED_CRS:
            return CrsKind::PROJECTED;
        case PJ_TYPE_VERTICAL_CRS:
            return CrsKind::VERTICAL;
        case PJ_TYPE_COMPOUND_CRS:
            return CrsKind::COMPOUND;
        default:
            return CrsKind::OTHER;
    }
}

unsigned int readCode(const std::string& text) {
    unsigned int code = 0;
    std::from_chars(text.data(), text.data() + text.size(), code);
    return code;
}

std::optional<Area> readArea(const PROJ_CRS_INFO& info) {
    if (info.bbox_valid == 0) return std::nullopt;
    return Area{info.west_lon_degree, info.south_lat_degree, info.east_lon_degree, info.north_lat_degree};
}

RegistryCrs readCrs(const PROJ_CRS_INFO& info) {
    return {readCode(info.code), textOrEmpty(info.name), kindOf(info.type), info.deprecated != 0, readArea(info)};
}

std::string describeSearch() {
    for (const char* variable : {"PROJ_DATA", "PROJ_LIB"}) {
        const char* const value = std::getenv(variable);
        if (value != nullptr) return std::string(" (") + variable + " is \"" + value + "\")";
    }
    return " in " + textOrEmpty(proj_info().searchpath);
}

std::string readMetadata(const ProjContext& context, const char* key) {
    const char* const value = proj_context_get_database_metadata(context.get(), key);
    if (value == nullptr) throw RegistryError("PROJ finds no usable database proj.db" + describeSearch());
    return value;
}

// A CRS with several areas of use stands in PROJ's list with each of them.
void sortByCode(std::vector<RegistryCrs>& registry) {
    std::map<unsigned int, RegistryCrs> firstOfCode;
    for (RegistryCrs& crs : registry) firstOfCode.try_emplace(crs.code, std::move(crs));
    registry.clear();
    for (auto& [code, crs] : firstOfCode) registry.push_back(std::move(crs));
}

}  // namespace

std::string describe(const RegistryVersion& version) {
    return "EPSG Geodetic Parameter Dataset " + version.dataset + " of " + version.date +
           ", from the database of PROJ " + version.proj;
}

RegistryVersion readRegistryVersion(const ProjContext& context) {
    return {readMetadata(context, "EPSG.VERSION"), readMetadata(context, "EPSG.DATE"), proj_info().version};
}

std::vector<RegistryCrs> readRegistry(const ProjContext& context) {
    const std::unique_ptr<PROJ_CRS_LIST_PARAMETERS, Destroy> parameters(proj_get_crs_list_parameters_create());
    parameters->allow_deprecated = 1;
    int count = 0;
    const std::unique_ptr<PROJ_CRS_INFO*, Destroy> list(
        proj_get_crs_info_list_from_database(context.get(), AUTHORITY, parameters.get(), &count));
    std::vector<RegistryCrs> registry;
    for (int i = 0; i < count; ++i) registry.push_back(readCrs(*list.get()[i]));
    if (registry.empty()) throw RegistryError("PROJ's database proj.db has no EPSG CRS" + describeSearch());
    sortByCode(registry);
    return registry;
}

const char* nameOfKind(CrsKind kind) {
    switch (kind) {
        case CrsKind::GEOGRAPHIC:
            return "geographic";
        case CrsKind::GEOCENTRIC:
            return "geocentric";
        case CrsKind::PROJECTED:
            return "projected";
        case CrsKind::VERTICAL:
            return "vertical";
        case CrsKind::COMPOUND:
            return "compound";
        default:
            return "other";
    }
}

PjPtr openCrs(const ProjContext& context, unsigned int code) {
    return PjPtr(
        proj_create_from_database(context.get(), AUTHORITY, std::to_string(code).c_str(), PJ_CATEGORY_CRS, 0, nullptr));
}

}  // namespace ProjDir
