#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/projdir/Area.h"
#include "tools/projdir/ProjContext.h"

namespace ProjDir {

enum class CrsKind { GEOGRAPHIC, GEOCENTRIC, PROJECTED, VERTICAL, COMPOUND, OTHER };

// A geodetic datum or an ensemble of such: "EPSG:6258". Both are empty where the registry names none.
struct Datum {
    std::string id;
    std::string name;
};

// A CRS as the registry lists it.
struct RegistryCrs {
    unsigned int code = 0;
    std::string name;
    CrsKind kind = CrsKind::OTHER;
    bool isDeprecated = false;
    std::optional<Area> area;
    std::string areaName;
    // Datums that differ by the prime meridian alone count as the one on Greenwich.
    Datum datum;
    // The geodetic CRS that a projected one is based on; its own for a geodetic one, that of its horizontal part for a
    // compound one; else 0.
    unsigned int geodeticCode = 0;
    // Of a compound CRS; else null.
    std::shared_ptr<const RegistryCrs> horizontal;
};

// Which registry PROJ has installed.
struct RegistryVersion {
    std::string dataset;
    std::string date;
    std::string proj;
};

// "EPSG Geodetic Parameter Dataset v10.076 of 2022-08-31, from the database of PROJ 9.1.1".
std::string describe(const RegistryVersion& version);

// PROJ has no database that it can use, or one that is damaged.
class RegistryError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

RegistryVersion readRegistryVersion(const ProjContext& context);

// Every CRS of the authority EPSG, in code order. RegistryError when the
// database has a damaged page or PROJ's lists of them differ.
std::vector<RegistryCrs> readRegistry(const ProjContext& context);

// The number of a code; 0 for a code that is none.
unsigned int readRegistryCode(const std::string& text);

// A long message by its two ends.
std::string abridge(const std::string& message);

// "geographic", "projected" and so on.
const char* nameOfKind(CrsKind kind);

// The CRS of the code. RegistryError when PROJ cannot make it.
ProjPtr<PJ> createCrs(const ProjContext& context, unsigned int code);

// RegistryError, with what PROJ has said, when it has failed over its database since the context was made: PROJ then
// goes on with less than the registry holds. `place` says where, for the message.
void requireSoundDatabase(const ProjContext& context, const std::string& place);

}  // namespace ProjDir
