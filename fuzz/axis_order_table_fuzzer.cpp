// Loads axis-order tables. A malformed row fails the load with a message that names the file, and the rows before it
// stay loaded. The loaded rows, written back, load as the same table.

#include <map>
#include <utility>

#include "CoordinateTransformation/Misconfigured.h"
#include "fuzz/Input.h"
#include "fuzz/ScratchFile.h"
#include "proj/AxisOrderTable.h"

using namespace CoordinateTransformation;

namespace {

std::string writeTable(const std::map<unsigned int, bool>& table) {
    std::string text;
    for (const auto& [code, eastNorth] : table) text += std::to_string(code) + (eastNorth ? ";en\n" : ";ne\n");
    return text;
}

// Clears the table each time, because a process otherwise loads only one.
std::map<unsigned int, bool> load(const std::string& path) {
    axisOrderTable.clear();
    try {
        loadAxisOrderTable(path);
    } catch (const Misconfigured& refused) {
        Fuzz::require(std::string(refused.what()).find(path) != std::string::npos);
    }
    return std::exchange(axisOrderTable, {});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Fuzz::ScratchFile scratch;
    const std::map<unsigned int, bool> table = load(scratch.holding(Fuzz::text(data, size)));
    Fuzz::require(load(scratch.holding(writeTable(table))) == table);
    return 0;
}
