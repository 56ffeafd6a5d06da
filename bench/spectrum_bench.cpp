// The spectrum of a channel of 2^20 samples with its noise, through the block to the files, and the
// long resolution filter by itself.
#include <benchmark/benchmark.h>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "kernel/parameters.h"
#include "numeric/sliding_sum.h"
#include "results/osa_filter.h"
#include "results/spectrum_plot.h"

namespace photrak {
namespace {

constexpr std::int32_t n = 1 << 20;
constexpr double carrier = 193.1e12, tStep = 3.125e-12;

/// A channel of pseudo-random levels, 32 samples each, and a flat noise record about it.
Owned<Nodelist> NoisyChannel() {
    Nodelist* cell = nullptr;
    Owned<OpSignal> signal;
    if (CreateNodelist(&cell, OpSigType) || Make(signal, CreateOpSignalWithSig, n)) return nullptr;
    OpSig& channel = *signal->channels;
    channel.tStep = tStep;
    channel.wavelength = 299792458.0 / carrier;
    for (std::int32_t i = 1; i <= n; ++i) {
        channel.Ex_samples[i] = {std::sin(1e4 * (i / 32)) > 0.0 ? 0.05 : 0.005, 0.0};
    }
    if (CreateOpSigASE(&signal->noise, 1000)) return nullptr;
    signal->noise->fstart = carrier - 1e12;
    signal->noise->fstep = 2e9;
    for (int i = 1; i <= 1000; ++i) signal->noise->powerSamples[i] = 1e-17;
    cell->sig = signal.release();
    return Owned<Nodelist>(cell);
}

Parameter* Word(const char* name, const char* word) {
    Parameter* parameter = CreateParameter(name, EnumType);
    SetText(&parameter->value, word);
    return parameter;
}

void WriteSpectrum(benchmark::State& state, const char* filter) {
    const Owned<Nodelist> inputs = NoisyChannel();
    Workspace workspace;
    SimOptions options;
    options.PLOTTING = PlotToFilesOnly;
    Component component;
    component.name = "spectrum_bench";
    component.parameters = Word("filterType", filter);
    component.parameters->next = Word("ShowNoise", "Both");
    std::string text;
    for (auto _ : state) {
        if (RunSignalSpectra(
                {{component.name, text}, workspace, component, options, inputs.get(), nullptr}) !=
            Status::Success) {
            state.SkipWithError(text.c_str());
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * n);
    for (const char* suffix : {".frq", ".pcf"}) {
        std::filesystem::remove("phtmpspectrum_bench" + std::string(suffix));
    }
}
BENCHMARK_CAPTURE(WriteSpectrum, plain, "None")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WriteSpectrum, Gaussian, "Gaussian")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WriteSpectrum, Trapezoidal, "Trapezoidal")->Unit(benchmark::kMillisecond);

/// By the number of points that the filter has.
void Filter(benchmark::State& state) {
    std::vector<double> powers(n);
    for (std::int32_t i = 0; i < n; ++i)
        powers[static_cast<std::size_t>(i)] = 1e-9 + 1e-3 / (1 + i);
    OsaFilter filter{OsaShape::Gaussian, 1.0, 0.0, 1, 40.0};
    filter.BW = static_cast<double>(state.range(0)) / 2.58;  // full width at 40 dB
    const std::vector<double> kernel = OsaKernel(filter, 1.0, n);
    for (auto _ : state) benchmark::DoNotOptimize(SlidingSum(powers, kernel));
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(Filter)->Arg(32)->Arg(1024)->Arg(65536)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace photrak
