#include "CoordinateTransformation/CrsConfig.h"

#include <cstdlib>
#include <memory>
#include <utility>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/CrsCreator.h"
#include "CoordinateTransformation/CrsNotConfigured.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/Proj4CrsCreator.h"
#include "config/Fragment.h"
#include "names/CrsName.h"
#include "text/NumericText.h"

namespace CoordinateTransformation {
namespace {

using boost::property_tree::ptree;
using QSHelpers::convertNumericToText;
using KeptCrs = std::unique_ptr<const AbstractCrs>;

constexpr char SUBSYSTEM_VARIABLE[] = "USE_COORD_TRANSFORMATION_SUBSYSTEM";
constexpr char PROJ4_SUBSYSTEM[] = "proj4";

const AbstractCrs* find(const std::map<std::string, const AbstractCrs*>& cache, const std::string& key,
                        bool throwIfMissing) {
    const auto entry = cache.find(key);
    if (entry != cache.end()) return entry->second;
    if (throwIfMissing) throw CrsNotConfigured(key);
    return nullptr;
}

CodePair codesOf(const AbstractCrs& crs) { return {crs.getPrimaryCode(), crs.getSecCompoundCode()}; }

// The rank of an entry with the CRS's primary code: the secondary code weighs more than the alias.
int rankOf(const CrsConfigData& entry, unsigned int secondaryCode, const AbstractCrs& crs) {
    int fit = secondaryCode == crs.getSecCompoundCode() ? 4 : 0;
    if (entry.getAlias() == crs.getAlias()) fit += 2;
    if (!entry.isMapped()) fit += 1;
    return fit;
}

// Another value would exchange the coordinates of every response unnoticed.
void requireKnownOrder(const std::string& convention) {
    if (!convention.empty() && convention != REGISTRY_ORDER && convention != ESTABLISHED_ORDER)
        throw Misconfigured(std::string("The property ") + AXIS_ORDER_PROPERTY + " is \"" + convention + "\", not \"" +
                            REGISTRY_ORDER + "\" or \"" + ESTABLISHED_ORDER + "\"");
}

}  // namespace

// The key that two entries must not share: see CrsConfigData::sameIdentifierOrAliases.
struct EntryIndex {
    std::set<std::pair<std::string, std::string>> identifiersAndAliases;
};

// The list is allocated last, because nothing would release it after a failure.
CrsConfig::CrsConfig()
    : configuredCrs(nullptr), creator(nullptr), entryIndex(std::make_shared<EntryIndex>()), initialised(false) {
    configuredCrs = new std::list<CrsConfigData>;
}

CrsConfig::~CrsConfig() {
    cleanCodeAndIdentifierCache();
    delete configuredCrs;
    delete creator;
}

CrsConfig* CrsConfig::createDefaultConfigOrFromEnvVar() {
    const char* const subsystem = std::getenv(SUBSYSTEM_VARIABLE);
    return createConfigFromId(subsystem == nullptr ? PROJ4_SUBSYSTEM : subsystem);
}

CrsConfig* CrsConfig::createConfigFromId(const std::string& id) {
    if (id != PROJ4_SUBSYSTEM)
        throw Misconfigured("The coordinate transformation subsystem " + id + " is unknown and not available!");
    auto config = std::make_unique<CrsConfig>();
    config->injectCreator(new Proj4CrsCreator(*config));
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): a new configuration owns the creator.
    return config.release();
}

