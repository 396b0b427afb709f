#pragma once

#include <string>
#include <vector>

#include "CoordinateTransformation/AbstractCrs.h"
#include "tools/crsctl/text/Json.h"

namespace crsctl {

class Session;

// The key by which CRS are told apart: "4326", "31467*5783".
std::string codeKeyOf(const CoordinateTransformation::AbstractCrs& crs);

// Every name but an alias under which a configuration registers `crs`, in the order in which it does. Empty for
// a CRS without a code.
std::vector<std::string> namesRegisteredFor(const CoordinateTransformation::AbstractCrs& crs);

// A name that the cache answers, with the axis order of its answer.
struct RegisteredName {
    std::string name;
    std::string axisOrder;
};

struct NamesOfCrs {
    std::string codeKey;
    std::string kind;  // "geographic" or "projected"
    std::vector<RegisteredName> names;
};

// Every name that the cache of the session answers, by CRS, in the order of the configuration.
std::vector<NamesOfCrs> registeredNames(const Session& session);

std::string asText(const std::vector<NamesOfCrs>& listed);
Json asJson(const std::vector<NamesOfCrs>& listed);

}  // namespace crsctl
