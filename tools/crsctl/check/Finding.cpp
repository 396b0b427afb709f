#include "tools/crsctl/check/Finding.h"

#include <algorithm>
#include <tuple>

namespace crsctl {

void sortByPlace(Findings& findings) {
    std::stable_sort(findings.begin(), findings.end(), [](const Finding& left, const Finding& right) {
        return std::tie(left.place.file, left.place.line, left.place.column) <
               std::tie(right.place.file, right.place.line, right.place.column);
    });
}

}  // namespace crsctl
