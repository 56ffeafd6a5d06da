// A team of threads for loops that repeat thousands of times, as the steps of a fiber do: the
// threads stay between two loops and wait for the next one awake for a moment, then asleep. What a
// loop gives must not depend on which thread does what; then it does not depend on their number.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>
#include <vector>

namespace photrak {

class Doing;

/// Threads that one run may use: what the environment variable PHOTRAK_THREADS says (1 to 256), or
/// the number of processors that the process may run on.
int ThreadBudget();
/// Of them, those worth waking for so many equal tasks over `samples` samples each.
int ThreadsFor(std::size_t tasks, long samples);

class Workers {
  public:
    /// A team of `threads` with the caller as one of them; fewer if the system gives no more.
    explicit Workers(int threads);
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    int Count() const { return static_cast<int>(crew_.size()) + 1; }

    /// Calls work(task, worker) for every task 0..count-1 and returns when all are done; `worker`
    /// is below Count() and no two calls of the same one overlap. Each thread begins with a run of
    /// neighboring tasks of its own, the same in every loop of the same count, so that what it
    /// works on stays in its processor's cache; then it helps out where others are late. Nobody
    /// waits for a thread that the system has not let run. The first exception of a task is thrown
    /// on from here, and tasks that have not begun by then are left out.
    template <class Work>
    void Share(long count, Work&& work) {
        if (crew_.empty() || count < 2 || count > mostTasks) {
            for (long task = 0; task < count; ++task) work(task, 0);
            return;
        }
        using Plain = std::remove_reference_t<Work>;
        Run({[](void* context, long task, int worker) {
                 (*static_cast<Plain*>(context))(task, worker);
             },
             const_cast<void*>(static_cast<const void*>(&work)), count});
    }

    /// make(task, slot) for as many tasks at a time as there are threads, shared out, and then
    /// take(task, slot) for each of them in order by the caller: for sums whose order is part of
    /// the result. `slot`, below Count(), is where make leaves what take finds.
    template <class Make, class Take>
    void ShareInOrder(long count, Make make, Take take) {
        for (long first = 0; first < count; first += Count()) {
            const long batch = count - first < Count() ? count - first : Count();
            Share(batch, [&](long slot, int) { make(first + slot, static_cast<int>(slot)); });
            for (long slot = 0; slot < batch; ++slot) take(first + slot, static_cast<int>(slot));
        }
    }

  private:
    static constexpr int taskBits = 20;
    static constexpr long mostTasks = (1L << taskBits) - 1;

    struct Loop {
        void (*call)(void* context, long task, int worker) = nullptr;
        void* context = nullptr;
        long count = 0;
        const Doing* doing = nullptr;                         // what the caller is at
        const std::atomic<std::int16_t>* stopWord = nullptr;  // what it looks at
    };
    /// Next task and end of one thread's run, with the low bits of the loop's number above them:
    /// who comes late to a loop that is over claims nothing of the next by mistake.
    struct alignas(64) Claims {
        std::atomic<std::uint64_t> word{0};
    };

    void Run(const Loop& loop);
    void Work(std::uint32_t round, int worker);
    static bool Claim(Claims& claims, std::uint32_t round, long& task);
    void Perform(long task, int worker) noexcept;
    void Attend(int worker);

    std::vector<std::thread> crew_;
    std::unique_ptr<Claims[]> claims_;     // one per thread
    Loop loop_;                            // stays while a task of it is claimed and not done
    std::atomic<std::uint32_t> round_{0};  // number of the present loop
    std::atomic<std::uint32_t> left_{0};   // tasks not yet done
    std::atomic<bool> ends_{false};
    std::atomic<bool> hasFailed_{false};
    std::mutex failureLock_;
    std::exception_ptr failure_;
};

}  // namespace photrak
