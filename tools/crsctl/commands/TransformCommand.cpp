#include "tools/crsctl/commands/TransformCommand.h"

#include <algorithm>
#include <memory>
#include <thread>
#include <utility>

#include "tools/common/Process.h"
#include "tools/crsctl/points/BlockThreads.h"
#include "tools/crsctl/points/BlockTransformer.h"
#include "tools/crsctl/points/CrsPair.h"
#include "tools/crsctl/points/StreamRun.h"
#include "tools/crsctl/start/Failures.h"
#include "tools/crsctl/start/TextFile.h"

namespace crsctl {

using Tools::catchSignals;

namespace {

constexpr unsigned int MOST_JOBS = 8;
constexpr char ARGUMENTS[] = "--bounds";  // what messages call boxes that are arguments

template <typename Value, std::size_t SIZE>
Value chosen(const std::pair<const char*, Value> (&choices)[SIZE], const std::string& word) {
    return std::find_if(choices, choices + SIZE - 1, [&word](const auto& choice) { return choice.first == word; })
        ->second;
}

Separator separatorNamed(const std::string& word) {
    constexpr std::pair<const char*, Separator> CHOICES[] = {{"space", Separator::BLANK},
                                                             {"comma", Separator::COMMA},
                                                             {"semicolon", Separator::SEMICOLON},
                                                             {"auto", Separator::AUTOMATIC}};
    return chosen(CHOICES, word);
}

OutputFormat formatNamed(const std::string& word) {
    constexpr std::pair<const char*, OutputFormat> CHOICES[] = {
        {"csv", OutputFormat::CSV}, {"json", OutputFormat::JSON}, {"text", OutputFormat::TEXT}};
    return chosen(CHOICES, word);
}

ErrorMode errorModeNamed(const std::string& word) {
    constexpr std::pair<const char*, ErrorMode> CHOICES[] = {
        {"stop", ErrorMode::STOP}, {"skip", ErrorMode::SKIP}, {"mark", ErrorMode::MARK}};
    return chosen(CHOICES, word);
}

// Names of columns from the header, for those that the user has not named.
void addHeaderNames(ColumnLayout& layout, const std::string& header, Separator separator) {
    ColumnScanner columns(header, separator);
    std::string_view name;
    for (std::size_t index = 0; columns.next(name); ++index) {
        if (layout.names.size() <= index) layout.names.resize(index + 1);
        if (name.size() > 1 && name.front() == '"' && name.back() == '"') name = name.substr(1, name.size() - 2);
        if (layout.names[index].empty()) layout.names[index] = name;
    }
}

ColumnLayout layoutFrom(const TransformOptions& options) {
    const Shape shape = options.bounds ? Shape::BOX : Shape::POINT;
    return options.columns.empty() ? ColumnLayout(shape) : ColumnLayout(shape, options.columns);
}

LineOptions lineOptionsFrom(const CommonOptions& common, const TransformOptions& options) {
    LineOptions lines;
    lines.format.layout = layoutFrom(options);
    lines.format.separator = separatorNamed(options.separator);
    lines.format.output = formatNamed(options.output.empty() && common.json ? "json" : options.output);
    lines.format.decimals.fill(options.decimals);
    lines.comment = options.comment;
    lines.errors = errorModeNamed(options.errors);
    lines.pointsPerEdge = options.pointsPerEdge;
    return lines;
}

// Whether --bounds is followed by boxes and not by files.
bool hasBoxesAsArguments(const TransformOptions& options) {
    return options.bounds && !options.files.empty() && isNumber(options.files.front());
}

// One box a line.
std::string boxLines(const std::vector<std::string>& numbers) {
    if (numbers.size() % MOST_ORDINATES != 0) throw SetUpError("--bounds: a box has four numbers");
    std::string lines;
    for (std::size_t i = 0; i < numbers.size(); ++i) lines += numbers[i] + ((i + 1) % MOST_ORDINATES == 0 ? "\n" : " ");
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
    return options.jobs > 0 ? options.jobs : std::clamp(std::thread::hardware_concurrency(), 1U, MOST_JOBS);
}

ProcessBlock makeProcessor(const CrsPair& pair, const LineOptions& lines) {
    const auto transformer = std::make_shared<BlockTransformer>(pair, lines);
    return [transformer](const Block& block, BlockResult& result) { transformer->process(block, result); };
}

void writeHeaderRow(StreamRun& run, const RowFormat& format, const std::string& header) {
    OutputBuffer row;
    writeHeader(row, format, header);
    run.write(row.view());
}

}  // namespace

int transformCommand(const CommonOptions& common, TransformOptions options) {
    if (options.inverse) std::swap(options.from, options.to);
    LineOptions lines = lineOptionsFrom(common, options);
    const Session session(common);
    const CrsPair pair(session, options.from, options.to);
    if (options.decimals < 0) lines.format.decimals = pair.decimals(lines.format.layout.shape);
    catchSignals();
    BlockReader reader = openInput(options, lines);
    const std::string header = reader.header();
    addHeaderNames(lines.format.layout, header, lines.format.separator);
    StreamRun run(reader);
    if (!header.empty()) writeHeaderRow(run, lines.format, header);
    BlockThreads threads(jobsFor(options), [&] { return makeProcessor(pair, lines); });
    run.process(threads);
    return run.finish();
}

}  // namespace crsctl
