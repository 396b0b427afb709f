// Reads axis-order files. No cell may contain a separator.

#include "fuzz/Input.h"
#include "text/CsvRow.h"

using CoordinateTransformation::CsvRowIterator;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream rows(Fuzz::text(data, size));
    for (CsvRowIterator row(rows, ';'); row != CsvRowIterator(); ++row)
        for (std::size_t i = 0; i < row->size(); ++i)
            Fuzz::require((*row)[i].find_first_of(";\n") == std::string::npos);
    return 0;
}
