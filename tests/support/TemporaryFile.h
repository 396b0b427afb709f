#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace crsctl {

// A file with the given content for the life of a test.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& content) {
        std::string pattern = (std::filesystem::temp_directory_path() / "crsctl-XXXXXX").string();
        close(mkstemp(pattern.data()));
        filePath = pattern;
        std::ofstream(filePath, std::ios::binary) << content;
    }
    ~TemporaryFile() { std::filesystem::remove(filePath); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& path() const { return filePath; }

private:
    std::string filePath;
};

}  // namespace crsctl
