#include "CoordinateTransformation/CrsCreator.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

#include "CoordinateTransformation/CrsNotConfigured.h"
#include "CoordinateTransformation/CrsUnknownSyntaxOrAlias.h"
#include "CoordinateTransformation/FatalSubsystemError.h"
#include "QSHelpers/ConversionError.h"
#include "names/CrsName.h"
#include "text/NumericText.h"

namespace CoordinateTransformation {
namespace {

using QSHelpers::ConversionError;

double readScaleFactor(const std::string& text) { return QSHelpers::convertTextToNumeric<double>(text, false, false); }

// Nothing if a code is not a number: the name may be in another spelling.
std::optional<CodePair> codesIfNumbers(const ParsedName& parsed) {
    const NameTexts* const texts = std::get_if<NameTexts>(&parsed);
    if (texts == nullptr) return std::nullopt;
    try {
        const unsigned int first = readCode(texts->first.text);
        return CodePair{first, texts->second ? readCode(texts->second->text) : 0};
    } catch (const ConversionError&) {
        return std::nullopt;
    }
}

AbstractCrs* createFromCodes(const CrsCreator& creator, const ParsedName& parsed, bool standardAxisOrder) {
    const std::optional<CodePair> codes = codesIfNumbers(parsed);
    return codes ? creator.createFromCode(codes->primary, codes->secondary, standardAxisOrder) : nullptr;
}

using OwnedCrs = std::unique_ptr<AbstractCrs>;

// The object first made from a URN or URL; callers get only a copy of it.
OwnedCrs createUrnOriginal(const CrsCreator& creator, const NameTexts& texts) {
    const unsigned int second = texts.second ? readCode(texts.second->text) : 0;
    return OwnedCrs(creator.createFromCode(readCode(texts.first.text), second, true));
}

// Intended: the original of the returned CRS is not released unless the build option asks for it.
void finishWithUrnOriginal([[maybe_unused]] OwnedCrs original) {
#if !defined(COORDTRANS_RELEASE_URN_ORIGINAL)
    static_cast<void>(original.release());
#endif
}

// The fields between ";" separators; a text has one more field than separators.
class SpecialTextFields {
public:
    explicit SpecialTextFields(const std::string& fields) : text(fields) {}

