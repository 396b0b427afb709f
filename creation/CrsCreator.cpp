#include "CoordinateTransformation/CrsCreator.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "CoordinateTransformation/CrsNotConfigured.h"
#include "CoordinateTransformation/CrsUnknownSyntaxOrAlias.h"
#include "CoordinateTransformation/FatalSubsystemError.h"
#include "QSHelpers/ConversionError.h"
#include "creation/CrsNameSyntax.h"
#include "text/NumericText.h"

namespace CoordinateTransformation {

namespace {

using QSHelpers::ConversionError;

unsigned int readCode(const std::string& text) {
    return QSHelpers::convertTextToNumeric<unsigned int>(text, true, true);
}

double readScaleFactor(const std::string& text) { return QSHelpers::convertTextToNumeric<double>(text, false, false); }

// Nothing for a text that is not a number: the name is then in another spelling.
std::optional<unsigned int> codeIfNumber(const std::optional<std::string>& text) {
    if (!text) return std::nullopt;
    try {
        return readCode(*text);
    } catch (const ConversionError&) {
        return std::nullopt;
    }
}

using OwnedCrs = std::unique_ptr<AbstractCrs>;

// The object that a URN or URL is first turned into; only a copy of it is handed on.
OwnedCrs createUrnOriginal(const CrsCreator& creator, const OgcUrnTexts& texts) {
    const unsigned int second = texts.secondCode.empty() ? 0 : readCode(texts.secondCode);
    return OwnedCrs(creator.createFromCode(readCode(texts.firstCode), second, true));
}

// Intended: the original of a CRS that is handed on is not released, unless the build says otherwise.
void finishWithUrnOriginal([[maybe_unused]] OwnedCrs original) {
#if !defined(COORDTRANS_RELEASE_URN_ORIGINAL)
    static_cast<void>(original.release());
#endif
}

// Fields separated by ";"; a text has one field more than separators.
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
    if (AbstractCrs* const crs = createFromURN(name)) return crs;
    if (AbstractCrs* const crs = createFromURL(name)) return crs;
    if (AbstractCrs* const crs = createFromGML(name)) return crs;
    if (AbstractCrs* const crs = createFromEPSG(name, true)) return crs;
    return createFromCrsURN_WFS_1_1(name);
}

AbstractCrs* CrsCreator::createFromURN(const std::string& name) const {
    const std::optional<std::size_t> body = skipOgcUrnHead(name);
    return body ? createFromOgcUrn(name, *body) : nullptr;
}

AbstractCrs* CrsCreator::createFromURL(const std::string& name) const {
    const std::optional<std::size_t> body = skipOgcUrlHead(name);
    return body ? createFromOgcUrn(name, *body) : nullptr;
}

AbstractCrs* CrsCreator::createFromOgcUrn(const std::string& name, std::size_t startPos) const {
    const std::optional<OgcUrnTexts> texts = parseOgcUrnBody(name, startPos);
    if (!texts) return nullptr;
    OwnedCrs original = createUrnOriginal(*this, *texts);
    if (original == nullptr) return nullptr;
    OwnedCrs crs(original->copy());
    crs->setEpsgVersion(texts->version);
    finishWithUrnOriginal(std::move(original));
    return crs.release();
}

AbstractCrs* CrsCreator::createFromGML(const std::string& name) const {
    const std::optional<unsigned int> code = codeIfNumber(parseGmlReference(name));
    if (!code) return nullptr;
    OwnedCrs crs(createFromCode(*code, 0, true));
    // Responses echo the request's own spelling.
    if (crs != nullptr) crs->setAlias(name);
    return crs.release();
}

AbstractCrs* CrsCreator::createFromEPSG(const std::string& name, bool standardAxisOrder) const {
    const std::optional<EpsgNameTexts> texts = parseEpsgName(name);
    if (!texts) return nullptr;
    const std::optional<unsigned int> first = codeIfNumber(texts->firstCode);
    const std::optional<unsigned int> second = texts->secondCode ? codeIfNumber(texts->secondCode) : 0U;
    return first && second ? createFromCode(*first, *second, standardAxisOrder) : nullptr;
}

AbstractCrs* CrsCreator::createFromCrsURN_WFS_1_1(const std::string& name) const {
    const std::optional<unsigned int> code = codeIfNumber(parseWfs11Urn(name));
    return code ? createFromCode(*code, 0, true) : nullptr;
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
