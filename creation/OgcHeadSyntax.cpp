#include <algorithm>

#include "creation/CrsNameSyntax.h"
#include "crs/OgcDefinitionsHost.h"

namespace CoordinateTransformation {

namespace {

// The characters of a name, front to back.
class NameReader {
public:
    explicit NameReader(const std::string& text) : name(text) {}

    // Everything up to the next `separator`, which is passed over, or up to the end of the name.
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

}  // namespace CoordinateTransformation
