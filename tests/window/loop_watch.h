// How long the event loop was held up, apart from what other programs on the machine took.
#pragma once

#include <QTimer>
#include <algorithm>
#include <chrono>
#include <fstream>

namespace photrak {

/// Ticks every few milliseconds; a gap between two ticks is what one event took. Time in which the
/// thread was ready but not let run does not count.
class LoopWatch {
  public:
    LoopWatch() {
        QObject::connect(&timer_, &QTimer::timeout, [this] { Look(); });
        timer_.start(tick);
        last_ = Now();
    }
    /// The longest gap so far, milliseconds.
    double Longest() {
        Look();
        return longest_;
    }
    /// What no event may take: a tenth of a second of the optimized program; sanitizers and plain
    /// builds take several times as long.
    static double Limit() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(NDEBUG)
        return 2000.0;
#else
        return 100.0;
#endif
    }

  private:
    static constexpr int tick = 2;  // ms

    void Look() {
        const double now = Now();
        longest_ = std::max(longest_, now - last_);
        last_ = now;
    }
    /// Milliseconds, less those that the thread waited for a processor.
    static double Now() {
        const std::chrono::duration<double, std::milli> clock =
            std::chrono::steady_clock::now().time_since_epoch();
        std::ifstream file("/proc/thread-self/schedstat");
        double ran = 0.0, waited = 0.0;  // ns
        file >> ran >> waited;
        return clock.count() - waited / 1e6;
    }

    QTimer timer_;
    double last_ = 0.0, longest_ = 0.0;
};

}  // namespace photrak
