// The one allocator behind signals, arrays, nodelists and parameters, with a switch by which a test
// refuses the n-th allocation. Memory comes from and returns to the C heap, so that user libraries
// can free what they were given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace photrak {

/// Gives `bytes` bytes (uninitialised), or null when memory is exhausted or the switch refuses.
void* Allocate(std::size_t bytes);
/// As Allocate, all zeros; null also when count * size overflows.
void* AllocateZeroed(std::size_t count, std::size_t size);
void Release(void* block);

/// For programs that run links: long arrays that a block frees serve the next one, instead of going
/// back to the system, which would clear each page anew. Call it before the first thread.
void KeepFreedMemory();
/// Gives the system what was kept, after a run.
void ReturnFreedMemory();

/// A text that is read once from its start: what was read goes back to the system piece by piece,
/// so that a large file and what is made of it do not both fill the memory.
class SpentText {
  public:
    SpentText() = default;
    /// `text` is borrowed; what stands in it before a place that was forgotten must not be read.
    explicit SpentText(std::string& text) : forgotten_(text.data()) {}
    /// Nobody will look before `place`, which lies in the text.
    void ForgetBefore(const char* place) {
        constexpr std::ptrdiff_t piece = std::ptrdiff_t{4} << 20;
        if (forgotten_ && place - forgotten_ >= piece) GiveBack(place);
    }

  private:
    void GiveBack(const char* place);

    const char* forgotten_ = nullptr;
};

/// A zero-terminated copy of `text` from Allocate, or null.
char* CopyText(std::string_view text);

/// Makes the allocation number `n` from now (1 = the next) and all after it fail; -1 allows all.
void RefuseAllocationsFrom(std::int64_t n);
/// Allocations asked for since the program began; a test reads it to learn how many there are.
std::int64_t AllocationCount();

struct ReleaseDeleter {
    void operator()(void* block) const { Release(block); }
};
/// A block of Allocate owned by a scope.
template <class T>
using OwnedBlock = std::unique_ptr<T, ReleaseDeleter>;

}  // namespace photrak
