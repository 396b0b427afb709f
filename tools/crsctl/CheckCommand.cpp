#include "tools/crsctl/CheckCommand.h"

#include <algorithm>
#include <cctype>
#include <deque>
#include <filesystem>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <utility>

#include <boost/property_tree/xml_parser.hpp>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "CoordinateTransformation/CrsConfigData.h"
#include "config/Fragment.h"
#include "names/CrsName.h"
#include "text/FileText.h"
#include "text/InitFile.h"
#include "text/NumericText.h"
#include "text/ParameterList.h"
#include "tools/common/FixedDecimals.h"
#include "tools/common/Text.h"
#include "tools/crsctl/NamesCommand.h"
#include "tools/crsctl/ProjDirectoryCheck.h"
#include "tools/crsctl/ResolveCommand.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

using boost::property_tree::ptree;
using boost::property_tree::xml_parser_error;
using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::AXIS_ORDER;
using CoordinateTransformation::Crs;
using CoordinateTransformation::CRS_84;
using CoordinateTransformation::CrsConfig;
using CoordinateTransformation::CrsConfigData;
using CoordinateTransformation::CrsDescription;
using CoordinateTransformation::CrsDescriptions;
using CoordinateTransformation::DESCRIPTION_FILE;
using CoordinateTransformation::ENTRY_ATTRIBUTES;
using CoordinateTransformation::FRAGMENT_CONTAINERS;
using CoordinateTransformation::FragmentContainer;
using CoordinateTransformation::FragmentElement;
using CoordinateTransformation::FragmentFault;
using CoordinateTransformation::INIT_FILE;
using CoordinateTransformation::InitFileDefinition;
using CoordinateTransformation::MAP_TO_EPSG_CODE;
using CoordinateTransformation::NUMBER_OF_DECIMAL_PLACES;
using CoordinateTransformation::ParameterList;
using CoordinateTransformation::readFile;
using CoordinateTransformation::readInitFileText;
using CoordinateTransformation::SUPPRESS_DUPLICATE_COORDINATES;
using CoordinateTransformation::writeDouble;
using Tools::alignedColumns;
using Tools::MAX_DECIMALS;
using Tools::printable;

namespace {

bool isMarkupNode(const std::string& name) { return name == "<xmlattr>" || name == "<xmlcomment>"; }

std::string entryNamesInWords(const FragmentContainer& container) {
    std::string words;
    for (const std::string_view name : container.entryNames)
        if (!name.empty()) words += (words.empty() ? "" : " or ") + std::string(name);
    return words;
}

bool isBlankText(const std::string& text) { return text.find_first_not_of(" \t\r\n") == std::string::npos; }

class FragmentReader {
public:
    FragmentReader(const ptree& readTree, const std::vector<FragmentElement>& startTags)
        : tree(readTree), elements(startTags) {}

    CheckedFragment run() {
        walkTopLevel();
        for (const FragmentContainer& container : FRAGMENT_CONTAINERS)
            for (FragmentEntry& entry : entriesOf[container.name]) take(std::move(entry));
        return std::move(fragment);
    }

private:
    void warn(const Place& place, const std::string& text) {
        fragment.findings.push_back({Severity::WARNING, place, text});
    }

    // The tree has no places, but its elements are in the order of their start tags.
    Place placeOf(const std::string& name) {
        const FragmentElement& element = elements.at(nextElement++);
        return {element.place.line, element.place.column, name};
    }

    // Advances past the start tags inside an element.
    void skipChildren(const ptree& element) {
        for (const auto& [name, child] : element) {
            if (isMarkupNode(name)) continue;
            placeOf(name);
            skipChildren(child);
        }
    }

    void walkTopLevel() {
        for (const auto& [name, child] : tree) {
            if (isMarkupNode(name)) continue;
            const Place place = placeOf(name);
            if (const FragmentContainer* container = containerToRead(name, place))
                walkContainer(*container, child, place);
            else
                skipChildren(child);
        }
    }

    // Returns null, and warns, if the element is not read.
    const FragmentContainer* containerToRead(const std::string& name, const Place& place) {
        for (const FragmentContainer& container : FRAGMENT_CONTAINERS) {
            if (container.name != name) continue;
            if (entriesOf.emplace(name, std::vector<FragmentEntry>()).second) return &container;
            warn(place, "ignored with all its entries: only the first " + name + " is read");
            return nullptr;
        }
        warn(place, "ignored: only CrsConfiguration and SRSList are read at this level");
        return nullptr;
    }

