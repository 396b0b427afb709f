#include "tools/crsctl/BlockTransformer.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>
#include <utility>

#include "CoordinateTransformation/CrsCreator.h"
#include "CoordinateTransformation/TransExecException.h"
#include "tools/common/FixedDecimals.h"
#include "tools/common/Text.h"
#include "tools/crsctl/Blocks.h"
#include "tools/crsctl/ResolveCommand.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

using CoordinateTransformation::CrsDescription;
using CoordinateTransformation::CrsDescriptions;
using CoordinateTransformation::GeographicBox;

using CoordinateTransformation::AbstractCrs;
using CoordinateTransformation::Bounds;
using CoordinateTransformation::Crs;
using CoordinateTransformation::CrsConfigData;
using CoordinateTransformation::TransExecException;
using Tools::MAX_DECIMALS;
using Tools::printable;

namespace {

Crs crsNamed(const std::string& name, const Session& session) {
    try {
        return session.createFromName(name, true);
    } catch (const std::exception&) {
        throw InputRefused(refusalInOneLine(reportOn(name, session)));
    }
}

bool isUsable(const boost::optional<int>& decimals) { return decimals && *decimals >= 0 && *decimals <= MAX_DECIMALS; }

// Returns nothing if the entry has no decimal places, or a number of them that cannot be written.
std::optional<int> configuredDecimals(const AbstractCrs& crs, const Session& session) {
    const CrsConfigData* const entry = session.config().getEntryFor(crs);
    if (entry == nullptr || !isUsable(entry->getNumberOfDecimalPlaces())) return std::nullopt;
    return *entry->getNumberOfDecimalPlaces();
}

constexpr int METRES = CrsConfigData::DEFAULT_NUMBER_OF_PLACES_METER;
constexpr int DEGREES = CrsConfigData::DEFAULT_NUMBER_OF_PLACES_DEGREE;

int horizontalDecimalsOf(const AbstractCrs& crs, const Session& session) {
    return configuredDecimals(crs, session).value_or(crs.isGeographic() ? DEGREES : METRES);
}

const GeographicBox* areaOf(const CrsDescription* described) {
    return described != nullptr && described->box ? &*described->box : nullptr;
}

bool isWithin(const GeographicBox* area, double longitude, double latitude) {
    constexpr GeographicBox EARTH{-180, -90, 180, 90};
    const auto& [west, south, east, north] = area == nullptr ? EARTH : *area;
    if (!(latitude >= south && latitude <= north)) return false;
    return west <= east ? longitude >= west && longitude <= east : longitude >= west || longitude <= east;
}

}  // namespace

CrsPair::CrsPair(const Session& session, const std::string& from, const std::string& to)
    : sourceCrs(crsNamed(from, session)),
      targetCrs(crsNamed(to, session)),
      horizontalDecimals(horizontalDecimalsOf(*targetCrs.get(), session)) {
    const CrsDescriptions& descriptions = CrsDescriptions::ofProjDirectory();
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

std::string tooLongReason() { return "the line is longer than " + std::to_string(LONGEST_LINE) + " bytes"; }

// Removes the first line from `lines` and returns it. The last line may lack its line end.
InputLine takeLine(std::string_view& lines, std::uint64_t number) {
    const char* const begin = lines.data();
    const auto* lineEnd = static_cast<const char*>(std::memchr(begin, '\n', lines.size()));
    const bool complete = lineEnd != nullptr;
    if (!complete) lineEnd = begin + lines.size();
    auto size = static_cast<std::size_t>(lineEnd - begin);
    lines.remove_prefix(size + (complete ? 1 : 0));
    const bool carriageReturn = size > 0 && begin[size - 1] == '\r';
    if (carriageReturn) --size;
    return {{begin, size}, carriageReturn ? "\r\n" : "\n", number};
}

bool areFinite(const Ordinates& ordinates, std::size_t count) {
    return std::all_of(ordinates.begin(), ordinates.begin() + static_cast<std::ptrdiff_t>(count),
                       [](double value) { return std::isfinite(value); });
}

}  // namespace

BlockTransformer::BlockTransformer(const CrsPair& crsPair, const LineOptions& lineOptions)
    : pair(crsPair), options(lineOptions) {
    try {
        transformer.emplace(pair.source(), pair.target());
    } catch (const TransExecException& failure) {
        missingOperation = failure.what();
    }
}

