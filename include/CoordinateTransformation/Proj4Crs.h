#pragma once

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/Export.h"

namespace CoordinateTransformation {

/// A CRS bound to a PROJ projection object through its primary code. All CRS of one primary code share one PROJ object,
/// which is made at first use and kept until the process ends.
///
/// Threads: any thread may make one; otherwise as AbstractCrs.
///
/// Does not own the PROJ object. Assignment between Proj4Crs objects copies the binding; assignment through AbstractCrs
/// copies the codes and leaves the target bound to its previous code.
class COORDTRANS_EXPORT Proj4Crs : public AbstractCrs {
public:
    /// Throws Misconfigured when the primary code is not in the "epsg" file or PROJ cannot make its definition.
    Proj4Crs(const CrsCreator& crsCreator, const CoordTransformer& crsTransformer, unsigned int primary,
             unsigned int secondary, bool applyEpsgStandards);
    /// Makes a copy with every field equal and bound to the same PROJ object.
    Proj4Crs(const Proj4Crs& other);

    AbstractCrs* copy() const override;
    ~Proj4Crs() override;
    /// 111319.4907931134 (one degree on the WGS 84 equator) for a geographic CRS, 1.0 for any other: its unit always
    /// counts as the metre.
    double getUnitEquivalentInM() const override;
    bool isCartesian() const override;
    bool isGeographic() const override;
    using AbstractCrs::operator=;
    /// Assigns as AbstractCrs does, and copies the binding of `other`.
    Proj4Crs& operator=(const Proj4Crs& other);
    /// 4979 has three dimensions and no vertical part, another compound CRS two and one, any other CRS two.
    void setDimFromCodes() override;
    void setCode(unsigned int primary, unsigned int secondary, bool applyEpsgStandards) override;
    void setEpsgStandardAxisOrder() override;
    void setCustomProperties(unsigned int primary, unsigned int secondary, bool eastNorthOrLonLat, double primaryScale,
                             double secCompoundScale) override;

    /// The PROJ projection object; not owned. Null after a setCode that failed to bind the code.
    void* getProjDef() const { return projDef; }

private:
    COORDTRANS_INTERNAL void initProj4();

    void* projDef = nullptr;
};

}  // namespace CoordinateTransformation
