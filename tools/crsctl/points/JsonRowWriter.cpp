#include "tools/crsctl/points/JsonRowWriter.h"

#include <algorithm>

#include "tools/crsctl/points/FixedDecimals.h"
#include "tools/crsctl/text/Json.h"

namespace crsctl {
namespace {

// The value of a column: quotes around it belong to the separated line.
std::string unquoted(std::string_view value, char separator) {
    if (separator == ' ' || value.size() < 2 || value.front() != '"' || value.back() != '"') return std::string(value);
    std::string plain;
    for (std::size_t i = 1; i + 1 < value.size(); ++i) {
        plain += value[i];
        if (value[i] == '"' && value[i + 1] == '"' && i + 2 < value.size()) ++i;
    }
    return plain;
}

bool isReservedKey(const std::string& name) {
    return name == "x" || name == "y" || name == "z" || name == "rest" || name == BYTES_REPLACED;
}

}  // namespace

JsonRowWriter::JsonRowWriter(const ColumnLayout& columnLayout, Separator inputSeparator, const Decimals& places)
    : layout(columnLayout), separator(inputSeparator), decimals(places) {}

void JsonRowWriter::header(OutputBuffer& /*out*/, const InputLine& /*line*/) const {}

void JsonRowWriter::ordinate(OutputBuffer& out, const char* key, std::size_t which, double value) const {
    out.append(key);
    out.commit(writeFixed(out.reserve(LONGEST_FIXED_DECIMAL), value, decimals[which]));
}

// Of two columns of one name the second has none: a key stands once in an object.
bool JsonRowWriter::hasName(std::size_t column) const {
    if (column >= layout.names.size()) return false;
    const auto name = layout.names.begin() + static_cast<std::ptrdiff_t>(column);
    return !name->empty() && !isReservedKey(*name) && std::find(layout.names.begin(), name, *name) == name;
}

void JsonRowWriter::carriedColumns(OutputBuffer& out, std::string_view line, bool hasHeight) const {
    ColumnScanner columns(line, separator);
    std::string_view value;
    std::string rest;
    bool replaced = false;
    for (std::size_t index = 0; columns.next(value); ++index) {
        const std::size_t which = layout.ordinateOf(index);
        if (which < Z || (which == Z && hasHeight)) continue;
        const std::string text = quotedJson(unquoted(value, columns.separator()), replaced);
        if (hasName(index)) {
            out.append(',');
            out.append(quotedJson(layout.names[index], replaced));
            out.append(':');
            out.append(text);
        } else {
            rest += (rest.empty() ? "" : ",") + text;
        }
    }
    if (!rest.empty()) out.append(",\"rest\":[" + rest + "]");
    if (replaced) out.append(",\"" + std::string(BYTES_REPLACED) + "\":true");
}

void JsonRowWriter::point(OutputBuffer& out, const InputLine& line, const PointLine& point,
                          const std::array<double, ORDINATES>& result) const {
    ordinate(out, "{\"x\":", X, result[X]);
    ordinate(out, ",\"y\":", Y, result[Y]);
    if (point.hasHeight) ordinate(out, ",\"z\":", Z, result[Z]);
    carriedColumns(out, line.text, point.hasHeight);
    out.append("}\n");
}

void JsonRowWriter::mark(OutputBuffer& out, const InputLine& line, const PointLine* /*point*/,
                         const std::string& reason) const {
    Json json;
    json["line"] = line.number;
    json["error"] = reason;
    json["input"] = std::string(line.text);
    out.append(serialisedInLine(json));
    out.append('\n');
}

void JsonRowWriter::passOver(OutputBuffer& /*out*/, const InputLine& /*line*/) const {}

}  // namespace crsctl
