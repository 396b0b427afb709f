#include "tools/crsctl/TransformCommand.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <thread>
#include <unistd.h>
#include <utility>

#include "tools/common/Process.h"
#include "tools/common/Text.h"
#include "tools/crsctl/BlockTransformer.h"
#include "tools/crsctl/Blocks.h"
#include "tools/crsctl/Output.h"
#include "tools/crsctl/ResolveCommand.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

using Tools::catchSignals;
using Tools::finishingSignal;
using Tools::grouped;
using Tools::writeAll;
using Tools::WriteOutcome;

namespace {

constexpr char COMMAND_NAME[] = "crsctl transform";

// If standard output is a terminal, a bar would mix with the results.
bool isProgressWanted(const BlockReader& reader) {
    return reader.bytesInAll().has_value() && isatty(STDOUT_FILENO) == 0;
}

std::string rate(std::uint64_t lines, double seconds) {
    const long long perSecond = seconds > 0 ? std::llround(static_cast<double>(lines) / seconds) : 0;
    return grouped(static_cast<std::uint64_t>(perSecond)) + " lines/s";
}

}  // namespace

std::string summaryLine(const Counts& counts, double seconds) {
    std::array<char, 32> elapsed{};
    std::snprintf(elapsed.data(), elapsed.size(), "%.3f s", seconds);
    return grouped(counts.lines) + (counts.lines == 1 ? " line: " : " lines: ") + grouped(counts.transformed) +
           " transformed, " + grouped(counts.refused) + " refused, " + grouped(counts.ignored) + " ignored; " +
           elapsed.data() + ", " + rate(counts.lines, seconds);
}

StreamRun::StreamRun(BlockReader& blockReader, bool isQuiet)
    : reader(blockReader),
      quiet(isQuiet),
      progress(stderr, "", blockReader.bytesInAll().value_or(0), !isQuiet && isProgressWanted(blockReader)) {}

// A failure is kept until the results of the blocks before it are written.
Next StreamRun::nextBlock(Block& block) {
    try {
        return pipeClosed ? Next::END : reader.next(block);
    } catch (const SetUpError& failure) {
        readingFailure = failure.what();
        return Next::END;
    }
}

// Waits for a result only if no further block fits or no input is available, so that all threads stay busy.
void StreamRun::process(BlockThreads& threads) {
    Block block;
    for (;;) {
        const Next next = nextBlock(block);
        if (next == Next::BLOCK) {
            if (threads.isFull() && !deliver(threads.take())) return;
            threads.submit(block);
            continue;
        }
        if (!deliverAll(threads) || next == Next::END) return;
        reader.wait();
    }
}

bool StreamRun::deliverAll(BlockThreads& threads) {
    while (!threads.isEmpty())
        if (!deliver(threads.take())) return false;
    return true;
}

void StreamRun::write(std::string_view text) {
    const WriteOutcome outcome = writeAll(STDOUT_FILENO, text);
    if (outcome == WriteOutcome::FAILED) throw SetUpError(std::string("standard output: ") + std::strerror(errno));
    pipeClosed = pipeClosed || outcome == WriteOutcome::PIPE_CLOSED;
}

bool StreamRun::deliver(const BlockResult& result) {
    counts += result.counts;
    write(result.output.view());
    report(result.reports.view());
    progress.advanceTo(reader.bytesConsumed(), rate(counts.lines, stopwatch.seconds()));
    return !result.stopped && !pipeClosed;
}

void StreamRun::report(std::string_view reports) {
    if (reports.empty()) return;
    progress.clear();
    writeAll(STDERR_FILENO, reports);
}

int StreamRun::finish(const std::string& exchangedHint) {
    progress.clear();
    if (!readingFailure.empty()) printError(COMMAND_NAME, readingFailure);
    const bool isExchanged = 2 * counts.lookExchanged > counts.transformed + counts.refused;
    if (!quiet && isExchanged) printError(COMMAND_NAME, exchangedHint);
    if (!quiet) printError(COMMAND_NAME, summaryLine(counts, stopwatch.seconds()));
    if (!readingFailure.empty()) return EXIT_SET_UP;
    const int signal = finishingSignal();
    if (signal == SIGINT) return EXIT_INTERRUPTED;
    return signal != 0 || pipeClosed || counts.refused != 0 ? EXIT_REFUSED : EXIT_DONE;
}

