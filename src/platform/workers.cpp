// Handing a loop to the team and waiting for its end.
#include "platform/workers.h"

#include <algorithm>
#include <charconv>
#include <new>
#include <sched.h>
#include <system_error>
#include <utility>

#include "platform/host.h"
#include "platform/memory_shortage.h"
#include "platform/stop_point.h"

namespace photrak {

namespace {

constexpr int mostThreads = 256;
// Looks at a word before a thread goes to sleep: some ten microseconds, the usual time between two
// loops of a run. Waking a thread takes longer than that.
constexpr int looksAwake = 2000;
// Samples below which waking other threads costs more than they take over.
constexpr long leastSharedSamples = 1 << 14;

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

int ThreadsFor(std::size_t tasks, long samples) {
    const auto count = static_cast<long>(tasks);
    if (count < 2 || samples < leastSharedSamples / count) return 1;
    return static_cast<int>(std::min<long>(ThreadBudget(), count));
}

Workers::Workers(int threads)
    : claims_(new Claims[static_cast<std::size_t>(std::max(threads, 1))]) {
    crew_.reserve(static_cast<std::size_t>(std::max(threads, 1)));
    try {
        for (int worker = 1; worker < threads; ++worker)
            crew_.emplace_back([this, worker] { Attend(worker); });
    } catch (const std::system_error&) {
        // No more threads to be had: the team is as large as it is.
    } catch (const std::bad_alloc&) {
        // Likewise; those that run already must be joined.
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
    loop_.doing = PresentDoing();
    loop_.stopWord = PresentStopWord();
    hasFailed_.store(false, std::memory_order_relaxed);
    const std::uint32_t round = round_.load(std::memory_order_relaxed) + 1;
    left_.store(static_cast<std::uint32_t>(loop.count), std::memory_order_relaxed);
    for (int w = 0; w < Count(); ++w) {
        const auto next = static_cast<std::uint64_t>(loop.count * w / Count());
        const auto end = static_cast<std::uint64_t>(loop.count * (w + 1) / Count());
        const std::uint64_t word =
            static_cast<std::uint64_t>(round) << (2 * taskBits) | end << taskBits | next;
        claims_[static_cast<std::size_t>(w)].word.store(word, std::memory_order_release);
    }
    round_.store(round, std::memory_order_release);
    round_.notify_all();
    Work(round, 0);
    while (const std::uint32_t left = left_.load(std::memory_order_acquire))
        AwaitChange(left_, left);
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

/// One's own run first, then what is left of the others'.
void Workers::Work(std::uint32_t round, int worker) {
    const int team = Count();
    for (int turn = 0; turn < team; ++turn) {
        Claims& claims = claims_[static_cast<std::size_t>((worker + turn) % team)];
        for (long task = 0; Claim(claims, round, task);) Perform(task, worker);
    }
}

bool Workers::Claim(Claims& claims, std::uint32_t round, long& task) {
    constexpr std::uint64_t taskMask = (std::uint64_t{1} << taskBits) - 1;
    const std::uint64_t numbered = static_cast<std::uint64_t>(round) << (2 * taskBits);
    std::uint64_t word = claims.word.load(std::memory_order_acquire);
    for (;;) {
        const std::uint64_t next = word & taskMask, end = word >> taskBits & taskMask;
        if ((word ^ numbered) >> (2 * taskBits) != 0 || next == end) return false;
        if (claims.word.compare_exchange_weak(word, word + 1, std::memory_order_acq_rel)) {
            task = static_cast<long>(next);
            return true;
        }
    }
}

/// Nothing of the loop may be looked at but here: without a claimed task it may be over.
void Workers::Perform(long task, int worker) noexcept {
    if (worker > 0) {
        AdoptDoing(loop_.doing);
        AdoptStopWord(loop_.stopWord);
    }
    try {
        if (!hasFailed_.load(std::memory_order_relaxed)) loop_.call(loop_.context, task, worker);
    } catch (...) {
        const std::lock_guard lock(failureLock_);
        if (!failure_) failure_ = std::current_exception();
        hasFailed_.store(true, std::memory_order_relaxed);
    }
    if (worker > 0) {
        AdoptDoing(nullptr);
        AdoptStopWord(nullptr);
    }
    if (left_.fetch_sub(1, std::memory_order_acq_rel) == 1) left_.notify_one();
}

void Workers::Attend(int worker) {
    std::uint32_t seen = 0;
    for (;;) {
        AwaitChange(round_, seen);
        seen = round_.load(std::memory_order_acquire);
        if (ends_.load(std::memory_order_acquire)) return;
        Work(seen, worker);
    }
}

}  // namespace photrak
