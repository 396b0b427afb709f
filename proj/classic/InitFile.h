#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>

namespace ClassicProj {

// The index of an init file: code to definition text. The file is read once, and again when a code is missing
// and the file's size or time has changed. A file that cannot be read is a file without codes.
//
// Not thread-safe.
class InitFile {
public:
    explicit InitFile(std::filesystem::path file);

    // The definition text of `code`, or nothing.
    std::optional<std::string> find(const std::string& code);

private:
    struct Stamp {
        std::uintmax_t size = 0;
        std::filesystem::file_time_type time;
        bool operator==(const Stamp& other) const { return size == other.size && time == other.time; }
    };

    std::optional<Stamp> stampOfFile() const;
    bool readIfChanged();

    std::filesystem::path path;
    std::optional<Stamp> stampWhenRead;
    std::unordered_map<std::string, std::string> definitions;
};

// The definitions in the text of an init file. Of two with one code the first counts.
//
//   file       = { anything else | definition }
//   definition = "<" code ">" { text | comment } "<"
//   comment    = "#" up to the end of the line
//
// A code holds neither white space nor "<". The "<" that ends a definition begins the next one or "<>".
std::unordered_map<std::string, std::string> parseInitFile(const std::string& text);

}  // namespace ClassicProj
