#pragma once

#include <cstddef>
#include <string>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/Crs.h"
#include "CoordinateTransformation/CrsPool.h"
#include "CoordinateTransformation/Export.h"
#include "CoordinateTransformation/NameExplanation.h"

namespace CoordinateTransformation {

struct NameSyntax;

/// Turns CRS names into CRS objects: looks a name up in the pool, then tries the recognisers, one for each spelling, in
/// a fixed order. A concrete creator makes the objects and decides which of them the server offers.
///
/// Threads: the const operations keep no state; they may run concurrently if those of the concrete creator may.
///
/// A recogniser returns a new object, which the caller owns, or null for another spelling. Keywords are compared
/// case-sensitively and as a whole; only the authority of a URN or URL may be "EPSG" or "epsg". Nothing is trimmed, but
/// a code may have blanks around it. Has no state; a copy copies nothing.
class COORDTRANS_EXPORT CrsCreator : public CrsPool {
public:
    CrsCreator() = default;
    /// Copies nothing: there is no state.
    CrsCreator(const CrsCreator&) = default;
    /// Copies nothing: there is no state.
    CrsCreator& operator=(const CrsCreator&) = default;
    virtual ~CrsCreator();

    /// Returns the CRS named `name`. If the pool has the name, the handle borrows the shared object, whatever
    /// `checkAllowed` is; if a recogniser accepts the name, the handle owns a new object.
    ///
    /// \param name compared exactly as it is.
    /// \param throwOnFailure if true, throws CrsUnknownSyntaxOrAlias for a name that no recogniser accepts and
    ///   CrsNotConfigured for a CRS that the server does not offer; if false, returns an empty handle for both.
    /// \param checkAllowed refuses a new CRS that the server does not offer.
    ///
    /// Regardless of `throwOnFailure`, throws QSHelpers::ConversionError for a URN or URL whose code is not a number,
    /// std::out_of_range for "EPSG:4326*5783" (the second prefix is missing), and Misconfigured for a primary code that
    /// cannot be bound.
    virtual Crs createFromName(const std::string& name, bool throwOnFailure, bool checkAllowed) const;
    /// Makes a CRS for the codes; `secondary` 0 means not compound. With `standardAxisOrder` it has the EPSG axis order
    /// and the dimension of its codes.
    virtual AbstractCrs* createFromCode(unsigned int primary, unsigned int secondary, bool standardAxisOrder) const = 0;
    /// Prepares the creator before it makes its first CRS. CrsConfig::init calls it, also when the configuration is
    /// initialised again. Runs on one thread while no other operation of the creator runs.
    virtual void init() = 0;
    /// Makes a default CRS.
    virtual AbstractCrs* createDefault() const = 0;
    /// Makes an unknown CRS.
    virtual AbstractCrs* createUnknown() const = 0;
    /// Reads "EPSG:4326" and "EPSG:27700*EPSG:5701", or without prefixes "4326" and "27700*5701" (at most 13
    /// characters). Returns null when a code is not a number. Throws std::out_of_range when a name with a prefix has
    /// fewer characters after the "*" than the prefix has.
    virtual AbstractCrs* createFromEPSG(const std::string& name, bool standardAxisOrder) const;
    /// Reads the text of AbstractCrs::getAsText. Throws CrsNotConfigured when its first field is not a name in the
    /// pool. Any axis order but "EN" puts northing or latitude first. Fields after the fourth are ignored. Throws
    /// QSHelpers::ConversionError for a scale factor that is not a number. Returns null for a text of fewer than three
    /// fields, and throws FatalSubsystemError for an empty text; the copy made for it is not released.
    virtual AbstractCrs* createFromSpecialTextFormat(const std::string& text) const;
    /// Reads the part of an OGC URN or URL from "def" on, which begins at `startPos` of `name`. Throws
    /// QSHelpers::ConversionError for a code that is not a number.
    virtual AbstractCrs* createFromOgcUrn(const std::string& name, std::size_t startPos) const;
    /// Reads "urn:ogc:def:crs:EPSG:6.12:4326" or "urn:x-ogc:...", simple or compound; createFromOgcUrn reads the part
    /// from "def" on.
    virtual AbstractCrs* createFromURN(const std::string& name) const;
    /// Reads "http:", the OGC definitions host and the rest as createFromOgcUrn does, simple or compound.
    virtual AbstractCrs* createFromURL(const std::string& name) const;

    /// Returns a copy of `crs` with the axis order that clients expect under `name`, the text in which a response names
    /// it: the order of createFromName(name). Leaves the order unchanged if `name` is not the name of a CRS, such as a
    /// reference with a template of the server's own. Throws as createFromName does.
    Crs createInOrderOf(const std::string& name, const AbstractCrs& crs) const;

    /// Explains `name` for a log: its spelling and codes, or the fault and its place. Makes no CRS and does not search
    /// the pool: a configured alias has no spelling, and a well-formed name may name a CRS that does not exist. The
    /// fault is that of the first spelling that the text resembles.
    NameExplanation explainName(const std::string& name) const;

protected:
    /// Whether the server offers `crs`.
    virtual bool isCrsAllowed(const AbstractCrs* crs) const = 0;
    /// Reads "urn:EPSG:geographicCRS:4326". Returns null when the code is not a number.
    virtual AbstractCrs* createFromCrsURN_WFS_1_1(const std::string& name) const;
    /// Reads any text with "epsg.xml#" before the code; the alias of the CRS is the whole name. Returns null when the
    /// code is not a number.
    virtual AbstractCrs* createFromGML(const std::string& name) const;
    /// Whether names in a spelling that depends on the configuration property `property` are accepted. False unless a
    /// concrete creator reads a configuration.
    virtual bool isSyntaxAccepted(const std::string& property) const;
    /// Whether createFromName puts easting or longitude first in a new CRS that it makes of "EPSG:4326" or of a GML
    /// reference. False unless a concrete creator reads a configuration.
    virtual bool isEstablishedOrder() const;

private:
    COORDTRANS_INTERNAL AbstractCrs* recognise(const std::string& name) const;
    COORDTRANS_INTERNAL AbstractCrs* createAs(const NameSyntax& syntax, const std::string& name) const;
};

}  // namespace CoordinateTransformation
