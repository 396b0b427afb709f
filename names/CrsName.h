#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "CoordinateTransformation/NameExplanation.h"

// Every spelling of a CRS: how it is read, how it is written, under which names a configured CRS is found, and why a
// text is no name. Texts and codes alone; what they stand for is the creator's business.
namespace CoordinateTransformation {

// WGS 84 in two and in three dimensions: one CRS for the library.
constexpr unsigned int EPSG_WGS84_2D = 4326;
constexpr unsigned int EPSG_WGS84_3D = 4979;

// The host of OGC's http CRS URIs, read and written alike (OGC 09-048).
constexpr char OGC_DEFINITIONS_HOST[] = "www.opengis.net";

// The codes of a CRS; the second is 0 for a CRS that is not compound.
struct CodePair {
    unsigned int primary = 0;
    unsigned int secondary = 0;
};

// A code as it stands in a name: not converted, trimmed or folded.
struct CodeText {
    std::string text;
    std::size_t position = 0;
};

struct NameTexts {
    CodeText first;
    std::optional<CodeText> second;
    // Those of both components, joined without a separator.
    std::string version;
};

struct NameFault {
    NameExplanation::Fault kind = NameExplanation::Fault::UNKNOWN_SPELLING;
    // What is wrong, to stand behind the description of the syntax.
    const char* reason = "";
    std::size_t position = 0;
    // The second code would begin beyond the end of the name, for which callers expect std::out_of_range.
    bool beyondTheEnd = false;
};

using ParsedName = std::variant<NameTexts, NameFault>;

enum class Spelling { OGC_URN, OGC_URL, GML_REFERENCE, EPSG_CODE, WFS_1_1_URN, SAFE_CURIE };

// One way to spell a name. What is written for codes that the syntax has room for is read as these codes.
struct NameSyntax {
    Spelling spelling;
    const char* description;
    const char* example;
    ParsedName (*parse)(const std::string& name);
    std::string (*write)(const CodePair& codes);
    // Whether a code that is none decides too: the name is then a bad one, rather than one in another spelling.
    bool badCodeDecides = false;
    // The configuration property that must be "true", or null for a syntax that is always accepted.
    const char* property = nullptr;
};

// In the order of recognition: the first that reads a name decides.
extern const std::array<NameSyntax, 6> NAME_SYNTAXES;

ParsedName parseOgcUrn(const std::string& name);
ParsedName parseOgcUrl(const std::string& name);
// The position after "urn:ogc:" or "urn:x-ogc:".
std::optional<std::size_t> skipOgcUrnHead(const std::string& name);
// The position after "http:", any number of "/", the OGC definitions host and "/".
std::optional<std::size_t> skipOgcUrlHead(const std::string& name);
// What follows either head.
ParsedName parseOgcBody(const std::string& name, std::size_t startPos);

ParsedName parseGmlReference(const std::string& name);
ParsedName parseEpsgName(const std::string& name);
ParsedName parseWfs11Urn(const std::string& name);
ParsedName parseSafeCurie(const std::string& name);

// An empty version stays empty in a URN and is 0 in a URL.
std::string writeOgcUrn(const CodePair& codes, const std::string& version);
std::string writeOgcUrl(const CodePair& codes, const std::string& version);
// Each code behind `prefix`, joined by ",".
std::string writePrefixed(const CodePair& codes, const std::string& prefix);
// "27700*5701", the key of the code cache.
std::string writeCodeKey(const CodePair& codes);
// The same with "EPSG:" before each code.
std::string writeEpsgName(const CodePair& codes);
std::string writeGmlReference(const CodePair& codes);
std::string writeWfs11Urn(const CodePair& codes);
std::string writeSafeCurie(const CodePair& codes);

// Throws QSHelpers::ConversionError.
unsigned int readCode(const std::string& text);

// What `name` is. `isAccepted` says whether the configuration has the property of a syntax.
NameExplanation explainName(const std::string& name, const std::function<bool(const char* property)>& isAccepted);

// A configured CRS is found under what it calls itself, under names of its codes alone, and under URNs of two kinds,
// with a version and without, each in two spellings.
std::vector<std::string> registeredCodeNames(const CodePair& codes);
struct RegisteredUrns {
    std::string name;
    std::string alternative;
};
constexpr std::size_t REGISTERED_URN_KINDS = 2;
std::array<RegisteredUrns, REGISTERED_URN_KINDS> registeredUrns(const CodePair& codes);
// All of them, in the order in which they are registered; `ownNames` are what the CRS calls itself.
std::vector<std::string> registeredNames(const CodePair& codes, const std::vector<std::string>& ownNames);

}  // namespace CoordinateTransformation
