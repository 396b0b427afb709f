#include "tools/crsctl/names/Spelling.h"

#include <functional>
#include <stdexcept>

#include "CoordinateTransformation/CrsCreator.h"
#include "QSHelpers/ConversionError.h"

namespace crsctl {

namespace {

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::CrsCreator;

constexpr char EPSG_PREFIX[] = "EPSG:";
constexpr char GML_FILE[] = "epsg.xml#";
constexpr char WFS_1_1_HEAD[] = "urn:EPSG:geographicCRS:";

bool startsWith(const std::string& text, const char* head) { return text.rfind(head, 0) == 0; }

bool startsWithDigit(const std::string& text) { return !text.empty() && text.front() >= '0' && text.front() <= '9'; }

// The library's own recognisers on a creator that makes nothing: it notes the codes that they have read.
class SpellingProbe : public CrsCreator {
public:
    explicit SpellingProbe(const std::string& probedName) : name(probedName) {}

    Recognition run() {
        const bool taken = tries(Spelling::Urn, [this] { createFromURN(name); }) ||
                           tries(Spelling::Url, [this] { createFromURL(name); }) ||
                           tries(Spelling::GmlReference, [this] { createFromGML(name); }) ||
                           tries(Spelling::EpsgCode, [this] { createFromEPSG(name, true); }) ||
                           tries(Spelling::Wfs11Urn, [this] { createFromCrsURN_WFS_1_1(name); });
        return taken ? found : badCodeByHead();
    }

    const AbstractCrs* getFromNameCache(const std::string&, bool) const override { return nullptr; }
    const AbstractCrs* getFromCodeCache(const std::string&, bool) const override { return nullptr; }
    AbstractCrs* createFromCode(unsigned int primary, unsigned int secondary, bool) const override {
        read = {Spelling::None, primary, secondary, false};
        accepted = true;
        return nullptr;
    }
    void init() override {}
    AbstractCrs* createDefault() const override { return nullptr; }
    AbstractCrs* createUnknown() const override { return nullptr; }

protected:
    bool isCrsAllowed(const AbstractCrs*) const override { return true; }

private:
    // Whether the recogniser takes the name or fails for it, after which no other is asked.
    bool tries(Spelling spelling, const std::function<void()>& recogniser) {
        try {
            recogniser();
        } catch (const QSHelpers::ConversionError&) {
            found = {spelling, 0, 0, true};
            return true;
        } catch (const std::out_of_range&) {
            found = {spelling, 0, 0, true};
            return true;
        }
        if (accepted) found = {spelling, read.primary, read.secondary, false};
        return accepted;
    }

    // Recognisers that keep a bad code to themselves are known by the head of the name.
    Recognition badCodeByHead() const {
        if (name.find(GML_FILE) != std::string::npos) return {Spelling::GmlReference, 0, 0, true};
        if (startsWith(name, WFS_1_1_HEAD)) return {Spelling::Wfs11Urn, 0, 0, true};
        if (startsWith(name, EPSG_PREFIX) || startsWithDigit(name)) return {Spelling::EpsgCode, 0, 0, true};
        return {};
    }

    std::string name;
    Recognition found;
    mutable Recognition read;
    mutable bool accepted = false;
};

}  // namespace

const char* wordsFor(Spelling spelling) {
    switch (spelling) {
        case Spelling::ConfiguredName:
            return "configured name";
        case Spelling::Urn:
            return "OGC URN";
        case Spelling::Url:
            return "OGC http URL";
        case Spelling::GmlReference:
            return "GML reference";
        case Spelling::EpsgCode:
            return "EPSG code";
        case Spelling::Wfs11Urn:
            return "WFS 1.1 URN";
        case Spelling::None:
            break;
    }
    return "none";
}

Recognition recognise(const std::string& name) { return SpellingProbe(name).run(); }

}  // namespace crsctl
