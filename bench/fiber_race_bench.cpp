// The fiber of the catalogue's model against an afternoon's program on FFTW: symmetric split steps
// with four measured transforms each, loss and dispersion from a table, the nonlinear phase by sine
// and cosine. Both propagate the same pulses in turn; `ratio` tells how long ours takes in units of
// the other, `deviation` how far the fields are apart, of the peak. Needs FFTW.
//
//   PHOTRAK_THREADS=1 build/release/bin/fiber_race_bench
#include <benchmark/benchmark.h>

#ifdef PHOTRAK_HAVE_FFTW
#include <algorithm>
#include <cmath>
#include <complex>
#include <ctime>
#include <fftw3.h>
#include <filesystem>
#include <limits>
#include <vector>

#include "base/units.h"
#include "models/optical/fiber.h"

namespace {

using namespace photrak;

constexpr int steps = 50;
constexpr double dz = 100.0, tStep = 1.5625e-12, wavelength = 1.55e-6;  // m, s, m

double WorkedSeconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

FiberParams StandardFiber() {
    FiberParams params;
    params.dataType = "custom";
    params.zStepSize = dz;
    params.distance = dz * steps;
    params.diameter = 8.2e-6;
    params.aEff = 1.515;
    params.loss = 0.2;
    params.curve.beta2 = -2.17e-26;
    params.curve.beta3 = 1.3e-40;
    params.curve.n1 = 1.468;
    params.curve.lambda0 = 1.31e-6;
    params.n2 = 2.6e-20;
    params.optimizationLevel = 2;  // the window of the signal
    return params;
}

Owned<OpSignal> Pulses(std::int32_t n) {
    Owned<OpSignal> signal;
    if (Make(signal, CreateOpSignalWithSig, n)) return nullptr;
    OpSig& sig = *signal->channels;
    sig.tStep = tStep;
    sig.wavelength = wavelength;
    sig.bitRate = 1e10;
    for (std::int32_t i = 1; i <= n; ++i) {
        const double x = (i % 64) / 64.0 - 0.5;
        sig.Ex_samples[i] = {0.06 * std::exp(-12 * x * x), 0};
    }
    return signal;
}

/// The other program. Its arrays are FFTW's own, and its plans are measured.
class Afternoon {
  public:
    explicit Afternoon(std::int32_t n)
        : n_(static_cast<std::size_t>(n)), data_(fftw_alloc_complex(n_)), half_(n_) {
        forward_ = fftw_plan_dft_1d(n, data_, data_, FFTW_BACKWARD, FFTW_MEASURE);
        back_ = fftw_plan_dft_1d(n, data_, data_, FFTW_FORWARD, FFTW_MEASURE);
        const FiberParams p = StandardFiber();
        const double radius = p.diameter / 2, area = pi * radius * radius * p.aEff;
        gamma_ = p.n2 * twoPi / (wavelength * area);
        const double alpha = p.loss * std::log(10.0) / 10.0 / 1000.0;
        for (std::size_t k = 0; k < n_; ++k) {
            const double bin = k <= n_ / 2 ? static_cast<double>(k)
                                           : static_cast<double>(k) - static_cast<double>(n_);
            const double w = twoPi * bin / (static_cast<double>(n_) * tStep);
            const double phase = (p.curve.beta2 - p.curve.beta3 * w / 3) * w * w / 2 * dz / 2;
            half_[k] = std::polar(std::exp(-alpha / 4 * dz) / static_cast<double>(n_), phase);
        }
    }
    ~Afternoon() {
        fftw_destroy_plan(forward_);
        fftw_destroy_plan(back_);
        fftw_free(data_);
    }
    Afternoon(const Afternoon&) = delete;
    Afternoon& operator=(const Afternoon&) = delete;

    void Run(const OpSig& sig) {
        auto* field = reinterpret_cast<std::complex<double>*>(data_);
        for (std::size_t i = 0; i < n_; ++i) {
            field[i] = {sig.Ex_samples[i + 1].re, sig.Ex_samples[i + 1].im};
        }
        for (int step = 0; step < steps; ++step) {
            Linear(field);
            for (std::size_t i = 0; i < n_; ++i) {
                field[i] *= std::polar(1.0, sign_ * gamma_ * dz * std::norm(field[i]));
            }
            Linear(field);
        }
    }
    /// Largest distance of the fields over the largest amplitude.
    double Deviation(const OpSig& sig) const {
        const auto* field = reinterpret_cast<const std::complex<double>*>(data_);
        double most = 0.0, peak = 0.0;
        for (std::size_t i = 0; i < n_; ++i) {
            const std::complex<double> other(sig.Ex_samples[i + 1].re, sig.Ex_samples[i + 1].im);
            most = std::max(most, std::abs(field[i] - other));
            peak = std::max(peak, std::abs(other));
        }
        return most / peak;
    }

  private:
    void Linear(std::complex<double>* field) {
        fftw_execute(forward_);
        for (std::size_t k = 0; k < n_; ++k) field[k] *= half_[k];
        fftw_execute(back_);
    }

    static constexpr double sign_ = 1.0;
    std::size_t n_;
    fftw_complex* data_;
    std::vector<std::complex<double>> half_;  // half a step's factor of each bin, by n
    double gamma_ = 0.0;                      // 1/(W m)
    fftw_plan forward_, back_;
};

Owned<OpSignal> RunOurs(OpSignal& light, benchmark::State& state) {
    const std::atomic<std::int16_t> stop{0};
    FiberParams params = StandardFiber();
    Nodelist in{nullptr, OpSigType, &light}, out{};
    std::string text;
    if (Fiber(&in, params, stop, &out, {"race", text}) != Status::Success) {
        state.SkipWithError(text.c_str());
    }
    return Owned<OpSignal>(static_cast<OpSignal*>(out.sig));
}

void BM_FiberRace(benchmark::State& state) {
    // Every fiber writes to log.txt in the working directory.
    std::filesystem::current_path(std::filesystem::temp_directory_path());
    const std::int32_t n = std::int32_t{1} << state.range(0);
    const Owned<OpSignal> light = Pulses(n);
    Afternoon afternoon(n);
    double ours = std::numeric_limits<double>::infinity(), theirs = ours;
    Owned<OpSignal> made;
    for (auto _ : state) {
        double start = WorkedSeconds();
        made = RunOurs(*light, state);
        const double mine = WorkedSeconds() - start;
        start = WorkedSeconds();
        afternoon.Run(*light->channels);
        theirs = std::min(theirs, WorkedSeconds() - start);
        ours = std::min(ours, mine);
        state.SetIterationTime(mine);
    }
    state.counters["ratio"] = ours / theirs;
    state.counters["deviation"] = made ? afternoon.Deviation(*made->channels) : 1.0;
}
BENCHMARK(BM_FiberRace)
    ->ArgName("lg")
    ->DenseRange(12, 18, 2)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
#else
namespace {
void BM_FiberRace(benchmark::State& state) {
    for (auto _ : state) state.SkipWithError("built without FFTW (libfftw3-dev)");
}
BENCHMARK(BM_FiberRace);
}  // namespace
#endif
