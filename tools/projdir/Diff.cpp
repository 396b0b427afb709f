#include "tools/projdir/Diff.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <set>
#include <sstream>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include "CoordinateTransformation/CrsDescriptions.h"
#include "proj/classic/ClassicProj.h"
#include "text/CsvRow.h"
#include "text/InitFile.h"
#include "tools/projdir/DirectoryFiles.h"
#include "tools/projdir/Report.h"

namespace ProjDir {

using CoordinateTransformation::CsvRowIterator;

namespace {

using Json = nlohmann::ordered_json;

constexpr char WGS_84_DEFINITION[] = "+proj=longlat +datum=WGS84 +no_defs";
constexpr int MEASURED_PER_SIDE = 9;
constexpr double NO_PLACE = std::numeric_limits<double>::infinity();

std::string fileIn(const std::string& directory, const char* name) {
    return (std::filesystem::path(directory) / name).string();
}

void readAxisOrders(const std::string& table, std::map<unsigned int, DirectoryEntry>& entries) {
    std::istringstream stream(table);
    for (CsvRowIterator row(stream, ';'), end; row != end; ++row) {
        const std::optional<unsigned int> code = row->size() < 2 ? std::nullopt : readCode((*row)[0]);
        const auto entry = code ? entries.find(*code) : entries.end();
        if (entry != entries.end() && entry->second.axisOrder.empty()) entry->second.axisOrder = (*row)[1];
    }
}

std::multiset<ParameterList::Parameter> readParameters(const DirectoryEntry& entry) {
    const ParameterList parameters(entry.definition);
    return {parameters.begin(), parameters.end()};
}

bool isSame(const DirectoryEntry& before, const DirectoryEntry& after) {
    return before.axisOrder == after.axisOrder &&
           (before.definition == after.definition || readParameters(before) == readParameters(after));
}

// PROJ refuses a definition; what() is its reason.
class Refusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A definition in PROJ's classic interface.
class BoundDefinition {
public:
    // Refusal if PROJ refuses the text.
    explicit BoundDefinition(const std::string& text) : isGeocentric(ParameterList(text).get("proj") == "geocent") {
        ClassicProj::Context context;
        definition = ClassicProj::pj_init_plus_ctx(&context, text.c_str());
        if (definition == nullptr) throw Refusal(textOrEmpty(ClassicProj::pj_strerrno(context.error)));
    }

