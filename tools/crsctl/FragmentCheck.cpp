#include "tools/crsctl/FragmentCheck.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include <boost/property_tree/xml_parser.hpp>

#include "config/Fragment.h"
#include "text/NumericText.h"
#include "tools/common/FixedDecimals.h"
#include "tools/common/Text.h"

namespace crsctl {

using namespace CoordinateTransformation;
using boost::property_tree::ptree;
using boost::property_tree::xml_parser_error;
using Tools::printable;

namespace {

std::string trimmed(const std::string& text) { return QSHelpers::trimWhitespace(text, QSHelpers::TRIM_BOTH); }

bool hasBlanksAround(const std::string& text) { return trimmed(text) != text; }

std::string quoted(const std::string& text) { return "\"" + printable(text) + "\""; }

const ptree& attributesOf(const ptree& element) {
    static const ptree NONE;
    return element.get_child("<xmlattr>", NONE);
}

std::string entryNames(const FragmentContainer& container) {
    std::string names;
    for (const std::string_view name : container.entryNames)
        if (!name.empty()) names += (names.empty() ? "" : " or ") + std::string(name);
    return names;
}

std::string faultOfDecimals(const boost::optional<int>& decimals) {
    if (!decimals) return "is ignored: it is not an integer";
    if (*decimals >= 0 && *decimals <= Tools::MAX_DECIMALS) return "";
    return "is out of range: 0 to " + std::to_string(Tools::MAX_DECIMALS) + " places can be written";
}

std::string faultOfAxisOrder(const CrsConfigData& data) {
    if (!data.getAxisOrderEastNorthOrLonLat()) return "is ignored: neither EN nor NE";
    if (data.isMapped()) return "";
    return "has no effect: it applies to an alias, and an entry without mapToEpsgCode has none";
}

// Returns the fault of a known attribute, as a text to follow it. The text is empty if there is none.
std::string faultOf(const std::string& name, const std::string& value, const ptree& entry, const CrsConfigData& data) {
    if (name == MAP_TO_EPSG_CODE) return hasBlanksAround(value) ? "has blanks around its code" : "";
    if (name == NUMBER_OF_DECIMAL_PLACES) return faultOfDecimals(data.getNumberOfDecimalPlaces());
    if (name == AXIS_ORDER) return faultOfAxisOrder(data);
    return readBoolean(entry, SUPPRESS_DUPLICATE_COORDINATES) ? "" : "is ignored: neither true, false, 1 nor 0";
}

class FragmentCheck {
public:
    explicit FragmentCheck(CrsConfig& server) : config(server) {}

    CheckedFragment run(const std::string& text) {
        const ptree tree = readFragmentText(text);
        const std::vector<FragmentElement> startTags = fragmentElements(text);
        auto next = startTags.begin();
        findPlaces(tree, next);
        visitFragment(tree, [this](FragmentRole role, const ptree::value_type& element,
                                   const FragmentContainer* container) { visit(role, element, container); });
        return std::move(fragment);
    }

private:
    void warn(const std::string& text) { fragment.findings.push_back({Severity::WARNING, place, text}); }

    // The tree has no places, but its elements are in the order of their start tags.
    void findPlaces(const ptree& parent, std::vector<FragmentElement>::const_iterator& next) {
        for (const ptree::value_type& node : parent) {
            if (!isElement(node)) continue;
            places.emplace(&node.second, (next++)->place);
            findPlaces(node.second, next);
        }
    }

    void visit(FragmentRole role, const ptree::value_type& element, const FragmentContainer* container) {
        const FragmentPlace& found = places.at(&element.second);
        place = {found.line, found.column, element.first};
        switch (role) {
            case FragmentRole::CONTAINER:
                return checkContainer(element.second);
            case FragmentRole::ENTRY:
                return takeEntry(element);
            case FragmentRole::REPEATED_CONTAINER:
                return warn("ignored with all its entries: only the first " + element.first + " is read");
            case FragmentRole::UNKNOWN_CONTAINER:
                return warn("ignored: only CrsConfiguration and SRSList are read at this level");
            case FragmentRole::UNKNOWN_ENTRY:
                return warn(std::string("ignored: entries of ") + container->name + " are called " +
                            entryNames(*container));
        }
    }

