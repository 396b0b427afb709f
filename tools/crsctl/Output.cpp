#include "tools/crsctl/Output.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

#include "tools/common/Process.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

using Tools::writeAll;
using Tools::WriteOutcome;

namespace {

constexpr int INDENT = 2;

std::string dumped(const Json& value, int indent) {
    return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}

bool isUtf8(const Json& value) {
    try {
        value.dump();
        return true;
    } catch (const Json::type_error&) {
        return false;
    }
}

void noteReplacement(Json& object) {
    if (!isUtf8(object)) object[BYTES_REPLACED] = true;
}

}  // namespace

int report(const std::string& commandName, const CommandResult& result) {
    const WriteOutcome outcome = writeAll(STDOUT_FILENO, result.output);
    if (outcome == WriteOutcome::FAILED) throw SetUpError(std::string("standard output: ") + std::strerror(errno));
    for (const std::string& note : result.notes) printError(commandName, note);
    return outcome == WriteOutcome::PIPE_CLOSED ? EXIT_REFUSED : result.exitCode;
}

void printError(const std::string& commandName, const std::string& text) {
    writeAll(STDERR_FILENO, commandName + ": " + text + "\n");
}

std::string serialised(Json document) {
    if (document.is_array())
        for (Json& object : document) noteReplacement(object);
    else
        noteReplacement(document);
    return dumped(document, INDENT) + "\n";
}

std::string serialisedInLine(Json object) {
    noteReplacement(object);
    return dumped(object, -1);
}

std::string quotedJson(std::string_view text, bool& replaced) {
    const Json value = std::string(text);
    try {
        return value.dump();
    } catch (const Json::type_error&) {
        replaced = true;
        return dumped(value, -1);
    }
}

}  // namespace crsctl
