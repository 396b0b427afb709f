// Reads names. The forms of an accepted name have the same codes. A refused name raises an exception of the family or
// std::out_of_range.

#include <stdexcept>

#include "QuarvelSrv/SrsFormattingOptions.h"
#include "fuzz/Input.h"

using namespace CoordinateTransformation;

namespace {

void requireSameCodes(const CrsCreator& creator, const AbstractCrs& crs, const std::string& name) {
    const Crs again = creator.createFromName(name, true, false);
    Fuzz::require(again->getPrimaryCode() == crs.getPrimaryCode());
    Fuzz::require(again->getSecCompoundCode() == crs.getSecCompoundCode());
}

void writeAndReadAgain(const CrsCreator& creator, const AbstractCrs& crs) {
    const QuarvelSrv::SrsFormattingOptions urn{"6.12", "", 0};
    const QuarvelSrv::SrsFormattingOptions url{"0", "", 2};
    requireSameCodes(creator, crs, crs.getAliasOrIdentifier(false));
    requireSameCodes(creator, crs, crs.getAliasOrAsOgcURN(&urn, false));
    requireSameCodes(creator, crs, crs.getAliasOrAsOgcURN(&url, false));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const CrsCreator& creator = Fuzz::configuration().getCreator();
    try {
        const Crs crs = creator.createFromName(Fuzz::text(data, size), true, false);
        // No form names the default CRS. The forms of a compound have both codes only if its vertical part adds a
        // dimension.
        if (crs->getPrimaryCode() != 0 && (crs->getSecCompoundCode() == 0 || crs->getDim() == 3) &&
            crs->getPrimaryCode() != 4979)
            writeAndReadAgain(creator, *crs.get());
    } catch (const structured_exception& refused) {
        Fuzz::require(*refused.what() != '\0');
    } catch (const std::out_of_range&) {
        // Raised for a compound identifier without the second prefix.
    }
    return 0;
}
