#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace crsctl {

// Bytes on their way out, appended without an allocation once the buffer has found its size.
class OutputBuffer {
public:
    // Room for `size` bytes behind what is there; what was written there counts after commit().
    char* reserve(std::size_t size) {
        if (bytes.size() - used < size) bytes.resize(2 * bytes.size() + size);
        return bytes.data() + used;
    }
    void commit(const char* end) { used = static_cast<std::size_t>(end - bytes.data()); }

    void append(std::string_view text) {
        if (text.empty()) return;
        std::memcpy(reserve(text.size()), text.data(), text.size());
        used += text.size();
    }
    void append(char character) {
        *reserve(1) = character;
        ++used;
    }

    std::string_view view() const { return {bytes.data(), used}; }
    void clear() { used = 0; }

private:
    std::vector<char> bytes;
    std::size_t used = 0;
};

// Whole lines of one input, in their order.
struct Block {
    std::string_view lines;
    std::uint64_t firstLine = 1;  // its number within its input
    std::uint32_t input = 0;      // which of the inputs
    // `lines` is the beginning of a single line that is longer than a line may be.
    bool tooLong = false;
};

struct Counts {
    std::uint64_t lines = 0;
    std::uint64_t transformed = 0;
    std::uint64_t refused = 0;
    std::uint64_t passedOver = 0;     // blank lines and comments
    std::uint64_t lookExchanged = 0;  // points with latitude and longitude exchanged, probably

    Counts& operator+=(const Counts& other) {
        lines += other.lines;
        transformed += other.transformed;
        refused += other.refused;
        passedOver += other.passedOver;
        lookExchanged += other.lookExchanged;
        return *this;
    }
};

// The result of a block.
struct BlockResult {
    OutputBuffer output;   // for standard output
    OutputBuffer reports;  // a line for each refused line
    Counts counts;
    bool stopped = false;  // at a refused line: nothing behind it was looked at

    void clear() {
        output.clear();
        reports.clear();
        counts = {};
        stopped = false;
    }
};

// Fills an empty result from a block.
using ProcessBlock = std::function<void(const Block&, BlockResult&)>;

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

// The longest line that is read, without its end.
constexpr std::size_t LONGEST_LINE = std::size_t{1} << 20U;

// The next part of the inputs.
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

// Threads that process blocks side by side. A thread starts when a block would wait otherwise, and makes its own
// processor with its first block. Results come in the order of the blocks.
class BlockThreads {
public:
    using MakeProcessor = std::function<ProcessBlock()>;

    BlockThreads(std::size_t mostThreads, MakeProcessor makeProcessor);
    // Blocks that no thread has begun are dropped.
    ~BlockThreads();
    BlockThreads(const BlockThreads&) = delete;
    BlockThreads& operator=(const BlockThreads&) = delete;

    // Whether no result is due.
    bool isEmpty() const { return taken == submitted; }
    bool isFull() const { return submitted - taken == jobs.size(); }
    // Copies the block. REQUIRES: it is not full. SetUpError when the system has no thread to give.
    void submit(const Block& block);
    // Waits for the oldest result, which holds until the next block is submitted. Raises what its processor raised.
    // REQUIRES: it is not empty.
    const BlockResult& take();

private:
    struct Job {
        std::string lines;
        Block block;
        BlockResult result;
        std::exception_ptr failure;
        bool done = false;
    };

    Job& jobNumber(std::size_t number) { return jobs[number % jobs.size()]; }
    void startThread();
    void work();
    void run(Job& job, ProcessBlock& process) const;

    const std::size_t most;
    const MakeProcessor make;
    // Used in a ring. A job belongs to the thread that has begun it until it is done, otherwise to the caller.
    std::vector<Job> jobs;
    std::size_t taken = 0;

    std::mutex mutex;  // of what follows and of `done`
    std::condition_variable blockIsThere;
    std::condition_variable resultIsThere;
    std::size_t submitted = 0;
    std::size_t begun = 0;
    std::size_t idleThreads = 0;
    bool ending = false;

    std::vector<std::thread> threads;
};

}  // namespace crsctl
