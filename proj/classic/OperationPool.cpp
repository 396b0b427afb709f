#include "proj/classic/OperationPool.h"

#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

#include <boost/intrusive/list.hpp>
#include <boost/intrusive/unordered_set.hpp>

#include "platform/SpinningMutex.h"
#include "proj/classic/PairOperations.h"
#include "proj/classic/PerProcess.h"
#include "proj/classic/ProjObjects.h"

namespace ClassicProj {

namespace intrusive = boost::intrusive;
using CoordinateTransformation::SpinningMutex;

struct PairOfDefinitions {
    projPJ source;
    projPJ target;
};

bool operator==(const PairOfDefinitions& left, const PairOfDefinitions& right) {
    return left.source == right.source && left.target == right.target;
}

struct PooledOperation {
    PairOfDefinitions pair{nullptr, nullptr};
    unsigned int madeAfter = forksSinceLoad;
    // At most two operations: with heights and without.
    PairOperations operations{makeContext, 2};
    const PairOperation* plain = nullptr;
    // Null if a geoid is missing.
    const PairOperation* withHeights = nullptr;
    int plainError = 0;
    // A geocentric point needs its z.
    bool needsHeights = false;
    intrusive::list_member_hook<> byUse;
    intrusive::unordered_set_member_hook<> byPair;
};

namespace {

struct PairOf {
    using type = PairOfDefinitions;
    const type& operator()(const PooledOperation& operation) const { return operation.pair; }
};

// Definitions are close together in memory, so the low bits are spread before they are mixed.
struct PairHash {
    std::size_t operator()(const PairOfDefinitions& pair) const {
        constexpr std::size_t SPREAD = 0x9E3779B97F4A7C15U;
        const std::hash<const Definition*> hash;
        const std::size_t mixed = (hash(pair.source) * SPREAD) ^ hash(pair.target);
        return mixed ^ (mixed >> 32U);
    }
};

using ByUse =
    intrusive::list<PooledOperation,
                    intrusive::member_hook<PooledOperation, intrusive::list_member_hook<>, &PooledOperation::byUse>>;
using ByPair = intrusive::unordered_multiset<
    PooledOperation,
    intrusive::member_hook<PooledOperation, intrusive::unordered_set_member_hook<>, &PooledOperation::byPair>,
    intrusive::key_of_value<PairOf>, intrusive::hash<PairHash>, intrusive::equal<std::equal_to<PairOfDefinitions>>,
    intrusive::power_2_buckets<true>>;

// The operations that are not in use. Neither taking one nor giving one back allocates.
//
// Not thread-safe.
class IdleOperations {
public:
    // An idle operation of the pair, else one that is bound to no pair, else null.
    PooledOperation* take(const PairOfDefinitions& pair) {
        const auto found = byPair.find(pair);
        if (found == byPair.end()) return takeUnbound();
        PooledOperation& operation = *found;
        byPair.erase(found);
        byUse.erase(ByUse::s_iterator_to(operation));
        return &operation;
    }

    // Returns the least recently used operation if there are more than the bound, otherwise null. The caller unbinds
    // it.
    PooledOperation* giveBack(PooledOperation& operation) {
        byPair.insert(operation);
        byUse.push_front(operation);
        return byUse.size() > OperationLease::MOST_IDLE ? takeLast() : nullptr;
    }

    void keepUnbound(PooledOperation& operation) { unbound.push_front(operation); }

    std::size_t size() const { return byUse.size(); }
    std::size_t made = 0;

private:
    PooledOperation* takeUnbound() {
        if (unbound.empty()) return nullptr;
        PooledOperation& operation = unbound.front();
        unbound.pop_front();
        return &operation;
    }

    PooledOperation* takeLast() {
        PooledOperation& last = byUse.back();
        byUse.pop_back();
        byPair.erase(byPair.iterator_to(last));
        return &last;
    }

    static constexpr std::size_t BUCKETS = 1024;

