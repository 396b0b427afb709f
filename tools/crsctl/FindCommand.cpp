#include "tools/crsctl/FindCommand.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

#include "text/InitFile.h"
#include "text/NumericText.h"
#include "tools/common/FixedDecimals.h"
#include "tools/common/Text.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

using CoordinateTransformation::DESCRIPTION_FILE;
using CoordinateTransformation::takeDouble;
using CoordinateTransformation::writeDouble;
using Tools::alignedColumns;
using Tools::LONGEST_FIXED_DECIMAL;
using Tools::printable;
using Tools::writeFixed;

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

bool isWithin(double value, double limit) { return value >= -limit && value <= limit; }

bool isOnEarth(const GeographicBox& box) {
    return isWithin(box.west, 180) && isWithin(box.east, 180) && isWithin(box.south, 90) && isWithin(box.north, 90) &&
           box.south <= box.north;
}

bool takeNumber(std::string_view& text, double& number) {
    const auto taken = takeDouble(text);
    number = taken.value_or(0);
    return taken.has_value();
}

bool takeComma(std::string_view& text) {
    if (text.empty() || text.front() != ',') return false;
    text.remove_prefix(1);
    return true;
}

}  // namespace

GeographicBox readBox(const std::string& text) {
    std::string_view rest = text;
    GeographicBox box{};
    const bool isRead = takeNumber(rest, box.west) && takeComma(rest) && takeNumber(rest, box.south) &&
                        takeComma(rest) && takeNumber(rest, box.east) && takeComma(rest) &&
                        takeNumber(rest, box.north) && rest.empty();
    if (!isRead) throw SetUpError("--area " + printable(text) + ": four numbers W,S,E,N are needed");
    if (!isOnEarth(box)) throw SetUpError("--area " + printable(text) + ": not a box of longitudes and latitudes");
    return box;
}

