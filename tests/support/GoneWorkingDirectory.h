#pragma once

#include <filesystem>
#include <string>

namespace TestSupport {

// Puts the process into a working directory that no longer exists, for the lifetime of the object. "../proj" still
// leads to a file next to that directory, but no relative path can be made absolute.
class GoneWorkingDirectory {
public:
    explicit GoneWorkingDirectory(const std::string& directory) : before(std::filesystem::current_path()) {
        std::filesystem::create_directory(directory);
        std::filesystem::current_path(directory);
        std::filesystem::remove(directory);
    }
    ~GoneWorkingDirectory() { std::filesystem::current_path(before); }
    GoneWorkingDirectory(const GoneWorkingDirectory&) = delete;
    GoneWorkingDirectory& operator=(const GoneWorkingDirectory&) = delete;

private:
    const std::filesystem::path before;
};

}  // namespace TestSupport
