#include "tools/crsctl/check/DefinitionText.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>

#include "text/NumericText.h"

namespace crsctl {
namespace {

const std::set<std::string>& numberKeys() {
    static const std::set<std::string> keys = {"a",   "b",   "rf",  "f",        "es",        "e",       "R",      "k",
                                               "k_0", "x_0", "y_0", "to_meter", "vto_meter", "zone",    "h",      "z_0",
                                               "W",   "M",   "n",   "m",        "q",         "towgs84", "R_lat_a"};
    return keys;
}

const std::set<std::string>& angleKeys() {
    static const std::set<std::string> keys = {"lat_0", "lat_1", "lat_2",   "lat_ts",   "lat_b", "lon_0",
                                               "lon_1", "lon_2", "lonc",    "lon_wrap", "alpha", "gamma",
                                               "azi",   "theta", "o_lat_p", "o_lon_p"};
    return keys;
}

// A number with what PROJ takes behind it: "1/3" for a length, "10d30'E" for an angle.
bool isNumber(std::string_view text, bool isAngle) {
    std::string_view rest = text;
    const std::optional<double> number = CoordinateTransformation::takeDouble(rest);
    if (!number || !std::isfinite(*number)) return false;
    if (rest.empty()) return true;
    if (isAngle) return rest.find_first_not_of("0123456789.dDrR'\"NSEWnsew") == std::string_view::npos;
    return rest.front() == '/' && isNumber(rest.substr(1), false);
}

}  // namespace

std::vector<std::string> splitAtCommas(const std::string& text) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, ',');) parts.push_back(part);
    return parts;
}

bool isBrokenNumber(const std::string& key, const std::string& value) {
    const bool isAngle = angleKeys().count(key) != 0;
    if (!isAngle && numberKeys().count(key) == 0) return false;
    if (value.empty()) return true;
    const std::vector<std::string> numbers = key == "towgs84" ? splitAtCommas(value) : std::vector<std::string>{value};
    return !std::all_of(numbers.begin(), numbers.end(),
                        [isAngle](const std::string& number) { return isNumber(number, isAngle); });
}

}  // namespace crsctl
