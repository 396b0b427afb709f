#pragma once

#include <cstddef>
#include <streambuf>
#include <string>

namespace CoordinateTransformation {

// The largest file that is read, 256 MB. Every valid file is smaller.
constexpr std::size_t LARGEST_FILE = std::size_t{256} << 20;

// The rest of `source`, at most `limit` bytes. Failures of the buffer pass through.
std::string readUpTo(std::streambuf& source, std::size_t limit);

// A file that has been read completely, or the reason why it could not be; the text is then empty.
struct FileText {
    std::string content;
    std::string failure;  // such as "Input/output error"; empty after success
    bool opened = true;
};

// Reads the file at `path` completely. A read that breaks off is a failure, and so is a file of more than LARGEST_FILE
// bytes.
FileText readFile(const std::string& path);

// Reads an open file in the same way.
FileText readToEnd(std::streambuf& file);

}  // namespace CoordinateTransformation
