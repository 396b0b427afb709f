#include "tests/support/Page.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace DocsTest {
namespace {

constexpr char FENCE[] = "```";
constexpr std::size_t FENCE_LENGTH = sizeof(FENCE) - 1;

bool startsWith(const std::string& text, const std::string& head) { return text.compare(0, head.size(), head) == 0; }

std::string trim(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(' ');
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

std::string withoutBackticks(const std::string& cell) {
    const bool isOneSpan = cell.size() > 1 && cell.find('`') == 0 && cell.find('`', 1) == cell.size() - 1;
    return isOneSpan ? cell.substr(1, cell.size() - 2) : cell;
}

// row = "|" { cell "|" }; a bar inside a code span belongs to the cell
std::vector<std::string> splitRow(const std::string& line) {
    std::vector<std::string> cells;
    std::string cell;
    bool inCode = false;
    for (const char character : line.substr(1)) {
        if (character == '`') inCode = !inCode;
        if (character == '|' && !inCode) {
            cells.push_back(withoutBackticks(trim(cell)));
            cell.clear();
        } else {
            cell += character;
        }
    }
    return cells;
}

class PageParser {
public:
    explicit PageParser(const std::string& name) { page.name = name; }

    void take(const std::string& line) {
        ++number;
        if (inBlock)
            takeInBlock(line);
        else if (startsWith(line, FENCE))
            openBlock(line);
        else if (startsWith(line, "|"))
            takeRow(line);
        else
            inTable = false;
        if (!inBlock) takeLinks(line);
    }

    Page finish() {
        if (inBlock) throw std::runtime_error(page.name + ": a block is not closed");
        return std::move(page);
    }

private:
    void openBlock(const std::string& line) {
        page.blocks.push_back({line.substr(FENCE_LENGTH), "", number});
        inBlock = true;
        inTable = false;
    }

    void takeInBlock(const std::string& line) {
        if (line != FENCE) {
            page.blocks.back().text += line + "\n";
            return;
        }
        inBlock = false;
        if (page.blocks.back().info == "xml") configuration = page.blocks.back().text;
    }

    void takeRow(const std::string& line) {
        const std::vector<std::string> cells = splitRow(line);
        if (!inTable) {
            page.tables.push_back({cells, {}, configuration, number});
            inTable = true;
            return;
        }
        if (startsWith(line, "|-")) return;
        Table& table = page.tables.back();
        if (cells.size() != table.titles.size())
            throw std::runtime_error(page.name + ":" + std::to_string(number) + ": a row of another width");
        Row row;
        for (std::size_t i = 0; i < cells.size(); ++i) row[table.titles[i]] = cells[i];
        table.rows.push_back(row);
    }

    void takeLinks(const std::string& line) {
        constexpr char MIDDLE[] = "](";
        for (std::size_t at = line.find(MIDDLE); at != std::string::npos; at = line.find(MIDDLE, at + 2))
            page.links.push_back(line.substr(at + 2, line.find(')', at) - at - 2));
    }

    Page page;
    std::string configuration;
    std::size_t number = 0;
    bool inBlock = false;
    bool inTable = false;
};

}  // namespace

Page parsePage(const std::string& name, const std::string& text) {
    PageParser parser(name);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) parser.take(line);
    return parser.finish();
}

Page readPage(const std::string& name) {
    std::ifstream file(std::string(COORDTRANS_SOURCE_DIR) + "/docs/" + name);
    if (!file) throw std::runtime_error("cannot read docs/" + name);
    return parsePage(name, std::string(std::istreambuf_iterator<char>(file), {}));
}

std::vector<Page> readPages() {
    std::vector<Page> pages;
    std::istringstream names(DOCS_PAGES);
    for (std::string name; std::getline(names, name, ',');) pages.push_back(readPage(name));
    return pages;
}

std::vector<Table> tablesOf(const Page& page, const std::string& firstTitle) {
    std::vector<Table> found;
    std::copy_if(page.tables.begin(), page.tables.end(), std::back_inserter(found),
                 [&firstTitle](const Table& table) { return table.titles.front() == firstTitle; });
    return found;
}

}  // namespace DocsTest
