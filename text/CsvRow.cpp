#include "text/CsvRow.h"

#include <sstream>
#include <stdexcept>

namespace CoordinateTransformation {

CsvRow::CsvRow(char cellSeparator) : separator(cellSeparator) {}

const std::string& CsvRow::operator[](std::size_t i) const {
    if (!isWithinBound(i)) throw std::out_of_range("CSV row index is out of range");
    return cells[i];
}

bool CsvRow::isWithinBound(std::size_t i) const { return i <= cells.size() - 1; }

void CsvRow::readNextRow(std::istream& stream) {
    std::string line;
    std::getline(stream, line);
    cells.clear();
    std::istringstream lineStream(line);
    lineStream.exceptions(std::ios::badbit);
    for (std::string cell; std::getline(lineStream, cell, separator);) cells.push_back(cell);
}

CsvRowIterator::CsvRowIterator(std::istream& rows, char separator) : stream(&rows), row(separator) { ++*this; }

CsvRowIterator& CsvRowIterator::operator++() {
    if (stream == nullptr) return *this;
    row.readNextRow(*stream);
    // Any state bit ends the iteration, end of file included: a last line without "\n" is lost.
    if (stream->rdstate() != std::ios_base::goodbit) stream = nullptr;
    return *this;
}

bool CsvRowIterator::operator==(const CsvRowIterator& other) const {
    return this == &other || (stream == nullptr && other.stream == nullptr);
}

}  // namespace CoordinateTransformation