void CrsConfig::configure(std::istringstream& document) {
    const auto addEntry = [this](FragmentRole role, const ptree::value_type& element, const FragmentContainer*) {
        if (role == FragmentRole::ENTRY) addCrsConfigData(CrsConfigData(element));
    };
    visitFragment(readFragment(document), addEntry);
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

void CrsConfig::injectCreator(CrsCreator* crsCreator) {
    if (creator == nullptr) creator = crsCreator;
}

void CrsConfig::init() {
    beginInit();
    for (const CrsConfigData& entry : *configuredCrs) registerEntry(entry);
    initialised = true;
}

void CrsConfig::initReporting(const EntryObserver& observer) {
    beginInit();
    for (const CrsConfigData& entry : *configuredCrs) {
        try {
            const Crs crs = registerEntry(entry);
            observer(entry, crs.get(), nullptr);
        } catch (const std::exception& failure) {
            observer(entry, nullptr, &failure);
        }
    }
    initialised = true;
}

void CrsConfig::beginInit() {
    if (creator == nullptr) throw Misconfigured("No CrsCreator injected");
    requireKnownOrder(getConfigProperty(AXIS_ORDER_PROPERTY));
    creator->init();
    registeredEntries.clear();
}

void CrsConfig::reinit() {
    cleanCodeAndIdentifierCache();
    configuredCodes.clear();
    configuredCrsIdentifiers.clear();
    registeredEntries.clear();
    init();
}

Crs CrsConfig::registerEntry(const CrsConfigData& entry) {
    Crs crs = creator->createFromName(entry.getIdentifier(), false, false);
    if (crs.get() == nullptr) throw Misconfigured("The EPSG code \"" + entry.getIdentifier() + "\" is unknown");
    registeredEntries.emplace(crs->getPrimaryCode(), RegisteredEntry{crs->getSecCompoundCode(), &entry});
    configuredCodes.insert(static_cast<int>(crs->getPrimaryCode()));
    configuredCrsIdentifiers.insert(convertNumericToText(crs->getPrimaryCode()));
    configuredCrsIdentifiers.insert(crs->getAliasOrIdentifier(false));
    if (isEstablishedOrder()) crs.mod()->setEpsgStandardAxisOrder();
    if (entry.isMapped()) registerAlias(entry, crs);
    if (isEstablishedOrder()) registerEastNorth(crs);
    cacheLongNameAndCode(crs->copy());
    return crs;
}

bool CrsConfig::isEstablishedOrder() const { return getConfigProperty(AXIS_ORDER_PROPERTY) == ESTABLISHED_ORDER; }

// Registers the names that put easting or longitude first by convention. The other names keep the order of the
// registry.
void CrsConfig::registerEastNorth(const Crs& crs) {
    if (crs->isAxisOrderEastNorthOrLonLat()) return;
    std::unique_ptr<AbstractCrs> eastNorth(crs->copy());
    eastNorth->setAxisOrderEastNorthOrLonLat(true);
    const std::vector<std::string> names = {eastNorth->getAliasOrIdentifier(false), eastNorth->getAsText()};
    cacheByName(std::move(eastNorth), names);
}

// Only requests by the alias get the alias and its axis order. The other names keep the CRS's own axis order.
void CrsConfig::registerAlias(const CrsConfigData& entry, const Crs& crs) {
    Crs handle(crs);
    AbstractCrs* const mapped = handle.getModifiableCopy();
    mapped->setAlias(entry.getAlias());
    if (const boost::optional<bool> eastNorth = entry.getAxisOrderEastNorthOrLonLat())
        mapped->setAxisOrderEastNorthOrLonLat(*eastNorth);
    else if (isEstablishedOrder() && isEastNorthIfEstablished(entry.getAlias()))
        mapped->setAxisOrderEastNorthOrLonLat(true);
    const std::string name = mapped->getAliasOrIdentifier(true);
    configuredCrsIdentifiers.insert(name);
    cacheByName(KeptCrs(mapped->copy()), {name});
}

// Takes ownership of `crs` and registers it only in the name cache.
void CrsConfig::cacheByName(std::unique_ptr<const AbstractCrs> crs, const std::vector<std::string>& names) {
    const AbstractCrs* const offered = own(std::move(crs));
    if (!insertNames(offered, names)) discard(offered);
}

// Returns whether `crs` was registered under a name.
bool CrsConfig::insertNames(const AbstractCrs* crs, const std::vector<std::string>& names) {
    bool taken = false;
    for (const std::string& name : names) {
        const auto [place, isNew] = nameCache.emplace(name, crs);
        if (!isNew) continue;
        registeredNames.push_back(place);
        taken = true;
    }
    return taken;
}

std::vector<std::string> CrsConfig::getRegisteredNames() const {
    std::vector<std::string> names;
    for (const auto& place : registeredNames) names.push_back(place->first);
    return names;
}

const AbstractCrs* CrsConfig::own(std::unique_ptr<const AbstractCrs> crs) {
    owned.insert(crs.get());
    return crs.release();
}

void CrsConfig::discard(const AbstractCrs* crs) {
    owned.erase(crs);
    delete crs;
}

void CrsConfig::cacheLongNameAndCode(const AbstractCrs* crs) {
    if (owned.count(crs) != 0) return;
    own(KeptCrs(crs));
    const CodePair codes = codesOf(*crs);
    bool taken = codeCache.emplace(writeCodeKey(codes), crs).second;
    taken |= insertNames(crs, {crs->getAliasOrIdentifier(false), crs->getAliasOrAsOgcURN(nullptr, false)});
    // A CRS without a code has no text form and fails here; the names before it stay registered.
    taken |= insertNames(crs, {crs->getAsText()});
    taken |= insertNames(crs, registeredCodeNames(codes));
    if (!taken) discard(crs);
    for (std::size_t kind = 0; kind < REGISTERED_URN_KINDS; ++kind) cacheCrsNamedByUrn(codes, kind);
}

// Registers the CRS that the creator makes of a URN, under that URN and under its other spelling.
void CrsConfig::cacheCrsNamedByUrn(const CodePair& codes, std::size_t kind) {
    const KeptCrs created(creator->createFromURN(registeredUrns(codes)[kind].name));
    if (created == nullptr) return;
    const RegisteredUrns urns = registeredUrns({created->getPrimaryCode(), codes.secondary})[kind];
    cacheByName(KeptCrs(created->copy()), {urns.name, urns.alternative});
}

const CrsConfigData* CrsConfig::getEntryFor(const AbstractCrs& crs) const {
    const auto [first, last] = registeredEntries.equal_range(crs.getPrimaryCode());
    const CrsConfigData* best = nullptr;
    int bestRank = 0;
    for (auto entry = first; entry != last; ++entry) {
        const int fit = rankOf(*entry->second.data, entry->second.secondaryCode, crs);
        if (best == nullptr || fit > bestRank) {
            best = entry->second.data;
            bestRank = fit;
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
    registeredNames.clear();
    nameCache.clear();
    for (const AbstractCrs* const crs : owned) delete crs;
    owned.clear();
}

}  // namespace CoordinateTransformation
