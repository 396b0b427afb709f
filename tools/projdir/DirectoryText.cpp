#include "tools/projdir/DirectoryText.h"

#include "tools/projdir/Line.h"

namespace ProjDir {
namespace {

// The unknown and the default CRS have the code 0. Their coordinates go through as longitude and latitude of WGS 84.
constexpr char UNKNOWN_CRS_ENTRY[] = "# Unknown and default CRS\n<0> +proj=longlat +datum=WGS84 +no_defs <>\n";
constexpr char UNKNOWN_CRS_AXIS_ORDER[] = "0;en\n";

std::string writeComment(const CrsOutcome& outcome) {
    const std::string shift = describeShift(outcome.definition->shift);
    const bool isPartly = outcome.definition->hasUnknownPart && outcome.definition->shift.kind != ShiftKind::UNKNOWN;
    return writeLine("# " + outcome.crs.name + (shift.empty() ? "" : "; " + shift) +
                     (isPartly ? "; PROJ knows no shift in part of the area" : ""));
}

std::string writeEntry(const CrsOutcome& outcome) {
    return writeComment(outcome) + "<" + std::to_string(outcome.crs.code) + "> " + outcome.definition->text + " <>\n";
}

std::string writeAxisOrder(const CrsOutcome& outcome) {
    return std::to_string(outcome.crs.code) + (outcome.definition->isNorthFirst ? ";ne\n" : ";en\n");
}

}  // namespace

std::string writeInitFile(const RegistryVersion& version, const std::vector<CrsOutcome>& outcomes) {
    std::string text = writeLine("# " + describe(version)) + UNKNOWN_CRS_ENTRY;
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

}  // namespace ProjDir
