#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/projdir/DatumShift.h"

namespace ProjDir {

// The number of points at which PROJ uses an operation.
struct OperationShare {
    Operation operation;
    std::size_t points = 0;
};

// A point for the verification of a finished definition.
struct CheckPoint {
    // In the registry's axis order and units.
    Coordinates crs{};
    LonLat wgs84;
    // Whether PROJ knows an operation here.
    bool isKnown = false;
};

// One entry of the "epsg" file.
struct ClassicDefinition {
    std::string text;
    bool isNorthFirst = false;
    ShiftChoice shift;
    // Whether PROJ knows no operation in some part of the area or in all of it.
    bool hasUnknownPart = false;
    // The number of survey points where the shift is farther off than the worst that is allowed.
    std::size_t farPoints = 0;
};

// The result for one CRS of the registry.
struct CrsOutcome {
    RegistryCrs crs;
    // The registry's name of the unit of the horizontal axes, and its length in metres or radians.
    std::string unit;
    double unitLength = 0;
    // The codes that replace a deprecated CRS.
    std::vector<unsigned int> replacedBy;
    std::optional<ClassicDefinition> definition;
    // The reason why there is no definition.
    std::string omission;
    // The operations of PROJ in the area, most used first: with the installed grids if there are check points, else
    // without grids.
    std::vector<OperationShare> shares;
    std::vector<CheckPoint> checkPoints;
    // In metres from PROJ's best operation without grids; nothing where PROJ knows no operation.
    std::optional<double> largestDistance;
};

struct DefinitionOptions {
    bool useGrids = false;
    // Whether there are check points.
    bool verify = false;
    bool fit = false;
    // In metres. A CRS whose shift is farther off at more than a tenth of the points has no definition.
    double worst = 100;
};

// Makes definitions from the registry. They depend on PROJ's version, its database and the options, not on the
// installed grids. Check points and their shares do depend on these.
//
// One thread at a time. The result for a CRS does not depend on earlier calls; consecutive CRS on one geodetic CRS are
// faster.
class DefinitionMaker {
public:
    explicit DefinitionMaker(const DefinitionOptions& definitionOptions);

    // RegistryError when PROJ fails to read its database, as its results are then incomplete.
    CrsOutcome make(const RegistryCrs& crs);

private:
    // The data that all CRS on one geodetic CRS share.
    struct Base {
        unsigned int code;
        ProjPtr<PJ> crs;
        Reference reference;
        std::optional<Reference> withGrids;
        std::optional<std::vector<Operation>> published;
    };
    class Survey;

    void describe(const RegistryCrs& crs, CrsOutcome& outcome) const;
    void define(const RegistryCrs& crs, CrsOutcome& outcome);
    Base& baseOf(const RegistryCrs& crs);
    ShiftChoice chooseShiftOf(const Survey& survey, Base& geodetic, ShiftEvidence evidence) const;

    DefinitionOptions options;
    ProjContext context;
    std::optional<ProjContext> installed;
    std::unique_ptr<Base> base;
};

// Makes every CRS of the list, in its order, on `threads` threads. The outcomes do not depend on the number of threads.
// Each thread calls `advance` after each CRS. REQUIRES: threads >= 1.
std::vector<CrsOutcome> makeAll(const std::vector<RegistryCrs>& list, const DefinitionOptions& options,
                                unsigned int threads, const std::function<void()>& advance);

}  // namespace ProjDir
