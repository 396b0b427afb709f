#include "tools/crsctl/ResolveCommand.h"

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "QuarvelSrv/SrsFormattingOptions.h"
#include "config/Fragment.h"
#include "names/CrsName.h"
#include "text/NumericText.h"
#include "tools/common/Text.h"
#include "tools/crsctl/FindCommand.h"

namespace crsctl {

using namespace CoordinateTransformation;
using QuarvelSrv::SrsFormattingOptions;
using Tools::printable;

namespace {

constexpr char DIGITS[] = "0123456789";
constexpr std::size_t MAX_CODE_LENGTH = 8;

// Returns the EPSG codes that a name may mean: its last two numbers as a compound, then the last number alone.
std::vector<CodePair> codesIn(const std::string& name) {
    std::vector<unsigned int> numbers;
    for (std::size_t at = 0; (at = name.find_first_of(DIGITS, at)) != std::string::npos;) {
        const std::size_t end = std::min(name.find_first_not_of(DIGITS, at), name.size());
        if (end - at <= MAX_CODE_LENGTH) numbers.push_back(readCode(name.substr(at, end - at)));
        at = end;
    }
    std::vector<CodePair> codes;
    if (numbers.size() > 1) codes.push_back({numbers[numbers.size() - 2], numbers.back()});
    if (!numbers.empty()) codes.push_back({numbers.back(), 0});
    return codes;
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
    candidates.push_back({"in small letters", Tools::smallLetters(name)});
    for (const std::string& known : configured)
        if (digitsOf(known) == digitsOf(name)) candidates.push_back({"as the configuration spells it", known});
    return candidates;
}

// A longer name gets no suggestion.
constexpr std::size_t MAX_NAME_LENGTH = 512;

// A suggestion may change enough of a name to add the second "EPSG:" of a compound.
std::size_t maxChanges(const std::string& name) { return std::max(std::size_t{2}, 2 * name.size() / 5); }

}  // namespace

std::optional<Suggestion> suggest(const std::string& name, const std::set<std::string>& configured,
                                  const std::function<bool(const std::string&)>& works) {
    if (name.size() > MAX_NAME_LENGTH) return std::nullopt;
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
const SrsFormattingOptions AS_OGC_URL{"", "", 2};
const SrsFormattingOptions WITH_PREFIX{"", "EPSG:", 0};
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
    {"OGC http URL", "url", [](const AbstractCrs& crs) { return crs.getAliasOrAsOgcURN(&AS_OGC_URL, false); }},
    {"GML reference", "gmlReference",
     [](const AbstractCrs& crs) { return crs.getAsURL(GML_BASE, TEMPLATE_OF_CODE, TEMPLATE_OF_CODE); }},
    {"prefix and code", "prefixAndCode",
     [](const AbstractCrs& crs) { return crs.getAliasOrAsOgcURN(&WITH_PREFIX, false); }},
    {"text form", "text", [](const AbstractCrs& crs) { return crs.getAsText(); }},
};

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
    const bool isMisconfigured = dynamic_cast<const Misconfigured*>(&failure) != nullptr;
    return isMisconfigured && explanation.fault == Fault::NONE ? Reason::NOT_IN_EPSG_FILE : Reason::OTHER;
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

// An alias is a configured name, whatever its syntax. So is a registered name with an unknown syntax.
std::string spellingOf(const std::string& name, const AbstractCrs* registered, const NameExplanation& explanation) {
    const bool wellFormed = explanation.fault == Fault::NONE;
    if (registered != nullptr && (registered->getAlias() == name || !wellFormed)) return CONFIGURED_NAME;
    return wellFormed || explanation.fault == Fault::BAD_CODE ? explanation.spelling : NO_SPELLING;
}

}  // namespace

const char* axisOrderText(bool geographic, bool eastNorth) {
    if (geographic) return eastNorth ? "longitude, latitude" : "latitude, longitude";
    return eastNorth ? "easting, northing" : "northing, easting";
}

const char* axisOrderText(const AbstractCrs& crs) {
    return axisOrderText(crs.isGeographic(), crs.isAxisOrderEastNorthOrLonLat());
}

const char* kindName(const AbstractCrs& crs) { return crs.isGeographic() ? "geographic" : "projected"; }

std::string codesText(const AbstractCrs& crs) {
    const unsigned int secondary = crs.getSecCompoundCode();
    return std::to_string(crs.getPrimaryCode()) + (secondary == 0 ? "" : " and " + std::to_string(secondary));
}

const char* reasonText(Reason reason) {
    constexpr std::array TEXTS = {"unknown syntax", "bad code", "not in the \"epsg\" file", "known, but not offered",
                                  "other"};
    return TEXTS.at(static_cast<std::size_t>(reason));
}

std::vector<WrittenForm> writtenForms(const AbstractCrs& crs) {
    std::vector<WrittenForm> forms;
    for (const FormWriter& writer : FORMS) {
        try {
            forms.push_back({writer.form, writer.key, writer.write(crs), false});
        } catch (const std::exception& failure) {
            forms.push_back({writer.form, writer.key, failure.what(), true});
        }
    }
    return forms;
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
        report.crs = session.createFromName(name, true);
        report.description = CrsDescriptions::ofProjDirectory().find(report.crs->getPrimaryCode());
        if (session.isConfigured()) report.offered = true;
    } catch (const std::exception& failure) {
        const Reason reason = reasonOf(failure, explanation);
        report.refusal = {serviceExceptionCodeOf(failure), failure.what(), reason,
                          suggestionFor(name, reason, session)};
    }
    return report;
}

