#pragma once

#include <string>

#include "CoordinateTransformation/CrsCreator.h"
#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

class CoordTransformer;
class CrsConfig;

/// The creator whose CRS objects are bound to PROJ. Its pool is the configuration that owns it, and it offers
/// what that configuration offers.
///
/// Threads: `init` runs on one thread before any CRS is made; the const operations may run concurrently.
///
/// Borrows the configuration and the process-wide transformer.
class COORDTRANS_EXPORT Proj4CrsCreator : public CrsCreator {
public:
    /// Stores the address of `crsConfig`, which outlives the creator. Nothing is read before `init`.
    explicit Proj4CrsCreator(const CrsConfig& crsConfig);
    ~Proj4CrsCreator() override;

    /// Forwarded to the configuration.
    const AbstractCrs* getFromNameCache(const std::string& name, bool throwIfMissing) const override;
    /// Forwarded to the configuration.
    const AbstractCrs* getFromCodeCache(const std::string& key, bool throwIfMissing) const override;
    /// A new Proj4Crs. Misconfigured when PROJ does not know the primary code.
    AbstractCrs* createFromCode(unsigned int primary, unsigned int secondary, bool standardAxisOrder) const override;
    /// Settles the PROJ directory for the whole process: property "Proj4ConfigDir", else environment variable
    /// "QUARVELSRV_PROJ4_CONF_DIR", else "/opt/quarvelserver/share/proj4". Checks it and its files "epsg" and
    /// "epsg-axisorder.csv", loads the axis orders and, if there is a file "epsg-info.csv", the descriptions, and gives
    /// the directory to PROJ. Once that has succeeded in the process, every later call returns at once and another
    /// directory has no effect. Misconfigured when the directory or a file does not serve; the next call then tries
    /// again.
    void init() override;
    /// Codes 0 and 1. Needs an entry for code 0 in the "epsg" file, else Misconfigured.
    AbstractCrs* createDefault() const override;
    /// Codes 0 and 0. Needs an entry for code 0 in the "epsg" file, else Misconfigured.
    AbstractCrs* createUnknown() const override;

protected:
    /// Whether the configuration holds the primary code; the secondary plays no part.
    bool isCrsAllowed(const AbstractCrs* crs) const override;
    /// Whether the configuration property is "true".
    bool isSyntaxAccepted(const std::string& property) const override;

private:
    const CoordTransformer* transformer;
    const CrsConfig* config;
};

}  // namespace CoordinateTransformation
