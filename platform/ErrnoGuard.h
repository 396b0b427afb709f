#pragma once

#include <cerrno>

namespace CoordinateTransformation {

// Leaves errno as it was, on failure too. PROJ, the C library's mathematics and the file system set it, and a host may
// look at it across a call of this library.
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
