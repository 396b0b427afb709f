#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <unordered_map>
#include <utility>

namespace ClassicProj {

// A map with a bound: when it is full, the entry that was used least recently leaves for a new one.
//
// Not thread-safe. Owns its entries.
template <typename Key, typename Value, typename Hash = std::hash<Key>>
class LruMap {
public:
    // REQUIRES: `mostEntries` is not 0.
    explicit LruMap(std::size_t mostEntries) : bound(mostEntries) {}

    // The value that was used last, if it is that of `key`; else null. Costs one comparison.
    Value* findLastUsed(const Key& key) {
        return !entries.empty() && entries.front().first == key ? &entries.front().second : nullptr;
    }

    // The value of `key`, or null. It is the one used last from now on, and stays in place until it leaves.
    Value* find(const Key& key) {
        const auto found = index.find(key);
        if (found == index.end()) return nullptr;
        entries.splice(entries.begin(), entries, found->second);
        return &entries.front().second;
    }

    // The same once `value` has been added. Nothing changes when memory ends.
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
    // The one used last is the first.
    Entries entries;
    std::unordered_map<Key, typename Entries::iterator, Hash> index;
};

}  // namespace ClassicProj
