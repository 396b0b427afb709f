#include "text/ParameterList.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "text/NumericText.h"

namespace CoordinateTransformation {
namespace {

constexpr char WHITE_SPACE[] = " \t\r\n\v\f";

bool contains(std::initializer_list<const char*> keys, const std::string& key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

bool isIn(const char* characters, char c) { return std::string_view(characters).find(c) != std::string_view::npos; }

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool beginsParameter(const std::string& text, std::size_t at) {
    return text[at] == '+' && at + 1 < text.size() && isLetter(text[at + 1]);
}

// The text with one blank for each run of white space that separates parameters.
std::string withoutInsignificantSpace(const std::string& text) {
    std::string kept;
    std::size_t begin = text.find_first_not_of(WHITE_SPACE);
    while (begin != std::string::npos) {
        const bool goesOn = isIn("=,", text[begin]) || (!kept.empty() && isIn("=,", kept.back()));
        if (!kept.empty() && (!goesOn || beginsParameter(text, begin))) kept += ' ';
        const std::size_t end = std::min(text.find_first_of(WHITE_SPACE, begin), text.size());
        kept.append(text, begin, end - begin);
        begin = text.find_first_not_of(WHITE_SPACE, end);
    }
    return kept;
}

}  // namespace

ParameterList::ParameterList(const std::string& text) : nul(text.find('\0') != std::string::npos) {
    const std::string tight = withoutInsignificantSpace(text);
    std::size_t begin = tight.find_first_not_of(WHITE_SPACE);
    while (begin != std::string::npos) {
        const std::size_t end = std::min(tight.find_first_of(WHITE_SPACE, begin), tight.size());
        if (tight[begin] == '+') ++begin;
        const std::size_t equals = std::min(tight.find('=', begin), end);
        const std::size_t value = std::min(equals + 1, end);
        if (equals > begin)
            parameters.emplace_back(tight.substr(begin, equals - begin), tight.substr(value, end - value));
        begin = tight.find_first_not_of(WHITE_SPACE, end);
    }
}

bool ParameterList::has(const std::string& key) const {
    return std::any_of(parameters.begin(), parameters.end(), [&key](const auto& p) { return p.first == key; });
}

bool ParameterList::hasAnyOf(std::initializer_list<const char*> keys) const {
    return std::any_of(keys.begin(), keys.end(), [this](const char* key) { return has(key); });
}

std::string ParameterList::get(const std::string& key) const {
    for (const auto& parameter : parameters)
        if (parameter.first == key) return parameter.second;
    return "";
}

bool ParameterList::hasInfinity() const {
    return std::any_of(parameters.begin(), parameters.end(),
                       [](const auto& parameter) { return !std::isfinite(readDouble(parameter.second)); });
}

void ParameterList::addDefaults(const ParameterList& defaults) {
    nul = nul || defaults.nul;
    for (const auto& parameter : defaults.parameters)
        if (!has(parameter.first)) parameters.push_back(parameter);
}

ParameterList ParameterList::only(std::initializer_list<const char*> keys) const {
    ParameterList kept;
    kept.nul = nul;
    for (const auto& parameter : parameters)
        if (contains(keys, parameter.first)) kept.parameters.push_back(parameter);
    return kept;
}

ParameterList ParameterList::without(std::initializer_list<const char*> keys) const {
    ParameterList kept;
    kept.nul = nul;
    for (const auto& parameter : parameters)
        if (!contains(keys, parameter.first)) kept.parameters.push_back(parameter);
    return kept;
}

std::string ParameterList::toText() const {
    std::string text;
    for (const auto& [key, value] : parameters) {
        text.append(" +").append(key);
        if (!value.empty()) text.append("=").append(value);
    }
    return text;
}

}  // namespace CoordinateTransformation
