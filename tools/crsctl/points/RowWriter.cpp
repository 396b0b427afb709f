#include "tools/crsctl/points/RowWriter.h"

#include "tools/crsctl/points/CsvRowWriter.h"
#include "tools/crsctl/points/JsonRowWriter.h"
#include "tools/crsctl/points/TextRowWriter.h"

namespace crsctl {

std::unique_ptr<RowWriter> makeRowWriter(OutputFormat format, const ColumnLayout& layout, Separator separator,
                                         const Decimals& decimals) {
    switch (format) {
        case OutputFormat::CSV:
            return std::make_unique<CsvRowWriter>(layout, separator, decimals);
        case OutputFormat::JSON:
            return std::make_unique<JsonRowWriter>(layout, separator, decimals);
        case OutputFormat::TEXT:
            break;
    }
    return std::make_unique<TextRowWriter>(layout, decimals);
}

}  // namespace crsctl
