#include "tools/crsctl/check/ObservedStart.h"

#include <algorithm>
#include <set>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "tools/crsctl/start/Session.h"

namespace crsctl {

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::Crs;
using CoordinateTransformation::CrsConfig;
using CoordinateTransformation::CrsConfigData;
using CoordinateTransformation::CrsCreator;
using CoordinateTransformation::NullConstruction;
using CoordinateTransformation::Proj4CrsCreator;

// Notes a copy of the CRS that each entry is given, in the order in which a start asks for them.
class ObservedStart::Recorder : public Proj4CrsCreator {
public:
    explicit Recorder(const CrsConfig& owner) : Proj4CrsCreator(owner) {}

    Crs createFromName(const std::string& name, bool throwOnFailure, bool checkAllowed) const override {
        seen.emplace_back(NullConstruction());
        Crs crs = Proj4CrsCreator::createFromName(name, throwOnFailure, checkAllowed);
        if (const AbstractCrs* const made = crs.get()) seen.back() = Crs(made->copy());
        return crs;
    }

    mutable std::vector<Crs> seen;
};

// The first start settles the PROJ directory for the process.
ObservedStart::ObservedStart(const std::vector<CrsConfigData>& configured, const std::string& projDir)
    : entries(configured), outcomes(configured.size()) {
    CommonOptions bare;
    bare.projDir = projDir;
    const Session session(bare);
    findFailures(session.creator());
    while (!startWithoutFailures()) continue;
}

// Most failures show when an entry's identifier is asked for by itself, which spares a start for each. An identifier
// that is some entry's alias may be answered at the start all the same.
void ObservedStart::findFailures(const CrsCreator& creator) {
    std::set<std::string> aliases;
    for (const CrsConfigData& entry : entries) aliases.insert(entry.getAlias());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const std::string identifier = entries[i].getIdentifier();
        if (!identifier.empty() && aliases.count(identifier) != 0) continue;
        try {
            const Crs crs = creator.createFromName(identifier, false, false);
            if (crs.get() == nullptr) outcomes[i].failure = "The EPSG code \"" + identifier + "\" is unknown";
        } catch (const std::exception& failure) {
            outcomes[i].failure = failure.what();
        }
    }
}

std::vector<std::size_t> ObservedStart::entriesToStartWith() const {
    std::vector<std::size_t> indexes;
    for (std::size_t i = 0; i < entries.size(); ++i)
        if (outcomes[i].failure.empty()) indexes.push_back(i);
    return indexes;
}

// False when the start has failed for another entry, which is noted.
bool ObservedStart::startWithoutFailures() {
    const std::vector<std::size_t> indexes = entriesToStartWith();
    auto config = std::make_unique<CrsConfig>();
    auto* const recorder = new Recorder(*config);
    config->injectCreator(recorder);
    for (const std::size_t index : indexes) config->addCrsConfigData(entries[index]);
    try {
        config->init();
    } catch (const std::exception& failure) {
        if (recorder->seen.empty()) throw;
        outcomes[indexes[recorder->seen.size() - 1]].failure = failure.what();
        return false;
    }
    for (std::size_t i = 0; i < indexes.size(); ++i) outcomes[indexes[i]].crs = std::move(recorder->seen[i]);
    lastConfig = std::move(config);
    return true;
}

}  // namespace crsctl
