#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace crsctl {

// Consecutive whole lines of one input.
struct Block {
    std::string lines;
    std::uint64_t firstLine = 1;  // its number within the input
    std::size_t input = 0;        // the index of the input
    // Whether `lines` is only the beginning of one line, which is longer than LONGEST_LINE.
    bool tooLong = false;
    std::uint64_t number = 0;  // of the blocks before
    std::uint64_t end = 0;     // the bytes of all inputs up to here
};

// The length of the longest line that is read, without its line end.
constexpr std::size_t LONGEST_LINE = std::size_t{1} << 20U;

// Reads inputs one after another in blocks of whole lines, in a bounded amount of memory. Returns lines from a pipe or
// a terminal as they arrive. Drops a byte-order mark at the beginning of an input.
class BlockReader {
public:
    // "-" in `inputs` is standard input. With `headers` the first line of each input is a header.
    // Throws SetUpError if an input does not exist or is not readable. Opens none, because a pipe can be opened only
    // once.
    BlockReader(const std::vector<std::string>& inputs, bool headers);
    // Reads `lines` instead of a file.
    explicit BlockReader(const std::string& lines);

    // Waits for the header of the first input and returns it without its line end; empty if there is none.
    // REQUIRES: next() was not called yet.
    std::string header();
    // Waits for the next block and returns it. Returns nothing at the end of the last input, and if a signal asks the
    // program to finish. Throws SetUpError if an input cannot be read.
    std::optional<Block> next();

    // Returns the bytes of all inputs if all are regular files, otherwise nothing.
    std::optional<std::uint64_t> bytesInAll() const { return totalBytes; }

private:
    class Input;
    // Whether `text` begins at the beginning of an input, of a line or inside a line that is too long.
    enum class Place { INPUT, LINE, OVERLONG_LINE };

    bool fill();
    void dropBeginning();
    std::string dropLine();
    Block takeLines();
    std::string cut(std::size_t size);

    std::vector<std::string> paths;  // of the inputs
    bool hasHeaders;
    std::optional<std::uint64_t> totalBytes = 0;
    std::uint64_t consumedBytes = 0;
    std::uint64_t blockCount = 0;
    std::string firstHeader;

    std::size_t current = 0;       // the index of the input being read
    std::shared_ptr<Input> input;  // null if it is not open
    bool ended = false;            // all bytes of the input are read
    Place place = Place::INPUT;
    std::uint64_t lineNumber = 1;
    std::string text;       // the bytes that are read but neither returned nor dropped
    std::size_t whole = 0;  // so many of them are whole lines, or the beginning of a line that is too long
};

}  // namespace crsctl
