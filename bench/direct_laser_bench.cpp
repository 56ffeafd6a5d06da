// The directly modulated laser: a random pattern of 2^15 samples, 32 to a bit, in steps of the
// integrator per second; beside it the same equations by a plain fourth-order Runge-Kutta method at
// a step near its largest stable one, as steps per second and as time for the same span.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>

#include "models/sources/direct_laser.h"
#include "models/sources/laser_bias.h"

namespace {

using namespace photrak;

constexpr std::int32_t samples = 1 << 15, samplesPerBit = 32;
constexpr double tStep = 1.0 / (2.5e9 * samplesPerBit);  // s

LaserParams Biased() {
    LaserParams params = ReadLaserParams(nullptr);
    params.Io = 0.02;
    return params;
}

double Volts(std::int32_t i) {
    const auto bit = static_cast<unsigned>(i / samplesPerBit);
    return (bit * 2654435761u >> 16) % 2 == 0 ? 0.1 : 1.0;
}

void BM_DirectLaser(benchmark::State& state) {
    Owned<ElecSig> drive;
    if (Make(drive, CreateElecSig, samples)) return;
    drive->tStep = tStep;
    for (std::int32_t i = 1; i <= samples; ++i) drive->elecSamples[i].re = Volts(i);
    const std::atomic<std::int16_t> stop{0};
    OdeCount count;
    for (auto _ : state) {
        Nodelist in{nullptr, ElecSigType, drive.get()}, out{};
        std::string text;
        if (LaserDirectMod(Biased(), &in, &out, stop, {"bench", text}, {}, &count) ==
            Status::Error) {
            state.SkipWithError(text.c_str());
        }
        const Owned<OpSignal> made(static_cast<OpSignal*>(out.sig));
        benchmark::DoNotOptimize(made.get());
    }
    state.counters["steps/s"] =
        benchmark::Counter(static_cast<double>(count.steps), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_DirectLaser)->Unit(benchmark::kMillisecond);

void Step(const LaserRates& rates, double h, double* y) {
    double k1[3], k2[3], k3[3], k4[3], at[3];
    rates.Rates(y, k1);
    for (int i = 0; i < 3; ++i) at[i] = y[i] + h / 2.0 * k1[i];
    rates.Rates(at, k2);
    for (int i = 0; i < 3; ++i) at[i] = y[i] + h / 2.0 * k2[i];
    rates.Rates(at, k3);
    for (int i = 0; i < 3; ++i) at[i] = y[i] + h * k3[i];
    rates.Rates(at, k4);
    for (int i = 0; i < 3; ++i) y[i] += h / 6.0 * (k1[i] + 2.0 * (k2[i] + k3[i]) + k4[i]);
}

void BM_RungeKutta(benchmark::State& state) {
    LaserParams params = Biased();
    DeriveLaser(params);
    // Stable up to 2.8 time constants of the fastest decay, that of the photons in the dark.
    const double h = std::min(2.0 * params.taup, tStep);
    const auto perSample = static_cast<std::int32_t>(std::ceil(tStep / h));
    LaserRates rates(params);
    for (auto _ : state) {
        double y[3] = {1.2e18, 1e13, 0.0};
        for (std::int32_t i = 1; i <= samples; ++i) {
            rates.SetDrive(params.Io + Volts(i) / (params.Rd + params.Rs), 0.0);
            for (std::int32_t k = 0; k < perSample; ++k) Step(rates, tStep / perSample, y);
        }
        benchmark::DoNotOptimize(y[1]);
    }
    state.counters["steps/s"] = benchmark::Counter(static_cast<double>(samples) * perSample,
                                                   benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_RungeKutta)->Unit(benchmark::kMillisecond);

}  // namespace
