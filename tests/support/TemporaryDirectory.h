#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ios>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace TestSupport {

// A new directory. The destructor removes it with all its content.
class TemporaryDirectory {
public:
    TemporaryDirectory() : directory((std::filesystem::temp_directory_path() / "coordtrans-XXXXXX").string()) {
        if (mkdtemp(directory.data()) == nullptr) throw std::runtime_error("cannot create " + directory);
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(directory, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::string& name() const { return directory; }
    std::string file(const std::string& fileName) const { return directory + "/" + fileName; }

    // write, makeDirectory and makeSymlink return the path of what they create. write replaces an existing file.
    std::string write(const std::string& fileName, const std::string& content) const {
        std::ofstream stream(file(fileName), std::ios::binary | std::ios::trunc);
        stream << content << std::flush;
        if (!stream) throw std::runtime_error("cannot write " + file(fileName));
        return file(fileName);
    }
    std::string read(const std::string& fileName) const {
        const std::ifstream stream(file(fileName), std::ios::binary);
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
