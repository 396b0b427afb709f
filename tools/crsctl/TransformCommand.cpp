#include "tools/crsctl/TransformCommand.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <semaphore.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

#include "tools/common/Process.h"
#include "tools/common/ProgressBar.h"
#include "tools/common/Text.h"
#include "tools/crsctl/Output.h"
#include "tools/crsctl/ResolveCommand.h"

namespace crsctl {

using Tools::grouped;

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
    return grouped(counts.lines()) + (counts.lines() == 1 ? " line: " : " lines: ") + grouped(counts.transformed) +
           " transformed, " + grouped(counts.refused) + " refused, " + grouped(counts.ignored) + " ignored; " +
           elapsed.data() + ", " + rate(counts.lines(), seconds);
}

namespace {

// A mutex for long waits. ThreadSanitizer handles a signal only after the wait for a std::mutex, and the reader for
// which the thread waits may itself wait for the signal.
class Turns {
public:
    Turns() { sem_init(&semaphore, 0, 1); }
    ~Turns() { sem_destroy(&semaphore); }
    Turns(const Turns&) = delete;
    Turns& operator=(const Turns&) = delete;

    void lock() {
        while (sem_wait(&semaphore) != 0) continue;
    }
    void unlock() { sem_post(&semaphore); }

private:
    sem_t semaphore{};
};

// Passes the blocks of a reader through threads. Writes the results to standard output in the order of the input, and
// reports refused lines on standard error. The run ends at the end of the input, at a refused line with
// ErrorMode::STOP, at a signal, and if the reader of the output has ended.
class StreamRun {
public:
    using Transform = std::function<BlockResult(const Block&)>;

    // A quiet run writes no progress, no summary and no hint.
    StreamRun(BlockReader& blockReader, bool isQuiet)
        : reader(blockReader),
          quiet(isQuiet),
          progress(stderr, "", blockReader.bytesInAll().value_or(0), !isQuiet && isProgressWanted(blockReader)) {}

    // Writes `text` to standard output. Throws SetUpError if that fails.
    void write(std::string_view text) {
        const Tools::WriteOutcome outcome = Tools::writeAll(STDOUT_FILENO, text);
        if (outcome == Tools::WriteOutcome::FAILED)
            throw SetUpError(std::string("standard output: ") + std::strerror(errno));
        if (outcome != Tools::WriteOutcome::PIPE_CLOSED) return;
        pipeClosed = true;
        stop();
    }

    // Runs `jobs` threads, this one among them. If an input cannot be read, the run ends after the lines before the
    // failure. Throws SetUpError if writing fails, and if the system cannot start a thread.
    void process(const Transform& transform, unsigned int jobs) {
        std::vector<std::future<void>> others;
        try {
            while (others.size() + 1 < jobs)
                others.push_back(std::async(std::launch::async, [&] {
                    Tools::blockFinishingSignals();
                    work(transform);
                }));
        } catch (const std::system_error& failure) {
            const std::lock_guard<std::mutex> lock(writing);
            stop();
            throw SetUpError("cannot start a thread: " + failure.code().message());
        }
        work(transform);
        for (std::future<void>& other : others) other.get();
    }

    // Writes to standard error the failure of an input, the hint if most points look exchanged, and the summary.
    // Returns the exit code of the run.
    int finish(const std::string& exchangedHint) {
        progress.clear();
        if (!readingFailure.empty()) printError(COMMAND_NAME, readingFailure);
        const bool isExchanged = 2 * counts.lookExchanged > counts.transformed + counts.refused;
        if (!quiet && isExchanged) printError(COMMAND_NAME, exchangedHint);
        if (!quiet) printError(COMMAND_NAME, summaryLine(counts, stopwatch.seconds()));
        if (!readingFailure.empty()) return EXIT_SET_UP;
        const int signal = Tools::finishingSignal();
        if (signal == SIGINT) return EXIT_INTERRUPTED;
        return signal != 0 || pipeClosed || counts.refused != 0 ? EXIT_REFUSED : EXIT_DONE;
    }

private:
    void work(const Transform& transform) {
        try {
            while (const std::optional<Block> block = takeBlock()) deliver(*block, transform(*block));
        } catch (...) {
            const std::lock_guard<std::mutex> lock(writing);
            stop();
            throw;
        }
    }

