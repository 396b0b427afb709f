// OGC's URNs and http URLs.

#include <algorithm>

#include "names/CrsName.h"

namespace CoordinateTransformation {
namespace {

constexpr char NOT_DEF[] = "that does not go on with \"def\"";
constexpr char NOT_CRS[] = "whose type is not \"crs\"";
constexpr char NOT_EPSG[] = "whose authority is not EPSG";
constexpr char NO_VERSION[] = "whose version is missing";
constexpr char NO_VERSION_OR_CODE[] = "whose version or code is missing";
constexpr char NO_CODE[] = "whose code is missing";
constexpr char THIRD_COMPONENT[] = "with more than two components";

NameFault malformed(const char* reason, std::size_t position) {
    return {NameExplanation::Fault::BAD_SYNTAX, reason, position, false};
}

// Reads the characters of a name from front to back.
class NameReader {
public:
    explicit NameReader(const std::string& text) : name(text) {}

    // The text up to the next `separator`, which is skipped, or up to the end of the name.
    std::string readUpTo(char separator) {
        const std::size_t end = std::min(name.find(separator, next), name.size());
        std::string text = name.substr(next, end - next);
        next = std::min(end + 1, name.size());
        return text;
    }

    void skipAll(char character) { next = std::min(name.find_first_not_of(character, next), name.size()); }

    std::size_t position() const { return next; }

private:
    const std::string& name;
    std::size_t next = 0;
};

// body    = "def" sep head code [ "," head [ code ] ]
// head    = { ignored "," } "crs" sep ( "EPSG" | "epsg" ) sep version sep
// sep     = ":" | "/"
// ignored = { any character but ":", "/" and "," }
// version = { any character but ":" and "/" }
// code    = any character but ",", once or more
//
// The first "crs," of a compound CRS is read as `ignored`. Codes are converted later, so that a bad code is reported as
// such and the name is not tried in another spelling.
class OgcBodyMachine {
public:
    // Returns false when the character is not allowed in the current state.
    bool accept(char character, std::size_t position) {
        if (state == State::CODE) return acceptInCode(character, position);
        if (character == ':' || character == '/') return leaveState(position);
        if (state == State::VERSION)
            texts.version += character;
        else if (state == State::CRS && character == ',')
            beginPart(position);
        else
            collected += character;
        return true;
    }

    ParsedName end(std::size_t position) {
        if (state == State::CODE && !texts.first.text.empty()) return finished();
        if (state == State::CODE) return malformed(NO_CODE, position);
        if (state == State::VERSION) return malformed(NO_VERSION_OR_CODE, position);
        return isPartComplete() ? malformed(missingNext(), position) : fault();
    }

    // The reason why a character was not accepted.
    NameFault fault() const {
        if (state == State::CODE) return malformed(THIRD_COMPONENT, partBegin);
        return malformed(state == State::DEF ? NOT_DEF : state == State::CRS ? NOT_CRS : NOT_EPSG, partBegin);
    }

    explicit OgcBodyMachine(std::size_t startPos) : partBegin(startPos) {}

private:
    enum class State { DEF, CRS, AUTHORITY, VERSION, CODE };

    // A second component without a code does not count.
    NameTexts finished() {
        if (texts.second && texts.second->text.empty()) texts.second.reset();
        return std::move(texts);
    }

    bool isPartComplete() const {
        if (state == State::DEF) return collected == "def";
        if (state == State::CRS) return collected == "crs";
        return state != State::AUTHORITY || collected == "EPSG" || collected == "epsg";
    }

    const char* missingNext() const {
        return state == State::DEF ? NOT_CRS : state == State::CRS ? NOT_EPSG : NO_VERSION;
    }

    bool leaveState(std::size_t separator) {
        if (!isPartComplete()) return false;
        beginPart(separator);
        state = static_cast<State>(static_cast<int>(state) + 1);
        if (state == State::CODE) beginCode();
        return true;
    }

    void beginPart(std::size_t separator) {
        collected.clear();
        partBegin = separator + 1;
    }

    void beginCode() {
        if (readingFirstCode)
            texts.first.position = partBegin;
        else
            texts.second = CodeText{"", partBegin};
    }

    bool acceptInCode(char character, std::size_t position) {
        if (character != ',') {
            (readingFirstCode ? texts.first : *texts.second).text += character;
            return true;
        }
        if (!readingFirstCode) {
            partBegin = position;
            return false;
        }
        readingFirstCode = false;
        // Intended: the version is not cleared, so a compound CRS has the versions of both components joined.
        beginPart(position);
        state = State::CRS;
        return true;
    }

    NameTexts texts;
    State state = State::DEF;
    bool readingFirstCode = true;
    std::string collected;
    std::size_t partBegin;
};

ParsedName parseWithHead(const std::string& name, std::optional<std::size_t> head) {
    return head ? parseOgcBody(name, *head) : NameFault();
}

// head part P, or for a compound CRS: head "crs," part P "," part S
std::string writeOgcName(const CodePair& codes, const std::string& head, const std::string& part) {
    const std::string compound = codes.secondary == 0 ? "" : "crs,";
    return head + compound + writePrefixed(codes, part);
}

}  // namespace

// head = "urn:" ( "ogc" | "x-ogc" ) ":"
std::optional<std::size_t> skipOgcUrnHead(const std::string& name) {
    NameReader reader(name);
    if (reader.readUpTo(':') != "urn") return std::nullopt;
    const std::string space = reader.readUpTo(':');
    if (space != "ogc" && space != "x-ogc") return std::nullopt;
    return reader.position();
}

// head = "http:" { "/" } host "/"
std::optional<std::size_t> skipOgcUrlHead(const std::string& name) {
    NameReader reader(name);
    if (reader.readUpTo(':') != "http") return std::nullopt;
    reader.skipAll('/');
    if (reader.readUpTo('/') != OGC_DEFINITIONS_HOST) return std::nullopt;
    return reader.position();
}

ParsedName parseOgcBody(const std::string& name, std::size_t startPos) {
    OgcBodyMachine machine(std::min(startPos, name.size()));
    for (std::size_t i = startPos; i < name.size(); ++i)
        if (!machine.accept(name[i], i)) return machine.fault();
    return machine.end(name.size());
}

ParsedName parseOgcUrn(const std::string& name) { return parseWithHead(name, skipOgcUrnHead(name)); }

ParsedName parseOgcUrl(const std::string& name) { return parseWithHead(name, skipOgcUrlHead(name)); }

std::string writeOgcUrn(const CodePair& codes, const std::string& version) {
    return writeOgcName(codes, "urn:ogc:def:", "crs:EPSG:" + version + ":");
}

std::string writeOgcUrl(const CodePair& codes, const std::string& version) {
    const std::string part = "crs/EPSG/" + (version.empty() ? "0" : version) + "/";
    return writeOgcName(codes, std::string("http://") + OGC_DEFINITIONS_HOST + "/def/", part);
}

}  // namespace CoordinateTransformation
