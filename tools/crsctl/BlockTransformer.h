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
    // Throws InputRefused with the server's message if the server refuses one of the names.
    CrsPair(const Session& session, const std::string& from, const std::string& to);

    const CoordinateTransformation::AbstractCrs& source() const { return *sourceCrs.get(); }
    const CoordinateTransformation::AbstractCrs& target() const { return *targetCrs.get(); }

    // Returns the decimal places of the target's configured entry, or else the default for its unit. The height above
    // a geographic CRS has the default for metres.
    Decimals decimals(Shape shape) const;
    // Returns whether the point is outside the area of use of either CRS, but inside both with latitude and longitude
    // exchanged. Returns false if the source is not in degrees.
    bool looksExchanged(const Ordinates& point) const;
    // Returns the reason why the point cannot be transformed: the library's message, or that the result is not finite.
    std::string failureReason(const CoordinateLine& point) const;

private:
    CoordinateTransformation::Crs sourceCrs;
    CoordinateTransformation::Crs targetCrs;
    int horizontalDecimals;
    bool isSourceInDegrees = false;
    // The areas of use, in degrees. Null means the whole earth.
    const CoordinateTransformation::GeographicBox* sourceArea = nullptr;
    const CoordinateTransformation::GeographicBox* targetArea = nullptr;
};

// The output for a refused line. Every refused line is reported.
enum class ErrorMode { STOP, MARK, SKIP };

// How lines are read and written.
struct LineOptions {
    RowFormat format;
    std::string comment = "#";  // the text that begins a comment; if it is empty, there are no comments
    ErrorMode errors = ErrorMode::MARK;
    unsigned int pointsPerEdge = 21;      // on each edge of a box, between its corners
    bool exchanged = false;               // whether the first two ordinates of each result are exchanged
    std::vector<std::string> inputNames;  // for messages
};

// Transforms the points or boxes in blocks of lines. Does not allocate memory for a point unless it is refused. Only
// one thread at a time may use it; threads may share the pair of CRS.
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
    bool isIgnored(std::string_view line) const;
    bool finishRows(const Block& block, BlockResult& result);
    void transformPoints();
    bool isTransformed(std::size_t index, std::string& reason);
    bool transformBox(std::size_t index, std::string& reason);
    bool refuse(const Row& row, bool isRead, const std::string& reason, const Block& block, BlockResult& result) const;
    void report(const InputLine& line, const std::string& reason, const Block& block, BlockResult& result) const;

    // One call of the library transforms at most this many rows.
    static constexpr std::size_t MAX_ROWS = 128;

    const CrsPair& pair;
    LineOptions options;
    // Empty if there is no operation between the two CRS; `missingOperation` is then the reason.
    std::optional<CoordinateTransformation::PointTransformer> transformer;
    std::string missingOperation;
    // The first `waiting` rows are read but not transformed. All have the same number of ordinates.
    std::array<Row, MAX_ROWS> rows;
    std::size_t waiting = 0;
    std::array<Ordinates, MAX_ROWS> results;
    std::array<bool, MAX_ROWS> failed;
};

}  // namespace crsctl
