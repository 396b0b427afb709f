#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CoordinateTransformation/PointTransformer.h"
#include "tools/crsctl/points/Block.h"
#include "tools/crsctl/points/CoordinateLine.h"
#include "tools/crsctl/points/CrsPair.h"
#include "tools/crsctl/points/RowWriter.h"

namespace crsctl {

// What becomes of a line that is refused; it is reported in any case.
enum class ErrorMode { STOP, MARK, SKIP };

// How lines are read and written.
struct LineOptions {
    RowFormat format;
    std::string comment = "#";  // what begins a comment; empty: nothing does
    ErrorMode errors = ErrorMode::MARK;
    unsigned int pointsPerEdge = 21;      // of a box
    std::vector<std::string> inputNames;  // for reports
};

// Transforms the points or boxes of blocks of lines. Allocates nothing for a point that is not refused. One thread at
// a time uses it; threads may share the pair of CRS.
class BlockTransformer {
public:
    BlockTransformer(const CrsPair& crsPair, const LineOptions& lineOptions);

    // REQUIRES: `result` is empty.
    void process(const Block& block, BlockResult& result);

private:
    struct Row {
        InputLine line;
        CoordinateLine read;
    };

    bool addLine(const InputLine& line, const Block& block, BlockResult& result);
    bool isPassedOver(std::string_view line) const;
    bool finishRows(const Block& block, BlockResult& result);
    void transformPoints();
    bool isTransformed(std::size_t index, std::string& reason);
    bool transformBox(std::size_t index, std::string& reason);
    bool refuse(const Row& row, bool isRead, const std::string& reason, const Block& block, BlockResult& result) const;
    void report(const InputLine& line, const std::string& reason, const Block& block, BlockResult& result) const;

    // Of one call of the library.
    static constexpr std::size_t MOST_ROWS = 128;

    const CrsPair& pair;
    LineOptions options;
    // None, with the reason, if there is no operation between the two CRS.
    std::optional<CoordinateTransformation::PointTransformer> transformer;
    std::string noOperation;
    // The first `waiting` lines wait for the call, all with the same number of ordinates.
    std::array<Row, MOST_ROWS> rows;
    std::size_t waiting = 0;
    std::array<Ordinates, MOST_ROWS> results;
    std::array<bool, MOST_ROWS> failed;
};

}  // namespace crsctl
