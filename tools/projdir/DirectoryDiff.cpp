#include "tools/projdir/DirectoryDiff.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <limits>
#include <memory>
#include <set>
#include <sstream>

#include "CoordinateTransformation/CrsDescriptions.h"
#include "CoordinateTransformation/TransformationException.h"
#include "proj/classic/ClassicProj.h"
#include "text/CsvRow.h"
#include "text/FileText.h"
#include "text/InitFile.h"
#include "text/ParameterList.h"
#include "tools/projdir/ClassicText.h"
#include "tools/projdir/Geodesy.h"
#include "tools/projdir/Registry.h"

namespace ProjDir {

using CoordinateTransformation::CrsDescriptions;
using CoordinateTransformation::CsvRowIterator;
using CoordinateTransformation::ParameterList;

namespace {

constexpr char WGS_84_DEFINITION[] = "+proj=longlat +datum=WGS84 +no_defs";
constexpr char GEOCENTRIC[] = "geocent";
constexpr int POINTS_PER_SIDE = 9;
constexpr double NO_PLACE = std::numeric_limits<double>::infinity();

std::string readFileOrThrow(const std::string& path) {
    CoordinateTransformation::FileText file = CoordinateTransformation::readFile(path);
    if (!file.failure.empty()) throw DirectoryError("cannot read \"" + path + "\": " + file.failure);
    return std::move(file.content);
}

std::optional<unsigned int> readCode(const std::string& text) {
    unsigned int code = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), code);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return code;
}

std::string readHead(const std::string& definitions) {
    if (definitions.rfind("# ", 0) != 0) return "";
    return definitions.substr(2, definitions.find('\n') - 2);
}

void readAxisOrders(const std::string& table, std::map<unsigned int, DirectoryEntry>& entries) {
    std::istringstream stream(table);
    for (CsvRowIterator row(stream, ';'), end; row != end; ++row) {
        const std::optional<unsigned int> code = row->size() < 2 ? std::nullopt : readCode((*row)[0]);
        const auto entry = code ? entries.find(*code) : entries.end();
        if (entry != entries.end() && entry->second.axisOrder.empty()) entry->second.axisOrder = (*row)[1];
    }
}

// Without comments and line breaks.
std::string normalise(const std::string& definition) {
    const std::string text = ParameterList(definition).toText();
    return text.empty() ? text : text.substr(1);
}

std::multiset<ParameterList::Parameter> readParameters(const DirectoryEntry& entry) {
    const ParameterList parameters(entry.definition);
    return {parameters.begin(), parameters.end()};
}

bool isSame(const DirectoryEntry& before, const DirectoryEntry& after) {
    return before.axisOrder == after.axisOrder &&
           (before.definition == after.definition || readParameters(before) == readParameters(after));
}

// A definition of one of the directories in PROJ's classic interface.
class ClassicDefinitionOf {
public:
    // DirectoryError with PROJ's text for what is wrong with the definition.
    explicit ClassicDefinitionOf(const std::string& text)
        : isGeocentric(ParameterList(text).get("proj") == GEOCENTRIC) {
        ClassicProj::Context context;
        definition = ClassicProj::pj_init_plus_ctx(&context, text.c_str());
        if (definition == nullptr) throw DirectoryError(textOrEmpty(ClassicProj::pj_strerrno(context.error)));
    }

    // In the units of the definition, radians for angles; nothing where PROJ has no result.
    std::optional<Coordinates> moveTo(const ClassicDefinitionOf& target, Coordinates point) const {
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

// Nothing where the later definition has no coordinates.
std::optional<double> distanceAt(const LonLat& place, const ClassicDefinitionOf& wgs84,
                                 const ClassicDefinitionOf& before, const ClassicDefinitionOf& after) {
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
    const ClassicDefinitionOf wgs84(WGS_84_DEFINITION);
    const ClassicDefinitionOf before(change.before.definition);
    const ClassicDefinitionOf after(change.after.definition);
    std::optional<double> largest;
    for (const LonLat& place : sampleArea(area, POINTS_PER_SIDE))
        if (const std::optional<double> distance = distanceAt(place, wgs84, before, after))
            largest = std::max(largest.value_or(0), *distance);
    return largest;
}

void measureChange(EntryChange& change, const std::map<unsigned int, KnownCrs>& known) {
    const auto found = known.find(change.code);
    try {
        if (found != known.end() && found->second.area) change.distance = measureDistance(change, *found->second.area);
    } catch (const DirectoryError& refusal) {
        change.failure = refusal.what();
    }
}

bool isFarther(const EntryChange& left, const EntryChange& right) {
    return left.distance.value_or(NO_PLACE) > right.distance.value_or(NO_PLACE);
}

std::map<unsigned int, KnownCrs> readDescriptions(const std::string& path) {
    std::map<unsigned int, KnownCrs> known;
    if (!std::filesystem::exists(path)) return known;
    for (const CoordinateTransformation::CrsDescription& crs : CrsDescriptions(path)) {
        KnownCrs& one = known[crs.code];
        one.name = crs.name;
        if (crs.box) one.area = Area{crs.box->west, crs.box->south, crs.box->east, crs.box->north};
    }
    return known;
}

}  // namespace

DirectoryContent readDirectory(const std::string& path) {
    const std::filesystem::path directory(path);
    const std::string definitions = readFileOrThrow((directory / CoordinateTransformation::INIT_FILE).string());
    DirectoryContent content{path, readHead(definitions), {}};
    for (const auto& definition : CoordinateTransformation::readInitFileText(definitions))
        if (const std::optional<unsigned int> code = readCode(definition.code))
            content.entries.try_emplace(*code, DirectoryEntry{normalise(definition.text), ""});
    readAxisOrders(readFileOrThrow((directory / CoordinateTransformation::AXIS_ORDER_FILE).string()), content.entries);
    return content;
}

std::map<unsigned int, KnownCrs> describeCodes(const std::string& directory, const std::vector<unsigned int>& codes) {
    auto known =
        readDescriptions((std::filesystem::path(directory) / CoordinateTransformation::DESCRIPTION_FILE).string());
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
    for (EntryChange& change : diff.changed) measureChange(change, known);
    std::stable_sort(diff.changed.begin(), diff.changed.end(), isFarther);
}

}  // namespace ProjDir
