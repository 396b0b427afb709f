#pragma once

#include <cstddef>
#include <type_traits>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

class CrsConfig;

/// Selects the constructor of an empty Crs handle.
struct NullConstruction {};

/// A handle to a CRS that it either owns or borrows; a borrowed CRS belongs to a cache and is never changed
/// or deleted through the handle: the first modification makes a private copy (copy-on-write).
///
/// Threads: a handle is used by one thread at a time; the borrowed CRS behind it may be shared by many.
///
/// An owned CRS belongs to exactly one handle; a borrowed one outlives it. Copying a handle that borrows
/// copies no CRS, copying one that owns copies the CRS.
class COORDTRANS_EXPORT Crs {
    // A pointer to a CRS or nullptr; no class, such as a handle, that merely converts to one.
    template <typename Pointer>
    using IfComparable =
        std::enable_if_t<!std::is_class_v<Pointer> && std::is_convertible_v<Pointer, const AbstractCrs*>, bool>;

public:
    /// An empty handle.
    Crs(NullConstruction);
    /// Takes ownership of `owned`, which may be null.
    Crs(AbstractCrs* owned);
    /// Borrows `borrowed`; an empty handle when it is null.
    Crs(const AbstractCrs* borrowed);
    /// Borrows what `other` borrows, owns a copy of what it owns.
    Crs(const Crs& other);
    /// Leaves `other` empty.
    Crs(Crs&& other) noexcept;
    virtual ~Crs();

    /// Releases what was owned, then as the copy constructor.
    Crs& operator=(const Crs& other);
    /// Releases what was owned and leaves `other` empty.
    Crs& operator=(Crs&& other) noexcept;
    /// Releases what was owned and borrows `borrowed`; null empties the handle. REQUIRES: `borrowed` is not
    /// the CRS that the handle owns.
    Crs& operator=(const AbstractCrs* borrowed);
    /// Releases what was owned and takes ownership of `owned`. Nothing happens when `owned` is the CRS held
    /// already, even if it is borrowed.
    void operator=(AbstractCrs* owned);

    /// The CRS held, or null; never copies.
    const AbstractCrs* get() const { return crs; }
    /// The CRS held. REQUIRES: the handle is not empty.
    const AbstractCrs* operator->() const { return crs; }
    /// As get().
    operator const AbstractCrs*() { return crs; }
    /// As get().
    operator const AbstractCrs*() const { return crs; }
    /// The CRS for modification, copied first when borrowed; null for an empty handle.
    AbstractCrs* mod();
    /// As mod(): copies a borrowed CRS.
    operator AbstractCrs*() { return mod(); }
    /// Whether the handle holds a CRS. Not const on purpose: were it const, `if (handle)` on a modifiable
    /// handle would choose the conversion that copies.
    operator bool() { return crs != nullptr; }
    /// Identity, not equality.
    bool operator==(const AbstractCrs* other) const { return crs == other; }
    /// The negation of operator==.
    bool operator!=(const AbstractCrs* other) const { return crs != other; }
    // Without these the conversions would make the comparisons ambiguous, or choose the one that copies.
    /// Whether both handles hold the same object, or none.
    bool operator==(const Crs& other) const { return crs == other.crs; }
    /// The negation of operator==.
    bool operator!=(const Crs& other) const { return crs != other.crs; }
    /// Identity, not equality.
    bool operator==(AbstractCrs* other) const { return crs == other; }
    /// The negation of operator==.
    bool operator!=(AbstractCrs* other) const { return crs != other; }
    /// Whether the handle is empty.
    bool operator==(std::nullptr_t) const { return crs == nullptr; }
    /// Whether the handle holds a CRS.
    bool operator!=(std::nullptr_t) const { return crs != nullptr; }
    /// Identity, with the pointer or nullptr first.
    template <typename Pointer, IfComparable<Pointer> = true>
    friend bool operator==(Pointer other, const Crs& handle) {
        return handle.get() == other;
    }
    /// The negation of operator==.
    template <typename Pointer, IfComparable<Pointer> = true>
    friend bool operator!=(Pointer other, const Crs& handle) {
        return handle.get() != other;
    }
    /// Whether the CRS is borrowed. Says nothing about an empty handle.
    bool isHoldingConst() const { return holdingConst; }
    /// True for an empty handle and for the unknown CRS; false for the default CRS.
    bool isNotSetOrUnknown() const { return crs == nullptr || crs->isUnknown(); }

    /// Reduces the CRS to two dimensions, on a private copy, only where that changes it.
    /// REQUIRES: the handle is not empty.
    void forceDim2D();
    /// Puts easting or longitude first, on a private copy, only where that changes the CRS.
    /// REQUIRES: the handle is not empty.
    void forceWmsAxisOrder();

private:
    friend class CrsConfig;

    COORDTRANS_INTERNAL Crs();
    COORDTRANS_INTERNAL AbstractCrs* getModifiableCopy();
    COORDTRANS_INTERNAL void deleteNonConstCrs();
    COORDTRANS_INTERNAL void slurp(const Crs& other);

    // Held as modifiable whether owned or borrowed; holdingConst forbids writing through it.
    AbstractCrs* crs = nullptr;
    bool holdingConst = false;
};

}  // namespace CoordinateTransformation
