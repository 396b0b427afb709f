#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/crsctl/points/Block.h"
#include "tools/crsctl/points/InputFile.h"

namespace crsctl {

// The longest line that is read, without its end.
constexpr std::size_t LONGEST_LINE = std::size_t{1} << 20U;

// What comes next of the inputs.
enum class Next { BLOCK, NOT_YET, END };

// Reads inputs one after another, in blocks of whole lines, in memory that does not grow. Input from a pipe or
// a terminal is passed on as it arrives. A byte-order mark at the beginning of an input is dropped.
class BlockReader {
public:
    // `paths` may hold "-" for standard input. With `headers` the first line of each input is no point.
    // SetUpError when an input is not there or may not be read.
    BlockReader(const std::vector<std::string>& paths, bool headers);
    // Reads `text` instead of a file.
    explicit BlockReader(std::string_view text);

    // The header of the first input, without its line end; empty when there is none. Waits for it. To be asked
    // for before the first block.
    std::string header();
    // The next block; its text holds until the next call. The end also when a signal asks to finish.
    // SetUpError when an input cannot be read.
    Next next(Block& block);
    // After NOT_YET: waits for input or a signal. Before the first block and after this, next() may still wait for the
    // beginning of an input.
    void wait() const {
        if (file) file->wait();
    }

    // The bytes of all inputs, when all are regular files.
    std::optional<std::uint64_t> bytesInAll() const { return totalBytes; }
    // Of the blocks so far and what was dropped between them.
    std::uint64_t bytesConsumed() const { return consumedBytes; }

private:
    bool startInput();
    void nextInput();
    bool ensureStarted();
    bool dropByteOrderMark();
    bool takeHeader();
    bool fill();
    bool takeLines(Block& block);
    bool takeLastLine(Block& block);
    bool takeTooLongLine(Block& block);
    void skipRestOfLine();
    void fillBlock(Block& block, std::size_t size, std::size_t consumed);
    void consume(std::size_t size);
    std::string_view buffered() const { return {buffer.data() + begin, end - begin}; }

    std::vector<std::string> inputs;
    std::optional<std::uint64_t> totalBytes = 0;
    bool hasHeaders;
    std::string firstHeader;

    std::unique_ptr<InputFile> file;
    std::uint32_t current = 0;  // index of the input being read
    bool started = false;       // what comes before the points of the current input is behind
    bool ended = false;         // the current input has no bytes beyond those in the buffer
    bool skipping = false;      // within the rest of a line too long

    std::vector<char> buffer;
    std::size_t begin = 0;
    std::size_t end = 0;
    std::size_t searched = 0;  // there is no line end in the buffer before this position
    std::uint64_t lineNumber = 1;
    std::uint64_t consumedBytes = 0;
};

}  // namespace crsctl
