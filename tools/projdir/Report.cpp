#include "tools/projdir/Report.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>

#include "text/NumericText.h"
#include "tools/projdir/Line.h"

namespace ProjDir {

using CoordinateTransformation::writeDouble;
using QSHelpers::convertNumericToText;

namespace {

constexpr std::size_t WORST_SHOWN = 20;
constexpr std::size_t OPERATIONS_SHOWN = 4;

std::string padLeft(const std::string& text, std::size_t width) {
    return std::string(text.size() < width ? width - text.size() : 0, ' ') + text;
}

std::string writeCount(std::size_t count) { return padLeft(std::to_string(count), 6); }

std::string writeShare(std::size_t part, std::size_t whole) {
    const double percent = whole == 0 ? 0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole);
    return padLeft(convertNumericToText(percent, 2, false), 7) + " %";
}

std::string nameOf(const RegistryCrs& crs) { return "EPSG:" + std::to_string(crs.code) + " " + crs.name; }

std::string writeMetres(double metres) {
    return std::isfinite(metres) ? convertNumericToText(metres, 3, false) + " m" : "no coordinates";
}

std::size_t countKind(const std::vector<CrsOutcome>& outcomes, ShiftKind kind) {
    return static_cast<std::size_t>(std::count_if(outcomes.begin(), outcomes.end(), [kind](const CrsOutcome& outcome) {
        return outcome.definition && outcome.definition->shift.kind == kind;
    }));
}

std::size_t countLeftOut(const std::vector<CrsOutcome>& outcomes) {
    return static_cast<std::size_t>(
        std::count_if(outcomes.begin(), outcomes.end(), [](const CrsOutcome& outcome) { return !outcome.definition; }));
}

using Distance = double Agreement::*;

std::vector<double> collect(const std::vector<Agreement>& agreements, Distance distance) {
    std::vector<double> distances;
    distances.reserve(agreements.size());
    for (const Agreement& agreement : agreements) distances.push_back(agreement.*distance);
    return distances;
}

std::string nameOfClass(std::size_t index) {
    if (index == AGREEMENT_CLASSES.size()) return "beyond " + writeDouble(AGREEMENT_CLASSES.back()) + " m";
    const double bound = AGREEMENT_CLASSES[index];
    return "within " + (bound < 1 ? writeDouble(bound * 100) + " cm" : writeDouble(bound) + " m");
}

// Cumulative, but for the last class.
std::string writeDistribution(const std::vector<double>& distances) {
    const Distribution counts = countByClass(distances);
    std::string text;
    std::size_t within = 0;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        within = i + 1 == counts.size() ? counts[i] : within + counts[i];
        const std::string name = nameOfClass(i);
        text += "  " + name + std::string(14 - name.size(), ' ') + writeCount(within) +
                writeShare(within, distances.size()) + "\n";
    }
    return text;
}

std::vector<const Agreement*> sortWorstFirst(const std::vector<Agreement>& agreements, Distance distance) {
    std::vector<const Agreement*> sorted;
    sorted.reserve(agreements.size());
    for (const Agreement& agreement : agreements) sorted.push_back(&agreement);
    std::sort(sorted.begin(), sorted.end(), [distance](const Agreement* a, const Agreement* b) {
        return a->*distance > b->*distance || (a->*distance == b->*distance && a < b);
    });
    return sorted;
}

std::string writeDistance(const Agreement& agreement, double distance) {
    return writeLine("  " + padLeft(writeMetres(distance), 14) + "  " + nameOf(agreement.outcome->crs) + ": " +
                     explain(agreement));
}

std::string writeWorst(const std::vector<Agreement>& agreements, std::size_t count) {
    std::string text;
    for (const Agreement* agreement : sortWorstFirst(agreements, &Agreement::largest)) {
        if (count-- == 0) break;
        text += writeDistance(*agreement, agreement->largest);
    }
    return text;
}

std::string writeFarDefinitions(const std::vector<Agreement>& agreements) {
    std::string text;
    for (const Agreement& agreement : agreements)
        if (!(agreement.largest <= FAR_OFF)) text += writeDistance(agreement, agreement.largest);
    return text;
}

