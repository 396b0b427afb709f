#include "tools/crsctl/names/RegisteredNames.h"

#include <algorithm>
#include <map>

#include "CoordinateTransformation/CrsCreator.h"
#include "names/CrsName.h"
#include "tools/common/Text.h"
#include "tools/crsctl/names/NameReport.h"
#include "tools/crsctl/start/Session.h"

namespace crsctl {

using Tools::alignedColumns;
using Tools::printable;

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::CodePair;
using CoordinateTransformation::Crs;
using CoordinateTransformation::CrsConfigData;

namespace {

// The cache cannot be listed. It is asked for every name under which a configuration registers anything; what it
// answers under that name, and for which CRS, is its own word.
class NameCollector {
public:
    explicit NameCollector(const Session& asked) : session(asked) {}

    void add(const std::string& name) {
        const AbstractCrs* const crs = session.config().getFromNameCache(name, false);
        if (crs == nullptr) return;
        std::vector<RegisteredName>& names = namesOf(*crs).names;
        const auto same = [&name](const RegisteredName& other) { return other.name == name; };
        if (std::any_of(names.begin(), names.end(), same)) return;
        names.push_back({name, axisOrderWords(crs->isGeographic(), crs->isAxisOrderEastNorthOrLonLat())});
    }

    void addEntry(const CrsConfigData& entry) {
        const Crs crs = session.creator().createFromName(entry.getIdentifier(), false, false);
        if (crs.get() == nullptr) return;
        for (const std::string& name : namesRegisteredFor(*crs.get())) add(name);
        addTextFormInOtherAxisOrder(crs);
        if (entry.isMapped()) add(entry.getAlias());
    }

    std::vector<NamesOfCrs> take() { return std::move(listed); }

private:
    // An alias that spells its own identifier answers in the alias's axis order; the text form was registered in
    // the CRS's own.
    void addTextFormInOtherAxisOrder(Crs crs) {
        if (crs->isUnknown() || crs->isDefault()) return;
        AbstractCrs* const other = crs.mod();
        other->setAxisOrderEastNorthOrLonLat(!other->isAxisOrderEastNorthOrLonLat());
        add(other->getAsText());
    }

    NamesOfCrs& namesOf(const AbstractCrs& crs) {
        const auto [place, isNew] = places.emplace(codeKeyOf(crs), listed.size());
        if (isNew) listed.push_back({place->first, crs.isGeographic() ? "geographic" : "projected", {}});
        return listed[place->second];
    }

    const Session& session;
    std::map<std::string, std::size_t> places;
    std::vector<NamesOfCrs> listed;
};

CodePair codesOf(const AbstractCrs& crs) { return {crs.getPrimaryCode(), crs.getSecCompoundCode()}; }

}  // namespace

std::string codeKeyOf(const AbstractCrs& crs) { return writeCodeKey(codesOf(crs)); }

std::vector<std::string> namesRegisteredFor(const AbstractCrs& crs) {
    if (crs.getPrimaryCode() == 0) return {};
    return CoordinateTransformation::registeredNames(
        codesOf(crs), {crs.getAliasOrIdentifier(false), crs.getAliasOrAsOgcURN(nullptr, false), crs.getAsText()});
}

std::vector<NamesOfCrs> registeredNames(const Session& session) {
    NameCollector collector(session);
    for (const CrsConfigData& entry : *session.config().getConfiguredCrs()) collector.addEntry(entry);
    return collector.take();
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
