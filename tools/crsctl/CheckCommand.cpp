#include "tools/crsctl/CheckCommand.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <unordered_map>
#include <utility>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/CrsConfigData.h"
#include "text/FileText.h"
#include "text/InitFile.h"
#include "text/NumericText.h"
#include "text/ParameterList.h"
#include "tools/common/Text.h"
#include "tools/crsctl/ResolveCommand.h"

namespace crsctl {

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::CrsConfigData;
using CoordinateTransformation::writeDouble;
using Tools::printable;

namespace {

struct Claim {
    const CheckedEntry* entry;
    std::string answer;
};

std::string answerText(const std::string& codeKey, const char* axisOrder) {
    return "EPSG " + codeKey + " in the order " + axisOrder;
}

class NameClaims {
public:
    // The first claim of a name counts, as in the library.
    void add(const std::string& name, const Claim& claim) {
        const auto [place, isNew] = claims.emplace(name, claim);
        const Claim& first = place->second;
        if (isNew || first.answer == claim.answer) return;
        const std::string origin = first.entry == claim.entry ? "the alias of this entry"
                                                              : "from line " + std::to_string(first.entry->place.line);
        warn(*claim.entry, "the name " + printable(name) + " is claimed twice: it answers with " + first.answer + ", " +
                               origin + ", not with " + claim.answer);
    }

    void warn(const CheckedEntry& entry, const std::string& text) {
        findings.push_back({Severity::WARNING, entry.place, text});
    }