    // In the units of the definitions, radians for angles; nothing if PROJ has no result.
    std::optional<Coordinates> moveTo(const BoundDefinition& target, Coordinates point) const {
        const bool hasHeight = isGeocentric || target.isGeocentric;
        auto& [x, y, z] = point;
        const int error =
            ClassicProj::pj_transform(definition, target.definition, 1, 1, &x, &y, hasHeight ? &z : nullptr);
        if (error != 0 || !std::isfinite(x) || !std::isfinite(y)) return std::nullopt;
        return point;
    }

private:
    ClassicProj::projPJ definition = nullptr;
    bool isGeocentric;
};

// Nothing if the later definition has no coordinates.
std::optional<double> distanceAt(const LonLat& place, const BoundDefinition& wgs84, const BoundDefinition& before,
                                 const BoundDefinition& after) {
    const Coordinates start{place.longitude * RADIANS_PER_DEGREE, place.latitude * RADIANS_PER_DEGREE, 0};
    const std::optional<Coordinates> coordinates = wgs84.moveTo(after, start);
    if (!coordinates) return std::nullopt;
    const std::optional<Coordinates> now = after.moveTo(wgs84, *coordinates);
    const std::optional<Coordinates> once = before.moveTo(wgs84, *coordinates);
    if (!now || !once) return NO_PLACE;
    const auto toDegrees = [](const Coordinates& radians) {
        return LonLat{radians[0] / RADIANS_PER_DEGREE, radians[1] / RADIANS_PER_DEGREE};
    };
    return distanceInMetres(toDegrees(*now), toDegrees(*once));
}

std::optional<double> measureDistance(const EntryChange& change, const Area& area) {
    const BoundDefinition wgs84(WGS_84_DEFINITION);
    const BoundDefinition before(change.before.definition);
    const BoundDefinition after(change.after.definition);
    std::optional<double> largest;
    for (const LonLat& place : sampleArea(area, MEASURED_PER_SIDE))
        if (const std::optional<double> distance = distanceAt(place, wgs84, before, after))
            largest = std::max(largest.value_or(0), *distance);
    return largest;
}

std::map<unsigned int, KnownCrs> readDescriptions(const std::string& path) {
    std::map<unsigned int, KnownCrs> known;
    if (!std::filesystem::exists(path)) return known;
    for (const auto& crs : CoordinateTransformation::CrsDescriptions(path)) {
        KnownCrs& one = known[crs.code];
        one.name = crs.name;
        if (crs.box) one.area = Area{crs.box->west, crs.box->south, crs.box->east, crs.box->north};
    }
    return known;
}

std::string nameOf(unsigned int code, const DiffSides& sides) {
    const auto found = sides.known.find(code);
    return found == sides.known.end() ? "" : found->second.name;
}

std::string writeCode(unsigned int code, const DiffSides& sides) {
    const std::string name = nameOf(code, sides);
    return nameOfCode(code) + (name.empty() ? "" : " " + name);
}

std::string writeSide(const char* title, const DirectoryContent& content) {
    return writeLine(title + content.path + ": " + std::to_string(content.entries.size()) + " definitions" +
                     (content.head.empty() ? "" : "; " + content.head));
}

std::string writeCodes(const char* title, const std::vector<unsigned int>& codes, const DiffSides& sides) {
    std::string text = "\n" + std::string(title) + ": " + std::to_string(codes.size()) + "\n";
    for (const unsigned int code : codes) text += writeLine("  " + writeCode(code, sides));
    return text;
}

std::string writeDistance(const EntryChange& change) {
    if (change.distance) return writeMetres(*change.distance);
    return change.failure.empty() ? "not known" : "refused";
}

// The parameters and the axis order of an entry that the other one does not have.
std::string writeDifference(const char* sign, const DirectoryEntry& entry, const DirectoryEntry& other) {
    const ParameterList others(other.definition);
    ParameterList own;
    for (const ParameterList::Parameter& one : ParameterList(entry.definition))
        if (std::find(others.begin(), others.end(), one) == others.end()) own.add(one);
    std::string text = writeParameters(own);
    if (entry.axisOrder != other.axisOrder)
        text += std::string(text.empty() ? "" : "; ") + "axis order " +
                (entry.axisOrder.empty() ? "missing" : entry.axisOrder);
    return text.empty() ? "" : writeLine("      " + std::string(sign) + " " + text);
}

std::string writeChange(const EntryChange& change, const DiffSides& sides) {
    return writeDistanceLine(writeDistance(change), writeCode(change.code, sides), change.failure) +
           writeDifference("-", change.before, change.after) + writeDifference("+", change.after, change.before);
}

Json toJson(const std::vector<unsigned int>& codes, const DiffSides& sides) {
    Json json = Json::array();
    for (const unsigned int code : codes) json.push_back({{"code", code}, {"name", nameOf(code, sides)}});
    return json;
}

Json toJson(const EntryChange& change, const DiffSides& sides) {
    const auto writeEntry = [](const DirectoryEntry& entry) -> Json {
        return {{"definition", entry.definition}, {"axis_order", entry.axisOrder}};
    };
    Json json{{"code", change.code}, {"name", nameOf(change.code, sides)}};
    json["distance"] = change.distance ? Json(*change.distance) : Json();
    if (!change.failure.empty()) json["failure"] = change.failure;
    json["old"] = writeEntry(change.before);
    json["new"] = writeEntry(change.after);
    return json;
}

}  // namespace

std::vector<unsigned int> DirectoryDiff::codes() const {
    std::vector<unsigned int> all = added;
    all.insert(all.end(), gone.begin(), gone.end());
    for (const EntryChange& change : changed) all.push_back(change.code);
    return all;
}

DirectoryContent readDirectory(const std::string& path) {
    const std::string definitions = readText(fileIn(path, INIT_FILE));
    const bool hasHead = definitions.rfind("# ", 0) == 0;
    DirectoryContent content{path, hasHead ? definitions.substr(2, definitions.find('\n') - 2) : "", {}};
    for (const auto& definition : CoordinateTransformation::readInitFileText(definitions))
        if (const std::optional<unsigned int> code = readCode(definition.code))
            content.entries.try_emplace(*code, DirectoryEntry{writeParameters(ParameterList(definition.text)), ""});
    readAxisOrders(readText(fileIn(path, AXIS_ORDER_FILE)), content.entries);
    return content;
}

std::map<unsigned int, KnownCrs> describeCodes(const std::string& directory, const std::vector<unsigned int>& codes) {
    auto known = readDescriptions(fileIn(directory, DESCRIPTION_FILE));
    const auto isUnknown = [&known](unsigned int code) { return known.count(code) == 0; };
    if (std::none_of(codes.begin(), codes.end(), isUnknown)) return known;
    const ProjContext context;
    for (const RegistryCrs& crs : readRegistry(context)) known.try_emplace(crs.code, KnownCrs{crs.name, crs.area});
    return known;
}

DirectoryDiff compareEntries(const DirectoryContent& before, const DirectoryContent& after) {
    DirectoryDiff diff;
    for (const auto& [code, entry] : before.entries) {
        const auto found = after.entries.find(code);
        if (found == after.entries.end())
            diff.gone.push_back(code);
        else if (isSame(entry, found->second))
            ++diff.same;
        else
            diff.changed.push_back({code, entry, found->second, {}, {}});
    }
    for (const auto& [code, entry] : after.entries)
        if (before.entries.count(code) == 0) diff.added.push_back(code);
    return diff;
}

void measureChanges(DirectoryDiff& diff, const std::map<unsigned int, KnownCrs>& known) {
    for (EntryChange& change : diff.changed) {
        const auto found = known.find(change.code);
        if (found == known.end() || !found->second.area) continue;
        try {
            change.distance = measureDistance(change, *found->second.area);
        } catch (const Refusal& refusal) {
            change.failure = refusal.what();
        }
    }
    std::stable_sort(diff.changed.begin(), diff.changed.end(), [](const EntryChange& left, const EntryChange& right) {
        return left.distance.value_or(NO_PLACE) > right.distance.value_or(NO_PLACE);
    });
}

std::string writeDiffText(const DirectoryDiff& diff, const DiffSides& sides) {
    std::string text = writeSide("old ", sides.before) + writeSide("new ", sides.after);
    text += writeCodes("added", diff.added, sides) + writeCodes("gone", diff.gone, sides);
    text += "\nchanged: " + std::to_string(diff.changed.size()) + "\n";
    for (const EntryChange& change : diff.changed) text += writeChange(change, sides);
    return text + "\nthe same: " + std::to_string(diff.same) + "\n";
}

std::string writeDiffJson(const DirectoryDiff& diff, const DiffSides& sides) {
    const auto writeSide = [](const DirectoryContent& content) -> Json {
        return {{"directory", content.path}, {"head", content.head}, {"definitions", content.entries.size()}};
    };
    Json json{{"old", writeSide(sides.before)}, {"new", writeSide(sides.after)}};
    json["added"] = toJson(diff.added, sides);
    json["gone"] = toJson(diff.gone, sides);
    json["changed"] = Json::array();
    for (const EntryChange& change : diff.changed) json["changed"].push_back(toJson(change, sides));
    json["same"] = diff.same;
    return json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace ProjDir
