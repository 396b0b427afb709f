#pragma once

#include <istream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/projdir/Registry.h"

namespace ProjDir {

// A list of codes that cannot be used; what() names file, line and code.
class CodeListError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// One code of a list, with its place for messages.
struct ListedCode {
    unsigned int code = 0;
    std::string place;
};

// Reads one code a line, with or without "EPSG:" before it. Blank lines, blanks around the code and "#" up to the
// end of the line do not count. `name` is the file's, for messages.
std::vector<ListedCode> readCodeList(std::istream& lines, const std::string& name);

// The codes that a configuration fragment names, read as the library reads it; of a compound its first part. `name` is
// the file's, for messages.
std::vector<ListedCode> readConfigurationCodes(const std::string& fragment, const std::string& name);

// The CRS of the registry that the list names, in the registry's order. CodeListError for a code that the registry
// does not have, and for a deprecated one unless they are admitted.
std::vector<RegistryCrs> selectListed(const std::vector<RegistryCrs>& registry, const std::vector<ListedCode>& codes,
                                      bool includeDeprecated);

// Those whose area of use has a part in common with `area`.
std::vector<RegistryCrs> selectOverlapping(const std::vector<RegistryCrs>& list, const Area& area);

// Those that both lists have, in their order. REQUIRES: both in code order.
std::vector<RegistryCrs> selectCommon(const std::vector<RegistryCrs>& left, const std::vector<RegistryCrs>& right);

// Every CRS of the registry, the deprecated ones only if they are admitted.
std::vector<RegistryCrs> selectAll(const std::vector<RegistryCrs>& registry, bool includeDeprecated);

}  // namespace ProjDir
