#include "tools/projdir/Registry.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <utility>

#include "tools/projdir/Database.h"
#include "tools/projdir/Line.h"

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

std::optional<Area> readArea(const PROJ_CRS_INFO& info) {
    if (info.bbox_valid == 0) return std::nullopt;
    return Area{info.west_lon_degree, info.south_lat_degree, info.east_lon_degree, info.north_lat_degree};
}

struct ByCode {
    bool operator()(const RegistryCrs& crs, unsigned int code) const { return crs.code < code; }
    bool operator()(unsigned int code, const RegistryCrs& crs) const { return code < crs.code; }
};

RegistryCrs readCrs(const PROJ_CRS_INFO& info) {
    RegistryCrs crs;
    crs.code = readRegistryCode(info.code);
    crs.name = textOrEmpty(info.name);
    crs.kind = kindOf(info.type);
    crs.isDeprecated = info.deprecated != 0;
    crs.area = readArea(info);
    crs.areaName = textOrEmpty(info.area_name);
    return crs;
}

std::string describeSearch() {
    for (const char* variable : {"PROJ_DATA", "PROJ_LIB"}) {
        const char* const value = std::getenv(variable);
        if (value != nullptr) return std::string(" (") + variable + " is \"" + value + "\")";
    }
    return " in " + textOrEmpty(proj_info().searchpath);
}

// Nothing beyond what the message says already, where there is no database at all.
std::string describeFailure(const ProjContext& context) {
    const std::string& failure = context.databaseFailure();
    if (failure.empty() || failure.find("Cannot find proj.db") != std::string::npos) return "";
    return ": " + toOneLine(abridge(failure));
}

std::string readMetadata(const ProjContext& context, const char* key) {
    const char* const value = proj_context_get_database_metadata(context.get(), key);
    if (value != nullptr) return value;
    throw RegistryError("PROJ finds no usable database proj.db" + describeSearch() + describeFailure(context));
}

std::string databasePath(const ProjContext& context) {
    const std::filesystem::path path(textOrEmpty(proj_context_get_database_path(context.get())));
    return path.lexically_normal().string();
}

// What PROJ lists in another way than the registry is read in. Other kinds of CRS have no definitions.
std::vector<unsigned int> listCodes(const ProjContext& context) {
    std::vector<unsigned int> codes;
    for (const PJ_TYPE type : {PJ_TYPE_GEODETIC_CRS, PJ_TYPE_PROJECTED_CRS}) {
        const ProjPtr<char*> list(proj_get_codes_from_database(context.get(), AUTHORITY, type, 1));
        for (char** code = list.get(); code != nullptr && *code != nullptr; ++code)
            codes.push_back(readRegistryCode(*code));
    }
    return codes;
}

void requireListed(const std::vector<RegistryCrs>& registry, const std::vector<unsigned int>& codes) {
    for (const unsigned int code : codes)
        if (!std::binary_search(registry.begin(), registry.end(), code, ByCode{}))
            throw RegistryError("PROJ's database proj.db is damaged: PROJ lists EPSG:" + std::to_string(code) +
                                " among the codes and not among the CRS" + describeSearch());
}

// A CRS with several areas of use stands in PROJ's list with each of them.
void sortByCode(std::vector<RegistryCrs>& registry) {
    std::map<unsigned int, RegistryCrs> firstOfCode;
    for (RegistryCrs& crs : registry) firstOfCode.try_emplace(crs.code, std::move(crs));
    registry.clear();
    for (auto& [code, crs] : firstOfCode) registry.push_back(std::move(crs));
}

RegistryCrs* findCode(std::vector<RegistryCrs>& registry, const std::string& code) {
    const auto found = std::lower_bound(registry.begin(), registry.end(), readRegistryCode(code), ByCode{});
    return found == registry.end() || found->code != readRegistryCode(code) ? nullptr : &*found;
}

// Longitude rotations without an error of their own lead from a datum to the same one on Greenwich.
constexpr char SAME_BUT_FOR_MERIDIAN[] =
    "SELECT s.datum_auth_name || ':' || s.datum_code, t.datum_auth_name || ':' || t.datum_code, td.name"
    " FROM other_transformation o"
    " JOIN geodetic_crs s ON s.auth_name = o.source_crs_auth_name AND s.code = o.source_crs_code"
    " JOIN geodetic_crs t ON t.auth_name = o.target_crs_auth_name AND t.code = o.target_crs_code"
    " JOIN geodetic_datum sd ON sd.auth_name = s.datum_auth_name AND sd.code = s.datum_code"
    " JOIN geodetic_datum td ON td.auth_name = t.datum_auth_name AND td.code = t.datum_code"
    " WHERE o.auth_name = 'EPSG' AND o.method_auth_name = 'EPSG' AND o.method_code = '9601' AND o.accuracy = 0"
    " AND sd.prime_meridian_code <> '8901' AND td.prime_meridian_code = '8901'"
    " AND sd.ellipsoid_code = td.ellipsoid_code ORDER BY o.deprecated DESC, o.code DESC";

