#pragma once

#include <string>

#include "tests/support/TemporaryDirectory.h"

namespace crsctl {

// A file with the given content for the life of a test.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& content) : filePath(directory.write("file", content)) {}

    const std::string& path() const { return filePath; }

private:
    const TestSupport::TemporaryDirectory directory;
    const std::string filePath;
};

}  // namespace crsctl
