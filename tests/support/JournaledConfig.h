#pragma once

#include <cstddef>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "CoordinateTransformation/CrsConfig.h"
#include "tests/support/FakeCrs.h"

// For tests of a configuration: its protected operations, a creator that keeps a journal, and a fixture.
namespace CoordinateTransformation {

class ExposedConfig : public CrsConfig {
public:
    using CrsConfig::cacheLongNameAndCode;
    using CrsConfig::cleanCodeAndIdentifierCache;
    using CrsConfig::reinit;
};

// What a creator went through. Outlives the creator, which its configuration deletes.
struct CreatorJournal {
    TestSupport::LiveCrs live;
    // What `createFromOgcUrn` copied; left behind, unless the build releases it.
    std::set<const AbstractCrs*> urnOriginals;
    std::vector<std::string> names;
    int initialisations = 0;
    bool destroyed = false;
    // CRS alive when the creator was destroyed, apart from the originals.
    std::size_t heldAtDestruction = 0;

    std::size_t leftBehind() const {
        std::size_t count = 0;
        for (const AbstractCrs* const original : urnOriginals) count += live.contains(original) ? 1 : 0;
        return count;
    }
    // CRS alive, apart from the originals.
    std::size_t held() const { return live.count() - leftBehind(); }
};

// Makes FakeCrs, asks the pool first as the real creator does, and fails where a test tells it to.
class JournalCreator : public TestSupport::FakeCreator {
public:
    JournalCreator(CreatorJournal& creatorJournal, const CrsPool& crsPool)
        : FakeCreator(&creatorJournal.live), journal(creatorJournal), pool(crsPool) {}
    ~JournalCreator() override {
        journal.destroyed = true;
        journal.heldAtDestruction = journal.held();
    }

    const AbstractCrs* getFromNameCache(const std::string& name, bool throwIfMissing) const override {
        return pool.getFromNameCache(name, throwIfMissing);
    }
    Crs createFromName(const std::string& name, bool throwOnFailure, bool checkAllowed) const override {
        EXPECT_FALSE(throwOnFailure);
        EXPECT_FALSE(checkAllowed);
        journal.names.push_back(name);
        return FakeCreator::createFromName(name, throwOnFailure, checkAllowed);
    }
    AbstractCrs* createFromURN(const std::string& name) const override {
        if (onUrn) onUrn(name);
        if (!readsUrns) return nullptr;
        const SetWhileAlive reading(readingUrn);
        return FakeCreator::createFromURN(name);
    }
    AbstractCrs* createFromCode(unsigned int primary, unsigned int secondary, bool standardAxisOrder) const override {
        if (onCode) onCode(primary);
        const unsigned int code = readingUrn && codeOfUrns != 0 ? codeOfUrns : primary;
        AbstractCrs* const crs = FakeCreator::createFromCode(code, secondary, standardAxisOrder);
#if !defined(COORDTRANS_RELEASE_URN_ORIGINAL)
        if (readingUrn) journal.urnOriginals.insert(crs);
#endif
        return crs;
    }
    void init() override {
        ++journal.initialisations;
        if (onInit) onInit();
    }

    std::function<void()> onInit;
    std::function<void(unsigned int)> onCode;
    std::function<void(const std::string&)> onUrn;
    bool readsUrns = true;
    // What every URN is read as, unless 0.
    unsigned int codeOfUrns = 0;

private:
    struct SetWhileAlive {
        explicit SetWhileAlive(bool& theFlag) : flag(theFlag) { flag = true; }
        ~SetWhileAlive() { flag = false; }
        bool& flag;
    };

    CreatorJournal& journal;
    const CrsPool& pool;
    mutable bool readingUrn = false;
};

// A configuration whose creator keeps a journal, as a test sets it up.
class JournaledConfig {
public:
    JournaledConfig() { config.injectCreator(creator); }

    void configure(const std::string& xml) {
        std::istringstream document(xml);
        config.configure(document);
    }
    // One element per entry, as it stands in a document.
    void givenConfigured(const std::vector<std::string>& elements) {
        std::string xml = "<CrsConfiguration>";
        for (const std::string& element : elements) xml += element;
        configure(xml + "</CrsConfiguration>");
    }
    void givenInitialised(const std::vector<std::string>& elements) {
        givenConfigured(elements);
        config.init();
    }
    // "identifier" or "alias=identifier", in order.
    std::vector<std::string> entries() const {
        std::vector<std::string> written;
        for (const CrsConfigData& entry : *config.getConfiguredCrs())
            written.push_back((entry.isMapped() ? entry.getAlias() + "=" : "") + entry.getIdentifier());
        return written;
    }
    // Null when nothing has that name.
    const AbstractCrs* named(const std::string& name) const { return config.getFromNameCache(name, false); }
    void destroy() { owned.reset(); }
    // For a configuration that shares with another one and must not be destroyed beside it.
    void leaveAlive() {
        static auto* const leftAlive = new std::vector<ExposedConfig*>;
        leftAlive->push_back(owned.release());
    }

    CreatorJournal journal;

private:
    std::unique_ptr<ExposedConfig> owned = std::make_unique<ExposedConfig>();

public:
    ExposedConfig& config = *owned;
    // Belongs to the configuration.
    JournalCreator* const creator = new JournalCreator(journal, config);
};

// The text of the failure of type E that `action` raises.
template <typename E, typename Action>
std::string messageOf(Action action) {
    try {
        action();
    } catch (const E& failure) {
        return failure.what();
    }
    ADD_FAILURE() << "nothing of that type was raised";
    return "";
}

}  // namespace CoordinateTransformation
