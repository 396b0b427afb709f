#pragma once

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/projdir/Area.h"

namespace ProjDir {

// A PROJ directory that cannot be read; what() names the file.
class DirectoryError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// What a PROJ directory has for one code.
struct DirectoryEntry {
    std::string definition;
    // "en" or "ne"; empty where the table has no line for it.
    std::string axisOrder;
};

// The entries of a PROJ directory by their codes.
struct DirectoryContent {
    std::string path;
    // The first comment of the definitions, which names their registry; may be empty.
    std::string head;
    std::map<unsigned int, DirectoryEntry> entries;
};

// Reads the files "epsg" and "epsg-axisorder.csv" as the library does. Codes that are not numbers do not count.
// DirectoryError when one of them cannot be read.
DirectoryContent readDirectory(const std::string& path);

// What is known of codes beside their entries.
struct KnownCrs {
    std::string name;
    std::optional<Area> area;
};

// The names and areas of "epsg-info.csv" in the directory; where it lacks some of `codes`, those of the installed
// registry. DirectoryError for a file that cannot be read; RegistryError for a registry that is needed and cannot.
std::map<unsigned int, KnownCrs> describeCodes(const std::string& directory, const std::vector<unsigned int>& codes);

// A code that both directories have, with different entries.
struct EntryChange {
    unsigned int code = 0;
    DirectoryEntry before;
    DirectoryEntry after;
    // The largest horizontal distance in metres, over the area of use, between where the two definitions have the same
    // coordinates; infinite where one of them has no place for some. Nothing where no area is known.
    std::optional<double> distance;
    // Why a definition does not serve; empty while both do.
    std::string failure;
};

struct DirectoryDiff {
    std::vector<unsigned int> added;
    std::vector<unsigned int> gone;
    // The farthest first; those without a distance before them.
    std::vector<EntryChange> changed;
    std::size_t same = 0;

    bool isEmpty() const { return added.empty() && gone.empty() && changed.empty(); }
};

// Definitions with the same parameters in another order are the same. Distances are not measured yet.
DirectoryDiff compareEntries(const DirectoryContent& before, const DirectoryContent& after);

// Measures the distances of what has changed, with the library's classic interface and without the axis orders.
void measureChanges(DirectoryDiff& diff, const std::map<unsigned int, KnownCrs>& known);

}  // namespace ProjDir
