#include "tools/crsctl/check/NameClaims.h"

#include <map>

#include "tools/common/Text.h"
#include "tools/crsctl/names/NameReport.h"
#include "tools/crsctl/names/RegisteredNames.h"

namespace crsctl {

using Tools::printable;

using CoordinateTransformation::AbstractCrs;

namespace {

struct Claim {
    std::size_t line;
    std::string codeKey;
    std::string axisOrder;
};

bool answersAlike(const Claim& left, const Claim& right) {
    return left.codeKey == right.codeKey && left.axisOrder == right.axisOrder;
}

std::string inWords(const Claim& claim) { return "EPSG " + claim.codeKey + " in the order " + claim.axisOrder; }

Claim claimOf(const ClaimingEntry& entry, bool eastNorth) {
    return {entry.place.line, codeKeyOf(*entry.crs), axisOrderWords(entry.crs->isGeographic(), eastNorth)};
}

// The identifier of the entry was an alias of an earlier one, and so it got that one's CRS.
bool isAnsweredByAlias(const ClaimingEntry& entry) {
    const std::string& alias = entry.crs->getAlias();
    return !alias.empty() && alias == entry.data->getIdentifier();
}

class ClaimRegister {
public:
    // The first claim of a name stays, as it does in the library.
    void add(const std::string& name, const Claim& claim, const Place& place) {
        const auto [first, isNew] = claims.emplace(name, claim);
        if (isNew || answersAlike(first->second, claim)) return;
        found.push_back({Severity::WARNING, place,
                         "the name " + printable(name) + " is claimed twice: it answers with " +
                             inWords(first->second) +
                             (first->second.line == claim.line
                                  ? ", the alias of this entry, not with "
                                  : ", from line " + std::to_string(first->second.line) + ", not with ") +
                             inWords(claim)});
    }

    // An entry that got the CRS of an earlier alias registers nothing that is not registered already.
    void addEntry(const ClaimingEntry& entry) {
        const bool own = entry.crs->isAxisOrderEastNorthOrLonLat();
        if (entry.data->isMapped()) {
            const bool eastNorth = entry.data->getAxisOrderEastNorthOrLonLat().value_or(own);
            add(entry.data->getAlias(), claimOf(entry, eastNorth), entry.place);
        }
        if (isAnsweredByAlias(entry)) return;
        for (const std::string& name : namesRegisteredFor(*entry.crs)) add(name, claimOf(entry, own), entry.place);
    }

    Findings take() { return std::move(found); }

private:
    std::map<std::string, Claim> claims;
    Findings found;
};

Finding answeredByAlias(const ClaimingEntry& entry) {
    return {Severity::WARNING, entry.place,
            "its identifier " + printable(entry.data->getIdentifier()) +
                " is an alias of an earlier entry: it offers EPSG " + codeKeyOf(*entry.crs)};
}

}  // namespace

Findings contestedNames(const std::vector<ClaimingEntry>& entries) {
    ClaimRegister claims;
    Findings answered;
    for (const ClaimingEntry& entry : entries) {
        claims.addEntry(entry);
        if (isAnsweredByAlias(entry)) answered.push_back(answeredByAlias(entry));
    }
    Findings findings = claims.take();
    findings.insert(findings.end(), answered.begin(), answered.end());
    return findings;
}

}  // namespace crsctl
