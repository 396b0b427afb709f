#pragma once

#include <filesystem>
#include <string>

namespace TestSupport {

// While it lives, the process works in a directory that is gone: "../proj" still leads to a file beside it, but no
// relative name can be made absolute.
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
