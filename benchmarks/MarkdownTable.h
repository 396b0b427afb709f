#pragma once

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

// A table that is printed in Markdown, with aligned columns.
class MarkdownTable {
public:
    using Row = std::vector<std::string>;

    explicit MarkdownTable(Row header) : rows{std::move(header)} { rows.emplace_back(rows[0].size(), "---"); }

    void add(Row row) { rows.push_back(std::move(row)); }

    void print(const char* title) const {
        std::printf("\n%s\n\n", title);
        for (const Row& row : rows) {
            for (std::size_t i = 0; i < row.size(); ++i) std::printf("| %-*s ", widthOf(i), row[i].c_str());
            std::printf("|\n");
        }
    }

private:
    int widthOf(std::size_t column) const {
        std::size_t width = 0;
        for (const Row& row : rows) width = std::max(width, row[column].size());
        return static_cast<int>(width);
    }

    std::vector<Row> rows;
};
