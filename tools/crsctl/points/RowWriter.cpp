#include "tools/crsctl/points/RowWriter.h"

#include "tools/crsctl/points/CsvRowWriter.h"
#include "tools/crsctl/points/JsonRowWriter.h"
#include "tools/crsctl/points/TextRowWriter.h"

namespace crsctl {

std::unique_ptr<RowWriter> makeRowWriter(OutputFormat format, const ColumnLayout& layout, Separator separator,
                                         const Decimals& decimals) {
    switch (format) {
        case OutputFormat::Csv:
            return std::make_unique<CsvRowWriter>(layout, separator, decimals);
        case OutputFormat::Json:
            return std::make_unique<JsonRowWriter>(layout, separator, decimals);
        case OutputFormat::Text:
            break;
    }
    return std::make_unique<TextRowWriter>(layout, decimals);
}

}  // namespace crsctl
