#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CoordinateTransformation/Crs.h"
#include "CoordinateTransformation/CrsDescriptions.h"
#include "CoordinateTransformation/PointTransformer.h"
#include "tools/crsctl/Blocks.h"
#include "tools/crsctl/PointLines.h"
#include "tools/crsctl/RowWriter.h"

namespace crsctl {

class Session;

// The CRS from which and to which a run transforms. Threads may share it.
class CrsPair {
public:
    // InputRefused, with the server's words, when it refuses one of the names.
    CrsPair(const Session& session, const std::string& from, const std::string& to);

    const CoordinateTransformation::AbstractCrs& source() const { return *sourceCrs.get(); }
    const CoordinateTransformation::AbstractCrs& target() const { return *targetCrs.get(); }

    // Of the target: those of its configured entry, else what suits its unit. A height above a geographic CRS is taken
    // for metres.
    Decimals decimals(Shape shape) const;
    // Whether the point is outside the areas of use of the two CRS and would be inside with latitude and longitude
    // exchanged. Only a source in degrees can show that.
    bool looksExchanged(const Ordinates& point) const;
    // The library's reason for a point that it cannot transform, or whose result is not finite.
    std::string refusalOf(const CoordinateLine& point) const;

private:
    CoordinateTransformation::Crs sourceCrs;
    CoordinateTransformation::Crs targetCrs;
    int horizontalDecimals;
    // Where points are expected, if the source is geographic, in degrees; null for the whole earth.
    bool isSourceInDegrees = false;
    const CoordinateTransformation::GeographicBox* sourceArea = nullptr;
    const CoordinateTransformation::GeographicBox* targetArea = nullptr;
};

// The treatment of a refused line. It is always reported.
enum class ErrorMode { STOP, MARK, SKIP };

// How lines are read and written.
struct LineOptions {
    RowFormat format;
    std::string comment = "#";  // the beginning of a comment; empty: there are no comments
    ErrorMode errors = ErrorMode::MARK;
    unsigned int pointsPerEdge = 21;      // of a box
    bool exchanged = false;               // the first two ordinates of each result
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
