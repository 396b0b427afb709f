// Init files and definitions: every definition found is refused or becomes one that transforms or fails cleanly.

#include <cmath>

#include "fuzz/Input.h"
#include "proj/classic/ClassicProj.h"
#include "proj/classic/InitFile.h"

using namespace ClassicProj;

namespace {

void transformOnePoint(projPJ definition) {
    static const projPJ wgs84 = pj_init_plus_ctx(nullptr, "+proj=longlat +datum=WGS84 +no_defs");
    double x = 0.15;
    double y = 0.9;
    double z = 100;
    const int error = pj_transform(wgs84, definition, 1, 1, &x, &y, &z);
    Fuzz::require(error == 0 ? std::isfinite(x) && std::isfinite(y) : x == 0.15 && y == 0.9 && z == 100);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const auto& [code, text] : parseInitFile(Fuzz::text(data, size))) {
        Fuzz::require(code.find_first_of("<> \t\r\n") == std::string::npos);
        if (const projPJ definition = pj_init_plus_ctx(nullptr, text.c_str())) transformOnePoint(definition);
    }
    return 0;
}
