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

// A buffer for output. It keeps its memory, so that appending rarely allocates.
class OutputBuffer {
public:
    // Returns room for `size` bytes after the content. commit() adds the bytes written there to the content.
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

// Consecutive whole lines of one input.
struct Block {
    std::string_view lines;
    std::uint64_t firstLine = 1;  // its number within the input
    std::uint32_t input = 0;      // the index of the input
    // Whether `lines` is only the beginning of one line, which is longer than LONGEST_LINE.
    bool tooLong = false;
};

struct Counts {
    std::uint64_t lines = 0;
    std::uint64_t transformed = 0;
    std::uint64_t refused = 0;
    std::uint64_t ignored = 0;        // blank lines and comments
    std::uint64_t lookExchanged = 0;  // points whose latitude and longitude look exchanged

    Counts& operator+=(const Counts& other) {
        lines += other.lines;
        transformed += other.transformed;
        refused += other.refused;
        ignored += other.ignored;
        lookExchanged += other.lookExchanged;
        return *this;
    }
};

// The result of a block.
struct BlockResult {
    OutputBuffer output;   // text for standard output
    OutputBuffer reports;  // text for standard error, one line for each refused line
    Counts counts;
    bool stopped = false;  // at a refused line; the lines after it are not read

    void clear() {
        output.clear();
        reports.clear();
        counts = {};
        stopped = false;
    }
};

// Fills an empty result from a block.
using ProcessBlock = std::function<void(const Block&, BlockResult&)>;

// Checks that the input at `path` ("-": standard input) exists and is readable. Does not open it, because a pipe can be
// opened only once. Returns its unread bytes if it is a regular file, otherwise nothing. Throws SetUpError with the
// system's reason.
std::optional<std::uint64_t> requireReadable(const std::string& path);

// An open input. The destructor closes it unless it is standard input.
class InputFile {
public:
    // Throws SetUpError if the input cannot be opened.
    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // Reads up to `size` bytes, as soon as there are any. Returns their number, 0 at the end, or nothing if a signal
    // asks the program to finish. Throws SetUpError if reading fails.
    std::optional<std::size_t> read(char* to, std::size_t size);
    // Returns whether reading would wait: there is no input, no end of input and no signal.
    bool mustWait() const;
    // Waits until mustWait() is false.
    void wait() const;

private:
    std::string name;
    int descriptor;
    bool regular;
};

// The length of the longest line that is read, without its line end.
constexpr std::size_t LONGEST_LINE = std::size_t{1} << 20U;

// The result of asking for the next block.
enum class Next { BLOCK, NOT_YET, END };

// Reads inputs one after another in blocks of whole lines, in a bounded amount of memory. Returns lines from a pipe or
// a terminal as they arrive. Drops a byte-order mark at the beginning of an input.
class BlockReader {
public:
    // "-" in `paths` is standard input. With `headers` the first line of each input is a header.
    // Throws SetUpError if an input does not exist or is not readable.
    BlockReader(const std::vector<std::string>& paths, bool headers);
    // Reads `text` instead of a file.
    explicit BlockReader(std::string_view text);

    // Waits for the header of the first input and returns it without its line end; empty if there is none.
    // REQUIRES: next() was not called yet.
    std::string header();
    // Sets `block` to the next block. Its text is valid until the next call. Returns END also if a signal asks the
    // program to finish. Throws SetUpError if an input cannot be read.
    Next next(Block& block);
    // After NOT_YET: waits for input or a signal. Even so, next() may wait for the beginning of an input.
    void wait() const {
        if (file) file->wait();
    }

    // Returns the bytes of all inputs if all are regular files, otherwise nothing.
    std::optional<std::uint64_t> bytesInAll() const { return totalBytes; }
    // Returns the bytes of the blocks so far, and of what was dropped between them.
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
    bool takeOverlongLine(Block& block);
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
    bool started = false;       // the byte-order mark and the header of the current input are read
    bool ended = false;         // all bytes of the current input are read
    bool skipping = false;      // the buffer begins inside a line that is too long

    std::vector<char> buffer;
    std::size_t begin = 0;
    std::size_t end = 0;
    std::size_t searched = 0;  // the buffer has no line end before this position
    std::uint64_t lineNumber = 1;
    std::uint64_t consumedBytes = 0;
};

// Threads that process blocks in parallel. A new thread starts if a block would wait otherwise; it makes its own
// processor for its first block. Results are in the order of the blocks. One thread uses this object.
class BlockThreads {
public:
    using MakeProcessor = std::function<ProcessBlock()>;

    BlockThreads(std::size_t maxThreads, MakeProcessor makeProcessor);
    // Drops the blocks that no thread has begun, and waits for the others.
    ~BlockThreads();
    BlockThreads(const BlockThreads&) = delete;
    BlockThreads& operator=(const BlockThreads&) = delete;

    // Returns whether every result was taken.
    bool isEmpty() const { return taken == submitted; }
    bool isFull() const { return submitted - taken == jobs.size(); }
    // Copies the block. Throws SetUpError if the system cannot start a thread. REQUIRES: !isFull().
    void submit(const Block& block);
    // Waits for the oldest result and returns it. It is valid until the next block is submitted. Throws the exception
    // that its processor threw. REQUIRES: !isEmpty().
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
    // A ring. A job belongs to the thread that has begun it until it is done, otherwise to the caller.
    std::vector<Job> jobs;
    std::size_t taken = 0;

    std::mutex mutex;  // guards the members from `submitted` to `ending`, and Job::done
    std::condition_variable blockAvailable;
    std::condition_variable resultAvailable;
    std::size_t submitted = 0;
    std::size_t begun = 0;
    std::size_t idleThreads = 0;
    bool ending = false;

    std::vector<std::thread> threads;
};

}  // namespace crsctl
