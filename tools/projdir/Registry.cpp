#include "tools/projdir/Registry.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <new>
#include <utility>

#include <sqlite3.h>

namespace ProjDir {
namespace {

constexpr char AUTHORITY[] = "EPSG";

bool has(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

// PROJ puts the name of the function in front of its message. Messages of the steps of an operation, such as
// "hgridshift: could not find required grid(s).", are about grids, which need not be installed. Some operations of a
// sound database cannot be made either.
bool isAboutDatabase(const std::string& message) {
    const std::string function = message.substr(0, message.find(':'));
    if (has(message, "SQLite") || has(function, "_database")) return true;
    return function.rfind("proj_", 0) == 0 && (has(message, "cannot build") || has(message, "not found"));
}

// A search path replaces all others. The database is set first, as it is not on the new path.
void hideFiles(PJ_CONTEXT* context) {
    const std::string database = textOrEmpty(proj_context_get_database_path(context));
    const char* const nowhere = "/nonexistent";
    proj_context_set_search_paths(context, 1, &nowhere);
    if (!database.empty()) proj_context_set_database_path(context, database.c_str(), nullptr, nullptr);
}

// SQLite's messages hold whole statements.
std::string abridge(const std::string& message) {
    constexpr std::size_t LONGEST_END = 100;
    if (message.size() <= 2 * LONGEST_END) return message;
    return message.substr(0, LONGEST_END) + " ... " + message.substr(message.size() - LONGEST_END);
}

// PROJ's database, read directly for relations that PROJ's interface does not list.
class Database {
public:
    // The cells of a row as text. A null is an empty text.
    using Row = std::vector<std::string>;

    explicit Database(std::string databasePath) : path(std::move(databasePath)) {
        sqlite3* opened = nullptr;
        const int result = sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr);
        connection.reset(opened);
        requireSuccess(result);
        // PROJ skips damaged pages, and does not report all of them.
        const std::string check = query("PRAGMA quick_check(1)").at(0).at(0);
        if (check != "ok") failAsDamaged(check);
    }

    // RegistryError when the database breaks off, std::bad_alloc when memory runs out.
    std::vector<Row> query(const char* statement) const {
        std::vector<Row> rows;
        requireSuccess(sqlite3_exec(connection.get(), statement, addRow, &rows, nullptr));
        return rows;
    }

private:
    struct Release {
        void operator()(sqlite3* database) const { sqlite3_close(database); }
    };

    // An exception must not pass through SQLite.
    static int addRow(void* rows, int count, char** cells, char** /*names*/) {
        try {
            Row& row = static_cast<std::vector<Row>*>(rows)->emplace_back();
            for (int i = 0; i < count; ++i) row.push_back(textOrEmpty(cells[i]));
            return 0;
        } catch (const std::bad_alloc&) {
            return 1;
        }
    }

    // SQLITE_ABORT means that addRow has run out of memory.
    void requireSuccess(int result) const {
        if (result == SQLITE_NOMEM || result == SQLITE_ABORT) throw std::bad_alloc();
        if (result != SQLITE_OK) failAsDamaged(sqlite3_errmsg(connection.get()));
    }

    [[noreturn]] void failAsDamaged(const std::string& reason) const {
        throw RegistryError("PROJ's database \"" + path + "\" is damaged: " + toOneLine(abridge(reason)));
    }

    std::string path;
    std::unique_ptr<sqlite3, Release> connection;
};

CrsKind kindOf(PJ_TYPE type) {
    if (type == PJ_TYPE_GEOGRAPHIC_2D_CRS || type == PJ_TYPE_GEOGRAPHIC_3D_CRS) return CrsKind::GEOGRAPHIC;
    if (type == PJ_TYPE_GEOCENTRIC_CRS) return CrsKind::GEOCENTRIC;
    if (type == PJ_TYPE_PROJECTED_CRS) return CrsKind::PROJECTED;
    if (type == PJ_TYPE_VERTICAL_CRS) return CrsKind::VERTICAL;
    return type == PJ_TYPE_COMPOUND_CRS ? CrsKind::COMPOUND : CrsKind::OTHER;
}

RegistryCrs readCrs(const PROJ_CRS_INFO& info) {
    RegistryCrs crs;
    crs.code = readCode(info.code).value_or(0);
    crs.name = textOrEmpty(info.name);
    crs.kind = kindOf(info.type);
    crs.isDeprecated = info.deprecated != 0;
    if (info.bbox_valid != 0)
        crs.area = Area{info.west_lon_degree, info.south_lat_degree, info.east_lon_degree, info.north_lat_degree};
    crs.areaName = textOrEmpty(info.area_name);
    return crs;
}

// By code. PROJ lists a CRS once for each of its areas of use; the first one counts.
using CrsByCode = std::map<unsigned int, RegistryCrs>;

CrsByCode listCrs(const ProjContext& context) {
    const ProjPtr<PROJ_CRS_LIST_PARAMETERS> parameters(proj_get_crs_list_parameters_create());
    parameters->allow_deprecated = 1;
    int count = 0;
    const ProjPtr<PROJ_CRS_INFO*> list(
        proj_get_crs_info_list_from_database(context.get(), AUTHORITY, parameters.get(), &count));
    CrsByCode registry;
    for (int i = 0; i < count; ++i) {
        RegistryCrs crs = readCrs(*list.get()[i]);
        registry.try_emplace(crs.code, std::move(crs));
    }
    return registry;
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
    if (value != nullptr) return value;
    const std::string& failure = context.databaseFailure();
    const bool isReason = !failure.empty() && !has(failure, "Cannot find proj.db");
    throw RegistryError("PROJ finds no usable database proj.db" + describeSearch() +
                        (isReason ? ": " + toOneLine(abridge(failure)) : ""));
}

std::string databasePath(const ProjContext& context) {
    const std::filesystem::path path(textOrEmpty(proj_context_get_database_path(context.get())));
    return path.lexically_normal().string();
}

// Compares two of PROJ's lists, for the kinds of CRS that have definitions. A damaged database may shorten one of them.
void requireEveryCode(const ProjContext& context, const CrsByCode& registry) {
    for (const PJ_TYPE type : {PJ_TYPE_GEODETIC_CRS, PJ_TYPE_PROJECTED_CRS}) {
        const ProjPtr<char*> list(proj_get_codes_from_database(context.get(), AUTHORITY, type, 1));
        for (char** code = list.get(); code != nullptr && *code != nullptr; ++code)
            if (registry.count(readCode(*code).value_or(0)) == 0)
                throw RegistryError("PROJ's database proj.db is damaged: PROJ lists EPSG:" + std::string(*code) +
                                    " among the codes and not among the CRS" + describeSearch());
    }
}

// A longitude rotation without an error of its own leads from a datum to the same one on Greenwich.
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

void linkDatums(const Database& database, CrsByCode& registry) {
    std::map<std::string, Datum> onGreenwich;
    for (const Database::Row& row : database.query(SAME_BUT_FOR_MERIDIAN)) onGreenwich[row[0]] = {row[1], row[2]};
    for (const Database::Row& row : database.query(DATUM_OF_CRS)) {
        const auto crs = registry.find(readCode(row[0]).value_or(0));
        if (crs == registry.end()) continue;
        const auto same = onGreenwich.find(row[1]);
        crs->second.datum = same == onGreenwich.end() ? Datum{row[1], row[2]} : same->second;
        crs->second.geodeticCode = crs->first;
    }
}

// Gives each CRS of the query the datum of the one that it is based on.
void linkBases(const Database& database, const char* query, CrsByCode& registry) {
    for (const Database::Row& row : database.query(query)) {
        const auto crs = registry.find(readCode(row[0]).value_or(0));
        const auto base = registry.find(readCode(row[1]).value_or(0));
        if (crs == registry.end() || base == registry.end()) continue;
        crs->second.datum = base->second.datum;
        crs->second.geodeticCode = base->second.geodeticCode;
        if (crs->second.kind == CrsKind::COMPOUND)
            crs->second.horizontal = std::make_shared<const RegistryCrs>(base->second);
    }
}

}  // namespace

ProjContext::ProjContext(GridUse grids) : context(proj_context_create()) {
    if (context == nullptr) throw std::bad_alloc();
    proj_log_level(get(), PJ_LOG_ERROR);
    proj_log_func(get(), this, keepMessage);
    proj_context_set_enable_network(get(), 0);
    if (grids == GridUse::NONE) hideFiles(get());
}

// PROJ does not handle exceptions out of here.
void ProjContext::keepMessage(void* self, int /*level*/, const char* text) {
    auto& kept = *static_cast<ProjContext*>(self);
    try {
        kept.message = textOrEmpty(text);
        if (kept.failure.empty() && isAboutDatabase(kept.message)) kept.failure = kept.message;
    } catch (const std::bad_alloc&) {
    }
}

void ProjContext::openDatabaseUnshared() const {
    static std::atomic<std::size_t> contexts{0};
    const std::string path = textOrEmpty(proj_context_get_database_path(get()));
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return;
    const std::string otherSpelling = path.substr(0, slash) + std::string(2 + contexts++, '/') + path.substr(slash + 1);
    proj_context_set_database_path(get(), otherSpelling.c_str(), nullptr, nullptr);
}

std::string ProjContext::takeMessage() { return std::exchange(message, std::string()); }

const char* nameOfKind(CrsKind kind) {
    constexpr const char* NAMES[] = {"geographic", "geocentric", "projected", "vertical", "compound", "other"};
    return NAMES[static_cast<std::size_t>(kind)];
}

bool isHorizontal(CrsKind kind) {
    return kind == CrsKind::GEOGRAPHIC || kind == CrsKind::GEOCENTRIC || kind == CrsKind::PROJECTED;
}

RegistryVersion readRegistryVersion(const ProjContext& context) {
    return {readMetadata(context, "EPSG.VERSION"), readMetadata(context, "EPSG.DATE"), proj_info().version};
}

std::string describe(const RegistryVersion& version) {
    return "EPSG Geodetic Parameter Dataset " + version.dataset + " of " + version.date +
           ", from the database of PROJ " + version.proj;
}

std::vector<RegistryCrs> readRegistry(const ProjContext& context) {
    const Database database(databasePath(context));
    CrsByCode registry = listCrs(context);
    requireSoundDatabase(context, "the list of CRS");
    if (registry.empty()) throw RegistryError("PROJ's database proj.db has no EPSG CRS" + describeSearch());
    requireEveryCode(context, registry);
    requireSoundDatabase(context, "the list of CRS");
    // In this order: each step copies what the one before has set.
    linkDatums(database, registry);
    linkBases(database, BASE_OF_CRS, registry);
    linkBases(database, HORIZONTAL_OF_CRS, registry);
    std::vector<RegistryCrs> list;
    list.reserve(registry.size());
    for (auto& [code, crs] : registry) list.push_back(std::move(crs));
    return list;
}

std::optional<unsigned int> readCode(const std::string& text) {
    unsigned int code = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), code);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return code;
}

