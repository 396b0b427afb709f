// Extends the library's creator by a cache: the second request for a name that is not configured borrows the CRS that
// was made for the first.

#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "CoordinateTransformation/CoordinateTransformation.h"

using namespace CoordinateTransformation;

namespace {

// Safe to use from many threads. Owns the remembered CRS, so it must outlive every handle.
class RememberingCreator : public Proj4CrsCreator {
public:
    using Proj4CrsCreator::Proj4CrsCreator;

    const AbstractCrs* getFromNameCache(const std::string& name, bool throwIfMissing) const override {
        if (const AbstractCrs* const found = findRemembered(name)) return found;
        return Proj4CrsCreator::getFromNameCache(name, throwIfMissing);
    }

    // A remembered name is not checked again, so only CRS that the server offers are remembered.
    Crs createFromName(const std::string& name, bool throwOnFailure, bool checkAllowed) const override {
        Crs crs = Proj4CrsCreator::createFromName(name, throwOnFailure, checkAllowed);
        if (checkAllowed && crs.get() != nullptr && !crs.isHoldingConst()) remember(name, *crs.get());
        return crs;
    }

    std::size_t size() const {
        const std::lock_guard<std::mutex> guard(lock);
        return remembered.size();
    }

private:
    // Clients choose the names, so the cache needs a bound.
    static constexpr std::size_t MOST_NAMES = 1000;

    const AbstractCrs* findRemembered(const std::string& name) const {
        const std::lock_guard<std::mutex> guard(lock);
        const auto found = remembered.find(name);
        return found == remembered.end() ? nullptr : found->second.get();
    }

    void remember(const std::string& name, const AbstractCrs& crs) const {
        std::unique_ptr<const AbstractCrs> kept(crs.copy());
        const std::lock_guard<std::mutex> guard(lock);
        if (remembered.size() < MOST_NAMES) remembered.emplace(name, std::move(kept));
    }

    mutable std::mutex lock;
    mutable std::map<std::string, std::unique_ptr<const AbstractCrs>> remembered;
};

}  // namespace

int main(int argc, char** argv) {
    CrsConfig config;
    auto* const creator = new RememberingCreator(config);
    config.injectCreator(creator);                                      // the configuration owns it
    if (argc > 1) config.setConfigProperty("Proj4ConfigDir", argv[1]);  // or QUARVELSRV_PROJ4_CONF_DIR
    config.addCrsConfigData(CrsConfigData("EPSG:25832"));
    config.init();
    for (const char* name : {"EPSG:25832", "http://www.opengis.net/def/crs/EPSG/0/25832",
                             "http://www.opengis.net/def/crs/EPSG/0/25832", "EPSG:3395"}) {
        const Crs crs = config.getCreator().createFromName(name, false, true);
        const char* const origin = crs.isHoldingConst() ? "shared" : "made for this request";
        std::printf("%-45s %s; %zu remembered\n", name, crs.get() == nullptr ? "refused" : origin, creator->size());
    }
}
