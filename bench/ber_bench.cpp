// The bit error rate tester: bits per second, each of them 256 trials, on one pair and on several.
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdint>
#include <string>

#include "models/detection/ber_computation.h"

namespace photrak {
namespace {

constexpr std::int32_t samplesPerBit = 16;

/// Rounded bits of an order without a visible period, with noise that follows the level.
Owned<Nodelist> Pairs(int count, std::int32_t bits) {
    Owned<Nodelist> head;
    for (int pair = 0; pair < count; ++pair) {
        Owned<ElecSig> wave;
        Owned<BinSig> sent;
        Nodelist *waveCell = nullptr, *sentCell = nullptr;
        if (Make(wave, CreateElecSig, bits * samplesPerBit) || Make(sent, CreateBinSig, bits) ||
            CreateNodelist(&waveCell, ElecSigType) || CreateNodelist(&sentCell, BinSigType)) {
            return nullptr;
        }
        wave->patternLength = bits;
        wave->tStep = 1e-10 / samplesPerBit;
        wave->bitRate = sent->bitRate = 10e9;
        std::uint32_t state = 1;
        for (std::int32_t i = 0; i < bits * samplesPerBit; ++i) {
            const std::int32_t bit = i / samplesPerBit + 1;
            if (i % samplesPerBit == 0) {
                state = state * 1664525u + 1013904223u;
                sent->bitSequence[bit] = static_cast<std::int16_t>(state >> 31);
            }
            const double swing = std::sin(M_PI * (i % samplesPerBit + 0.5) / samplesPerBit);
            const double value = 0.5 + (sent->bitSequence[bit] - 0.5) * swing;
            wave->elecSamples[i + 1] = {value, 0.0};
            wave->sigmaSamples[i + 1] = {0.05 + 0.03 * value, 0.0};
        }
        waveCell->sig = wave.release();
        sentCell->sig = sent.release();
        waveCell->next = sentCell;
        sentCell->next = head.release();
        head.reset(waveCell);
    }
    return head;
}

void BitErrorRate(benchmark::State& state, double timingJitter) {
    const auto bits = static_cast<std::int32_t>(1) << state.range(0);
    const auto pairs = static_cast<int>(state.range(1));
    const Owned<Nodelist> inputs = Pairs(pairs, bits);
    SimOptions options;
    options.PLOTTING = DoNotPlot;
    BerParams params;
    params.timingJitter = timingJitter;
    params.decisionLevelJitter = timingJitter > 0.0 ? 0.01 : 0.0;
    for (auto _ : state) {
        EyeResult eye;
        std::string message;
        if (ComputeBER(options, inputs.get(), params, eye, {"bench", message}) == Status::Error) {
            state.SkipWithError(message.c_str());
        }
        benchmark::DoNotOptimize(eye.BER);
    }
    state.SetItemsProcessed(state.iterations() * bits);
}
BENCHMARK_CAPTURE(BitErrorRate, Sharp, 0.0)->Args({10, 1})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BitErrorRate, Jittered, 5e-12)
    ->Args({10, 1})
    ->Args({10, 8})
    ->Args({15, 1})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace photrak
