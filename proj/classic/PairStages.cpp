#include "proj/classic/PairStages.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "proj/classic/Numbers.h"

namespace ClassicProj {

namespace {

struct Step {
    std::string text;
    bool backwards;
};

// Collects steps and cuts them into stages.
class StageWriter {
public:
    void add(const std::string& step, bool backwards) {
        if (!step.empty()) steps.push_back({step, backwards});
    }

    void addGridShift(const std::string& step, bool backwards) {
        closeStage();
        stages.push_back({step, backwards, true});
    }

    std::vector<StageText> finish() {
        closeStage();
        return std::move(stages);
    }

private:
    // A single step needs no pipeline around it.
    void closeStage() {
        if (steps.size() == 1) stages.push_back({steps.front().text, steps.front().backwards, false});
        if (steps.size() > 1) stages.push_back({pipeline(), false, false});
        steps.clear();
    }

    std::string pipeline() const {
        std::string text = "+proj=pipeline";
        for (const Step& step : steps) text += (step.backwards ? " +step +inv " : " +step ") + step.text;
        return text;
    }

    std::vector<Step> steps;
    std::vector<StageText> stages;
};

// The semi-axes rather than a name: PROJ takes the ellipsoids of WGS 84 and GRS 80 for one when it is given
// their names, the classic interface does not.
std::string cartesianStep(const Ellipsoid& ellipsoid) {
    return "+proj=cart +a=" + writeNumber(ellipsoid.semiMajor) + " +b=" + writeNumber(ellipsoid.semiMinor);
}

// The linear form: rotations count as small angles, as PROJ has always taken them here.
std::string helmertStep(const std::array<double, 7>& toWgs84) {
    constexpr const char* KEYS[] = {" +x=", " +y=", " +z=", " +rx=", " +ry=", " +rz=", " +s="};
    const bool translatesOnly = std::all_of(toWgs84.begin() + 3, toWgs84.end(), [](double v) { return v == 0; });
    std::string step = translatesOnly ? "+proj=helmert" : "+proj=helmert +convention=position_vector";
    for (std::size_t i = 0; i < (translatesOnly ? 3 : 7); ++i) step += KEYS[i] + writeNumber(toWgs84[i]);
    return step;
}

// A grid of this name shifts nothing anywhere.
bool isNullGrid(const std::string& grids) {
    std::istringstream names(grids);
    names.exceptions(std::ios::badbit);
    for (std::string name; std::getline(names, name, ',');)
        if (name != "null" && name != "@null") return false;
    return true;
}

void addGrids(StageWriter& stages, const Datum& datum, bool backwards) {
    if (datum.kind == DatumKind::GRIDS && !isNullGrid(datum.grids))
        stages.addGridShift("+proj=hgridshift +grids=" + datum.grids, backwards);
}

void addGeocentricShift(StageWriter& stages, const Datum& source, const Datum& target) {
    const bool byHelmert = source.kind == DatumKind::HELMERT || target.kind == DatumKind::HELMERT;
    if (!byHelmert && source.meetingEllipsoid == target.meetingEllipsoid) return;
    stages.add(cartesianStep(source.meetingEllipsoid), false);
    if (source.kind == DatumKind::HELMERT) stages.add(helmertStep(source.toWgs84), false);
    if (target.kind == DatumKind::HELMERT) stages.add(helmertStep(target.toWgs84), true);
    stages.add(cartesianStep(target.meetingEllipsoid), true);
}

void addDatumShift(StageWriter& stages, const Datum& source, const Datum& target) {
    if (needsNoShift(source, target)) return;
    addGrids(stages, source, false);
    addGeocentricShift(stages, source, target);
    addGrids(stages, target, true);
}

// Forwards from heights above the ellipsoid to heights above the geoid.
void addGeoid(StageWriter& stages, const Definition& definition, bool backwards) {
    if (!definition.geoidGrids.empty())
        stages.addGridShift("+proj=vgridshift +grids=" + definition.geoidGrids, backwards);
}

}  // namespace

std::vector<StageText> writeStages(const Definition& source, const Definition& target, bool withHeights) {
    StageWriter stages;
    stages.add(source.step, true);
    if (withHeights) addGeoid(stages, source, true);
    addDatumShift(stages, source.datum, target.datum);
    if (withHeights) addGeoid(stages, target, false);
    stages.add(target.step, false);
    return stages.finish();
}

}  // namespace ClassicProj
