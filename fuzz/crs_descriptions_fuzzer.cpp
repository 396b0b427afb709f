// Reads files of descriptions. A malformed file is refused with a message that names it. The descriptions of an
// accepted file ascend by code, can be found by code, and are within the ranges of the format.

#include <cmath>

#include "CoordinateTransformation/CrsDescriptions.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "fuzz/Input.h"
#include "fuzz/ScratchFile.h"
#include "text/QuotedCsv.h"

using namespace CoordinateTransformation;

namespace {

CrsDescriptions read(const std::string& path) {
    try {
        return CrsDescriptions(path);
    } catch (const Misconfigured& refused) {
        Fuzz::require(std::string(refused.what()).find(path) != std::string::npos);
        return {};
    }
}

bool isInRange(const GeographicBox& box) {
    return std::fabs(box.west) <= 180 && std::fabs(box.east) <= 180 && box.south >= -90 && box.south <= box.north &&
           box.north <= 90;
}

bool isDistance(const std::optional<double>& distance) {
    return !distance || (std::isfinite(*distance) && *distance >= 0);
}

void check(const CrsDescription& description) {
    Fuzz::require(description.code != 0 && !description.name.empty() && isUtf8(description.name + description.area));
    Fuzz::require(!description.box || isInRange(*description.box));
    Fuzz::require(std::isfinite(description.unitLength) && description.unitLength > 0);
    Fuzz::require(isDistance(description.shiftAccuracy) && isDistance(description.largestDistance));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Fuzz::ScratchFile scratch;
    const CrsDescriptions descriptions = read(scratch.holding(Fuzz::text(data, size)));
    unsigned int last = 0;
    for (const CrsDescription& description : descriptions) {
        Fuzz::require(description.code > last && descriptions.find(description.code) == &description);
        check(description);
        last = description.code;
    }
    return 0;
}
