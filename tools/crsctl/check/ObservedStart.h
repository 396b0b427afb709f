#pragma once

#include <memory>
#include <string>
#include <vector>

#include "CoordinateTransformation/Crs.h"
#include "CoordinateTransformation/CrsConfig.h"
#include "CoordinateTransformation/CrsConfigData.h"

namespace crsctl {

// What became of one entry at the start.
struct EntryOutcome {
    // The CRS that the entry registers; empty when the start fails for it.
    CoordinateTransformation::Crs crs{CoordinateTransformation::NullConstruction()};
    // What the start fails for at this entry; empty when it does not.
    std::string failure;
};

// Starts the library with the entries, and again without those for which it fails, so that every failure is seen and
// not only the first. Entries are seen in their order, with the names that earlier ones have claimed.
class ObservedStart {
public:
    // SetUpError when the library does not start without any entry.
    ObservedStart(const std::vector<CoordinateTransformation::CrsConfigData>& configured, const std::string& projDir);

    const EntryOutcome& outcome(std::size_t entry) const { return outcomes[entry]; }

private:
    class Recorder;

    void findFailures(const CoordinateTransformation::CrsCreator& creator);
    bool startWithoutFailures();
    std::vector<std::size_t> entriesToStartWith() const;

    const std::vector<CoordinateTransformation::CrsConfigData>& entries;
    // Its creator made the CRS that the outcomes hold, which therefore go first.
    std::unique_ptr<CoordinateTransformation::CrsConfig> lastConfig;
    std::vector<EntryOutcome> outcomes;
};

}  // namespace crsctl