    std::optional<std::string> next() {
        if (position > text.size()) return std::nullopt;
        const std::size_t end = std::min(text.find(';', position), text.size());
        std::string field = text.substr(position, end - position);
        position = end + 1;
        return field;
    }

private:
    const std::string& text;
    std::size_t position = 0;
};

}  // namespace

CrsCreator::~CrsCreator() = default;

Crs CrsCreator::createFromName(const std::string& name, bool throwOnFailure, bool checkAllowed) const {
    if (const AbstractCrs* const pooled = getFromNameCache(name, false)) return Crs(pooled);
    OwnedCrs created(recognise(name));
    if (created == nullptr) {
        if (throwOnFailure) throw CrsUnknownSyntaxOrAlias(name);
        return Crs(NullConstruction());
    }
    if (checkAllowed && !isCrsAllowed(created.get())) {
        created.reset();
        if (throwOnFailure) throw CrsNotConfigured(name);
        return Crs(NullConstruction());
    }
    return Crs(created.release());
}

AbstractCrs* CrsCreator::recognise(const std::string& name) const {
    for (const NameSyntax& syntax : NAME_SYNTAXES) {
        if (syntax.property != nullptr && !isSyntaxAccepted(syntax.property)) continue;
        OwnedCrs crs(createAs(syntax, name));
        if (crs == nullptr) continue;
        if (isEastNorthIfEstablished(syntax.spelling, name) && isEstablishedOrder())
            crs->setAxisOrderEastNorthOrLonLat(true);
        return crs.release();
    }
    return nullptr;
}

// Each older syntax has its own recogniser, which a concrete creator may override.
AbstractCrs* CrsCreator::createAs(const NameSyntax& syntax, const std::string& name) const {
    switch (syntax.spelling) {
        case Spelling::OGC_URN:
            return createFromURN(name);
        case Spelling::OGC_URL:
            return createFromURL(name);
        case Spelling::GML_REFERENCE:
            return createFromGML(name);
        case Spelling::EPSG_CODE:
            return createFromEPSG(name, true);
        case Spelling::WFS_1_1_URN:
            return createFromCrsURN_WFS_1_1(name);
        default:
            return createFromCodes(*this, syntax.parse(name), true);
    }
}

NameExplanation CrsCreator::explainName(const std::string& name) const {
    return CoordinateTransformation::explainName(name,
                                                 [this](const char* property) { return isSyntaxAccepted(property); });
}

Crs CrsCreator::createInOrderOf(const std::string& name, const AbstractCrs& crs) const {
    Crs ordered(crs.copy());
    const Crs named = createFromName(name, false, false);
    if (named.get() != nullptr) ordered.mod()->setAxisOrderEastNorthOrLonLat(named->isAxisOrderEastNorthOrLonLat());
    return ordered;
}

bool CrsCreator::isSyntaxAccepted(const std::string& /*property*/) const { return false; }

bool CrsCreator::isEstablishedOrder() const { return false; }

AbstractCrs* CrsCreator::createFromURN(const std::string& name) const {
    const std::optional<std::size_t> body = skipOgcUrnHead(name);
    return body ? createFromOgcUrn(name, *body) : nullptr;
}

AbstractCrs* CrsCreator::createFromURL(const std::string& name) const {
    const std::optional<std::size_t> body = skipOgcUrlHead(name);
    return body ? createFromOgcUrn(name, *body) : nullptr;
}

AbstractCrs* CrsCreator::createFromOgcUrn(const std::string& name, std::size_t startPos) const {
    const ParsedName parsed = parseOgcBody(name, startPos);
    const NameTexts* const texts = std::get_if<NameTexts>(&parsed);
    if (texts == nullptr) return nullptr;
    OwnedCrs original = createUrnOriginal(*this, *texts);
    if (original == nullptr) return nullptr;
    OwnedCrs crs(original->copy());
    crs->setEpsgVersion(texts->version);
    finishWithUrnOriginal(std::move(original));
    return crs.release();
}

AbstractCrs* CrsCreator::createFromGML(const std::string& name) const {
    OwnedCrs crs(createFromCodes(*this, parseGmlReference(name), true));
    // Responses repeat the request's own spelling.
    if (crs != nullptr) crs->setAlias(name);
    return crs.release();
}

AbstractCrs* CrsCreator::createFromEPSG(const std::string& name, bool standardAxisOrder) const {
    const ParsedName parsed = parseEpsgName(name);
    const NameFault* const fault = std::get_if<NameFault>(&parsed);
    if (fault != nullptr && fault->isBeyondEnd) throw std::out_of_range("invalid string position");
    return createFromCodes(*this, parsed, standardAxisOrder);
}

AbstractCrs* CrsCreator::createFromCrsURN_WFS_1_1(const std::string& name) const {
    return createFromCodes(*this, parseWfs11Urn(name), true);
}

// text = name ";" axis order ";" primary scale factor [ ";" secondary scale factor { ";" ignored } ]
//
// Every axis order but "EN" counts as "NE".
AbstractCrs* CrsCreator::createFromSpecialTextFormat(const std::string& text) const {
    SpecialTextFields fields(text);
    OwnedCrs crs(getFromNameCache(fields.next().value(), true)->copy());
    const std::optional<std::string> axisOrder = fields.next();
    if (axisOrder) crs->setAxisOrderEastNorthOrLonLat(*axisOrder == "EN");
    const std::optional<std::string> primaryScale = fields.next();
    if (!primaryScale) {
        // Intended: the copy is not released.
        static_cast<void>(crs.release());
        if (text.empty()) throw FatalSubsystemError("114");
        return nullptr;
    }
    crs->setPrimaryScaleFactor(readScaleFactor(*primaryScale));
    if (const std::optional<std::string> secondaryScale = fields.next())
        crs->setSecCompoundScaleFactor(readScaleFactor(*secondaryScale));
    return crs.release();
}

}  // namespace CoordinateTransformation
