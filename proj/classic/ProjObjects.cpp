#include "proj/classic/ProjObjects.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <new>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ClassicProj {

std::mutex projFilesLock;

namespace {

std::vector<std::string>& searchDirectories() {
    static auto& directories = *new std::vector<std::string>;
    return directories;
}

}  // namespace

bool setSearchDirectories(std::vector<std::string> directories) {
    bool all = true;
    for (std::string& directory : directories) {
        std::error_code error;
        const std::filesystem::path absolute = std::filesystem::absolute(directory, error);
        if (!error && !directory.empty()) directory = absolute.string();
        all = all && !error && std::filesystem::is_directory(directory, error);
    }
    searchDirectories() = std::move(directories);
    return all;
}

std::filesystem::path findInSearchDirectories(const std::string& name) {
    for (const std::string& directory : searchDirectories()) {
        std::error_code error;
        std::filesystem::path candidate = std::filesystem::path(directory) / name;
        if (std::filesystem::is_regular_file(candidate, error)) return candidate;
    }
    return {};
}

bool isBelow(const std::filesystem::path& file, const std::filesystem::path& directory) {
    const std::filesystem::path whole = file.lexically_normal();
    const std::filesystem::path upper = directory.lexically_normal();
    const auto [in, of] = std::mismatch(whole.begin(), whole.end(), upper.begin(), upper.end());
    return in != whole.end() && (of == upper.end() || of->empty());
}

bool isInSearchDirectories(const std::filesystem::path& file) {
    const std::vector<std::string>& directories = searchDirectories();
    return std::any_of(directories.begin(), directories.end(),
                       [&file](const std::string& directory) { return isBelow(file, directory); });
}

