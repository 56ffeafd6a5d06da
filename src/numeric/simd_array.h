// Memory for vector loops: doubles that start on a cache line and live as long as their owner.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "base/memory.h"

namespace photrak {

/// A run of doubles on a cache line, not cleared. Exhausted memory goes to NumericFailure.
class AlignedDoubles {
  public:
    AlignedDoubles() = default;
    explicit AlignedDoubles(std::size_t count);
    /// Takes over a block that held `count` doubles.
    AlignedDoubles(OwnedBlock<void> block, std::size_t count);
    AlignedDoubles(AlignedDoubles&& other) noexcept
        : block_(std::move(other.block_)),
          data_(std::exchange(other.data_, nullptr)),
          size_(std::exchange(other.size_, 0)) {}
    AlignedDoubles& operator=(AlignedDoubles&& other) noexcept {
        block_ = std::move(other.block_);
        data_ = std::exchange(other.data_, nullptr);
        size_ = std::exchange(other.size_, 0);
        return *this;
    }
    double* Data() { return data_; }
    const double* Data() const { return data_; }
    std::size_t Size() const { return size_; }
    /// The block, which whoever asks owns now.
    OwnedBlock<void> TakeBlock() {
        data_ = nullptr;
        size_ = 0;
        return std::move(block_);
    }
    double& operator[](std::size_t i) { return data_[i]; }
    double operator[](std::size_t i) const { return data_[i]; }

  private:
    OwnedBlock<void> block_;
    double* data_ = nullptr;
    std::size_t size_ = 0;
};

/// Scratch doubles for the length of a scope, from a block that the calling thread keeps for the
/// next time unless it is very large. One at a time per thread.
class ScratchDoubles {
  public:
    explicit ScratchDoubles(std::size_t count);
    ~ScratchDoubles();
    ScratchDoubles(const ScratchDoubles&) = delete;
    ScratchDoubles& operator=(const ScratchDoubles&) = delete;
    double* Data() { return memory_.Data(); }

  private:
    AlignedDoubles memory_;
};

}  // namespace photrak
