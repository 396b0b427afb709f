#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "CoordinateTransformation/NameExplanation.h"

// All spellings of a CRS: how each is read and written, the names under which a configured CRS is registered, and why a
// text is not a name. Only texts and codes; the creator knows the CRS.
namespace CoordinateTransformation {

// WGS 84 in two and in three dimensions: one CRS for the library.
constexpr unsigned int EPSG_WGS84_2D = 4326;
constexpr unsigned int EPSG_WGS84_3D = 4979;

// The host in OGC's http CRS URIs, for reading and writing (OGC 09-048).
constexpr char OGC_DEFINITIONS_HOST[] = "www.opengis.net";

// The codes of a CRS; the second is 0 if the CRS is not compound.
struct CodePair {
    unsigned int primary = 0;
    unsigned int secondary = 0;
};

// A code exactly as in the name, before any conversion or trimming.
struct CodeText {
    std::string text;
    std::size_t position = 0;
};

struct NameTexts {
    CodeText first;
    std::optional<CodeText> second;
    // The versions of both components, joined without a separator.
    std::string version;
};

struct NameFault {
    NameExplanation::Fault kind = NameExplanation::Fault::UNKNOWN_SPELLING;
    // The fault, as a text to follow the description of the syntax.
    const char* reason = "";
    std::size_t position = 0;
    // The second code would begin after the end of the name; callers expect std::out_of_range.
    bool isBeyondEnd = false;
};

using ParsedName = std::variant<NameTexts, NameFault>;

enum class Spelling { OGC_URN, OGC_URL, GML_REFERENCE, EPSG_CODE, WFS_1_1_URN, SAFE_CURIE };

// One syntax of names. If the syntax has room for the codes, its reader gives back the codes that were written.
struct NameSyntax {
    Spelling spelling;
    const char* description;
    const char* example;
    ParsedName (*parse)(const std::string& name);
    std::string (*write)(const CodePair& codes);
    // Whether a name whose code is not a number is refused at once, without trying the other syntaxes.
    bool failsOnBadCode = false;
    // The configuration property that must be "true", or null if the syntax is always accepted.
    const char* property = nullptr;
};

// The configuration property that chooses the axis order of names, and its values. An empty value means REGISTRY_ORDER.
constexpr char AXIS_ORDER_PROPERTY[] = "AxisOrderConvention";
constexpr char REGISTRY_ORDER[] = "registry";
constexpr char ESTABLISHED_ORDER[] = "established";

// Returns whether ESTABLISHED_ORDER puts easting or longitude first under `name`, which the syntax of `spelling` reads.
bool isEastNorthIfEstablished(Spelling spelling, const std::string& name);
// Does the same for any text. Returns false for a text that is not a name.
bool isEastNorthIfEstablished(const std::string& name);

// In the order of recognition: the first syntax that reads a name decides.
extern const std::array<NameSyntax, 6> NAME_SYNTAXES;

ParsedName parseOgcUrn(const std::string& name);
ParsedName parseOgcUrl(const std::string& name);
// The position after "urn:ogc:" or "urn:x-ogc:".
std::optional<std::size_t> skipOgcUrnHead(const std::string& name);
// The position after "http:", any number of "/", the OGC definitions host and "/".
std::optional<std::size_t> skipOgcUrlHead(const std::string& name);
// Reads the rest of the name after either head.
ParsedName parseOgcBody(const std::string& name, std::size_t startPos);

ParsedName parseGmlReference(const std::string& name);
ParsedName parseEpsgName(const std::string& name);
ParsedName parseWfs11Urn(const std::string& name);
ParsedName parseSafeCurie(const std::string& name);

// An empty version stays empty in a URN and becomes 0 in a URL.
std::string writeOgcUrn(const CodePair& codes, const std::string& version);
std::string writeOgcUrl(const CodePair& codes, const std::string& version);
// Writes `prefix` and the code for each component, joined by ",".
std::string writePrefixed(const CodePair& codes, const std::string& prefix);
// "27700*5701", the key of the code cache.
std::string writeCodeKey(const CodePair& codes);
// "EPSG:27700*EPSG:5701".
std::string writeEpsgName(const CodePair& codes);
std::string writeGmlReference(const CodePair& codes);
std::string writeWfs11Urn(const CodePair& codes);
std::string writeSafeCurie(const CodePair& codes);

// Throws QSHelpers::ConversionError.
unsigned int readCode(const std::string& text);

// Explains `name`. `isAccepted` returns whether the configuration sets the property of a syntax.
NameExplanation explainName(const std::string& name, const std::function<bool(const char* property)>& isAccepted);

// The names under which a configured CRS is registered: its own, those made of its codes, and URNs of two kinds, with
// and without a version, each in two spellings.
std::vector<std::string> registeredCodeNames(const CodePair& codes);
struct RegisteredUrns {
    std::string name;
    std::string alternative;
};
constexpr std::size_t REGISTERED_URN_KINDS = 2;
std::array<RegisteredUrns, REGISTERED_URN_KINDS> registeredUrns(const CodePair& codes);

}  // namespace CoordinateTransformation
