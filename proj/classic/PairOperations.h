#pragma once

#include <cstddef>
#include <list>
#include <map>
#include <proj.h>
#include <string>
#include <unordered_map>
#include <vector>

#include "proj/classic/Definition.h"
#include "proj/classic/ProjectionPtr.h"

namespace ClassicProj {

// Moves points of one CRS to another. Made for one pair of definitions.
//
// Not thread-safe: all operations of one PairOperations share its PROJ context.
class PairOperation {
public:
    // Moves the point in place. `z` may be null. 0, or PROJ's error number for a point that cannot be moved, and
    // then the point keeps its values.
    int transform(double& x, double& y, double* z) const;

private:
    friend class PairOperations;

    struct Stage {
        PJ* projection;
        PJ_DIRECTION direction;
        bool isGridShift;
    };

    std::vector<Stage> stages;
    std::vector<ProjectionPtr> owned;
};

// The operations of the pairs in use: made at first use, the least recently used given up for a new one when
// there are as many as the bound. Grid shifts are made once for all pairs and stay, and with them their files.
//
// Not thread-safe. Owns its operations and grid shifts; borrows the context.
class PairOperations {
public:
    static constexpr std::size_t DEFAULT_BOUND = 1024;

    PairOperations(PJ_CONTEXT* projContext, std::size_t mostPairs);

    // The operation of the pair, or null with PROJ's error number in `error`. Holds until the next call.
    const PairOperation* find(const Definition& source, const Definition& target, bool withHeights, int& error) {
        const bool withGeoids = withHeights && !(source.geoidGrids.empty() && target.geoidGrids.empty());
        const Key key{&source, &target, withGeoids};
        // Points come in runs of one pair.
        if (!entries.empty() && entries.front().key == key) return &entries.front().operation;
        return findOrMake(key, error);
    }

    std::size_t size() const { return entries.size(); }

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
    struct Entry {
        Key key;
        PairOperation operation;
    };
    using Entries = std::list<Entry>;

    const PairOperation* findOrMake(const Key& key, int& error);
    const PairOperation* make(const Key& key, int& error);
    bool addStages(const Key& key, PairOperation& operation);
    PJ* ownProjection(const std::string& text, PairOperation& operation);
    PJ* sharedGridShift(const std::string& text);

    PJ_CONTEXT* context;
    std::size_t bound;
    // Most recently used first.
    Entries entries;
    std::unordered_map<Key, Entries::iterator, KeyHash> index;
    std::map<std::string, ProjectionPtr> gridShifts;
};

}  // namespace ClassicProj
