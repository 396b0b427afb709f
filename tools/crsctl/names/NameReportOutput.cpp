#include "tools/crsctl/names/NameReportOutput.h"

#include <vector>

#include "text/NumericText.h"
#include "tools/common/Text.h"
#include "tools/crsctl/find/DescriptionOutput.h"

namespace crsctl {

using Tools::alignedColumns;
using Tools::printable;

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

}  // namespace crsctl