namespace {

constexpr unsigned int MAX_DEFAULT_JOBS = 8;
constexpr char ARGUMENTS[] = "--bounds";  // the name of the input in messages if boxes are arguments

// Takes names from the header for the columns that the user has not named.
void addHeaderNames(ColumnLayout& layout, const std::string& header, Separator separator) {
    ColumnScanner columns(header, separator);
    std::string_view name;
    for (std::size_t index = 0; columns.next(name); ++index) {
        if (layout.names.size() <= index) layout.names.resize(index + 1);
        if (name.size() > 1 && name.front() == '"' && name.back() == '"') name = name.substr(1, name.size() - 2);
        if (layout.names[index].empty()) layout.names[index] = name;
    }
}

// Columns that are named by direction have the same directions in the output.
ColumnLayout layoutFrom(const TransformOptions& options, const CrsPair& pair, bool& exchanged) {
    const Shape shape = options.bounds ? Shape::BOX : Shape::POINT;
    if (options.columns.empty()) return ColumnLayout(shape);
    const bool isEastFirst = pair.source().isAxisOrderEastNorthOrLonLat();
    ColumnLayout layout(shape, options.columns, isEastFirst);
    if (!layout.isByDirection) return layout;
    exchanged = isEastFirst != pair.target().isAxisOrderEastNorthOrLonLat();
    layout.nameByDirection(isEastFirst, pair.target().isGeographic());
    return layout;
}

LineOptions lineOptionsFrom(const CommonOptions& common, const TransformOptions& options, const CrsPair& pair) {
    LineOptions lines;
    lines.format.layout = layoutFrom(options, pair, lines.exchanged);
    lines.format.separator = options.separator;
    lines.format.output = options.output.value_or(common.json ? OutputFormat::JSON : OutputFormat::TEXT);
    lines.format.decimals = pair.decimals(lines.format.layout.shape);
    if (options.decimals) lines.format.decimals.fill(*options.decimals);
    lines.comment = options.comment;
    lines.errors = options.errors;
    lines.pointsPerEdge = options.pointsPerEdge;
    return lines;
}

// Returns whether the arguments of --bounds are boxes rather than files.
bool hasBoxesAsArguments(const TransformOptions& options) {
    return options.bounds && !options.files.empty() && isNumber(options.files.front());
}

// Returns one box a line.
std::string boxLines(const std::vector<std::string>& numbers) {
    if (numbers.size() % MAX_ORDINATES != 0) throw SetUpError("--bounds: a box has four numbers");
    std::string lines;
    for (std::size_t i = 0; i < numbers.size(); ++i) lines += numbers[i] + ((i + 1) % MAX_ORDINATES == 0 ? "\n" : " ");
    return lines;
}

BlockReader openInput(const TransformOptions& options, LineOptions& lines) {
    if (hasBoxesAsArguments(options)) {
        lines.inputNames = {ARGUMENTS};
        return BlockReader(boxLines(options.files));
    }
    const std::vector<std::string> files = options.files.empty() ? std::vector<std::string>{"-"} : options.files;
    for (const std::string& file : files) lines.inputNames.push_back(inputName(file));
    return {files, options.header};
}

unsigned int jobsFor(const TransformOptions& options) {
    return options.jobs > 0 ? options.jobs : std::clamp(std::thread::hardware_concurrency(), 1U, MAX_DEFAULT_JOBS);
}

ProcessBlock makeProcessor(const CrsPair& pair, const LineOptions& lines) {
    const auto transformer = std::make_shared<BlockTransformer>(pair, lines);
    return [transformer](const Block& block, BlockResult& result) { transformer->process(block, result); };
}

std::string hintFor(const CrsPair& pair) {
    const bool isEastFirst = pair.source().isAxisOrderEastNorthOrLonLat();
    return std::string("hint: latitude and longitude look exchanged; the axis order of the input is ") +
           axisOrderText(true, isEastFirst) + " (--columns " + (isEastFirst ? "lat,lon" : "lon,lat") +
           " reads the other order)";
}

void writeHeaderRow(StreamRun& run, const RowFormat& format, const std::string& header) {
    OutputBuffer row;
    writeHeader(row, format, header);
    run.write(row.view());
}

}  // namespace

int transformCommand(const CommonOptions& common, TransformOptions options) {
    if (options.inverse) std::swap(options.from, options.to);
    const Session session(common);
    const CrsPair pair(session, options.from, options.to);
    LineOptions lines = lineOptionsFrom(common, options, pair);
    catchSignals();
    BlockReader reader = openInput(options, lines);
    const std::string header = reader.header();
    addHeaderNames(lines.format.layout, header, lines.format.separator);
    StreamRun run(reader, common.quiet);
    if (!header.empty()) writeHeaderRow(run, lines.format, header);
    BlockThreads threads(jobsFor(options), [&] { return makeProcessor(pair, lines); });
    run.process(threads);
    return run.finish(hintFor(pair));
}

}  // namespace crsctl
