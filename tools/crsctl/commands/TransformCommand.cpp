#include "tools/crsctl/commands/TransformCommand.h"

#include <algorithm>
#include <memory>
#include <thread>
#include <utility>

#include "tools/crsctl/points/BlockTransformer.h"
#include "tools/crsctl/points/PointTransform.h"
#include "tools/crsctl/points/StreamRun.h"
#include "tools/crsctl/points/Workers.h"
#include "tools/crsctl/start/Signals.h"
#include "tools/crsctl/start/TextFile.h"

namespace crsctl {
namespace {

constexpr unsigned int MOST_JOBS = 8;
// Below this size a worker costs more time to start than it saves.
constexpr std::uint64_t LARGE_INPUT = 4U << 20U;

// Everything that one process needs to transform blocks.
class Transformation : public BlockProcessor {
public:
    Transformation(const CommonOptions& common, const TransformOptions& options, const LineOptions& lines)
        : session(common), points(session, options.from, options.to), blocks(points, lines) {}

    BlockResult process(const Block& block) override { return blocks.process(block); }
    std::string headerRow(const std::string& header) const { return blocks.headerRow(header); }

private:
    Session session;
    PointTransform points;
    BlockTransformer blocks;
};

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

LineOptions lineOptionsFrom(const CommonOptions& common, const TransformOptions& options, const std::string& header) {
    LineOptions lines;
    if (!options.columns.empty()) lines.layout = layoutFrom(options.columns);
    lines.separator = separatorNamed(options.separator);
    addHeaderNames(lines.layout, header, lines.separator);
    lines.comment = options.comment;
    lines.format = formatNamed(options.output.empty() && common.json ? "json" : options.output);
    lines.decimals = options.decimals;
    lines.errors = errorModeNamed(options.errors);
    for (const std::string& file : options.files) lines.inputNames.push_back(inputName(file));
    return lines;
}

// Every process starts the library for itself, but a configuration that comes through a pipe can be read only once.
void readConfigurationOnce(CommonOptions& common) {
    if (!common.configFile.empty()) common.configText = readTextFile(common.configFile);
}

// A pipe or a terminal may wait for each answer; workers would give it only with a later block.
unsigned int jobsFor(const TransformOptions& options, const BlockReader& reader) {
    if (!reader.bytesInAll()) return 1;
    if (options.jobs > 0) return options.jobs;
    if (*reader.bytesInAll() < LARGE_INPUT) return 1;
    return std::clamp(std::thread::hardware_concurrency(), 1U, MOST_JOBS);
}

// Before the library is started in this process; none where one process does it all.
std::unique_ptr<Workers> startWorkers(unsigned int jobs, const Workers::MakeProcessor& makeProcessor) {
    return jobs < 2 ? nullptr : std::make_unique<Workers>(jobs, makeProcessor);
}

}  // namespace

int transformCommand(CommonOptions common, TransformOptions options) {
    if (options.inverse) std::swap(options.from, options.to);
    if (options.files.empty()) options.files = {"-"};
    readConfigurationOnce(common);
    catchSignals();
    BlockReader reader(options.files, options.header);
    const std::string header = reader.header();
    const LineOptions lines = lineOptionsFrom(common, options, header);
    const auto makeProcessor = [&] { return std::make_unique<Transformation>(common, options, lines); };
    const std::unique_ptr<Workers> workers = startWorkers(jobsFor(options, reader), makeProcessor);
    const std::unique_ptr<Transformation> own = makeProcessor();
    StreamRun run(reader);
    if (!header.empty()) run.write(own->headerRow(header));
    if (workers)
        run.process(*workers);
    else
        run.process(*own);
    return run.finish();
}

}  // namespace crsctl
