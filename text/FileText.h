#pragma once

#include <cstddef>
#include <streambuf>
#include <string>

namespace CoordinateTransformation {

// Beyond any file that the library reads; 256 MB.
constexpr std::size_t LARGEST_FILE = std::size_t{256} << 20;

// What is left in `source`, but not more than `limit` bytes. Failures of the buffer pass through.
std::string readUpTo(std::streambuf& source, std::size_t limit);

// A file read whole, or the reason why it could not be; then there is nothing of it.
struct FileText {
    std::string content;
    std::string failure;  // "Input/output error"; empty for a file that was read to its end
    bool opened = true;
};

// The file at `path`, which is read to its end or not at all: a read that breaks off is a failure, and so is a file
// of more than LARGEST_FILE bytes.
FileText readFile(const std::string& path);

// The same of a file that is open.
FileText readToEnd(std::streambuf& file);

}  // namespace CoordinateTransformation
