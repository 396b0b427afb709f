#include "tools/crsctl/Blocks.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "tools/common/Process.h"
#include "tools/crsctl/Session.h"

namespace crsctl {

using Tools::blockFinishingSignals;
using Tools::finishingSignal;
using Tools::hasInput;
using Tools::waitForInput;

namespace {

[[noreturn]] void fail(const std::string& name, int error) { throw SetUpError(name + ": " + std::strerror(error)); }

bool isRegular(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

int openForReading(const std::string& path) {
    const int descriptor = path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const int error = errno;
    if (descriptor < 0) fail(inputName(path), error);
    return descriptor;
}

// Another process may have read a part of standard input, so its offset counts.
std::uint64_t bytesLeft(const std::string& path, const struct stat& status) {
    const auto size = static_cast<std::uint64_t>(status.st_size);
    const off_t offset = path == "-" ? lseek(STDIN_FILENO, 0, SEEK_CUR) : 0;
    const auto behind = offset > 0 ? static_cast<std::uint64_t>(offset) : 0;
    return size > behind ? size - behind : 0;
}

}  // namespace

std::optional<std::uint64_t> requireReadable(const std::string& path) {
    const bool standard = path == "-";
    const std::string name = inputName(path);
    struct stat status {};
    if ((standard ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status)) != 0) fail(name, errno);
    if (S_ISDIR(status.st_mode)) fail(name, EISDIR);
    if (!standard && access(path.c_str(), R_OK) != 0) fail(name, errno);
    if (!S_ISREG(status.st_mode)) return std::nullopt;
    return bytesLeft(path, status);
}

InputFile::InputFile(const std::string& path)
    : name(inputName(path)), descriptor(openForReading(path)), regular(isRegular(descriptor)) {}

InputFile::~InputFile() {
    if (descriptor != STDIN_FILENO) close(descriptor);
}

std::optional<std::size_t> InputFile::read(char* to, std::size_t size) {
    for (;;) {
        if (!regular) wait();
        if (finishingSignal() != 0) return std::nullopt;
        const ssize_t count = ::read(descriptor, to, size);
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno != EINTR && errno != EAGAIN) fail(name, errno);
    }
}

bool InputFile::mustWait() const { return !regular && finishingSignal() == 0 && !hasInput(descriptor); }

void InputFile::wait() const { waitForInput(descriptor); }

namespace {

constexpr std::size_t READ_SIZE = std::size_t{1} << 16U;
// A report shows this many bytes of a line that is too long.
constexpr std::size_t EXCERPT_SIZE = 256;
constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

std::string_view withoutCarriageReturn(std::string_view line) {
    return !line.empty() && line.back() == '\r' ? line.substr(0, line.size() - 1) : line;
}

// Every line ends in a line feed.
std::uint64_t linesIn(std::string_view text) {
    std::uint64_t count = 0;
    for (; !text.empty(); ++count) text.remove_prefix(text.find('\n') + 1);
    return count;
}

}  // namespace

BlockReader::BlockReader(const std::vector<std::string>& paths, bool headers)
    : inputs(paths), hasHeaders(headers), buffer(LONGEST_LINE + READ_SIZE) {
    for (const std::string& path : inputs) {
        const std::optional<std::uint64_t> size = requireReadable(path);
        totalBytes = size && totalBytes ? std::optional(*totalBytes + *size) : std::nullopt;
    }
}

BlockReader::BlockReader(std::string_view text)
    : inputs(1),
      totalBytes(text.size()),
      hasHeaders(false),
      started(true),
      ended(true),
      buffer(text.begin(), text.end()),
      end(text.size()) {}

std::string BlockReader::header() {
    if (hasHeaders && !inputs.empty()) ensureStarted();
    return firstHeader;
}

Next BlockReader::next(Block& block) {
    while (current < inputs.size()) {
        if (!ensureStarted()) return Next::END;
        if (skipping) skipRestOfLine();
        if (takeLines(block) || takeOverlongLine(block)) return Next::BLOCK;
        if (!ended) {
            if (file->mustWait()) return Next::NOT_YET;
            if (!fill()) return Next::END;
            continue;
        }
        if (takeLastLine(block)) return Next::BLOCK;
        nextInput();
        // Opening a pipe may wait for its writer.
        if (current < inputs.size() && !requireReadable(inputs[current])) return Next::NOT_YET;
    }
    return Next::END;
}

// Returns false if a signal asks the program to finish.
bool BlockReader::ensureStarted() {
    if (started) return true;
    if (!file) file = std::make_unique<InputFile>(inputs[current]);
    started = dropByteOrderMark() && (!hasHeaders || takeHeader());
    return started;
}

void BlockReader::nextInput() {
    file.reset();
    ++current;
    started = ended = skipping = false;
    lineNumber = 1;
}

