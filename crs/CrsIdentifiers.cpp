// The forms in which a CRS is written out. The creator reads identifier, URN, http URL and text form again.

#include "CoordinateTransformation/AbstractCrs.h"
#include "QSHelpers/UnexpectedException.h"
#include "QuarvelSrv/SrsFormattingOptions.h"
#include "crs/OgcDefinitionsHost.h"
#include "text/NumericText.h"

namespace CoordinateTransformation {

namespace {

using QSHelpers::convertNumericToText;
using QuarvelSrv::SrsFormattingOptions;

enum CrsIndicationFormat : unsigned int { OGC_URN = 0, TEMPLATE_URL = 1, OGC_URL = 2, IDENTIFIER = 3 };

constexpr int STYLE_OGC_URL = 2;

// Control characters that no URL holds stand for the codes in a URL template.
constexpr char PRIMARY_CODE_PLACEHOLDER = '\x01';
constexpr char SECONDARY_CODE_PLACEHOLDER = '\x02';

// A compound CRS reduced to two dimensions is written as its horizontal part.
bool isWrittenAsCompound(AbstractCrs const& crs) { return crs.getSecCompoundCode() != 0 && crs.getDim() >= 3; }

// head part P, or for a compound: head "crs," part P "," part S
std::string writeOgcName(AbstractCrs const& crs, std::string const& head, std::string const& part) {
    const std::string first = part + convertNumericToText(crs.getPrimaryCode());
    if (!isWrittenAsCompound(crs)) return head + first;
    return head + "crs," + first + "," + part + convertNumericToText(crs.getSecCompoundCode());
}

std::string writeWithPrefix(AbstractCrs const& crs, std::string const& prefix) {
    std::string first = prefix + convertNumericToText(crs.getPrimaryCode());
    if (!isWrittenAsCompound(crs)) return first;
    return first + "," + prefix + convertNumericToText(crs.getSecCompoundCode());
}

std::string writeOgcUrl(AbstractCrs const& crs, std::string const& version) {
    const std::string part = "crs/EPSG/" + (version.empty() ? "0" : version) + "/";
    return writeOgcName(crs, std::string("http://") + OGC_DEFINITIONS_HOST + "/def/", part);
}

std::string writeOgcUrn(AbstractCrs const& crs, std::string const& version) {
    return writeOgcName(crs, "urn:ogc:def:", "crs:EPSG:" + version + ":");
}

std::string fillUrlTemplate(std::string const& urlTemplate, AbstractCrs const& crs) {
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

std::string AbstractCrs::getAliasOrIdentifier(bool useAlias) const {
    return useAlias && !alias.empty() ? alias : identifier;
}

std::string AbstractCrs::getAliasOrAsOgcURN(SrsFormattingOptions const* options, bool useAlias) const {
    if (useAlias && !alias.empty()) return alias;
    if (primaryCode == 0) return "";
    if (options == nullptr) return writeOgcUrn(*this, epsgVersion);
    if (!options->codePrefix.empty()) return writeWithPrefix(*this, options->codePrefix);
    const std::string& version = options->version.empty() ? epsgVersion : options->version;
    return options->style == STYLE_OGC_URL ? writeOgcUrl(*this, version) : writeOgcUrn(*this, version);
}

std::string AbstractCrs::getAliasOrAsFormat(CRSindicationFormatInfo const& info, bool useAlias) const {
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

// Here the secondary code alone decides, not the dimension.
std::string AbstractCrs::getAsURL(std::string const& base, std::string const& simpleTemplate,
                                  std::string const& compoundTemplate) const {
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
