#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "proj/classic/ClassicProj.h"

// Files and directories for tests.
namespace TestSupport {

// A new directory under the system's temporary one, removed with all it holds.
class TemporaryDirectory {
public:
    TemporaryDirectory() {
        std::string pattern = (std::filesystem::temp_directory_path() / "coordtrans-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary directory " + pattern);
        directory = pattern;
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(directory, ignored);
    }

    std::filesystem::path file(const std::string& name) const { return directory / name; }
    std::string name() const { return directory.string(); }

    std::filesystem::path write(const std::string& fileName, const std::string& content) const {
        std::ofstream(file(fileName), std::ios::binary) << content;
        return file(fileName);
    }

private:
    std::filesystem::path directory;
};

inline void searchOnlyIn(const std::vector<std::string>& directories) {
    std::vector<const char*> paths;
    for (const std::string& directory : directories) paths.push_back(directory.c_str());
    ClassicProj::pj_set_searchpath(static_cast<int>(paths.size()), paths.data());
}

}  // namespace TestSupport
