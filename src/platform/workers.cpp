// Handing a loop to the team and waiting for its end.
#include "platform/workers.h"

#include <algorithm>
#include <charconv>
#include <sched.h>
#include <system_error>
#include <utility>

#include "platform/host.h"

namespace photrak {

namespace {

constexpr int mostThreads = 256;
// Looks at a word before a thread goes to sleep: some ten microseconds, the usual time between two
// loops of a run. Waking a thread takes longer than that.
constexpr int looksAwake = 2000;

void Relax() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

/// Those that this thread may run on: a run bound to one processor gains nothing from more threads.
int ProcessorCount() {
#if defined(__linux__)
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) return CPU_COUNT(&allowed);
#endif
    return static_cast<int>(std::min(std::thread::hardware_concurrency(), 1U << 16));
}

/// Returns when the word is no longer `value`.
void AwaitChange(const std::atomic<std::uint32_t>& word, std::uint32_t value) {
    for (int look = 0; look < looksAwake; ++look) {
        if (word.load(std::memory_order_acquire) != value) return;
        Relax();
    }
    word.wait(value, std::memory_order_acquire);
}

}  // namespace

int ThreadBudget() {
    if (const auto text = CurrentHost().environment->Get("PHOTRAK_THREADS")) {
        int wanted = 0;
        const char* end = text->data() + text->size();
        const auto read = std::from_chars(text->data(), end, wanted);
        if (read.ec == std::errc() && read.ptr == end && wanted >= 1 && wanted <= mostThreads)
            return wanted;
    }
    return std::clamp(ProcessorCount(), 1, mostThreads);
}

Workers::Workers(int threads) {
    try {
        for (int worker = 1; worker < threads; ++worker)
            crew_.emplace_back([this, worker] { Attend(worker); });
    } catch (const std::system_error&) {
        // No more threads to be had: the team is as large as it is.
    }
}

Workers::~Workers() {
    ends_ = true;
    round_.fetch_add(1, std::memory_order_release);
    round_.notify_all();
    for (std::thread& member : crew_) member.join();
}

void Workers::Run(const Loop& loop) {
    loop_ = loop;
    busy_.store(static_cast<std::uint32_t>(crew_.size()), std::memory_order_relaxed);
    round_.fetch_add(1, std::memory_order_release);
    round_.notify_all();
    Work(0);
    while (const std::uint32_t left = busy_.load(std::memory_order_acquire))
        AwaitChange(busy_, left);
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

void Workers::Work(int worker) noexcept {
    const long first = loop_.count * worker / Count(), end = loop_.count * (worker + 1) / Count();
    try {
        for (long task = first; task < end; ++task) loop_.call(loop_.context, task, worker);
    } catch (...) {
        const std::lock_guard lock(failureLock_);
        if (!failure_) failure_ = std::current_exception();
    }
}

void Workers::Attend(int worker) {
    std::uint32_t seen = 0;
    for (;;) {
        AwaitChange(round_, seen);
        ++seen;
        if (ends_.load(std::memory_order_acquire)) return;
        Work(worker);
        if (busy_.fetch_sub(1, std::memory_order_release) == 1) busy_.notify_one();
    }
}

}  // namespace photrak
