#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "QuarvelSrv/SrsFormattingOptions.h"
#include "tests/support/DocsServer.h"
#include "tests/support/Page.h"

// The tables of calls on docs/names-out.md: each call is read as C++ and made.
namespace DocsTest {
namespace {

using CoordinateTransformation::AbstractCrs;

struct Call {
    std::string operation;
    // Texts without quotes, numbers, true, false and nullptr as they stand; braces leave no trace.
    std::vector<std::string> arguments;
};

// The text at `position`, which is behind its opening quote; "\1" and "\2" in it are the characters 1 and 2.
std::string readText(const std::string& list, std::size_t& position) {
    std::string text;
    for (; list.at(position) != '"'; ++position) {
        const bool escaped = list[position] == '\\';
        text += escaped ? static_cast<char>(list.at(++position) - '0') : list[position];
    }
    ++position;
    return text;
}

std::string readWord(const std::string& list, std::size_t& position) {
    const std::size_t begin = position;
    position = list.find_first_of(",)}", begin);
    return list.substr(begin, position - begin);
}

Call readCall(const std::string& text) {
    Call call{text.substr(0, text.find('(')), {}};
    std::size_t position = text.find('(') + 1;
    while (position < text.size()) {
        position = text.find_first_not_of(" ,(){}", position);
        if (position == std::string::npos) break;
        const bool quoted = text[position] == '"';
        call.arguments.push_back(quoted ? readText(text, ++position) : readWord(text, position));
    }
    return call;
}

std::string asOgcUrn(const AbstractCrs& crs, const std::vector<std::string>& given) {
    const bool useAlias = given.back() == "true";
    if (given.front() == "nullptr") return crs.getAliasOrAsOgcURN(nullptr, useAlias);
    const QuarvelSrv::SrsFormattingOptions options{given.at(0), given.at(1), std::stoi(given.at(2))};
    return crs.getAliasOrAsOgcURN(&options, useAlias);
}

std::string asFormat(const AbstractCrs& crs, std::vector<std::string> given) {
    const bool useAlias = given.back() == "true";
    given.pop_back();
    given.resize(5);
    const CoordinateTransformation::CRSindicationFormatInfo info{static_cast<unsigned int>(std::stoul(given[0])),
                                                                 given[1], given[2], given[3], given[4]};
    return crs.getAliasOrAsFormat(info, useAlias);
}

std::string resultOf(const AbstractCrs& crs, const Call& call) {
    const std::vector<std::string>& given = call.arguments;
    if (call.operation == "getAliasOrIdentifier") return crs.getAliasOrIdentifier(given.at(0) == "true");
    if (call.operation == "getAliasOrAsOgcURN") return asOgcUrn(crs, given);
    if (call.operation == "getAliasOrAsFormat") return asFormat(crs, given);
    if (call.operation == "getAsURL") return crs.getAsURL(given.at(0), given.at(1), given.at(2));
    if (call.operation == "getAsText") return crs.getAsText();
    throw std::runtime_error("no such operation: " + call.operation);
}

TEST(NamesOutTest, AreWrittenAsThePageSays) {
    const Page page = readPage("names-out.md");
    for (const Table& table : tablesOf(page, "call")) {
        ASSERT_GT(table.titles.size(), 1U);
        ASSERT_FALSE(table.rows.empty());
        const Server server = givenServer(table.configuration);
        for (const Row& row : table.rows)
            for (std::size_t i = 1; i < table.titles.size(); ++i)
                EXPECT_EQ(resultOf(*server.request(table.titles[i]).get(), readCall(row.at("call"))),
                          row.at(table.titles[i]))
                    << row.at("call") << " of " << table.titles[i];
    }
}

}  // namespace
}  // namespace DocsTest
