#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/projdir/Geodesy.h"

namespace ProjDir {

// The entry of a PROJ directory for one code.
struct DirectoryEntry {
    std::string definition;
    // "en" or "ne"; empty if the table has no line for the code.
    std::string axisOrder;
};

struct DirectoryContent {
    std::string path;
    // The first comment of the definitions, which names their registry; may be empty.
    std::string head;
    std::map<unsigned int, DirectoryEntry> entries;
};

// Reads the files "epsg" and "epsg-axisorder.csv" as the library does. Codes that are not numbers are skipped.
// FileError if one of the files cannot be read.
DirectoryContent readDirectory(const std::string& path);

// The name and the area of use of a CRS.
struct KnownCrs {
    std::string name;
    std::optional<Area> area;
};

// The names and areas in "epsg-info.csv" of the directory and, if it lacks some of `codes`, those of the installed
// registry. Misconfigured for a file that cannot be read; RegistryError for a registry that is needed and not usable.
std::map<unsigned int, KnownCrs> describeCodes(const std::string& directory, const std::vector<unsigned int>& codes);

// A code with different entries in the two directories.
struct EntryChange {
    unsigned int code = 0;
    DirectoryEntry before;
    DirectoryEntry after;
    // The largest horizontal distance in metres, over the area of use, between the places that the two definitions give
    // for the same coordinates. Infinite if one of them has no place for some; nothing if no area is known.
    std::optional<double> distance;
    // PROJ's reason for refusing a definition; empty if it accepts both.
    std::string failure;
};

struct DirectoryDiff {
    std::vector<unsigned int> added;
    std::vector<unsigned int> gone;
    // Those without a distance come first, then by decreasing distance.
    std::vector<EntryChange> changed;
    std::size_t same = 0;

    bool isEmpty() const { return added.empty() && gone.empty() && changed.empty(); }
    // All codes that differ.
    std::vector<unsigned int> codes() const;
};

// Compares the entries without measuring distances. The order of the parameters in a definition does not count.
DirectoryDiff compareEntries(const DirectoryContent& before, const DirectoryContent& after);

// Measures the distances of the changed entries with the library's classic interface. Axis orders are ignored.
void measureChanges(DirectoryDiff& diff, const std::map<unsigned int, KnownCrs>& known);

// The two directories of a difference and the names of their codes.
struct DiffSides {
    const DirectoryContent& before;
    const DirectoryContent& after;
    const std::map<unsigned int, KnownCrs>& known;
};

// Counts, and a line for each code; below a changed one, the parameters that were removed and added.
std::string writeDiffText(const DirectoryDiff& diff, const DiffSides& sides);

// An object with "old", "new", "added", "gone", "changed" and "same". A distance that is unknown or not finite is null.
std::string writeDiffJson(const DirectoryDiff& diff, const DiffSides& sides);

}  // namespace ProjDir
