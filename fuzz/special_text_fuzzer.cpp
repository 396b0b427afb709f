// The text form of a CRS: what is accepted is written as a text that is accepted again.

#include <algorithm>

#include "fuzz/Input.h"

using namespace CoordinateTransformation;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = Fuzz::text(data, size);
    const CrsCreator& creator = Fuzz::configuration().getCreator();
    try {
        // Fewer than three fields leave a copy behind on purpose.
        if (std::count(text.begin(), text.end(), ';') < 2) return 0;
        const std::unique_ptr<AbstractCrs> crs(creator.createFromSpecialTextFormat(text));
        const std::string written = crs->getAsText();
        const std::unique_ptr<AbstractCrs> again(creator.createFromSpecialTextFormat(written));
        Fuzz::require(again->isAxisOrderEastNorthOrLonLat() == crs->isAxisOrderEastNorthOrLonLat());
    } catch (const structured_exception& refused) {
        Fuzz::require(*refused.what() != '\0');
    }
    return 0;
}
