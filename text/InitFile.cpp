#include "text/InitFile.h"

#include <algorithm>
#include <sstream>
#include <system_error>
#include <utility>

#include "text/FileText.h"

namespace CoordinateTransformation {
namespace {

// Longer than any definition. A longer run of text is a broken file.
constexpr std::size_t LONGEST_DEFINITION = 65536;

std::string withoutComments(const std::string& text) {
    std::istringstream lines(text);
    lines.exceptions(std::ios::badbit);
    std::string kept;
    for (std::string line; std::getline(lines, line);) kept += line.substr(0, line.find('#')) + "\n";
    return kept;
}

// The end of the definition that begins at `begin`: the next "<" outside a comment.
std::size_t findDefinitionEnd(const std::string& text, std::size_t begin) {
    std::size_t end = text.find_first_of("<#", begin);
    while (end != std::string::npos && text[end] == '#') {
        const std::size_t lineEnd = text.find('\n', end);
        end = lineEnd == std::string::npos ? lineEnd : text.find_first_of("<#", lineEnd);
    }
    return std::min(end, text.size());
}

std::size_t countLines(const std::string& text, std::size_t begin, std::size_t end) {
    return static_cast<std::size_t>(std::count(text.data() + begin, text.data() + end, '\n'));
}

}  // namespace

std::vector<InitFileDefinition> readInitFileText(const std::string& text) {
    std::vector<InitFileDefinition> definitions;
    std::size_t open = findDefinitionEnd(text, 0);
    std::size_t line = 1 + countLines(text, 0, open);
    while (open < text.size()) {
        const std::size_t codeBegin = open + 1;
        const std::size_t codeEnd = std::min(text.find_first_of("> \t\r\n<", codeBegin), text.size());
        const std::size_t end = findDefinitionEnd(text, codeEnd);
        const bool isDefinition = codeEnd > codeBegin && codeEnd < text.size() && text[codeEnd] == '>';
        if (isDefinition && end - codeEnd <= LONGEST_DEFINITION)
            definitions.push_back({text.substr(codeBegin, codeEnd - codeBegin),
                                   withoutComments(text.substr(codeEnd + 1, end - codeEnd - 1)), line});
        line += countLines(text, open, end);
        open = end;
    }
    return definitions;
}

std::unordered_map<std::string, std::string> parseInitFile(const std::string& text) {
    std::unordered_map<std::string, std::string> definitions;
    for (InitFileDefinition& definition : readInitFileText(text))
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
    const FileText file = readFile(path.string());
    if (!file.failure.empty()) return false;
    definitions = parseInitFile(file.content);
    stampWhenRead = stamp;
    return true;
}

}  // namespace CoordinateTransformation
