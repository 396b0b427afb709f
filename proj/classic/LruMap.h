#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <unordered_map>
#include <utility>

namespace ClassicProj {

// A map with a bound: when it is full, the entry that was used least recently leaves for a new one. The entry that was
// used last is found again without a look at the hash.
//
// Not thread-safe. Owns its entries.
template <typename Key, typename Value, typename Hash = std::hash<Key>>
class LruMap {
public:
    // REQUIRES: `mostEntries` is not 0.
    explicit LruMap(std::size_t mostEntries) : bound(mostEntries) {}

    // The value of `key`, or null. It is the one used last from now on, and stays in place until it leaves.
    Value* find(const Key& key) {
        if (!entries.empty() && entries.front().first == key) return &entries.front().second;
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