    Findings findings;

private:
    std::map<std::string, Claim> claims;
};

// Returns whether the identifier of the entry is an alias of an earlier entry. The entry then has the CRS of that one
// and registers no further name.
bool isAnsweredByAlias(const CheckedEntry& entry) {
    const std::string& alias = entry.crs->getAlias();
    return !alias.empty() && alias == entry.data.getIdentifier();
}

}  // namespace

Findings contestedNames(const std::vector<CheckedEntry>& entries, const std::vector<NamesOfCrs>& names) {
    std::map<std::string, const NamesOfCrs*> namesByCodes;
    for (const NamesOfCrs& crs : names) namesByCodes.emplace(crs.codeKey, &crs);
    NameClaims claims;
    for (const CheckedEntry& entry : entries) {
        if (entry.crs == nullptr) continue;
        const std::string codeKey = codeKeyOf(*entry.crs.get());
        if (entry.data.isMapped())
            claims.add(entry.data.getAlias(), {&entry, answerText(codeKey, axisOrderText(*entry.crs.get()))});
        if (isAnsweredByAlias(entry))
            claims.warn(entry, "its identifier " + printable(entry.data.getIdentifier()) +
                                   " is an alias of an earlier entry: it offers EPSG " + codeKey);
        else
            for (const RegisteredName& name : namesByCodes.at(codeKey)->names)
                claims.add(name.name, {&entry, answerText(codeKey, name.axisOrder)});
    }
    return std::move(claims.findings);
}

namespace {

std::string metres(double length) { return writeDouble(length) + " m"; }

}  // namespace

std::vector<std::string> unmetExpectations(bool hasShift, const CrsDescription* description,
                                           const Expectations& expected) {
    std::vector<std::string> unmet;
    if (!hasShift)
        unmet.emplace_back("no shift to WGS 84 is known: coordinates are off by up to hundreds of metres in other CRS");
    if (description == nullptr) return unmet;
    const CrsDescription& crs = *description;
    if (crs.shiftAccuracy && *crs.shiftAccuracy > expected.accuracy)
        unmet.push_back("the shift to WGS 84 (" + crs.shiftSource + ") is accurate only to " +
                        metres(*crs.shiftAccuracy));
    if (crs.largestDistance && *crs.largestDistance > expected.accuracy)
        unmet.push_back("the shift to WGS 84 leads up to " + metres(*crs.largestDistance) +
                        " away from PROJ's best operation in parts of the area of use");
    if (expected.area && crs.box && !covers(*crs.box, *expected.area))
        unmet.push_back("the area of use (" + boxText(*crs.box) + ") does not cover " + boxText(*expected.area));
    return unmet;
}

bool hasShiftToWgs84(const std::string& definition) {
    return CoordinateTransformation::ParameterList(definition).hasAnyOf({"datum", "towgs84", "nadgrids"});
}

namespace {

void addUnmetExpectations(const std::filesystem::path& projDirectory, const Expectations& expected,
                          ConfigurationReport& report) {
    const std::string initFile = (projDirectory / CoordinateTransformation::INIT_FILE).string();
    const auto definitions =
        CoordinateTransformation::parseInitFile(CoordinateTransformation::readFile(initFile).content);
    const CrsDescriptions& descriptions = CrsDescriptions::ofProjDirectory();
    for (const CheckedEntry& entry : report.entries) {
        if (entry.crs == nullptr) continue;
        const unsigned int code = entry.crs->getPrimaryCode();
        const auto definition = definitions.find(std::to_string(code));
        const bool hasShift = definition == definitions.end() || hasShiftToWgs84(definition->second);
        for (const std::string& unmet : unmetExpectations(hasShift, descriptions.find(code), expected))
            report.findings.push_back({Severity::WARNING, entry.place, "EPSG " + std::to_string(code) + ": " + unmet});
    }
    if (!expected.areGiven || descriptions.size() != 0) return;
    const std::string file = (projDirectory / CoordinateTransformation::DESCRIPTION_FILE).string();
    report.findings.push_back({Severity::NOTE, {0, 0, "", file}, "missing: areas and accuracies are not known"});
}

// Returns an explanation for identifiers that are often misspelled, to follow the message of the failure.
std::string advice(const std::string& identifier) {
    if (identifier.rfind("URN:", 0) == 0 || identifier.rfind("HTTP", 0) == 0)
        return "; identifiers are converted to capitals, and a URN or URL in capitals is unknown: "
               "give the EPSG code as mapToEpsgCode and this text as the name";
    if (identifier.find('*') != std::string::npos && identifier.find("*EPSG:") == std::string::npos)
        return "; a compound is spelled EPSG:27700*EPSG:5701";
    return "";
}

// Starts the library with the entries. The first failure is the one with which a server fails.
void startEntries(ConfigurationReport& report) {
    auto next = report.entries.begin();
    report.config->initReporting([&report, &next](const CrsConfigData& data, const AbstractCrs* crs,
                                                  const std::exception* failure) {
        CheckedEntry& entry = *next++;
        if (crs == nullptr) {
            if (report.starts()) report.failure = failure->what();
            report.findings.push_back({Severity::ERROR, entry.place, failure->what() + advice(data.getIdentifier())});
            return;
        }
        entry.crs = data.isMapped() ? CoordinateTransformation::Crs(crs->copy())
                                    : report.config->getCreator().createInOrderOf(data.getIdentifier(), *crs);
        const boost::optional<bool> order = data.getAxisOrderEastNorthOrLonLat();
        if (data.isMapped() && order) entry.crs.mod()->setAxisOrderEastNorthOrLonLat(*order);
    });
}

// Returns the names that the CRS of the entries have in a configuration without aliases.
std::vector<NamesOfCrs> namesWithoutAliases(const std::vector<CheckedEntry>& entries, const CommonOptions& options) {
    const auto config = startWithoutEntries(options);
    for (const CheckedEntry& entry : entries)
        if (entry.crs != nullptr) config->addCrsConfigData(CrsConfigData(entry.data.getIdentifier()));
    config->initReporting([](const CrsConfigData&, const AbstractCrs*, const std::exception*) {});
    return registeredNames(*config);
}

void addTo(Findings& findings, const Findings& more) { findings.insert(findings.end(), more.begin(), more.end()); }

std::string placeText(const std::string& fragment, const Place& place) {
    std::string text = printable(place.file.empty() ? fragment : place.file, MAX_TEXT_LENGTH);
    if (place.line != 0) text += ":" + std::to_string(place.line);
    if (place.column != 0) text += ":" + std::to_string(place.column);
    return text;
}

const char* severityName(Severity severity) {
    constexpr std::array NAMES = {"error", "warning", "note"};
    return NAMES.at(static_cast<std::size_t>(severity));
}

std::optional<int> decimalsOf(const CheckedEntry& entry) {
    if (const boost::optional<int> configured = entry.data.getNumberOfDecimalPlaces()) return *configured;
    if (entry.crs == nullptr) return std::nullopt;
    return entry.crs->isGeographic() ? CrsConfigData::DEFAULT_NUMBER_OF_PLACES_DEGREE
                                     : CrsConfigData::DEFAULT_NUMBER_OF_PLACES_METER;
}

std::string decimalsText(const CheckedEntry& entry) {
    const std::optional<int> decimals = decimalsOf(entry);
    if (!decimals) return "default";
    return std::to_string(*decimals) + (entry.data.getNumberOfDecimalPlaces() ? "" : " (default)");
}

std::vector<std::string> tableRow(const CheckedEntry& entry) {
    const AbstractCrs* const crs = entry.crs.get();
    return {std::to_string(entry.place.line),
            printable(entry.data.getAliasOrIdentifier()),
            printable(entry.data.getIdentifier()),
            crs == nullptr ? "none" : codesText(*crs),
            crs == nullptr ? "none" : axisOrderText(*crs),
            decimalsText(entry),
            entry.data.getPreventDoubleCoordinateOutput() ? "suppressed" : "kept"};
}

std::string asText(const std::vector<CheckedEntry>& entries) {
    if (entries.empty()) return "no entries\n";
    Tools::TableRows rows = {{"line", "name", "identifier", "codes", "axis order", "decimals", "duplicates"}};
    for (const CheckedEntry& entry : entries) rows.push_back(tableRow(entry));
    return Tools::alignedColumns(rows);
}

std::string counted(std::size_t count, const char* one, const char* several) {
    return std::to_string(count) + " " + (count == 1 ? one : several);
}

}  // namespace

std::size_t ConfigurationReport::count(Severity severity) const {
    return static_cast<std::size_t>(std::count_if(
        findings.begin(), findings.end(), [severity](const Finding& finding) { return finding.severity == severity; }));
}

ConfigurationReport checkConfiguration(const std::string& file, const std::string& text, const CommonOptions& options,
                                       const Expectations& expected) {
    ConfigurationReport report{file, startWithoutEntries(options)};
    CheckedFragment fragment = checkFragment(text, *report.config);
    report.failure = fragment.failure;
    report.entries = std::move(fragment.entries);
    report.findings = std::move(fragment.findings);
    startEntries(report);
    addTo(report.findings, contestedNames(report.entries, namesWithoutAliases(report.entries, options)));
    const std::string directory = projDirectory(options.projDir);
    addUnmetExpectations(directory, expected, report);
    addTo(report.findings, checkProjDirectory(directory));
    sortByPlace(report.findings);
    return report;
}

std::string asText(const ConfigurationReport& report) {
    std::string text = asText(report.entries) + "\n";
    for (const Finding& finding : report.findings)
        text += placeText(report.file, finding.place) + ": " + severityName(finding.severity) + ": " +
                (finding.place.element.empty() ? "" : finding.place.element + ": ") +
                printable(finding.text, MAX_TEXT_LENGTH) + "\n";
    return text + printable(report.file, MAX_TEXT_LENGTH) + ": a server would " + (report.starts() ? "" : "not ") +
           "start; " + counted(report.entries.size(), "entry", "entries") + ", " +
           counted(report.count(Severity::ERROR), "error", "errors") + ", " +
           counted(report.count(Severity::WARNING), "warning", "warnings") + "\n";
}

void to_json(Json& json, const CheckedEntry& entry) {
    const AbstractCrs* const crs = entry.crs.get();
    json = {{"line", entry.place.line},
            {"element", entry.place.element},
            {"name", entry.data.getAliasOrIdentifier()},
            {"identifier", entry.data.getIdentifier()},
            {"primaryCode", crs == nullptr ? Json() : Json(crs->getPrimaryCode())},
            {"secondaryCode", crs == nullptr ? Json() : orNull(crs->getSecCompoundCode())},
            {"axisOrder", crs == nullptr ? Json() : Json(axisOrderText(*crs))},
            {"decimals", orNull(decimalsOf(entry))},
            {"decimalsConfigured", entry.data.getNumberOfDecimalPlaces().has_value()},
            {"suppressesDuplicates", entry.data.getPreventDoubleCoordinateOutput()}};
}

void to_json(Json& json, const Finding& finding) {
    const Place& place = finding.place;
    json = {{"severity", severityName(finding.severity)},
            {"file", orNull(place.file)},
            {"line", orNull(place.line)},
            {"column", orNull(place.column)},
            {"element", orNull(place.element)},
            {"text", finding.text}};
}

Json asJson(const ConfigurationReport& report) {
    return {{"file", report.file},
            {"starts", report.starts()},
            {"failure", orNull(report.failure)},
            {"entries", report.entries},
            {"findings", report.findings}};
}

CommandResult checkCommand(const CommonOptions& common, const std::string& file, const Expectations& expected) {
    const ConfigurationReport report = checkConfiguration(inputName(file), readTextFile(file), common, expected);
    CommandResult result;
    result.output = common.json ? serialised(asJson(report)) : asText(report);
    if (report.count(Severity::ERROR) == 0) return result;
    result.exitCode = EXIT_REFUSED;
    result.notes.push_back(
        inputName(file) + ": " +
        (report.starts() ? "the PROJ directory has errors" : printable(report.failure, MAX_TEXT_LENGTH)));
    return result;
}

}  // namespace crsctl
