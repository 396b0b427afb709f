#include "tools/projdir/Registry.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <new>
#include <utility>

#include <sqlite3.h>

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

unsigned int readCode(const std::string& text) {
    unsigned int code = 0;
    std::from_chars(text.data(), text.data() + text.size(), code);
    return code;
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
    return {readCode(info.code), textOrEmpty(info.name), kindOf(info.type), info.deprecated != 0, readArea(info)};
}

std::string describeSearch() {
    for (const char* variable : {"PROJ_DATA", "PROJ_LIB"}) {
        const char* const value = std::getenv(variable);
        if (value != nullptr) return std::string(" (") + variable + " is \"" + value + "\")";
    }
    return " in " + textOrEmpty(proj_info().searchpath);
}

// SQL statements are longer than what is wrong with them.
std::string abridge(const std::string& message) {
    constexpr std::size_t LONGEST_END = 100;
    if (message.size() <= 2 * LONGEST_END) return message;
    return message.substr(0, LONGEST_END) + " ... " + message.substr(message.size() - LONGEST_END);
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

struct CloseDatabase {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

[[noreturn]] void failAsDamaged(const std::string& path, const std::string& reason) {
    throw RegistryError("PROJ's database \"" + path + "\" is damaged: " + toOneLine(abridge(reason)));
}

void requireSuccess(int result, sqlite3* database, const std::string& path) {
    if (result == SQLITE_NOMEM) throw std::bad_alloc();
    if (result != SQLITE_OK && result != SQLITE_ROW) failAsDamaged(path, sqlite3_errmsg(database));
}

// PROJ goes on with less where a page is damaged, and does not report each of them.
void requireSoundPages(const ProjContext& context) {
    const char* const name = proj_context_get_database_path(context.get());
    const std::string path = std::filesystem::path(textOrEmpty(name)).lexically_normal().string();
    sqlite3* handle = nullptr;
    const int opened = sqlite3_open_v2(path.c_str(), &handle, SQLITE_OPEN_READONLY, nullptr);
    const std::unique_ptr<sqlite3, CloseDatabase> database(handle);
    requireSuccess(opened, handle, path);
    sqlite3_stmt* prepared = nullptr;
    requireSuccess(sqlite3_prepare_v2(handle, "PRAGMA quick_check(1)", -1, &prepared, nullptr), handle, path);
    const std::unique_ptr<sqlite3_stmt, CloseDatabase> statement(prepared);
    requireSuccess(sqlite3_step(prepared), handle, path);
    const auto* const verdict = reinterpret_cast<const char*>(sqlite3_column_text(prepared, 0));
    if (verdict == nullptr) throw std::bad_alloc();
    if (std::string(verdict) != "ok") failAsDamaged(path, verdict);
}

// What PROJ lists in another way than the registry is read in. Other kinds of CRS have no definitions.
std::vector<unsigned int> listCodes(const ProjContext& context) {
    std::vector<unsigned int> codes;
    for (const PJ_TYPE type : {PJ_TYPE_GEODETIC_CRS, PJ_TYPE_PROJECTED_CRS}) {
        const ProjPtr<char*> list(proj_get_codes_from_database(context.get(), AUTHORITY, type, 1));
        for (char** code = list.get(); code != nullptr && *code != nullptr; ++code) codes.push_back(readCode(*code));
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

}  // namespace

std::string describe(const RegistryVersion& version) {
    return "EPSG Geodetic Parameter Dataset " + version.dataset + " of " + version.date +
           ", from the database of PROJ " + version.proj;
}

RegistryVersion readRegistryVersion(const ProjContext& context) {
    return {readMetadata(context, "EPSG.VERSION"), readMetadata(context, "EPSG.DATE"), proj_info().version};
}

std::vector<RegistryCrs> readRegistry(const ProjContext& context) {
    requireSoundPages(context);
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
    const std::filesystem::path path(textOrEmpty(proj_context_get_database_path(context.get())));
    throw RegistryError("PROJ cannot read its database \"" + path.lexically_normal().string() + "\" at " + place +
                        ": " + toOneLine(abridge(context.databaseFailure())));
}

}  // namespace ProjDir
