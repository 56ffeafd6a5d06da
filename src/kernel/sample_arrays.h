// Blocks of the signal records: one-based sample arrays (n + 1 elements for n samples, element 0 is
// never a sample) and zeroed records, all from the one allocator.
#pragma once

#include <algorithm>
#include <cstdint>

#include "base/memory.h"

namespace photrak {

/// A zeroed record, or null.
template <class T>
T* NewRecord() {
    return static_cast<T*>(AllocateZeroed(1, sizeof(T)));
}

/// n + 1 zeroed elements; null when memory is exhausted or n is below 0.
template <class T>
T* NewSamples(std::int32_t n) {
    if (n < 0) return nullptr;
    return static_cast<T*>(AllocateZeroed(static_cast<std::size_t>(n) + 1, sizeof(T)));
}

/// The same, uncleared: for what is overwritten at once.
template <class T>
T* NewUnclearedSamples(std::int32_t n) {
    if (n < 0) return nullptr;
    return static_cast<T*>(Allocate((static_cast<std::size_t>(n) + 1) * sizeof(T)));
}

/// Copies elements 0 to n into a new array; an absent array gives an absent copy. False when memory
/// is exhausted.
template <class T>
[[nodiscard]] bool CopySamples(T*& target, const T* source, std::int32_t n) {
    target = nullptr;
    if (!source || n < 0) return true;
    target = NewUnclearedSamples<T>(n);
    if (!target) return false;
    std::copy_n(source, static_cast<std::size_t>(n) + 1, target);
    return true;
}

/// bits * samplesPerBit as a number of samples; false when it does not fit 32 bits.
[[nodiscard]] inline bool SampleCount(std::int32_t bits, std::int32_t samplesPerBit,
                                      std::int32_t& count) {
    const std::int64_t product = std::int64_t{bits} * samplesPerBit;
    count = static_cast<std::int32_t>(product);
    return count == product;
}

}  // namespace photrak
