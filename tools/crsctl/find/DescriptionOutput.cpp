#include "tools/crsctl/find/DescriptionOutput.h"

#include <array>
#include <optional>

#include "text/NumericText.h"
#include "tools/common/FixedDecimals.h"
#include "tools/common/Text.h"

namespace crsctl {

using Tools::alignedColumns;
using Tools::LONGEST_FIXED_DECIMAL;
using Tools::printable;
using Tools::writeFixed;

using CoordinateTransformation::writeDouble;

namespace {

constexpr std::size_t LONGEST_CELL = 1000;
constexpr std::size_t LONGEST_AREA = 60;

std::string metres(double length) { return writeDouble(length) + " m"; }

std::string centimetres(double length) {
    std::array<char, LONGEST_FIXED_DECIMAL> text{};
    return std::string(text.data(), writeFixed(text.data(), length, 2)) + " m";
}

std::string describedUnit(const CrsDescription& crs) {
    if (crs.kind == CrsDescription::Kind::GEOGRAPHIC || crs.unitLength == 1) return printable(crs.unit);
    return printable(crs.unit) + " (" + metres(crs.unitLength) + ")";
}

std::string shiftInWords(const CrsDescription& crs) {
    if (crs.shiftSource.empty()) return "none";
    return printable(crs.shiftSource) + ", " +
           (crs.shiftAccuracy ? "accurate to " + metres(*crs.shiftAccuracy) : "of unknown accuracy");
}

std::string codesInOneLine(const std::vector<unsigned int>& codes) {
    std::string text;
    for (const unsigned int code : codes) text += (text.empty() ? "" : " ") + std::to_string(code);
    return text;
}

Json orNull(const std::optional<double>& number) { return number ? Json(*number) : Json(); }

Json boxAsJson(const std::optional<GeographicBox>& box) {
    if (!box) return {};
    return {{"west", box->west}, {"south", box->south}, {"east", box->east}, {"north", box->north}};
}

std::string nameInTable(const CrsDescription& crs) {
    const std::string name = printable(crs.name);
    return crs.replacedBy.empty() ? name : name + " (replaced by " + codesInOneLine(crs.replacedBy) + ")";
}

}  // namespace

std::string descriptionAsText(const CrsDescription& crs, const std::string& indent) {
    std::vector<std::vector<std::string>> rows = {{"name", printable(crs.name)}};
    if (!crs.area.empty()) rows.push_back({"area", printable(crs.area, LONGEST_CELL)});
    if (crs.box) rows.push_back({"box", boxInWords(*crs.box) + " (W,S,E,N)"});
    rows.push_back({"datum", printable(crs.datum) + (crs.datumId.empty() ? "" : " (" + printable(crs.datumId) + ")")});
    rows.push_back({"unit", describedUnit(crs)});
    rows.push_back({"shift", shiftInWords(crs)});
    if (crs.largestDistance) rows.push_back({"from PROJ", "at most " + centimetres(*crs.largestDistance)});
    if (!crs.replacedBy.empty()) rows.push_back({"replaced by", codesInOneLine(crs.replacedBy)});
    return alignedColumns(rows, indent);
}

Json descriptionAsJson(const CrsDescription& crs) {
    return {{"code", crs.code},
            {"name", crs.name},
            {"kind", kindInWords(crs.kind)},
            {"area", crs.area},
            {"box", boxAsJson(crs.box)},
            {"unit", crs.unit},
            {"unitLength", crs.unitLength},
            {"datum", crs.datum},
            {"datumId", crs.datumId},
            {"shiftSource", crs.shiftSource},
            {"shiftAccuracy", orNull(crs.shiftAccuracy)},
            {"largestDistance", orNull(crs.largestDistance)},
            {"replacedBy", crs.replacedBy}};
}

std::string asText(const std::vector<FoundCrs>& found) {
    if (found.empty()) return "";
    std::vector<std::vector<std::string>> rows = {{"code", "kind", "accuracy", "name", "area"}};
    for (const auto& [crs, coversArea] : found)
        rows.push_back({std::to_string(crs->code), kindInWords(crs->kind),
                        crs->shiftAccuracy ? metres(*crs->shiftAccuracy) : "", nameInTable(*crs),
                        (coversArea ? "" : "(in part) ") + printable(crs->area, LONGEST_AREA)});
    return alignedColumns(rows);
}

Json asJson(const std::vector<FoundCrs>& found) {
    Json list = Json::array();
    for (const auto& [crs, coversArea] : found) {
        list.push_back(descriptionAsJson(*crs));
        list.back()["coversArea"] = coversArea;
    }
    return list;
}

}  // namespace crsctl
