// Where a long block looks whether its run is to end. A block of usual length is finished first, as
// users expect of Stop; one that would go on for long is left with an exception.
#pragma once

#include <atomic>
#include <cstdint>

namespace photrak {

/// Thrown by StopPoint, caught where blocks are called. No std::exception: nobody else takes it for
/// a failure.
struct StopAsked {};

/// While it lasts, stop points of this thread look at the word of the run; with null at none, as
/// around code of others, which no exception may pass.
class StopScope {
  public:
    explicit StopScope(const std::atomic<std::int16_t>* word);
    ~StopScope();
    StopScope(const StopScope&) = delete;
    StopScope& operator=(const StopScope&) = delete;

  private:
    const std::atomic<std::int16_t>* former_;
};

/// What this thread looks at, to be handed to those who help it; null for nothing.
const std::atomic<std::int16_t>* PresentStopWord() noexcept;
/// Lets a helping thread look at the word of the other.
void AdoptStopWord(const std::atomic<std::int16_t>* word) noexcept;

/// Throws StopAsked once the stop word has been seen set for a tenth of a second. Costs a look at a
/// word: for loops over blocks of samples, not over samples.
void StopPoint();

/// In a loop over samples or rows: a stop point each time `i` has come 2^18 further.
inline void LookForStop(std::int64_t i) {
    if ((i & 0x3FFFF) == 0) StopPoint();
}

}  // namespace photrak
