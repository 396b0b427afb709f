#include "tools/crsctl/commands/ReportCommands.h"

#include "tools/crsctl/check/ConfigurationCheck.h"
#include "tools/crsctl/names/NameReportOutput.h"
#include "tools/crsctl/names/RegisteredNames.h"
#include "tools/crsctl/start/Failures.h"
#include "tools/crsctl/start/TextFile.h"
#include "tools/crsctl/text/Printable.h"

namespace crsctl {

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

CommandResult checkCommand(const CommonOptions& common, const std::string& file) {
    const ConfigurationReport report = checkConfiguration(inputName(file), readTextFile(file), common);
    CommandResult result;
    result.output = common.json ? serialised(asJson(report)) : asText(report);
    if (!report.hasErrors) return result;
    result.exitCode = EXIT_REFUSED;
    result.notes.push_back(inputName(file) + ": " +
                           (report.starts ? "the PROJ directory has errors" : printable(report.failure, 1000)));
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
