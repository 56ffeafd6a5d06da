// Allocation by the C heap, behind a counter that a test can turn into a switch.
#include "base/memory.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <malloc.h>

namespace photrak {
namespace {

/// No array has more than 2^31 elements of 16 bytes; what asks for much more is a broken count.
constexpr std::size_t maxBlockBytes = std::size_t{1} << 38;
constexpr std::int64_t refuseNone = std::numeric_limits<std::int64_t>::max();

std::atomic<std::int64_t> allocations{0};
std::atomic<std::int64_t> firstRefused{refuseNone};

bool MayAllocate() {
    return ++allocations < firstRefused.load();
}

}  // namespace

void* Allocate(std::size_t bytes) {
    if (!MayAllocate() || bytes > maxBlockBytes) return nullptr;
    return std::malloc(bytes ? bytes : 1);
}

void* AllocateZeroed(std::size_t count, std::size_t size) {
    if (!MayAllocate()) return nullptr;
    if (size != 0 && count > maxBlockBytes / size) return nullptr;
    return count && size ? std::calloc(count, size) : std::calloc(1, 1);
}

void KeepFreedMemory() {
#if defined(__GLIBC__)
    ::mallopt(M_MMAP_MAX, 0);
    ::mallopt(M_TRIM_THRESHOLD, -1);
    ::mallopt(M_ARENA_MAX, 1);  // the others keep no long blocks
#endif
}

void ReturnFreedMemory() {
#if defined(__GLIBC__)
    ::malloc_trim(0);
#endif
}

void Release(void* block) {
    std::free(block);
}

char* CopyText(std::string_view text) {
    char* copy = static_cast<char*>(Allocate(text.size() + 1));
    if (!copy) return nullptr;
    if (!text.empty()) std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

void RefuseAllocationsFrom(std::int64_t n) {
    firstRefused = n < 0 ? refuseNone : allocations + (n < 1 ? 1 : n);
}

std::int64_t AllocationCount() {
    return allocations;
}

}  // namespace photrak
