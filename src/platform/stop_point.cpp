// The clock begins at the first look that finds the word set.
#include "platform/stop_point.h"

#include <chrono>
#include <utility>

namespace photrak {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds grace{100};

thread_local const std::atomic<std::int16_t>* stopWord = nullptr;
thread_local Clock::time_point seenAt{};  // of the word in use; the epoch: not seen yet

}  // namespace

StopScope::StopScope(const std::atomic<std::int16_t>* word)
    : former_(std::exchange(stopWord, word)) {
    seenAt = {};
}

StopScope::~StopScope() {
    stopWord = former_;
    seenAt = {};
}

const std::atomic<std::int16_t>* PresentStopWord() noexcept {
    return stopWord;
}

void AdoptStopWord(const std::atomic<std::int16_t>* word) noexcept {
    stopWord = word;
    seenAt = {};
}

void StopPoint() {
    if (!stopWord || stopWord->load(std::memory_order_relaxed) == 0) return;
    const Clock::time_point now = Clock::now();
    if (seenAt == Clock::time_point{}) seenAt = now;
    if (now - seenAt >= grace) throw StopAsked{};
}

}  // namespace photrak
