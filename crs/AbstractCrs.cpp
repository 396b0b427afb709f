#include "CoordinateTransformation/AbstractCrs.h"

#include "CoordinateTransformation/CoordTransformer.h"
#include "QSHelpers/UnexpectedException.h"
#include "QuarvelSrv/SrsFormattingOptions.h"
#include "names/CrsName.h"
#include "text/NumericText.h"

namespace CoordinateTransformation {
namespace {

using QSHelpers::convertNumericToText;
using QuarvelSrv::SrsFormattingOptions;

enum CrsIndicationFormat : unsigned int { OGC_URN = 0, TEMPLATE_URL = 1, OGC_URL = 2, IDENTIFIER = 3 };

constexpr int STYLE_OGC_URL = 2;

// The control characters that represent the codes in a URL template; they do not occur in URLs.
constexpr char PRIMARY_CODE_PLACEHOLDER = '\x01';
constexpr char SECONDARY_CODE_PLACEHOLDER = '\x02';

// A compound CRS reduced to two dimensions is written as its horizontal part.
bool isWrittenAsCompound(const AbstractCrs& crs) { return crs.getSecCompoundCode() != 0 && crs.getDim() >= 3; }

CodePair writtenCodes(const AbstractCrs& crs) {
    return {crs.getPrimaryCode(), isWrittenAsCompound(crs) ? crs.getSecCompoundCode() : 0};
}

std::string fillUrlTemplate(const std::string& urlTemplate, const AbstractCrs& crs) {
    std::string filled;
    for (const char character : urlTemplate) {
        if (character == PRIMARY_CODE_PLACEHOLDER)
            filled += convertNumericToText(crs.getPrimaryCode());
        else if (character == SECONDARY_CODE_PLACEHOLDER)
            filled += convertNumericToText(crs.getSecCompoundCode());
        else
            filled += character;
    }
    return filled;
}

std::string writeScaleFactor(double factor) { return convertNumericToText(factor, -1, false); }

}  // namespace

AbstractCrs::AbstractCrs(const CrsCreator& crsCreator, const CoordTransformer& crsTransformer)
    : creator(crsCreator), transformer(crsTransformer) {}

AbstractCrs::AbstractCrs(const AbstractCrs& other) = default;

AbstractCrs::~AbstractCrs() = default;

// Intended: the identifier is not copied; only setCode writes it.
AbstractCrs& AbstractCrs::operator=(const AbstractCrs& other) {
    if (this == &other) return *this;
    primaryCode = other.primaryCode;
    secCompoundCode = other.secCompoundCode;
    epsgVersion = other.epsgVersion;
    alias = other.alias;
    primaryDim = other.primaryDim;
    compoundDim = other.compoundDim;
    axisOrderEastNorthOrLonLat = other.axisOrderEastNorthOrLonLat;
    primaryScaleFactor = other.primaryScaleFactor;
    secCompoundScaleFactor = other.secCompoundScaleFactor;
    return *this;
}

void AbstractCrs::forceDim2D() {
    primaryDim = 2;
    compoundDim = 0;
}

void AbstractCrs::setAxisOrderEastNorthOrLonLat(bool eastNorthOrLonLat) {
    axisOrderEastNorthOrLonLat = eastNorthOrLonLat;
}

void AbstractCrs::setDim(unsigned int dim) {
    const bool dropHeight = primaryCode == EPSG_WGS84_3D && dim == 2;
    const bool addHeight = primaryCode == EPSG_WGS84_2D && dim == 3;
    if (dropHeight || addHeight) {
        primaryCode = dropHeight ? EPSG_WGS84_2D : EPSG_WGS84_3D;
        primaryDim = dim;
    }
    if (dropHeight || addHeight || dim == 2) {
        secCompoundCode = 0;
        compoundDim = 0;
    }
}

double AbstractCrs::getCompoundScaleFactor() const {
    if (getDim() < 3) return 1.0;
    return compoundDim != 0 ? secCompoundScaleFactor : primaryScaleFactor;
}

void AbstractCrs::setScaleFactors(double primary, double secCompound) {
    primaryScaleFactor = primary;
    secCompoundScaleFactor = secCompound;
}

void AbstractCrs::get(unsigned int& primary, unsigned int& secondary, bool& eastNorthOrLonLat, double& primaryScale,
                      double& secCompoundScale) const {
    primary = primaryCode;
    secondary = secCompoundCode;
    eastNorthOrLonLat = axisOrderEastNorthOrLonLat;
    primaryScale = primaryScaleFactor;
    secCompoundScale = secCompoundScaleFactor;
}

void AbstractCrs::setUnknown() {
    primaryCode = 0;
    secCompoundCode = 0;
}

void AbstractCrs::setDefault() {
    primaryCode = 0;
    secCompoundCode = 1;
}

bool AbstractCrs::operator==(const AbstractCrs& other) const {
    return primaryCode == other.primaryCode && secCompoundCode == other.secCompoundCode &&
           primaryDim == other.primaryDim && compoundDim == other.compoundDim &&
           axisOrderEastNorthOrLonLat == other.axisOrderEastNorthOrLonLat && alias == other.alias;
}

bool AbstractCrs::isCodeCompatible(const AbstractCrs* other) const {
    const auto eitherIs = [this, other](unsigned int code) {
        return primaryCode == code || other->primaryCode == code;
    };
    return primaryCode == other->primaryCode || (eitherIs(EPSG_WGS84_2D) && eitherIs(EPSG_WGS84_3D));
}

bool AbstractCrs::isCompatible(const AbstractCrs* other) const {
    return isCodeCompatible(other) && axisOrderEastNorthOrLonLat == other->axisOrderEastNorthOrLonLat &&
           primaryScaleFactor == other->primaryScaleFactor && getDim() == other->getDim() &&
           getCompoundScaleFactor() == other->getCompoundScaleFactor();
}

void AbstractCrs::transformTo(const AbstractCrs* target, double& x, double& y, double& z) const {
    transformer.transformTo(this, target, x, y, &z);
}

void AbstractCrs::transformTo(const AbstractCrs* target, double& x, double& y) const {
    transformer.transformTo(this, target, x, y, nullptr);
}

std::string AbstractCrs::getAliasOrIdentifier(bool useAlias) const {
    return useAlias && !alias.empty() ? alias : identifier;
}

std::string AbstractCrs::getAliasOrAsOgcURN(const SrsFormattingOptions* options, bool useAlias) const {
    if (useAlias && !alias.empty()) return alias;
    if (primaryCode == 0) return "";
    if (options == nullptr) return writeOgcUrn(writtenCodes(*this), epsgVersion);
    if (!options->codePrefix.empty()) return writePrefixed(writtenCodes(*this), options->codePrefix);
    const std::string& version = options->version.empty() ? epsgVersion : options->version;
    return options->style == STYLE_OGC_URL ? writeOgcUrl(writtenCodes(*this), version)
                                           : writeOgcUrn(writtenCodes(*this), version);
}

std::string AbstractCrs::getAliasOrAsFormat(const CRSindicationFormatInfo& info, bool useAlias) const {
    if (useAlias && !alias.empty()) return alias;
    switch (info.format) {
        case OGC_URN:
        case OGC_URL: {
            const SrsFormattingOptions options{info.version, "", static_cast<int>(info.format)};
            return getAliasOrAsOgcURN(&options, false);
        }
        case TEMPLATE_URL:
            return getAsURL(info.urlBase, info.urlTemplate, info.urlCompoundTemplate);
        case IDENTIFIER:
            return getAliasOrIdentifier(false);
        default:
            return "";
    }
}

// Intended: the secondary code alone decides, not the dimension.
std::string AbstractCrs::getAsURL(const std::string& base, const std::string& simpleTemplate,
                                  const std::string& compoundTemplate) const {
    if (primaryCode == 0)
        throw QSHelpers::UnexpectedException("URL representation for unknown or default SRS requested.");
    return base + "#" + fillUrlTemplate(secCompoundCode == 0 ? simpleTemplate : compoundTemplate, *this);
}

// identifier ";" ("EN" | "NE") ";" primary scale factor [ ";" compound scale factor ]
std::string AbstractCrs::getAsText() const {
    if (primaryCode == 0)
        throw QSHelpers::UnexpectedException("Text representation of an unknown or the default SRS requested.");
    std::string text = getAliasOrIdentifier(false);
    text += axisOrderEastNorthOrLonLat ? ";EN;" : ";NE;";
    text += writeScaleFactor(primaryScaleFactor);
    if (secCompoundCode != 0) text += ";" + writeScaleFactor(getCompoundScaleFactor());
    return text;
}

}  // namespace CoordinateTransformation
