#include "tools/crsctl/NamesCommand.h"

#include <map>

#include "names/CrsName.h"
#include "tools/common/Text.h"
#include "tools/crsctl/ResolveCommand.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

using CoordinateTransformation::AbstractCrs;
using Tools::alignedColumns;
using Tools::printable;

namespace {

NamesOfCrs& namesOf(const AbstractCrs& crs, std::map<std::string, std::size_t>& places,
                    std::vector<NamesOfCrs>& listed) {
    const auto [place, isNew] = places.emplace(codeKeyOf(crs), listed.size());
    if (isNew) listed.push_back({place->first, crs.isGeographic() ? "geographic" : "projected", {}});
    return listed[place->second];
}

}  // namespace

std::string codeKeyOf(const AbstractCrs& crs) {
    return CoordinateTransformation::writeCodeKey({crs.getPrimaryCode(), crs.getSecCompoundCode()});
}

std::vector<NamesOfCrs> registeredNames(const Session& session) {
    std::map<std::string, std::size_t> places;
    std::vector<NamesOfCrs> listed;
    for (const std::string& name : session.config().getRegisteredNames()) {
        const AbstractCrs& crs = *session.config().getFromNameCache(name, true);
        namesOf(crs, places, listed)
            .names.push_back({name, axisOrderWords(crs.isGeographic(), crs.isAxisOrderEastNorthOrLonLat())});
    }
    return listed;
}

CommandResult namesCommand(const CommonOptions& common) {
    const Session session(common);
    const std::vector<NamesOfCrs> names = registeredNames(session);
    CommandResult result;
    result.output = common.json ? serialised(asJson(names)) : asText(names);
    if (!session.isConfigured() && !common.quiet) result.notes.emplace_back("without --config no name is registered");
    return result;
}

std::string asText(const std::vector<NamesOfCrs>& listed) {
    std::string text;
    for (const NamesOfCrs& crs : listed) {
        std::vector<std::vector<std::string>> rows;
        for (const RegisteredName& name : crs.names) rows.push_back({printable(name.name, 1000), name.axisOrder});
        text += (text.empty() ? "" : "\n") + crs.codeKey + ", " + crs.kind + "\n" + alignedColumns(rows, "  ");
    }
    return text;
}

Json asJson(const std::vector<NamesOfCrs>& listed) {
    Json json = Json::array();
    for (const NamesOfCrs& crs : listed) {
        Json names = Json::array();
        for (const RegisteredName& name : crs.names)
            names.push_back({{"name", name.name}, {"axisOrder", name.axisOrder}});
        json.push_back({{"crs", crs.codeKey}, {"kind", crs.kind}, {"names", names}});
    }
    return json;
}

}  // namespace crsctl
