#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

class AbstractCrs;

/// Lookup of ready CRS objects by name and by code key. Implemented by CrsConfig, forwarded to by the creator.
///
/// Threads: lookups only read and may run concurrently once the pool is filled.
///
/// Has no state; a copy copies nothing. Not deleted through this interface, which therefore has no virtual
/// destructor.
class COORDTRANS_EXPORT CrsPool {
public:
    /// The CRS registered under exactly `name`: shared, borrowed, valid until the pool is emptied. When there
    /// is none: CrsNotConfigured for the name if `throwIfMissing`, else null.
    virtual const AbstractCrs* getFromNameCache(const std::string& name, bool throwIfMissing) const = 0;
    /// The same by code key: the primary code in decimal, with "*" and the secondary code of a compound CRS
    /// ("31467*5783").
    virtual const AbstractCrs* getFromCodeCache(const std::string& key, bool throwIfMissing) const = 0;

protected:
    ~CrsPool() = default;
};

}  // namespace CoordinateTransformation