std::string nameOfCode(unsigned int code) { return std::string(AUTHORITY) + ":" + std::to_string(code); }

ProjPtr<PJ> createCrs(const ProjContext& context, unsigned int code) {
    ProjPtr<PJ> crs(
        proj_create_from_database(context.get(), AUTHORITY, std::to_string(code).c_str(), PJ_CATEGORY_CRS, 0, nullptr));
    requireSoundDatabase(context, nameOfCode(code));
    if (crs == nullptr) throw RegistryError("PROJ cannot make " + nameOfCode(code));
    return crs;
}

void requireSoundDatabase(const ProjContext& context, const std::string& place) {
    if (context.databaseFailure().empty()) return;
    throw RegistryError("PROJ cannot read its database \"" + databasePath(context) + "\" at " + place + ": " +
                        toOneLine(abridge(context.databaseFailure())));
}

Axis readAxis(const ProjContext& context, const PJ* crs, int index) {
    const ProjPtr<PJ> axes(proj_crs_get_coordinate_system(context.get(), crs));
    const char* name = nullptr;
    const char* direction = nullptr;
    const char* unit = nullptr;
    double unitLength = 0;
    if (axes != nullptr)
        proj_cs_get_axis_info(context.get(), axes.get(), index, &name, nullptr, &direction, &unitLength, &unit, nullptr,
                              nullptr);
    return {textOrEmpty(name), textOrEmpty(direction), textOrEmpty(unit), unitLength};
}

