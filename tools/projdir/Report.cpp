#include "tools/projdir/Report.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include <nlohmann/json.hpp>

#include "ReportPage.h"
#include "text/NumericText.h"
#include "tools/common/Text.h"

namespace ProjDir {

using CoordinateTransformation::writeDouble;
using QSHelpers::convertNumericToText;

namespace {

using Json = nlohmann::ordered_json;

constexpr double FAR_OFF = AGREEMENT_CLASSES.back();
constexpr std::size_t WORST_SHOWN = 20;
constexpr std::size_t OPERATIONS_SHOWN = 4;
constexpr char NO_BETTER[] = " (PROJ's own inverse is no better)";

// JSON has distances to the micrometre, which is shorter than all digits.
constexpr double MICROMETRES_PER_METRE = 1e6;

std::string padLeft(const std::string& text, std::size_t width) {
    return std::string(text.size() < width ? width - text.size() : 0, ' ') + text;
}

std::string writeCount(std::size_t count) { return padLeft(std::to_string(count), 6); }

std::string nameOf(const RegistryCrs& crs) { return nameOfCode(crs.code) + " " + crs.name; }

std::string nameOfClass(std::size_t index) {
    if (index == AGREEMENT_CLASSES.size()) return "beyond " + writeDouble(AGREEMENT_CLASSES.back()) + " m";
    const double bound = AGREEMENT_CLASSES[index];
    return "within " + (bound < 1 ? writeDouble(bound * 100) + " cm" : writeDouble(bound) + " m");
}

// Cumulative, except for the last class.
std::string writeDistribution(const std::vector<double>& distances) {
    const Distribution counts = countByClass(distances);
    const auto whole = static_cast<double>(std::max<std::size_t>(distances.size(), 1));
    std::string text;
    std::size_t within = 0;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        within = i + 1 == counts.size() ? counts[i] : within + counts[i];
        const std::string name = nameOfClass(i);
        text += "  " + Tools::padded(name, 14) + writeCount(within) +
                padLeft(convertNumericToText(100.0 * static_cast<double>(within) / whole, 2, false), 7) + " %\n";
    }
    return text;
}

std::string writeDistribution(const std::vector<Agreement>& agreements, double Agreement::*distance) {
    std::vector<double> distances;
    distances.reserve(agreements.size());
    for (const Agreement& agreement : agreements) distances.push_back(agreement.*distance);
    return writeDistribution(distances);
}

std::string writeWorst(std::vector<Agreement> agreements) {
    std::stable_sort(agreements.begin(), agreements.end(),
                     [](const Agreement& a, const Agreement& b) { return a.largest > b.largest; });
    agreements.resize(std::min(agreements.size(), WORST_SHOWN));
    std::string text;
    for (const Agreement& one : agreements)
        text += writeDistanceLine(writeMetres(one.largest), nameOf(one.outcome->crs), explain(one));
    return text;
}

std::string listOperations(const std::vector<OperationShare>& shares) {
    std::string text;
    for (std::size_t i = 0; i < std::min(shares.size(), OPERATIONS_SHOWN); ++i)
        text += (i == 0 ? "" : ", ") + shares[i].operation.source + " (" + std::to_string(shares[i].points) +
                (shares[i].points == 1 ? " point)" : " points)");
    return text + (shares.size() > OPERATIONS_SHOWN ? ", ..." : "");
}

std::string explainOne(const Operation& operation) {
    if (!operation.gridShift.empty())
        return "PROJ uses the grid " + operation.gridShift + " (" + operation.source +
               "), which no parameters follow more closely; --grids uses it";
    if (operation.shift) return "PROJ uses " + operation.source;
    return "PROJ uses " + operation.source +
           ", which is not a shift of geocentric coordinates; the definition language has no other";
}

std::string explainMany(const std::vector<OperationShare>& shares) {
    const bool hasGrid =
        std::any_of(shares.begin(), shares.end(), [](const auto& share) { return !share.operation.gridShift.empty(); });
    return "PROJ changes between " + std::to_string(shares.size()) +
           " operations in the area: " + listOperations(shares) + "; " +
           (hasGrid ? "the grid does not reach all over it, so that only " : "only ") +
           "a definition of its own for each region would follow them";
}

std::string writeConversions(const std::vector<Conversion>& conversions) {
    std::string inexact;
    std::size_t exact = 0;
    for (const Conversion& one : conversions) {
        const auto& [distance, failure] = one.measured;
        if (distance <= EXACT)
            ++exact;
        else
            inexact += writeDistanceLine(
                writeMetres(distance),
                nameOf(one.source->crs) + " to " + nameOf(one.target->crs) + (isAccepted(one) ? NO_BETTER : ""),
                failure);
    }
    return "Conversions within a datum, against the registry's own:\n" + writeCount(conversions.size()) +
           " conversions\n" + writeCount(exact) + " within 1 mm\n" + inexact;
}

std::string writeTrips(const std::string& title, const std::vector<double>& distances) {
    const double largest = distances.empty() ? 0 : *std::max_element(distances.begin(), distances.end());
    return "  " + title + ": " + std::to_string(distances.size()) + ", largest distance " +
           (std::isfinite(largest) ? convertNumericToText(largest * 1000, 3, false) + " mm" : "no coordinates") + "\n";
}

std::string writeInexact(const RoundTrip& trip) {
    const std::string name = nameOf(trip.outcome->crs);
    if (trip.throughBase && !(trip.throughBase->distance <= EXACT))
        return writeDistanceLine(writeMetres(trip.throughBase->distance),
                                 name + " to its datum and back" + (isAccepted(trip) ? NO_BETTER : ""),
                                 trip.throughBase->failure);
    if (isAccepted(trip)) return "";
    return writeDistanceLine(writeMetres(trip.throughWgs84.distance), name + " to WGS 84 and back",
                             trip.throughWgs84.failure);
}

std::string writeRoundTrips(const std::vector<RoundTrip>& trips) {
    std::vector<double> throughBase;
    std::vector<double> throughWgs84;
    std::string inexact;
    for (const RoundTrip& trip : trips) {
        throughWgs84.push_back(trip.throughWgs84.distance);
        if (trip.throughBase) throughBase.push_back(trip.throughBase->distance);
        inexact += writeInexact(trip);
    }
    return "Round trips:\n" + writeTrips("to the geographic CRS of the datum and back", throughBase) +
           writeTrips("to WGS 84 and back, where rotations are taken to be small", throughWgs84) + inexact;
}

std::string section(const std::string& title, const std::string& text) {
    return "\n" + title + "\n\n" + (text.empty() ? "  none\n" : text);
}

// Codes beyond ten metres, and those that are only so far off where PROJ takes both datums for the same.
std::string writeFarDefinitions(const std::vector<Agreement>& agreements) {
    std::string far;
    std::string farInUnknownParts;
    for (const Agreement& one : agreements) {
        const std::string name = nameOf(one.outcome->crs);
        if (!(one.largest <= FAR_OFF))
            far += writeDistanceLine(writeMetres(one.largest), name, explain(one));
        else if (!(one.largestAnywhere <= FAR_OFF))
            farInUnknownParts += writeDistanceLine(writeMetres(one.largestAnywhere), name, "");
    }
    return section("Beyond ten metres", far) +
           section("Beyond ten metres only where PROJ knows no operation", farInUnknownParts);
}

double roundDistance(double metres) { return std::round(metres * MICROMETRES_PER_METRE) / MICROMETRES_PER_METRE; }

void addText(Json& json, const char* key, const std::string& text) {
    if (!text.empty()) json[key] = text;
}

const char* nameOfShift(ShiftKind kind) {
    constexpr const char* NAMES[] = {"none needed", "unknown", "published", "fitted", "grid"};
    return NAMES[static_cast<std::size_t>(kind)];
}

Json writeArea(const RegistryCrs& crs) {
    Json json = Json::object();
    addText(json, "text", crs.areaName);
    if (const auto& area = crs.area)
        json.update({{"west", area->west}, {"south", area->south}, {"east", area->east}, {"north", area->north}});
    return json;
}

void addDefinition(Json& json, const CrsOutcome& outcome) {
    const ClassicDefinition& definition = *outcome.definition;
    json["definition"] = definition.text;
    json["axis_order"] = definition.isNorthFirst ? "ne" : "en";
    Json shift{{"kind", nameOfShift(definition.shift.kind)}};
    addText(shift, "source", definition.shift.source);
    if (definition.shift.accuracy) shift["accuracy"] = *definition.shift.accuracy;
    json["shift"] = shift;
    if (outcome.largestDistance) json["largest_distance"] = roundDistance(*outcome.largestDistance);
}

Json writeConversion(const Conversion& conversion) {
    Json json{{"to", conversion.target->crs.code}, {"distance", roundDistance(conversion.measured.distance)}};
    addText(json, "failure", conversion.measured.failure);
    return json;
}

Json writeTrip(const RoundTrip& trip) {
    Json json{{"through_wgs84", roundDistance(trip.throughWgs84.distance)}};
    addText(json, "through_wgs84_failure", trip.throughWgs84.failure);
    if (!trip.throughBase) return json;
    json["within_datum"] = roundDistance(trip.throughBase->distance);
    addText(json, "within_datum_failure", trip.throughBase->failure);
    return json;
}

// The measurements of each CRS as JSON.
std::map<const CrsOutcome*, Json> writeMeasurements(const Verification& verification) {
    std::map<const CrsOutcome*, Json> measurements;
    for (const Agreement& one : verification.agreements) {
        Json& json = measurements[one.outcome];
        json["largest"] = roundDistance(one.largest);
        json["largest_anywhere"] = roundDistance(one.largestAnywhere);
        json["proj"] = explain(one);
        addText(json, "failure", one.failure);
    }
    for (const Conversion& one : verification.conversions)
        measurements[one.source]["conversions"].push_back(writeConversion(one));
    for (const RoundTrip& one : verification.roundTrips) measurements[one.outcome]["round_trips"] = writeTrip(one);
    return measurements;
}

Json writeCrs(const CrsOutcome& outcome) {
    const RegistryCrs& crs = outcome.crs;
    Json json{{"code", crs.code}, {"name", crs.name}, {"kind", nameOfKind(crs.kind)}};
    if (crs.isDeprecated) json["deprecated"] = true;
    json["area"] = writeArea(crs);
    addText(json, "unit", outcome.unit);
    if (outcome.unitLength != 0) json["unit_length"] = outcome.unitLength;
    addText(json, "datum", crs.datum.name);
    addText(json, "datum_id", crs.datum.id);
    if (!outcome.replacedBy.empty()) json["replaced_by"] = outcome.replacedBy;
    if (outcome.definition)
        addDefinition(json, outcome);
    else
        json["left_out"] = outcome.omission;
    return json;
}

// Names come out of the database and may hold any bytes.
std::string dump(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

// In a script element "<" could begin its end or a comment. JSON has it only in texts.
std::string escapeForScript(const std::string& json) {
    std::string escaped;
    escaped.reserve(json.size());
    for (const char c : json)
        if (c == '<')
            escaped += "\\u003c";
        else
            escaped += c;
    return escaped;
}

// The distribution of the values that are known, and the number of the others.
std::string writeKnown(const std::string& title, const std::vector<std::optional<double>>& values,
                       const std::string& others) {
    std::vector<double> known;
    for (const std::optional<double>& value : values)
        if (value) known.push_back(*value);
    return title + ":\n" + writeDistribution(known) + writeCount(values.size() - known.size()) + " " + others + "\n";
}

}  // namespace

std::string writeMetres(double metres) {
    return std::isfinite(metres) ? convertNumericToText(metres, 3, false) + " m" : "no coordinates";
}

std::string writeDistanceLine(const std::string& distance, const std::string& name, const std::string& reason) {
    return writeLine("  " + padLeft(distance, 14) + "  " + name + (reason.empty() ? "" : ": " + reason));
}

Distribution countByClass(const std::vector<double>& distances) {
    Distribution counts{};
    const auto& bounds = AGREEMENT_CLASSES;
    for (const double distance : distances)
        ++counts[static_cast<std::size_t>(std::lower_bound(bounds.begin(), bounds.end(), distance) - bounds.begin())];
    return counts;
}

std::string explain(const Agreement& agreement) {
    if (!agreement.failure.empty()) return "the library refuses it: " + agreement.failure;
    std::vector<OperationShare> known;
    for (const OperationShare& share : agreement.outcome->shares)
        if (!share.operation.isBallpark && share.points > 0) known.push_back(share);
    if (known.empty()) return "PROJ knows no operation";
    return known.size() == 1 ? explainOne(known.front().operation) : explainMany(known);
}

std::string writeLeftOut(const std::vector<CrsOutcome>& outcomes) {
    std::string text;
    for (const CrsOutcome& outcome : outcomes)
        if (!outcome.definition) text += writeLine("  " + nameOf(outcome.crs) + ": " + outcome.omission);
    return text;
}

std::string writeSummary(const std::vector<CrsOutcome>& outcomes) {
    std::map<ShiftKind, std::size_t> counts;
    std::size_t definitions = 0;
    for (const CrsOutcome& outcome : outcomes) {
        if (!outcome.definition) continue;
        ++definitions;
        ++counts[outcome.definition->shift.kind];
    }
    const std::pair<ShiftKind, const char*> kinds[] = {{ShiftKind::WGS_84, "on WGS 84 itself"},
                                                       {ShiftKind::PUBLISHED, "with a published shift"},
                                                       {ShiftKind::FITTED, "with a fitted shift"},
                                                       {ShiftKind::GRID, "with a grid"},
                                                       {ShiftKind::UNKNOWN, "without a shift, as PROJ knows none"}};
    std::string text = writeCount(definitions) + " definitions\n";
    for (const auto& [kind, words] : kinds) text += "  " + writeCount(counts[kind]) + " " + words + "\n";
    return text + writeCount(outcomes.size() - definitions) + " CRS left out\n";
}

std::string writeAgreement(const std::vector<Agreement>& agreements) {
    return "Largest horizontal distance from PROJ's best operation, where PROJ knows one:\n" +
           writeDistribution(agreements, &Agreement::largest) +
           "Anywhere in the area of use, also where PROJ knows none and takes both datums for the same:\n" +
           writeDistribution(agreements, &Agreement::largestAnywhere) + "The worst twenty:\n" + writeWorst(agreements);
}

std::string writeVerification(const Verification& verification) {
    return writeAgreement(verification.agreements) + writeConversions(verification.conversions) +
           writeRoundTrips(verification.roundTrips);
}

std::string writeDistances(const std::vector<CrsOutcome>& outcomes) {
    std::vector<std::optional<double>> distances;
    for (const CrsOutcome& outcome : outcomes)
        if (outcome.definition) distances.push_back(outcome.largestDistance);
    return writeKnown("Largest horizontal distance from PROJ's best operation that needs no grid", distances,
                      "where PROJ knows none, or with a grid");
}

std::string writeAccuracies(const std::vector<CrsOutcome>& outcomes) {
    std::vector<std::optional<double>> accuracies;
    for (const CrsOutcome& outcome : outcomes)
        if (outcome.definition && outcome.definition->shift.kind == ShiftKind::PUBLISHED)
            accuracies.push_back(outcome.definition->shift.accuracy);
    return writeKnown("Accuracy of the published shifts, as the registry states it", accuracies, "without a statement");
}

std::string writeReport(const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes,
                        const Verification& verification) {
    std::string text = writeLine(describe(version)) + "\n" + writeSummary(outcomes) + "\n" + writeDistances(outcomes) +
                       writeAccuracies(outcomes);
    if (!verification.agreements.empty())
        text += "\n" + writeVerification(verification) + writeFarDefinitions(verification.agreements);
    return text + section("Left out", writeLeftOut(outcomes));
}

std::string writeJsonReport(const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes,
                            const Verification& verification) {
    const std::map<const CrsOutcome*, Json> measurements = writeMeasurements(verification);
    const Json registry{{"dataset", version.dataset}, {"date", version.date}, {"proj", version.proj}};
    std::string text = "{\"registry\": " + dump(registry) + ",\n\"crs\": [";
    const char* separator = "\n";
    for (const CrsOutcome& outcome : outcomes) {
        Json json = writeCrs(outcome);
        const auto measured = measurements.find(&outcome);
        if (measured != measurements.end()) json["verification"] = measured->second;
        text += separator + dump(json);
        separator = ",\n";
    }
    return text + "\n]}\n";
}

std::string writeHtmlReport(const std::string& jsonReport) {
    const std::map<std::string, std::string> parts = {{"STYLE", REPORT_STYLE},
                                                      {"SCRIPT", REPORT_SCRIPT},
                                                      {"COASTLINE", REPORT_COASTLINE},
                                                      {"DATA", escapeForScript(jsonReport)}};
    const std::string start = "<!--[";
    const std::string end = "]-->";
    const std::string page = REPORT_PAGE;
    std::string text;
    std::size_t done = 0;
    for (std::size_t at = page.find(start); at != std::string::npos; at = page.find(start, done)) {
        const std::size_t name = at + start.size();
        const std::size_t close = page.find(end, name);
        text += page.substr(done, at - done) + parts.at(page.substr(name, close - name));
        done = close + end.size();
    }
    return text + page.substr(done);
}

}  // namespace ProjDir
