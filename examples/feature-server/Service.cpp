#include "Service.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <stdexcept>
#include <strings.h>

#include <fmt/format.h>

namespace FeatureServer {

bool IgnoresCase::operator()(const std::string& one, const std::string& other) const {
    return strcasecmp(one.c_str(), other.c_str()) < 0;
}

std::string Request::value(const std::string& name, const std::string& absent) const {
    const auto found = parameters.find(name);
    return found == parameters.end() || found->second.empty() ? absent : found->second;
}

std::size_t Request::count(const std::string& name, std::size_t least, std::size_t most, std::size_t absent) const {
    const std::string text = value(name);
    if (text.empty()) return absent;
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::result_out_of_range) return most;
    if (error != std::errc() || end != text.data() + text.size() || number < least)
        throw Refusal{400, "InvalidParameterValue", name, text + " is not a count"};
    return std::min(number, most);
}

Templates::Templates(const std::string& path) {
    std::ifstream file(path);
    std::string line, name;
    while (std::getline(file, line)) {
        if (line.rfind("== ", 0) == 0)
            name = line.substr(3);
        else
            texts[name] += line + "\n";
    }
    if (texts.empty()) throw std::runtime_error("Cannot read " + path);
}

std::string Templates::fill(const std::string& name, const Values& values) const {
    const std::string& text = texts.at(name);
    std::string filled;
    std::size_t begin = 0;
    for (std::size_t open = text.find('{'); open != std::string::npos; open = text.find('{', open + 1)) {
        const std::size_t close = text.find('}', open);
        const auto value = values.find(text.substr(open + 1, close - open - 1));
        if (value == values.end()) continue;
        filled.append(text, begin, open - begin) += value->second;
        begin = close + 1;
    }
    return filled.append(text, begin);
}

Values withBox(const Bounds& box, Values values) {
    values.insert({{"west", fmt::to_string(box.minX)},
                   {"south", fmt::to_string(box.minY)},
                   {"east", fmt::to_string(box.maxX)},
                   {"north", fmt::to_string(box.maxY)}});
    return values;
}

}  // namespace FeatureServer
