#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "proj/classic/ProjHandles.h"
#include "tools/projdir/Geodesy.h"

namespace ProjDir {

using ClassicProj::ProjPtr;

enum class GridUse { NONE, INSTALLED };

// A PROJ context without network access. It keeps PROJ's messages instead of printing them.
//
// Without grids it finds the database and no other file, neither grids nor a proj.ini. The results of PROJ then depend
// on its version and its database alone.
//
// One thread at a time. Owns the context, which must outlive every object made with it. std::bad_alloc when PROJ has no
// memory for one.
class ProjContext {
public:
    explicit ProjContext(GridUse grids = GridUse::INSTALLED);
    ProjContext(const ProjContext&) = delete;
    ProjContext& operator=(const ProjContext&) = delete;

    PJ_CONTEXT* get() const { return context.get(); }
    // Opens the database by a path that no other context uses. Contexts that use the same path share one handle, and
    // their threads wait for one another.
    void openDatabaseUnshared() const;
    // Returns PROJ's last message and forgets it.
    std::string takeMessage();
    // PROJ's message when it first failed to read its database; empty while there was no failure.
    const std::string& databaseFailure() const { return failure; }

private:
    static void keepMessage(void* self, int level, const char* text);

    std::string message;
    std::string failure;
    ProjPtr<PJ_CONTEXT> context;
};

// PROJ returns null for some texts.
inline std::string textOrEmpty(const char* text) { return text == nullptr ? std::string() : std::string(text); }

enum class CrsKind { GEOGRAPHIC, GEOCENTRIC, PROJECTED, VERTICAL, COMPOUND, OTHER };

// "geographic", "projected" and so on.
const char* nameOfKind(CrsKind kind);

// Whether a CRS of the kind can have a classic definition of its own.
bool isHorizontal(CrsKind kind);

// A geodetic datum or a datum ensemble. Both texts are empty where the registry has no datum.
struct Datum {
    std::string id;  // "EPSG:6258"
    std::string name;
};

// A CRS as the registry lists it.
struct RegistryCrs {
    unsigned int code = 0;
    std::string name;
    CrsKind kind = CrsKind::OTHER;
    bool isDeprecated = false;
    std::optional<Area> area;
    // The area of use in words.
    std::string areaName;
    // Of datums that differ by the prime meridian alone, the one on Greenwich.
    Datum datum;
    // The base CRS of a projected one, the CRS itself if it is geodetic, the geodetic CRS of the horizontal part of a
    // compound one; else 0.
    unsigned int geodeticCode = 0;
    // The horizontal part of a compound CRS; else null.
    std::shared_ptr<const RegistryCrs> horizontal;

    const RegistryCrs& horizontalPart() const { return horizontal == nullptr ? *this : *horizontal; }
};

// PROJ has no usable database, or a damaged one.
class RegistryError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The version of the registry that PROJ has installed.
struct RegistryVersion {
    std::string dataset;
    std::string date;
    std::string proj;
};

RegistryVersion readRegistryVersion(const ProjContext& context);

// "EPSG Geodetic Parameter Dataset v10.076 of 2022-08-31, from the database of PROJ 9.1.1".
std::string describe(const RegistryVersion& version);

// "EPSG:4326".
std::string nameOfCode(unsigned int code);

// Every CRS of the authority EPSG, in code order. RegistryError when the database has a damaged page or PROJ's lists
// contradict each other.
std::vector<RegistryCrs> readRegistry(const ProjContext& context);

// The number that the whole text is; nothing for any other text.
std::optional<unsigned int> readCode(const std::string& text);

// The CRS of the code. RegistryError when PROJ cannot make it.
ProjPtr<PJ> createCrs(const ProjContext& context, unsigned int code);

// RegistryError, with PROJ's message, when PROJ has failed to read its database since the context was made. PROJ itself
// continues with incomplete data. `place` is for the message.
void requireSoundDatabase(const ProjContext& context, const std::string& place);

// An axis of a CRS. The unit is in metres or radians; a CRS without axes has empty texts and 0.
struct Axis {
    std::string name;
    std::string direction;
    std::string unit;
    double unitLength = 0;
};

Axis readAxis(const ProjContext& context, const PJ* crs, int index = 0);

// The objects of a list of PROJ, which is released; none if it is null.
std::vector<ProjPtr<PJ>> listObjects(const ProjContext& context, PJ_OBJ_LIST* objects);

// The result of an operation; not finite where PROJ has none.
Coordinates transform(const ProjPtr<PJ>& operation, PJ_DIRECTION direction, const Coordinates& point);

// The codes of the CRS that replace a deprecated one.
std::vector<unsigned int> findReplacements(const ProjContext& context, const PJ* crs);

// The text with blanks in place of control characters. Names and reasons come out of the database and may hold any
// character; this keeps them from ending a line or a comment, or moving a terminal's cursor.
std::string toOneLine(std::string text);

// The text as one line, with its end.
std::string writeLine(const std::string& text);

}  // namespace ProjDir
