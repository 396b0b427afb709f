#pragma once

#include <string>

namespace crsctl {

// The syntax of a CRS name.
enum class Spelling { ConfiguredName, Urn, Url, GmlReference, EpsgCode, Wfs11Urn, None };

// The name of the spelling in messages ("OGC URN").
const char* wordsFor(Spelling spelling);

// What the recognisers of the library make of a name, before any CRS is made of it.
struct Recognition {
    Spelling spelling = Spelling::None;  // never ConfiguredName: that is for the configuration to say
    unsigned int primary = 0;
    unsigned int secondary = 0;
    // The name has the head of that spelling, but what stands where the code should be is none.
    bool badCode = false;
};

Recognition recognise(const std::string& name);

}  // namespace crsctl
