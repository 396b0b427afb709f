#pragma once

#include <cstddef>

#include "proj/classic/ClassicProj.h"
#include "proj/classic/Position.h"

namespace ClassicProj {

struct PooledOperation;

// An operation of a pair with a PROJ context of its own, checked out of the pool of the process. One thread at a time
// moves points with it, and waits for no other.
//
// Given back when the lease goes; the pool keeps idle operations up to a bound and gives up those that were used least
// recently.
class OperationLease {
public:
    // Idle operations that are kept.
    static constexpr std::size_t MOST_IDLE = 512;

    // Takes an idle operation of the pair, or makes one. Throws std::bad_alloc.
    OperationLease(projPJ source, projPJ target);
    OperationLease(OperationLease&& other) noexcept;
    OperationLease& operator=(OperationLease&& other) noexcept;
    OperationLease(const OperationLease&) = delete;
    OperationLease& operator=(const OperationLease&) = delete;
    ~OperationLease();

    // 0, or the error number that pj_transform gives for every point of the pair.
    int makeError() const;

    // Moves points as pj_transform does. A point that fails is not finite afterwards. Allocates nothing.
    //
    // REQUIRES: isUsable(), no height that is NaN.
    void move(Position* points, std::size_t count) const;
    // The same for points without heights, whose z is 0.
    void moveFlat(Position* points, std::size_t count) const;
    // One of these, from target to source.
    void moveBack(Position& point) const;

    // False when the operation could not be made, and in the child of a fork for what the parent has made: that is
    // never used again.
    bool isUsable() const;
    // Takes or makes the operation anew. Throws std::bad_alloc, and then the lease stays as it is.
    //
    // REQUIRES: made for two definitions.
    void renew();

private:
    // Null without a definition.
    PooledOperation* operation;
};

// Of operations of all pairs: idle, and made in all.
struct PoolCount {
    std::size_t idle;
    std::size_t made;
};
PoolCount countPooledOperations();

// Holds the list of idle operations still.
void lockPoolForFork();
void unlockPoolAfterFork();

}  // namespace ClassicProj
