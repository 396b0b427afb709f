#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

// For tests: a directory of the test's own, removed with everything in it.
class TemporaryDirectory {
public:
    TemporaryDirectory() : directory((std::filesystem::temp_directory_path() / "creation-XXXXXX").string()) {
        if (mkdtemp(directory.data()) == nullptr) throw std::runtime_error("no directory " + directory);
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(directory, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::string& path() const { return directory; }
    std::string path(const std::string& name) const { return directory + "/" + name; }
    // The path of the file, which now holds exactly `text`.
    std::string givenFile(const std::string& name, const std::string& text) const {
        std::ofstream file(path(name), std::ios::binary | std::ios::trunc);
        file << text << std::flush;
        if (!file) throw std::runtime_error("cannot write " + path(name));
        return path(name);
    }
    std::string givenDirectory(const std::string& name) const {
        std::filesystem::create_directory(path(name));
        return path(name);
    }
    std::string givenSymlink(const std::string& name, const std::string& target) const {
        std::filesystem::create_symlink(target, path(name));
        return path(name);
    }

private:
    std::string directory;
};
