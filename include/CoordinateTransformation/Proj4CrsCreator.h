#pragma once

#include <string>

#include "CoordinateTransformation/CrsCreator.h"
#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

class CoordTransformer;
class CrsConfig;

/// The creator whose CRS objects are bound to PROJ. Its pool is the configuration that owns it, and it offers the CRS
/// of that configuration.
///
/// Threads: the `init` that settles the PROJ directory runs alone in the process, any other one before the creator
/// makes a CRS; the const operations may run concurrently.
///
/// Borrows the configuration and the process-wide transformer.
class COORDTRANS_EXPORT Proj4CrsCreator : public CrsCreator {
public:
    /// Stores the address of `crsConfig`, which outlives the creator. Does not read it before `init`.
    explicit Proj4CrsCreator(const CrsConfig& crsConfig);
    ~Proj4CrsCreator() override;

    /// Forwards to the configuration.
    const AbstractCrs* getFromNameCache(const std::string& name, bool throwIfMissing) const override;
    /// Forwards to the configuration.
    const AbstractCrs* getFromCodeCache(const std::string& key, bool throwIfMissing) const override;
    /// Makes a Proj4Crs. Throws Misconfigured when PROJ does not know the primary code.
    AbstractCrs* createFromCode(unsigned int primary, unsigned int secondary, bool standardAxisOrder) const override;
    /// Settles the PROJ directory for the whole process: the property "Proj4ConfigDir", else the environment variable
    /// "QUARVELSRV_PROJ4_CONF_DIR", else "/opt/quarvelserver/share/proj4". Checks the directory and its files "epsg"
    /// and "epsg-axisorder.csv", loads the axis orders and, if there is a file "epsg-info.csv", the descriptions, and
    /// makes the directory PROJ's search path. After the first success in the process, every later call returns at
    /// once, and another directory has no effect. Throws Misconfigured when the directory or a file is unusable; the
    /// next call then tries again.
    void init() override;
    /// Makes a CRS with codes 0 and 1. Throws Misconfigured when the "epsg" file has no entry for code 0.
    AbstractCrs* createDefault() const override;
    /// Makes a CRS with codes 0 and 0. Throws Misconfigured when the "epsg" file has no entry for code 0.
    AbstractCrs* createUnknown() const override;

protected:
    /// Whether the configuration has the primary code; the secondary code does not matter.
    bool isCrsAllowed(const AbstractCrs* crs) const override;
    /// Whether the configuration property is "true".
    bool isSyntaxAccepted(const std::string& property) const override;
    /// Whether the configuration property "AxisOrderConvention" is "established".
    bool isEstablishedOrder() const override;

private:
    const CoordTransformer* transformer;
    const CrsConfig* config;
};

}  // namespace CoordinateTransformation
