#pragma once

#include <cstdint>
#include <string>

#include "CoordinateTransformation/CRSindicationFormatInfo.h"
#include "CoordinateTransformation/Export.h"

namespace QuarvelSrv {
struct SrsFormattingOptions;
}  // namespace QuarvelSrv

namespace CoordinateTransformation {

class CoordTransformer;
class CrsCreator;

/// One coordinate reference system: an EPSG code, optionally compound with a vertical EPSG code, with its dimension,
/// axis order, scale factors and alias. The unknown CRS has both codes 0. The default CRS has primary code 0 and
/// another secondary code.
///
/// Threads: no lock. Objects from caches are shared and must only be read; to change one, copy it first.
///
/// Refers to its creator and its transformer and owns neither. `getCreator` needs the creator alive, `transformTo` the
/// transformer. A copy made by `copy()` or the copy constructor has every field equal; assignment keeps the identifier,
/// creator and transformer of the target.
class COORDTRANS_EXPORT AbstractCrs {
public:
    /// Returns a new object of the concrete class with every field equal. The caller owns it.
    virtual AbstractCrs* copy() const = 0;
    virtual ~AbstractCrs();
    /// Length in metres of one unit of the horizontal coordinates: a degree for a geographic CRS.
    virtual double getUnitEquivalentInM() const = 0;
    /// The negation of isGeographic().
    virtual bool isCartesian() const = 0;
    /// Whether the horizontal coordinates are angles (degrees in this interface).
    virtual bool isGeographic() const = 0;
    /// Copies codes, version, alias, dimensions, axis order and scale factors.
    virtual AbstractCrs& operator=(const AbstractCrs& other);
    /// Derives the dimensions from the codes.
    virtual void setDimFromCodes() = 0;
    /// Sets new codes, binds the CRS to them and, unless `primary` is 0, rewrites the identifier. With
    /// `applyEpsgStandards` it also sets the EPSG axis order and the dimension of the codes. Throws Misconfigured when
    /// the primary code cannot be bound; the CRS then already has the new codes.
    virtual void setCode(unsigned int primary, unsigned int secondary, bool applyEpsgStandards) = 0;
    /// Sets the axis order that EPSG defines for the primary code, or east-north when EPSG defines none.
    virtual void setEpsgStandardAxisOrder() = 0;
    /// Acts as setCode without EPSG standards, then sets axis order and scale factors. The dimensions stay.
    virtual void setCustomProperties(unsigned int primary, unsigned int secondary, bool eastNorthOrLonLat,
                                     double primaryScale, double secCompoundScale) = 0;
    /// Reduces the CRS to two dimensions and keeps codes and identifier. getAliasOrAsOgcURN then writes a compound CRS
    /// as its horizontal part.
    virtual void forceDim2D();
    /// \param eastNorthOrLonLat true for easting or longitude first, false for northing or latitude first.
    virtual void setAxisOrderEastNorthOrLonLat(bool eastNorthOrLonLat);
    /// Switches between EPSG 4326 (`dim` 2) and 4979 (`dim` 3), and drops the vertical part of a compound CRS (`dim`
    /// 2). Ignores any other request. Never rewrites the identifier.
    virtual void setDim(unsigned int dim);

    /// Stores references to creator and transformer; the class comment states how long they must live.
    AbstractCrs(const CrsCreator& crsCreator, const CoordTransformer& crsTransformer);
    /// Copies every field, creator and transformer included.
    AbstractCrs(const AbstractCrs& other);

    /// The EPSG code of the CRS, or of the horizontal part of a compound CRS; 0 for the unknown and the default CRS.
    unsigned int getPrimaryCode() const { return primaryCode; }
    /// The EPSG code of the vertical part; 0 when the CRS is not compound.
    unsigned int getSecCompoundCode() const { return secCompoundCode; }
    /// The number of dimensions, 2 or 3, the vertical one included.
    unsigned int getDim() const { return primaryDim + compoundDim; }
    /// The factor of the horizontal coordinates, initially 1. CoordTransformer::transformTo documents its use.
    double getPrimaryScaleFactor() const { return primaryScaleFactor; }
    /// The factor of heights: 1 for a CRS of two dimensions, the secondary factor for a compound CRS, the primary
    /// factor otherwise.
    double getCompoundScaleFactor() const;
    /// The creator that made this CRS. REQUIRES: it has not been destroyed.
    const CrsCreator& getCreator() const { return creator; }
    /// Whether easting or longitude comes first.
    bool isAxisOrderEastNorthOrLonLat() const { return axisOrderEastNorthOrLonLat; }
    /// The same flag under the name that WMS uses: easting or longitude first is the WMS axis order.
    bool isWmsAxisOrder() const { return axisOrderEastNorthOrLonLat; }
    /// The alias under which the CRS is configured or was requested; empty when there is none.
    const std::string& getAlias() const { return alias; }
    /// Sets the alias, or removes it when `text` is empty. Caches are not updated.
    void setAlias(const std::string& text) { alias = text; }
    /// The EPSG dataset version from the URN or URL that named the CRS; empty when it had none.
    const std::string& getEpsgVersion() const { return epsgVersion; }
    /// Sets the EPSG dataset version that URNs and URLs are written with. Any text is accepted, for example "6.12".
    void setEpsgVersion(const std::string& text) { epsgVersion = text; }
    /// Sets the factor of the horizontal coordinates.
    void setPrimaryScaleFactor(double factor) { primaryScaleFactor = factor; }
    /// Sets the factor of the heights of a compound CRS.
    void setSecCompoundScaleFactor(double factor) { secCompoundScaleFactor = factor; }
    /// Sets both scale factors.
    void setScaleFactors(double primary, double secCompound);
    /// Puts easting or longitude first.
    void forceWmsAxisOrder() { axisOrderEastNorthOrLonLat = true; }
    /// Returns the five properties that setCustomProperties sets.
    void get(unsigned int& primary, unsigned int& secondary, bool& eastNorthOrLonLat, double& primaryScale,
             double& secCompoundScale) const;

