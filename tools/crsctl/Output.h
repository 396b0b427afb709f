#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace crsctl {

// What a command writes, and the exit code of the program.
struct CommandResult {
    std::string output;
    int exitCode = 0;
    std::vector<std::string> notes;  // lines for standard error
};

// Writes the output and the notes, and returns the exit code. SetUpError if standard output cannot be written.
int report(const std::string& commandName, const CommandResult& result);

// Writes one line to standard error: "crsctl resolve: text".
void printError(const std::string& commandName, const std::string& text);

// Keeps its keys in the order in which they are written.
using Json = nlohmann::ordered_json;

// The key whose value is true in an object with a text that is not UTF-8. Bytes that are not UTF-8 are written as
// U+FFFD.
constexpr char BYTES_REPLACED[] = "bytesReplaced";

// The object, or the array of objects, in indented lines. Adds BYTES_REPLACED to each object that needs it.
std::string serialised(Json document);

// The object in one line, without a line end.
std::string serialisedInLine(Json object);

// The text as a JSON string. Sets `replaced` if bytes of the text are not UTF-8.
std::string quotedJson(std::string_view text, bool& replaced);

}  // namespace crsctl
