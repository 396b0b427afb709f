#include "tools/crsctl/BlockTransformer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <optional>
#include <utility>

#include "CoordinateTransformation/CrsCreator.h"
#include "CoordinateTransformation/PointTransformer.h"
#include "CoordinateTransformation/TransExecException.h"
#include "tools/common/FixedDecimals.h"
#include "tools/common/Text.h"
#include "tools/crsctl/ResolveCommand.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

using CoordinateTransformation::CrsConfigData;
using CoordinateTransformation::CrsDescription;
using CoordinateTransformation::GeographicBox;

namespace {

CoordinateTransformation::Crs crsNamed(const std::string& name, const Session& session) {
    try {
        return session.createFromName(name, true);
    } catch (const std::exception&) {
        throw InputRefused(refusalInOneLine(reportOn(name, session)));
    }
}

constexpr int METRES = CrsConfigData::DEFAULT_NUMBER_OF_PLACES_METER;
constexpr int DEGREES = CrsConfigData::DEFAULT_NUMBER_OF_PLACES_DEGREE;

// Returns the decimal places of the entry, or else the default if it has none or a number that cannot be written.
int horizontalDecimalsOf(const CoordinateTransformation::AbstractCrs& crs, const Session& session) {
    const CrsConfigData* const entry = session.config().getEntryFor(crs);
    const int configured = entry == nullptr ? -1 : entry->getNumberOfDecimalPlaces().value_or(-1);
    if (configured >= 0 && configured <= Tools::MAX_DECIMALS) return configured;
    return crs.isGeographic() ? DEGREES : METRES;
}

GeographicBox areaOf(const CrsDescription* described) {
    constexpr GeographicBox EARTH{-180, -90, 180, 90};
    return described != nullptr && described->box ? *described->box : EARTH;
}

bool isWithin(const GeographicBox& area, double longitude, double latitude) {
    const auto& [west, south, east, north] = area;
    if (!(latitude >= south && latitude <= north)) return false;
    return west <= east ? longitude >= west && longitude <= east : longitude >= west || longitude <= east;
}

}  // namespace

CrsPair::CrsPair(const Session& session, const std::string& from, const std::string& to)
    : sourceCrs(crsNamed(from, session)),
      targetCrs(crsNamed(to, session)),
      horizontalDecimals(horizontalDecimalsOf(*targetCrs.get(), session)) {
    const auto& descriptions = CoordinateTransformation::CrsDescriptions::ofProjDirectory();
    const CrsDescription* const described = descriptions.find(source().getPrimaryCode());
    isSourceInDegrees = source().isGeographic() && (described == nullptr || described->unit == "degree");
    sourceArea = areaOf(described);
    targetArea = areaOf(descriptions.find(target().getPrimaryCode()));
}

bool CrsPair::looksExchanged(const Ordinates& point) const {
    if (!isSourceInDegrees) return false;
    const bool isEastFirst = source().isAxisOrderEastNorthOrLonLat();
    const double longitude = point[isEastFirst ? X : Y];
    const double latitude = point[isEastFirst ? Y : X];
    const auto isExpected = [this](double east, double north) {
        return isWithin(sourceArea, east, north) && isWithin(targetArea, east, north);
    };
    return !isExpected(longitude, latitude) && isExpected(latitude, longitude);
}

Decimals CrsPair::decimals(Shape shape) const {
    const bool hasHeightInMetres = shape == Shape::POINT && target().isGeographic();
    return {horizontalDecimals, horizontalDecimals, hasHeightInMetres ? METRES : horizontalDecimals,
            horizontalDecimals};
}