    std::array<ByPair::bucket_type, BUCKETS> buckets;
    ByPair byPair{ByPair::bucket_traits(buckets.data(), buckets.size())};
    // The last used operation is at the front.
    ByUse byUse;
    // Operations bound to no pair: their PROJ objects are released, their contexts serve other pairs.
    ByUse unbound;
};

// Guards the idle operations. Held for less time than a thread needs to fall asleep.
SpinningMutex idleLock;

struct Pool {
    PerProcess<std::unique_ptr<IdleOperations>> idle{[] { return std::make_unique<IdleOperations>(); }};
    // Operations that are neither used again nor released; the list keeps them reachable for leak checkers.
    ByUse abandoned;
};

// Called under idleLock. The first call in a process may throw std::bad_alloc.
Pool& pool() {
    static auto& all = *new Pool;
    return all;
}

IdleOperations& idleOperations() { return *pool().idle.get(); }

PooledOperation* takeIdle(const PairOfDefinitions& pair) {
    const std::lock_guard<SpinningMutex> guard(idleLock);
    return idleOperations().take(pair);
}

void abandon(PooledOperation& operation) {
    const std::lock_guard<SpinningMutex> guard(idleLock);
    pool().abandoned.push_back(operation);
}

void unbind(PooledOperation& operation) {
    const ProjWork work;
    if (!work.isAllowed()) return abandon(operation);
    operation.plain = nullptr;
    operation.withHeights = nullptr;
    operation.operations.clear();
    const std::lock_guard<SpinningMutex> idleGuard(idleLock);
    idleOperations().keepUnbound(operation);
}

bool isOfThisProcess(const PooledOperation& operation) { return operation.madeAfter == forksSinceLoad; }

// Returns the operation to unbind in exchange, or null.
PooledOperation* keepIdle(PooledOperation& operation) {
    const std::lock_guard<SpinningMutex> guard(idleLock);
    return idleOperations().giveBack(operation);
}

void giveBack(PooledOperation& operation) noexcept {
    if (!isOfThisProcess(operation)) return abandon(operation);
    if (PooledOperation* const givenUp = keepIdle(operation)) unbind(*givenUp);
}

bool isComplete(const PooledOperation& operation) {
    return operation.plain != nullptr && operation.withHeights != nullptr;
}

void complete(PooledOperation& operation) {
    const Definition& source = *operation.pair.source;
    const Definition& target = *operation.pair.target;
    int heightsError = 0;
    if (operation.plain == nullptr)
        operation.plain = operation.operations.find(source, target, false, operation.plainError);
    operation.withHeights = operation.operations.find(source, target, true, heightsError);
    operation.needsHeights = source.isGeocentric || target.isGeocentric;
}

struct GiveBack {
    void operator()(PooledOperation* operation) const noexcept { giveBack(*operation); }
};
using Owned = std::unique_ptr<PooledOperation, GiveBack>;

PooledOperation* makeUnbound() {
    auto operation = std::make_unique<PooledOperation>();
    const std::lock_guard<SpinningMutex> guard(idleLock);
    ++idleOperations().made;
    return operation.release();
}

PooledOperation* checkOut(const PairOfDefinitions& pair) {
    PooledOperation* const idle = takeIdle(pair);
    Owned operation(idle != nullptr ? idle : makeUnbound());
    operation->pair = pair;
    if (!isComplete(*operation)) complete(*operation);
    return operation.release();
}

void moveOrFail(const PairOperation* operation, Position* points, std::size_t count) {
    if (operation != nullptr) return operation->move(points, count);
    for (std::size_t i = 0; i < count; ++i) points[i].x = HUGE_VAL;
}

}  // namespace

OperationLease::OperationLease(projPJ source, projPJ target)
    : operation(source == nullptr || target == nullptr ? nullptr : checkOut({source, target})) {}

OperationLease::OperationLease(OperationLease&& other) noexcept : operation(std::exchange(other.operation, nullptr)) {}

OperationLease& OperationLease::operator=(OperationLease&& other) noexcept {
    std::swap(operation, other.operation);
    return *this;
}

OperationLease::~OperationLease() {
    if (operation != nullptr) giveBack(*operation);
}

int OperationLease::makeError() const {
    if (operation == nullptr) return PROJ_ERR_OTHER_API_MISUSE;
    return operation->plain != nullptr ? 0 : operation->plainError;
}

void OperationLease::move(Position* points, std::size_t count) const {
    moveOrFail(operation->withHeights, points, count);
}

void OperationLease::moveFlat(Position* points, std::size_t count) const {
    moveOrFail(operation->needsHeights ? nullptr : operation->plain, points, count);
}

void OperationLease::moveBack(Position& point) const { operation->plain->moveBack(point); }

bool OperationLease::isUsable() const { return makeError() == 0 && isOfThisProcess(*operation); }

void OperationLease::renew() { *this = OperationLease(operation->pair.source, operation->pair.target); }

PoolCount countPooledOperations() {
    const std::lock_guard<SpinningMutex> guard(idleLock);
    return {idleOperations().size(), idleOperations().made};
}

void lockPoolForFork() { idleLock.lock(); }

void unlockPoolAfterFork() { idleLock.unlock(); }

}  // namespace ClassicProj
