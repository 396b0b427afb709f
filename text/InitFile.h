#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace CoordinateTransformation {

// The places of the PROJ directory: the configuration property, else the environment variable, else the built-in
// directory.
constexpr char PROJ_DIRECTORY_PROPERTY[] = "Proj4ConfigDir";
constexpr char PROJ_DIRECTORY_VARIABLE[] = "QUARVELSRV_PROJ4_CONF_DIR";
constexpr char BUILT_IN_PROJ_DIRECTORY[] = "/opt/quarvelserver/share/proj4";

// The files of the PROJ directory: definitions, axis orders and, optionally, descriptions, with one line for each code.
constexpr char INIT_FILE[] = "epsg";
constexpr char AXIS_ORDER_FILE[] = "epsg-axisorder.csv";
constexpr char DESCRIPTION_FILE[] = "epsg-info.csv";

// The columns of the descriptions, in their order.
constexpr std::array<const char*, 16> DESCRIPTION_COLUMNS = {
    "code",       "name",     "kind",         "area",           "west",
    "south",      "east",     "north",        "unit",           "unit_length",
    "datum",      "datum_id", "shift_source", "shift_accuracy", "largest_distance",
    "replaced_by"};

// A definition of an init file: its code, and its parameters without comments.
struct InitFileDefinition {
    std::string code;
    std::string text;
    std::size_t line;  // the line of the code, counted from 1
};

// The definitions in the text of an init file, in file order.
//
//   file       = { anything else | definition }
//   definition = "<" code ">" { text | comment } "<"
//   comment    = "#" up to the end of the line
//
// A code has neither white space nor "<". The "<" at the end of a definition begins the next one or "<>".
std::vector<InitFileDefinition> readInitFileText(const std::string& text);

// The index of an init file: code to definition text. The file is read once. It is read again when a code is missing
// and the size or time of the file has changed. A read that fails or breaks off does not change the index, and the next
// missing code causes another read.
//
// Not thread-safe.
class InitFile {
public:
    explicit InitFile(std::filesystem::path file);

    // The definition text of `code`, or nothing.
    std::optional<std::string> find(const std::string& code);

    // Reads the file if its size or time has changed since the last read. Returns whether it did.
    bool readIfChanged();

private:
    struct Stamp {
        std::uintmax_t size = 0;
        std::filesystem::file_time_type time;
        bool operator==(const Stamp& other) const { return size == other.size && time == other.time; }
    };

    std::optional<Stamp> stampOfFile() const;

    std::filesystem::path path;
    std::optional<Stamp> stampWhenRead;
    std::unordered_map<std::string, std::string> definitions;
};

// The definitions in the text of an init file, by code. Of two definitions with one code the first counts.
std::unordered_map<std::string, std::string> parseInitFile(const std::string& text);

}  // namespace CoordinateTransformation
