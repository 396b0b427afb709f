#include "tools/crsctl/RowWriter.h"

#include <algorithm>
#include <cstddef>

#include "tools/common/FixedDecimals.h"
#include "tools/crsctl/Output.h"

namespace crsctl {

using Tools::LONGEST_FIXED_DECIMAL;
using Tools::writeFixed;

namespace {

constexpr std::size_t NO_COLUMN = static_cast<std::size_t>(-1);

std::string_view between(const char* begin, const char* end) { return {begin, static_cast<std::size_t>(end - begin)}; }

void appendNumber(OutputBuffer& out, double value, int decimals) {
    out.commit(writeFixed(out.reserve(LONGEST_FIXED_DECIMAL), value, decimals));
}

void appendLine(OutputBuffer& out, const InputLine& line) {
    out.append(line.text);
    out.append(line.end);
}

char textSeparator(const ColumnLayout& layout, std::size_t ordinate, char lineSeparator) {
    if (lineSeparator != ' ') return lineSeparator;
    return layout.shape == Shape::POINT && ordinate != Z ? '\t' : ' ';
}

// cs2cs writes these marks for a point that it cannot transform.
const char* textMark(const ColumnLayout& layout, std::size_t ordinate) {
    return layout.shape == Shape::POINT && ordinate == Z ? "inf" : "*";
}

template <typename WriteOrdinate>
void writeTextRow(OutputBuffer& out, const ColumnLayout& layout, const InputLine& line, const CoordinateLine& read,
                  WriteOrdinate write) {
    // Blanks before the first column are dropped.
    const std::size_t first = layout.order[0];
    const char* copied = layout.column[first] == 0 ? read.text[first].data() : line.text.data();
    std::size_t columnBefore = NO_COLUMN;
    for (std::size_t i = 0; i < layout.ordinateCount; ++i) {
        const std::size_t ordinate = layout.order[i];
        if (ordinate >= read.count) continue;
        const std::string_view text = read.text[ordinate];
        if (columnBefore != NO_COLUMN && layout.column[ordinate] == columnBefore + 1)
            out.append(textSeparator(layout, ordinate, read.separator));
        else
            out.append(between(copied, text.data()));
        write(ordinate);
        copied = text.data() + text.size();
        columnBefore = layout.column[ordinate];
    }
    out.append(between(copied, line.text.data() + line.text.size()));
    out.append(line.end);
}

void writeTextMark(OutputBuffer& out, const ColumnLayout& layout, const InputLine& line, const CoordinateLine* read) {
    if (read != nullptr) {
        writeTextRow(out, layout, line, *read, [&](std::size_t ordinate) { out.append(textMark(layout, ordinate)); });
        return;
    }
    out.append(layout.shape == Shape::POINT ? "*\t* " : "* * * * ");
    appendLine(out, line);
}

bool needsQuotes(std::string_view value) { return value.find_first_of(",\"\r\n") != std::string_view::npos; }

// Returns whether the value has quotes around it in a line with commas or semicolons.
bool isQuoted(std::string_view value, char separator) {
    return separator != ' ' && value.size() > 1 && value.front() == '"' && value.back() == '"';
}

void appendCsvValue(OutputBuffer& out, std::string_view value, char separator) {
    if (isQuoted(value, separator) || !needsQuotes(value)) {
        out.append(value);
        return;
    }
    out.append('"');
    for (const char character : value) {
        if (character == '"') out.append('"');
        out.append(character);
    }
    out.append('"');
}

// A row has the columns of the line, and in any case those of the ordinates.
template <typename WriteOrdinate>
void writeCsvRow(OutputBuffer& out, const RowFormat& format, std::string_view line, std::size_t count,
                 WriteOrdinate write) {
    ColumnScanner columns(line, format.separator);
    const std::size_t last = format.layout.lastColumn(count);
    std::string_view value;
    for (std::size_t index = 0;; ++index) {
        const bool present = columns.next(value);
        if (!present && index > last) break;
        if (index > 0) out.append(',');
        const std::size_t ordinate = format.layout.ordinateAt(index, count);
        if (ordinate != MAX_ORDINATES)
            write(ordinate);
        else if (present)
            appendCsvValue(out, value, columns.separator());
    }
    out.append('\n');
}

// Returns the value of a column without the quotes around it.
std::string unquoted(std::string_view value, char separator) {
    if (!isQuoted(value, separator)) return std::string(value);
    std::string plain;
    for (std::size_t i = 1; i + 1 < value.size(); ++i) {
        plain += value[i];
        if (value[i] == '"' && value[i + 1] == '"' && i + 2 < value.size()) ++i;
    }
    return plain;
}

bool isReservedKey(const ColumnLayout& layout, const std::string& name) {
    if (name == "rest" || name == BYTES_REPLACED) return true;
    for (std::size_t ordinate = 0; ordinate < MAX_ORDINATES; ++ordinate)
        if (name == layout.ordinateName(ordinate)) return true;
    return false;
}

// Of two columns with the same name only the first has a key, because an object has each key once.
bool hasKey(const ColumnLayout& layout, std::size_t column) {
    if (column >= layout.names.size()) return false;
    const auto name = layout.names.begin() + static_cast<std::ptrdiff_t>(column);
    return !name->empty() && !isReservedKey(layout, *name) && std::find(layout.names.begin(), name, *name) == name;
}

void appendCarriedColumns(OutputBuffer& out, const RowFormat& format, std::string_view line, std::size_t count) {
    ColumnScanner columns(line, format.separator);
    std::string_view value;
    std::string rest;
    bool replaced = false;
    for (std::size_t index = 0; columns.next(value); ++index) {
        if (format.layout.ordinateAt(index, count) != MAX_ORDINATES) continue;
        const std::string text = quotedJson(unquoted(value, columns.separator()), replaced);
        if (hasKey(format.layout, index))
            out.append("," + quotedJson(format.layout.names[index], replaced) + ":" + text);
        else
            rest += (rest.empty() ? "" : ",") + text;
    }
    if (!rest.empty()) out.append(",\"rest\":[" + rest + "]");
    if (replaced) out.append(",\"" + std::string(BYTES_REPLACED) + "\":true");
}

void writeJsonRow(OutputBuffer& out, const RowFormat& format, std::string_view line, std::size_t count,
                  const Ordinates& result) {
    for (std::size_t ordinate = 0; ordinate < count; ++ordinate) {
        out.append(ordinate == 0 ? "{\"" : ",\"");
        out.append(format.layout.ordinateName(ordinate));
        out.append("\":");
        appendNumber(out, result[ordinate], format.decimals[ordinate]);
    }
    appendCarriedColumns(out, format, line, count);
    out.append("}\n");
}

void writeJsonMark(OutputBuffer& out, const InputLine& line, const std::string& reason) {
    Json json;
    json["line"] = line.number;
    json["error"] = reason;
    json["input"] = std::string(line.text);
    out.append(serialisedInLine(json));
    out.append('\n');
}

}  // namespace

void writeHeader(OutputBuffer& out, const RowFormat& format, std::string_view header) {
    const ColumnLayout& layout = format.layout;
    if (format.output == OutputFormat::TEXT) appendLine(out, {header, "\n", 1});
    if (format.output != OutputFormat::CSV) return;
    writeCsvRow(out, format, header, layout.leastCount(),
                [&](std::size_t ordinate) { out.append(layout.ordinateName(ordinate)); });
}

void writeRow(OutputBuffer& out, const RowFormat& format, const InputLine& line, const CoordinateLine& read,
              const Ordinates& result) {
    const auto write = [&](std::size_t ordinate) { appendNumber(out, result[ordinate], format.decimals[ordinate]); };
    switch (format.output) {
        case OutputFormat::TEXT:
            return writeTextRow(out, format.layout, line, read, write);
        case OutputFormat::CSV:
            return writeCsvRow(out, format, line.text, read.count, write);
        case OutputFormat::JSON:
            return writeJsonRow(out, format, line.text, read.count, result);
    }
}

void writeMark(OutputBuffer& out, const RowFormat& format, const InputLine& line, const CoordinateLine* read,
               const std::string& reason) {
    const std::size_t count = read != nullptr ? read->count : format.layout.leastCount();
    switch (format.output) {
        case OutputFormat::TEXT:
            return writeTextMark(out, format.layout, line, read);
        case OutputFormat::CSV:
            return writeCsvRow(out, format, line.text, count, [&out](std::size_t) { out.append('*'); });
        case OutputFormat::JSON:
            return writeJsonMark(out, line, reason);
    }
}

void writeIgnored(OutputBuffer& out, const RowFormat& format, const InputLine& line) {
    if (format.output == OutputFormat::TEXT) appendLine(out, line);
}

}  // namespace crsctl
