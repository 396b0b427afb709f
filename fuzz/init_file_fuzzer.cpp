// Init files: what is found in the text of a file is found in the file, and codes hold nothing that ends them.

#include "fuzz/Input.h"
#include "fuzz/ScratchFile.h"
#include "text/InitFile.h"

using namespace CoordinateTransformation;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Fuzz::ScratchFile scratch;
    const std::string text = Fuzz::text(data, size);
    InitFile file(scratch.holding(text));
    for (const auto& [code, definition] : parseInitFile(text)) {
        Fuzz::require(!code.empty() && code.find_first_of("<> \t\r\n") == std::string::npos);
        Fuzz::require(definition.find_first_of("<#") == std::string::npos);
        Fuzz::require(file.find(code) == definition);
    }
    Fuzz::require(!file.find("no such code"));
    return 0;
}
