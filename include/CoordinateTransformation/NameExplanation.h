#pragma once

#include <cstddef>
#include <string>

namespace CoordinateTransformation {

/// The explanation of a text as a CRS name: its codes, or the reason why it is not a name. CrsCreator::explainName
/// makes it.
struct NameExplanation {
    /// The kinds of faults.
    enum class Fault {
        /// The name is well formed. The CRS need not exist.
        NONE,
        /// The text does not resemble any spelling.
        UNKNOWN_SPELLING,
        /// The text begins as one of the spellings and then deviates from it.
        BAD_SYNTAX,
        /// The text follows a spelling, but one of its codes is not a code.
        BAD_CODE
    };

    /// The kind of fault; NONE for a well-formed name.
    Fault fault = Fault::UNKNOWN_SPELLING;
    /// The spelling that the text has or most resembles, such as "OGC URN"; empty if it resembles none.
    std::string spelling;
    /// The code of the CRS, or of the first component of a compound CRS; 0 if there is a fault.
    unsigned int primaryCode = 0;
    /// The code of the second component; 0 if the CRS is not compound or there is a fault.
    unsigned int secondaryCode = 0;
    /// The EPSG dataset version that the CRS would have; for a compound CRS the versions of both components, joined.
    std::string version;
    /// The place of the fault: the number of a byte of the text, from 1. 0 if there is no fault or the text is empty.
    std::size_t position = 0;
    /// The whole explanation for a log: "an OGC URN for EPSG:4326, version 6.12", or "an OGC URN whose version is
    /// missing, at character 20".
    std::string text;
};

}  // namespace CoordinateTransformation
