#include "tools/projdir/DirectoryText.h"

#include <tuple>

#include "text/NumericText.h"
#include "tools/projdir/Line.h"

namespace ProjDir {

using CoordinateTransformation::writeDouble;

namespace {

// The unknown and the default CRS have the code 0. Their coordinates go through as longitude and latitude of WGS 84.
constexpr char UNKNOWN_CRS_ENTRY[] = "# Unknown and default CRS\n<0> +proj=longlat +datum=WGS84 +no_defs <>\n";
constexpr char UNKNOWN_CRS_AXIS_ORDER[] = "0;en\n";

constexpr char INFO_HEAD[] =
    "code,name,kind,area,west,south,east,north,unit,unit_length,datum,datum_id,shift_source,shift_accuracy,"
    "largest_distance,replaced_by\n";
constexpr int DECIMALS_OF_DISTANCE = 2;

std::string quoteCell(const std::string& text) {
    std::string line = toOneLine(text);
    if (line.find_first_of(",\"") == std::string::npos) return line;
    std::string quoted;
    for (const char c : line) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return "\"" + quoted + "\"";
}

std::string writeCells(const std::vector<std::string>& cells) {
    std::string line;
    for (const std::string& cell : cells) line += (line.empty() ? "" : ",") + quoteCell(cell);
    return line + "\n";
}

std::string writeBound(const std::optional<Area>& area, double Area::*bound) {
    return area ? writeDouble((*area).*bound) : "";
}

std::string writeShiftSource(const ShiftChoice& shift) {
    switch (shift.kind) {
        case ShiftKind::PUBLISHED:
            return shift.source;
        case ShiftKind::FITTED:
            return "fitted";
        case ShiftKind::GRID:
            return "grid " + shift.source;
        default:
            return "";
    }
}

std::string writeCodes(const std::vector<unsigned int>& codes) {
    std::string text;
    for (const unsigned int code : codes) text += (text.empty() ? "" : " ") + std::to_string(code);
    return text;
}

std::string writeInfo(const CrsOutcome& outcome) {
    const RegistryCrs& crs = outcome.crs;
    const CrsDescription& description = outcome.description;
    const auto& [accuracy, distance] = std::tie(outcome.shiftAccuracy, outcome.largestDistance);
    return writeCells({std::to_string(crs.code), crs.name, nameOfKind(description.kind), description.area,
                       writeBound(crs.area, &Area::west), writeBound(crs.area, &Area::south),
                       writeBound(crs.area, &Area::east), writeBound(crs.area, &Area::north), description.unit,
                       writeDouble(description.unitLength), description.datum, description.datumId,
                       writeShiftSource(outcome.definition->shift), accuracy ? writeDouble(*accuracy) : "",
                       distance ? QSHelpers::convertNumericToText(*distance, DECIMALS_OF_DISTANCE, false) : "",
                       writeCodes(description.replacedBy)});
}

std::string writeFarPoints(const ClassicDefinition& definition) {
    if (definition.farPoints == 0) return "";
    return "; far off at " + std::to_string(definition.farPoints) + " points";
}

std::string writeComment(const CrsOutcome& outcome) {
    const std::string shift = describeShift(outcome.definition->shift);
    const bool isPartly = outcome.definition->hasUnknownPart && outcome.definition->shift.kind != ShiftKind::UNKNOWN;
    return writeLine("# " + outcome.crs.name + (shift.empty() ? "" : "; " + shift) +
                     (isPartly ? "; PROJ knows no shift in part of the area" : "") +
                     writeFarPoints(*outcome.definition));
}

std::string writeEntry(const CrsOutcome& outcome) {
    return writeComment(outcome) + "<" + std::to_string(outcome.crs.code) + "> " + outcome.definition->text + " <>\n";
}

std::string writeAxisOrder(const CrsOutcome& outcome) {
    return std::to_string(outcome.crs.code) + (outcome.definition->isNorthFirst ? ";ne\n" : ";en\n");
}

}  // namespace

std::string writeInitFile(const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes,
                          const std::string& maker) {
    std::string text = writeLine("# " + describe(version));
    if (!maker.empty()) text += writeLine("# Made by " + maker);
    text += UNKNOWN_CRS_ENTRY;
    for (const CrsOutcome& outcome : outcomes)
        if (outcome.definition) text += writeEntry(outcome);
    return text;
}

std::string writeAxisOrderFile(const std::vector<CrsOutcome>& outcomes) {
    std::string text = UNKNOWN_CRS_AXIS_ORDER;
    for (const CrsOutcome& outcome : outcomes)
        if (outcome.definition) text += writeAxisOrder(outcome);
    return text;
}

std::string writeDescriptionFile(const std::vector<CrsOutcome>& outcomes) {
    std::string text = INFO_HEAD;
    for (const CrsOutcome& outcome : outcomes)
        if (outcome.definition) text += writeInfo(outcome);
    return text;
}

}  // namespace ProjDir