    void walkContainer(const FragmentContainer& container, const ptree& element, const Place& place) {
        if (element.count("<xmlattr>") != 0)
            for (const auto& attribute : element.get_child("<xmlattr>"))
                warn(place, "attribute " + attribute.first + " is ignored: a container has none");
        if (!isBlankText(element.data())) warn(place, "text outside its entries is ignored");
        for (const auto& child : element) {
            if (isMarkupNode(child.first)) continue;
            walkChild(container, child, placeOf(child.first));
        }
    }

    void walkChild(const FragmentContainer& container, const ptree::value_type& child, const Place& place) {
        if (!container.holds(child.first)) {
            warn(place,
                 "ignored: entries of " + std::string(container.name) + " are called " + entryNamesInWords(container));
        } else {
            examineEntry(child.second, place, fragment.findings);
            entriesOf[container.name].push_back({place, child.second.data(), CrsConfigData(child), std::nullopt});
        }
        skipChildren(child.second);
    }

    void take(FragmentEntry entry) {
        const auto [first, isNew] =
            taken.emplace(std::pair(entry.data.getIdentifier(), entry.data.getAlias()), fragment.entries.size());
        if (!isNew) {
            entry.duplicateOf = first->second;
            warnOfDuplicate(entry, fragment.entries[first->second]);
        }
        fragment.entries.push_back(std::move(entry));
    }

    void warnOfDuplicate(const FragmentEntry& entry, const FragmentEntry& first) {
        const bool differs =
            entry.data.getNumberOfDecimalPlaces() != first.data.getNumberOfDecimalPlaces() ||
            entry.data.getAxisOrderEastNorthOrLonLat() != first.data.getAxisOrderEastNorthOrLonLat() ||
            entry.data.getPreventDoubleCoordinateOutput() != first.data.getPreventDoubleCoordinateOutput();
        warn(entry.place, "dropped: repeats " + printable(first.data.getAliasOrIdentifier()) + " of line " +
                              std::to_string(first.place.line) + (differs ? ", and its other settings are lost" : ""));
    }

    const ptree& tree;
    const std::vector<FragmentElement>& elements;
    std::size_t nextElement = 0;
    std::map<std::string, std::vector<FragmentEntry>> entriesOf;
    std::map<std::pair<std::string, std::string>, std::size_t> taken;  // by identifier and alias
    CheckedFragment fragment;
};

// The place of the fault is more exact than that of the tree reader.
CheckedFragment malformed(const xml_parser_error& failure, const std::optional<FragmentFault>& fault) {
    CheckedFragment fragment;
    fragment.wellFormed = false;
    fragment.failure = failure.what();
    const Place place = fault ? Place{fault->place.line, fault->place.column} : Place{failure.line(), 0};
    fragment.findings.push_back(
        {Severity::ERROR, place, "the fragment is malformed: " + (fault ? fault->message : failure.message())});
    return fragment;
}

}  // namespace

CheckedFragment checkFragment(const std::string& text) {
    try {
        const ptree tree = CoordinateTransformation::readFragmentText(text);
        return FragmentReader(tree, CoordinateTransformation::fragmentElements(text)).run();
    } catch (const xml_parser_error& failure) {
        return malformed(failure, CoordinateTransformation::findFragmentFault(text));
    }
}

