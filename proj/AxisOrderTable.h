#pragma once

#include <map>
#include <string>

namespace CoordinateTransformation {

// EPSG code to axis order, true for east-north. Filled once, on one thread, before any CRS is made; only read
// afterwards, by any number of threads.
//
// Made at first use: a host's static initialisers may run before those of a static library.
std::map<unsigned int, bool>& getAxisOrderTable();

// The same table under the name that it has once the library is loaded. Null before, so the library reads it
// through the function.
extern std::map<unsigned int, bool>& axisOrderTable;

// Whether PROJ has accepted the configuration directory. Once set, the directory is settled for the process.
extern bool searchPathSet;

// Fills the table from a file of lines "code;en" or "code;ne", unless it holds an entry already. Misconfigured,
// naming the file, for one that cannot be opened, for one that cannot be read to its end, of which nothing is kept,
// and, with the line, for the first malformed line; the rows before that line stay in force.
void loadAxisOrderTable(const std::string& path);

// Returns when `path` is a regular file, else raises QSHelpers::FileNotFoundException. Failures of the query
// itself are the filesystem library's.
void requireRegularFile(const std::string& path);

}  // namespace CoordinateTransformation
