#include "tools/projdir/CodeList.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <set>

namespace ProjDir {
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

std::vector<RegistryCrs> selectAll(const std::vector<RegistryCrs>& registry, bool includeDeprecated) {
    std::vector<RegistryCrs> selected;
    std::copy_if(registry.begin(), registry.end(), std::back_inserter(selected),
                 [includeDeprecated](const RegistryCrs& crs) { return includeDeprecated || !crs.isDeprecated; });
    return selected;
}

}  // namespace ProjDir
