#include "tools/crsctl/ResolveCommand.h"

#include <algorithm>
#include <exception>
#include <vector>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "QuarvelSrv/SrsFormattingOptions.h"
#include "config/Fragment.h"
#include "names/CrsName.h"
#include "text/NumericText.h"
#include "tools/common/Text.h"
#include "tools/crsctl/FindCommand.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::CodePair;
using CoordinateTransformation::Crs;
using CoordinateTransformation::CRS_84;
using CoordinateTransformation::CrsDescriptions;
using CoordinateTransformation::CrsNotConfigured;
using CoordinateTransformation::CrsUnknownSyntaxOrAlias;
using CoordinateTransformation::Misconfigured;
using CoordinateTransformation::NAME_SYNTAXES;
using CoordinateTransformation::NameExplanation;
using CoordinateTransformation::NameSyntax;
using CoordinateTransformation::readCode;
using CoordinateTransformation::TransformationException;
using QuarvelSrv::SrsFormattingOptions;
using Tools::alignedColumns;
using Tools::printable;

namespace {

constexpr char DIGITS[] = "0123456789";
constexpr std::size_t LONGEST_CODE = 8;

// Returns the EPSG codes that a name may mean: its last two numbers as a compound, then the last number alone.
std::vector<CodePair> codesIn(const std::string& name) {
    std::vector<unsigned int> numbers;
    for (std::size_t at = 0; (at = name.find_first_of(DIGITS, at)) != std::string::npos;) {
        const std::size_t end = std::min(name.find_first_not_of(DIGITS, at), name.size());
        if (end - at <= LONGEST_CODE) numbers.push_back(readCode(name.substr(at, end - at)));
        at = end;
    }
    std::vector<CodePair> codes;
    if (numbers.size() > 1) codes.push_back({numbers[numbers.size() - 2], numbers.back()});
    if (!numbers.empty()) codes.push_back({numbers.back(), 0});
    return codes;
}

std::string inSmallLetters(std::string text) {
    for (char& character : text)
        if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
    return text;
}

std::string digitsOf(std::string name) {
    name.erase(std::remove_if(name.begin(), name.end(), [](char c) { return c < '0' || c > '9'; }), name.end());
    return name;
}

// A configured name with other digits means another CRS, so it is not a candidate.
std::vector<Suggestion> candidatesFor(const std::string& name, const std::set<std::string>& configured) {
    std::vector<Suggestion> candidates;
    for (const CodePair& codes : codesIn(name))
        for (const NameSyntax& syntax : NAME_SYNTAXES)
            candidates.push_back({std::string("as ") + syntax.description, syntax.write(codes)});
    candidates.push_back({"in small letters", inSmallLetters(name)});
    for (const std::string& known : configured)
        if (digitsOf(known) == digitsOf(name)) candidates.push_back({"as the configuration spells it", known});
    return candidates;
}

// A longer name gets no suggestion.
constexpr std::size_t LONGEST_NAME = 512;

// A suggestion may change enough of a name to add the second "EPSG:" of a compound.
std::size_t maxChanges(const std::string& name) { return std::max(std::size_t{2}, 2 * name.size() / 5); }

}  // namespace

std::optional<Suggestion> suggest(const std::string& name, const std::set<std::string>& configured,
                                  const std::function<bool(const std::string&)>& works) {
    if (name.size() > LONGEST_NAME) return std::nullopt;
    const Suggestion crs84{"as the configured name CRS:84", CRS_84};
    if (isCrs84(name)) return name != CRS_84 && works(CRS_84) ? std::optional(crs84) : std::nullopt;
    std::optional<Suggestion> best;
    std::size_t distance = maxChanges(name) + 1;
    for (const Suggestion& candidate : candidatesFor(name, configured)) {
        const std::size_t changes = Tools::editDistance(name, candidate.name);
        if (changes >= distance || candidate.name == name || !works(candidate.name)) continue;
        best = candidate;
        distance = changes;
    }
    return best;
}

