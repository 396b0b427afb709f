#include "tools/crsctl/text/Json.h"

namespace crsctl {
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
