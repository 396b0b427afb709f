#pragma once

#include <cstddef>

#include "proj/classic/ClassicProj.h"
#include "proj/classic/Position.h"

namespace ClassicProj {

struct PooledOperation;

// An operation of a pair with its own PROJ context, taken from the pool of the process. One thread at a time moves
// points with it and waits for no other thread.
//
// The destructor returns the operation to the pool. The pool keeps a limited number of idle operations and releases the
// least recently used ones.
class OperationLease {
public:
    // The maximum number of idle operations.
    static constexpr std::size_t MOST_IDLE = 512;

    // Takes an idle operation of the pair, or makes one. Throws std::bad_alloc.
    OperationLease(projPJ source, projPJ target);
    OperationLease(OperationLease&& other) noexcept;
    OperationLease& operator=(OperationLease&& other) noexcept;
    OperationLease(const OperationLease&) = delete;
    OperationLease& operator=(const OperationLease&) = delete;
    ~OperationLease();

    // 0, or the error number that pj_transform returns for every point of the pair.
    int makeError() const;

    // Moves points as pj_transform does. A point that fails is not finite afterwards. Allocates nothing.
    //
    // REQUIRES: isUsable(), and no height is NaN.
    void move(Position* points, std::size_t count) const;
    // Moves points without heights, whose z is 0, in the same way.
    void moveFlat(Position* points, std::size_t count) const;
    // Moves one point without height from target to source.
    void moveBack(Position& point) const;

    // Whether points can be moved. False when the operation could not be made. Also false in the child of a fork for an
    // operation of the parent, which is never used again.
    bool isUsable() const;
    // Takes or makes another operation of the pair. Throws std::bad_alloc and then leaves the lease unchanged.
    //
    // REQUIRES: the lease was made for two definitions.
    void renew();

private:
    // Null if a definition was null.
    PooledOperation* operation;
};

// The numbers of operations of all pairs: idle, and made in total.
struct PoolCount {
    std::size_t idle;
    std::size_t made;
};
PoolCount countPooledOperations();

// Blocks changes of the idle operations.
void lockPoolForFork();
void unlockPoolAfterFork();

}  // namespace ClassicProj
