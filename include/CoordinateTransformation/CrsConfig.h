#pragma once

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

/// The server's configuration of the CRS it offers, and after `init` the pool of ready CRS objects under every
/// name that a request may use for them.
///
/// Threads: built, configured and initialised by one thread; afterwards the lookups only read and may be
/// shared. Nothing may run beside `configure`, `addCrsConfigData`, `setConfigProperty`, `merge` and a
/// re-initialisation.
///
/// Owns its entries, its creator and its cached CRS objects. HAZARD: a copy is shallow, it shares all of them
/// with its source and both would release them, so only one of a source and its copies may ever be destroyed.
class COORDTRANS_EXPORT CrsConfig : public CrsPool {
public:
    /// The configuration for the subsystem that the environment variable "USE_COORD_TRANSFORMATION_SUBSYSTEM"
    /// names, for "proj4" when it is not set. The caller owns it. Misconfigured for any other name.
    static CrsConfig* createDefaultConfigOrFromEnvVar();
    /// A configuration with its creator, for `id` "proj4". The caller owns it. Misconfigured for any other id.
    static CrsConfig* createConfigFromId(const std::string& id);

    /// A configuration without entries and without a creator.
    CrsConfig();
    /// HAZARD: shallow, see the class.
    CrsConfig(const CrsConfig&) = default;
    /// HAZARD: shallow, see the class; what the target owned is never released.
    CrsConfig& operator=(const CrsConfig&) = default;

    /// The CRS registered under exactly `name`; borrowed until the caches are emptied. When there is none:
    /// CrsNotConfigured if `throwIfMissing`, else null.
    const AbstractCrs* getFromNameCache(const std::string& name, bool throwIfMissing) const override;
    /// The same by code key ("4326", "31467*5783").
    const AbstractCrs* getFromCodeCache(const std::string& key, bool throwIfMissing) const override;
    virtual ~CrsConfig();
    /// Initialises the creator, resolves every entry and fills the caches. Misconfigured without a creator and
    /// for an entry whose identifier no recogniser accepts, QSHelpers::UnexpectedException for an entry with the
    /// code 0; failures of the creator pass through. What was registered before a failure stays registered.
    virtual void init();

    /// Takes the creator over, unless there is one already; an ignored creator remains the caller's.
    void injectCreator(CrsCreator* crsCreator);
    /// REQUIRES: a creator has been injected.
    const CrsCreator& getCreator() const { return *creator; }

    /// Appends the entries of an XML fragment: "CRS" elements of "CrsConfiguration", then "SRS" and "EPSGCode"
    /// elements of "SRSList". Raises the XML reader's own error for a malformed fragment, and adds nothing.
    void configure(std::istringstream& document);
    /// Appends a copy of `entry`. False, and nothing changes, when an entry with the same identifier and the
    /// same alias is there already. The caches learn of it at the next initialisation.
    bool addCrsConfigData(const CrsConfigData& entry);
    /// Makes both configurations hold the union of their entries; each that was initialised is initialised
    /// anew, with its failures.
    void merge(CrsConfig& other);
    /// The entries themselves, in insertion order.
    const std::list<CrsConfigData>* getConfiguredCrs() const { return configuredCrs; }
    /// Codes, identifiers and aliases of the configured CRS; empty before `init`.
    const std::set<std::string> getConfiguredCrsIdentifiers() const { return configuredCrsIdentifiers; }
    /// The entry by which the server offers `crs`: one with its codes, before one with its primary code alone; among
    /// these one with its alias, before one without an alias, before any other; among equals the first. So a CRS has
    /// the output settings of its entry whatever the spelling that named it. Null when its primary code is not
    /// configured, and before `init`. Borrowed, and valid while the configuration lives.
    const CrsConfigData* getEntryFor(const AbstractCrs& crs) const;
    /// Whether `code` is the primary code of a configured CRS; false before `init`.
    bool isCrsConfigured(const unsigned int& code) const;
    /// Whether a CRS is registered under exactly `name`; false before `init`.
    bool isCrsConfigured(const std::string& name) const;

    /// Sets a property that is not set yet; the first value stays.
    void setConfigProperty(const std::string& key, const std::string& value);
    /// The value, or an empty text for a property that was never set.
    std::string getConfigProperty(const std::string& key) const;

protected:
    /// Empties caches and sets and initialises anew. Stays marked initialised when that fails.
    void reinit();
    /// Registers `crs`, which it takes over, under its code key and all its names. A key that is taken keeps
    /// its CRS. Nothing happens when the configuration owns `crs` already.
    void cacheLongNameAndCode(const AbstractCrs* crs);
    /// Empties the two caches and releases their CRS objects; the sets of codes and identifiers stay.
    void cleanCodeAndIdentifierCache();

private:
    using CrsByName = std::map<std::string, const AbstractCrs*>;

    struct RegisteredEntry {
        unsigned int secondaryCode;
        const CrsConfigData* data;
    };

    COORDTRANS_INTERNAL void registerEntry(const CrsConfigData& entry);
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
    // What the caches refer to.
    std::set<const AbstractCrs*> owned;
    // By primary code, in the order of the entry list.
    std::multimap<unsigned int, RegisteredEntry> registeredEntries;
    // Beside configuredCrs, and shared by copies as that is.
    std::shared_ptr<EntryIndex> entryIndex;
    bool initialised;
};

}  // namespace CoordinateTransformation
