#pragma once

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace crsctl {

// Keeps its keys in the order in which they are written.
using Json = nlohmann::ordered_json;

// The member, true, of an object with texts of whose bytes some are not UTF-8. They are written as U+FFFD.
constexpr char BYTES_REPLACED[] = "bytesReplaced";

// The object, or the array of objects, indented, with a line end. Each object says where bytes were replaced.
std::string serialised(Json document);

// The object within one line.
std::string serialisedInLine(Json object);

// The text as a value. `replaced` becomes true when bytes were.
std::string quotedJson(std::string_view text, bool& replaced);

}  // namespace crsctl
