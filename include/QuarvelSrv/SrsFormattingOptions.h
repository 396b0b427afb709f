#pragma once

#include <string>

namespace QuarvelSrv {

/// How a response of the server wants a CRS written; read by AbstractCrs::getAliasOrAsOgcURN.
///
/// For programs that are not the server. No other header includes this one, so that the server may keep its own
/// definition, with the same members in the same order; the library reads an object of either.
struct SrsFormattingOptions {
    /// When not empty, written as the EPSG dataset version in place of the CRS's own.
    std::string version;
    /// When not empty, the whole output is this prefix followed by the code; for a compound CRS that of each code,
    /// separated by a comma.
    std::string codePrefix;
    /// 2 = OGC http URL; every other value = OGC URN.
    int style = 0;
};

}  // namespace QuarvelSrv