std::string boxInWords(const GeographicBox& box) {
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

using Kind = CrsDescription::Kind;

bool isLetterOrDigit(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || (c & '\x80') != 0; }

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string inSmallLetters(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

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

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

// Returns the words of all arguments, in small letters.
std::vector<std::string> wordsOf(const std::vector<std::string>& arguments) {
    std::vector<std::string> words;
    const std::string text = inSmallLetters(joined(arguments)) + " ";
    std::size_t begin = 0;
    for (std::size_t end = text.find(' '); end != std::string::npos; end = text.find(' ', begin)) {
        if (end > begin) words.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return words;
}

// A smaller rank is better. The members are in the order of their importance.
struct Rank {
    bool isOtherCode;
    bool isDeprecated;
    bool isOtherName;
    std::size_t wordsOutsideName;
    bool isInPart;
    double share;
    double otherWordsOfArea;
    std::size_t nameLength;
    unsigned int code;

    auto asTuple() const {
        return std::tie(isOtherCode, isDeprecated, isOtherName, wordsOutsideName, isInPart, share, otherWordsOfArea,
                        nameLength, code);
    }
};

class Matcher {
public:
    explicit Matcher(const SearchedCrs& wanted) : searched(wanted), words(wordsOf(wanted.words)), name(joined(words)) {}

    bool matches(const CrsDescription& crs) const {
        if (searched.kind && crs.kind != *searched.kind) return false;
        if (searched.area && (!crs.box || !intersects(*crs.box, *searched.area))) return false;
        const std::string text = inSmallLetters(crs.name + "\n" + crs.area + "\n" + crs.datum);
        return std::all_of(words.begin(), words.end(), [&crs, &text](const std::string& word) {
            return isCode(word, crs.code) || hasWord(text, word);
        });
    }

    bool coversArea(const CrsDescription& crs) const {
        return !searched.area || (crs.box && covers(*crs.box, *searched.area));
    }

    Rank rankOf(const CrsDescription& crs) const {
        const std::string crsName = inSmallLetters(crs.name);
        const auto isInName = [&crs, &crsName](const std::string& word) {
            return isCode(word, crs.code) || hasWord(crsName, word);
        };
        const auto inName = std::count_if(words.begin(), words.end(), isInName);
        const bool hasCode =
            std::any_of(words.begin(), words.end(), [&crs](const std::string& word) { return isCode(word, crs.code); });
        return {!hasCode,
                !crs.replacedBy.empty(),
                crsName != name,
                words.size() - static_cast<std::size_t>(inName),
                !coversArea(crs),
                searched.area && crs.box ? shareOfTheEarth(*crs.box) : 0,
                otherWordsOfArea(crs),
                crs.name.size(),
                crs.code};
    }

private:
    // Returns the share of the words of the area that the search does not have, from 0 to 1; 0 if it has none of them.
    double otherWordsOfArea(const CrsDescription& crs) const {
        const std::vector<std::string> wordsOfArea = wordsOf({crs.area});
        const auto isSearched = [this](const std::string& wordOfArea) {
            return std::any_of(words.begin(), words.end(),
                               [&wordOfArea](const std::string& word) { return hasWord(wordOfArea, word); });
        };
        const auto others = wordsOfArea.size() -
                            static_cast<std::size_t>(std::count_if(wordsOfArea.begin(), wordsOfArea.end(), isSearched));
        if (others == wordsOfArea.size()) return 0;
        return static_cast<double>(others) / static_cast<double>(wordsOfArea.size());
    }

    const SearchedCrs& searched;
    std::vector<std::string> words;
    std::string name;
};

}  // namespace

std::vector<FoundCrs> findCrs(const CrsDescriptions& descriptions, const SearchedCrs& searched) {
    const Matcher matcher(searched);
    std::vector<std::pair<Rank, const CrsDescription*>> ranked;
    for (const CrsDescription& crs : descriptions)
        if (matcher.matches(crs)) ranked.emplace_back(matcher.rankOf(crs), &crs);
    std::sort(ranked.begin(), ranked.end(),
              [](const auto& left, const auto& right) { return left.first.asTuple() < right.first.asTuple(); });
    std::vector<FoundCrs> found;
    found.reserve(ranked.size());
    for (const auto& [rank, crs] : ranked) found.push_back({crs, !rank.isInPart});
    return found;
}

const char* kindInWords(Kind kind) {
    switch (kind) {
        case Kind::GEOGRAPHIC:
            return "geographic";
        case Kind::GEOCENTRIC:
            return "geocentric";
        case Kind::PROJECTED:
            return "projected";
        case Kind::COMPOUND:
            break;
    }
    return "compound";
}

namespace {

constexpr std::size_t LONGEST_CELL = 1000;
constexpr std::size_t LONGEST_AREA = 60;

std::string metres(double length) { return writeDouble(length) + " m"; }

std::string centimetres(double length) {
    std::array<char, LONGEST_FIXED_DECIMAL> text{};
    return std::string(text.data(), writeFixed(text.data(), length, 2)) + " m";
}

std::string describedUnit(const CrsDescription& crs) {
    if (crs.kind == CrsDescription::Kind::GEOGRAPHIC || crs.unitLength == 1) return printable(crs.unit);
    return printable(crs.unit) + " (" + metres(crs.unitLength) + ")";
}

std::string shiftInWords(const CrsDescription& crs) {
    if (crs.shiftSource.empty()) return "none";
    return printable(crs.shiftSource) + ", " +
           (crs.shiftAccuracy ? "accurate to " + metres(*crs.shiftAccuracy) : "of unknown accuracy");
}

std::string codesInOneLine(const std::vector<unsigned int>& codes) {
    std::string text;
    for (const unsigned int code : codes) text += (text.empty() ? "" : " ") + std::to_string(code);
    return text;
}

Json orNull(const std::optional<double>& number) { return number ? Json(*number) : Json(); }

Json boxAsJson(const std::optional<GeographicBox>& box) {
    if (!box) return {};
    return {{"west", box->west}, {"south", box->south}, {"east", box->east}, {"north", box->north}};
}

std::string nameInTable(const CrsDescription& crs) {
    const std::string name = printable(crs.name);
    return crs.replacedBy.empty() ? name : name + " (replaced by " + codesInOneLine(crs.replacedBy) + ")";
}

}  // namespace

std::string descriptionAsText(const CrsDescription& crs, const std::string& indent) {
    std::vector<std::vector<std::string>> rows = {{"name", printable(crs.name)}};
    if (!crs.area.empty()) rows.push_back({"area", printable(crs.area, LONGEST_CELL)});
    if (crs.box) rows.push_back({"box", boxInWords(*crs.box) + " (W,S,E,N)"});
    rows.push_back({"datum", printable(crs.datum) + (crs.datumId.empty() ? "" : " (" + printable(crs.datumId) + ")")});
    rows.push_back({"unit", describedUnit(crs)});
    rows.push_back({"shift", shiftInWords(crs)});
    if (crs.largestDistance) rows.push_back({"from PROJ", "at most " + centimetres(*crs.largestDistance)});
    if (!crs.replacedBy.empty()) rows.push_back({"replaced by", codesInOneLine(crs.replacedBy)});
    return alignedColumns(rows, indent);
}

Json descriptionAsJson(const CrsDescription& crs) {
    return {{"code", crs.code},
            {"name", crs.name},
            {"kind", kindInWords(crs.kind)},
            {"area", crs.area},
            {"box", boxAsJson(crs.box)},
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
    std::vector<std::vector<std::string>> rows = {{"code", "kind", "accuracy", "name", "area"}};
    for (const auto& [crs, coversArea] : found)
        rows.push_back({std::to_string(crs->code), kindInWords(crs->kind),
                        crs->shiftAccuracy ? metres(*crs->shiftAccuracy) : "", nameInTable(*crs),
                        (coversArea ? "" : "(in part) ") + printable(crs->area, LONGEST_AREA)});
    return alignedColumns(rows);
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
        throw SetUpError("the PROJ directory has no \"" + std::string(DESCRIPTION_FILE) +
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
