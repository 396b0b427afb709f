#pragma once

#include <cstddef>
#include <string>

namespace CoordinateTransformation {

/// What a text is as the name of a CRS, or why it is none. Made by CrsCreator::explainName.
struct NameExplanation {
    /// The kinds of faults.
    enum class Fault {
        /// The name is well formed. Whether there is such a CRS is another question.
        NONE,
        /// The text does not resemble any spelling.
        UNKNOWN_SPELLING,
        /// The text begins like a spelling and does not keep to it.
        BAD_SYNTAX,
        /// The text keeps to a spelling, but what it has for a code is none.
        BAD_CODE
    };

    /// The kind of fault, NONE for a name that is well formed.
    Fault fault = Fault::UNKNOWN_SPELLING;
    /// The spelling that the text has or resembles most, such as "OGC URN"; empty if it resembles none.
    std::string spelling;
    /// The code of the CRS, or of the first component of a compound; 0 if there is a fault.
    unsigned int primaryCode = 0;
    /// The code of the second component; 0 for a CRS that is not compound, and if there is a fault.
    unsigned int secondaryCode = 0;
    /// As it would be kept in the CRS: those of both components, joined.
    std::string version;
    /// Where the fault is: the number of a byte of the text, from 1 on; 0 if there is none or the text is empty.
    std::size_t position = 0;
    /// All of it for a log: "an OGC URN for EPSG:4326, version 6.12", or "an OGC URN whose version is missing, at
    /// character 20".
    std::string text;
};

}  // namespace CoordinateTransformation