namespace {

std::string orNone(const std::string& text) { return text.empty() ? "none" : printable(text, MAX_TEXT_LENGTH); }

std::string offerText(const NameReport& report) {
    if (!report.offered) return "no configuration given";
    if (!*report.offered) return "no";
    return report.registered ? "yes, registered under this name" : "yes, made on request";
}

std::string suggestionText(const Suggestion& suggestion) {
    return printable(suggestion.name) + " (" + suggestion.change + ")";
}

Tools::TableRows rowsOf(const AbstractCrs& crs) {
    return {{"codes", codesText(crs)},
            {"version", orNone(crs.getEpsgVersion())},
            {"alias", orNone(crs.getAlias())},
            {"dimension", std::to_string(crs.getDim())},
            {"kind", kindName(crs)},
            {"axis order", axisOrderText(crs)},
            {"unit", writeDouble(crs.getUnitEquivalentInM()) + " m" + (crs.isGeographic() ? " (a degree)" : "")}};
}

Tools::TableRows rowsOf(const Refusal& refusal) {
    const std::string& code = refusal.serviceExceptionCode;
    Tools::TableRows rows = {{"refused", code.empty() ? "no service exception code" : code},
                             {"text", printable(refusal.text, MAX_TEXT_LENGTH)},
                             {"reason", reasonText(refusal.reason)}};
    if (refusal.suggestion) rows.push_back({"try", suggestionText(*refusal.suggestion)});
    return rows;
}

std::string formsAsText(const AbstractCrs& crs) {
    Tools::TableRows rows;
    for (const WrittenForm& form : writtenForms(crs))
        rows.push_back({form.form, form.refused ? "(" + form.text + ")" : orNone(form.text)});
    return "  written as\n" + Tools::alignedColumns(rows, "    ");
}

std::string describedPart(const NameReport& report) {
    const AbstractCrs& crs = *report.crs.get();
    const std::string part = crs.getSecCompoundCode() == 0 ? "" : ", its part " + std::to_string(crs.getPrimaryCode());
    return "  described as" + part + "\n" + descriptionAsText(*report.description, "    ");
}

Json asJson(const AbstractCrs& crs) {
    Json forms = Json::object();
    for (const WrittenForm& form : writtenForms(crs)) forms[form.key] = form.refused ? Json() : Json(form.text);
    return {{"primaryCode", crs.getPrimaryCode()},
            {"secondaryCode", orNull(crs.getSecCompoundCode())},
            {"version", crs.getEpsgVersion()},
            {"alias", crs.getAlias()},
            {"dimension", crs.getDim()},
            {"kind", kindName(crs)},
            {"axisOrder", axisOrderText(crs)},
            {"unitInMetres", crs.getUnitEquivalentInM()},
            {"forms", forms}};
}

Json asJson(const Suggestion& suggestion) { return {{"name", suggestion.name}, {"change", suggestion.change}}; }

Json asJson(const Refusal& refusal) {
    return {{"serviceExceptionCode", orNull(refusal.serviceExceptionCode)},
            {"text", refusal.text},
            {"reason", reasonText(refusal.reason)},
            {"suggestion", refusal.suggestion ? asJson(*refusal.suggestion) : Json()}};
}

}  // namespace

std::string asText(const NameReport& report) {
    Tools::TableRows rows{{"spelling", report.spelling}};
    const Tools::TableRows answer = report.refusal ? rowsOf(*report.refusal) : rowsOf(*report.crs.get());
    rows.insert(rows.end(), answer.begin(), answer.end());
    rows.push_back({"offered", offerText(report)});
    std::string text = printable(report.name, MAX_TEXT_LENGTH) + "\n" + Tools::alignedColumns(rows, "  ");
    if (report.description != nullptr) text += describedPart(report);
    return report.refusal ? text : text + formsAsText(*report.crs.get());
}

Json asJson(const NameReport& report) {
    Json json = {{"name", report.name},
                 {"accepted", !report.refusal},
                 {"spelling", report.spelling},
                 {"offered", orNull(report.offered)},
                 {"registered", report.registered}};
    json.update(report.refusal ? asJson(*report.refusal) : asJson(*report.crs.get()));
    if (!report.refusal)
        json["description"] = report.description == nullptr ? Json() : descriptionAsJson(*report.description);
    return json;
}

std::string refusalNote(const NameReport& report) {
    const std::string& code = report.refusal->serviceExceptionCode;
    return printable(report.name) + ": refused" + (code.empty() ? "" : " with " + code) + ", " +
           reasonText(report.refusal->reason);
}

std::string refusalInOneLine(const NameReport& report) {
    const Refusal& refusal = *report.refusal;
    const std::string& code = refusal.serviceExceptionCode;
    return printable(report.name) + ": " + (code.empty() ? "" : code + ": ") +
           printable(refusal.text, MAX_TEXT_LENGTH) + " (" + reasonText(refusal.reason) + ")" +
           (refusal.suggestion ? "; try " + suggestionText(*refusal.suggestion) : "");
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
