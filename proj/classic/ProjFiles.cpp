#include "proj/classic/ProjFiles.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "proj/classic/SearchPath.h"

namespace ClassicProj {

std::mutex projFilesLock;

namespace {

constexpr int NOT_OPEN = -1;

// Linked by hand: the list is usable in the child of a fork without further ado.
struct OpenFile {
    int descriptor = NOT_OPEN;
    off_t position = 0;
    OpenFile* previous = nullptr;
    OpenFile* next = nullptr;
};

OpenFile* firstFile = nullptr;
thread_local bool troubled = false;

void enlist(OpenFile& file) {
    const std::lock_guard<std::mutex> guard(projFilesLock);
    file.next = firstFile;
    if (firstFile != nullptr) firstFile->previous = &file;
    firstFile = &file;
}

void strike(OpenFile& file) {
    const std::lock_guard<std::mutex> guard(projFilesLock);
    (file.previous != nullptr ? file.previous->next : firstFile) = file.next;
    if (file.next != nullptr) file.next->previous = file.previous;
}

OpenFile& fileOf(PROJ_FILE_HANDLE* handle) { return *reinterpret_cast<OpenFile*>(handle); }

bool isMissing(int error) { return error == ENOENT || error == ENOTDIR || error == EACCES || error == ELOOP; }

// PROJ asks for a file in its user-writable directory, and at last for its bare name.
bool mayOpen(PJ_CONTEXT* context, const std::string& file) {
    if (!std::filesystem::path(file).is_absolute()) return false;
    return isInSearchDirectories(file) || !isBelow(file, proj_context_get_user_writable_directory(context, 0));
}

// A pipe in place of a file would keep its opener waiting, hence O_NONBLOCK; files take no notice of it.
int openRegularFile(const char* name) {
    const int descriptor = ::open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor == NOT_OPEN) {
        troubled = troubled || !isMissing(errno);
        return NOT_OPEN;
    }
    struct stat status;
    if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) return descriptor;
    ::close(descriptor);
    return NOT_OPEN;
}

PROJ_FILE_HANDLE* openFile(PJ_CONTEXT* context, const char* name, PROJ_OPEN_ACCESS access, void* /*user*/) {
    if (access != PROJ_OPEN_ACCESS_READ_ONLY || !mayOpen(context, name)) return nullptr;
    auto file = std::make_unique<OpenFile>();
    file->descriptor = openRegularFile(name);
    if (file->descriptor == NOT_OPEN) return nullptr;
    enlist(*file);
    return reinterpret_cast<PROJ_FILE_HANDLE*>(file.release());
}

size_t readFile(PJ_CONTEXT* /*context*/, PROJ_FILE_HANDLE* handle, void* buffer, size_t size, void* /*user*/) {
    OpenFile& file = fileOf(handle);
    size_t done = 0;
    while (done < size) {
        const ssize_t count = pread(file.descriptor, static_cast<char*>(buffer) + done, size - done, file.position);
        if (count < 0 && errno == EINTR) continue;
        troubled = troubled || count < 0;
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
    return fstat(file.descriptor, &status) == 0 ? status.st_size : 0;
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
    strike(*file);
    ::close(file->descriptor);
}

// PROJ remembers for the whole process whether its own directory exists, so the answer must be true.
int existsOnDisk(PJ_CONTEXT* /*context*/, const char* name, void* /*user*/) {
    struct stat status;
    return stat(name, &status) == 0 ? 1 : 0;
}

int refuseToChange(PJ_CONTEXT* /*context*/, const char* /*name*/, void* /*user*/) { return 0; }

int refuseToRename(PJ_CONTEXT* /*context*/, const char* /*from*/, const char* /*to*/, void* /*user*/) { return 0; }

constexpr PROJ_FILE_API FILES = {1,         openFile,     readFile,       refuseToWrite,  seekInFile,    tellPosition,
                                 closeFile, existsOnDisk, refuseToChange, refuseToChange, refuseToRename};

}  // namespace

void readFilesThroughLibrary(PJ_CONTEXT* context) { proj_context_set_fileapi(context, &FILES, nullptr); }

bool takeFileTrouble() {
    const bool was = troubled;
    troubled = false;
    return was;
}

void closeInheritedFiles() {
    for (OpenFile* file = firstFile; file != nullptr; file = file->next) {
        ::close(file->descriptor);
        file->descriptor = NOT_OPEN;
    }
}

}  // namespace ClassicProj