bool BlockReader::dropByteOrderMark() {
    while (buffered().size() < BYTE_ORDER_MARK.size() && !ended) {
        if (buffered() != BYTE_ORDER_MARK.substr(0, buffered().size())) return true;
        if (!fill()) return false;
    }
    if (buffered().substr(0, BYTE_ORDER_MARK.size()) == BYTE_ORDER_MARK) consume(BYTE_ORDER_MARK.size());
    return true;
}

bool BlockReader::takeHeader() {
    std::size_t length = 0;
    while ((length = buffered().find('\n')) == std::string_view::npos && !ended) {
        if (buffered().size() > LONGEST_LINE)
            throw SetUpError(inputName(inputs[current]) + ":1: the header is too long");
        if (!fill()) return false;
    }
    if (current == 0) firstHeader = withoutCarriageReturn(buffered().substr(0, length));
    consume(length == std::string_view::npos ? buffered().size() : length + 1);
    lineNumber = 2;
    return true;
}

// Returns false if a signal asks the program to finish.
bool BlockReader::fill() {
    std::memmove(buffer.data(), buffer.data() + begin, end - begin);
    end -= begin;
    searched -= begin;
    begin = 0;
    const std::optional<std::size_t> count = file->read(buffer.data() + end, READ_SIZE);
    if (!count) return false;
    ended = *count == 0;
    end += *count;
    return true;
}

bool BlockReader::takeLines(Block& block) {
    const std::size_t from = std::max(searched, begin);
    const std::string_view unsearched(buffer.data() + from, end - from);
    const std::size_t lastEnd = unsearched.rfind('\n');
    searched = end;
    if (lastEnd == std::string_view::npos) return false;
    const std::size_t size = from + lastEnd + 1 - begin;
    fillBlock(block, size, size);
    lineNumber += linesIn(block.lines);
    searched = end;
    return true;
}

bool BlockReader::takeLastLine(Block& block) {
    if (buffered().empty()) return false;
    fillBlock(block, buffered().size(), buffered().size());
    return true;
}

bool BlockReader::takeOverlongLine(Block& block) {
    if (buffered().size() <= LONGEST_LINE) return false;
    fillBlock(block, EXCERPT_SIZE, buffered().size());
    block.tooLong = true;
    skipping = true;
    ++lineNumber;
    return true;
}

void BlockReader::skipRestOfLine() {
    const std::size_t lineEnd = buffered().find('\n');
    skipping = lineEnd == std::string_view::npos;
    consume(skipping ? buffered().size() : lineEnd + 1);
}

void BlockReader::fillBlock(Block& block, std::size_t size, std::size_t consumed) {
    block.lines = buffered().substr(0, size);
    block.firstLine = lineNumber;
    block.input = current;
    block.tooLong = false;
    consume(consumed);
}

void BlockReader::consume(std::size_t size) {
    begin += size;
    consumedBytes += size;
    searched = std::max(searched, begin);
}

namespace {

// Threads have this many further blocks while the oldest result is written.
constexpr std::size_t BLOCKS_AHEAD = 2;

}  // namespace

BlockThreads::BlockThreads(std::size_t maxThreads, MakeProcessor makeProcessor)
    : most(maxThreads), make(std::move(makeProcessor)), jobs(maxThreads + BLOCKS_AHEAD) {}

BlockThreads::~BlockThreads() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        ending = true;
    }
    blockAvailable.notify_all();
    for (std::thread& thread : threads) thread.join();
}

void BlockThreads::submit(const Block& block) {
    Job& job = jobNumber(submitted);
    job.lines = block.lines;
    job.block = block;
    job.block.lines = job.lines;
    job.result.clear();
    job.done = false;
    bool isThreadNeeded = false;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        ++submitted;
        isThreadNeeded = submitted - begun > idleThreads && threads.size() < most;
    }
    blockAvailable.notify_one();
    if (isThreadNeeded) startThread();
}

void BlockThreads::startThread() {
    try {
        threads.emplace_back([this] { work(); });
    } catch (const std::system_error& failure) {
        throw SetUpError("cannot start a thread: " + failure.code().message());
    }
}

const BlockResult& BlockThreads::take() {
    Job& job = jobNumber(taken);
    std::unique_lock<std::mutex> lock(mutex);
    resultAvailable.wait(lock, [&job] { return job.done; });
    ++taken;
    if (job.failure) std::rethrow_exception(std::exchange(job.failure, nullptr));
    return job.result;
}

void BlockThreads::work() {
    blockFinishingSignals();
    ProcessBlock process;
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
        ++idleThreads;
        blockAvailable.wait(lock, [this] { return ending || begun < submitted; });
        --idleThreads;
        if (ending) return;
        Job& job = jobNumber(begun++);
        lock.unlock();
        run(job, process);
        lock.lock();
        job.done = true;
        resultAvailable.notify_one();
    }
}

void BlockThreads::run(Job& job, ProcessBlock& process) const {
    try {
        if (!process) process = make();
        process(job.block, job.result);
    } catch (...) {
        job.failure = std::current_exception();
    }
}

}  // namespace crsctl
