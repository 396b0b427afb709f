#include "tools/crsctl/check/DescriptionCheck.h"

#include <filesystem>
#include <set>

#include "text/FileText.h"
#include "text/InitFile.h"
#include "text/NumericText.h"
#include "text/ParameterList.h"
#include "tools/crsctl/check/ConfigurationCheck.h"

namespace crsctl {

using CoordinateTransformation::CrsDescription;
using CoordinateTransformation::CrsDescriptions;
using CoordinateTransformation::DESCRIPTION_FILE;
using CoordinateTransformation::INIT_FILE;
using CoordinateTransformation::InitFileDefinition;
using CoordinateTransformation::ParameterList;
using CoordinateTransformation::readFile;
using CoordinateTransformation::readInitFileText;
using CoordinateTransformation::writeDouble;

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
            warn("the shift to WGS 84 (" + crs.shiftSource + ") is accurate to " + inMetres(*crs.shiftAccuracy) +
                 " only");
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

}  // namespace crsctl
