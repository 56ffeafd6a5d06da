// Blocks of the signal records: one-based sample arrays (n + 1 elements for n samples, element 0 is
// never a sample) and zeroed records, all from the one allocator; copies of lists of records; and
// the timing fields that optical and electrical signals share.
#pragma once

#include <algorithm>
#include <cstdint>

#include "base/memory.h"
#include "kernel/signals.h"

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

/// A copy of a whole list, record by record with copyOne(place, source), which gives 0 on success.
/// Records that know the one before them learn of it. Without success nothing is left.
template <class T, class CopyOne>
std::int32_t CopyList(T** place, const T* source, CopyOne copyOne) {
    if (!place) return 1;
    *place = nullptr;
    Owned<T> head;
    T* tail = nullptr;
    for (const T& item : Items(source)) {
        T* copy = nullptr;
        if (copyOne(&copy, &item)) return 1;
        if constexpr (requires { copy->prev; }) copy->prev = tail;
        if (tail) {
            tail->next = copy;
        } else {
            head.reset(copy);
        }
        tail = copy;
    }
    *place = head.release();
    return 0;
}

/// What both kinds of waveform know of their time axis, from either kind.
template <class Target, class Source>
void SetTiming(Target& target, const Source& source) {
    target.domain = source.domain;
    target.bitRate = source.bitRate;
    target.patternLength = source.patternLength;
    target.tStep = source.tStep;
    target.spareCount = source.spareCount;
    target.startTime = source.startTime;
}

/// The same for samples of a bit sequence; the domain stays as it is.
template <class Target>
void SetTiming(Target& target, const BinSig& bits, std::int32_t samplesPerBit) {
    target.bitRate = bits.bitRate;
    target.patternLength = bits.noPoints;
    target.tStep = 1.0 / (samplesPerBit * bits.bitRate);
    target.startTime = bits.startTime;
}

}  // namespace photrak
