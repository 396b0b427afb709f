#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <unordered_map>
#include <utility>

namespace ClassicProj {

// A map of limited size: when it is full, a new entry replaces the least recently used one.
//
// Not thread-safe. Owns its entries.
template <typename Key, typename Value, typename Hash = std::hash<Key>>
class LruMap {
public:
    // REQUIRES: `mostEntries` is not 0.
    explicit LruMap(std::size_t mostEntries) : bound(mostEntries) {}

    // The last used value if its key is `key`, otherwise null. Costs one comparison.
    Value* findLastUsed(const Key& key) {
        return !entries.empty() && entries.front().first == key ? &entries.front().second : nullptr;
    }

    // The value of `key`, or null. The value becomes the last used one, and keeps its address until it is replaced.
    Value* find(const Key& key) {
        const auto found = index.find(key);
        if (found == index.end()) return nullptr;
        entries.splice(entries.begin(), entries, found->second);
        return &entries.front().second;
    }

    // Adds `value` and returns it. Changes nothing when memory runs out.
    //
    // REQUIRES: find() has not found the key.
    Value* insert(const Key& key, Value value) {
        Entries added;
        added.emplace_back(key, std::move(value));
        index.emplace(key, added.begin());
        entries.splice(entries.begin(), added);
        if (entries.size() > bound) dropLast();
        return &entries.front().second;
    }

    void clear() {
        index.clear();
        entries.clear();
    }

    std::size_t size() const { return entries.size(); }

private:
    using Entries = std::list<std::pair<const Key, Value>>;

    void dropLast() {
        index.erase(entries.back().first);
        entries.pop_back();
    }

    std::size_t bound;
    // The last used entry is at the front.
    Entries entries;
    std::unordered_map<Key, typename Entries::iterator, Hash> index;
};

}  // namespace ClassicProj
