#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace crsctl {

// The greatest length of a text of the user or of the library in a table or message.
constexpr std::size_t MAX_TEXT_LENGTH = 1000;

// The output of a command and the exit code of the program.
struct CommandResult {
    std::string output;
    int exitCode = 0;
    std::vector<std::string> notes;  // lines for standard error
};

// Writes the output and the notes. Returns the exit code. Throws SetUpError if standard output cannot be written.
int report(const std::string& commandName, const CommandResult& result);

// Writes one line to standard error: "crsctl resolve: text".
void printError(const std::string& commandName, const std::string& text);

// Keeps the keys in the order of their insertion.
using Json = nlohmann::ordered_json;

// Returns null in place of nothing, of 0 and of an empty text.
template <typename Value>
Json orNull(const Value& value) {
    return value == Value() ? Json() : Json(value);
}
template <typename Value>
Json orNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json();
}

// An object has this key, with the value true, if one of its texts is not UTF-8. Bytes that are not UTF-8 are written
// as U+FFFD.
constexpr char BYTES_REPLACED[] = "bytesReplaced";

// Returns the object, or the array of objects, in indented lines. Adds BYTES_REPLACED to each object that needs it.
std::string serialised(Json document);

// Returns the object in one line, without a line end. Adds BYTES_REPLACED if the object needs it.
std::string serialisedInLine(Json object);

// Returns the text as a JSON string. Sets `replaced` if bytes of the text are not UTF-8.
std::string quotedJson(std::string_view text, bool& replaced);

}  // namespace crsctl
