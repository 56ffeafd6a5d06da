// The Fourier engine by length: transforms, transfer arrays and split-step passes, in samples per
// second. With FFTW at hand each transform also runs FFTW's measured plan on the same data in turn,
// and `ratio` tells how long ours takes in units of that. Processor time counts, so that other work
// on the machine spoils little.
//
//   PHOTRAK_SIMD=avx2 build/release/bin/fft_bench --benchmark_filter=DoFFT
#include <algorithm>
#include <benchmark/benchmark.h>
#include <ctime>
#include <limits>
#include <vector>

#include "base/arrays.h"
#include "numeric/fft.h"
#include "numeric/simd.h"
#include "numeric/split_step.h"
#include "numeric/transfer.h"

#ifdef PHOTRAK_HAVE_FFTW
#include <fftw3.h>
#endif

namespace {

using namespace photrak;

double WorkedSeconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

// Pulses of a few milliwatt.
std::vector<Complex> Samples(long n) {
    std::vector<Complex> samples(static_cast<std::size_t>(n) + 1);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = {0.05 * static_cast<double>(i % 64) / 64, 0.01};
    return samples;
}

#ifdef PHOTRAK_HAVE_FFTW
class Fftw {
  public:
    explicit Fftw(long n) : n_(n), data_(fftw_alloc_complex(static_cast<std::size_t>(n))) {
        plan_ = fftw_plan_dft_1d(static_cast<int>(n), data_, data_, FFTW_BACKWARD, FFTW_MEASURE);
        Clear();
    }
    ~Fftw() {
        fftw_destroy_plan(plan_);
        fftw_free(data_);
    }
    Fftw(const Fftw&) = delete;
    Fftw& operator=(const Fftw&) = delete;
    void Clear() { std::fill_n(&data_[0][0], 2 * n_, 0.0); }
    void Run() { fftw_execute(plan_); }

  private:
    long n_;
    fftw_complex* data_;
    fftw_plan plan_;
};
#else
struct Fftw {
    explicit Fftw(long) {}
    void Run() {}
};
#endif

// Least time of `batch` turns of `work` so far.
template <class Work>
void Time(double& least, long batch, Work work) {
    const double start = WorkedSeconds();
    for (long turn = 0; turn < batch; ++turn) work();
    least = std::min(least, (WorkedSeconds() - start) / static_cast<double>(batch));
}

void DoFFT(benchmark::State& state) {
    const long n = state.range(0), batch = std::max(1L, 65536 / n);
    std::vector<Complex> zeros(static_cast<std::size_t>(n) + 1);
    Fftw fftw(n);
    double ours = std::numeric_limits<double>::infinity(), theirs = ours;
    for (auto _ : state) {
        Time(ours, batch, [&] { photrak::DoFFT(DoubleView(zeros.data()), n, +1); });
        Time(theirs, batch, [&] { fftw.Run(); });
        state.SetIterationTime(ours * static_cast<double>(batch));
    }
    state.counters["us"] = ours * 1e6;
    state.counters["Msamples/s"] = static_cast<double>(n) / ours * 1e-6;
#ifdef PHOTRAK_HAVE_FFTW
    state.counters["ratio"] = ours / theirs;
#endif
    state.SetLabel(SimdLevelName(ActiveSimdLevel()));
}
BENCHMARK(DoFFT)->RangeMultiplier(4)->Range(1 << 6, 1 << 20)->UseManualTime();

template <class Work>
void TimeSamples(benchmark::State& state, long n, Work work) {
    double least = std::numeric_limits<double>::infinity();
    for (auto _ : state) {
        Time(least, 1, work);
        state.SetIterationTime(least);
    }
    state.counters["us"] = least * 1e6;
    state.counters["Msamples/s"] = static_cast<double>(n) / least * 1e-6;
}

void ApplyTransferToSamples(benchmark::State& state) {
    const long n = state.range(0);
    std::vector<Complex> samples = Samples(n);
    TransferArray transfer(n, +1);
    transfer.Fill([](long) { return 1.0; });
    TimeSamples(state, n, [&] { ApplyTransfer(samples.data(), transfer); });
}
BENCHMARK(ApplyTransferToSamples)->RangeMultiplier(4)->Range(1 << 10, 1 << 20)->UseManualTime();

// One step of a fixed-step fiber with a single channel: nonlinear phase and merged linear step.
void SplitStep(benchmark::State& state) {
    const long n = state.range(0);
    const std::vector<Complex> samples = Samples(n);
    SplitField field(n);
    field.CopyFrom(samples.data(), 0, n);
    TransferArray transfer(n, +1);
    transfer.Fill([](long) { return 1.0; });
    ApplyTransferOpen(field, transfer);
    KerrStep kerr;
    kerr.gamma = 0.13;
    TimeSamples(state, n, [&] { KerrThenTransfer(field, nullptr, kerr, transfer, nullptr); });
}
BENCHMARK(SplitStep)->RangeMultiplier(4)->Range(1 << 10, 1 << 18)->UseManualTime();

}  // namespace