namespace {

using Fault = NameExplanation::Fault;

constexpr char CONFIGURED_NAME[] = "configured name";
constexpr char NO_SPELLING[] = "none";
constexpr char OGC_NAME[] = "OGC name of WGS 84, for a configuration";
constexpr int OGC_URL_STYLE = 2;
// A template has the control character U+0001 in place of the code.
constexpr char TEMPLATE_OF_CODE[] = "\x01";
constexpr char GML_BASE[] = "http://www.opengis.net/gml/srs/epsg.xml";

struct FormWriter {
    const char* form;
    const char* key;
    std::string (*write)(const AbstractCrs& crs);
};

constexpr FormWriter FORMS[] = {
    {"identifier", "identifier", [](const AbstractCrs& crs) { return crs.getAliasOrIdentifier(false); }},
    {"alias or identifier", "aliasOrIdentifier", [](const AbstractCrs& crs) { return crs.getAliasOrIdentifier(true); }},
    {"OGC URN", "urn", [](const AbstractCrs& crs) { return crs.getAliasOrAsOgcURN(nullptr, false); }},
    {"OGC http URL", "url",
     [](const AbstractCrs& crs) {
         const SrsFormattingOptions options{"", "", OGC_URL_STYLE};
         return crs.getAliasOrAsOgcURN(&options, false);
     }},
    {"GML reference", "gmlReference",
     [](const AbstractCrs& crs) { return crs.getAsURL(GML_BASE, TEMPLATE_OF_CODE, TEMPLATE_OF_CODE); }},
    {"prefix and code", "prefixAndCode",
     [](const AbstractCrs& crs) {
         const SrsFormattingOptions options{"", "EPSG:", 0};
         return crs.getAliasOrAsOgcURN(&options, false);
     }},
    {"text form", "text", [](const AbstractCrs& crs) { return crs.getAsText(); }},
};

WrittenForm written(const FormWriter& writer, const AbstractCrs& crs) {
    try {
        return {writer.form, writer.key, writer.write(crs), false};
    } catch (const std::exception& failure) {
        return {writer.form, writer.key, failure.what(), true};
    }
}

Reason reasonForMisconfigured(const NameExplanation& explanation) {
    return explanation.fault == Fault::NONE ? Reason::NOT_IN_EPSG_FILE : Reason::OTHER;
}

std::string serviceExceptionCodeOf(const std::exception& failure) {
    if (const auto* own = dynamic_cast<const TransformationException*>(&failure)) return own->getServiceExceptionCode();
    if (const auto* helper = dynamic_cast<const QSHelpers::Exception*>(&failure))
        return helper->getServiceExceptionCode();
    return {};
}

Reason reasonOf(const std::exception& failure, const NameExplanation& explanation) {
    if (dynamic_cast<const CrsNotConfigured*>(&failure) != nullptr) return Reason::NOT_OFFERED;
    if (explanation.fault == Fault::BAD_CODE) return Reason::BAD_CODE;
    if (dynamic_cast<const CrsUnknownSyntaxOrAlias*>(&failure) != nullptr) return Reason::UNKNOWN_SYNTAX;
    if (dynamic_cast<const Misconfigured*>(&failure) != nullptr) return reasonForMisconfigured(explanation);
    return Reason::OTHER;
}

bool wouldWork(const std::string& name, const Session& session) {
    try {
        const Crs crs = session.createFromName(name, false);
        return crs.get() != nullptr;
    } catch (const std::exception&) {
        return false;
    }
}

// A name that is understood gets no suggestion, because another spelling does not help.
std::optional<Suggestion> suggestionFor(const std::string& name, Reason reason, const Session& session) {
    if (reason == Reason::NOT_OFFERED || reason == Reason::NOT_IN_EPSG_FILE) return std::nullopt;
    return suggest(name, session.config().getConfiguredCrsIdentifiers(),
                   [&session](const std::string& candidate) { return wouldWork(candidate, session); });
}

Refusal refusalFor(const std::string& name, const std::exception& failure, const NameExplanation& explanation,
                   const Session& session) {
    const Reason reason = reasonOf(failure, explanation);
    return {serviceExceptionCodeOf(failure), failure.what(), reason, suggestionFor(name, reason, session)};
}

bool isAliasOf(const AbstractCrs& crs, const std::string& name) { return crs.getAlias() == name; }

// An alias is a configured name, whatever its syntax. So is a registered name with an unknown syntax.
std::string spellingOf(const std::string& name, const AbstractCrs* registered, const NameExplanation& explanation) {
    const bool wellFormed = explanation.fault == Fault::NONE;
    if (registered != nullptr && (isAliasOf(*registered, name) || !wellFormed)) return CONFIGURED_NAME;
    return wellFormed || explanation.fault == Fault::BAD_CODE ? explanation.spelling : NO_SPELLING;
}

}  // namespace

