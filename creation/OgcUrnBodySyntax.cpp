#include "creation/CrsNameSyntax.h"

namespace CoordinateTransformation {

namespace {

// body    = "def" sep head code [ "," head [ code ] ]
// head    = { ignored "," } "crs" sep ( "EPSG" | "epsg" ) sep version sep
// sep     = ":" | "/"
// ignored = { any character but ":", "/" and "," }
// version = { any character but ":" and "/" }
// code    = any character but ",", once or more
//
// The first "crs," of a compound is read as `ignored`. A code is converted later, so that a bad one is reported and
// not taken for another spelling.
class OgcUrnBodyMachine {
public:
    // False when the character cannot stand there.
    bool accept(char character) {
        if (state == State::CODE) return acceptInCode(character);
        if (character == ':' || character == '/') return leaveState();
        if (state == State::VERSION)
            texts.version += character;
        else if (state == State::CRS && character == ',')
            collected.clear();
        else
            collected += character;
        return true;
    }

    bool isComplete() const { return state == State::CODE && !texts.firstCode.empty(); }

    OgcUrnTexts texts;

private:
    enum class State { DEF, CRS, AUTHORITY, VERSION, CODE };

    bool leaveState() {
        switch (state) {
            case State::DEF:
                return leaveIf(collected == "def", State::CRS);
            case State::CRS:
                return leaveIf(collected == "crs", State::AUTHORITY);
            case State::AUTHORITY:
                return leaveIf(collected == "EPSG" || collected == "epsg", State::VERSION);
            default:
                return leaveIf(true, State::CODE);
        }
    }

    bool leaveIf(bool matches, State next) {
        if (!matches) return false;
        collected.clear();
        state = next;
        return true;
    }

    bool acceptInCode(char character) {
        if (character != ',') {
            (readingFirstCode ? texts.firstCode : texts.secondCode) += character;
            return true;
        }
        if (!readingFirstCode) return false;
        readingFirstCode = false;
        // The version is not cleared, on purpose: a compound has the versions of both components joined.
        state = State::CRS;
        return true;
    }

    State state = State::DEF;
    bool readingFirstCode = true;
    std::string collected;
};

}  // namespace

std::optional<OgcUrnTexts> parseOgcUrnBody(const std::string& name, std::size_t startPos) {
    OgcUrnBodyMachine machine;
    for (std::size_t i = startPos; i < name.size(); ++i)
        if (!machine.accept(name[i])) return std::nullopt;
    if (!machine.isComplete()) return std::nullopt;
    return machine.texts;
}

}  // namespace CoordinateTransformation
