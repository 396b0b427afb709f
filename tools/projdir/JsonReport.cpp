#include "tools/projdir/JsonReport.h"

#include <cmath>
#include <map>

#include <nlohmann/json.hpp>

#include "tools/projdir/Report.h"

namespace ProjDir {
namespace {

using Json = nlohmann::ordered_json;

// Below what anybody measures on the ground; shorter than all digits.
constexpr double MICROMETRES_PER_METRE = 1e6;

double roundDistance(double metres) { return std::round(metres * MICROMETRES_PER_METRE) / MICROMETRES_PER_METRE; }

// What was measured of one CRS.
struct CrsMeasurements {
    const Agreement* agreement = nullptr;
    const RoundTrip* trip = nullptr;
    std::vector<const Conversion*> conversions;
};

std::map<const CrsOutcome*, CrsMeasurements> sortByCrs(const Verification& verification) {
    std::map<const CrsOutcome*, CrsMeasurements> measurements;
    for (const Agreement& one : verification.agreements) measurements[one.outcome].agreement = &one;
    for (const RoundTrip& one : verification.withinDatums.roundTrips) measurements[one.outcome].trip = &one;
    for (const Conversion& one : verification.withinDatums.conversions)
        measurements[one.source].conversions.push_back(&one);
    return measurements;
}

const char* nameOfShift(ShiftKind kind) {
    switch (kind) {
        case ShiftKind::WGS_84:
            return "none needed";
        case ShiftKind::PUBLISHED:
            return "published";
        case ShiftKind::FITTED:
            return "fitted";
        case ShiftKind::GRID:
            return "grid";
        default:
            return "unknown";
    }
}

void addText(Json& json, const char* key, const std::string& text) {
    if (!text.empty()) json[key] = text;
}

Json writeArea(const CrsOutcome& outcome) {
    Json json = Json::object();
    addText(json, "text", outcome.description.area);
    if (const auto& area = outcome.crs.area)
        json.update({{"west", area->west}, {"south", area->south}, {"east", area->east}, {"north", area->north}});
    return json;
}

void addDescription(Json& json, const CrsDescription& description) {
    addText(json, "unit", description.unit);
    if (description.unitLength != 0) json["unit_length"] = description.unitLength;
    addText(json, "datum", description.datum);
    addText(json, "datum_id", description.datumId);
    if (!description.replacedBy.empty()) json["replaced_by"] = description.replacedBy;
}

void addDefinition(Json& json, const CrsOutcome& outcome) {
    const ClassicDefinition& definition = *outcome.definition;
    json["definition"] = definition.text;
    json["axis_order"] = definition.isNorthFirst ? "ne" : "en";
    Json shift{{"kind", nameOfShift(definition.shift.kind)}};
    addText(shift, "source", definition.shift.source);
    if (outcome.shiftAccuracy) shift["accuracy"] = *outcome.shiftAccuracy;
    json["shift"] = shift;
    if (outcome.largestDistance) json["largest_distance"] = roundDistance(*outcome.largestDistance);
}

Json writeConversions(const std::vector<const Conversion*>& conversions) {
    Json json = Json::array();
    for (const Conversion* one : conversions) {
        Json entry{{"to", one->target->crs.code}, {"distance", roundDistance(one->measured.distance)}};
        addText(entry, "failure", one->measured.failure);
        json.push_back(entry);
    }
    return json;
}

Json writeTrip(const RoundTrip& trip) {
    Json json{{"through_wgs84", roundDistance(trip.throughWgs84.distance)}};
    if (trip.throughBase) json["within_datum"] = roundDistance(trip.throughBase->distance);
    return json;
}

Json writeMeasurements(const CrsMeasurements& measured) {
    const Agreement& agreement = *measured.agreement;
    Json json{{"largest", roundDistance(agreement.largest)},
              {"largest_anywhere", roundDistance(agreement.largestAnywhere)},
              {"proj", explain(agreement)}};
    addText(json, "failure", agreement.failure);
    if (!measured.conversions.empty()) json["conversions"] = writeConversions(measured.conversions);
    if (measured.trip != nullptr) json["round_trips"] = writeTrip(*measured.trip);
    return json;
}

Json writeCrs(const CrsOutcome& outcome, const CrsMeasurements& measured) {
    Json json{{"code", outcome.crs.code}, {"name", outcome.crs.name}, {"kind", nameOfKind(outcome.crs.kind)}};
    if (outcome.crs.isDeprecated) json["deprecated"] = true;
    json["area"] = writeArea(outcome);
    addDescription(json, outcome.description);
    if (outcome.definition)
        addDefinition(json, outcome);
    else
        json["left_out"] = outcome.omission;
    if (measured.agreement != nullptr) json["verification"] = writeMeasurements(measured);
    return json;
}

// Names come out of the database and may hold anything.
std::string dump(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

}  // namespace

std::string writeJsonReport(const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes,
                            const Verification& verification) {
    auto measurements = sortByCrs(verification);
    const Json registry{{"dataset", version.dataset}, {"date", version.date}, {"proj", version.proj}};
    std::string text = "{\"registry\": " + dump(registry) + ",\n\"crs\": [";
    const char* separator = "\n";
    for (const CrsOutcome& outcome : outcomes) {
        text += separator + dump(writeCrs(outcome, measurements[&outcome]));
        separator = ",\n";
    }
    return text + "\n]}\n";
}

}  // namespace ProjDir
