// Aligned memory on top of the program's one allocator.
#include "numeric/simd_array.h"

#include <memory>
#include <pthread.h>

#include "base/escape.h"

namespace photrak {

namespace {

constexpr std::size_t line = 64;

OwnedBlock<void> NewBlock(std::size_t count) {
    if (count >= (SIZE_MAX - line) / sizeof(double)) return nullptr;
    return OwnedBlock<void>(Allocate(count * sizeof(double) + line));
}

}  // namespace

AlignedDoubles::AlignedDoubles(std::size_t count) : AlignedDoubles(NewBlock(count), count) {
    if (!block_) NumericFailure("Insufficient memory for the arrays of a Fourier transform");
}

AlignedDoubles::AlignedDoubles(OwnedBlock<void> block, std::size_t count)
    : block_(std::move(block)), size_(count) {
    void* start = block_.get();
    std::size_t room = count * sizeof(double) + line;
    if (start) data_ = static_cast<double*>(std::align(line, count * sizeof(double), start, room));
}

namespace {

/// A block that waits in its thread for the next scope. The system frees it when the thread ends,
/// not the language: that would allocate for each thread, and end the program where it cannot.
class KeptBlock {
  public:
    AlignedDoubles Take() {
        ::pthread_setspecific(Key(), nullptr);
        return {OwnedBlock<void>(std::exchange(block_, nullptr)), std::exchange(size_, 0)};
    }
    void Keep(AlignedDoubles memory) {
        Release(block_);
        size_ = memory.Size();
        block_ = memory.TakeBlock().release();
        if (::pthread_setspecific(Key(), block_) == 0) return;
        Release(std::exchange(block_, nullptr));
        size_ = 0;
    }
    std::size_t Size() const { return size_; }

  private:
    static pthread_key_t Key() {
        static const pthread_key_t key = [] {
            pthread_key_t made{};
            ::pthread_key_create(&made, Release);
            return made;
        }();
        return key;
    }
    void* block_ = nullptr;
    std::size_t size_ = 0;
};

constinit thread_local KeptBlock kept;
constexpr std::size_t mostKept = std::size_t{1} << 22;  // doubles

}  // namespace

ScratchDoubles::ScratchDoubles(std::size_t count)
    : memory_(kept.Size() >= count ? kept.Take() : AlignedDoubles(count)) {}

ScratchDoubles::~ScratchDoubles() {
    if (memory_.Size() <= mostKept) kept.Keep(std::move(memory_));
}

}  // namespace photrak
