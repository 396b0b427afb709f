#include "CoordinateTransformation/Crs.h"

namespace CoordinateTransformation {

// Exists only for the class layout; NullConstruction makes an empty handle.
Crs::Crs() { throw; }

Crs::Crs(NullConstruction) {}

Crs::Crs(AbstractCrs* owned) : crs(owned) {}

Crs::Crs(const AbstractCrs* borrowed) : crs(const_cast<AbstractCrs*>(borrowed)), holdingConst(borrowed != nullptr) {}

Crs::Crs(const Crs& other) : holdingConst(other.holdingConst) { slurp(other); }

Crs::Crs(Crs&& other) noexcept : crs(other.crs), holdingConst(other.holdingConst) { other.crs = nullptr; }

Crs::~Crs() { deleteNonConstCrs(); }

Crs& Crs::operator=(const Crs& other) {
    if (this == &other) return *this;
    deleteNonConstCrs();
    holdingConst = other.holdingConst;
    slurp(other);
    return *this;
}

Crs& Crs::operator=(Crs&& other) noexcept {
    if (this == &other) return *this;
    deleteNonConstCrs();
    crs = other.crs;
    holdingConst = other.holdingConst;
    other.crs = nullptr;
    return *this;
}

Crs& Crs::operator=(const AbstractCrs* borrowed) {
    deleteNonConstCrs();
    crs = const_cast<AbstractCrs*>(borrowed);
    if (borrowed != nullptr) holdingConst = true;
    return *this;
}

void Crs::operator=(AbstractCrs* owned) {
    if (owned == crs) return;
    deleteNonConstCrs();
    crs = owned;
    holdingConst = false;
}

AbstractCrs* Crs::mod() { return crs == nullptr ? nullptr : getModifiableCopy(); }

void Crs::forceDim2D() {
    if (crs->getDim() != 2) getModifiableCopy()->forceDim2D();
}

void Crs::forceWmsAxisOrder() {
    if (!crs->isWmsAxisOrder()) getModifiableCopy()->forceWmsAxisOrder();
}

AbstractCrs* Crs::getModifiableCopy() {
    if (holdingConst) {
        crs = crs->copy();
        holdingConst = false;
    }
    return crs;
}

void Crs::deleteNonConstCrs() {
    if (!holdingConst) delete crs;
}

// Empties the handle first: after a failed copy it must not refer to a CRS that the caller has released.
void Crs::slurp(const Crs& other) {
    crs = nullptr;
    if (other.crs != nullptr) crs = other.holdingConst ? other.crs : other.crs->copy();
}

}  // namespace CoordinateTransformation
