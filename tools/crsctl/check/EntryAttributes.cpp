#include "tools/crsctl/check/EntryAttributes.h"

#include <algorithm>
#include <cctype>
#include <set>

#include "CoordinateTransformation/CrsConfigData.h"
#include "config/Fragment.h"
#include "tools/common/FixedDecimals.h"
#include "tools/common/Text.h"

namespace crsctl {

using Tools::MAX_DECIMALS;
using Tools::printable;

using boost::property_tree::ptree;
using CoordinateTransformation::AXIS_ORDER;
using CoordinateTransformation::CrsConfigData;
using CoordinateTransformation::MAP_TO_EPSG_CODE;
using CoordinateTransformation::NUMBER_OF_DECIMAL_PLACES;
using CoordinateTransformation::SUPPRESS_DUPLICATE_COORDINATES;

namespace {

constexpr char CRS_84[] = "CRS:84";

std::string quoted(const std::string& text) { return "\"" + printable(text) + "\""; }

std::string assigned(const char* attribute, const std::string& value) { return attribute + ("=" + quoted(value)); }

std::string spelled(const char* attribute) { return ": it is spelled " + std::string(attribute); }

bool isBlankCharacter(char character) {
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

bool hasBlanksAround(const std::string& text) {
    return !text.empty() && (isBlankCharacter(text.front()) || isBlankCharacter(text.back()));
}

std::string lowered(std::string text) {
    for (char& character : text) character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    return text;
}

class EntryExamination {
public:
    EntryExamination(const ptree& examined, const Place& entryPlace, Findings& found)
        : entry(examined), place(entryPlace), findings(found), data({entryPlace.element, examined}) {}

    void run() {
        if (hasElementsInside()) warn("elements inside an entry are ignored");
        if (entry.data() == CRS_84) {
            warnOfAttributesOfCrs84();
            return;
        }
        examineText();
        for (const auto& [name, value] : attributes()) examineAttribute(name, value.data());
    }

private:
    void warn(const std::string& text) { findings.push_back({Severity::WARNING, place, text}); }

    ptree attributes() const { return entry.get_child("<xmlattr>", ptree()); }

    bool hasElementsInside() const {
        return std::any_of(entry.begin(), entry.end(), [](const ptree::value_type& child) {
            return child.first != "<xmlattr>" && child.first != "<xmlcomment>";
        });
    }

    void warnOfAttributesOfCrs84() {
        for (const auto& attribute : attributes())
            warn("attribute " + attribute.first + " is ignored: CRS:84 is understood as it stands");
    }

    void examineText() {
        const bool isAlias = attributes().count(MAP_TO_EPSG_CODE) != 0;
        if (hasBlanksAround(entry.data()))
            warn("blanks around " + quoted(entry.data()) + " are part of the " + (isAlias ? "alias" : "identifier"));
        if (isAlias && entry.data().empty()) warn("mapToEpsgCode without a text: the entry has no alias");
    }

    void examineAttribute(const std::string& name, const std::string& value) {
        if (!seen.insert(name).second)
            warn("attribute " + name + " is ignored: it stands there a second time");
        else if (name == MAP_TO_EPSG_CODE)
            examineMapping(value);
        else if (name == NUMBER_OF_DECIMAL_PLACES)
            examineDecimals(value);
        else if (name == SUPPRESS_DUPLICATE_COORDINATES)
            examineSuppression(value);
        else if (name == AXIS_ORDER)
            examineAxisOrder(value);
        else
            warn("attribute " + name + " is ignored" + advice(name));
    }

    static std::string advice(const std::string& name) {
        const std::string attribute = lowered(name);
        if (attribute == "suppressduplicatecoordinates") return spelled(SUPPRESS_DUPLICATE_COORDINATES);
        for (const char* const known :
             {MAP_TO_EPSG_CODE, NUMBER_OF_DECIMAL_PLACES, SUPPRESS_DUPLICATE_COORDINATES, AXIS_ORDER})
            if (attribute == lowered(known)) return spelled(known);
        return "";
    }

    void examineMapping(const std::string& value) {
        if (hasBlanksAround(value)) warn("blanks around the code in " + assigned(MAP_TO_EPSG_CODE, value));
    }

    void examineDecimals(const std::string& value) {
        const boost::optional<int> decimals = data.getNumberOfDecimalPlaces();
        const std::string attribute = assigned(NUMBER_OF_DECIMAL_PLACES, value);
        if (!decimals)
            warn(attribute + " is ignored: no integer");
        else if (*decimals < 0 || *decimals > MAX_DECIMALS)
            warn(attribute + " is taken, but no such number of places can be written");
    }

    // What the entry makes of a value cannot be told from what it has without one, except by its text.
    void examineSuppression(const std::string& value) {
        ptree probe;
        probe.put(std::string("<xmlattr>.") + SUPPRESS_DUPLICATE_COORDINATES, value);
        const std::set<std::string> falseWords = {"false", "0"};
        const std::string word = value.substr(std::min(value.find_first_not_of(" \t\r\n"), value.size()));
        const std::string trimmed = word.substr(0, word.find_last_not_of(" \t\r\n") + 1);
        if (!CrsConfigData({"CRS", probe}).getPreventDoubleCoordinateOutput() && falseWords.count(trimmed) == 0)
            warn(assigned(SUPPRESS_DUPLICATE_COORDINATES, value) + " is ignored: neither true, false, 1 nor 0");
    }

    void examineAxisOrder(const std::string& value) {
        if (!data.getAxisOrderEastNorthOrLonLat())
            warn(assigned(AXIS_ORDER, value) + " is ignored: neither EN nor NE");
        else if (!data.isMapped())
            warn(assigned(AXIS_ORDER, value) +
                 " has no effect: it holds under an alias only, which mapToEpsgCode makes");
    }

    const ptree& entry;
    const Place& place;
    Findings& findings;
    CrsConfigData data;
    std::set<std::string> seen;
};

}  // namespace

void examineEntry(const ptree& entry, const Place& place, Findings& findings) {
    EntryExamination(entry, place, findings).run();
}

}  // namespace crsctl
