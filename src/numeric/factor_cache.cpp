// A list with the latest used in front, and where in it each key stands.
#include "numeric/factor_cache.h"

#include <list>
#include <mutex>
#include <new>
#include <unordered_map>
#include <utility>

namespace photrak {
namespace {

struct Entry {
    std::string key;
    std::shared_ptr<const void> factors;
    std::size_t bytes = 0;
};

struct Cache {
    std::mutex lock;
    int scopes = 0;
    std::size_t bytes = 0;
    std::list<Entry> entries;  // the latest used first
    std::unordered_map<std::string_view, std::list<Entry>::iterator> places;  // by entries' keys

    void Drop(std::list<Entry>::iterator entry) {
        places.erase(entry->key);
        bytes -= entry->bytes;
        entries.erase(entry);
    }
};

Cache& TheCache() {
    static Cache cache;
    return cache;
}

}  // namespace

FactorCacheScope::FactorCacheScope() {
    const std::lock_guard lock(TheCache().lock);
    ++TheCache().scopes;
}

FactorCacheScope::~FactorCacheScope() {
    Cache& cache = TheCache();
    const std::lock_guard lock(cache.lock);
    if (--cache.scopes > 0) return;
    cache.places.clear();
    cache.entries.clear();
    cache.bytes = 0;
}

std::shared_ptr<const void> FindFactors(const FactorKey& key) {
    Cache& cache = TheCache();
    const std::lock_guard lock(cache.lock);
    const auto found = cache.places.find(key.Bytes());
    if (found == cache.places.end()) return nullptr;
    cache.entries.splice(cache.entries.begin(), cache.entries, found->second);
    return found->second->factors;
}

void KeepFactors(const FactorKey& key, std::shared_ptr<const void> factors, std::size_t bytes) {
    Cache& cache = TheCache();
    const std::lock_guard lock(cache.lock);
    if (cache.scopes == 0 || bytes > mostBytesOfOne) return;
    try {
        if (const auto found = cache.places.find(key.Bytes()); found != cache.places.end()) {
            cache.Drop(found->second);
        }
        while (cache.bytes + bytes > mostFactorBytes) cache.Drop(std::prev(cache.entries.end()));
        cache.entries.push_front({key.Bytes(), std::move(factors), bytes});
        cache.bytes += bytes;
        cache.places.emplace(cache.entries.front().key, cache.entries.begin());
    } catch (const std::bad_alloc&) {
        // An entry without a place would never be found, nor ever go.
        cache.places.clear();
        cache.entries.clear();
        cache.bytes = 0;
    }
}

}  // namespace photrak
