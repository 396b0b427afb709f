#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/crsctl/points/Block.h"
#include "tools/crsctl/points/OutputBuffer.h"
#include "tools/crsctl/points/PointLine.h"
#include "tools/crsctl/points/PointTransform.h"
#include "tools/crsctl/points/RowWriter.h"

namespace crsctl {

// What becomes of a line that is refused; it is reported in any case.
enum class ErrorMode { STOP, MARK, SKIP };

// How lines are read and written.
struct LineOptions {
    ColumnLayout layout;
    Separator separator = Separator::AUTOMATIC;
    std::string comment = "#";  // what begins a comment; empty: nothing does
    OutputFormat format = OutputFormat::TEXT;
    int decimals = -1;  // of every ordinate; negative: those of the target
    ErrorMode errors = ErrorMode::MARK;
    std::vector<std::string> inputNames;  // for reports
};

// Transforms the points of blocks of lines. Allocates nothing for a line that is not refused.
class BlockTransformer : public BlockProcessor {
public:
    BlockTransformer(const PointTransform& pointTransform, const LineOptions& lineOptions);

    BlockResult process(const Block& block) override;
    // For the header of the input, once and before any block.
    std::string headerRow(const std::string& header) const;

private:
    bool processLine(const InputLine& line, const Block& block);
    bool isPassedOver(std::string_view line) const;
    bool refuse(const InputLine& line, const Block& block, const PointLine* point, const std::string& reason);
    void report(const InputLine& line, const Block& block, const std::string& reason);
    BlockResult processTooLong(const Block& block);
    BlockResult result(bool stopped) const;

    const PointTransform& transform;
    LineOptions options;
    std::unique_ptr<RowWriter> writer;
    OutputBuffer output;
    OutputBuffer reports;
    Counts counts;
};

}  // namespace crsctl