    std::optional<Block> takeBlock() {
        const std::lock_guard<Turns> lock(reading);
        try {
            return stopped || !readingFailure.empty() ? std::nullopt : reader.next();
        } catch (const SetUpError& failure) {
            readingFailure = failure.what();
            return std::nullopt;
        }
    }

    // Writes a result after the results of the blocks before.
    void deliver(const Block& block, const BlockResult& result) {
        std::unique_lock<std::mutex> lock(writing);
        delivered.wait(lock, [&] { return stopped || deliveredBlocks == block.number; });
        if (stopped) return;
        counts.transformed += result.counts.transformed;
        counts.refused += result.counts.refused;
        counts.ignored += result.counts.ignored;
        counts.lookExchanged += result.counts.lookExchanged;
        write(result.output);
        if (!result.reports.empty()) progress.clear();
        Tools::writeAll(STDERR_FILENO, result.reports);
        progress.advanceTo(block.end, rate(counts.lines(), stopwatch.seconds()));
        if (result.stopped) stop();
        ++deliveredBlocks;
        delivered.notify_all();
    }

    // Ends the waits of all threads. REQUIRES: `writing` is locked, or this is the only thread.
    void stop() {
        stopped = true;
        delivered.notify_all();
        Tools::finishWithoutSignal();
    }

    Turns reading;  // guards `reader` and `readingFailure`
    BlockReader& reader;
    std::string readingFailure;

    std::mutex writing;  // guards the members below, standard output and standard error
    std::condition_variable delivered;
    std::uint64_t deliveredBlocks = 0;
    std::atomic<bool> stopped = false;
    bool pipeClosed = false;
    Counts counts;
    const bool quiet;
    const Tools::Stopwatch stopwatch;
    Tools::ProgressBar progress;
};

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

bool isEastFirst(const CoordinateTransformation::AbstractCrs& crs) { return crs.isAxisOrderEastNorthOrLonLat(); }

// Columns that are named by direction have the same directions in the output.
RowFormat formatFrom(const TransformOptions& options, const CrsPair& pair) {
    const Shape shape = options.bounds ? Shape::BOX : Shape::POINT;
    RowFormat format{ColumnLayout(shape), options.separator, pair.decimals(shape)};
    if (!options.columns.empty()) format.layout = ColumnLayout(shape, options.columns, isEastFirst(pair.source()));
    if (format.layout.isByDirection)
        format.layout.nameByDirection(isEastFirst(pair.source()), pair.target().isGeographic());
    if (options.decimals) format.decimals.fill(*options.decimals);
    return format;
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

BlockReader openInput(TransformOptions& options) {
    if (hasBoxesAsArguments(options)) {
        options.lines.inputNames = {ARGUMENTS};
        return BlockReader(boxLines(options.files));
    }
    if (options.files.empty()) options.files = {"-"};
    for (const std::string& file : options.files) options.lines.inputNames.push_back(inputName(file));
    return {options.files, options.header};
}

unsigned int jobsFor(const TransformOptions& options) {
    return options.jobs > 0 ? options.jobs : std::clamp(std::thread::hardware_concurrency(), 1U, MAX_DEFAULT_JOBS);
}

std::string hintFor(const CrsPair& pair) {
    return std::string("hint: latitude and longitude look exchanged; the axis order of the input is ") +
           axisOrderText(true, isEastFirst(pair.source())) + " (--columns " +
           (isEastFirst(pair.source()) ? "lat,lon" : "lon,lat") + " reads the other order)";
}

}  // namespace

int transformCommand(const CommonOptions& common, TransformOptions options) {
    if (options.inverse) std::swap(options.from, options.to);
    const Session session(common);
    const CrsPair pair(session, options.from, options.to);
    RowFormat format = formatFrom(options, pair);
    LineOptions& lines = options.lines;
    lines.exchanged = format.layout.isByDirection && isEastFirst(pair.source()) != isEastFirst(pair.target());
    Tools::catchSignals();
    BlockReader reader = openInput(options);
    const std::string header = reader.header();
    addHeaderNames(format.layout, header, format.separator);
    lines.writer =
        makeRowWriter(options.output.value_or(common.json ? OutputFormat::JSON : OutputFormat::TEXT), format);
    StreamRun run(reader, common.quiet);
    std::string headerRow;
    if (!header.empty()) lines.writer->header(headerRow, header);
    run.write(headerRow);
    run.process([&](const Block& block) { return transformBlock(pair, lines, block); }, jobsFor(options));
    return run.finish(hintFor(pair));
}

}  // namespace crsctl