    /// Whether both codes are 0.
    bool isUnknown() const { return primaryCode == 0 && secCompoundCode == 0; }
    /// Sets both codes to 0; identifier and dimensions stay.
    void setUnknown();
    /// Whether the primary code is 0 and the secondary is not.
    bool isDefault() const { return primaryCode == 0 && secCompoundCode != 0; }
    /// Sets the codes to 0 and 1; identifier and dimensions stay.
    void setDefault();

    /// Whether codes, dimensions, axis order and alias are equal. Scale factors, identifier and version do not count.
    bool operator==(const AbstractCrs& other) const;
    /// The negation of operator==.
    bool operator!=(const AbstractCrs& other) const { return !(*this == other); }
    /// Compares by operator==. REQUIRES: `other` is not null.
    bool isEqual(const AbstractCrs* other) const { return *this == *other; }
    /// Whether the primary codes are equal, or one is 4326 and the other 4979. REQUIRES: `other` is not null.
    bool isCodeCompatible(const AbstractCrs* other) const;
    /// Whether the CRS is code-compatible with `other` and has the same axis order, scale factors and dimension, so
    /// that coordinates need no change. REQUIRES: `other` is not null.
    bool isCompatible(const AbstractCrs* other) const;

    /// Transforms a point of this CRS into `target`, in place. `x` and `y` are in the order of each CRS's axis flag.
    /// Their unit is the degree for a geographic CRS and the CRS's own unit otherwise; z is in the unit that the
    /// definition of each CRS gives to heights. CoordTransformer::transformTo documents the use of scale factors.
    /// Throws TransExecException when PROJ refuses the point, which then holds intermediate values. REQUIRES: `target`
    /// is not null.
    void transformTo(const AbstractCrs* target, double& x, double& y, double& z) const;
    /// Transforms a two-dimensional point in the same way.
    void transformTo(const AbstractCrs* target, double& x, double& y) const;

    /// The alias if `useAlias` is true and there is one, otherwise the identifier ("EPSG:27700*EPSG:5701").
    std::string getAliasOrIdentifier(bool useAlias) const;
    /// The alias if `useAlias` is true and there is one. Otherwise an OGC URN, an OGC http URL or a prefix with the
    /// code, as `options` asks; null asks for a URN with the CRS's own version. Empty for an unknown or default CRS.
    std::string getAliasOrAsOgcURN(const QuarvelSrv::SrsFormattingOptions* options, bool useAlias) const;
    /// The alias if `useAlias` is true and there is one, otherwise the form that `info.format` selects; empty for an
    /// unknown format. With format 1 throws QSHelpers::UnexpectedException under the conditions of getAsURL.
    std::string getAliasOrAsFormat(const CRSindicationFormatInfo& info, bool useAlias) const;
    /// Returns `base`, "#" and a template in which the primary code replaces each control character U+0001 (not the
    /// digit) and the secondary code each U+0002. A CRS with a secondary code takes the compound template. Throws
    /// QSHelpers::UnexpectedException for an unknown or default CRS.
    std::string getAsURL(const std::string& base, const std::string& simpleTemplate,
                         const std::string& compoundTemplate) const;
    /// The text form that CrsCreator::createFromSpecialTextFormat reads: identifier, "EN" or "NE", and the scale
    /// factors, separated by ";". Throws QSHelpers::UnexpectedException for an unknown or default CRS.
    std::string getAsText() const;

    /// Reads the transformer.
    friend class PointTransformer;

protected:
    /// See getPrimaryCode().
    std::uint32_t primaryCode = 0;
    /// See getSecCompoundCode().
    std::uint32_t secCompoundCode = 0;
    /// "EPSG:4326", or "EPSG:27700*EPSG:5701" for a compound CRS. Only setCode writes it.
    std::string identifier;
    /// The dimensions of the primary CRS: 3 for EPSG 4979, 2 for any other.
    std::uint32_t primaryDim = 2;
    /// The dimensions of the vertical CRS: 1 for a compound CRS, 0 for any other.
    std::uint32_t compoundDim = 0;
    /// See isAxisOrderEastNorthOrLonLat().
    bool axisOrderEastNorthOrLonLat = true;
    /// See getAlias().
    std::string alias;
    /// See getEpsgVersion().
    std::string epsgVersion;
    /// See getPrimaryScaleFactor().
    double primaryScaleFactor = 1.0;
    /// The factor of the heights of a compound CRS.
    double secCompoundScaleFactor = 1.0;
    /// The creator that made this CRS; not owned.
    const CrsCreator& creator;
    /// The transformer of this CRS; not owned.
    const CoordTransformer& transformer;
};

}  // namespace CoordinateTransformation