void BlockTransformer::process(const Block& block, BlockResult& result) {
    waiting = 0;
    std::string_view lines = block.lines;
    bool goesOn = true;
    for (std::uint64_t number = block.firstLine; goesOn && !lines.empty(); ++number)
        goesOn = addLine(takeLine(lines, number), block, result);
    result.stopped = !goesOn || !finishRows(block, result);
}

// Returns false if a line is refused and the run stops there.
bool BlockTransformer::addLine(const InputLine& line, const Block& block, BlockResult& result) {
    if (!block.tooLong && isIgnored(line.text)) {
        if (!finishRows(block, result)) return false;
        ++result.counts.lines;
        ++result.counts.ignored;
        writeIgnored(result.output, options.format, line);
        return true;
    }
    if (waiting == MAX_ROWS && !finishRows(block, result)) return false;
    Row& row = rows[waiting];
    row.line = line;
    std::string reason;
    const bool tooLong = block.tooLong || line.text.size() > LONGEST_LINE;
    if (tooLong) reason = tooLongReason();
    if (tooLong || !readCoordinates(line.text, options.format.layout, options.format.separator, row.read, reason))
        return finishRows(block, result) && refuse(row, false, reason, block, result);
    if (row.read.count != rows.front().read.count) {
        if (!finishRows(block, result)) return false;
        rows.front() = row;
    }
    ++waiting;
    return true;
}

bool BlockTransformer::isIgnored(std::string_view line) const {
    if (!options.comment.empty() && line.substr(0, options.comment.size()) == options.comment) return true;
    return isBlank(line);
}

// Transforms and writes the waiting rows. Returns false in the same case as addLine.
bool BlockTransformer::finishRows(const Block& block, BlockResult& result) {
    if (waiting == 0) return true;
    const bool isPoints = options.format.layout.shape == Shape::POINT;
    if (isPoints) transformPoints();
    std::string reason;
    for (std::size_t i = 0; i < waiting; ++i) {
        if (isPoints && pair.looksExchanged(rows[i].read.value)) ++result.counts.lookExchanged;
        if (!isTransformed(i, reason)) {
            if (!refuse(rows[i], true, reason, block, result)) return false;
            continue;
        }
        ++result.counts.lines;
        ++result.counts.transformed;
        if (options.exchanged) std::swap(results[i][X], results[i][Y]);
        writeRow(result.output, options.format, rows[i].line, rows[i].read, results[i]);
    }
    waiting = 0;
    return true;
}

void BlockTransformer::transformPoints() {
    failed.fill(true);
    if (!transformer) return;
    for (std::size_t i = 0; i < waiting; ++i) results[i] = rows[i].read.value;
    double* const first = results.front().data();
    double* const heights = rows.front().read.count > Z ? first + Z : nullptr;
    transformer->transform(waiting, first + X, first + Y, heights, MAX_ORDINATES, failed.data());
}

// Returns false, and sets the reason, if the row cannot be transformed.
bool BlockTransformer::isTransformed(std::size_t index, std::string& reason) {
    if (options.format.layout.shape == Shape::BOX) return transformBox(index, reason);
    const CoordinateLine& point = rows[index].read;
    if (!failed[index] && areFinite(results[index], point.count)) return true;
    reason = pair.failureReason(point);
    return false;
}

bool BlockTransformer::transformBox(std::size_t index, std::string& reason) {
    const auto& [minX, minY, maxX, maxY] = rows[index].read.value;
    reason = missingOperation;
    if (!transformer) return false;
    try {
        const Bounds bounds = transformer->transformBounds({minX, minY, maxX, maxY}, options.pointsPerEdge);
        results[index] = {bounds.minX, bounds.minY, bounds.maxX, bounds.maxY};
        return true;
    } catch (const std::exception& failure) {
        reason = failure.what();
        return false;
    }
}

bool BlockTransformer::refuse(const Row& row, bool isRead, const std::string& reason, const Block& block,
                              BlockResult& result) const {
    ++result.counts.lines;
    ++result.counts.refused;
    report(row.line, reason, block, result);
    if (options.errors == ErrorMode::MARK)
        writeMark(result.output, options.format, row.line, isRead ? &row.read : nullptr, reason);
    return options.errors != ErrorMode::STOP;
}

void BlockTransformer::report(const InputLine& line, const std::string& reason, const Block& block,
                              BlockResult& result) const {
    result.reports.append("crsctl transform: " + options.inputNames[block.input] + ":" + std::to_string(line.number) +
                          ": " + reason + ": " + printable(line.text) + "\n");
}

}  // namespace crsctl