namespace {

struct Claim {
    std::size_t line;
    std::string codeKey;
    std::string axisOrder;
};

bool haveSameAnswer(const Claim& left, const Claim& right) {
    return left.codeKey == right.codeKey && left.axisOrder == right.axisOrder;
}

std::string inWords(const Claim& claim) { return "EPSG " + claim.codeKey + " in the order " + claim.axisOrder; }

Claim claimOf(const ClaimingEntry& entry, bool eastNorth) {
    return {entry.place.line, codeKeyOf(*entry.crs), axisOrderWords(entry.crs->isGeographic(), eastNorth)};
}

// Returns whether the identifier of the entry is an alias of an earlier entry. The entry then has the CRS of that one.
bool isAnsweredByAlias(const ClaimingEntry& entry) {
    const std::string& alias = entry.crs->getAlias();
    return !alias.empty() && alias == entry.data->getIdentifier();
}

std::vector<std::string> namesClaimedBy(const AbstractCrs& crs) {
    if (crs.getPrimaryCode() == 0) return {};
    return CoordinateTransformation::registeredNames(
        {crs.getPrimaryCode(), crs.getSecCompoundCode()},
        {crs.getAliasOrIdentifier(false), crs.getAliasOrAsOgcURN(nullptr, false), crs.getAsText()});
}

class ClaimRegister {
public:
    // The first claim of a name counts, as in the library.
    void add(const std::string& name, const Claim& claim, const Place& place) {
        const auto [first, isNew] = claims.emplace(name, claim);
        if (isNew || haveSameAnswer(first->second, claim)) return;
        found.push_back({Severity::WARNING, place,
                         "the name " + printable(name) + " is claimed twice: it answers with " +
                             inWords(first->second) +
                             (first->second.line == claim.line
                                  ? ", the alias of this entry, not with "
                                  : ", from line " + std::to_string(first->second.line) + ", not with ") +
                             inWords(claim)});
    }

    // An entry that has the CRS of an earlier alias registers no further name.
    void addEntry(const ClaimingEntry& entry) {
        const bool own = entry.crs->isAxisOrderEastNorthOrLonLat();
        if (entry.data->isMapped()) {
            const bool eastNorth = entry.data->getAxisOrderEastNorthOrLonLat().value_or(own);
            add(entry.data->getAlias(), claimOf(entry, eastNorth), entry.place);
        }
        if (isAnsweredByAlias(entry)) return;
        for (const std::string& name : namesClaimedBy(*entry.crs)) add(name, claimOf(entry, own), entry.place);
    }

    Findings take() { return std::move(found); }

private:
    std::map<std::string, Claim> claims;
    Findings found;
};

Finding answeredByAlias(const ClaimingEntry& entry) {
    return {Severity::WARNING, entry.place,
            "its identifier " + printable(entry.data->getIdentifier()) +
                " is an alias of an earlier entry: it offers EPSG " + codeKeyOf(*entry.crs)};
}

}  // namespace

Findings contestedNames(const std::vector<ClaimingEntry>& entries) {
    ClaimRegister claims;
    Findings answered;
    for (const ClaimingEntry& entry : entries) {
        claims.addEntry(entry);
        if (isAnsweredByAlias(entry)) answered.push_back(answeredByAlias(entry));
    }
    Findings findings = claims.take();
    findings.insert(findings.end(), answered.begin(), answered.end());
    return findings;
}

