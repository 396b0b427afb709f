#include "tools/crsctl/find/CrsSearch.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <tuple>
#include <utility>

namespace crsctl {
namespace {

constexpr std::string_view CODE_PREFIX = "epsg:";

using Kind = CrsDescription::Kind;

constexpr std::pair<const char*, Kind> KINDS[] = {{"geographic", Kind::GEOGRAPHIC},
                                                  {"geocentric", Kind::GEOCENTRIC},
                                                  {"projected", Kind::PROJECTED},
                                                  {"compound", Kind::COMPOUND}};

bool isLetterOrDigit(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || (c & '\x80') != 0; }

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string inSmallLetters(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

// Words are runs of letters, and runs of digits. What is neither begins a word of its own.
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

// The words of all arguments, in small letters.
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

// Less is better.
struct Rank {
    bool isOtherCode;
    bool isDeprecated;
    bool isOtherName;
    std::size_t wordsOutsideName;
    bool coversNot;
    double share;
    std::size_t nameLength;
    unsigned int code;

    auto asTuple() const {
        return std::tie(isOtherCode, isDeprecated, isOtherName, wordsOutsideName, coversNot, share, nameLength, code);
    }
};

class Matcher {
public:
    explicit Matcher(const SearchedCrs& wanted) : searched(wanted), words(wordsOf(wanted.words)), name(joined(words)) {}

    bool matches(const CrsDescription& crs) const {
        if (searched.kind && crs.kind != *searched.kind) return false;
        if (searched.area && (!crs.box || !meet(*crs.box, *searched.area))) return false;
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
        return {!hasCode,         !crs.replacedBy.empty(),
                crsName != name,  words.size() - static_cast<std::size_t>(inName),
                !coversArea(crs), searched.area && crs.box ? shareOfTheEarth(*crs.box) : 0,
                crs.name.size(),  crs.code};
    }

private:
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
    for (const auto& [rank, crs] : ranked) found.push_back({crs, !rank.coversNot});
    return found;
}

const char* kindInWords(Kind kind) {
    return std::find_if(std::begin(KINDS), std::end(KINDS), [kind](const auto& row) { return row.second == kind; })
        ->first;
}

Kind kindNamed(const std::string& text) {
    return std::find_if(std::begin(KINDS), std::end(KINDS), [&text](const auto& row) { return row.first == text; })
        ->second;
}

}  // namespace crsctl
