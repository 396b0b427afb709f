#include "Service.h"

#include <algorithm>
#include <cpl_string.h>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace FeatureServer {

std::string lower(const std::string& text) { return CPLString(text).tolower(); }

std::string Request::value(const std::string& name, const std::string& absent) const {
    const auto found = parameters.find(lower(name));
    return found == parameters.end() || found->second.empty() ? absent : found->second;
}

std::size_t Request::count(const std::string& name, std::size_t least, std::size_t most, std::size_t absent) const {
    const std::string text = value(name);
    if (text.empty()) return absent;
    const std::size_t number = std::strtoull(text.c_str(), nullptr, 10);
    if (text.find_first_not_of("0123456789") != std::string::npos || number < least)
        throw invalid(name, text + " is not a count");
    return std::min(number, most);
}

Templates readTemplates(const std::filesystem::path& folder) {
    Templates texts;
    std::string line, name;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        for (std::ifstream file(entry.path()); std::getline(file, line);)
            line.rfind("== ", 0) == 0 ? name = line.substr(3) : texts[name] += line + "\n";
    if (texts.empty()) throw std::runtime_error("There are no templates in " + folder.string());
    return texts;
}

std::string Context::fill(const std::string& name, const Values& values) const {
    const std::string& text = templates.at(name);
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

std::string taken(char* text) {
    std::string copy(text != nullptr ? text : "null");
    CPLFree(text);
    return copy;
}

std::string xml(const std::string& text) {
    return taken(CPLEscapeString(text.c_str(), static_cast<int>(text.size()), CPLES_XML));
}

std::string json(const std::string& text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

static Answer report(const Context& context, const Request& request, const Refusal& refusal) {
    const bool isWfs = request.path == "/wfs";
    const auto quoted = isWfs ? xml : json;
    const std::string version = request.value("version").rfind("1.", 0) == 0 ? "1.1.0 " : "2.0.0 ";
    const Values values{
        {"code", quoted(refusal.code)}, {"locator", quoted(refusal.locator)}, {"text", quoted(refusal.what())}};
    return {refusal.status, isWfs ? "text/xml" : "application/json",
            context.fill(isWfs ? version + "report" : "report", values)};
}

Answer answer(const Context& context, const Request& request) {
    try {
        return request.path == "/wfs" ? answerWfs(context, request) : answerApi(context, request);
    } catch (const Refusal& refusal) {
        return report(context, request, refusal);
    } catch (...) {
        return report(context, request, {"NoApplicableCode", "", currentFailure(), 500});
    }
}

}  // namespace FeatureServer
