#pragma once

#include <stdexcept>
#include <string>

namespace crsctl {

// What the program exits with.
constexpr int EXIT_DONE = 0;
constexpr int EXIT_REFUSED = 1;
constexpr int EXIT_SET_UP = 2;
constexpr int EXIT_INTERRUPTED = 130;

// A failure that ends the command: one line of text that names the input, and the exit code.
class CommandFailure : public std::runtime_error {
public:
    CommandFailure(int code, const std::string& text) : std::runtime_error(text), exitCode(code) {}
    int getExitCode() const { return exitCode; }

private:
    int exitCode;
};

// The server would have refused the input.
class InputRefused : public CommandFailure {
public:
    explicit InputRefused(const std::string& text) : CommandFailure(EXIT_REFUSED, text) {}
};

// Wrong usage, a file that cannot be read, a library that does not start.
class SetUpError : public CommandFailure {
public:
    explicit SetUpError(const std::string& text) : CommandFailure(EXIT_SET_UP, text) {}
};

}  // namespace crsctl