std::string CrsPair::failureReason(const CoordinateLine& point) const {
    Ordinates moved = point.value;
    try {
        if (point.count > Z)
            source().transformTo(&target(), moved[X], moved[Y], moved[Z]);
        else
            source().transformTo(&target(), moved[X], moved[Y]);
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "the result is not finite";
}

namespace {

// Removes the first line from `lines` and returns it. The last line may lack its line end.
InputLine takeLine(std::string_view& lines, std::uint64_t number) {
    const std::size_t lineEnd = std::min(lines.find('\n'), lines.size());
    std::string_view text = lines.substr(0, lineEnd);
    lines.remove_prefix(std::min(lineEnd + 1, lines.size()));
    const bool carriageReturn = !text.empty() && text.back() == '\r';
    if (carriageReturn) text.remove_suffix(1);
    return {text, carriageReturn ? "\r\n" : "\n", number};
}

bool areFinite(const Ordinates& ordinates, std::size_t count) {
    return std::all_of(ordinates.begin(), ordinates.begin() + static_cast<std::ptrdiff_t>(count),
                       [](double value) { return std::isfinite(value); });
}

// One call of the library transforms at most this many rows.
constexpr std::size_t MAX_ROWS = 128;

struct Row {
    InputLine line;
    bool ignored = false;
    CoordinateLine read;  // without ordinates if the line is ignored or could not be read
    std::optional<std::string> failure;
};

class BlockTransformer {
public:
    BlockTransformer(const CrsPair& crsPair, const LineOptions& lineOptions, const Block& linesOfInput)
        : pair(crsPair),
          options(lineOptions),
          writer(*lineOptions.writer),
          layout(writer.format.layout),
          block(linesOfInput) {
        try {
            transformer.emplace(pair.source(), pair.target());
        } catch (const CoordinateTransformation::TransExecException& failure) {
            missingOperation = failure.what();
        }
    }

    BlockResult run() {
        std::string_view lines = block.lines;
        result.output.reserve(2 * lines.size());
        for (std::uint64_t number = block.firstLine; !result.stopped && !lines.empty(); ++number) {
            readRow(rows[waiting++], takeLine(lines, number));
            if (waiting == MAX_ROWS) finishRows();
        }
        finishRows();
        return std::move(result);
    }

private:
    void readRow(Row& row, const InputLine& line) const {
        const std::string& comment = options.comment;
        const bool isComment = !comment.empty() && line.text.substr(0, comment.size()) == comment;
        row.line = line;
        row.ignored = !block.tooLong && (isComment || isBlank(line.text));
        row.failure.reset();
        row.read.count = 0;
        if (row.ignored) return;
        std::string reason;
        if (block.tooLong || line.text.size() > LONGEST_LINE)
            row.failure = "the line is longer than " + std::to_string(LONGEST_LINE) + " bytes";
        else if (!readCoordinates(line.text, layout, writer.format.separator, row.read, reason)) {
            row.failure = reason;
            row.read.count = 0;
        }
    }

    // Transforms and writes the waiting rows. One call of the library transforms consecutive points that have the same
    // number of ordinates.
    void finishRows() {
        for (std::size_t begin = 0, end = 0; begin < waiting; begin = end) {
            const std::size_t count = rows[begin].read.count;
            while (end < waiting && rows[end].read.count == count) ++end;
            if (count == 0) continue;
            if (layout.shape == Shape::BOX)
                transformBoxes(begin, end);
            else
                transformPoints(begin, end);
        }
        for (std::size_t i = 0; i < waiting && !result.stopped; ++i) writeRow(rows[i], results[i]);
        waiting = 0;
    }

    void transformPoints(std::size_t begin, std::size_t end) {
        std::array<bool, MAX_ROWS> failed;
        failed.fill(true);
        const std::size_t count = rows[begin].read.count;
        for (std::size_t i = begin; i < end; ++i) results[i] = rows[i].read.value;
        double* const first = results[begin].data();
        if (transformer)
            transformer->transform(end - begin, first + X, first + Y, count > Z ? first + Z : nullptr, MAX_ORDINATES,
                                   &failed[begin]);
        for (std::size_t i = begin; i < end; ++i)
            if (failed[i] || !areFinite(results[i], count)) rows[i].failure = pair.failureReason(rows[i].read);
    }

    void transformBoxes(std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            const auto& [minX, minY, maxX, maxY] = rows[i].read.value;
            rows[i].failure = missingOperation;
            if (!transformer) continue;
            try {
                const auto box = transformer->transformBounds({minX, minY, maxX, maxY}, options.pointsPerEdge);
                results[i] = {box.minX, box.minY, box.maxX, box.maxY};
                rows[i].failure.reset();
            } catch (const std::exception& failure) {
                rows[i].failure = failure.what();
            }
        }
    }

    void writeRow(const Row& row, Ordinates& moved) {
        if (row.ignored) {
            ++result.counts.ignored;
            return writer.ignored(result.output, row.line);
        }
        const bool isPoint = row.read.count > 0 && layout.shape == Shape::POINT;
        if (isPoint && pair.looksExchanged(row.read.value)) ++result.counts.lookExchanged;
        if (row.failure) return refuse(row);
        ++result.counts.transformed;
        if (options.exchanged) std::swap(moved[X], moved[Y]);
        writer.row(result.output, row.line, row.read, moved);
    }

    void refuse(const Row& row) {
        ++result.counts.refused;
        result.reports += "crsctl transform: " + options.inputNames[block.input] + ":" +
                          std::to_string(row.line.number) + ": " + *row.failure + ": " +
                          Tools::printable(row.line.text) + "\n";
        if (options.errors == ErrorMode::MARK)
            writer.mark(result.output, row.line, row.read.count > 0 ? &row.read : nullptr, *row.failure);
        result.stopped = options.errors == ErrorMode::STOP;
    }

    const CrsPair& pair;
    const LineOptions& options;
    const RowWriter& writer;
    const ColumnLayout& layout;
    const Block& block;
    BlockResult result;
    // Empty if there is no operation between the two CRS; `missingOperation` is then the reason.
    std::optional<CoordinateTransformation::PointTransformer> transformer;
    std::string missingOperation;
    std::array<Row, MAX_ROWS> rows;
    std::array<Ordinates, MAX_ROWS> results;
    std::size_t waiting = 0;  // so many of the rows are read but not transformed
};

}  // namespace

BlockResult transformBlock(const CrsPair& pair, const LineOptions& options, const Block& block) {
    return BlockTransformer(pair, options, block).run();
}

}  // namespace crsctl
