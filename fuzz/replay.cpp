// Runs a fuzz target on each file of the given directories, as a whole and line by line. For tests/names.csv it runs
// the target on each name. "--write DIRECTORY" writes the names to files instead, as seeds for libFuzzer.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/support/NameTable.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void run(const std::string& input) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

int runFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream whole;
    whole << file.rdbuf();
    run(whole.str());
    int inputs = 1;
    std::istringstream lines(whole.str());
    for (std::string line; std::getline(lines, line); ++inputs) run(line);
    return inputs;
}

int runDirectory(const std::filesystem::path& directory) {
    int inputs = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory))
        if (entry.is_regular_file()) inputs += runFile(entry.path());
    return inputs;
}

int runNames() {
    for (const TestSupport::NameRow& row : TestSupport::nameTable()) run(row["name"]);
    return static_cast<int>(TestSupport::nameTable().size());
}

int writeNames(const std::filesystem::path& directory) {
    int files = 0;
    for (const TestSupport::NameRow& row : TestSupport::nameTable())
        std::ofstream(directory / std::to_string(++files), std::ios::binary) << row["name"];
    return files;
}

int runArgument(const std::filesystem::path& path) {
    return path.filename() == "names.csv" ? runNames() : runDirectory(path);
}

}  // namespace

int main(int argc, char** argv) {
    int inputs = 0;
    if (argc == 3 && argv[1] == std::string("--write"))
        inputs = writeNames(argv[2]);
    else
        for (int i = 1; i < argc; ++i) inputs += runArgument(argv[i]);
    std::printf("%d inputs\n", inputs);
    return inputs > 0 ? 0 : 1;
}