namespace {

std::string quoted(const std::string& text) { return "\"" + printable(text) + "\""; }

std::string assigned(const char* attribute, const std::string& value) { return attribute + ("=" + quoted(value)); }

bool isBlankCharacter(char character) {
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

bool hasBlanksAround(const std::string& text) {
    return !text.empty() && (isBlankCharacter(text.front()) || isBlankCharacter(text.back()));
}

class EntryExamination {
public:
    EntryExamination(const ptree& examined, const Place& entryPlace, Findings& found)
        : entry(examined), place(entryPlace), findings(found), data({entryPlace.element, examined}) {}

    void run() {
        if (hasElementsInside()) warn("elements inside an entry are ignored");
        if (entry.data() == CRS_84) {
            warnOfAttributesOfCrs84();
            return;
        }
        examineText();
        for (const auto& [name, value] : attributes()) examineAttribute(name, value.data());
    }

private:
    void warn(const std::string& text) { findings.push_back({Severity::WARNING, place, text}); }

    ptree attributes() const { return entry.get_child("<xmlattr>", ptree()); }

    bool hasElementsInside() const {
        return std::any_of(entry.begin(), entry.end(), [](const ptree::value_type& child) {
            return child.first != "<xmlattr>" && child.first != "<xmlcomment>";
        });
    }

    void warnOfAttributesOfCrs84() {
        for (const auto& attribute : attributes())
            warn("attribute " + attribute.first + " is ignored: the entry CRS:84 takes no attributes");
    }

    void examineText() {
        const bool isAlias = attributes().count(MAP_TO_EPSG_CODE) != 0;
        if (hasBlanksAround(entry.data()))
            warn("blanks around " + quoted(entry.data()) + " are part of the " + (isAlias ? "alias" : "identifier"));
        if (isAlias && entry.data().empty()) warn("mapToEpsgCode without a text: the entry has no alias");
    }

    void examineAttribute(const std::string& name, const std::string& value) {
        if (!seen.insert(name).second)
            warn("the second attribute " + name + " is ignored");
        else if (name == MAP_TO_EPSG_CODE)
            examineMapping(value);
        else if (name == NUMBER_OF_DECIMAL_PLACES)
            examineDecimals(value);
        else if (name == SUPPRESS_DUPLICATE_COORDINATES)
            examineSuppression(value);
        else if (name == AXIS_ORDER)
            examineAxisOrder(value);
        else
            warn("attribute " + name + " is ignored" + advice(name));
    }

    static std::string advice(const std::string& name) {
        const std::optional<std::string> meant = Tools::closest(name, {ENTRY_ATTRIBUTES, std::end(ENTRY_ATTRIBUTES)});
        return meant ? ": it is spelled " + *meant : "";
    }

    void examineMapping(const std::string& value) {
        if (hasBlanksAround(value)) warn("blanks around the code in " + assigned(MAP_TO_EPSG_CODE, value));
    }

    void examineDecimals(const std::string& value) {
        const boost::optional<int> decimals = data.getNumberOfDecimalPlaces();
        const std::string attribute = assigned(NUMBER_OF_DECIMAL_PLACES, value);
        if (!decimals)
            warn(attribute + " is ignored: it is not an integer");
        else if (*decimals < 0 || *decimals > MAX_DECIMALS)
            warn(attribute + " is out of range: 0 to " + std::to_string(MAX_DECIMALS) + " places can be written");
    }

    void examineSuppression(const std::string& value) {
        if (!CoordinateTransformation::readBoolean(entry, SUPPRESS_DUPLICATE_COORDINATES))
            warn(assigned(SUPPRESS_DUPLICATE_COORDINATES, value) + " is ignored: neither true, false, 1 nor 0");
    }

    void examineAxisOrder(const std::string& value) {
        if (!data.getAxisOrderEastNorthOrLonLat())
            warn(assigned(AXIS_ORDER, value) + " is ignored: neither EN nor NE");
        else if (!data.isMapped())
            warn(assigned(AXIS_ORDER, value) +
                 " has no effect: it applies to an alias, and an entry without mapToEpsgCode has none");
    }

    const ptree& entry;
    const Place& place;
    Findings& findings;
    CrsConfigData data;
    std::set<std::string> seen;
};

}  // namespace

void examineEntry(const ptree& entry, const Place& place, Findings& findings) {
    EntryExamination(entry, place, findings).run();
}

namespace {

std::string inMetres(double length) { return writeDouble(length) + " m"; }

class DescriptionExamination {
public:
    DescriptionExamination(const CheckedEntry& checked, const Expectations& expectations)
        : entry(checked), expected(expectations) {}

    void examineShift(bool hasShift) {
        if (!hasShift)
            warn("no shift to WGS 84 is known: coordinates are off by up to hundreds of metres in other CRS");
    }

    void examine(const CrsDescription& crs) {
        if (crs.shiftAccuracy && *crs.shiftAccuracy > expected.accuracy)
            warn("the shift to WGS 84 (" + crs.shiftSource + ") is accurate only to " + inMetres(*crs.shiftAccuracy));
        if (crs.largestDistance && *crs.largestDistance > expected.accuracy)
            warn("the shift to WGS 84 leads up to " + inMetres(*crs.largestDistance) +
                 " away from PROJ's best operation in parts of the area of use");
        if (expected.area && crs.box && !covers(*crs.box, *expected.area))
            warn("the area of use (" + boxInWords(*crs.box) + ") does not cover " + boxInWords(*expected.area));
    }

    Findings take() { return std::move(findings); }

private:
    void warn(const std::string& text) {
        findings.push_back({Severity::WARNING, entry.place, "EPSG " + std::to_string(*entry.primary) + ": " + text});
    }

