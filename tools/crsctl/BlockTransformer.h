#pragma once

#include <memory>
#include <string>
#include <vector>

#include "CoordinateTransformation/Crs.h"
#include "CoordinateTransformation/CrsDescriptions.h"
#include "tools/crsctl/Blocks.h"
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
    // The areas of use, in degrees; the whole earth if one is not known.
    CoordinateTransformation::GeographicBox sourceArea;
    CoordinateTransformation::GeographicBox targetArea;
};

// The output for a refused line. Every refused line is reported.
enum class ErrorMode { STOP, MARK, SKIP };

// How lines are read and written.
struct LineOptions {
    std::shared_ptr<const RowWriter> writer;
    std::string comment = "#";  // the text that begins a comment; if it is empty, there are no comments
    ErrorMode errors = ErrorMode::MARK;
    unsigned int pointsPerEdge = 21;      // on each edge of a box, between its corners
    bool exchanged = false;               // whether the first two ordinates of each result are exchanged
    std::vector<std::string> inputNames;  // for messages
};

struct Counts {
    std::uint64_t transformed = 0;
    std::uint64_t refused = 0;
    std::uint64_t ignored = 0;        // blank lines and comments
    std::uint64_t lookExchanged = 0;  // points whose latitude and longitude look exchanged

    std::uint64_t lines() const { return transformed + refused + ignored; }
};

// The result of a block.
struct BlockResult {
    std::string output;   // text for standard output
    std::string reports;  // text for standard error, one line for each refused line
    Counts counts;
    bool stopped = false;  // at a refused line; the lines after it are not read
};

// Transforms the points or boxes in the lines of a block. Does not allocate memory for a point unless it is refused.
// Threads may share the arguments.
BlockResult transformBlock(const CrsPair& pair, const LineOptions& options, const Block& block);

}  // namespace crsctl
