#include "config/Fragment.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <locale>
#include <sstream>
#include <streambuf>

#include <boost/property_tree/xml_parser.hpp>

#include "text/FileText.h"

namespace CoordinateTransformation {
namespace {

using boost::property_tree::ptree;
using boost::property_tree::xml_parser_error;

constexpr std::string_view XML_WHITE_SPACE = " \t\r\n";
// The characters at which the property tree's reader ends names of elements and attributes.
constexpr std::string_view ENDS_OF_ELEMENT_NAME = " \t\r\n/>?";
constexpr std::string_view ENDS_OF_ATTRIBUTE_NAME = " \t\r\n/<>=?!";

constexpr std::size_t MAX_QUOTE_LENGTH = 40;

std::string quote(std::string_view name) {
    return std::string(name.substr(0, MAX_QUOTE_LENGTH)) + (name.size() > MAX_QUOTE_LENGTH ? "..." : "");
}

bool startsWith(std::string_view text, std::string_view head) { return text.substr(0, head.size()) == head; }

// Whether the text begins with a byte order mark of UTF-16, or with ASCII characters and a NUL byte beside each.
bool isUtf16(std::string_view text) {
    if (startsWith(text, "\xFF\xFE") || startsWith(text, "\xFE\xFF")) return true;
    return text.size() >= 4 && (text[0] == '\0') != (text[1] == '\0') && (text[0] == '\0') == (text[2] == '\0') &&
           (text[1] == '\0') == (text[3] == '\0');
}

bool isEntity(std::string_view name) {
    constexpr std::string_view KNOWN[] = {"amp", "lt", "gt", "quot", "apos"};
    return std::find(std::begin(KNOWN), std::end(KNOWN), name) != std::end(KNOWN);
}

// The characters of XML 1.0, section 2.2.
bool isCharacter(std::uint32_t code) {
    if (code < 0x20) return code == 0x9 || code == 0xA || code == 0xD;
    return code <= 0xD7FF || (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
}

// reference = "#" digits | "#x" hexadecimal digits
bool refersToCharacter(std::string_view reference) {
    const bool hexadecimal = startsWith(reference, "#x");
    const std::string_view digits = reference.substr(hexadecimal ? 2 : 1);
    const std::string_view alphabet = hexadecimal ? "0123456789ABCDEFabcdef" : "0123456789";
    std::uint32_t code = 0;
    for (const char digit : digits) {
        const std::size_t found = alphabet.find(digit);
        if (found == std::string_view::npos || code > 0x10FFFF) return false;
        const std::size_t value = found < 16 ? found : found - 6;
        code = code * (hexadecimal ? 16 : 10) + static_cast<std::uint32_t>(value);
    }
    return !digits.empty() && isCharacter(code);
}

// Thrown inside a walk only.
struct Stop {
    FragmentFault fault;
};

// fragment = [ byte order mark ] { white space | markup },  content = { text | markup }
// markup   = element | "<!--" comment "-->" | "<![CDATA[" data "]]>" | "<?" instruction "?>"
//          | "<!DOCTYPE" declaration ">" | "<!" declaration ">"
class Walk {
public:
    Walk(std::string_view walked, std::vector<FragmentElement>* startTags)
        : text(walked.substr(0, walked.find('\0'))), whole(walked), elements(startTags) {}

    void run() {
        if (whole.size() > MAX_FRAGMENT_SIZE) stopTreeReader("the fragment is larger than 256 MB", 0);
        if (isUtf16(whole)) stop("the text is UTF-16; it must be UTF-8", 0);
        if (startsWith(text, "\xEF\xBB\xBF")) at = 3;
        while (at < text.size()) walkNext();
        if (text.size() < whole.size()) stop("the text has a NUL byte", at);
        if (!open.empty()) stop("the text ends inside <" + quote(open.back().name) + "> of line " + openLine(), at);
    }

private:
    [[noreturn]] void stop(const std::string& message, std::size_t position) {
        throw Stop{{message, placeOf(position), false}};
    }
    [[noreturn]] void stopTreeReader(const std::string& message, std::size_t position) {
        throw Stop{{message, placeOf(position), true}};
    }

    bool isAt(std::string_view head) const { return text.compare(at, head.size(), head) == 0; }
    std::string openLine() const { return std::to_string(open.back().place.line); }

    void walkNext() {
        if (text[at] == '<')
            walkMarkup();
        else if (open.empty())
            walkBlanks();
        else
            walkText(std::min(text.find('<', at), text.size()));
    }

    void walkBlanks() {
        at = std::min(text.find_first_not_of(XML_WHITE_SPACE, at), text.size());
        if (at < text.size() && text[at] != '<') stop("the text begins outside of an element", at);
    }

    void walkMarkup() {
        if (isAt("<!--"))
            skip(4, "-->", "a comment");
        else if (isAt("<![CDATA["))
            skip(9, "]]>", "a CDATA section");
        else if (isAt("<!DOCTYPE") && at + 9 < text.size() &&
                 XML_WHITE_SPACE.find(text[at + 9]) != std::string_view::npos)
            skipDocumentType();
        else if (isAt("<!"))
            skip(2, ">", "a declaration");
        else if (isAt("<?"))
            skip(2, "?>", "an instruction");
        else if (isAt("</") && !open.empty())
            walkEndTag();
        else
            walkStartTag();
    }

    void skip(std::size_t head, std::string_view end, const std::string& what) {
        const std::size_t found = text.find(end, std::min(at + head, text.size()));
        if (found == std::string_view::npos) stop(what + " does not end", at);
        at = found + end.size();
    }

    // A declaration may contain further declarations in brackets.
    void skipDocumentType() {
        int depth = 0;
        for (std::size_t i = at + 10; i < text.size(); ++i) {
            if (text[i] == '[') ++depth;
            if (text[i] == ']' && depth > 0) --depth;
            if (text[i] != '>' || depth > 0) continue;
            at = i + 1;
            return;
        }
        stop("a document type does not end", at);
    }

    std::string_view takeUpTo(std::string_view ends) {
        const std::size_t end = std::min(text.find_first_of(ends, at), text.size());
        const std::string_view taken = text.substr(at, end - at);
        at = end;
        return taken;
    }

    void skipWhiteSpace() { at = std::min(text.find_first_not_of(XML_WHITE_SPACE, at), text.size()); }

    void expect(std::string_view expected, std::size_t tag) {
        if (!isAt(expected)) stop("a tag has no " + std::string(expected), tag);
        at += expected.size();
    }

    void walkStartTag() {
        const std::size_t tag = at++;
        const std::string_view name = takeUpTo(ENDS_OF_ELEMENT_NAME);
        if (name.empty()) stop("a tag has no name", tag);
        const FragmentElement element{name, placeOf(tag)};
        if (elements != nullptr) elements->push_back(element);
        if (open.size() == MAX_NESTING)
            stopTreeReader("elements are nested more than " + std::to_string(MAX_NESTING) + " deep", tag);
        skipWhiteSpace();
        while (at < text.size() && ENDS_OF_ATTRIBUTE_NAME.find(text[at]) == std::string_view::npos) walkAttribute();
        const bool isEmpty = isAt("/");
        expect(isEmpty ? "/>" : ">", tag);
        if (!isEmpty) open.push_back(element);
    }

    void walkAttribute() {
        const std::size_t attribute = at;
        const std::string name = quote(takeUpTo(ENDS_OF_ATTRIBUTE_NAME));
        skipWhiteSpace();
        if (!isAt("=")) stop("attribute " + name + " has no value", attribute);
        ++at;
        skipWhiteSpace();
        if (!isAt("\"") && !isAt("'")) stop("the value of attribute " + name + " is not quoted", attribute);
        const char mark = text[at++];
        const std::size_t end = text.find(mark, at);
        if (end == std::string_view::npos) stop("the value of attribute " + name + " does not end", attribute);
        walkText(end);
        at = end + 1;
        skipWhiteSpace();
    }

    void walkEndTag() {
        const std::size_t tag = at;
        at += 2;
        const std::string_view name = takeUpTo(ENDS_OF_ELEMENT_NAME);
        if (name != open.back().name)
            stop(
                "end tag </" + quote(name) + "> does not match <" + quote(open.back().name) + "> of line " + openLine(),
                tag);
        skipWhiteSpace();
        expect(">", tag);
        open.pop_back();
    }

    // Reads text and attribute values, the only places of references.
    void walkText(std::size_t end) {
        const std::string_view upToEnd = text.substr(0, end);
        for (at = upToEnd.find('&', at); at < end; at = upToEnd.find('&', at + 1)) checkReference(upToEnd.substr(at));
        at = end;
    }

    void checkReference(std::string_view reference) {
        const std::size_t end = reference.find_first_of("; \t\r\n&<", 1);
        if (end == std::string_view::npos || reference[end] != ';' || end == 1)
            stop("an & does not begin an entity; write &amp;", at);
        const std::string_view name = reference.substr(1, end - 1);
        const std::string written = "&" + quote(name) + ";";
        if (name[0] == '#' && !refersToCharacter(name)) stop(written + " is not a character", at);
        if (name[0] != '#' && !isEntity(name))
            stop(written + " is not a known entity; these are amp, lt, gt, quot and apos", at);
    }

    // Positions are requested in ascending order, so lines are counted only once.
    FragmentPlace placeOf(std::size_t position) {
        for (; counted < position; ++counted) {
            if (text[counted] != '\n') continue;
            ++line;
            lineBegin = counted + 1;
        }
        return {line, position - lineBegin + 1};
    }

    const std::string_view text;  // up to a NUL byte, where the property tree's reader ends
    const std::string_view whole;
    std::vector<FragmentElement>* const elements;
    std::vector<FragmentElement> open;
    std::size_t at = 0;
    std::size_t counted = 0;
    std::size_t line = 1;
    std::size_t lineBegin = 0;
};

// Converts as the property tree does.
template <typename Value>
boost::optional<Value> readAttribute(const ptree& entry, const char* attribute) {
    std::istringstream stream(entry.get<std::string>(std::string("<xmlattr>.") + attribute, ""));
    stream.exceptions(std::ios::badbit);
    stream.imbue(std::locale::classic());
    Value value{};
    boost::property_tree::customize_stream<char, std::char_traits<char>, Value>::extract(stream, value);
    if (stream.fail() || stream.get() != std::char_traits<char>::eof()) return boost::none;
    return value;
}

bool isContainer(const ptree::value_type& element) {
    return std::any_of(std::begin(FRAGMENT_CONTAINERS), std::end(FRAGMENT_CONTAINERS),
                       [&element](const FragmentContainer& container) { return element.first == container.name; });
}

void visitContainer(const ptree::value_type& element, const FragmentContainer& container,
                    const FragmentVisitor& visit) {
    visit(FragmentRole::CONTAINER, element, &container);
    for (const ptree::value_type& child : element.second)
        if (isElement(child))
            visit(container.holds(child.first) ? FragmentRole::ENTRY : FragmentRole::UNKNOWN_ENTRY, child, &container);
}

// Visits the children of the first container only.
void visitContainers(const ptree& fragment, const FragmentContainer& container, const FragmentVisitor& visit) {
    bool isFirst = true;
    for (const ptree::value_type& element : fragment) {
        if (element.first != container.name) continue;
        if (isFirst)
            visitContainer(element, container, visit);
        else
            visit(FragmentRole::REPEATED_CONTAINER, element, &container);
        isFirst = false;
    }
}

std::optional<FragmentFault> walk(std::string_view text, std::vector<FragmentElement>* elements) {
    try {
        Walk(text, elements).run();
    } catch (const Stop& stopped) {
        return stopped.fault;
    }
    return std::nullopt;
}

}  // namespace

bool FragmentContainer::holds(std::string_view element) const {
    return !element.empty() && std::find(entryNames.begin(), entryNames.end(), element) != entryNames.end();
}

boost::optional<int> readInteger(const ptree& entry, const char* attribute) {
    return readAttribute<int>(entry, attribute);
}

boost::optional<bool> readBoolean(const ptree& entry, const char* attribute) {
    return readAttribute<bool>(entry, attribute);
}

bool isElement(const ptree::value_type& node) { return node.first != "<xmlattr>" && node.first != "<xmlcomment>"; }

void visitFragment(const ptree& fragment, const FragmentVisitor& visit) {
    for (const FragmentContainer& container : FRAGMENT_CONTAINERS) visitContainers(fragment, container, visit);
    for (const ptree::value_type& element : fragment)
        if (isElement(element) && !isContainer(element)) visit(FragmentRole::UNKNOWN_CONTAINER, element, nullptr);
}

std::optional<FragmentFault> findFragmentFault(std::string_view text) { return walk(text, nullptr); }

std::vector<FragmentElement> fragmentElements(std::string_view text) {
    std::vector<FragmentElement> elements;
    walk(text, &elements);
    return elements;
}

namespace {

// Reads a text in place; a string stream would copy it.
class TextBuffer : public std::streambuf {
public:
    explicit TextBuffer(const std::string& text) {
        // Nothing writes to it, but a stream buffer takes only pointers to modifiable characters.
        char* const begin = const_cast<char*>(text.data());
        setg(begin, begin, begin + text.size());
    }
};

xml_parser_error errorOf(const FragmentFault& fault) { return {fault.message, "", fault.place.line}; }

}  // namespace

ptree readFragment(std::istream& stream) {
    const std::string text = readUpTo(*stream.rdbuf(), MAX_FRAGMENT_SIZE + 1);
    if (!stream.good()) throw xml_parser_error("read error", "", 0);
    return readFragmentText(text);
}

ptree readFragmentText(const std::string& text) {
    const std::optional<FragmentFault> fault = findFragmentFault(text);
    if (fault && fault->exceedsTreeReader) throw errorOf(*fault);
    TextBuffer buffer(text);
    std::istream stream(&buffer);
    ptree tree;
    boost::property_tree::read_xml(stream, tree);
    if (fault) throw errorOf(*fault);
    return tree;
}

}  // namespace CoordinateTransformation
