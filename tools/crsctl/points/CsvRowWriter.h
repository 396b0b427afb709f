#pragma once

#include "tools/crsctl/points/RowWriter.h"

namespace crsctl {

// Rows of comma-separated values, quoted where they need it, in the order of the input's columns; "*" in place of
// every ordinate of a refused line. Blank lines and comments are left out. In the header the ordinates are called
// x, y and z.
class CsvRowWriter : public RowWriter {
public:
    CsvRowWriter(const ColumnLayout& columnLayout, Separator inputSeparator, const Decimals& places);

    void header(OutputBuffer& out, const InputLine& line) const override;
    void point(OutputBuffer& out, const InputLine& line, const PointLine& point,
               const std::array<double, ORDINATES>& result) const override;
    void mark(OutputBuffer& out, const InputLine& line, const PointLine* point,
              const std::string& reason) const override;
    void passOver(OutputBuffer& out, const InputLine& line) const override;

private:
    template <typename WriteOrdinate>
    void row(OutputBuffer& out, std::string_view text, bool hasHeight, WriteOrdinate write) const;

    ColumnLayout layout;
    Separator separator;
    Decimals decimals;
};

}  // namespace crsctl
