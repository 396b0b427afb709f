#include "CoordinateTransformation/CrsConfig.h"

#include <utility>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/CrsCreator.h"
#include "CoordinateTransformation/CrsNotConfigured.h"
#include "config/FragmentReader.h"

namespace CoordinateTransformation {

namespace {

using boost::property_tree::ptree;

// Adds the children of the first top-level `container` whose names are listed.
void addEntries(CrsConfig& config, const ptree& document, const char* container,
                const std::set<std::string>& entryNames) {
    const auto found = document.get_child_optional(container);
    if (!found) return;
    for (const ptree::value_type& child : *found)
        if (entryNames.count(child.first) != 0) config.addCrsConfigData(CrsConfigData(child));
}

const AbstractCrs* find(const std::map<std::string, const AbstractCrs*>& cache, const std::string& key,
                        bool throwIfMissing) {
    const auto entry = cache.find(key);
    if (entry != cache.end()) return entry->second;
    if (throwIfMissing) throw CrsNotConfigured(key);
    return nullptr;
}

// How well an entry of its primary code fits a CRS: the secondary code counts more than the alias.
int fitOf(const CrsConfigData& entry, unsigned int secondaryCode, const AbstractCrs& crs) {
    int fit = secondaryCode == crs.getSecCompoundCode() ? 4 : 0;
    if (entry.getAlias() == crs.getAlias()) fit += 2;
    if (!entry.isMapped()) fit += 1;
    return fit;
}

}  // namespace

// What two entries must not both have: see CrsConfigData::sameIdentifierOrAliases.
struct EntryIndex {
    std::set<std::pair<std::string, std::string>> identifiersAndAliases;
};

// The list is allocated last: nothing would release it after a failure.
CrsConfig::CrsConfig()
    : configuredCrs(nullptr), creator(nullptr), entryIndex(std::make_shared<EntryIndex>()), initialised(false) {
    configuredCrs = new std::list<CrsConfigData>;
}

CrsConfig::~CrsConfig() {
    cleanCodeAndIdentifierCache();
    delete configuredCrs;
    delete creator;
}

void CrsConfig::configure(std::istringstream& document) {
    const ptree tree = readFragment(document);
    addEntries(*this, tree, "CrsConfiguration", {"CRS"});
    addEntries(*this, tree, "SRSList", {"SRS", "EPSGCode"});
}

bool CrsConfig::addCrsConfigData(const CrsConfigData& entry) {
    std::list<CrsConfigData> added(1, entry);
    if (!entryIndex->identifiersAndAliases.emplace(entry.getIdentifier(), entry.getAlias()).second) return false;
    configuredCrs->splice(configuredCrs->end(), added);
    return true;
}

void CrsConfig::merge(CrsConfig& other) {
    for (const CrsConfigData& entry : *configuredCrs) other.addCrsConfigData(entry);
    if (other.initialised) other.reinit();
    for (const CrsConfigData& entry : *other.configuredCrs) addCrsConfigData(entry);
    if (initialised) reinit();
}

const CrsConfigData* CrsConfig::getEntryFor(const AbstractCrs& crs) const {
    const auto [first, last] = registeredEntries.equal_range(crs.getPrimaryCode());
    const CrsConfigData* best = nullptr;
    int bestFit = 0;
    for (auto entry = first; entry != last; ++entry) {
        const int fit = fitOf(*entry->second.data, entry->second.secondaryCode, crs);
        if (best == nullptr || fit > bestFit) {
            best = entry->second.data;
            bestFit = fit;
        }
    }
    return best;
}

bool CrsConfig::isCrsConfigured(const unsigned int& code) const {
    return configuredCodes.count(static_cast<int>(code)) != 0;
}

bool CrsConfig::isCrsConfigured(const std::string& name) const { return nameCache.count(name) != 0; }

void CrsConfig::setConfigProperty(const std::string& key, const std::string& value) {
    configProperties.emplace(key, value);
}

std::string CrsConfig::getConfigProperty(const std::string& key) const {
    const auto property = configProperties.find(key);
    return property == configProperties.end() ? std::string() : property->second;
}

const AbstractCrs* CrsConfig::getFromNameCache(const std::string& name, bool throwIfMissing) const {
    return find(nameCache, name, throwIfMissing);
}

const AbstractCrs* CrsConfig::getFromCodeCache(const std::string& key, bool throwIfMissing) const {
    return find(codeCache, key, throwIfMissing);
}

void CrsConfig::cleanCodeAndIdentifierCache() {
    codeCache.clear();
    nameCache.clear();
    for (const AbstractCrs* const crs : owned) delete crs;
    owned.clear();
}

}  // namespace CoordinateTransformation
