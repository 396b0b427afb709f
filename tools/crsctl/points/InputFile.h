#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace crsctl {

// Makes sure that the input at `path` ("-": standard input) is there and may be read, without opening it: a pipe is
// opened once. The bytes it holds when it is a regular file. SetUpError with the system's reason.
std::optional<std::uint64_t> requireReadable(const std::string& path);

// An input while it is read. Closes what it has opened.
class InputFile {
public:
    // SetUpError when it cannot be opened.
    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // Up to `size` bytes, as soon as there are any; 0 at the end. Empty when a signal asks to finish.
    // SetUpError when reading fails.
    std::optional<std::size_t> read(char* to, std::size_t size);
    // Whether there is neither input nor its end yet, nor a signal.
    bool mustWait() const;
    // Waits until that changes.
    void wait() const;

private:
    std::string name;
    int descriptor;
    bool regular;
};

}  // namespace crsctl