constexpr char DATUM_OF_CRS[] =
    "SELECT c.code, c.datum_auth_name || ':' || c.datum_code, d.name FROM geodetic_crs c"
    " JOIN geodetic_datum d ON d.auth_name = c.datum_auth_name AND d.code = c.datum_code WHERE c.auth_name = 'EPSG'";

constexpr char BASE_OF_CRS[] =
    "SELECT code, geodetic_crs_code FROM projected_crs WHERE auth_name = 'EPSG' AND geodetic_crs_auth_name = 'EPSG'";

constexpr char HORIZONTAL_OF_CRS[] =
    "SELECT code, horiz_crs_code FROM compound_crs WHERE auth_name = 'EPSG' AND horiz_crs_auth_name = 'EPSG'";

void linkDatums(const Database& database, std::vector<RegistryCrs>& registry) {
    std::map<std::string, Datum> onGreenwich;
    database.query(SAME_BUT_FOR_MERIDIAN, [&](const Database::Row& row) {
        onGreenwich[row[0]] = Datum{row[1], row[2]};
    });
    database.query(DATUM_OF_CRS, [&](const Database::Row& row) {
        RegistryCrs* const crs = findCode(registry, row[0]);
        if (crs == nullptr) return;
        const auto same = onGreenwich.find(row[1]);
        crs->datum = same == onGreenwich.end() ? Datum{row[1], row[2]} : same->second;
        crs->geodeticCode = crs->code;
    });
}

void linkBases(const Database& database, std::vector<RegistryCrs>& registry) {
    database.query(BASE_OF_CRS, [&](const Database::Row& row) {
        RegistryCrs* const crs = findCode(registry, row[0]);
        const RegistryCrs* const base = findCode(registry, row[1]);
        if (crs == nullptr || base == nullptr) return;
        crs->datum = base->datum;
        crs->geodeticCode = base->code;
    });
}

// Last, as a part brings its datum along.
void linkHorizontalParts(const Database& database, std::vector<RegistryCrs>& registry) {
    database.query(HORIZONTAL_OF_CRS, [&](const Database::Row& row) {
        RegistryCrs* const crs = findCode(registry, row[0]);
        const RegistryCrs* const part = findCode(registry, row[1]);
        if (crs == nullptr || part == nullptr) return;
        crs->horizontal = std::make_shared<const RegistryCrs>(*part);
        crs->datum = part->datum;
        crs->geodeticCode = part->geodeticCode;
    });
}

void linkRegistry(const Database& database, std::vector<RegistryCrs>& registry) {
    linkDatums(database, registry);
    linkBases(database, registry);
    linkHorizontalParts(database, registry);
}

}  // namespace

unsigned int readRegistryCode(const std::string& text) {
    unsigned int code = 0;
    std::from_chars(text.data(), text.data() + text.size(), code);
    return code;
}

// SQL statements are longer than what is wrong with them.
std::string abridge(const std::string& message) {
    constexpr std::size_t LONGEST_END = 100;
    if (message.size() <= 2 * LONGEST_END) return message;
    return message.substr(0, LONGEST_END) + " ... " + message.substr(message.size() - LONGEST_END);
}

std::string describe(const RegistryVersion& version) {
    return "EPSG Geodetic Parameter Dataset " + version.dataset + " of " + version.date +
           ", from the database of PROJ " + version.proj;
}

RegistryVersion readRegistryVersion(const ProjContext& context) {
    return {readMetadata(context, "EPSG.VERSION"), readMetadata(context, "EPSG.DATE"), proj_info().version};
}

std::vector<RegistryCrs> readRegistry(const ProjContext& context) {
    const Database database(databasePath(context));
    database.requireSoundPages();
    const ProjPtr<PROJ_CRS_LIST_PARAMETERS> parameters(proj_get_crs_list_parameters_create());
    parameters->allow_deprecated = 1;
    int count = 0;
    const ProjPtr<PROJ_CRS_INFO*> list(
        proj_get_crs_info_list_from_database(context.get(), AUTHORITY, parameters.get(), &count));
    std::vector<RegistryCrs> registry;
    registry.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) registry.push_back(readCrs(*list.get()[i]));
    sortByCode(registry);
    const std::vector<unsigned int> codes = listCodes(context);
    requireSoundDatabase(context, "the list of CRS");
    if (registry.empty()) throw RegistryError("PROJ's database proj.db has no EPSG CRS" + describeSearch());
    requireListed(registry, codes);
    linkRegistry(database, registry);
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

ProjPtr<PJ> createCrs(const ProjContext& context, unsigned int code) {
    const std::string text = std::to_string(code);
    ProjPtr<PJ> crs(proj_create_from_database(context.get(), AUTHORITY, text.c_str(), PJ_CATEGORY_CRS, 0, nullptr));
    requireSoundDatabase(context, "EPSG:" + text);
    if (crs == nullptr) throw RegistryError("PROJ cannot make EPSG:" + text);
    return crs;
}

void requireSoundDatabase(const ProjContext& context, const std::string& place) {
    if (context.databaseFailure().empty()) return;
    throw RegistryError("PROJ cannot read its database \"" + databasePath(context) + "\" at " + place + ": " +
                        toOneLine(abridge(context.databaseFailure())));
}

}  // namespace ProjDir
