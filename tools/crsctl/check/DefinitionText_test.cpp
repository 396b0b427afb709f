#include "tools/crsctl/check/DefinitionText.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace crsctl {
namespace {

using Parameters = std::vector<std::pair<std::string, std::string>>;

TEST(ANumber, IsOneWhereNumbersBelong) {
    for (const auto& [key, value] : Parameters{{"towgs84", "1,-2.5,+3e-2,0,0,0,0"},
                                               {"x_0", "500000.0"},
                                               {"to_meter", "12/39.37"},
                                               {"lat_0", "52d9'22.178\"N"},
                                               {"lon_0", "-9"},
                                               {"lonc", "90W"},
                                               {"lonc", "90E"},
                                               {"x_0", "1e-999"},
                                               {"ellps", "nan"},
                                               {"pm", "paris"}})
        EXPECT_FALSE(isBrokenNumber(key, value)) << key << "=" << value;
}

TEST(ANumber, IsBrokenOtherwise) {
    for (const auto& [key, value] : Parameters{{"towgs84", "nan"},
                                               {"towgs84", "1,2,NaN"},
                                               {"towgs84", "1,,3"},
                                               {"towgs84", ""},
                                               {"x_0", "inf"},
                                               {"x_0", "500km"},
                                               {"k", "O.9996"},
                                               {"a", "1e999"},
                                               {"x_0", "+-5"},
                                               {"to_meter", "1/"},
                                               {"zone", "thirty"},
                                               {"lat_0", "nan"},
                                               {"lon_0", "x9"},
                                               {"lon_0", "9,5"}})
        EXPECT_TRUE(isBrokenNumber(key, value)) << key << "=" << value;
}

}  // namespace
}  // namespace crsctl
