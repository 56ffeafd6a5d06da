// Arrays of factors per bin that blocks of one run have in common: spans of one fiber, modulators
// and receivers of one kind, the points of a scan. What is found by its key was made from the same
// doubles, so that no result depends on what is kept. Bounded; what was used longest ago goes
// first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace photrak {

/// All that an array depends on, bit by bit, and the kind of array that it is.
class FactorKey {
  public:
    explicit FactorKey(std::string_view kind) { Add(kind); }
    FactorKey& Add(double value) { return AddBytes(&value, sizeof value); }
    FactorKey& Add(std::int64_t value) { return AddBytes(&value, sizeof value); }
    FactorKey& Add(std::string_view text) {
        Add(static_cast<std::int64_t>(text.size()));
        return AddBytes(text.data(), text.size());
    }
    template <class... Values>
    FactorKey& AddAll(const Values&... values) {
        (Add(values), ...);
        return *this;
    }
    const std::string& Bytes() const { return bytes_; }

  private:
    FactorKey& AddBytes(const void* data, std::size_t size) {
        bytes_.append(static_cast<const char*>(data), size);
        return *this;
    }
    std::string bytes_;
};

/// The cache lives as long as the outermost of these; without one nothing is kept. Lookups may come
/// from several threads.
class FactorCacheScope {
  public:
    FactorCacheScope();
    ~FactorCacheScope();
    FactorCacheScope(const FactorCacheScope&) = delete;
    FactorCacheScope& operator=(const FactorCacheScope&) = delete;
};

/// Bytes that are kept at most, and of one array: a larger one would drive out too many others.
inline constexpr std::size_t mostFactorBytes = std::size_t{32} << 20;
inline constexpr std::size_t mostBytesOfOne = mostFactorBytes / 8;

std::shared_ptr<const void> FindFactors(const FactorKey& key);
/// Without memory for the entry nothing is kept.
void KeepFactors(const FactorKey& key, std::shared_ptr<const void> factors, std::size_t bytes);

/// What is kept under the key, or what make() gives, a shared_ptr<T>, of so many bytes. A kind of
/// key always goes with one T.
template <class T, class Make>
std::shared_ptr<const T> FactorsFor(const FactorKey& key, std::size_t bytes, Make make) {
    if (auto found = std::static_pointer_cast<const T>(FindFactors(key))) return found;
    std::shared_ptr<const T> made = make();
    KeepFactors(key, made, bytes);
    return made;
}

}  // namespace photrak
