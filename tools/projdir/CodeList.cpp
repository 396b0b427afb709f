#include "tools/projdir/CodeList.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <memory>
#include <set>
#include <sstream>

#include <boost/property_tree/xml_parser.hpp>

#include "CoordinateTransformation/CoordinateTransformation.h"

namespace ProjDir {

using CoordinateTransformation::CrsConfig;
using CoordinateTransformation::CrsConfigData;

namespace {

constexpr char WHITE_SPACE[] = " \t\r\n\v\f";
constexpr char PREFIX[] = "EPSG:";

std::string trim(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(WHITE_SPACE);
    if (begin == std::string::npos) return "";
    return text.substr(begin, text.find_last_not_of(WHITE_SPACE) - begin + 1);
}

unsigned int readCode(const std::string& text, const std::string& place) {
    const bool hasPrefix = text.rfind(PREFIX, 0) == 0;
    const std::string digits = hasPrefix ? text.substr(sizeof(PREFIX) - 1) : text;
    unsigned int code = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code);
    if (error != std::errc() || end != digits.data() + digits.size())
        throw CodeListError(place + ": \"" + text + "\" is not an EPSG code");
    return code;
}

const RegistryCrs* findCrs(const std::vector<RegistryCrs>& registry, unsigned int code) {
    const auto found = std::lower_bound(registry.begin(), registry.end(), code,
                                        [](const RegistryCrs& crs, unsigned int wanted) { return crs.code < wanted; });
    return found == registry.end() || found->code != code ? nullptr : &*found;
}

void requireUsable(const RegistryCrs* crs, const ListedCode& listed, bool includeDeprecated) {
    const std::string code = "EPSG:" + std::to_string(listed.code);
    if (crs == nullptr) throw CodeListError(listed.place + ": the registry has no CRS " + code);
    if (crs->isDeprecated && !includeDeprecated)
        throw CodeListError(listed.place + ": " + code + " is deprecated; --include-deprecated admits it");
}

ListedCode readEntry(const CrsConfig& config, const CrsConfigData& entry, const std::string& name) {
    const std::string identifier = entry.getIdentifier();
    const CoordinateTransformation::NameExplanation explained = config.getCreator().explainName(identifier);
    if (explained.primaryCode == 0) throw CodeListError(name + ": \"" + identifier + "\" names no code");
    return {explained.primaryCode, name + ", entry " + entry.getAliasOrIdentifier()};
}

}  // namespace

std::vector<ListedCode> readCodeList(std::istream& lines, const std::string& name) {
    std::vector<ListedCode> codes;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::string place = name + ", line " + std::to_string(++number);
        const std::string text = trim(line.substr(0, line.find('#')));
        if (!text.empty()) codes.push_back({readCode(text, place), place});
    }
    if (lines.bad()) throw CodeListError(name + " cannot be read");
    if (codes.empty()) throw CodeListError(name + " names no code");
    return codes;
}

std::vector<ListedCode> readConfigurationCodes(const std::string& fragment, const std::string& name) {
    const std::unique_ptr<CrsConfig> config(CrsConfig::createConfigFromId("proj4"));
    std::istringstream document(fragment);
    try {
        config->configure(document);
    } catch (const boost::property_tree::xml_parser_error& failure) {
        throw CodeListError(name + " is no configuration: " + failure.message() + ", line " +
                            std::to_string(failure.line()));
    }
    std::vector<ListedCode> codes;
    for (const CrsConfigData& entry : *config->getConfiguredCrs()) codes.push_back(readEntry(*config, entry, name));
    if (codes.empty()) throw CodeListError(name + " names no code");
    return codes;
}

std::vector<RegistryCrs> selectListed(const std::vector<RegistryCrs>& registry, const std::vector<ListedCode>& codes,
                                      bool includeDeprecated) {
    std::set<unsigned int> wanted;
    for (const ListedCode& listed : codes) {
        requireUsable(findCrs(registry, listed.code), listed, includeDeprecated);
        wanted.insert(listed.code);
    }
    std::vector<RegistryCrs> selected;
    selected.reserve(wanted.size());
    for (const unsigned int code : wanted) selected.push_back(*findCrs(registry, code));
    return selected;
}

std::vector<RegistryCrs> selectOverlapping(const std::vector<RegistryCrs>& list, const Area& area) {
    std::vector<RegistryCrs> selected;
    std::copy_if(list.begin(), list.end(), std::back_inserter(selected),
                 [&area](const RegistryCrs& crs) { return crs.area && overlap(*crs.area, area); });
    return selected;
}

std::vector<RegistryCrs> selectCommon(const std::vector<RegistryCrs>& left, const std::vector<RegistryCrs>& right) {
    std::vector<RegistryCrs> common;
    std::set_intersection(left.begin(), left.end(), right.begin(), right.end(), std::back_inserter(common),
                          [](const RegistryCrs& a, const RegistryCrs& b) { return a.code < b.code; });
    return common;
}

std::vector<RegistryCrs> selectAll(const std::vector<RegistryCrs>& registry, bool includeDeprecated) {
    std::vector<RegistryCrs> selected;
    std::copy_if(registry.begin(), registry.end(), std::back_inserter(selected),
                 [includeDeprecated](const RegistryCrs& crs) { return includeDeprecated || !crs.isDeprecated; });
    return selected;
}

}  // namespace ProjDir
