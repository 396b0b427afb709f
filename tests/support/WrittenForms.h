#pragma once

#include <string>

#include "CoordinateTransformation/AbstractCrs.h"
#include "CoordinateTransformation/CRSindicationFormatInfo.h"
#include "QuarvelSrv/SrsFormattingOptions.h"

// The forms of a CRS in tests/names.csv, and the calls that write them.
namespace TestSupport {

using CoordinateTransformation::AbstractCrs;

struct FormRequest {
    // The title of the column.
    const char* title;
    std::string (*write)(const AbstractCrs& crs, bool useAlias);
    // Whether createFromName can read the codes of a compound from this form.
    bool readsBackCompounds;
};

inline std::string writeUrl(const AbstractCrs& crs, bool useAlias) {
    const QuarvelSrv::SrsFormattingOptions options{"", "", 2};
    return crs.getAliasOrAsOgcURN(&options, useAlias);
}

inline std::string writePrefixAndCode(const AbstractCrs& crs, bool useAlias) {
    const QuarvelSrv::SrsFormattingOptions options{"", "EPSG:", 0};
    return crs.getAliasOrAsOgcURN(&options, useAlias);
}

inline std::string writeGmlReference(const AbstractCrs& crs, bool useAlias) {
    const CoordinateTransformation::CRSindicationFormatInfo info{1, "", "http://www.opengis.net/gml/srs/epsg.xml",
                                                                 "\x01", "\x01"};
    return crs.getAliasOrAsFormat(info, useAlias);
}

// The forms that createFromName reads.
const FormRequest WRITTEN_FORMS[] = {
    {"identifier", [](const AbstractCrs& crs, bool useAlias) { return crs.getAliasOrIdentifier(useAlias); }, true},
    {"urn", [](const AbstractCrs& crs, bool useAlias) { return crs.getAliasOrAsOgcURN(nullptr, useAlias); }, true},
    {"url", writeUrl, true},
    {"gmlReference", writeGmlReference, false},
    {"prefixAndCode", writePrefixAndCode, false},
};

}  // namespace TestSupport
