#pragma once

#include <atomic>
#include <new>

namespace ProjDir {

// Notices every allocation that fails while it lives, also those that PROJ swallows, to go on with less. One in a
// process at a time.
class MemoryWatch {
public:
    MemoryWatch() {
        shortageSeen = false;
        before = std::set_new_handler(noteShortage);
    }
    MemoryWatch(const MemoryWatch&) = delete;
    MemoryWatch& operator=(const MemoryWatch&) = delete;
    ~MemoryWatch() { std::set_new_handler(before); }

    static bool sawShortage() { return shortageSeen; }
    // std::bad_alloc when an allocation has failed.
    static void requireNoShortage() {
        if (shortageSeen) throw std::bad_alloc();
    }

private:
    static void noteShortage() {
        shortageSeen = true;
        throw std::bad_alloc();
    }

    static inline std::atomic<bool> shortageSeen{false};
    std::new_handler before = nullptr;
};

}  // namespace ProjDir
