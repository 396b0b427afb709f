#pragma once

#include <cerrno>

namespace CoordinateTransformation {

// Restores errno on destruction, also after a failure. PROJ, the C library's mathematics and the file system set it,
// and a host may read it before and after a call of this library.
class ErrnoGuard {
public:
    ErrnoGuard() : saved(errno) {}
    ~ErrnoGuard() { errno = saved; }
    ErrnoGuard(const ErrnoGuard&) = delete;
    ErrnoGuard& operator=(const ErrnoGuard&) = delete;

private:
    const int saved;
};

}  // namespace CoordinateTransformation
