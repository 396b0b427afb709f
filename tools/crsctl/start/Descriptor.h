#pragma once

#include <string_view>

namespace crsctl {

// Fills the places of standard input, output and error where they are closed, so that nothing else is opened there.
// Using such a place still fails.
void occupyStandardDescriptors();

// What became of writing.
enum class WriteOutcome { WRITTEN, PIPE_CLOSED, FAILED };

// Writes all of `text`; the reason of a failure is in errno.
WriteOutcome writeAll(int descriptor, std::string_view text);

}  // namespace crsctl
