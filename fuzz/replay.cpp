// Runs a fuzz target over files, each line of a seed file an input of its own, and over the whole files.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

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

}  // namespace

int main(int argc, char** argv) {
    int inputs = 0;
    for (int i = 1; i < argc; ++i)
        for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i]))
            if (entry.is_regular_file()) inputs += runFile(entry.path());
    std::printf("%d inputs\n", inputs);
    return inputs > 0 ? 0 : 1;
}
