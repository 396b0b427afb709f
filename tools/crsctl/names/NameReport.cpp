#include "tools/crsctl/names/NameReport.h"

#include <exception>

#include "CoordinateTransformation/CoordinateTransformation.h"
#include "QuarvelSrv/SrsFormattingOptions.h"
#include "tools/crsctl/start/Session.h"

namespace crsctl {

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::Crs;
using CoordinateTransformation::CrsDescriptions;
using CoordinateTransformation::CRSindicationFormatInfo;
using CoordinateTransformation::CrsNotConfigured;
using CoordinateTransformation::CrsUnknownSyntaxOrAlias;
using CoordinateTransformation::Misconfigured;
using CoordinateTransformation::NameExplanation;
using CoordinateTransformation::TransformationException;
using QuarvelSrv::SrsFormattingOptions;

namespace {

using Fault = NameExplanation::Fault;

constexpr char CONFIGURED_NAME[] = "configured name";
constexpr char NO_SPELLING[] = "none";
constexpr char OGC_NAME[] = "OGC name of WGS 84, for a configuration";
constexpr int OGC_URL_STYLE = 2;
// In a template the control character U+0001 stands for the code.
constexpr char TEMPLATE_OF_CODE[] = "\x01";
constexpr char GML_BASE[] = "http://www.opengis.net/gml/srs/epsg.xml";

struct FormWriter {
    const char* form;
    const char* key;
    std::string (*write)(const AbstractCrs& crs);
};

constexpr FormWriter FORMS[] = {
    {"identifier", "identifier", [](const AbstractCrs& crs) { return crs.getAliasOrIdentifier(false); }},
    {"alias or identifier", "aliasOrIdentifier", [](const AbstractCrs& crs) { return crs.getAliasOrIdentifier(true); }},
    {"OGC URN", "urn", [](const AbstractCrs& crs) { return crs.getAliasOrAsOgcURN(nullptr, false); }},
    {"OGC http URL", "url",
     [](const AbstractCrs& crs) {
         const SrsFormattingOptions options{"", "", OGC_URL_STYLE};
         return crs.getAliasOrAsOgcURN(&options, false);
     }},
    {"GML reference", "gmlReference",
     [](const AbstractCrs& crs) { return crs.getAsURL(GML_BASE, TEMPLATE_OF_CODE, TEMPLATE_OF_CODE); }},
    {"prefix and code", "prefixAndCode",
     [](const AbstractCrs& crs) {
         const SrsFormattingOptions options{"", "EPSG:", 0};
         return crs.getAliasOrAsOgcURN(&options, false);
     }},
    {"text form", "text", [](const AbstractCrs& crs) { return crs.getAsText(); }},
};

WrittenForm written(const FormWriter& writer, const AbstractCrs& crs) {
    try {
        return {writer.form, writer.key, writer.write(crs), false};
    } catch (const std::exception& failure) {
        return {writer.form, writer.key, failure.what(), true};
    }
}

Reason reasonForMisconfigured(const NameExplanation& explanation) {
    return explanation.fault == Fault::NONE ? Reason::NOT_IN_EPSG_FILE : Reason::OTHER;
}

std::string serviceExceptionCodeOf(const std::exception& failure) {
    if (const auto* own = dynamic_cast<const TransformationException*>(&failure)) return own->getServiceExceptionCode();
    if (const auto* helper = dynamic_cast<const QSHelpers::Exception*>(&failure))
        return helper->getServiceExceptionCode();
    return {};
}

Reason reasonOf(const std::exception& failure, const NameExplanation& explanation) {
    if (dynamic_cast<const CrsNotConfigured*>(&failure) != nullptr) return Reason::NOT_OFFERED;
    if (explanation.fault == Fault::BAD_CODE) return Reason::BAD_CODE;
    if (dynamic_cast<const CrsUnknownSyntaxOrAlias*>(&failure) != nullptr) return Reason::UNKNOWN_SYNTAX;
    if (dynamic_cast<const Misconfigured*>(&failure) != nullptr) return reasonForMisconfigured(explanation);
    return Reason::OTHER;
}

bool wouldWork(const std::string& name, const Session& session) {
    try {
        const Crs crs = session.createFromName(name, false);
        return crs.get() != nullptr;
    } catch (const std::exception&) {
        return false;
    }
}

// No change of the spelling helps a name that is understood.
std::optional<Suggestion> suggestionFor(const std::string& name, Reason reason, const Session& session) {
    if (reason == Reason::NOT_OFFERED || reason == Reason::NOT_IN_EPSG_FILE) return std::nullopt;
    return suggest(name, session.config().getConfiguredCrsIdentifiers(),
                   [&session](const std::string& candidate) { return wouldWork(candidate, session); });
}

Refusal refusalFor(const std::string& name, const std::exception& failure, const NameExplanation& explanation,
                   const Session& session) {
    const Reason reason = reasonOf(failure, explanation);
    return {serviceExceptionCodeOf(failure), failure.what(), reason, suggestionFor(name, reason, session)};
}

bool isAliasOf(const AbstractCrs& crs, const std::string& name) { return crs.getAlias() == name; }

// What the configuration answers under a name of its own choice is a configured name, whatever its syntax.
std::string spellingOf(const std::string& name, const AbstractCrs* registered, const NameExplanation& explanation) {
    const bool wellFormed = explanation.fault == Fault::NONE;
    if (registered != nullptr && (isAliasOf(*registered, name) || !wellFormed)) return CONFIGURED_NAME;
    return wellFormed || explanation.fault == Fault::BAD_CODE ? explanation.spelling : NO_SPELLING;
}

}  // namespace

const char* axisOrderWords(bool geographic, bool eastNorth) {
    if (geographic) return eastNorth ? "longitude, latitude" : "latitude, longitude";
    return eastNorth ? "easting, northing" : "northing, easting";
}

const char* wordsFor(Reason reason) {
    switch (reason) {
        case Reason::UNKNOWN_SYNTAX:
            return "unknown syntax";
        case Reason::BAD_CODE:
            return "bad code";
        case Reason::NOT_IN_EPSG_FILE:
            return "not in the \"epsg\" file";
        case Reason::NOT_OFFERED:
            return "known, but not offered";
        case Reason::OTHER:
            break;
    }
    return "other";
}

CrsFacts factsOf(const AbstractCrs& crs) {
    const bool geographic = crs.isGeographic();
    CrsFacts facts{crs.getPrimaryCode(),
                   crs.getSecCompoundCode(),
                   crs.getEpsgVersion(),
                   crs.getAlias(),
                   crs.getDim(),
                   geographic,
                   axisOrderWords(geographic, crs.isAxisOrderEastNorthOrLonLat()),
                   crs.getUnitEquivalentInM(),
                   {}};
    for (const FormWriter& writer : FORMS) facts.forms.push_back(written(writer, crs));
    return facts;
}

NameReport reportOn(const std::string& name, const Session& session) {
    const NameExplanation explanation = session.creator().explainName(name);
    const AbstractCrs* const registered = session.config().getFromNameCache(name, false);
    NameReport report;
    report.name = name;
    report.spelling = !session.isConfigured() && isCrs84(name) ? OGC_NAME : spellingOf(name, registered, explanation);
    report.registered = registered != nullptr;
    if (session.isConfigured()) report.offered = false;
    try {
        const Crs crs = session.createFromName(name, true);
        report.crs = factsOf(*crs.get());
        report.description = CrsDescriptions::ofProjDirectory().find(crs.get()->getPrimaryCode());
        if (session.isConfigured()) report.offered = true;
    } catch (const std::exception& failure) {
        report.refusal = refusalFor(name, failure, explanation, session);
    }
    return report;
}

}  // namespace crsctl
