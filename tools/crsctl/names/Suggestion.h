#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>

namespace crsctl {

// One small change that makes a refused name work.
struct Suggestion {
    std::string change;  // "with the prefix in capitals"
    std::string name;    // the name after the change
};

// The first small change of `name` after which `works` accepts it. `configured` are the names that the
// configuration offers, for those that differ in capitals alone.
std::optional<Suggestion> suggest(const std::string& name, const std::set<std::string>& configured,
                                  const std::function<bool(const std::string&)>& works);

}  // namespace crsctl
