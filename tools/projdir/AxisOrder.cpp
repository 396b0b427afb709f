#include "tools/projdir/AxisOrder.h"

namespace ProjDir {
namespace {

struct Axis {
    std::string name;
    std::string direction;
};

Axis readAxis(const ProjContext& context, const PJ* crs, int index) {
    const ProjPtr<PJ> axes(proj_crs_get_coordinate_system(context.get(), crs));
    const char* name = nullptr;
    const char* direction = nullptr;
    if (axes != nullptr)
        proj_cs_get_axis_info(context.get(), axes.get(), index, &name, nullptr, &direction, nullptr, nullptr, nullptr,
                              nullptr);
    return {textOrEmpty(name), textOrEmpty(direction)};
}

}  // namespace

// Axes that point into one direction, at a pole, differ in their names.
bool isNorthAxisFirst(const ProjContext& context, const PJ* crs) {
    const ProjPtr<PJ> normalised(proj_normalize_for_visualization(context.get(), crs));
    return normalised != nullptr && readAxis(context, crs, 0).name != readAxis(context, normalised.get(), 0).name;
}

std::string writeAxisDirections(const ProjContext& context, const PJ* crs) {
    const ProjPtr<PJ> normalised(proj_normalize_for_visualization(context.get(), crs));
    if (normalised == nullptr || proj_get_type(crs) != PJ_TYPE_PROJECTED_CRS) return "";
    const std::string first = readAxis(context, normalised.get(), 0).direction.substr(0, 1);
    const std::string second = readAxis(context, normalised.get(), 1).direction.substr(0, 1);
    if (first == second || first + second == "en") return "";
    return "+axis=" + first + second + "u";
}

}  // namespace ProjDir
