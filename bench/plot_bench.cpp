// Writing of plot data: rows per second of a multiplex's power, in W and in dBm.
#include <benchmark/benchmark.h>
#include <cmath>
#include <filesystem>
#include <string>

#include "results/signal_plot.h"

namespace photrak {
namespace {

Owned<Nodelist> Multiplex(int channels, std::int32_t n) {
    Nodelist* cell = nullptr;
    Owned<OpSignal> signal;
    if (CreateNodelist(&cell, OpSigType) || Make(signal, CreateOpSignal)) return nullptr;
    for (int c = 0; c < channels; ++c) {
        OpSig* channel = nullptr;
        if (CreateOpSig(&channel, n)) break;
        channel->tStep = 1e-12;
        channel->wavelength = 1.55e-6 + c * 0.8e-9;
        for (std::int32_t i = 1; i <= n; ++i) channel->Ex_samples[i] = {std::sin(0.37 * i), 0.01};
        channel->next = signal->channels;
        signal->channels = channel;
    }
    cell->sig = signal.release();
    return Owned<Nodelist>(cell);
}

void PlotPower(benchmark::State& state, int flags) {
    const auto channels = static_cast<int>(state.range(0));
    const auto n = static_cast<std::int32_t>(1) << state.range(1);
    const Owned<Nodelist> signals = Multiplex(channels, n);
    const std::string stem = "plot_bench_" + std::to_string(n);
    const SignalPlotJob job{signals.get(), false, 0.0, flags, PlotMode::Files, stem};
    std::string errorText;
    for (auto _ : state) {
        if (WriteSignalPlot(job, {"bench", errorText}) != Status::Success)
            state.SkipWithError("failed");
    }
    state.SetItemsProcessed(state.iterations() * n * (channels + 1));
    for (const char* suffix : {"_mag.sig", ".pcs"}) std::filesystem::remove(stem + suffix);
}
BENCHMARK_CAPTURE(PlotPower, W, plotFlag::combined)->Args({1, 20})->Args({8, 16});
BENCHMARK_CAPTURE(PlotPower, dBm, plotFlag::combined | plotFlag::dBm)->Args({8, 16});

}  // namespace
}  // namespace photrak
