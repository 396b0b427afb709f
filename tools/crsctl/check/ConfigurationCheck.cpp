#include "tools/crsctl/check/ConfigurationCheck.h"

#include <algorithm>
#include <sstream>

#include "tools/common/Text.h"
#include "tools/crsctl/check/CheckedFragment.h"
#include "tools/crsctl/check/NameClaims.h"
#include "tools/crsctl/check/ObservedStart.h"
#include "tools/crsctl/check/ProjDirectoryCheck.h"
#include "tools/crsctl/names/NameReport.h"
#include "tools/crsctl/names/NameReportOutput.h"
#include "tools/crsctl/start/ProjDirectory.h"

namespace crsctl {

using Tools::alignedColumns;
using Tools::printable;

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::CrsConfig;
using CoordinateTransformation::CrsConfigData;

namespace {

// What the server itself does: the whole fragment, one start. The failure, or nothing.
std::string startFailure(const std::string& text, const std::string& projDir) {
    const std::unique_ptr<CrsConfig> config = makeConfig(projDir);
    try {
        std::istringstream document(text);
        config->configure(document);
        config->init();
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return {};
}

// What helps with failures whose text alone does not tell.
std::string advice(const std::string& identifier) {
    if (identifier.rfind("URN:", 0) == 0 || identifier.rfind("HTTP", 0) == 0)
        return "; an identifier is put in capitals, and no URN or URL is understood that way: give the EPSG code as "
               "mapToEpsgCode and this text as the name";
    if (identifier.find('*') != std::string::npos && identifier.find("*EPSG:") == std::string::npos)
        return "; a compound is spelled EPSG:27700*EPSG:5701";
    return "";
}

CheckedEntry entryRow(const FragmentEntry& entry, const AbstractCrs* crs) {
    CheckedEntry row;
    row.place = entry.place;
    row.name = entry.data.getAliasOrIdentifier();
    row.identifier = entry.data.getIdentifier();
    row.suppressesDuplicates = entry.data.getPreventDoubleCoordinateOutput();
    row.decimalsConfigured = entry.data.getNumberOfDecimalPlaces().has_value();
    row.decimals = entry.data.getNumberOfDecimalPlaces().value_or(0);
    if (crs == nullptr) return row;
    row.primary = crs->getPrimaryCode();
    row.secondary = crs->getSecCompoundCode();
    const bool geographic = crs->isGeographic();
    const bool own = crs->isAxisOrderEastNorthOrLonLat();
    const bool eastNorth = entry.data.isMapped() ? entry.data.getAxisOrderEastNorthOrLonLat().value_or(own) : own;
    row.axisOrder = axisOrderWords(geographic, eastNorth);
    if (!row.decimalsConfigured)
        row.decimals =
            geographic ? CrsConfigData::DEFAULT_NUMBER_OF_PLACES_DEGREE : CrsConfigData::DEFAULT_NUMBER_OF_PLACES_METER;
    return row;
}

std::vector<const FragmentEntry*> keptEntries(const CheckedFragment& fragment) {
    std::vector<const FragmentEntry*> kept;
    for (const FragmentEntry& entry : fragment.entries)
        if (!entry.duplicateOf) kept.push_back(&entry);
    return kept;
}

void checkEntries(const CheckedFragment& fragment, const std::string& projDir, ConfigurationReport& report) {
    const std::vector<const FragmentEntry*> kept = keptEntries(fragment);
    std::vector<CrsConfigData> data;
    data.reserve(kept.size());
    for (const FragmentEntry* entry : kept) data.push_back(entry->data);
    const ObservedStart start(data, projDir);
    std::vector<ClaimingEntry> claiming;
    for (std::size_t i = 0; i < kept.size(); ++i) {
        const EntryOutcome& outcome = start.outcome(i);
        report.entries.push_back(entryRow(*kept[i], outcome.crs.get()));
        if (outcome.crs.get() != nullptr) claiming.push_back({kept[i]->place, &data[i], outcome.crs.get()});
        if (!outcome.failure.empty())
            report.findings.push_back(
                {Severity::ERROR, kept[i]->place, outcome.failure + advice(kept[i]->data.getIdentifier())});
    }
    const Findings contested = contestedNames(claiming);
    report.findings.insert(report.findings.end(), contested.begin(), contested.end());
}

void addTo(Findings& findings, const Findings& more) { findings.insert(findings.end(), more.begin(), more.end()); }

bool hasError(const Findings& findings) {
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding& finding) { return finding.severity == Severity::ERROR; });
}

std::string placeInWords(const std::string& fragment, const Place& place) {
    std::string words = printable(place.file.empty() ? fragment : place.file, 1000);
    if (place.line != 0) words += ":" + std::to_string(place.line);
    if (place.column != 0) words += ":" + std::to_string(place.column);
    return words;
}

const char* severityInWords(Severity severity) {
    if (severity == Severity::NOTE) return "note";
    return severity == Severity::ERROR ? "error" : "warning";
}

std::string decimalsInWords(const CheckedEntry& entry) {
    if (entry.decimalsConfigured) return std::to_string(entry.decimals);
    return entry.primary ? std::to_string(entry.decimals) + " (default)" : "default";
}

std::vector<std::string> tableRow(const CheckedEntry& entry) {
    const std::string codes = entry.primary ? codesInWords(*entry.primary, entry.secondary) : "none";
    return {std::to_string(entry.place.line),
            printable(entry.name),
            printable(entry.identifier),
            codes,
            entry.primary ? entry.axisOrder : "none",
            decimalsInWords(entry),
            entry.suppressesDuplicates ? "suppressed" : "kept"};
}

std::string entriesAsText(const std::vector<CheckedEntry>& entries) {
    if (entries.empty()) return "no entries\n";
    std::vector<std::vector<std::string>> rows = {
        {"line", "name", "identifier", "codes", "axis order", "decimals", "duplicates"}};
    for (const CheckedEntry& entry : entries) rows.push_back(tableRow(entry));
    return alignedColumns(rows);
}

std::size_t countOf(const Findings& findings, Severity severity) {
    std::size_t count = 0;
    for (const Finding& finding : findings) count += finding.severity == severity ? 1 : 0;
    return count;
}

std::string plural(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string verdict(const ConfigurationReport& report) {
    return printable(report.file, 1000) + ": a server would " + (report.starts ? "" : "not ") + "start; " +
           (report.entries.size() == 1 ? "1 entry" : std::to_string(report.entries.size()) + " entries") + ", " +
           plural(countOf(report.findings, Severity::ERROR), "error") + ", " +
           plural(countOf(report.findings, Severity::WARNING), "warning") + "\n";
}

Json entryAsJson(const CheckedEntry& entry) {
    return {{"line", entry.place.line},
            {"element", entry.place.element},
            {"name", entry.name},
            {"identifier", entry.identifier},
            {"primaryCode", entry.primary ? Json(*entry.primary) : Json()},
            {"secondaryCode", secondaryCodeAsJson(entry.secondary)},
            {"axisOrder", entry.primary ? Json(entry.axisOrder) : Json()},
            {"decimals", entry.primary || entry.decimalsConfigured ? Json(entry.decimals) : Json()},
            {"decimalsConfigured", entry.decimalsConfigured},
            {"suppressesDuplicates", entry.suppressesDuplicates}};
}

Json findingAsJson(const Finding& finding) {
    const Place& place = finding.place;
    return {{"severity", severityInWords(finding.severity)},
            {"file", place.file.empty() ? Json() : Json(place.file)},
            {"line", place.line == 0 ? Json() : Json(place.line)},
            {"column", place.column == 0 ? Json() : Json(place.column)},
            {"element", place.element.empty() ? Json() : Json(place.element)},
            {"text", finding.text}};
}

}  // namespace

ConfigurationReport checkConfiguration(const std::string& file, const std::string& text, const CommonOptions& options,
                                       const Expectations& expected) {
    ConfigurationReport report;
    report.file = file;
    const CheckedFragment fragment = checkFragment(text);
    report.findings = fragment.findings;
    checkEntries(fragment, options.projDir, report);
    report.failure = fragment.wellFormed ? startFailure(text, options.projDir) : fragment.failure;
    report.starts = report.failure.empty();
    if (!report.starts && !hasError(report.findings))
        report.findings.push_back({Severity::ERROR, Place(), report.failure});
    const std::string directory = projDirectory(projDirectoryChoice(options.projDir));
    addTo(report.findings, checkDescriptions(report.entries, directory, expected));
    addTo(report.findings, checkProjDirectory(directory));
    report.hasErrors = hasError(report.findings);
    sortByPlace(report.findings);
    return report;
}

std::string asText(const ConfigurationReport& report) {
    std::string text = entriesAsText(report.entries) + "\n";
    for (const Finding& finding : report.findings)
        text += placeInWords(report.file, finding.place) + ": " + severityInWords(finding.severity) + ": " +
                (finding.place.element.empty() ? "" : finding.place.element + ": ") + printable(finding.text, 1000) +
                "\n";
    return text + verdict(report);
}

Json asJson(const ConfigurationReport& report) {
    Json entries = Json::array();
    for (const CheckedEntry& entry : report.entries) entries.push_back(entryAsJson(entry));
    Json findings = Json::array();
    for (const Finding& finding : report.findings) findings.push_back(findingAsJson(finding));
    return {{"file", report.file},
            {"starts", report.starts},
            {"failure", report.starts ? Json() : Json(report.failure)},
            {"entries", entries},
            {"findings", findings}};
}

}  // namespace crsctl
