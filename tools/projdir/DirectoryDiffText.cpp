#include "tools/projdir/DirectoryDiffText.h"

#include <algorithm>
#include <cmath>

#include <nlohmann/json.hpp>

#include "QSHelpers/NumericText.h"
#include "text/ParameterList.h"
#include "tools/projdir/Line.h"

namespace ProjDir {

using CoordinateTransformation::ParameterList;

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t DISTANCE_WIDTH = 14;

std::string nameOf(unsigned int code, const DiffSides& sides) {
    const auto found = sides.known.find(code);
    return found == sides.known.end() ? "" : found->second.name;
}

std::string writeCode(unsigned int code, const DiffSides& sides) {
    const std::string name = nameOf(code, sides);
    return "EPSG:" + std::to_string(code) + (name.empty() ? "" : " " + name);
}

std::string writeSide(const char* title, const DirectoryContent& content) {
    return writeLine(title + content.path + ": " + std::to_string(content.entries.size()) + " definitions" +
                     (content.head.empty() ? "" : "; " + content.head));
}

std::string writeCodes(const char* title, const std::vector<unsigned int>& codes, const DiffSides& sides) {
    std::string text = "\n" + std::string(title) + ": " + std::to_string(codes.size()) + "\n";
    for (const unsigned int code : codes) text += writeLine("  " + writeCode(code, sides));
    return text;
}

std::string writeDistance(const EntryChange& change) {
    if (!change.distance) return change.failure.empty() ? "not known" : "refused";
    if (!std::isfinite(*change.distance)) return "no coordinates";
    return QSHelpers::convertNumericToText(*change.distance, 3, false) + " m";
}

// The parameters that `left` has and `right` has not, in their order.
std::string writeMissing(const std::string& left, const std::string& right) {
    const ParameterList kept(right);
    std::string text;
    for (const ParameterList::Parameter& one : ParameterList(left))
        if (std::find(kept.begin(), kept.end(), one) == kept.end())
            text += (text.empty() ? "+" : " +") + one.first + (one.second.empty() ? "" : "=" + one.second);
    return text;
}

std::string writeEntryLine(const char* sign, const DirectoryEntry& entry, const DirectoryEntry& other) {
    std::string text = writeMissing(entry.definition, other.definition);
    if (entry.axisOrder != other.axisOrder)
        text += std::string(text.empty() ? "" : "; ") + "axis order " +
                (entry.axisOrder.empty() ? "missing" : entry.axisOrder);
    return text.empty() ? "" : writeLine("      " + std::string(sign) + " " + text);
}

std::string writeChange(const EntryChange& change, const DiffSides& sides) {
    const std::string distance = writeDistance(change);
    const std::size_t padding = DISTANCE_WIDTH - std::min(DISTANCE_WIDTH, distance.size());
    return writeLine("  " + std::string(padding, ' ') + distance + "  " + writeCode(change.code, sides) +
                     (change.failure.empty() ? "" : ": " + change.failure)) +
           writeEntryLine("-", change.before, change.after) + writeEntryLine("+", change.after, change.before);
}

Json writeSide(const DirectoryContent& content) {
    return {{"directory", content.path}, {"head", content.head}, {"definitions", content.entries.size()}};
}

Json writeCodes(const std::vector<unsigned int>& codes, const DiffSides& sides) {
    Json json = Json::array();
    for (const unsigned int code : codes) json.push_back({{"code", code}, {"name", nameOf(code, sides)}});
    return json;
}

Json writeEntry(const DirectoryEntry& entry) {
    return {{"definition", entry.definition}, {"axis_order", entry.axisOrder}};
}

Json writeJsonChange(const EntryChange& change, const DiffSides& sides) {
    Json json{{"code", change.code}, {"name", nameOf(change.code, sides)}};
    json["distance"] = change.distance ? Json(*change.distance) : Json();
    if (!change.failure.empty()) json["failure"] = change.failure;
    json["old"] = writeEntry(change.before);
    json["new"] = writeEntry(change.after);
    return json;
}

}  // namespace

std::string writeDiffText(const DirectoryDiff& diff, const DiffSides& sides) {
    std::string text = writeSide("old ", sides.before) + writeSide("new ", sides.after);
    text += writeCodes("added", diff.added, sides) + writeCodes("gone", diff.gone, sides);
    text += "\nchanged: " + std::to_string(diff.changed.size()) + "\n";
    for (const EntryChange& change : diff.changed) text += writeChange(change, sides);
    return text + "\nthe same: " + std::to_string(diff.same) + "\n";
}

std::string writeDiffJson(const DirectoryDiff& diff, const DiffSides& sides) {
    Json json{{"old", writeSide(sides.before)}, {"new", writeSide(sides.after)}};
    json["added"] = writeCodes(diff.added, sides);
    json["gone"] = writeCodes(diff.gone, sides);
    json["changed"] = Json::array();
    for (const EntryChange& change : diff.changed) json["changed"].push_back(writeJsonChange(change, sides));
    json["same"] = diff.same;
    return json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace ProjDir