// Close where PROJ knows an operation, far where it takes both datums for one.
std::string writeFarInUnknownParts(const std::vector<Agreement>& agreements) {
    std::string text;
    for (const Agreement& agreement : agreements)
        if (agreement.largest <= FAR_OFF && !(agreement.largestAnywhere <= FAR_OFF))
            text += writeLine("  " + padLeft(writeMetres(agreement.largestAnywhere), 14) + "  " +
                              nameOf(agreement.outcome->crs));
    return text;
}

std::vector<OperationShare> withoutBallparks(const std::vector<OperationShare>& shares) {
    std::vector<OperationShare> known;
    for (const OperationShare& share : shares)
        if (!share.operation.isBallpark && share.points > 0) known.push_back(share);
    return known;
}

std::string listOperations(const std::vector<OperationShare>& shares) {
    std::string text;
    for (std::size_t i = 0; i < std::min(shares.size(), OPERATIONS_SHOWN); ++i)
        text += (i == 0 ? "" : ", ") + shares[i].operation.source + " (" + std::to_string(shares[i].points) +
                (shares[i].points == 1 ? " point)" : " points)");
    return text + (shares.size() > OPERATIONS_SHOWN ? ", ..." : "");
}

bool hasGrid(const std::vector<OperationShare>& shares) {
    return std::any_of(shares.begin(), shares.end(),
                       [](const auto& share) { return !share.operation.gridShift.empty(); });
}

std::string explainOne(const UsedOperation& operation) {
    if (!operation.gridShift.empty())
        return "PROJ uses the grid " + operation.gridShift + " (" + operation.source +
               "), which no parameters follow more closely; --grids brings it in";
    if (readShift(operation.text)) return "PROJ uses " + operation.source;
    return "PROJ uses " + operation.source +
           ", which is no shift of geocentric coordinates; the definition language has no other";
}

std::string explainMany(const std::vector<OperationShare>& shares) {
    return "PROJ changes between " + std::to_string(shares.size()) +
           " operations in the area: " + listOperations(shares) + "; " +
           (hasGrid(shares) ? "the grid does not reach all over it, so that only " : "only ") +
           "a definition of its own for each region would follow them";
}

std::size_t countConversions(const std::vector<Conversion>& conversions, double least, double most) {
    return static_cast<std::size_t>(
        std::count_if(conversions.begin(), conversions.end(), [least, most](const Conversion& one) {
            return one.measured.distance > least && one.measured.distance <= most;
        }));
}

std::string writeMillimetres(double metres) {
    return std::isfinite(metres) ? convertNumericToText(metres * 1000, 3, false) + " mm" : "no coordinates";
}

// With the reason of a failure.
std::string writeInexact(const std::string& what, const Measurement& measured) {
    return writeLine("  " + padLeft(writeMetres(measured.distance), 14) + "  " + what +
                     (measured.failure.empty() ? "" : ": " + measured.failure));
}

std::string writeConversions(const std::vector<Conversion>& conversions) {
    std::string text = "Conversions within a datum, against the registry's own:\n" + writeCount(conversions.size()) +
                       " conversions\n" + writeCount(countConversions(conversions, -1, EXACT)) + " within 1 mm\n";
    for (const Conversion& one : conversions)
        if (!(one.measured.distance <= EXACT))
            text += writeInexact(nameOf(one.source->crs) + " to " + nameOf(one.target->crs) +
                                     (isAccepted(one) ? " (PROJ's own inverse is no better)" : ""),
                                 one.measured);
    return text;
}

std::string writeTrips(const std::string& title, const std::vector<Measurement>& trips) {
    double largest = 0;
    for (const Measurement& trip : trips) largest = std::max(largest, trip.distance);
    return "  " + title + ": " + std::to_string(trips.size()) + ", largest distance " + writeMillimetres(largest) +
           "\n";
}

std::string writeInexact(const RoundTrip& trip) {
    const std::string excuse = isAccepted(trip) ? " (PROJ's own inverse is no better)" : "";
    if (trip.throughBase && !(trip.throughBase->distance <= EXACT))
        return writeInexact(nameOf(trip.outcome->crs) + " to its datum and back" + excuse, *trip.throughBase);
    if (isAccepted(trip)) return "";
    return writeInexact(nameOf(trip.outcome->crs) + " to WGS 84 and back", trip.throughWgs84);
}

