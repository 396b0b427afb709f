// Reads init files. Every definition in the text can be found in the file, and no code contains a character that ends a
// code.

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
