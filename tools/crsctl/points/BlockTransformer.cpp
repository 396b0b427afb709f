#include "tools/crsctl/points/BlockTransformer.h"

#include <cstring>

#include "tools/crsctl/points/BlockReader.h"
#include "tools/crsctl/text/Printable.h"

namespace crsctl {
namespace {

Decimals decimalsFor(const PointTransform& transform, const LineOptions& options) {
    if (options.decimals < 0) return transform.decimals();
    return {options.decimals, options.decimals, options.decimals};
}

std::string tooLongReason() { return "the line is longer than " + std::to_string(LONGEST_LINE) + " bytes"; }

// Takes the next line off `lines`; the last one may have no end of its own.
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

}  // namespace

BlockTransformer::BlockTransformer(const PointTransform& pointTransform, const LineOptions& lineOptions)
    : transform(pointTransform),
      options(lineOptions),
      writer(makeRowWriter(options.format, options.layout, options.separator, decimalsFor(transform, options))) {}

BlockResult BlockTransformer::process(const Block& block) {
    output.clear();
    reports.clear();
    counts = {};
    if (block.tooLong) return processTooLong(block);
    std::string_view lines = block.lines;
    for (std::uint64_t number = block.firstLine; !lines.empty(); ++number)
        if (!processLine(takeLine(lines, number), block)) return result(true);
    return result(false);
}

BlockResult BlockTransformer::processTooLong(const Block& block) {
    ++counts.lines;
    return result(!refuse({block.lines, "\n", block.firstLine}, block, nullptr, tooLongReason()));
}

BlockResult BlockTransformer::result(bool stopped) const { return {output.view(), reports.view(), counts, stopped}; }

// False when the line is refused and nothing behind it is wanted.
bool BlockTransformer::processLine(const InputLine& line, const Block& block) {
    ++counts.lines;
    if (isPassedOver(line.text)) {
        ++counts.passedOver;
        writer->passOver(output, line);
        return true;
    }
    if (line.text.size() > LONGEST_LINE) return refuse(line, block, nullptr, tooLongReason());
    PointLine point;
    std::string reason;
    if (!readPoint(line.text, options.layout, options.separator, point, reason))
        return refuse(line, block, nullptr, reason);
    std::array<double, ORDINATES> ordinates = point.value;
    if (!transform.run(ordinates, point.hasHeight, reason)) return refuse(line, block, &point, reason);
    ++counts.points;
    writer->point(output, line, point, ordinates);
    return true;
}

bool BlockTransformer::isPassedOver(std::string_view line) const {
    if (!options.comment.empty() && line.substr(0, options.comment.size()) == options.comment) return true;
    return isBlank(line);
}

bool BlockTransformer::refuse(const InputLine& line, const Block& block, const PointLine* point,
                              const std::string& reason) {
    ++counts.refused;
    report(line, block, reason);
    if (options.errors == ErrorMode::MARK) writer->mark(output, line, point, reason);
    return options.errors != ErrorMode::STOP;
}

void BlockTransformer::report(const InputLine& line, const Block& block, const std::string& reason) {
    reports.append("crsctl transform: ");
    reports.append(options.inputNames[block.input]);
    reports.append(":" + std::to_string(line.number) + ": ");
    reports.append(reason);
    reports.append(": ");
    reports.append(printable(line.text));
    reports.append('\n');
}

std::string BlockTransformer::headerRow(const std::string& header) const {
    OutputBuffer row;
    writer->header(row, {header, "\n", 1});
    return std::string(row.view());
}

}  // namespace crsctl
