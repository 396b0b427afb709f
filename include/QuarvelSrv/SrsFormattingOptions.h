#pragma once

#include <string>

namespace QuarvelSrv {

/// How a response of the server writes a CRS; AbstractCrs::getAliasOrAsOgcURN reads it.
///
/// For programs other than the server. No other header includes this one, so that the server can keep its own
/// definition with the same members in the same order; the library reads an object of either.
struct SrsFormattingOptions {
    /// The EPSG dataset version to write. When it is empty, the CRS's own is written.
    std::string version;
    /// If not empty, the output is this prefix followed by the code; for a compound CRS, prefix and code of each part,
    /// separated by a comma.
    std::string codePrefix;
    /// 2 for an OGC http URL; any other value for an OGC URN.
    int style = 0;
};

}  // namespace QuarvelSrv
