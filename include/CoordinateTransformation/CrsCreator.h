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

/// Turns CRS names into CRS objects: looks a name up in the pool, then tries the recognisers, one for each
/// spelling, in a fixed order. A concrete creator makes the objects and decides which of them the server offers.
///
/// Threads: the const operations keep no state and may run concurrently as far as the concrete creator's do.
///
/// Recognisers return a new object that the caller owns, or null when the spelling is not theirs. Keywords
/// are compared case-sensitively and whole; only the authority of a URN or URL may be "EPSG" or "epsg". Nothing
/// is trimmed, but a code may have blanks around it.
/// Has no state; a copy copies nothing.
class COORDTRANS_EXPORT CrsCreator : public CrsPool {
public:
    CrsCreator() = default;
    /// Copies nothing: there is no state.
    CrsCreator(const CrsCreator&) = default;
    /// Copies nothing: there is no state.
    CrsCreator& operator=(const CrsCreator&) = default;
    virtual ~CrsCreator();

    /// The CRS that `name` names. A name that the pool holds gives a handle that borrows the shared object,
    /// whatever `checkAllowed` says; a name that a recogniser accepts one that owns a new object.
    ///
    /// \param name compared exactly as it stands.
    /// \param throwOnFailure raise CrsUnknownSyntaxOrAlias for a name that nobody accepts and CrsNotConfigured
    ///   for one that the server does not offer; without it both give an empty handle.
    /// \param checkAllowed refuse a new CRS that the server does not offer.
    ///
    /// Whatever `throwOnFailure` is: QSHelpers::ConversionError for a URN or URL whose code is not a number,
    /// std::out_of_range for "EPSG:4326*5783" (the second prefix is missing), Misconfigured for a primary
    /// code that cannot be bound.
    virtual Crs createFromName(const std::string& name, bool throwOnFailure, bool checkAllowed) const;
    /// A new CRS for the codes; `secondary` 0 means not compound. With `standardAxisOrder` it has the EPSG
    /// axis order and the dimension of its codes.
    virtual AbstractCrs* createFromCode(unsigned int primary, unsigned int secondary, bool standardAxisOrder) const = 0;
    /// Prepares the creator, before it makes its first CRS. CrsConfig::init calls it, and calls it again when the
    /// configuration is initialised anew; on one thread, with nothing beside it.
    virtual void init() = 0;
    /// A new default CRS.
    virtual AbstractCrs* createDefault() const = 0;
    /// A new unknown CRS.
    virtual AbstractCrs* createUnknown() const = 0;
    /// "EPSG:4326", "EPSG:27700*EPSG:5701", or without prefixes "4326" and "27700*5701" (at most 13 characters).
    /// Null when a code is not a number; std::out_of_range when, in a name with the prefix, fewer characters
    /// than the prefix has follow the "*".
    virtual AbstractCrs* createFromEPSG(const std::string& name, bool standardAxisOrder) const;
    /// The text of AbstractCrs::getAsText; its first field must be a name that the pool holds, else
    /// CrsNotConfigured. Any axis order but "EN" puts northing or latitude first. Fields behind the fourth are
    /// ignored. QSHelpers::ConversionError for a scale factor that is not a number. A text of fewer than three
    /// fields gives null, or FatalSubsystemError if it is empty; the copy made for it is not released.
    virtual AbstractCrs* createFromSpecialTextFormat(const std::string& text) const;
    /// The part of an OGC URN or URL from "def" on, beginning at `startPos` of `name`.
    /// QSHelpers::ConversionError for a code that is not a number.
    virtual AbstractCrs* createFromOgcUrn(const std::string& name, std::size_t startPos) const;
    /// "urn:ogc:def:crs:EPSG:6.12:4326" or "urn:x-ogc:...", simple or compound. As createFromOgcUrn from "def" on.
    virtual AbstractCrs* createFromURN(const std::string& name) const;
    /// "http:" and the OGC definitions host, then as createFromOgcUrn; simple or compound.
    virtual AbstractCrs* createFromURL(const std::string& name) const;

    /// What `name` is, for a log: its spelling and codes, or why it is no name and where. Nothing is created and the
    /// pool is not asked: an alias of the configuration has no spelling, and a well-formed name may still name a CRS
    /// that nobody knows. The fault is that of the first spelling that the text resembles.
    NameExplanation explainName(const std::string& name) const;

protected:
    /// Whether the server offers `crs`.
    virtual bool isCrsAllowed(const AbstractCrs* crs) const = 0;
    /// "urn:EPSG:geographicCRS:4326". Null when the code is not a number.
    virtual AbstractCrs* createFromCrsURN_WFS_1_1(const std::string& name) const;
    /// Any text with "epsg.xml#" before the code; the CRS takes the whole name as its alias. Null when the
    /// code is not a number.
    virtual AbstractCrs* createFromGML(const std::string& name) const;
    /// Whether names in a spelling that waits for the configuration property `property` are accepted. No, unless a
    /// concrete creator has a configuration to ask.
    virtual bool isSyntaxAccepted(const std::string& property) const;

private:
    COORDTRANS_INTERNAL AbstractCrs* recognise(const std::string& name) const;
    COORDTRANS_INTERNAL AbstractCrs* createAs(const NameSyntax& syntax, const std::string& name) const;
};

}  // namespace CoordinateTransformation