    void checkContainer(const ptree& container) {
        for (const auto& attribute : attributesOf(container))
            warn("attribute " + attribute.first + " is ignored: a container has none");
        if (!trimmed(container.data()).empty()) warn("text outside its entries is ignored");
    }

    void takeEntry(const ptree::value_type& element) {
        const CrsConfigData data(element);
        checkEntry(element.second, data);
        const std::pair key(data.getIdentifier(), data.getAlias());
        if (config.addCrsConfigData(data)) {
            indices.emplace(key, fragment.entries.size());
            fragment.entries.push_back({place, data});
        } else {
            warnOfRepetition(data, fragment.entries[indices.at(key)]);
        }
    }

    void checkEntry(const ptree& entry, const CrsConfigData& data) {
        if (std::any_of(entry.begin(), entry.end(), isElement)) warn("elements inside an entry are ignored");
        const ptree& attributes = attributesOf(entry);
        if (entry.data() == CRS_84) {
            for (const auto& attribute : attributes)
                warn("attribute " + attribute.first + " is ignored: the entry CRS:84 takes no attributes");
            return;
        }
        const bool isAlias = attributes.count(MAP_TO_EPSG_CODE) != 0;
        if (hasBlanksAround(entry.data()))
            warn("blanks around " + quoted(entry.data()) + " are part of the " + (isAlias ? "alias" : "identifier"));
        if (isAlias && entry.data().empty()) warn("mapToEpsgCode without a text: the entry has no alias");
        std::set<std::string> seen;
        for (const auto& [name, value] : attributes)
            if (seen.insert(name).second)
                checkAttribute(name, value.data(), entry, data);
            else
                warn("the second attribute " + name + " is ignored");
    }

    void checkAttribute(const std::string& name, const std::string& value, const ptree& entry,
                        const CrsConfigData& data) {
        const std::vector<std::string> known(std::begin(ENTRY_ATTRIBUTES), std::end(ENTRY_ATTRIBUTES));
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            const std::optional<std::string> meant = Tools::closest(name, known);
            warn("attribute " + name + " is ignored" + (meant ? ": it is spelled " + *meant : ""));
        } else if (const std::string fault = faultOf(name, value, entry, data); !fault.empty()) {
            warn(name + "=" + quoted(value) + " " + fault);
        }
    }

    void warnOfRepetition(const CrsConfigData& data, const CheckedEntry& first) {
        const bool differs = data.getNumberOfDecimalPlaces() != first.data.getNumberOfDecimalPlaces() ||
                             data.getAxisOrderEastNorthOrLonLat() != first.data.getAxisOrderEastNorthOrLonLat() ||
                             data.getPreventDoubleCoordinateOutput() != first.data.getPreventDoubleCoordinateOutput();
        warn("dropped: repeats " + printable(first.data.getAliasOrIdentifier()) + " of line " +
             std::to_string(first.place.line) + (differs ? ", and its other settings are lost" : ""));
    }

    CrsConfig& config;
    std::unordered_map<const ptree*, FragmentPlace> places;
    Place place;                                                         // of the visited element
    std::map<std::pair<std::string, std::string>, std::size_t> indices;  // by identifier and alias
    CheckedFragment fragment;
};

}  // namespace

CheckedFragment checkFragment(const std::string& text, CrsConfig& config) {
    try {
        return FragmentCheck(config).run(text);
    } catch (const xml_parser_error& failure) {
        // The place of the fault is more exact than that of the tree reader.
        const std::optional<FragmentFault> fault = findFragmentFault(text);
        const Place place = fault ? Place{fault->place.line, fault->place.column} : Place{failure.line()};
        const std::string reason = fault ? fault->message : failure.message();
        return {{}, {{Severity::ERROR, place, "the fragment is malformed: " + reason}}, failure.what()};
    }
}

}  // namespace crsctl