namespace {

constexpr int NOT_OPEN = -1;

// A file is opened only once for all contexts: each read passes its position. The list is linked by hand, so the child
// of a fork can use it as it is.
struct Descriptor {
    int number = NOT_OPEN;
    dev_t device = 0;
    ino_t inode = 0;
    std::size_t readers = 0;
    Descriptor* previous = nullptr;
    Descriptor* next = nullptr;
};

struct OpenFile {
    Descriptor* descriptor = nullptr;
    off_t position = 0;
};

Descriptor* firstDescriptor = nullptr;
thread_local bool fileFailed = false;

void link(Descriptor& added) {
    added.next = firstDescriptor;
    if (firstDescriptor != nullptr) firstDescriptor->previous = &added;
    firstDescriptor = &added;
}

void unlink(Descriptor& removed) {
    (removed.previous != nullptr ? removed.previous->next : firstDescriptor) = removed.next;
    if (removed.next != nullptr) removed.next->previous = removed.previous;
}

// Inherited descriptors count as not open.
Descriptor* findDescriptor(const struct stat& status) {
    Descriptor* found = firstDescriptor;
    while (found != nullptr &&
           (found->number == NOT_OPEN || found->device != status.st_dev || found->inode != status.st_ino))
        found = found->next;
    return found;
}

// Takes ownership of `number`. If the file is already open, the existing descriptor is used instead of `added`.
Descriptor* shareDescriptor(int number, const struct stat& status, std::unique_ptr<Descriptor> added) {
    const std::lock_guard<std::mutex> guard(projFilesLock);
    if (Descriptor* const known = findDescriptor(status)) {
        ::close(number);
        ++known->readers;
        return known;
    }
    *added = {number, status.st_dev, status.st_ino, 1, nullptr, nullptr};
    link(*added);
    return added.release();
}

void releaseDescriptor(Descriptor* descriptor) {
    const std::lock_guard<std::mutex> guard(projFilesLock);
    if (--descriptor->readers != 0) return;
    const std::unique_ptr<Descriptor> last(descriptor);
    unlink(*last);
    if (last->number != NOT_OPEN) ::close(last->number);
}

OpenFile& fileOf(PROJ_FILE_HANDLE* handle) { return *reinterpret_cast<OpenFile*>(handle); }

bool isMissing(int error) { return error == ENOENT || error == ENOTDIR || error == EACCES || error == ELOOP; }

// Refuses bare names and files in PROJ's user-writable directory, which PROJ tries too.
bool mayOpen(PJ_CONTEXT* context, const std::string& file) {
    if (!std::filesystem::path(file).is_absolute()) return false;
    return isInSearchDirectories(file) || !isBelow(file, proj_context_get_user_writable_directory(context, 0));
}

// O_NONBLOCK, because opening a pipe would wait for a writer; it does not affect files.
Descriptor* openRegularFile(const char* name) {
    auto descriptor = std::make_unique<Descriptor>();
    const int number = ::open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (number == NOT_OPEN) {
        fileFailed = fileFailed || !isMissing(errno);
        return nullptr;
    }
    struct stat status;
    if (fstat(number, &status) == 0 && S_ISREG(status.st_mode))
        return shareDescriptor(number, status, std::move(descriptor));
    ::close(number);
    return nullptr;
}

PROJ_FILE_HANDLE* openFile(PJ_CONTEXT* context, const char* name, PROJ_OPEN_ACCESS access, void* /*user*/) {
    if (access != PROJ_OPEN_ACCESS_READ_ONLY || !mayOpen(context, name)) return nullptr;
    auto file = std::make_unique<OpenFile>();
    file->descriptor = openRegularFile(name);
    if (file->descriptor == nullptr) return nullptr;
    return reinterpret_cast<PROJ_FILE_HANDLE*>(file.release());
}

size_t readFile(PJ_CONTEXT* /*context*/, PROJ_FILE_HANDLE* handle, void* buffer, size_t size, void* /*user*/) {
    OpenFile& file = fileOf(handle);
    size_t done = 0;
    while (done < size) {
        const ssize_t count =
            pread(file.descriptor->number, static_cast<char*>(buffer) + done, size - done, file.position);
        if (count < 0 && errno == EINTR) continue;
        fileFailed = fileFailed || count < 0;
        if (count <= 0) break;
        done += static_cast<size_t>(count);
        file.position += count;
    }
    return done;
}

size_t refuseToWrite(PJ_CONTEXT* /*context*/, PROJ_FILE_HANDLE* /*handle*/, const void* /*data*/, size_t /*size*/,
                     void* /*user*/) {
    return 0;
}

off_t sizeOf(const OpenFile& file) {
    struct stat status;
    return fstat(file.descriptor->number, &status) == 0 ? status.st_size : 0;
}

int seekInFile(PJ_CONTEXT* /*context*/, PROJ_FILE_HANDLE* handle, long long offset, int whence, void* /*user*/) {
    OpenFile& file = fileOf(handle);
    const off_t origin = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? file.position : sizeOf(file);
    if (offset < -origin) return 0;
    file.position = origin + offset;
    return 1;
}

unsigned long long tellPosition(PJ_CONTEXT* /*context*/, PROJ_FILE_HANDLE* handle, void* /*user*/) {
    return static_cast<unsigned long long>(fileOf(handle).position);
}

void closeFile(PJ_CONTEXT* /*context*/, PROJ_FILE_HANDLE* handle, void* /*user*/) {
    const std::unique_ptr<OpenFile> file(&fileOf(handle));
    releaseDescriptor(file->descriptor);
}

// The answer must be true: PROJ remembers for the whole process whether its own directory exists.
int existsOnDisk(PJ_CONTEXT* /*context*/, const char* name, void* /*user*/) {
    struct stat status;
    return stat(name, &status) == 0 ? 1 : 0;
}

int refuseToChange(PJ_CONTEXT* /*context*/, const char* /*name*/, void* /*user*/) { return 0; }

int refuseToRename(PJ_CONTEXT* /*context*/, const char* /*from*/, const char* /*to*/, void* /*user*/) { return 0; }

constexpr PROJ_FILE_API FILES = {1,         openFile,     readFile,       refuseToWrite,  seekInFile,    tellPosition,
                                 closeFile, existsOnDisk, refuseToChange, refuseToChange, refuseToRename};

// Finds a file for PROJ, which searches its own directories after a null. `found` keeps the path until PROJ has copied
// it.
const char* findForProj(PJ_CONTEXT* /*context*/, const char* name, void* found) {
    auto& path = *static_cast<std::string*>(found);
    path = findInSearchDirectories(name).string();
    return path.empty() ? nullptr : path.c_str();
}

void dropMessage(void* /*data*/, int /*level*/, const char* /*message*/) {}

}  // namespace

void readFilesThroughLibrary(PJ_CONTEXT* context) { proj_context_set_fileapi(context, &FILES, nullptr); }

bool takeFileFailure() {
    const bool was = fileFailed;
    fileFailed = false;
    return was;
}

void closeInheritedFiles() {
    for (Descriptor* inherited = firstDescriptor; inherited != nullptr; inherited = inherited->next) {
        if (inherited->number != NOT_OPEN) ::close(inherited->number);
        inherited->number = NOT_OPEN;
    }
}

ProjWork::Places ProjWork::places;
bool ProjWork::isOver = false;

// If all places are taken, waits for the first.
std::unique_lock<std::mutex> ProjWork::takePlace() {
    for (std::mutex& place : places)
        if (std::unique_lock<std::mutex> taken(place, std::try_to_lock); taken) return taken;
    return std::unique_lock<std::mutex>(places.front());
}

void ProjWork::lockForFork() {
    for (std::mutex& place : places) place.lock();
}

void ProjWork::unlockAfterFork() {
    for (std::mutex& place : places) place.unlock();
}

void ProjWork::end() {
    lockForFork();
    isOver = true;
    unlockAfterFork();
}

