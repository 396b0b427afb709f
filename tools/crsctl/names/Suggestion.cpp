#include "tools/crsctl/names/Suggestion.h"

#include <algorithm>
#include <regex>

namespace crsctl {
namespace {

char lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), lower);
    return text;
}

// A change and what it does to a name: every match of `pattern`, letters of either case, becomes `replacement`.
struct Edit {
    const char* change;
    const char* pattern;
    const char* replacement;
};

// In the order in which they are tried. Patterns are anchored, so that a change stays a small one.
constexpr Edit EDITS[] = {
    {"without the blanks around it", "^\\s*(\\S.*?)\\s*$", "$1"},
    {"with http in place of https", "^https:", "http:"},
    {"with the prefix in capitals", "epsg:(?=\\d)", "EPSG:"},
    {"with a colon after EPSG", "^epsg[\\s_/.#-]?(?=\\d)", "EPSG:"},
    {"with one colon after EPSG", "^epsg::+(?=\\d)", "EPSG:"},
    {"with EPSG: before the second code too", "^(epsg:\\d+)[*+,](?:epsg:)?(\\d+)$", "$1*EPSG:$2"},
    {"with the missing colon before the code", "epsg:(\\d+)(?=,|$)", "EPSG::$1"},
    {"with a version before the code", "/epsg/(\\d+)(?=,|$)", "/EPSG/0/$1"},
    {"without the slash at its end", "^(.*\\d)/+$", "$1"},
    {"with the missing urn:", "^(x-ogc|ogc):def:", "urn:$1:def:"},
    {"with the missing def:", "^(urn:(?:x-)?ogc):crs", "$1:def:crs"},
    {"with the missing crs:", "^(urn:(?:x-)?ogc:def):epsg:", "$1:crs:EPSG:"},
    {"with the host www.opengis.net", "^http:/*(?:www\\.)?(?:opengis|ogc)\\.(?:net|org|com)/",
     "http://www.opengis.net/"},
    {"in lower case but for EPSG", "^(?:urn:(?:x-)?ogc|http):.*$", nullptr},
    {"in the capitals of WFS 1.1", "^urn:epsg:geographiccrs:", "urn:EPSG:geographicCRS:"},
    {"in lower case", "epsg\\.xml#", "epsg.xml#"},
    {"as the configured name CRS:84", "^.*crs:?84$", "CRS:84"},
};

// Scheme words in lower case; the authority reads better as it is known.
std::string withLowerCaseWords(const std::string& name) {
    return std::regex_replace(lowered(name), std::regex("epsg(?=[:/])"), "EPSG");
}

std::string edited(const std::string& name, const Edit& edit) {
    const std::regex pattern(edit.pattern, std::regex::ECMAScript | std::regex::icase);
    if (!std::regex_search(name, pattern)) return name;
    return edit.replacement == nullptr ? withLowerCaseWords(name) : std::regex_replace(name, pattern, edit.replacement);
}

// std::regex recurses over its input; a name beyond any that a server offers gets no suggestion.
constexpr std::size_t LONGEST_NAME = 512;

std::optional<Suggestion> configuredInOtherCapitals(const std::string& name, const std::set<std::string>& configured,
                                                    const std::function<bool(const std::string&)>& works) {
    for (const std::string& candidate : configured)
        if (candidate != name && lowered(candidate) == lowered(name) && works(candidate))
            return Suggestion{"as the configuration spells it", candidate};
    return std::nullopt;
}

}  // namespace

std::optional<Suggestion> suggest(const std::string& name, const std::set<std::string>& configured,
                                  const std::function<bool(const std::string&)>& works) {
    if (name.size() > LONGEST_NAME) return std::nullopt;
    for (const Edit& edit : EDITS) {
        const std::string candidate = edited(name, edit);
        if (candidate != name && works(candidate)) return Suggestion{edit.change, candidate};
    }
    return configuredInOtherCapitals(name, configured, works);
}

}  // namespace crsctl
