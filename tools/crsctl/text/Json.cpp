#include "tools/crsctl/text/Json.h"

namespace crsctl {

namespace {

constexpr int INDENT = 2;

std::string dumped(const Json& value, int indent) {
    return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string serialised(const Json& document) { return dumped(document, INDENT) + "\n"; }

std::string serialisedInLine(const Json& value) { return dumped(value, -1); }

}  // namespace crsctl
