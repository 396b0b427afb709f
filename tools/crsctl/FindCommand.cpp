#include "tools/crsctl/FindCommand.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <sstream>
#include <string_view>
#include <tuple>
#include <utility>

#include "text/InitFile.h"
#include "text/NumericText.h"
#include "tools/common/FixedDecimals.h"
#include "tools/common/Text.h"

namespace crsctl {

using CoordinateTransformation::writeDouble;
using Tools::printable;
using Tools::smallLetters;

namespace {

constexpr double FULL_TURN = 360;

double widthOf(const GeographicBox& box) {
    const double width = box.east - box.west;
    return width < 0 ? width + FULL_TURN : width;
}

// Returns the distance eastwards from `from` to `to`, in degrees.
double eastwards(double from, double to) {
    const double way = std::fmod(to - from, FULL_TURN);
    return way < 0 ? way + FULL_TURN : way;
}

bool isOnEarth(const GeographicBox& box) {
    return std::abs(box.west) <= 180 && std::abs(box.east) <= 180 && std::abs(box.south) <= 90 &&
           std::abs(box.north) <= 90 && box.south <= box.north;
}

[[noreturn]] void refuseBox(const std::string& text, const char* reason) {
    throw SetUpError("--area " + printable(text) + ": " + reason);
}

}  // namespace

GeographicBox readBox(const std::string& text) {
    const std::string sides = text + ",";
    std::string_view rest = sides;
    GeographicBox box{};
    for (double* const side : {&box.west, &box.south, &box.east, &box.north}) {
        const std::optional<double> number = CoordinateTransformation::takeDouble(rest);
        if (!number || rest.empty() || rest.front() != ',') refuseBox(text, "four numbers W,S,E,N are needed");
        *side = *number;
        rest.remove_prefix(1);
    }
    if (!rest.empty()) refuseBox(text, "four numbers W,S,E,N are needed");
    if (!isOnEarth(box)) refuseBox(text, "not a box of longitudes and latitudes");
    return box;
}

std::string boxText(const GeographicBox& box) {
    return writeDouble(box.west) + "," + writeDouble(box.south) + "," + writeDouble(box.east) + "," +
           writeDouble(box.north);
}

bool covers(const GeographicBox& outer, const GeographicBox& inner) {
    const bool isAround = widthOf(outer) >= FULL_TURN;
    return outer.south <= inner.south && outer.north >= inner.north &&
           (isAround || eastwards(outer.west, inner.west) + widthOf(inner) <= widthOf(outer));
}

bool intersects(const GeographicBox& left, const GeographicBox& right) {
    return left.south <= right.north && right.south <= left.north &&
           (eastwards(left.west, right.west) <= widthOf(left) || eastwards(right.west, left.west) <= widthOf(right));
}

double shareOfTheEarth(const GeographicBox& box) {
    constexpr double RADIANS = 0.017453292519943295;
    return widthOf(box) / FULL_TURN * (std::sin(box.north * RADIANS) - std::sin(box.south * RADIANS)) / 2;
}

namespace {

constexpr std::string_view CODE_PREFIX = "epsg:";

using Words = std::vector<std::string>;

bool isLetterOrDigit(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || (c & '\x80') != 0; }

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// A word is a run of letters, a run of digits, or a single other character.
bool beginsWord(std::string_view text, std::size_t at) {
    if (at == 0 || !isLetterOrDigit(text[at]) || !isLetterOrDigit(text[at - 1])) return true;
    return isDigit(text[at]) != isDigit(text[at - 1]);
}

bool hasWord(std::string_view text, std::string_view word) {
    std::size_t at = text.find(word);
    while (at != std::string_view::npos && !beginsWord(text, at)) at = text.find(word, at + 1);
    return at != std::string_view::npos;
}

bool isCode(std::string_view word, unsigned int code) {
    if (word.substr(0, CODE_PREFIX.size()) == CODE_PREFIX) word.remove_prefix(CODE_PREFIX.size());
    return word == std::to_string(code);
}

std::string joined(const Words& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

// Returns the words of all arguments, in small letters.
Words wordsOf(const Words& arguments) {
    std::istringstream text(smallLetters(joined(arguments)));
    Words words;
    for (std::string word; std::getline(text, word, ' ');)
        if (!word.empty()) words.push_back(word);
    return words;
}

// The criteria of findCrs in their order. A smaller rank is better.
using Rank = std::tuple<bool, bool, bool, std::size_t, bool, double, double, std::size_t, unsigned int>;

class Matcher {
public:
    explicit Matcher(const SearchedCrs& wanted) : searched(wanted), words(wordsOf(wanted.words)), name(joined(words)) {}

    bool matches(const CrsDescription& crs) const {
        if (searched.kind && crs.kind != *searched.kind) return false;
        if (searched.area && (!crs.box || !intersects(*crs.box, *searched.area))) return false;
        return wordsIn(crs.name + "\n" + crs.area + "\n" + crs.datum, crs.code) == words.size();
    }

    bool coversArea(const CrsDescription& crs) const {
        return !searched.area || (crs.box && covers(*crs.box, *searched.area));
    }

    Rank rankOf(const CrsDescription& crs) const {
        const bool hasCode =
            std::any_of(words.begin(), words.end(), [&crs](const std::string& word) { return isCode(word, crs.code); });
        const double share = searched.area && crs.box ? shareOfTheEarth(*crs.box) : 0;
        return {!hasCode,
                !crs.replacedBy.empty(),
                smallLetters(crs.name) != name,
                words.size() - wordsIn(crs.name, crs.code),
                !coversArea(crs),
                share,
                otherWordsOfArea(crs),
                crs.name.size(),
                crs.code};
    }

private:
    // Returns the number of search words that the text has or that are the code.
    std::size_t wordsIn(const std::string& text, unsigned int code) const {
        const std::string small = smallLetters(text);
        return static_cast<std::size_t>(std::count_if(
            words.begin(), words.end(),
            [&small, code](const std::string& word) { return isCode(word, code) || hasWord(small, word); }));
    }

    // Returns the share of the words of the area that the search does not have, from 0 to 1; 0 if it has none of them.
    double otherWordsOfArea(const CrsDescription& crs) const {
        const Words wordsOfArea = wordsOf({crs.area});
        const auto isOther = [this](const std::string& wordOfArea) {
            return std::none_of(words.begin(), words.end(),
                                [&wordOfArea](const std::string& word) { return hasWord(wordOfArea, word); });
        };
        const auto all = static_cast<double>(wordsOfArea.size());
        const auto others = static_cast<double>(std::count_if(wordsOfArea.begin(), wordsOfArea.end(), isOther));
        return others == all ? 0 : others / all;
    }

    const SearchedCrs& searched;
    Words words;
    std::string name;
};

}  // namespace

std::vector<FoundCrs> findCrs(const CrsDescriptions& descriptions, const SearchedCrs& searched) {
    const Matcher matcher(searched);
    std::vector<std::pair<Rank, const CrsDescription*>> ranked;
    for (const CrsDescription& crs : descriptions)
        if (matcher.matches(crs)) ranked.emplace_back(matcher.rankOf(crs), &crs);
    std::sort(ranked.begin(), ranked.end());
    std::vector<FoundCrs> found;
    found.reserve(ranked.size());
    for (const auto& [rank, crs] : ranked) found.push_back({crs, matcher.coversArea(*crs)});
    return found;
}

const char* kindName(CrsDescription::Kind kind) {
    constexpr std::array NAMES = {"geographic", "geocentric", "projected", "compound"};
    return NAMES.at(static_cast<std::size_t>(kind));
}

namespace {

constexpr std::size_t MAX_AREA_LENGTH = 60;

std::string metres(double length) { return writeDouble(length) + " m"; }

std::string centimetres(double length) {
    std::array<char, Tools::LONGEST_FIXED_DECIMAL> text{};
    return std::string(text.data(), Tools::writeFixed(text.data(), length, 2)) + " m";
}

std::string unitText(const CrsDescription& crs) {
    const bool needsLength = crs.kind != CrsDescription::Kind::GEOGRAPHIC && crs.unitLength != 1;
    return printable(crs.unit) + (needsLength ? " (" + metres(crs.unitLength) + ")" : "");
}

std::string shiftText(const CrsDescription& crs) {
    if (crs.shiftSource.empty()) return "none";
    return printable(crs.shiftSource) + ", " +
           (crs.shiftAccuracy ? "accurate to " + metres(*crs.shiftAccuracy) : "of unknown accuracy");
}

std::string codesText(const std::vector<unsigned int>& codes) {
    Words texts;
    for (const unsigned int code : codes) texts.push_back(std::to_string(code));
    return joined(texts);
}

Json boxAsJson(const GeographicBox& box) {
    return {{"west", box.west}, {"south", box.south}, {"east", box.east}, {"north", box.north}};
}

std::vector<std::string> tableRow(const FoundCrs& found) {
    const CrsDescription& crs = *found.crs;
    const std::string replacement = crs.replacedBy.empty() ? "" : " (replaced by " + codesText(crs.replacedBy) + ")";
    return {std::to_string(crs.code), kindName(crs.kind), crs.shiftAccuracy ? metres(*crs.shiftAccuracy) : "",
            printable(crs.name) + replacement,
            (found.coversArea ? "" : "(in part) ") + printable(crs.area, MAX_AREA_LENGTH)};
}

}  // namespace

std::string descriptionAsText(const CrsDescription& crs, const std::string& indent) {
    Tools::TableRows rows = {{"name", printable(crs.name)}};
    if (!crs.area.empty()) rows.push_back({"area", printable(crs.area, MAX_TEXT_LENGTH)});
    if (crs.box) rows.push_back({"box", boxText(*crs.box) + " (W,S,E,N)"});
    rows.push_back({"datum", printable(crs.datum) + (crs.datumId.empty() ? "" : " (" + printable(crs.datumId) + ")")});
    rows.push_back({"unit", unitText(crs)});
    rows.push_back({"shift", shiftText(crs)});
    if (crs.largestDistance) rows.push_back({"from PROJ", "at most " + centimetres(*crs.largestDistance)});
    if (!crs.replacedBy.empty()) rows.push_back({"replaced by", codesText(crs.replacedBy)});
    return Tools::alignedColumns(rows, indent);
}

Json descriptionAsJson(const CrsDescription& crs) {
    return {{"code", crs.code},
            {"name", crs.name},
            {"kind", kindName(crs.kind)},
            {"area", crs.area},
            {"box", crs.box ? boxAsJson(*crs.box) : Json()},
            {"unit", crs.unit},
            {"unitLength", crs.unitLength},
            {"datum", crs.datum},
            {"datumId", crs.datumId},
            {"shiftSource", crs.shiftSource},
            {"shiftAccuracy", orNull(crs.shiftAccuracy)},
            {"largestDistance", orNull(crs.largestDistance)},
            {"replacedBy", crs.replacedBy}};
}

std::string asText(const std::vector<FoundCrs>& found) {
    if (found.empty()) return "";
    Tools::TableRows rows = {{"code", "kind", "accuracy", "name", "area"}};
    for (const FoundCrs& crs : found) rows.push_back(tableRow(crs));
    return Tools::alignedColumns(rows);
}

Json asJson(const std::vector<FoundCrs>& found) {
    Json list = Json::array();
    for (const auto& [crs, coversArea] : found) {
        list.push_back(descriptionAsJson(*crs));
        list.back()["coversArea"] = coversArea;
    }
    return list;
}

CommandResult findCommand(const CommonOptions& common, const SearchedCrs& searched) {
    const Session session(common);
    const CrsDescriptions& descriptions = CrsDescriptions::ofProjDirectory();
    if (descriptions.size() == 0)
        throw SetUpError(std::string("the PROJ directory has no \"") + CoordinateTransformation::DESCRIPTION_FILE +
                         "\", the file that is searched");
    std::vector<FoundCrs> found = findCrs(descriptions, searched);
    const auto isMissing = [&session](const FoundCrs& one) {
        return session.isConfigured() && !session.config().isCrsConfigured(one.crs->code);
    };
    found.erase(std::remove_if(found.begin(), found.end(), isMissing), found.end());
    const std::string output = common.json ? serialised(asJson(found)) : asText(found);
    if (!found.empty()) return {output, EXIT_DONE, {}};
    return {output, EXIT_REFUSED, {"nothing was found"}};
}

}  // namespace crsctl
