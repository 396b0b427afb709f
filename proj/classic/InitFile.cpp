#include "proj/classic/InitFile.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

namespace ClassicProj {

namespace {

// Far beyond any definition; a run of text as long as this is a broken file.
constexpr std::size_t LONGEST_DEFINITION = 65536;

std::string withoutComments(const std::string& text) {
    std::istringstream lines(text);
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

std::string readWhole(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return std::move(text).str();
}

}  // namespace

std::unordered_map<std::string, std::string> parseInitFile(const std::string& text) {
    std::unordered_map<std::string, std::string> definitions;
    std::size_t open = findDefinitionEnd(text, 0);
    while (open < text.size()) {
        const std::size_t codeBegin = open + 1;
        const std::size_t codeEnd = std::min(text.find_first_of("> \t\r\n<", codeBegin), text.size());
        const std::size_t end = findDefinitionEnd(text, codeEnd);
        const bool isDefinition = codeEnd > codeBegin && codeEnd < text.size() && text[codeEnd] == '>';
        if (isDefinition && end - codeEnd <= LONGEST_DEFINITION)
            definitions.emplace(text.substr(codeBegin, codeEnd - codeBegin),
                                withoutComments(text.substr(codeEnd + 1, end - codeEnd - 1)));
        open = end;
    }
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
    definitions = parseInitFile(readWhole(path));
    stampWhenRead = stamp;
    return true;
}

}  // namespace ClassicProj
