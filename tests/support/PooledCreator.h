#pragma once

#include <map>
#include <memory>
#include <string>

#include "CoordinateTransformation/CrsNotConfigured.h"
#include "tests/support/FakeCrs.h"

// A creator whose pool the test fills.
class PooledCreator : public TestSupport::FakeCreator {
public:
    using FakeCreator::FakeCreator;

    // Adds a CRS to the pool under `name` and returns it. Tests may change it before they use the pool.
    TestSupport::FakeCrs& givenConfigured(const std::string& name, unsigned int primary, unsigned int secondary = 0) {
        auto& pooled = pool[name];
        pooled = std::make_unique<TestSupport::FakeCrs>(*this, transformer, primary, secondary, live);
        return *pooled;
    }

    const CoordinateTransformation::AbstractCrs* getFromNameCache(const std::string& name,
                                                                  bool throwIfMissing) const override {
        const auto found = pool.find(name);
        if (found != pool.end()) return found->second.get();
        if (throwIfMissing) throw CoordinateTransformation::CrsNotConfigured(name);
        return nullptr;
    }

private:
    std::map<std::string, std::unique_ptr<TestSupport::FakeCrs>> pool;
};
