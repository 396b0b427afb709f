#include "proj/classic/ParameterList.h"

#include <algorithm>

namespace ClassicProj {

namespace {

constexpr char WHITE_SPACE[] = " \t\r\n\v\f";

bool contains(std::initializer_list<const char*> keys, const std::string& key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

}  // namespace

ParameterList::ParameterList(const std::string& text) {
    std::size_t begin = text.find_first_not_of(WHITE_SPACE);
    while (begin != std::string::npos) {
        const std::size_t end = std::min(text.find_first_of(WHITE_SPACE, begin), text.size());
        if (text[begin] == '+') ++begin;
        const std::size_t equals = std::min(text.find('=', begin), end);
        const std::size_t value = std::min(equals + 1, end);
        if (equals > begin)
            parameters.emplace_back(text.substr(begin, equals - begin), text.substr(value, end - value));
        begin = text.find_first_not_of(WHITE_SPACE, end);
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

void ParameterList::addDefaults(const ParameterList& defaults) {
    for (const auto& parameter : defaults.parameters)
        if (!has(parameter.first)) parameters.push_back(parameter);
}

ParameterList ParameterList::only(std::initializer_list<const char*> keys) const {
    ParameterList kept;
    for (const auto& parameter : parameters)
        if (contains(keys, parameter.first)) kept.parameters.push_back(parameter);
    return kept;
}

ParameterList ParameterList::without(std::initializer_list<const char*> keys) const {
    ParameterList kept;
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

}  // namespace ClassicProj
