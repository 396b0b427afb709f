#include "tools/crsctl/NamesCommand.h"

#include <map>

#include "names/CrsName.h"
#include "tools/common/Text.h"
#include "tools/crsctl/ResolveCommand.h"

namespace crsctl {

using CoordinateTransformation::AbstractCrs;

std::string codeKeyOf(const AbstractCrs& crs) {
    return CoordinateTransformation::writeCodeKey({crs.getPrimaryCode(), crs.getSecCompoundCode()});
}

std::vector<NamesOfCrs> registeredNames(const CoordinateTransformation::CrsConfig& config) {
    std::map<std::string, std::size_t> places;
    std::vector<NamesOfCrs> listed;
    for (const std::string& name : config.getRegisteredNames()) {
        const AbstractCrs& crs = *config.getFromNameCache(name, true);
        const auto [place, isNew] = places.emplace(codeKeyOf(crs), listed.size());
        if (isNew) listed.push_back({place->first, kindName(crs), {}});
        listed[place->second].names.push_back({name, axisOrderText(crs)});
    }
    return listed;
}

CommandResult namesCommand(const CommonOptions& common) {
    const Session session(common);
    const std::vector<NamesOfCrs> names = registeredNames(session.config());
    CommandResult result;
    result.output = common.json ? serialised(asJson(names)) : asText(names);
    if (!session.isConfigured() && !common.quiet) result.notes.emplace_back("without --config no name is registered");
    return result;
}

std::string asText(const std::vector<NamesOfCrs>& listed) {
    std::string text;
    for (const NamesOfCrs& crs : listed) {
        Tools::TableRows rows;
        for (const RegisteredName& name : crs.names)
            rows.push_back({Tools::printable(name.name, MAX_TEXT_LENGTH), name.axisOrder});
        text += (text.empty() ? "" : "\n") + crs.codeKey + ", " + crs.kind + "\n" + Tools::alignedColumns(rows, "  ");
    }
    return text;
}

Json asJson(const std::vector<NamesOfCrs>& listed) {
    Json json = Json::array();
    for (const NamesOfCrs& crs : listed)
        json.push_back({{"crs", crs.codeKey}, {"kind", crs.kind}, {"names", crs.names}});
    return json;
}

}  // namespace crsctl
