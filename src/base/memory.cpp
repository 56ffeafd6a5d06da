// Allocation by the C heap, behind a counter that a test can turn into a switch.
#include "base/memory.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/memory_shortage.h"

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

void* Noted(void* block, std::size_t bytes) {
    if (!block) NoteShortage(bytes);
    return block;
}

}  // namespace

void* Allocate(std::size_t bytes) {
    if (!MayAllocate() || bytes > maxBlockBytes) return Noted(nullptr, bytes);
    return Noted(std::malloc(bytes ? bytes : 1), bytes);
}

void* AllocateZeroed(std::size_t count, std::size_t size) {
    if (size != 0 && count > maxBlockBytes / size) return Noted(nullptr, maxBlockBytes);
    if (!MayAllocate()) return Noted(nullptr, count * size);
    return Noted(count && size ? std::calloc(count, size) : std::calloc(1, 1), count * size);
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

void SpentText::GiveBack(const char* place) {
    const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto from = (reinterpret_cast<std::uintptr_t>(forgotten_) + page - 1) / page * page;
    const auto to = reinterpret_cast<std::uintptr_t>(place) / page * page;
    // The pages read as zeros from then on, and are the heap's again with the rest of the text.
    if (to <= from) return;
    ::madvise(reinterpret_cast<void*>(from), to - from, MADV_DONTNEED);
    forgotten_ = reinterpret_cast<const char*>(to);
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
