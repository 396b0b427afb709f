#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

// The pages of docs/, as far as the tests read them: fenced blocks and tables.
namespace DocsTest {

struct CodeBlock {
    // What follows the three backticks: "cpp", "xml refused".
    std::string info;
    std::string text;
    std::size_t line;
};

// A row by the titles of its columns. A cell that is one code span comes without its backticks.
using Row = std::map<std::string, std::string>;

struct Table {
    std::vector<std::string> titles;
    std::vector<Row> rows;
    // The nearest "xml" block above the table; empty when there is none.
    std::string configuration;
    std::size_t line;
};

struct Page {
    std::string name;
    std::vector<CodeBlock> blocks;
    std::vector<Table> tables;
    // The targets of its links.
    std::vector<std::string> links;
};

Page parsePage(const std::string& name, const std::string& text);

// The page docs/`name`.
Page readPage(const std::string& name);

// Every page that these tests answer for.
std::vector<Page> readPages();

// The tables of `page` whose first column has the title.
std::vector<Table> tablesOf(const Page& page, const std::string& firstTitle);

}  // namespace DocsTest
