#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "CoordinateTransformation/CrsConfig.h"
#include "tests/support/FakeCrs.h"

// Configurations for tests, with their creators.
namespace CoordinateTransformation {

class ExposedConfig : public CrsConfig {
public:
    using CrsConfig::cacheLongNameAndCode;
    using CrsConfig::cleanCodeAndIdentifierCache;
    using CrsConfig::reinit;
};

// Looks in the pool first, as the real creator does, and otherwise creates a FakeCrs. Allows no CRS, because a
// configuration does not offer a CRS before it registers it. Releases the object that createFromOgcUrn leaves behind on
// purpose, so that every live CRS has an owner. Allocates no memory of its own.
class TidyCreator : public TestSupport::FakeCreator {
public:
    explicit TidyCreator(const CrsConfig& ownConfig, TestSupport::LiveCrs* liveCrs = nullptr)
        : FakeCreator(liveCrs), config(ownConfig) {}

    const AbstractCrs* getFromNameCache(const std::string& name, bool throwIfMissing) const override {
        return config.getFromNameCache(name, throwIfMissing);
    }
    AbstractCrs* createFromCode(unsigned int primary, unsigned int secondary, bool standardAxisOrder) const override {
        lastCreated = FakeCreator::createFromCode(primary, secondary, standardAxisOrder);
        return lastCreated;
    }
    AbstractCrs* createFromOgcUrn(const std::string& name, std::size_t startPos) const override {
        AbstractCrs* const crs = FakeCreator::createFromOgcUrn(name, startPos);
#if !defined(COORDTRANS_RELEASE_URN_ORIGINAL)
        if (crs != nullptr) delete lastCreated;
#endif
        return crs;
    }

protected:
    bool isCrsAllowed(const AbstractCrs*) const override { return false; }

    const CrsConfig& config;

private:
    mutable AbstractCrs* lastCreated = nullptr;
};

// The history of a creator. It outlives the creator, which the configuration deletes.
struct CreatorJournal {
    TestSupport::LiveCrs live;
    // "init" and the requested names, in order.
    std::vector<std::string> calls;
    // The state of the configuration at the last "init".
    std::size_t liveAtInit = 0;
    std::set<std::string> identifiersAtInit;
    // The number of live CRS when the creator was deleted.
    std::optional<std::size_t> liveWhenDeleted;

    long initialisations() const { return std::count(calls.begin(), calls.end(), "init"); }
};

class JournalCreator : public TidyCreator {
public:
    JournalCreator(CreatorJournal& creatorJournal, const CrsConfig& ownConfig)
        : TidyCreator(ownConfig, &creatorJournal.live), journal(creatorJournal) {}
    ~JournalCreator() override { journal.liveWhenDeleted = journal.live.count(); }

    Crs createFromName(const std::string& name, bool throwOnFailure, bool checkAllowed) const override {
        journal.calls.push_back(name);
        return TidyCreator::createFromName(name, throwOnFailure, checkAllowed);
    }
    void init() override {
        journal.calls.emplace_back("init");
        journal.liveAtInit = journal.live.count();
        journal.identifiersAtInit = config.getConfiguredCrsIdentifiers();
    }

private:
    CreatorJournal& journal;
};

// Fails to initialise, or to create `failingCode`, if the test asks for it.
class FailingCreator : public JournalCreator {
public:
    using JournalCreator::JournalCreator;

    void init() override {
        JournalCreator::init();
        if (failsToInitialise) throw std::runtime_error("no directory");
    }
    AbstractCrs* createFromCode(unsigned int primary, unsigned int secondary, bool standardAxisOrder) const override {
        if (primary == failingCode) throw std::runtime_error("no such code");
        return JournalCreator::createFromCode(primary, secondary, standardAxisOrder);
    }

    bool failsToInitialise = false;
    std::optional<unsigned int> failingCode;
};

// A configuration with a creator of class Creator.
template <typename Creator>
class ConfigWith {
public:
    ConfigWith() { config.injectCreator(creator); }

    void configure(const std::string& xml) {
        std::istringstream document(xml);
        config.configure(document);
    }
    // Configures the given elements, which are written as in a document.
    void givenConfigured(const std::vector<std::string>& elements) {
        std::string xml = "<CrsConfiguration>";
        for (const std::string& element : elements) xml += element;
        configure(xml + "</CrsConfiguration>");
    }
    void givenInitialised(const std::vector<std::string>& elements) {
        givenConfigured(elements);
        config.init();
    }
    // Returns "identifier" or "alias=identifier" for each entry, in order.
    std::vector<std::string> entries() const {
        std::vector<std::string> written;
        for (const CrsConfigData& entry : *config.getConfiguredCrs())
            written.push_back((entry.isMapped() ? entry.getAlias() + "=" : "") + entry.getIdentifier());
        return written;
    }
    // Returns null if nothing has that name.
    const AbstractCrs* named(const std::string& name) const { return config.getFromNameCache(name, false); }
    const AbstractCrs* ofCode(const std::string& key) const { return config.getFromCodeCache(key, false); }
    void destroy() { owned.reset(); }
    // Never destroys the configuration. A test needs this when a copy of the configuration releases what both share.
    void leaveAlive() {
        static auto* const leftAlive = new std::vector<ExposedConfig*>;
        leftAlive->push_back(owned.release());
    }

    CreatorJournal journal;

private:
    std::unique_ptr<ExposedConfig> owned = std::make_unique<ExposedConfig>();

public:
    ExposedConfig& config = *owned;
    // Owned by the configuration.
    Creator* const creator = new Creator(journal, config);
};

using TestConfig = ConfigWith<JournalCreator>;

}  // namespace CoordinateTransformation