const char* axisOrderWords(bool geographic, bool eastNorth) {
    if (geographic) return eastNorth ? "longitude, latitude" : "latitude, longitude";
    return eastNorth ? "easting, northing" : "northing, easting";
}

const char* wordsFor(Reason reason) {
    switch (reason) {
        case Reason::UNKNOWN_SYNTAX:
            return "unknown syntax";
        case Reason::BAD_CODE:
            return "bad code";
        case Reason::NOT_IN_EPSG_FILE:
            return "not in the \"epsg\" file";
        case Reason::NOT_OFFERED:
            return "known, but not offered";
        case Reason::OTHER:
            break;
    }
    return "other";
}

CrsFacts factsOf(const AbstractCrs& crs) {
    const bool geographic = crs.isGeographic();
    CrsFacts facts{crs.getPrimaryCode(),
                   crs.getSecCompoundCode(),
                   crs.getEpsgVersion(),
                   crs.getAlias(),
                   crs.getDim(),
                   geographic,
                   axisOrderWords(geographic, crs.isAxisOrderEastNorthOrLonLat()),
                   crs.getUnitEquivalentInM(),
                   {}};
    for (const FormWriter& writer : FORMS) facts.forms.push_back(written(writer, crs));
    return facts;
}

NameReport reportOn(const std::string& name, const Session& session) {
    const NameExplanation explanation = session.creator().explainName(name);
    const AbstractCrs* const registered = session.config().getFromNameCache(name, false);
    NameReport report;
    report.name = name;
    report.spelling = !session.isConfigured() && isCrs84(name) ? OGC_NAME : spellingOf(name, registered, explanation);
    report.registered = registered != nullptr;
    if (session.isConfigured()) report.offered = false;
    try {
        const Crs crs = session.createFromName(name, true);
        report.crs = factsOf(*crs.get());
        report.description = CrsDescriptions::ofProjDirectory().find(crs.get()->getPrimaryCode());
        if (session.isConfigured()) report.offered = true;
    } catch (const std::exception& failure) {
        report.refusal = refusalFor(name, failure, explanation, session);
    }
    return report;
}

namespace {

using TableRows = std::vector<std::vector<std::string>>;

constexpr std::size_t LONGEST_TEXT = 1000;

std::string orNone(const std::string& text) { return text.empty() ? "none" : printable(text, LONGEST_TEXT); }

std::string unitInWords(const CrsFacts& facts) {
    return CoordinateTransformation::writeDouble(facts.unitInMetres) + " m" + (facts.geographic ? " (a degree)" : "");
}

std::string offerInWords(const NameReport& report) {
    if (!report.offered) return "no configuration given";
    if (!*report.offered) return "no";
    return report.registered ? "yes, registered under this name" : "yes, made on request";
}

std::string suggestionInWords(const Suggestion& suggestion) {
    return printable(suggestion.name) + " (" + suggestion.change + ")";
}

void addFacts(TableRows& rows, const CrsFacts& facts) {
    rows.push_back({"codes", codesInWords(facts.primary, facts.secondary)});
    rows.push_back({"version", orNone(facts.version)});
    rows.push_back({"alias", orNone(facts.alias)});
    rows.push_back({"dimension", std::to_string(facts.dimension)});
    rows.push_back({"kind", facts.geographic ? "geographic" : "projected"});
    rows.push_back({"axis order", facts.axisOrder});
    rows.push_back({"unit", unitInWords(facts)});
}

void addRefusal(TableRows& rows, const Refusal& refusal) {
    rows.push_back(
        {"refused", refusal.serviceExceptionCode.empty() ? "no service exception code" : refusal.serviceExceptionCode});
    rows.push_back({"text", printable(refusal.text, LONGEST_TEXT)});
    rows.push_back({"reason", wordsFor(refusal.reason)});
    if (refusal.suggestion) rows.push_back({"try", suggestionInWords(*refusal.suggestion)});
}

std::string formsAsText(const CrsFacts& facts) {
    TableRows rows;
    for (const WrittenForm& form : facts.forms)
        rows.push_back({form.form, form.refused ? "(" + form.text + ")" : orNone(form.text)});
    return "  written as\n" + alignedColumns(rows, "    ");
}

std::string descriptionOf(const NameReport& report) {
    const std::string part = report.crs->secondary == 0 ? "" : ", its part " + std::to_string(report.crs->primary);
    return "  described as" + part + "\n" + descriptionAsText(*report.description, "    ");
}

Json formsAsJson(const CrsFacts& facts) {
    Json forms = Json::object();
    for (const WrittenForm& form : facts.forms) forms[form.key] = form.refused ? Json() : Json(form.text);
    return forms;
}

void addFacts(Json& json, const CrsFacts& facts) {
    json["primaryCode"] = facts.primary;
    json["secondaryCode"] = secondaryCodeAsJson(facts.secondary);
    json["version"] = facts.version;
    json["alias"] = facts.alias;
    json["dimension"] = facts.dimension;
    json["kind"] = facts.geographic ? "geographic" : "projected";
    json["axisOrder"] = facts.axisOrder;
    json["unitInMetres"] = facts.unitInMetres;
    json["forms"] = formsAsJson(facts);
}

void addRefusal(Json& json, const Refusal& refusal) {
    json["serviceExceptionCode"] = refusal.serviceExceptionCode.empty() ? Json() : Json(refusal.serviceExceptionCode);
    json["text"] = refusal.text;
    json["reason"] = wordsFor(refusal.reason);
    json["suggestion"] = Json();
    if (refusal.suggestion)
        json["suggestion"] = {{"name", refusal.suggestion->name}, {"change", refusal.suggestion->change}};
}

}  // namespace

