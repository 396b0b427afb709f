#include "names/CrsName.h"

#include <algorithm>

#include "QSHelpers/ConversionError.h"
#include "text/NumericText.h"

namespace CoordinateTransformation {
namespace {

using Fault = NameExplanation::Fault;
using QSHelpers::convertNumericToText;

constexpr char EPSG_PREFIX[] = "EPSG:";
constexpr std::size_t EPSG_PREFIX_LENGTH = sizeof(EPSG_PREFIX) - 1;
constexpr std::size_t LONGEST_BARE_NAME = 13;
constexpr char GML_DICTIONARY[] = "epsg.xml#";
constexpr std::size_t GML_DICTIONARY_LENGTH = sizeof(GML_DICTIONARY) - 1;
constexpr char WFS_1_1_HEAD[] = "urn:EPSG:geographicCRS:";
constexpr std::size_t WFS_1_1_HEAD_LENGTH = sizeof(WFS_1_1_HEAD) - 1;
constexpr char SAFE_CURIES_PROPERTY[] = "AcceptSafeCuries";

constexpr char NOT_A_CODE[] = "whose code is not a number from 0 to 4294967295";
constexpr char NO_SECOND_PREFIX[] = "whose second prefix is missing";
constexpr char TOO_LONG_WITHOUT_PREFIX[] = "that is too long without its prefix";
constexpr char NO_BRACKET[] = "without its closing bracket";
constexpr char NO_PREFIX[] = "whose authority is not EPSG";
constexpr char NOT_ACCEPTED[] = "that the configuration does not accept";

bool startsWith(const std::string& name, const char* head, std::size_t length) {
    return name.compare(0, length, head) == 0;
}

bool startsWithDigit(const std::string& name) { return !name.empty() && name.front() >= '0' && name.front() <= '9'; }

NameTexts singleCode(const std::string& name, std::size_t position) {
    return {{name.substr(position), position}, std::nullopt, ""};
}

}  // namespace

unsigned int readCode(const std::string& text) {
    return QSHelpers::convertTextToNumeric<unsigned int>(text, true, true);
}

// name = anything "epsg.xml#" code; the last "epsg.xml#" counts
ParsedName parseGmlReference(const std::string& name) {
    const std::size_t found = name.rfind(GML_DICTIONARY);
    if (found == std::string::npos) return NameFault();
    return singleCode(name, found + GML_DICTIONARY_LENGTH);
}

std::string writeGmlReference(const CodePair& codes) {
    return std::string("http://") + OGC_DEFINITIONS_HOST + "/gml/srs/" + GML_DICTIONARY +
           convertNumericToText(codes.primary);
}

// name = "EPSG:" code [ "*" five characters code ] | code [ "*" code ]
//
// The identifier of a compound CRS repeats the prefix in the place of the five characters, which are not checked.
ParsedName parseEpsgName(const std::string& name) {
    const bool prefixed = startsWith(name, EPSG_PREFIX, EPSG_PREFIX_LENGTH);
    if (!prefixed && name.size() > LONGEST_BARE_NAME)
        return startsWithDigit(name) ? NameFault{Fault::BAD_CODE, TOO_LONG_WITHOUT_PREFIX, LONGEST_BARE_NAME, false}
                                     : NameFault();
    const std::size_t prefixLength = prefixed ? EPSG_PREFIX_LENGTH : 0;
    const std::size_t star = name.find('*');
    if (star == std::string::npos) return singleCode(name, prefixLength);
    const std::size_t second = star + 1 + prefixLength;
    if (second > name.size()) return NameFault{Fault::BAD_CODE, NO_SECOND_PREFIX, star + 1, true};
    return NameTexts{
        {name.substr(prefixLength, star - prefixLength), prefixLength}, CodeText{name.substr(second), second}, ""};
}

std::string writePrefixed(const CodePair& codes, const std::string& prefix) {
    const std::string first = prefix + convertNumericToText(codes.primary);
    return codes.secondary == 0 ? first : first + "," + prefix + convertNumericToText(codes.secondary);
}

std::string writeCodeKey(const CodePair& codes) {
    const std::string first = convertNumericToText(codes.primary);
    return codes.secondary == 0 ? first : first + "*" + convertNumericToText(codes.secondary);
}

std::string writeEpsgName(const CodePair& codes) {
    const std::string first = EPSG_PREFIX + convertNumericToText(codes.primary);
    return codes.secondary == 0 ? first : first + "*" + EPSG_PREFIX + convertNumericToText(codes.secondary);
}

// name = "urn:EPSG:geographicCRS:" code
ParsedName parseWfs11Urn(const std::string& name) {
    if (!startsWith(name, WFS_1_1_HEAD, WFS_1_1_HEAD_LENGTH)) return NameFault();
    return singleCode(name, WFS_1_1_HEAD_LENGTH);
}

std::string writeWfs11Urn(const CodePair& codes) { return WFS_1_1_HEAD + writeCodeKey(codes); }

// name = "[EPSG:" code "]"
ParsedName parseSafeCurie(const std::string& name) {
    if (name.empty() || name.front() != '[') return NameFault();
    if (name.compare(1, EPSG_PREFIX_LENGTH, EPSG_PREFIX) != 0) return NameFault{Fault::BAD_SYNTAX, NO_PREFIX, 1, false};
    if (name.back() != ']') return NameFault{Fault::BAD_SYNTAX, NO_BRACKET, name.size(), false};
    return singleCode(name.substr(0, name.size() - 1), 1 + EPSG_PREFIX_LENGTH);
}

std::string writeSafeCurie(const CodePair& codes) {
    return std::string("[") + EPSG_PREFIX + convertNumericToText(codes.primary) + "]";
}

constexpr std::array<NameSyntax, 6> NAME_SYNTAXES = {{
    {Spelling::OGC_URN, "an OGC URN", "urn:ogc:def:crs:EPSG::4326", parseOgcUrn,
     [](const CodePair& codes) { return writeOgcUrn(codes, ""); }, true},
    {Spelling::OGC_URL, "an OGC http URL", "http://www.opengis.net/def/crs/EPSG/0/4326", parseOgcUrl,
     [](const CodePair& codes) { return writeOgcUrl(codes, ""); }, true},
    {Spelling::GML_REFERENCE, "a GML reference", "http://www.opengis.net/gml/srs/epsg.xml#4326", parseGmlReference,
     writeGmlReference},
    {Spelling::EPSG_CODE, "an EPSG code", "EPSG:4326", parseEpsgName, writeEpsgName},
    {Spelling::WFS_1_1_URN, "a WFS 1.1 URN", "urn:EPSG:geographicCRS:4326", parseWfs11Urn, writeWfs11Urn},
    {Spelling::SAFE_CURIE, "a safe CURIE", "[EPSG:4326]", parseSafeCurie, writeSafeCurie, false, SAFE_CURIES_PROPERTY},
}};

bool isEastNorthIfEstablished(Spelling spelling, const std::string& name) {
    return spelling == Spelling::GML_REFERENCE ||
           (spelling == Spelling::EPSG_CODE && startsWith(name, EPSG_PREFIX, EPSG_PREFIX_LENGTH));
}

namespace {

// The codes of a name, or the fault of the first one that is not a code.
std::variant<CodePair, NameFault> readCodes(const NameTexts& texts) {
    const CodeText* code = &texts.first;
    try {
        CodePair codes;
        codes.primary = readCode(code->text);
        if (!texts.second) return codes;
        code = &*texts.second;
        codes.secondary = readCode(code->text);
        return codes;
    } catch (const QSHelpers::ConversionError&) {
        return NameFault{Fault::BAD_CODE, NOT_A_CODE, code->position, false};
    }
}

bool isReadAs(const NameSyntax& syntax, const std::string& name) {
    const ParsedName parsed = syntax.parse(name);
    const NameTexts* const texts = std::get_if<NameTexts>(&parsed);
    return texts != nullptr && std::holds_alternative<CodePair>(readCodes(*texts));
}

// An explanation goes into a log and must fit one line.
std::string onOneLine(std::string text) {
    const auto isControl = [](char character) {
        return static_cast<unsigned char>(character) < ' ' || character == 127;
    };
    std::replace_if(text.begin(), text.end(), isControl, '?');
    return text;
}

// "an OGC URN" without the article.
std::string spellingOf(const NameSyntax& syntax) {
    const std::string description = syntax.description;
    return description.substr(description.find(' ') + 1);
}

NameExplanation explainCodes(const NameSyntax& syntax, const CodePair& codes, const std::string& version) {
    std::string text = syntax.description + (" for " + writeEpsgName(codes));
    if (!version.empty()) text += ", version " + onOneLine(version);
    return {Fault::NONE, spellingOf(syntax), codes.primary, codes.secondary, version, 0, text};
}

// A part missing at the end of the text is missing after the last character.
NameExplanation explainFault(const NameSyntax& syntax, const NameFault& fault, const std::string& name) {
    const std::size_t position = std::min(fault.position + 1, name.size());
    const std::string text =
        std::string(syntax.description) + " " + fault.reason + ", at character " + std::to_string(position);
    return {fault.kind, spellingOf(syntax), 0, 0, "", position, text};
}

// A bare code may be any short text, and most short texts are not meant as codes.
bool isAnyText(const NameSyntax& syntax, const std::string& name) {
    return syntax.spelling == Spelling::EPSG_CODE && !startsWith(name, EPSG_PREFIX, EPSG_PREFIX_LENGTH) &&
           !startsWithDigit(name);
}

NameExplanation explainAs(const NameSyntax& syntax, const std::string& name) {
    const ParsedName parsed = syntax.parse(name);
    if (const NameFault* const fault = std::get_if<NameFault>(&parsed)) return explainFault(syntax, *fault, name);
    const NameTexts& texts = std::get<NameTexts>(parsed);
    const std::variant<CodePair, NameFault> codes = readCodes(texts);
    if (const NameFault* const fault = std::get_if<NameFault>(&codes))
        return explainFault(syntax, isAnyText(syntax, name) ? NameFault() : *fault, name);
    return explainCodes(syntax, std::get<CodePair>(codes), texts.version);
}

}  // namespace

NameExplanation explainName(const std::string& name, const std::function<bool(const char* property)>& isAccepted) {
    NameExplanation first;
    first.text = "no known spelling of a CRS";
    for (const NameSyntax& syntax : NAME_SYNTAXES) {
        NameExplanation explanation = explainAs(syntax, name);
        if (syntax.property != nullptr && explanation.fault == Fault::NONE && !isAccepted(syntax.property))
            explanation = explainFault(syntax, {Fault::BAD_SYNTAX, NOT_ACCEPTED, 0, false}, name);
        if (explanation.fault == Fault::NONE) return explanation;
        if (explanation.fault == Fault::BAD_CODE && syntax.failsOnBadCode) return explanation;
        if (first.fault == Fault::UNKNOWN_SPELLING && explanation.fault != Fault::UNKNOWN_SPELLING) first = explanation;
    }
    return first;
}

bool isEastNorthIfEstablished(const std::string& name) {
    const auto* const syntax = std::find_if(NAME_SYNTAXES.begin(), NAME_SYNTAXES.end(),
                                            [&name](const NameSyntax& it) { return isReadAs(it, name); });
    return syntax != NAME_SYNTAXES.end() && isEastNorthIfEstablished(syntax->spelling, name);
}

std::vector<std::string> registeredCodeNames(const CodePair& codes) {
    return {writeCodeKey(codes), writeWfs11Urn(codes)};
}

std::array<RegisteredUrns, REGISTERED_URN_KINDS> registeredUrns(const CodePair& codes) {
    const auto inHeads = [&codes](const std::string& head, const std::string& alternativeHead,
                                  const std::string& second) {
        std::string rest = convertNumericToText(codes.primary);
        if (codes.secondary != 0) rest += second + convertNumericToText(codes.secondary);
        return RegisteredUrns{head + rest, alternativeHead + rest};
    };
    return {inHeads("urn:ogc:def:crs:EPSG:6.12:", "urn:x-ogc:def:crs:EPSG:6.12:", ",crs:EPSG:6.12:"),
            inHeads("urn:ogc:def:crs:EPSG::", "urn:ogc:def:crs,crs:EPSG::", ",crs:EPSG::")};
}

}  // namespace CoordinateTransformation
