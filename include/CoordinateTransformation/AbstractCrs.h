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

/// One coordinate reference system: an EPSG code, optionally compound with a vertical EPSG code, with its
/// dimension, axis order, scale factors and alias. Both codes 0 mean the unknown CRS, primary code 0 with a
/// secondary code the default CRS.
///
/// Threads: no lock. Objects handed out by caches are shared and only read; change a copy of your own.
///
/// Refers to its creator, which `getCreator` needs alive, and to its transformer, which `transformTo` needs alive;
/// owns neither. A copy made by `copy()` or the copy constructor has every field equal; assignment leaves
/// `identifier`, creator and transformer of the target as they were.
class COORDTRANS_EXPORT AbstractCrs {
public:
    /// A new object of the concrete class with every field equal, owned by the caller.
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
    /// Takes new codes, rewrites the identifier unless `primary` is 0, and binds the CRS to them; with
    /// `applyEpsgStandards` also takes the EPSG axis order and the dimension of the codes. Misconfigured when
    /// the primary code cannot be bound; the CRS then has the new codes already.
    virtual void setCode(unsigned int primary, unsigned int secondary, bool applyEpsgStandards) = 0;
    /// Takes the axis order that EPSG defines for the primary code; east-north when it defines none.
    virtual void setEpsgStandardAxisOrder() = 0;
    /// As setCode without EPSG standards, then stores axis order and scale factors. Leaves the dimensions.
    virtual void setCustomProperties(unsigned int primary, unsigned int secondary, bool eastNorthOrLonLat,
                                     double primaryScale, double secCompoundScale) = 0;
    /// Reduces to two dimensions and keeps codes and identifier. getAliasOrAsOgcURN then writes a compound CRS
    /// as its horizontal part.
    virtual void forceDim2D();
    /// \param eastNorthOrLonLat true: easting/longitude first; false: northing/latitude first.
    virtual void setAxisOrderEastNorthOrLonLat(bool eastNorthOrLonLat);
    /// Switches between EPSG 4326 (2) and 4979 (3), and drops the vertical part of a compound CRS (2). Any
    /// other request is ignored. Never rewrites the identifier.
    virtual void setDim(unsigned int dim);

    /// Neither creator nor transformer is owned; see the class for how long they are needed.
    AbstractCrs(const CrsCreator& crsCreator, const CoordTransformer& crsTransformer);
    /// Every field equal, creator and transformer included.
    AbstractCrs(const AbstractCrs& other);

    /// EPSG code of the CRS, of its horizontal part when compound; 0 for the unknown and the default CRS.
    unsigned int getPrimaryCode() const { return primaryCode; }
    /// EPSG code of the vertical part; 0 when the CRS is not compound.
    unsigned int getSecCompoundCode() const { return secCompoundCode; }
    /// 2 or 3: primary and vertical dimensions together.
    unsigned int getDim() const { return primaryDim + compoundDim; }
    /// Factor of the horizontal coordinates, 1 at first; CoordTransformer::transformTo says what it does.
    double getPrimaryScaleFactor() const { return primaryScaleFactor; }
    /// Factor for heights: 1 below three dimensions, the secondary factor for a compound CRS, else the
    /// primary factor.
    double getCompoundScaleFactor() const;
    /// The creator that made this CRS. REQUIRES: it has not been destroyed.
    const CrsCreator& getCreator() const { return creator; }
    /// True when easting or longitude comes first.
    bool isAxisOrderEastNorthOrLonLat() const { return axisOrderEastNorthOrLonLat; }
    /// The same flag; easting or longitude first is called the WMS axis order here.
    bool isWmsAxisOrder() const { return axisOrderEastNorthOrLonLat; }
    /// Alias under which the CRS is configured or was requested; empty when there is none.
    const std::string& getAlias() const { return alias; }
    /// Gives the CRS an alias, or none when `text` is empty. No cache learns of it.
    void setAlias(const std::string& text) { alias = text; }
    /// EPSG dataset version of the URN or URL that named the CRS; empty when it named none.
    const std::string& getEpsgVersion() const { return epsgVersion; }
    /// Sets the EPSG dataset version that URNs and URLs are written with; any text, "6.12" for example.
    void setEpsgVersion(const std::string& text) { epsgVersion = text; }
    /// Sets the factor of the horizontal coordinates.
    void setPrimaryScaleFactor(double factor) { primaryScaleFactor = factor; }
    /// Sets the factor of the heights of a compound CRS.
    void setSecCompoundScaleFactor(double factor) { secCompoundScaleFactor = factor; }
    /// Sets both scale factors.
    void setScaleFactors(double primary, double secCompound);
    /// Puts easting or longitude first.
    void forceWmsAxisOrder() { axisOrderEastNorthOrLonLat = true; }
    /// Reads the five properties that setCustomProperties takes.
    void get(unsigned int& primary, unsigned int& secondary, bool& eastNorthOrLonLat, double& primaryScale,
             double& secCompoundScale) const;