std::string codesInWords(unsigned int primary, unsigned int secondary) {
    return std::to_string(primary) + (secondary == 0 ? "" : " and " + std::to_string(secondary));
}

Json secondaryCodeAsJson(unsigned int secondary) { return secondary == 0 ? Json() : Json(secondary); }

std::string asText(const NameReport& report) {
    TableRows rows{{"spelling", report.spelling}};
    if (report.crs) addFacts(rows, *report.crs);
    if (report.refusal) addRefusal(rows, *report.refusal);
    rows.push_back({"offered", offerInWords(report)});
    std::string text = printable(report.name, LONGEST_TEXT) + "\n" + alignedColumns(rows, "  ");
    if (report.description != nullptr) text += descriptionOf(report);
    return report.crs ? text + formsAsText(*report.crs) : text;
}

Json asJson(const NameReport& report) {
    Json json = {{"name", report.name}, {"accepted", report.crs.has_value()}, {"spelling", report.spelling}};
    json["offered"] = report.offered ? Json(*report.offered) : Json();
    json["registered"] = report.registered;
    if (report.crs) addFacts(json, *report.crs);
    if (report.crs)
        json["description"] = report.description == nullptr ? Json() : descriptionAsJson(*report.description);
    if (report.refusal) addRefusal(json, *report.refusal);
    return json;
}

std::string refusalNote(const NameReport& report) {
    const Refusal& refusal = *report.refusal;
    return printable(report.name) + ": refused" +
           (refusal.serviceExceptionCode.empty() ? "" : " with " + refusal.serviceExceptionCode) + ", " +
           wordsFor(refusal.reason);
}

std::string refusalInOneLine(const NameReport& report) {
    const Refusal& refusal = *report.refusal;
    std::string line = printable(report.name) + ": ";
    if (!refusal.serviceExceptionCode.empty()) line += refusal.serviceExceptionCode + ": ";
    line += printable(refusal.text, LONGEST_TEXT) + " (" + wordsFor(refusal.reason) + ")";
    if (refusal.suggestion) line += "; try " + suggestionInWords(*refusal.suggestion);
    return line;
}

CommandResult resolveCommand(const CommonOptions& common, const std::vector<std::string>& names) {
    const Session session(common);
    CommandResult result;
    Json reports = Json::array();
    for (const std::string& name : names) {
        const NameReport nameReport = reportOn(name, session);
        if (common.json)
            reports.push_back(asJson(nameReport));
        else
            result.output += (result.output.empty() ? "" : "\n") + asText(nameReport);
        if (!nameReport.refusal) continue;
        result.exitCode = EXIT_REFUSED;
        result.notes.push_back(refusalNote(nameReport));
    }
    if (common.json) result.output = serialised(reports);
    return result;
}

}  // namespace crsctl