// A new context is a copy of the default one, which belongs to the application. The file functions are set before PROJ
// could read a file.
PJ_CONTEXT* makeContext() {
    auto found = std::make_unique<std::string>();
    PJ_CONTEXT* const context = proj_context_create();
    if (context == nullptr) throw std::bad_alloc();
    proj_log_level(context, PJ_LOG_NONE);
    proj_log_func(context, nullptr, dropMessage);
    readFilesThroughLibrary(context);
    proj_context_set_file_finder(context, findForProj, found.release());
    proj_context_set_search_paths(context, 0, nullptr);
    proj_context_set_database_path(context, nullptr, nullptr, nullptr);
    proj_context_set_enable_network(context, 0);
    return context;
}

namespace {

// PROJ needs a tenth of this. If memory ran out during PROJ's trial of a text, PROJ would write to a string that no
// longer exists.
constexpr std::size_t ROOM = 1U << 20U;

void requireRoom() {
    void* volatile room = ::operator new(ROOM);
    ::operator delete(room);
}

bool reportsOutOfMemory(std::string_view text) {
    return text.find("bad_alloc") != std::string_view::npos || text.find("out of memory") != std::string_view::npos;
}

// Reads PROJ's log while PROJ makes an object. When memory runs out, PROJ omits a grid or the whole operation, and only
// the log shows the reason. The log quotes the text, so it is ignored if the text contains the same words.
class Listener {
public:
    Listener(PJ_CONTEXT* projContext, const std::string& text) : context(projContext) {
        if (reportsOutOfMemory(text)) return;
        proj_log_func(context, this, takeMessage);
        proj_log_level(context, PJ_LOG_DEBUG);
    }
    ~Listener() {
        proj_log_level(context, PJ_LOG_NONE);
        proj_log_func(context, nullptr, dropMessage);
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    void requireMemory() const {
        if (memoryEnded) throw std::bad_alloc();
    }

private:
    static void takeMessage(void* listener, int /*level*/, const char* message) {
        if (reportsOutOfMemory(message)) static_cast<Listener*>(listener)->memoryEnded = true;
    }

    PJ_CONTEXT* context;
    bool memoryEnded = false;
};

// PROJ returns an unusable object when it could describe an operation but not make it.
bool isWhole(const ProjectionPtr& projection) {
    return projection != nullptr && proj_pj_info(projection.get()).id != nullptr;
}

// If PROJ sets a number when memory runs out, it is PROJ_ERR_OTHER.
ProjectionPtr makeOnce(const Listener& listener, PJ_CONTEXT* context, const std::string& text) {
    requireRoom();
    ProjectionPtr projection(proj_create(context, text.c_str()));
    listener.requireMemory();
    if (projection == nullptr && proj_context_errno(context) == PROJ_ERR_OTHER) throw std::bad_alloc();
    return projection;
}

// Exit handlers run in reverse order. This one must be registered after PROJ's tables, which PROJ makes one by one as
// it makes objects. It is therefore registered after the first objects, and then at ever longer intervals.
void registerEndOfWork() {
    static std::atomic<std::size_t> made{0};
    const std::size_t sinceLoad = ++made;
    if ((sinceLoad & (sinceLoad - 1)) == 0) std::atexit(ProjWork::end);
}

// PROJ's reason for a failure may be wrong: since 9.2 it splits a text with "@" after any exception and reports why the
// first part fails. If a second attempt succeeds, memory was the reason.
ProjectionPtr make(const Listener& listener, PJ_CONTEXT* context, const std::string& text) {
    ProjectionPtr projection = makeOnce(listener, context, text);
    registerEndOfWork();
    if (isWhole(projection)) return projection;
    if (isWhole(makeOnce(listener, context, text))) throw std::bad_alloc();
    return nullptr;
}

bool isPointError(int error) { return error >= PROJ_ERR_COORD_TRANSFM && error < PROJ_ERR_OTHER; }

// If the process has used a grid before, PROJ opens it only when the first point arrives. If that fails, PROJ applies
// no shift.
bool canOpenGrids(PJ* shift) {
    constexpr double SOUTH_POLE = -1.5707963267948966;
    proj_errno_reset(shift);
    proj_trans(shift, PJ_FWD, proj_coord(0, SOUTH_POLE, 0, HUGE_VAL));
    const int error = proj_errno(shift);
    if (error != 0 && !isPointError(error)) return false;
    proj_errno_reset(shift);
    return true;
}

}  // namespace

ProjectionPtr makeProjection(PJ_CONTEXT* context, const std::string& text) {
    return make(Listener(context, text), context, text);
}

ProjectionPtr makeGridShift(PJ_CONTEXT* context, const std::string& text) {
    const Listener listener(context, text);
    takeFileFailure();
    ProjectionPtr shift = make(listener, context, text);
    const bool open = shift != nullptr && canOpenGrids(shift.get());
    listener.requireMemory();
    return open && !takeFileFailure() ? std::move(shift) : nullptr;
}

}  // namespace ClassicProj
