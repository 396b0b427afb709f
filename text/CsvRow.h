#pragma once

#include <cstddef>
#include <istream>
#include <string>
#include <vector>

namespace CoordinateTransformation {

// The cells of one line. No quoting and no escapes; a separator at the end of the line adds no empty cell.
class CsvRow {
public:
    explicit CsvRow(char cellSeparator = ',');

    // Cell `i`; std::out_of_range beyond the last. REQUIRES: the row has cells; the bound of an empty row,
    // computed in unsigned arithmetic, lets every index pass.
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

// Walks the rows of a stream. A line that the stream ends without "\n" is not handed out.
class CsvRowIterator {
public:
    // An iterator at its end.
    CsvRowIterator() = default;
    // Reads the first row. Borrows `rows`, which outlives the iterator.
    CsvRowIterator(std::istream& rows, char separator);

    CsvRowIterator& operator++();
    const CsvRow& operator*() const { return row; }
    const CsvRow* operator->() const { return &row; }
    // The same object, or both at their end.
    bool operator==(const CsvRowIterator& other) const;
    bool operator!=(const CsvRowIterator& other) const { return !(*this == other); }

private:
    std::istream* stream = nullptr;
    CsvRow row;
};

}  // namespace CoordinateTransformation
