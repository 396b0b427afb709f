#include "tools/crsctl/check/ElementPlaces.h"

#include <algorithm>

namespace crsctl {

namespace {

class TagWalk {
public:
    explicit TagWalk(std::string_view text) : fragment(text) {}

    std::vector<ElementPlace> run() {
        while ((position = fragment.find('<', position)) != std::string_view::npos) walkMarkup();
        return std::move(places);
    }

private:
    bool isAt(std::string_view head) const { return fragment.substr(position, head.size()) == head; }

    void walkMarkup() {
        if (isAt("<!--"))
            skipBehind("-->");
        else if (isAt("<![CDATA["))
            skipBehind("]]>");
        else if (isAt("<?"))
            skipBehind("?>");
        else if (isAt("<!"))
            skipDeclaration();
        else if (isAt("</"))
            skipBehind(">");
        else
            walkStartTag();
    }

    void skipBehind(std::string_view end) {
        const std::size_t found = fragment.find(end, position + 1);
        position = found == std::string_view::npos ? fragment.size() : found + end.size();
    }

    // A document type declaration may hold declarations of its own in brackets.
    void skipDeclaration() {
        int depth = 0;
        for (++position; position < fragment.size(); ++position) {
            if (fragment[position] == '[') ++depth;
            if (fragment[position] == ']') --depth;
            if (fragment[position] == '>' && depth <= 0) return;
        }
    }

    void walkStartTag() {
        const std::size_t nameBegin = position + 1;
        const std::size_t nameEnd = std::min(fragment.find_first_of(" \t\r\n/>?", nameBegin), fragment.size());
        places.push_back(
            {std::string(fragment.substr(nameBegin, nameEnd - nameBegin)), lineAt(position), position - lineBegin + 1});
        position = nameEnd;
        skipAttributes();
    }

    void skipAttributes() {
        char quote = '\0';
        for (; position < fragment.size(); ++position) {
            const char character = fragment[position];
            if (quote != '\0') {
                if (character == quote) quote = '\0';
            } else if (character == '"' || character == '\'') {
                quote = character;
            } else if (character == '>') {
                return;
            }
        }
    }

    // Tags are met in order, so that lines are counted once.
    std::size_t lineAt(std::size_t target) {
        for (; counted < target; ++counted) {
            if (fragment[counted] != '\n') continue;
            ++line;
            lineBegin = counted + 1;
        }
        return line;
    }

    std::string_view fragment;
    std::size_t position = 0;
    std::size_t counted = 0;
    std::size_t line = 1;
    std::size_t lineBegin = 0;
    std::vector<ElementPlace> places;
};

}  // namespace

std::vector<ElementPlace> elementPlaces(std::string_view fragment) { return TagWalk(fragment).run(); }

}  // namespace crsctl
