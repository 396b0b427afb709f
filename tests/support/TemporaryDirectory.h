#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ios>
#include <stdexcept>
#include <string>
#include <system_error>

namespace TestSupport {

// For tests: a directory of the test's own, removed with everything in it.
class TemporaryDirectory {
public:
    TemporaryDirectory() : directory((std::filesystem::temp_directory_path() / "coordtrans-XXXXXX").string()) {
        if (mkdtemp(directory.data()) == nullptr) throw std::runtime_error("no directory " + directory);
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(directory, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::string& name() const { return directory; }
    std::string file(const std::string& fileName) const { return directory + "/" + fileName; }

    // Each gives the path of what it made; a file holds exactly `content` afterwards.
    std::string write(const std::string& fileName, const std::string& content) const {
        std::ofstream stream(file(fileName), std::ios::binary | std::ios::trunc);
        stream << content << std::flush;
        if (!stream) throw std::runtime_error("cannot write " + file(fileName));
        return file(fileName);
    }
    std::string makeDirectory(const std::string& directoryName) const {
        std::filesystem::create_directory(file(directoryName));
        return file(directoryName);
    }
    std::string makeSymlink(const std::string& linkName, const std::string& target) const {
        std::filesystem::create_symlink(target, file(linkName));
        return file(linkName);
    }

private:
    std::string directory;
};

}  // namespace TestSupport
