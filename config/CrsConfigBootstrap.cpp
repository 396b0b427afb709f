// How a configuration comes into being and fills its caches.

#include <cstdlib>
#include <memory>
#include <utility>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/CrsCreator.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "CoordinateTransformation/Proj4CrsCreator.h"
#include "text/NumericText.h"

namespace CoordinateTransformation {

namespace {

using QSHelpers::convertNumericToText;
using OwnedCrs = std::unique_ptr<const AbstractCrs>;

constexpr char SUBSYSTEM_VARIABLE[] = "USE_COORD_TRANSFORMATION_SUBSYSTEM";
constexpr char PROJ4_SUBSYSTEM[] = "proj4";

// `separator` and the secondary code; empty for a CRS that is not compound.
std::string secondarySuffix(const AbstractCrs& crs, const std::string& separator) {
    const unsigned int secondary = crs.getSecCompoundCode();
    return secondary == 0 ? std::string() : separator + convertNumericToText(secondary);
}

std::string codeKey(const AbstractCrs& crs) {
    return convertNumericToText(crs.getPrimaryCode()) + secondarySuffix(crs, "*");
}

using NameWriter = std::string (*)(const AbstractCrs&);

// Registered one by one: a CRS without a code has no text form, and fails with the names before it in place.
constexpr NameWriter SHORT_NAMES[] = {
    [](const AbstractCrs& crs) { return crs.getAliasOrIdentifier(false); },
    [](const AbstractCrs& crs) { return crs.getAliasOrAsOgcURN(nullptr, false); },
    [](const AbstractCrs& crs) { return crs.getAsText(); },
    codeKey,
    [](const AbstractCrs& crs) { return "urn:EPSG:geographicCRS:" + codeKey(crs); },
};

}  // namespace

CrsConfig* CrsConfig::createDefaultConfigOrFromEnvVar() {
    const char* const subsystem = std::getenv(SUBSYSTEM_VARIABLE);
    return createConfigFromId(subsystem == nullptr ? PROJ4_SUBSYSTEM : subsystem);
}

CrsConfig* CrsConfig::createConfigFromId(const std::string& id) {
    if (id != PROJ4_SUBSYSTEM)
        throw Misconfigured("The coordinate transformation subsystem " + id + " is unknown and not available!");
    auto config = std::make_unique<CrsConfig>();
    config->injectCreator(new Proj4CrsCreator(*config));
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): a new configuration takes the creator over.
    return config.release();
}

void CrsConfig::injectCreator(CrsCreator* crsCreator) {
    if (creator == nullptr) creator = crsCreator;
}

void CrsConfig::init() {
    if (creator == nullptr) throw Misconfigured("No CrsCreator injected");
    creator->init();
    registeredEntries.clear();
    for (const CrsConfigData& entry : *configuredCrs) registerEntry(entry);
    initialised = true;
}

void CrsConfig::reinit() {
    cleanCodeAndIdentifierCache();
    configuredCodes.clear();
    configuredCrsIdentifiers.clear();
    registeredEntries.clear();
    init();
}

void CrsConfig::registerEntry(const CrsConfigData& entry) {
    const Crs crs = creator->createFromName(entry.getIdentifier(), false, false);
    if (crs.get() == nullptr) throw Misconfigured("The EPSG code \"" + entry.getIdentifier() + "\" is unknown");
    registeredEntries.emplace(crs->getPrimaryCode(), RegisteredEntry{crs->getSecCompoundCode(), &entry});
    configuredCodes.insert(static_cast<int>(crs->getPrimaryCode()));
    configuredCrsIdentifiers.insert(convertNumericToText(crs->getPrimaryCode()));
    configuredCrsIdentifiers.insert(crs->getAliasOrIdentifier(false));
    if (entry.isMapped()) registerAlias(entry, crs);
    cacheLongNameAndCode(crs->copy());
}

// Alias and axis-order override reach requests through the alias alone; the other names keep the CRS's own
// axis order.
void CrsConfig::registerAlias(const CrsConfigData& entry, const Crs& crs) {
    Crs handle(crs);
    AbstractCrs* const mapped = handle.getModifiableCopy();
    mapped->setAlias(entry.getAlias());
    if (const boost::optional<bool> eastNorth = entry.getAxisOrderEastNorthOrLonLat())
        mapped->setAxisOrderEastNorthOrLonLat(*eastNorth);
    const std::string name = mapped->getAliasOrIdentifier(true);
    configuredCrsIdentifiers.insert(name);
    cacheByName(OwnedCrs(mapped->copy()), {name});
}

// For the name cache alone.
void CrsConfig::cacheByName(std::unique_ptr<const AbstractCrs> crs, const std::vector<std::string>& names) {
    const AbstractCrs* const offered = own(std::move(crs));
    if (!insertNames(offered, names)) discard(offered);
}

// Whether a name took `crs`.
bool CrsConfig::insertNames(const AbstractCrs* crs, const std::vector<std::string>& names) {
    bool taken = false;
    for (const std::string& name : names) taken |= nameCache.emplace(name, crs).second;
    return taken;
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
    own(OwnedCrs(crs));
    const std::string primary = convertNumericToText(crs->getPrimaryCode());
    const std::string suffix612 = secondarySuffix(*crs, ",crs:EPSG:6.12:");
    const std::string suffix = secondarySuffix(*crs, ",crs:EPSG::");
    bool taken = codeCache.emplace(codeKey(*crs), crs).second;
    for (const NameWriter write : SHORT_NAMES) taken |= insertNames(crs, {write(*crs)});
    if (!taken) discard(crs);
    cacheCrsNamedByUrn("urn:ogc:def:crs:EPSG:6.12:", primary, "urn:x-ogc:def:crs:EPSG:6.12:", suffix612);
    cacheCrsNamedByUrn("urn:ogc:def:crs:EPSG::", primary, "urn:ogc:def:crs,crs:EPSG::", suffix);
}

// Registers what the creator makes of the URN `head` `primary` `suffix`, under that URN and under its twin
// with another head.
void CrsConfig::cacheCrsNamedByUrn(const std::string& head, const std::string& primary, const std::string& twinHead,
                                   const std::string& suffix) {
    const OwnedCrs created(creator->createFromURN(head + primary + suffix));
    if (created == nullptr) return;
    const std::string code = convertNumericToText(created->getPrimaryCode());
    cacheByName(OwnedCrs(created->copy()), {head + code + suffix, twinHead + code + suffix});
}

}  // namespace CoordinateTransformation
