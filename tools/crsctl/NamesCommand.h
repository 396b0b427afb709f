#pragma once

#include <string>
#include <vector>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/CrsConfig.h"
#include "tools/crsctl/Output.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

// Returns the codes of a CRS: "4326", "31467*5783".
std::string codeKeyOf(const CoordinateTransformation::AbstractCrs& crs);

// A registered name and the axis order of its CRS.
struct RegisteredName {
    std::string name;
    const char* axisOrder;
};

inline void to_json(Json& json, const RegisteredName& name) {
    json = {{"name", name.name}, {"axisOrder", name.axisOrder}};
}

struct NamesOfCrs {
    std::string codeKey;
    const char* kind;  // "geographic" or "projected"
    std::vector<RegisteredName> names;
};

// Returns every name that the configuration registers, by CRS, in the order of registration.
std::vector<NamesOfCrs> registeredNames(const CoordinateTransformation::CrsConfig& config);

CommandResult namesCommand(const CommonOptions& common);

std::string asText(const std::vector<NamesOfCrs>& listed);
Json asJson(const std::vector<NamesOfCrs>& listed);

}  // namespace crsctl
