// Reads text forms of a CRS. An accepted text is written as a text that is accepted too.

#include <algorithm>

#include "fuzz/Input.h"

using namespace CoordinateTransformation;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = Fuzz::text(data, size);
    const CrsCreator& creator = Fuzz::configuration().getCreator();
    try {
        // A text with fewer than three fields leaks a copy on purpose.
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
