// The fiber by samples, channels, polarizations and threads: seconds per step as steps per second.
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "models/optical/fiber.h"

namespace {

using namespace photrak;

struct Job {
    int exponent, channels, polarizations, threads;
};

Owned<OpSignal> MakePulses(const Job& job) {
    Owned<OpSignal> signal;
    if (Make(signal, CreateOpSignal)) return nullptr;
    const std::int32_t n = std::int32_t{1} << job.exponent;
    OpSig** place = &signal->channels;
    for (int c = 0; c < job.channels; ++c) {
        if (CreateOpSig(place, n)) return nullptr;
        OpSig& sig = **place;
        if (job.polarizations > 1 && AddEySamples(&sig)) return nullptr;
        sig.tStep = 1.5625e-12;
        sig.wavelength = 1.53e-6 + 0.8e-9 * c;
        sig.bitRate = 1e10;
        for (std::int32_t i = 1; i <= n; ++i) {
            const double x = (i % 64) / 64.0 - 0.5, a = 0.06 * std::exp(-12 * x * x);
            sig.Ex_samples[i] = {a, 0};
            if (sig.Ey_samples) sig.Ey_samples[i] = {0, a};
        }
        place = &sig.next;
    }
    return signal;
}

FiberParams StandardFiber(int steps) {
    FiberParams params;
    params.dataType = "custom";
    params.zStepSize = 100;
    params.distance = 100.0 * steps;
    params.diameter = 8.2e-6;
    params.aEff = 1.515;
    params.loss = 0.2;
    params.curve.beta2 = -2.17e-26;
    params.curve.beta3 = 1.3e-40;
    params.curve.n1 = 1.468;
    params.curve.lambda0 = 1.31e-6;
    params.n2 = 2.6e-20;
    params.optimizationLevel = 2;
    return params;
}

void RunJob(benchmark::State& state, const Job& job, void (*change)(FiberParams&)) {
    // Every fiber writes to log.txt in the working directory.
    std::filesystem::current_path(std::filesystem::temp_directory_path());
    setenv("PHOTRAK_THREADS", std::to_string(job.threads).c_str(), 1);
    const Owned<OpSignal> input = MakePulses(job);
    const std::atomic<std::int16_t> stop{0};
    constexpr int steps = 100;
    for (auto _ : state) {
        FiberParams params = StandardFiber(steps);
        if (change) change(params);
        Nodelist in{}, out{};
        in.sigType = OpSigType;
        in.sig = input.get();
        std::string text;
        if (Fiber(&in, params, stop, &out, {"bench", text}) != Status::Success)
            state.SkipWithError("failed");
        const Owned<OpSignal> made(static_cast<OpSignal*>(out.sig));
        benchmark::DoNotOptimize(made.get());
    }
    state.counters["steps/s"] =
        benchmark::Counter(steps, benchmark::Counter::kIsIterationInvariantRate);
}

void BM_Fiber(benchmark::State& state) {
    RunJob(state,
           {static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
            static_cast<int>(state.range(2)), static_cast<int>(state.range(3))},
           nullptr);
}
BENCHMARK(BM_Fiber)
    ->ArgNames({"lg", "channels", "polarizations", "threads"})
    ->ArgsProduct({{12, 14, 16}, {1, 8}, {1, 2}, {1}})
    ->ArgsProduct({{12, 14, 16}, {8}, {1, 2}, {2}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

/// What the other ways cost: adaptive steps, Raman transfer, padding, turns of the polarizations.
void BM_FiberWays(benchmark::State& state) {
    static constexpr struct {
        const char* name;
        void (*change)(FiberParams&);
    } ways[] = {
        {"adaptive",
         [](FiberParams& p) {
             p.zStepSize = -1;
             p.zStepFac = 100 / (1e-20 / 2.17e-26);  // of the dispersion length: 100 m
             p.n2 = 2.6e-22;                         // whose nonlinear length is beyond that
         }},
        {"Raman", [](FiberParams& p) { p.hasRaman = true; }},
        {"padded", [](FiberParams& p) { p.optimizationLevel = 0; }},
        {"coarse", [](FiberParams& p) { p.pmdMethod = PmdMethod::CoarseStep; }},
    };
    const auto& way = ways[state.range(0)];
    state.SetLabel(way.name);
    RunJob(state, {14, static_cast<int>(state.range(1)), 1, 1}, way.change);
}
BENCHMARK(BM_FiberWays)
    ->ArgNames({"way", "channels"})
    ->ArgsProduct({{0, 1, 2, 3}, {1, 8}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
