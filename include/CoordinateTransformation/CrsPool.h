#pragma once

#include <string>

#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

class AbstractCrs;

/// Finds ready CRS objects by name and by code key. CrsConfig implements it; a creator forwards to CrsConfig.
///
/// Threads: lookups only read and may run concurrently once the pool is filled.
///
/// Has no state; a copy copies nothing. Objects are not deleted through this interface, so it has no virtual
/// destructor.
class COORDTRANS_EXPORT CrsPool {
public:
    /// The CRS registered under exactly `name`: shared, borrowed, valid until the pool is emptied. When there is none,
    /// throws CrsNotConfigured if `throwIfMissing` is true and returns null otherwise.
    virtual const AbstractCrs* getFromNameCache(const std::string& name, bool throwIfMissing) const = 0;
    /// Looks a CRS up by its code key, in the same way. The key is the primary code in decimal; for a compound CRS "*"
    /// and the secondary code follow ("31467*5783").
    virtual const AbstractCrs* getFromCodeCache(const std::string& key, bool throwIfMissing) const = 0;

protected:
    ~CrsPool() = default;
};

}  // namespace CoordinateTransformation
