#include "proj/LongitudesAround.h"

namespace CoordinateTransformation {

LongitudesAround::LongitudesAround(double degree)
    : halfTurn(180 * degree), fullTurn(360 * degree), leap(200 * degree) {}

void LongitudesAround::add(double longitude) {
    if (unrolled.isEmpty())
        first = longitude;
    else
        countTurns(longitude - last);
    last = longitude;
    if (longitude + turns < unrolled.least) western = longitude;
    if (longitude + turns > unrolled.greatest) eastern = longitude;
    unrolled.add(longitude + turns);
}

Range LongitudesAround::close() {
    if (unrolled.isEmpty()) return unrolled;
    countTurns(first - last);
    const bool goesAllAround = turns != 0 || unrolled.greatest - unrolled.least >= fullTurn;
    return goesAllAround ? Range{-halfTurn, halfTurn} : Range{western, eastern};
}

void LongitudesAround::countTurns(double step) {
    if (step > leap) turns -= fullTurn;
    if (step < -leap) turns += fullTurn;
}

}  // namespace CoordinateTransformation