    const CheckedEntry& entry;
    const Expectations& expected;
    Findings findings;
};

std::set<std::string> codesWithoutShift(const std::string& initFile) {
    std::set<std::string> seen;
    std::set<std::string> without;
    for (const InitFileDefinition& definition : readInitFileText(readFile(initFile).content))
        if (seen.insert(definition.code).second && !hasShiftToWgs84(definition.text)) without.insert(definition.code);
    return without;
}

}  // namespace

bool hasShiftToWgs84(const std::string& definition) {
    return ParameterList(definition).hasAnyOf({"datum", "towgs84", "nadgrids"});
}

Findings checkDescriptions(const std::vector<CheckedEntry>& entries, const CrsDescriptions& descriptions,
                           const std::function<bool(unsigned int code)>& hasShift, const Expectations& expected) {
    Findings findings;
    for (const CheckedEntry& entry : entries) {
        if (!entry.primary) continue;
        DescriptionExamination examination(entry, expected);
        examination.examineShift(hasShift(*entry.primary));
        const CrsDescription* const described = descriptions.find(*entry.primary);
        if (described != nullptr) examination.examine(*described);
        const Findings found = examination.take();
        findings.insert(findings.end(), found.begin(), found.end());
    }
    return findings;
}

Findings checkDescriptions(const std::vector<CheckedEntry>& entries, const std::string& directory,
                           const Expectations& expected) {
    const std::filesystem::path path(directory);
    const std::set<std::string> without = codesWithoutShift((path / INIT_FILE).string());
    const CrsDescriptions& descriptions = CrsDescriptions::ofProjDirectory();
    Findings findings = checkDescriptions(
        entries, descriptions, [&without](unsigned int code) { return without.count(std::to_string(code)) == 0; },
        expected);
    if (expected.areGiven && descriptions.size() == 0) {
        Place place;
        place.file = (path / DESCRIPTION_FILE).string();
        findings.push_back({Severity::NOTE, place, "missing: areas and accuracies are not known"});
    }
    return findings;
}

namespace {

// Starts the library with the whole fragment, as the server does. Returns the message of the failure, or an empty text.
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

// Returns an explanation for identifiers that are often misspelled, to follow the message of the failure.
std::string advice(const std::string& identifier) {
    if (identifier.rfind("URN:", 0) == 0 || identifier.rfind("HTTP", 0) == 0)
        return "; identifiers are converted to capitals, and a URN or URL in capitals is unknown: "
               "give the EPSG code as mapToEpsgCode and this text as the name";
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

void addTo(Findings& findings, const Findings& more) { findings.insert(findings.end(), more.begin(), more.end()); }

void checkEntries(const CheckedFragment& fragment, const std::string& text, const std::string& projDir,
                  ConfigurationReport& report) {
    const std::unique_ptr<CrsConfig> config = makeConfig(projDir);
    std::istringstream document(text);
    config->configure(document);
    const std::vector<const FragmentEntry*> kept = keptEntries(fragment);
    auto next = kept.begin();
    std::deque<Crs> started;
    std::vector<ClaimingEntry> claiming;
    config->initReporting([&](const CrsConfigData& data, const AbstractCrs* crs, const std::exception* failure) {
        const FragmentEntry& entry = **next++;
        report.entries.push_back(entryRow(entry, crs));
        if (crs == nullptr) {
            report.findings.push_back({Severity::ERROR, entry.place, failure->what() + advice(data.getIdentifier())});
            return;
        }
        started.emplace_back(crs->copy());
        claiming.push_back({entry.place, &data, started.back().get()});
    });
    addTo(report.findings, contestedNames(claiming));
}

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
    CommonOptions withoutEntries;
    withoutEntries.projDir = options.projDir;
    const Session session(withoutEntries);
    if (fragment.wellFormed) checkEntries(fragment, text, options.projDir, report);
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

CommandResult checkCommand(const CommonOptions& common, const std::string& file, const Expectations& expected) {
    const ConfigurationReport report = checkConfiguration(inputName(file), readTextFile(file), common, expected);
    CommandResult result;
    result.output = common.json ? serialised(asJson(report)) : asText(report);
    if (!report.hasErrors) return result;
    result.exitCode = EXIT_REFUSED;
    result.notes.push_back(inputName(file) + ": " +
                           (report.starts ? "the PROJ directory has errors" : printable(report.failure, 1000)));
    return result;
}

}  // namespace crsctl
