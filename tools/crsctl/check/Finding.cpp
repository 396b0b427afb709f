#include "tools/crsctl/check/Finding.h"

#include <iterator>
#include <list>
#include <tuple>

namespace crsctl {

void sortByPlace(Findings& findings) {
    // std::stable_sort of some standard libraries calls what newer compilers warn of; a list sorts stably by itself.
    std::list<Finding> sorted(std::make_move_iterator(findings.begin()), std::make_move_iterator(findings.end()));
    sorted.sort([](const Finding& left, const Finding& right) {
        return std::tie(left.place.file, left.place.line, left.place.column) <
               std::tie(right.place.file, right.place.line, right.place.column);
    });
    findings.assign(std::make_move_iterator(sorted.begin()), std::make_move_iterator(sorted.end()));
}

}  // namespace crsctl