std::vector<ProjPtr<PJ>> listObjects(const ProjContext& context, PJ_OBJ_LIST* objects) {
    const ProjPtr<PJ_OBJ_LIST> list(objects);
    std::vector<ProjPtr<PJ>> items;
    const int count = list == nullptr ? 0 : proj_list_get_count(list.get());
    for (int i = 0; i < count; ++i)
        if (ProjPtr<PJ> item(proj_list_get(context.get(), list.get(), i)); item != nullptr)
            items.push_back(std::move(item));
    return items;
}

Coordinates transform(const ProjPtr<PJ>& operation, PJ_DIRECTION direction, const Coordinates& point) {
    const auto [x, y, z] =
        proj_trans(operation.get(), direction, proj_coord(point[0], point[1], point[2], HUGE_VAL)).xyz;
    return {x, y, z};
}

std::vector<unsigned int> findReplacements(const ProjContext& context, const PJ* crs) {
    std::vector<unsigned int> codes;
    for (const ProjPtr<PJ>& replacement : listObjects(context, proj_get_non_deprecated(context.get(), crs)))
        if (textOrEmpty(proj_get_id_auth_name(replacement.get(), 0)) == AUTHORITY)
            codes.push_back(readCode(textOrEmpty(proj_get_id_code(replacement.get(), 0))).value_or(0));
    return codes;
}

std::string toOneLine(std::string text) {
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20U || c == 0x7F; };
    std::replace_if(text.begin(), text.end(), isControl, ' ');
    return text;
}

std::string writeLine(const std::string& text) { return toOneLine(text) + "\n"; }

}  // namespace ProjDir
