#pragma once

#include <string>

#include "tools/crsctl/names/NameReport.h"
#include "tools/crsctl/text/Json.h"

namespace crsctl {

// The report as text: the name, then a line for each finding.
std::string asText(const NameReport& report);

Json asJson(const NameReport& report);

// "25832" or "25832 and 5783".
std::string codesInWords(unsigned int primary, unsigned int secondary);

// null for a secondary code of 0.
Json secondaryCodeAsJson(unsigned int secondary);

// That a name is refused, in one line, where the report itself says the rest.
std::string refusalNote(const NameReport& report);

// Why a name is refused, in one line: service exception code, the library's text and what would help.
std::string refusalInOneLine(const NameReport& report);

}  // namespace crsctl
