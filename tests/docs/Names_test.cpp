#include <string>

#include <gtest/gtest.h>

#include "tests/support/DocsServer.h"
#include "tests/support/NameTable.h"
#include "tests/support/Page.h"

// Every table of names: what a server with the fragment above the table makes of them.
namespace DocsTest {
namespace {

const char EMPTY[] = "(empty)";

std::string nameIn(const std::string& cell) { return cell == EMPTY ? "" : cell; }

std::string codesOf(const CoordinateTransformation::AbstractCrs& crs) {
    const std::string primary = std::to_string(crs.getPrimaryCode());
    const unsigned int secondary = crs.getSecCompoundCode();
    return secondary == 0 ? primary : primary + "*" + std::to_string(secondary);
}

std::string describe(const Crs& crs, const std::string& title) {
    if (title == "codes") return codesOf(*crs.get());
    if (title == "axis order") return crs->isAxisOrderEastNorthOrLonLat() ? "EN" : "NE";
    if (title == "version") return crs->getEpsgVersion();
    if (title == "alias") return crs->getAlias();
    if (title == "dimension") return std::to_string(crs->getDim());
    if (title == "answered by") return crs.isHoldingConst() ? "cache" : "new object";
    ADD_FAILURE() << "no test knows the column " << title;
    return "";
}

void expectAccepted(const Server& server, const Table& table, const Row& row) {
    const std::string name = nameIn(row.at("name"));
    const Crs crs = server.request(name);
    for (const std::string& title : table.titles) {
        if (title == "name" || title == "why") continue;
        EXPECT_EQ(describe(crs, title), row.at(title)) << name << ", " << title;
    }
}

void expectRefused(const Server& server, const Row& row) {
    const std::string name = nameIn(row.at("refused name"));
    EXPECT_EQ(raisedBy([&] { server.request(name); }).type, row.at("class")) << name;
}

TEST(NamesTest, AreAcceptedAsThePagesSay) {
    for (const Page& page : readPages()) {
        for (const Table& table : tablesOf(page, "name")) {
            SCOPED_TRACE(page.name + ":" + std::to_string(table.line));
            ASSERT_FALSE(table.rows.empty());
            ASSERT_GT(table.titles.size(), 1U);
            const Server server = givenServer(table.configuration);
            for (const Row& row : table.rows) EXPECT_NO_THROW(expectAccepted(server, table, row)) << row.at("name");
        }
    }
}

TEST(NamesTest, AreRefusedAsThePagesSay) {
    for (const Page& page : readPages()) {
        for (const Table& table : tablesOf(page, "refused name")) {
            SCOPED_TRACE(page.name + ":" + std::to_string(table.line));
            ASSERT_FALSE(table.rows.empty());
            const Server server = givenServer(table.configuration);
            for (const Row& row : table.rows) expectRefused(server, row);
        }
    }
}

// The table's server has aliases that the page's server lacks; for the other names of the page the two are alike.
std::string cellOf(const TestSupport::NameRow& row, const std::string& title) {
    if (title == "answered by") return row.isRegistered() ? "cache" : "new object";
    if (title == "alias") return row.answer() == "alias" || row.isReference() ? row["name"] : "";
    if (title == "class") return row.answer() == "alias" ? row["result"] : row.answer();
    return row[title];
}

void expectInNameTable(const Table& table, const Row& row) {
    const std::string name = nameIn(row.at(table.titles.front()));
    const TestSupport::NameRow* const known = TestSupport::findNameRow(name);
    ASSERT_NE(known, nullptr) << name << " has no row in tests/names.csv";
    for (const std::string& title : table.titles) {
        if (title == table.titles.front() || title == "why") continue;
        EXPECT_EQ(cellOf(*known, title), row.at(title)) << known->where() << ", " << title;
    }
}

TEST(NamesInTest, AreThoseOfTheNameTable) {
    const Page page = readPage("names-in.md");
    for (const char* const title : {"name", "refused name"})
        for (const Table& table : tablesOf(page, title))
            for (const Row& row : table.rows) expectInNameTable(table, row);
}

}  // namespace
}  // namespace DocsTest