std::string writeRoundTrips(const std::vector<RoundTrip>& trips) {
    std::vector<Measurement> throughBase;
    std::vector<Measurement> throughWgs84;
    std::string inexact;
    for (const RoundTrip& trip : trips) {
        throughWgs84.push_back(trip.throughWgs84);
        if (trip.throughBase) throughBase.push_back(*trip.throughBase);
        inexact += writeInexact(trip);
    }
    return "Round trips:\n" + writeTrips("to the geographic CRS of the datum and back", throughBase) +
           writeTrips("to WGS 84 and back, where rotations are taken to be small", throughWgs84) + inexact;
}

std::string section(const std::string& title, const std::string& text) {
    return "\n" + title + "\n\n" + (text.empty() ? "  none\n" : text);
}

}  // namespace

std::string explain(const Agreement& agreement) {
    if (!agreement.failure.empty()) return "the library refuses it: " + agreement.failure;
    const std::vector<OperationShare> known = withoutBallparks(agreement.outcome->shares);
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
    const std::size_t leftOut = countLeftOut(outcomes);
    std::string text = writeCount(outcomes.size() - leftOut) + " definitions\n";
    const std::pair<ShiftKind, const char*> kinds[] = {{ShiftKind::WGS_84, "on WGS 84 itself"},
                                                       {ShiftKind::PUBLISHED, "with a published shift"},
                                                       {ShiftKind::FITTED, "with a fitted shift"},
                                                       {ShiftKind::GRID, "with a grid"},
                                                       {ShiftKind::UNKNOWN, "without a shift, as PROJ knows none"}};
    for (const auto& [kind, words] : kinds) text += "  " + writeCount(countKind(outcomes, kind)) + " " + words + "\n";
    return text + writeCount(leftOut) + " CRS left out\n";
}

std::string writeAgreement(const std::vector<Agreement>& agreements) {
    return "Largest horizontal distance from PROJ's best operation, where PROJ knows one:\n" +
           writeDistribution(collect(agreements, &Agreement::largest)) +
           "Anywhere in the area of use, also where PROJ knows none and takes both datums for one:\n" +
           writeDistribution(collect(agreements, &Agreement::largestAnywhere)) + "The worst twenty:\n" +
           writeWorst(agreements, WORST_SHOWN);
}

std::string writeVerification(const Verification& verification) {
    return writeAgreement(verification.agreements) + writeConversions(verification.withinDatums.conversions) +
           writeRoundTrips(verification.withinDatums.roundTrips);
}

std::string writeDistances(const std::vector<CrsOutcome>& outcomes) {
    std::vector<double> distances;
    std::size_t definitions = 0;
    for (const CrsOutcome& outcome : outcomes) {
        if (!outcome.definition) continue;
        ++definitions;
        if (outcome.largestDistance) distances.push_back(*outcome.largestDistance);
    }
    return "Largest horizontal distance from PROJ's best operation that needs no grid:\n" +
           writeDistribution(distances) + writeCount(definitions - distances.size()) +
           " where PROJ knows none, or with a grid\n";
}

std::string writeAccuracies(const std::vector<CrsOutcome>& outcomes) {
    std::vector<double> accuracies;
    std::size_t shifts = 0;
    for (const CrsOutcome& outcome : outcomes) {
        const bool isShifted = outcome.definition && outcome.definition->shift.kind == ShiftKind::PUBLISHED;
        shifts += isShifted ? 1 : 0;
        if (isShifted && outcome.shiftAccuracy) accuracies.push_back(*outcome.shiftAccuracy);
    }
    return "Accuracy of the published shifts, as the registry states it:\n" + writeDistribution(accuracies) +
           writeCount(shifts - accuracies.size()) + " without a statement\n";
}

std::string writeReport(const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes,
                        const Verification& verification) {
    std::string text = writeLine(describe(version)) + "\n" + writeSummary(outcomes) + "\n" + writeDistances(outcomes) +
                       writeAccuracies(outcomes);
    if (const std::vector<Agreement>& agreements = verification.agreements; !agreements.empty()) {
        text += "\n" + writeVerification(verification);
        text += section("Beyond ten metres", writeFarDefinitions(agreements));
        text += section("Beyond ten metres only where PROJ knows no operation", writeFarInUnknownParts(agreements));
    }
    return text + section("Left out", writeLeftOut(outcomes));
}

}  // namespace ProjDir
