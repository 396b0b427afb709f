#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

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
};

// What became of one CRS of the registry.
struct CrsOutcome {
    RegistryCrs crs;
    std::optional<ClassicDefinition> definition;
    // Why there is no definition.
    std::string omission;
    // Most used first.
    std::vector<OperationShare> shares;
    std::vector<CheckPoint> checkPoints;
};

struct DefinitionOptions {
    bool useGrids = false;
    bool withCheckPoints = false;
};

// Makes definitions out of the registry.
//
// One thread at a time; each thread has its own. What it makes of a CRS does not depend on what it made before.
class DefinitionMaker {
public:
    explicit DefinitionMaker(const DefinitionOptions& definitionOptions);

    // RegistryError when PROJ fails over its database: what it makes then is not what the registry holds.
    CrsOutcome make(const RegistryCrs& crs);

private:
    void define(CrsOutcome& outcome);
    ShiftChoice chooseShiftOf(const Survey& survey);
    const std::vector<PublishedShift>& publishedShiftsOf(const PJ* crs);

    DefinitionOptions options;
    ProjContext context;
    // By the code of the geodetic CRS; as many projected CRS share one.
    std::map<std::string, std::vector<PublishedShift>> shiftCache;
};

}  // namespace ProjDir
