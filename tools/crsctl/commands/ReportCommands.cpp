#include "tools/crsctl/commands/ReportCommands.h"

#include <algorithm>

#include "text/InitFile.h"
#include "tools/common/Text.h"
#include "tools/crsctl/check/ConfigurationCheck.h"
#include "tools/crsctl/find/DescriptionOutput.h"
#include "tools/crsctl/names/NameReportOutput.h"
#include "tools/crsctl/names/RegisteredNames.h"
#include "tools/crsctl/start/Failures.h"
#include "tools/crsctl/start/TextFile.h"

namespace crsctl {

using Tools::printable;

using CoordinateTransformation::DESCRIPTION_FILE;

CommandResult resolveCommand(const CommonOptions& common, const std::vector<std::string>& names) {
    const Session session(common);
    CommandResult result;
    Json reports = Json::array();
    for (const std::string& name : names) {
        const NameReport report = reportOn(name, session);
        if (common.json)
            reports.push_back(asJson(report));
        else
            result.output += (result.output.empty() ? "" : "\n") + asText(report);
        if (!report.refusal) continue;
        result.exitCode = EXIT_REFUSED;
        result.notes.push_back(refusalNote(report));
    }
    if (common.json) result.output = serialised(reports);
    return result;
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

CommandResult findCommand(const CommonOptions& common, const SearchedCrs& searched) {
    const Session session(common);
    const CrsDescriptions& descriptions = CrsDescriptions::ofProjDirectory();
    if (descriptions.size() == 0)
        throw SetUpError("the PROJ directory has no \"" + std::string(DESCRIPTION_FILE) +
                         "\", where names are looked up");
    std::vector<FoundCrs> found = findCrs(descriptions, searched);
    if (session.isConfigured())
        found.erase(std::remove_if(
                        found.begin(), found.end(),
                        [&session](const FoundCrs& one) { return !session.config().isCrsConfigured(one.crs->code); }),
                    found.end());
    CommandResult result;
    result.output = common.json ? serialised(asJson(found)) : asText(found);
    if (!found.empty()) return result;
    result.exitCode = EXIT_REFUSED;
    result.notes.emplace_back("nothing was found");
    return result;
}

CommandResult namesCommand(const CommonOptions& common) {
    const Session session(common);
    const std::vector<NamesOfCrs> names = registeredNames(session);
    CommandResult result;
    result.output = common.json ? serialised(asJson(names)) : asText(names);
    if (!session.isConfigured()) result.notes.emplace_back("without --config there are no names to list");
    return result;
}

}  // namespace crsctl
