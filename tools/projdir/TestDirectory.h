#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>

namespace ProjDir {

// A new directory under the system's temporary one, removed with all it holds.
class TestDirectory {
public:
    TestDirectory() {
        std::string pattern = (std::filesystem::temp_directory_path() / "projdir-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary directory " + pattern);
        directory = pattern;
    }
    TestDirectory(const TestDirectory&) = delete;
    TestDirectory& operator=(const TestDirectory&) = delete;
    ~TestDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(directory, ignored);
    }

    std::string name() const { return directory.string(); }
    std::string file(const std::string& fileName) const { return (directory / fileName).string(); }

    std::string write(const std::string& fileName, const std::string& content) const {
        std::ofstream(directory / fileName, std::ios::binary) << content;
        return file(fileName);
    }

    std::string read(const std::string& fileName) const {
        const std::ifstream stream(directory / fileName, std::ios::binary);
        std::ostringstream text;
        text << stream.rdbuf();
        return text.str();
    }

    std::set<std::string> list() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(directory))
            names.insert(entry.path().filename().string());
        return names;
    }

private:
    std::filesystem::path directory;
};

}  // namespace ProjDir
