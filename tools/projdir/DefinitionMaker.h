#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/projdir/CrsDescription.h"
#include "tools/projdir/Registry.h"
#include "tools/projdir/ShiftChoice.h"
#include "tools/projdir/Survey.h"

namespace ProjDir {

// One entry of the "epsg" file.
struct ClassicDefinition {
    std::string text;
    bool isNorthFirst = false;
    ShiftChoice shift;
    // In part of the area, or all over it, PROJ knows no operation.
    bool hasUnknownPart = false;
    // At how many points of the survey the shift is farther off than the worst that is allowed.
    std::size_t farPoints = 0;
};

// What became of one CRS of the registry.
struct CrsOutcome {
    RegistryCrs crs;
    CrsDescription description;
    std::optional<ClassicDefinition> definition;
    // Why there is no definition.
    std::string omission;
    // What PROJ uses in the area, most used first: with the grids that are installed where there are check points, else
    // without grids.
    std::vector<OperationShare> shares;
    std::vector<CheckPoint> checkPoints;
    // In metres, as the registry states it for the operations of the shift; nothing where it states none.
    std::optional<double> shiftAccuracy;
    // In metres from PROJ's best operation without grids; nothing where PROJ knows no operation.
    std::optional<double> largestDistance;
};

struct DefinitionOptions {
    bool useGrids = false;
    bool withCheckPoints = false;
    bool fit = false;
    // In metres: a CRS whose shift is farther off at more than a tenth of the points is left out.
    double worst = 100;
};

// Makes definitions out of the registry. What it makes depends on PROJ's version, its database and the options, not on
// the grids that are installed; check points and shares, where they are wanted, do.
//
// One thread at a time; each thread has its own. What it makes of a CRS does not depend on what it made before; CRS on
// one geodetic CRS in a row are made faster.
class DefinitionMaker {
public:
    explicit DefinitionMaker(const DefinitionOptions& definitionOptions);

    // RegistryError when PROJ fails over its database: what it makes then is not what the registry holds.
    CrsOutcome make(const RegistryCrs& crs);

private:
    // What all CRS on a geodetic CRS share.
    struct Base {
        unsigned int code;
        ProjPtr<PJ> crs;
        Reference reference;
        std::optional<Reference> withGrids;
        std::optional<std::vector<PublishedShift>> published;
    };

    void define(const RegistryCrs& crs, CrsOutcome& outcome);
    void defineCompound(const RegistryCrs& crs, CrsOutcome& outcome);
    Base& baseOf(const RegistryCrs& crs);
    ShiftChoice chooseShiftOf(const Survey& survey, Base& geodetic, const ShiftEvidence& surveyed);
    const std::vector<PublishedShift>& publishedShiftsOf(Base& geodetic);
    void requireCloseShift(const ShiftChoice& shift, const ShiftEvidence& evidence,
                           ClassicDefinition& definition) const;
    CrsDescription describe(const RegistryCrs& crs) const;

    DefinitionOptions options;
    ProjContext context;
    std::optional<ProjContext> installed;
    std::unique_ptr<Base> base;
};

}  // namespace ProjDir
