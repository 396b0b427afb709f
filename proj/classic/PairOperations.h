#pragma once

#include <chrono>
#include <cmath>
#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include <proj.h>

#include "proj/classic/Definition.h"
#include "proj/classic/LruMap.h"
#include "proj/classic/Position.h"
#include "proj/classic/ProjObjects.h"

namespace ClassicProj {

// Moves points from one CRS to another. Made for one pair of definitions.
//
// Not thread-safe: all operations of one PairOperations share its PROJ context.
class PairOperation {
public:
    // Moves the point in place; `z` may be null. Returns 0, or PROJ's error number for a point that cannot be moved and
    // keeps its values.
    int transform(double& x, double& y, double* z) const;
    // Moves many points in place, each stage for all points. Faster than point by point, because no value is read right
    // after it is written.
    void move(Position* points, std::size_t count) const;
    // Moves the point from the second CRS to the first.
    void moveBack(Position& point) const;

private:
    friend class PairOperations;

    struct Stage {
        PJ* projection;
        PJ_DIRECTION direction;
        bool isGridShift;

        PJ_COORD move(const PJ_COORD& point) const;
        PJ_COORD moveIn(PJ_DIRECTION wanted, const PJ_COORD& point) const;
        void moveInPlace(PJ_DIRECTION wanted, Position& point) const;
    };

    void forgetErrors() const;
    int findError(PJ_COORD point) const;

    std::vector<Stage> stages;
    std::vector<ProjectionPtr> owned;
};

// A height that is NaN counts as no height.
inline double* countedHeight(double* z) { return z != nullptr && std::isnan(*z) ? nullptr : z; }

// Whether heights are converted by a geoid.
inline bool haveGeoids(const Definition& source, const Definition& target) {
    return !(source.geoidGrids.empty() && target.geoidGrids.empty());
}

// The operations of the pairs in use. An operation is made at first use; at the bound it replaces the least recently
// used one. A pair that fails is tried again after a second. Grid shifts are made once for all pairs and kept, with
// their files open.
//
// Not thread-safe. Owns its operations and grid shifts; contexts are never released.
class PairOperations {
public:
    using Clock = std::chrono::steady_clock;
    using Now = Clock::time_point (*)();
    using MakeContext = PJ_CONTEXT* (*)();

    static constexpr std::size_t DEFAULT_BOUND = 8192;

    PairOperations(MakeContext contextMaker, std::size_t mostPairs, Now currentTime = Clock::now);

    // Moves the point in place; `z` may be null. A height that is NaN counts as no height and stays. Returns 0, or
    // PROJ's error number for a point that cannot be moved and keeps its values.
    //
    // Throws std::bad_alloc when memory runs out while the pair is made; nothing of the pair is kept.
    int transform(const Definition& source, const Definition& target, double& x, double& y, double* z) {
        double* const height = countedHeight(z);
        // A geocentric point needs its z.
        if (height == nullptr && (source.isGeocentric || target.isGeocentric))
            return PROJ_ERR_COORD_TRANSFM_INVALID_COORD;
        int error = 0;
        const PairOperation* const operation = find(source, target, height != nullptr, error);
        return operation == nullptr ? error : operation->transform(x, y, height);
    }

    // The operation of the pair, or null with PROJ's error number in `error`. Valid until the next call.
    const PairOperation* find(const Definition& source, const Definition& target, bool withHeights, int& error) {
        const bool withGeoids = withHeights && haveGeoids(source, target);
        const Key key{&source, &target, withGeoids};
        // Consecutive points are mostly of one pair.
        const PairOperation* const last = operations.findLastUsed(key);
        return last != nullptr ? last : findOrMake(key, error);
    }

    // Releases all operations and grid shifts; the context stays.
    void clear();

    std::size_t size() const { return operations.size(); }
    // The number of recently failed pairs.
    std::size_t failureCount() const { return failures.size(); }

private:
    struct Key {
        const Definition* source;
        const Definition* target;
        bool withGeoids;
        bool operator==(const Key& other) const {
            return source == other.source && target == other.target && withGeoids == other.withGeoids;
        }
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const;
    };
    struct PairFailure {
        int error;
        Clock::time_point when;
    };

    const PairOperation* findOrMake(const Key& key, int& error);
    const PairOperation* tryToMake(const Key& key, int& error);
    const PairOperation* make(const Key& key, int& error);
    bool addStagesOrChangeContext(const Key& key, PairOperation& operation);
    int recentFailure(const Key& key);
    void rememberFailure(const Key& key, int error);
    bool addStages(const Key& key, PairOperation& operation);
    PJ* ownProjection(const std::string& text, PairOperation& operation);
    PJ* sharedGridShift(const std::string& text);

    // Null until it is needed.
    PJ_CONTEXT* context = nullptr;
    MakeContext makeContext;
    Now now;
    LruMap<Key, PairOperation, KeyHash> operations;
    std::unordered_map<Key, PairFailure, KeyHash> failures;
    std::map<std::string, ProjectionPtr> gridShifts;
};

}  // namespace ClassicProj
