#pragma once

#include "tools/crsctl/points/RowWriter.h"

namespace crsctl {

// The line as it stands, with its ordinates replaced. A line whose separator is a blank gets the separators of cs2cs: a
// tab before y and a blank before z. Any other line keeps its separator. Blank lines and comments pass unchanged.
class TextRowWriter : public RowWriter {
public:
    TextRowWriter(const ColumnLayout& columnLayout, const Decimals& places);

    void header(OutputBuffer& out, const InputLine& line) const override;
    void point(OutputBuffer& out, const InputLine& line, const PointLine& point,
               const std::array<double, ORDINATES>& result) const override;
    void mark(OutputBuffer& out, const InputLine& line, const PointLine* point,
              const std::string& reason) const override;
    void passOver(OutputBuffer& out, const InputLine& line) const override;

private:
    template <typename WriteOrdinate>
    void replaceOrdinates(OutputBuffer& out, const InputLine& line, const PointLine& point, WriteOrdinate write) const;

    // The ordinates in the order of their columns.
    std::array<std::size_t, ORDINATES> order;
    std::array<std::size_t, ORDINATES> column;
    std::size_t count;
    Decimals decimals;
};

}  // namespace crsctl
