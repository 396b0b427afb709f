#pragma once

#include <map>
#include <string>

namespace CoordinateTransformation {

// EPSG code to axis order, true for east-north. One thread fills it once, before any CRS is made. Afterwards any number
// of threads may read it.
//
// Made at first use, because a host's static initialisers may run before those of a static library.
std::map<unsigned int, bool>& getAxisOrderTable();

// The same table, as a variable. It is null until the library is loaded, so the library itself calls the function.
extern std::map<unsigned int, bool>& axisOrderTable;

// Whether PROJ has accepted the configuration directory. If so, the directory is settled for the process.
extern bool searchPathSet;

// Fills the table from a file of lines "code;en" or "code;ne", unless it already has entries. Throws Misconfigured,
// naming the file, if the file cannot be opened or cannot be read to its end; then no row is kept. Throws
// Misconfigured, naming also the line, at the first malformed line; then the rows before that line are kept.
void loadAxisOrderTable(const std::string& path);

// Throws QSHelpers::FileNotFoundException unless `path` is a regular file. Failures of the query itself are those of
// the filesystem library.
void requireRegularFile(const std::string& path);

}  // namespace CoordinateTransformation
