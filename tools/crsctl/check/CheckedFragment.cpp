#include "tools/crsctl/check/CheckedFragment.h"

#include <map>
#include <utility>

#include <boost/property_tree/xml_parser.hpp>

#include "config/Fragment.h"
#include "tools/common/Text.h"
#include "tools/crsctl/check/EntryAttributes.h"

namespace crsctl {

using Tools::printable;

using boost::property_tree::ptree;
using boost::property_tree::xml_parser_error;
using CoordinateTransformation::CrsConfigData;
using CoordinateTransformation::FRAGMENT_CONTAINERS;
using CoordinateTransformation::FragmentContainer;
using CoordinateTransformation::FragmentElement;
using CoordinateTransformation::FragmentFault;

namespace {

bool isMarkupNode(const std::string& name) { return name == "<xmlattr>" || name == "<xmlcomment>"; }

std::string entryNamesInWords(const FragmentContainer& container) {
    std::string words;
    for (const std::string_view name : container.entryNames)
        if (!name.empty()) words += (words.empty() ? "" : " or ") + std::string(name);
    return words;
}

bool isBlankText(const std::string& text) { return text.find_first_not_of(" \t\r\n") == std::string::npos; }

class FragmentReader {
public:
    FragmentReader(const ptree& readTree, const std::vector<FragmentElement>& startTags)
        : tree(readTree), elements(startTags) {}

    CheckedFragment run() {
        walkTopLevel();
        for (const FragmentContainer& container : FRAGMENT_CONTAINERS)
            for (FragmentEntry& entry : entriesOf[container.name]) take(std::move(entry));
        return std::move(fragment);
    }

private:
    void warn(const Place& place, const std::string& text) {
        fragment.findings.push_back({Severity::WARNING, place, text});
    }

    // The tree keeps no places, but has the elements in the order of their start tags.
    Place placeOf(const std::string& name) {
        const FragmentElement& element = elements.at(nextElement++);
        return {element.place.line, element.place.column, name};
    }

    // Passes over an element that is ignored together with all that it holds.
    void skipChildren(const ptree& element) {
        for (const auto& [name, child] : element) {
            if (isMarkupNode(name)) continue;
            placeOf(name);
            skipChildren(child);
        }
    }

    void walkTopLevel() {
        for (const auto& [name, child] : tree) {
            if (isMarkupNode(name)) continue;
            const Place place = placeOf(name);
            if (const FragmentContainer* container = containerToRead(name, place))
                walkContainer(*container, child, place);
            else
                skipChildren(child);
        }
    }

    // Null, with a warning, for an element that is not read.
    const FragmentContainer* containerToRead(const std::string& name, const Place& place) {
        for (const FragmentContainer& container : FRAGMENT_CONTAINERS) {
            if (container.name != name) continue;
            if (entriesOf.emplace(name, std::vector<FragmentEntry>()).second) return &container;
            warn(place, "ignored with all its entries: only the first " + name + " is read");
            return nullptr;
        }
        warn(place, "ignored: only CrsConfiguration and SRSList are read at this level");
        return nullptr;
    }

    void walkContainer(const FragmentContainer& container, const ptree& element, const Place& place) {
        if (element.count("<xmlattr>") != 0)
            for (const auto& attribute : element.get_child("<xmlattr>"))
                warn(place, "attribute " + attribute.first + " is ignored: a container has none");
        if (!isBlankText(element.data())) warn(place, "text outside its entries is ignored");
        for (const auto& child : element) {
            if (isMarkupNode(child.first)) continue;
            walkChild(container, child, placeOf(child.first));
        }
    }

    void walkChild(const FragmentContainer& container, const ptree::value_type& child, const Place& place) {
        if (!container.holds(child.first)) {
            warn(place,
                 "ignored: entries of " + std::string(container.name) + " are called " + entryNamesInWords(container));
        } else {
            examineEntry(child.second, place, fragment.findings);
            entriesOf[container.name].push_back({place, child.second.data(), CrsConfigData(child), std::nullopt});
        }
        skipChildren(child.second);
    }

    void take(FragmentEntry entry) {
        const auto [first, isNew] =
            taken.emplace(std::pair(entry.data.getIdentifier(), entry.data.getAlias()), fragment.entries.size());
        if (!isNew) {
            entry.duplicateOf = first->second;
            warnOfDuplicate(entry, fragment.entries[first->second]);
        }
        fragment.entries.push_back(std::move(entry));
    }

    void warnOfDuplicate(const FragmentEntry& entry, const FragmentEntry& first) {
        const bool differs =
            entry.data.getNumberOfDecimalPlaces() != first.data.getNumberOfDecimalPlaces() ||
            entry.data.getAxisOrderEastNorthOrLonLat() != first.data.getAxisOrderEastNorthOrLonLat() ||
            entry.data.getPreventDoubleCoordinateOutput() != first.data.getPreventDoubleCoordinateOutput();
        warn(entry.place, "dropped: repeats " + printable(first.data.getAliasOrIdentifier()) + " of line " +
                              std::to_string(first.place.line) + (differs ? ", and its other settings are lost" : ""));
    }

    const ptree& tree;
    const std::vector<FragmentElement>& elements;
    std::size_t nextElement = 0;
    std::map<std::string, std::vector<FragmentEntry>> entriesOf;
    std::map<std::pair<std::string, std::string>, std::size_t> taken;  // by identifier and alias
    CheckedFragment fragment;
};

// The scanner has the better place where the tree reader itself has refused the text.
CheckedFragment malformed(const xml_parser_error& failure, const std::optional<FragmentFault>& fault) {
    CheckedFragment fragment;
    fragment.wellFormed = false;
    fragment.failure = failure.what();
    const Place place = fault ? Place{fault->place.line, fault->place.column} : Place{failure.line(), 0};
    fragment.findings.push_back(
        {Severity::ERROR, place, "the fragment is malformed: " + (fault ? fault->message : failure.message())});
    return fragment;
}

}  // namespace

CheckedFragment checkFragment(const std::string& text) {
    try {
        const ptree tree = CoordinateTransformation::readFragmentText(text);
        return FragmentReader(tree, CoordinateTransformation::fragmentElements(text)).run();
    } catch (const xml_parser_error& failure) {
        return malformed(failure, CoordinateTransformation::findFragmentFault(text));
    }
}

}  // namespace crsctl
