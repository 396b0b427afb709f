#pragma once

#include <cstddef>
#include <type_traits>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

class CrsConfig;

/// Selects the constructor of an empty Crs handle.
struct NullConstruction {};

/// A handle to a CRS that it either owns or borrows. A borrowed CRS belongs to a cache and is never changed or deleted
/// through the handle: the first modification makes a private copy (copy-on-write).
///
/// Threads: one thread at a time uses a handle. Many may share the borrowed CRS behind it.
///
/// An owned CRS belongs to exactly one handle; a borrowed one outlives its handles. The copy of a handle borrows the
/// same CRS, or owns a copy of the CRS that the first one owns.
class COORDTRANS_EXPORT Crs {
    // Accepts pointers to a CRS and nullptr. Excludes classes that convert to a pointer, such as a handle.
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
    /// Borrows the CRS that `other` borrows, or owns a copy of the CRS that `other` owns.
    Crs(const Crs& other);
    /// Leaves `other` empty.
    Crs(Crs&& other) noexcept;
    virtual ~Crs();

    /// Releases the CRS that it owns, then acts as the copy constructor.
    Crs& operator=(const Crs& other);
    /// Releases the CRS that it owns, and leaves `other` empty.
    Crs& operator=(Crs&& other) noexcept;
    /// Releases the CRS that it owns and borrows `borrowed`; null empties the handle. REQUIRES: the handle does not own
    /// `borrowed`.
    Crs& operator=(const AbstractCrs* borrowed);
    /// Releases the CRS that it owns and takes ownership of `owned`. Does nothing when the handle already holds
    /// `owned`, even if it is borrowed.
    void operator=(AbstractCrs* owned);

    /// The CRS, or null for an empty handle. Never copies.
    const AbstractCrs* get() const { return crs; }
    /// The CRS. Never copies. REQUIRES: the handle is not empty.
    const AbstractCrs* operator->() const { return crs; }
    /// Same as get().
    operator const AbstractCrs*() { return crs; }
    /// Same as get().
    operator const AbstractCrs*() const { return crs; }
    /// The CRS for modification; null for an empty handle. A borrowed CRS is copied first.
    AbstractCrs* mod();
    /// Same as mod(): copies a borrowed CRS.
    operator AbstractCrs*() { return mod(); }
    /// Whether the handle holds a CRS. Deliberately not const: if it were, `if (handle)` on a modifiable handle would
    /// choose the conversion that copies.
    operator bool() { return crs != nullptr; }
    /// Whether the handle holds this very object.
    bool operator==(const AbstractCrs* other) const { return crs == other; }
    /// The negation of operator==.
    bool operator!=(const AbstractCrs* other) const { return crs != other; }
    // Without these the conversions would make the comparisons ambiguous, or choose the one that copies.
    /// Whether both handles hold the same object, or none.
    bool operator==(const Crs& other) const { return crs == other.crs; }
    /// The negation of operator==.
    bool operator!=(const Crs& other) const { return crs != other.crs; }
    /// Whether the handle holds this very object.
    bool operator==(AbstractCrs* other) const { return crs == other; }
    /// The negation of operator==.
    bool operator!=(AbstractCrs* other) const { return crs != other; }
    /// Whether the handle is empty.
    bool operator==(std::nullptr_t) const { return crs == nullptr; }
    /// Whether the handle holds a CRS.
    bool operator!=(std::nullptr_t) const { return crs != nullptr; }
    /// Whether the handle holds this very object, or no object for nullptr.
    template <typename Pointer, IfComparable<Pointer> = true>
    friend bool operator==(Pointer other, const Crs& handle) {
        return handle.get() == other;
    }
    /// The negation of operator==.
    template <typename Pointer, IfComparable<Pointer> = true>
    friend bool operator!=(Pointer other, const Crs& handle) {
        return handle.get() != other;
    }
    /// Whether the CRS is borrowed. Meaningless for an empty handle.
    bool isHoldingConst() const { return holdingConst; }
    /// True for an empty handle and for the unknown CRS; false for the default CRS.
    bool isNotSetOrUnknown() const { return crs == nullptr || crs->isUnknown(); }

    /// Reduces the CRS to two dimensions. If that changes it, a borrowed CRS is copied first. REQUIRES: the handle is
    /// not empty.
    void forceDim2D();
    /// Puts easting or longitude first. If that changes the CRS, a borrowed one is copied first. REQUIRES: the handle
    /// is not empty.
    void forceWmsAxisOrder();

private:
    friend class CrsConfig;

    COORDTRANS_INTERNAL Crs();
    COORDTRANS_INTERNAL AbstractCrs* getModifiableCopy();
    COORDTRANS_INTERNAL void deleteNonConstCrs();
    COORDTRANS_INTERNAL void slurp(const Crs& other);

    // Modifiable whether owned or borrowed; holdingConst forbids writing through it.
    AbstractCrs* crs = nullptr;
    bool holdingConst = false;
};

}  // namespace CoordinateTransformation
