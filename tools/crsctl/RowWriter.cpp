#include "tools/crsctl/RowWriter.h"

#include <algorithm>

#include <boost/algorithm/string/replace.hpp>

#include "tools/common/FixedDecimals.h"
#include "tools/crsctl/Output.h"

namespace crsctl {

void RowWriter::row(std::string& out, const InputLine& line, const CoordinateLine& read,
                    const Ordinates& result) const {
    std::array<char, MAX_ORDINATES * Tools::LONGEST_FIXED_DECIMAL> buffer;
    Texts ordinates;
    char* begin = buffer.data();
    for (std::size_t ordinate = 0; ordinate < read.count; ++ordinate) {
        char* const end = Tools::writeFixed(begin, result[ordinate], format.decimals[ordinate]);
        ordinates[ordinate] = {begin, static_cast<std::size_t>(end - begin)};
        begin = end;
    }
    write(out, line, read, ordinates);
}

namespace {

std::string_view between(const char* begin, const char* end) { return {begin, static_cast<std::size_t>(end - begin)}; }

class TextWriter final : public RowWriter {
public:
    using RowWriter::RowWriter;

    void header(std::string& out, std::string_view line) const override { out.append(line).append("\n"); }

    void mark(std::string& out, const InputLine& line, const CoordinateLine* read,
              const std::string& /*reason*/) const override {
        // cs2cs writes these marks for a point that it cannot transform.
        if (read != nullptr) return write(out, line, *read, {"*", "*", isPoint() ? "inf" : "*", "*"});
        out += isPoint() ? "*\t* " : "* * * * ";
        ignored(out, line);
    }

    void ignored(std::string& out, const InputLine& line) const override { out.append(line.text).append(line.end); }

private:
    bool isPoint() const { return format.layout.shape == Shape::POINT; }

    // Drops blanks before the first column.
    void write(std::string& out, const InputLine& line, const CoordinateLine& read,
               const Texts& ordinates) const override {
        const std::size_t first = format.layout.ordinateAt(0, read.count);
        const char* copied = first == MAX_ORDINATES ? line.text.data() : read.text[first].data();
        bool follows = false;  // an ordinate in the column before
        for (const std::size_t ordinate : format.layout.ordinates) {
            const bool isPresent = ordinate < read.count;
            const std::string_view text = isPresent ? read.text[ordinate] : std::string_view();
            if (isPresent && follows) out += separator(ordinate, read.separator);
            if (isPresent && !follows) out.append(between(copied, text.data()));
            if (isPresent) out.append(ordinates[ordinate]);
            if (isPresent) copied = text.data() + text.size();
            follows = isPresent;
        }
        out.append(between(copied, line.text.data() + line.text.size())).append(line.end);
    }

    char separator(std::size_t ordinate, char ofLine) const {
        if (ofLine != ' ') return ofLine;
        return isPoint() && ordinate != Z ? '\t' : ' ';
    }
};

// Returns whether the value has quotes around it in a line with commas or semicolons.
bool isQuoted(std::string_view value, char separator) {
    return separator != ' ' && value.size() > 1 && value.front() == '"' && value.back() == '"';
}

class CsvWriter final : public RowWriter {
public:
    using RowWriter::RowWriter;

    void header(std::string& out, std::string_view line) const override {
        writeColumns(out, line, format.layout.leastCount(), format.layout.ordinateNames);
    }

    void mark(std::string& out, const InputLine& line, const CoordinateLine* read,
              const std::string& /*reason*/) const override {
        writeColumns(out, line.text, read != nullptr ? read->count : format.layout.leastCount(), {"*", "*", "*", "*"});
    }

private:
    void write(std::string& out, const InputLine& line, const CoordinateLine& read,
               const Texts& ordinates) const override {
        writeColumns(out, line.text, read.count, ordinates);
    }

    // Writes the columns of the line, and in any case those of the ordinates.
    void writeColumns(std::string& out, std::string_view line, std::size_t count, const Texts& ordinates) const {
        ColumnScanner columns(line, format.separator);
        std::string_view value;
        for (std::size_t index = 0; columns.next(value) || index < format.layout.columnCount(count); ++index) {
            if (index > 0) out += ',';
            const std::size_t ordinate = format.layout.ordinateAt(index, count);
            if (ordinate != MAX_ORDINATES)
                out.append(ordinates[ordinate]);
            else
                appendValue(out, value, columns.separator());
            value = {};
        }
        out += '\n';
    }

    static void appendValue(std::string& out, std::string_view value, char separator) {
        if (isQuoted(value, separator) || value.find_first_of(",\"\r\n") == std::string_view::npos)
            out.append(value);
        else
            out += '"' + boost::algorithm::replace_all_copy(std::string(value), "\"", "\"\"") + '"';
    }
};

class JsonWriter final : public RowWriter {
public:
    using RowWriter::RowWriter;

    void mark(std::string& out, const InputLine& line, const CoordinateLine* /*read*/,
              const std::string& reason) const override {
        out += serialisedInLine({{"line", line.number}, {"error", reason}, {"input", std::string(line.text)}}) + '\n';
    }

private:
    void write(std::string& out, const InputLine& line, const CoordinateLine& read,
               const Texts& ordinates) const override {
        for (std::size_t ordinate = 0; ordinate < read.count; ++ordinate) {
            out.append(ordinate == 0 ? "{\"" : ",\"").append(format.layout.ordinateNames[ordinate]).append("\":");
            out.append(ordinates[ordinate]);
        }
        appendOtherColumns(out, line.text, read.count);
        out += "}\n";
    }

    void appendOtherColumns(std::string& out, std::string_view line, std::size_t count) const {
        ColumnScanner columns(line, format.separator);
        std::string_view value;
        std::string rest;
        bool replaced = false;
        for (std::size_t index = 0; columns.next(value); ++index) {
            if (format.layout.ordinateAt(index, count) != MAX_ORDINATES) continue;
            const std::string text = quotedJson(unquoted(value, columns.separator()), replaced);
            if (hasKey(index))
                out.append(",").append(quotedJson(format.layout.names[index], replaced)).append(":").append(text);
            else
                rest.append(rest.empty() ? "" : ",").append(text);
        }
        if (!rest.empty()) out.append(",\"rest\":[").append(rest).append("]");
        if (replaced) out.append(",\"").append(BYTES_REPLACED).append("\":true");
    }

    static std::string unquoted(std::string_view value, char separator) {
        if (!isQuoted(value, separator)) return std::string(value);
        return boost::algorithm::replace_all_copy(std::string(value.substr(1, value.size() - 2)), "\"\"", "\"");
    }

    // Of two columns with the same name only the first has a key, because an object has each key once.
    bool hasKey(std::size_t column) const {
        const auto& [names, ordinateNames] = std::tie(format.layout.names, format.layout.ordinateNames);
        if (column >= names.size() || names[column].empty()) return false;
        const std::string& name = names[column];
        if (name == "rest" || name == BYTES_REPLACED) return false;
        if (std::find(ordinateNames.begin(), ordinateNames.end(), name) != ordinateNames.end()) return false;
        return static_cast<std::size_t>(std::find(names.begin(), names.end(), name) - names.begin()) == column;
    }
};

}  // namespace

std::unique_ptr<const RowWriter> makeRowWriter(OutputFormat output, const RowFormat& format) {
    if (output == OutputFormat::CSV) return std::make_unique<CsvWriter>(format);
    if (output == OutputFormat::JSON) return std::make_unique<JsonWriter>(format);
    return std::make_unique<TextWriter>(format);
}

}  // namespace crsctl
