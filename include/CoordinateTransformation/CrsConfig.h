#pragma once

#include <exception>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "CoordinateTransformation/CrsConfigData.h"
#include "CoordinateTransformation/CrsPool.h"
#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

class AbstractCrs;
class Crs;
class CrsCreator;
struct CodePair;
struct EntryIndex;

/// The server's configuration of the CRS it offers. After `init` it is also the pool of ready CRS objects, found by
/// every name that a request may use.
///
/// Threads: one thread builds, configures and initialises it. Afterwards any number of threads may look CRS up. While
/// threads use one configuration, another may be built and initialised, but not the first one of the process.
/// `configure`, `addCrsConfigData`, `setConfigProperty`, `merge` and a repeated `init` need the configuration to
/// themselves.
///
/// Owns its entries, its creator and its cached CRS objects. HAZARD: a copy is shallow. It shares all of these with its
/// source, and both would release them: destroy only one of a source and its copies.
class COORDTRANS_EXPORT CrsConfig : public CrsPool {
public:
    /// Makes the configuration of the subsystem that the environment variable "USE_COORD_TRANSFORMATION_SUBSYSTEM"
    /// names, "proj4" when it is not set. The caller owns it. Throws Misconfigured for any other name.
    static CrsConfig* createDefaultConfigOrFromEnvVar();
    /// Makes a configuration and its creator for `id` "proj4". The caller owns it. Throws Misconfigured for any other
    /// id.
    static CrsConfig* createConfigFromId(const std::string& id);

    /// Makes a configuration without entries and without a creator.
    CrsConfig();
    /// HAZARD: the copy is shallow; see the class.
    CrsConfig(const CrsConfig&) = default;
    /// HAZARD: the copy is shallow; see the class. What the target owned is never released.
    CrsConfig& operator=(const CrsConfig&) = default;

    /// The CRS registered under exactly `name`, borrowed until the caches are emptied. When there is none, throws
    /// CrsNotConfigured if `throwIfMissing` is true and returns null otherwise.
    const AbstractCrs* getFromNameCache(const std::string& name, bool throwIfMissing) const override;
    /// Looks a CRS up by its code key ("4326", "31467*5783"), in the same way.
    const AbstractCrs* getFromCodeCache(const std::string& key, bool throwIfMissing) const override;
    virtual ~CrsConfig();
    /// Initialises the creator, resolves every entry and fills the caches. Throws Misconfigured when there is no
    /// creator, the property "AxisOrderConvention" has an unknown value or no recogniser accepts the identifier of an
    /// entry, and QSHelpers::UnexpectedException for an entry
    /// with code 0; failures of the creator pass through. CRS registered before a failure stay registered.
    virtual void init();

    /// Receives an entry with either the CRS that it registers, borrowed for the call, or its failure. The other
    /// pointer is null.
    using EntryObserver =
        std::function<void(const CrsConfigData& entry, const AbstractCrs* crs, const std::exception* failure)>;
    /// Initialises as `init` does, but leaves out entries that fail. Calls `observer` for each entry in insertion
    /// order. Fails as `init` does if there is no creator or the creator cannot be initialised.
    void initReporting(const EntryObserver& observer);

    /// Takes ownership of the creator. If there already is one, the new one is ignored and remains the caller's.
    void injectCreator(CrsCreator* crsCreator);
    /// The creator. REQUIRES: one has been injected.
    const CrsCreator& getCreator() const { return *creator; }

