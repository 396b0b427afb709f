#pragma once

#include <cstddef>
#include <istream>
#include <string>
#include <vector>

namespace CoordinateTransformation {

// The cells of one line. There are no quotes or escapes, and a separator at the end of the line adds no empty cell.
class CsvRow {
public:
    explicit CsvRow(char cellSeparator = ',');

    // Cell `i`. Throws std::out_of_range after the last cell. REQUIRES: the row has cells. The bound of an empty row,
    // computed in unsigned arithmetic, accepts every index.
    const std::string& operator[](std::size_t i) const;
    std::size_t size() const { return cells.size(); }
    // The bound check of operator[].
    bool isWithinBound(std::size_t i) const;

    // Replaces the cells by those of the next line, which ends at "\n".
    void readNextRow(std::istream& stream);

private:
    std::vector<std::string> cells;
    char separator;
};

// Iterates over the rows of a stream. Skips a last line without "\n".
class CsvRowIterator {
public:
    // Makes an end iterator.
    CsvRowIterator() = default;
    // Reads the first row. Borrows `rows`, which outlives the iterator.
    CsvRowIterator(std::istream& rows, char separator);

    CsvRowIterator& operator++();
    const CsvRow& operator*() const { return row; }
    const CsvRow* operator->() const { return &row; }
    // Whether both are the same object or both are at the end.
    bool operator==(const CsvRowIterator& other) const;
    bool operator!=(const CsvRowIterator& other) const { return !(*this == other); }

private:
    std::istream* stream = nullptr;
    CsvRow row;
};

}  // namespace CoordinateTransformation
