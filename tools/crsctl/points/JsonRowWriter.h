#pragma once

#include "tools/crsctl/points/RowWriter.h"

namespace crsctl {

// One JSON object a line: x, y, z, then each carried column under its name, those without a name as "rest"; or
// line, error and input of a refused line. Blank lines, comments and the header are left out.
class JsonRowWriter : public RowWriter {
public:
    JsonRowWriter(const ColumnLayout& columnLayout, Separator inputSeparator, const Decimals& places);

    void header(OutputBuffer& out, const InputLine& line) const override;
    void point(OutputBuffer& out, const InputLine& line, const PointLine& point,
               const std::array<double, ORDINATES>& result) const override;
    void mark(OutputBuffer& out, const InputLine& line, const PointLine* point,
              const std::string& reason) const override;
    void passOver(OutputBuffer& out, const InputLine& line) const override;

private:
    void ordinate(OutputBuffer& out, const char* key, std::size_t which, double value) const;
    void carriedColumns(OutputBuffer& out, std::string_view line, bool hasHeight) const;
    bool hasName(std::size_t column) const;

    ColumnLayout layout;
    Separator separator;
    Decimals decimals;
};

}  // namespace crsctl
