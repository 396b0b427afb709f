#pragma once

#include <fstream>
#include <string>
#include <vector>

#include "tests/support/TemporaryDirectory.h"

// A PROJ directory of any size. It repeats the definitions of data/proj under new codes, so that each code is bound
// separately. The destructor removes it.
class ProjDirectory {
public:
    static constexpr unsigned int FIRST_CODE = 100000;

    explicit ProjDirectory(unsigned int size) : count(size) { writeDefinitions(readDefinitions()); }

    const std::string& getPath() const { return directory.name(); }
    std::string code(unsigned int i) const { return std::to_string(FIRST_CODE + i % count); }

    // Writes a file of descriptions, which repeats those of data/proj. Their areas are longer than most in the
    // registry.
    std::string writeDescriptions() const {
        std::ifstream delivered(COORDTRANS_SOURCE_DIR "/data/proj/epsg-info.csv");
        std::vector<std::string> lines;
        for (std::string line; std::getline(delivered, line);) lines.push_back(line.substr(line.find(',')));
        const std::string path = directory.file("epsg-info.csv");
        std::ofstream file(path);
        file << "code" << lines.front() << "\n";
        for (unsigned int i = 0; i < count; ++i) file << code(i) << lines[1 + i % (lines.size() - 1)] << "\n";
        return path;
    }

private:
    static std::vector<std::string> readDefinitions() {
        std::ifstream file(COORDTRANS_SOURCE_DIR "/data/proj/epsg");
        std::vector<std::string> definitions;
        for (std::string line; std::getline(file, line);)
            if (line[0] == '<' && line.find("geocent") == std::string::npos)
                definitions.push_back(line.substr(line.find('>') + 1));
        return definitions;
    }

    void writeDefinitions(const std::vector<std::string>& definitions) const {
        std::ofstream epsg(directory.file("epsg"));
        std::ofstream axisOrder(directory.file("epsg-axisorder.csv"));
        for (unsigned int i = 0; i < count; ++i) {
            epsg << "<" << code(i) << ">" << definitions[i % definitions.size()] << "\n";
            axisOrder << code(i) << (i % 2 == 0 ? ";en\n" : ";ne\n");
        }
    }

    const TestSupport::TemporaryDirectory directory;
    unsigned int count;
};