    /// Both codes are 0.
    bool isUnknown() const { return primaryCode == 0 && secCompoundCode == 0; }
    /// Sets both codes to 0; identifier and dimensions stay.
    void setUnknown();
    /// The primary code is 0 and the secondary is not.
    bool isDefault() const { return primaryCode == 0 && secCompoundCode != 0; }
    /// Sets the codes to 0 and 1; identifier and dimensions stay.
    void setDefault();

    /// Equality of codes, dimensions, axis order and alias. Scale factors, identifier and version do not count.
    bool operator==(const AbstractCrs& other) const;
    /// The negation of operator==.
    bool operator!=(const AbstractCrs& other) const { return !(*this == other); }
    /// operator== by pointer. REQUIRES: `other` is not null.
    bool isEqual(const AbstractCrs* other) const { return *this == *other; }
    /// The primary codes are equal, or are 4326 and 4979. REQUIRES: `other` is not null.
    bool isCodeCompatible(const AbstractCrs* other) const;
    /// Code-compatible with equal axis order, scale factors and dimension, so that coordinates need no change
    /// at all. REQUIRES: `other` is not null.
    bool isCompatible(const AbstractCrs* other) const;

    /// Transforms a point of this CRS into `target`, in place. Horizontal coordinates are degrees for a
    /// geographic CRS and the CRS's own unit otherwise, in the order of each CRS's axis flag; z is in the unit
    /// that the definition of each CRS gives to heights. CoordTransformer::transformTo states what scale factors
    /// do. TransExecException when PROJ refuses the point, which then holds intermediate values.
    /// REQUIRES: `target` is not null.
    void transformTo(const AbstractCrs* target, double& x, double& y, double& z) const;
    /// The same for a two-dimensional point.
    void transformTo(const AbstractCrs* target, double& x, double& y) const;

    /// The alias if it is wanted and there is one, else the identifier ("EPSG:27700*EPSG:5701").
    std::string getAliasOrIdentifier(bool useAlias) const;
    /// The alias if it is wanted and there is one, else the OGC URN, the OGC http URL or prefix and code, as
    /// `options` say (null: a URN with the CRS's own version). Empty for an unknown or default CRS.
    std::string getAliasOrAsOgcURN(const QuarvelSrv::SrsFormattingOptions* options, bool useAlias) const;
    /// The alias if it is wanted and there is one, else the form that `info.format` selects; empty for an
    /// unknown format. QSHelpers::UnexpectedException as getAsURL for format 1.
    std::string getAliasOrAsFormat(const CRSindicationFormatInfo& info, bool useAlias) const;
    /// `base`, "#" and a template in which each control character U+0001 (not the digit) stands for the primary
    /// code and each U+0002 for the secondary; the compound template serves a CRS with a secondary code.
    /// QSHelpers::UnexpectedException for an unknown or default CRS.
    std::string getAsURL(const std::string& base, const std::string& simpleTemplate,
                         const std::string& compoundTemplate) const;
    /// The text form that CrsCreator::createFromSpecialTextFormat reads: identifier, "EN" or "NE", and the
    /// scale factors, separated by ";". QSHelpers::UnexpectedException for an unknown or default CRS.
    std::string getAsText() const;

    /// Looks at the transformer.
    friend class PointTransformer;

protected:
    /// See getPrimaryCode().
    std::uint32_t primaryCode = 0;
    /// See getSecCompoundCode().
    std::uint32_t secCompoundCode = 0;
    /// "EPSG:4326", of a compound CRS "EPSG:27700*EPSG:5701"; written by setCode alone.
    std::string identifier;
    /// Dimensions of the primary CRS: 2, or 3 for EPSG 4979.
    std::uint32_t primaryDim = 2;
    /// Dimensions of the vertical CRS: 1 for a compound CRS, else 0.
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
