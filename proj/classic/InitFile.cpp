#include "proj/classic/InitFile.h"

#include <system_error>
#include <utility>

#include "text/FileText.h"
#include "text/InitFileText.h"

namespace ClassicProj {

using CoordinateTransformation::FileText;
using CoordinateTransformation::InitFileDefinition;

std::unordered_map<std::string, std::string> parseInitFile(const std::string& text) {
    std::unordered_map<std::string, std::string> definitions;
    for (InitFileDefinition& definition : CoordinateTransformation::readInitFileText(text))
        definitions.emplace(std::move(definition.code), std::move(definition.text));
    return definitions;
}

InitFile::InitFile(std::filesystem::path file) : path(std::move(file)) {}

std::optional<std::string> InitFile::find(const std::string& code) {
    auto found = definitions.find(code);
    if (found == definitions.end() && readIfChanged()) found = definitions.find(code);
    if (found == definitions.end()) return std::nullopt;
    return found->second;
}

std::optional<InitFile::Stamp> InitFile::stampOfFile() const {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
    Stamp stamp;
    stamp.size = std::filesystem::file_size(path, error);
    if (!error) stamp.time = std::filesystem::last_write_time(path, error);
    if (error) return std::nullopt;
    return stamp;
}

bool InitFile::readIfChanged() {
    const std::optional<Stamp> stamp = stampOfFile();
    if (!stamp || stamp == stampWhenRead) return false;
    const FileText file = CoordinateTransformation::readFile(path.string());
    if (!file.failure.empty()) return false;
    definitions = parseInitFile(file.content);
    stampWhenRead = stamp;
    return true;
}

}  // namespace ClassicProj