    /// Appends the entries of an XML fragment: "CRS" elements of "CrsConfiguration", then "SRS" and "EPSGCode" elements
    /// of "SRSList". For a malformed fragment throws the XML reader's own error and adds nothing.
    void configure(std::istringstream& document);
    /// Appends a copy of `entry`. Returns false and changes nothing when there already is an entry with the same
    /// identifier and alias. The caches include the entry after the next initialisation.
    bool addCrsConfigData(const CrsConfigData& entry);
    /// Gives both configurations the union of their entries. Each of the two that was initialised is initialised again
    /// and may fail as `init` does.
    void merge(CrsConfig& other);
    /// The entries, in insertion order.
    const std::list<CrsConfigData>* getConfiguredCrs() const { return configuredCrs; }
    /// Every name under which `getFromNameCache` finds a CRS, in the order of registration; empty before `init`.
    std::vector<std::string> getRegisteredNames() const;
    /// Codes, identifiers and aliases of the configured CRS; empty before `init`.
    const std::set<std::string> getConfiguredCrsIdentifiers() const { return configuredCrsIdentifiers; }
    /// The entry by which the server offers `crs`. An entry with both codes of `crs` comes before one with its primary
    /// code only; among these an entry with its alias, then one without an alias, then any other; among equals the
    /// first. A CRS therefore has the output settings of its entry whichever spelling named it. Null when the primary
    /// code is not configured, and before `init`. Borrowed, and valid while the configuration lives.
    const CrsConfigData* getEntryFor(const AbstractCrs& crs) const;
    /// Whether `code` is the primary code of a configured CRS; false before `init`.
    bool isCrsConfigured(const unsigned int& code) const;
    /// Whether a CRS is registered under exactly `name`; false before `init`.
    bool isCrsConfigured(const std::string& name) const;

    /// Sets a property unless it is already set: the first value stays.
    void setConfigProperty(const std::string& key, const std::string& value);
    /// The value of a property; empty if it was never set.
    std::string getConfigProperty(const std::string& key) const;

protected:
    /// Empties caches and sets, and initialises again. If that fails, the configuration still counts as initialised.
    void reinit();
    /// Takes ownership of `crs` and registers it under its code key and all its names. A key already in use keeps its
    /// CRS. Does nothing when the configuration already owns `crs`.
    void cacheLongNameAndCode(const AbstractCrs* crs);
    /// Empties the two caches and releases their CRS objects; the sets of codes and identifiers stay.
    void cleanCodeAndIdentifierCache();

private:
    using CrsByName = std::map<std::string, const AbstractCrs*>;

    struct RegisteredEntry {
        unsigned int secondaryCode;
        const CrsConfigData* data;
    };

    COORDTRANS_INTERNAL void beginInit();
    COORDTRANS_INTERNAL Crs registerEntry(const CrsConfigData& entry);
    COORDTRANS_INTERNAL bool isEstablishedOrder() const;
    COORDTRANS_INTERNAL void registerEastNorth(const Crs& crs);
    COORDTRANS_INTERNAL void registerAlias(const CrsConfigData& entry, const Crs& crs);
    COORDTRANS_INTERNAL void cacheCrsNamedByUrn(const CodePair& codes, std::size_t kind);
    COORDTRANS_INTERNAL void cacheByName(std::unique_ptr<const AbstractCrs> crs, const std::vector<std::string>& names);
    COORDTRANS_INTERNAL bool insertNames(const AbstractCrs* crs, const std::vector<std::string>& names);
    COORDTRANS_INTERNAL const AbstractCrs* own(std::unique_ptr<const AbstractCrs> crs);
    COORDTRANS_INTERNAL void discard(const AbstractCrs* crs);

    std::list<CrsConfigData>* configuredCrs;
    CrsCreator* creator;
    std::map<std::string, std::string> configProperties;
    std::set<int> configuredCodes;
    std::set<std::string> configuredCrsIdentifiers;
    CrsByName codeCache;
    CrsByName nameCache;
    // In the order of registration.
    std::vector<CrsByName::const_iterator> registeredNames;
    // The CRS objects in the caches.
    std::set<const AbstractCrs*> owned;
    // By primary code, in the order of the entry list.
    std::multimap<unsigned int, RegisteredEntry> registeredEntries;
    // Parallel to configuredCrs, and shared by copies in the same way.
    std::shared_ptr<EntryIndex> entryIndex;
    bool initialised;
};

}  // namespace CoordinateTransformation
