// Aligned memory on top of the program's one allocator.
#include "numeric/simd_array.h"

#include <memory>

#include "base/escape.h"

namespace photrak {

AlignedDoubles::AlignedDoubles(std::size_t count) : size_(count) {
    constexpr std::size_t line = 64;
    if (count < (SIZE_MAX - line) / sizeof(double))
        block_.reset(Allocate(count * sizeof(double) + line));
    if (!block_) NumericFailure("Insufficient memory for the arrays of a Fourier transform");
    void* start = block_.get();
    std::size_t room = count * sizeof(double) + line;
    data_ = static_cast<double*>(std::align(line, count * sizeof(double), start, room));
}

namespace {

thread_local AlignedDoubles keptScratch;
constexpr std::size_t mostKept = std::size_t{1} << 22;  // doubles

}  // namespace

ScratchDoubles::ScratchDoubles(std::size_t count) {
    if (keptScratch.Size() >= count)
        memory_ = std::move(keptScratch);
    else
        memory_ = AlignedDoubles(count);
}

ScratchDoubles::~ScratchDoubles() {
    if (memory_.Size() <= mostKept) keptScratch = std::move(memory_);
}

}  // namespace photrak
