// The whole eight-channel link of the examples over five amplified spans: seconds from the loaded
// topology to its bit error rates, and the share that the transforms of fiber and demultiplexer
// take of it.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <sys/resource.h>

#include "../tests/support/recording_host.h"
#include "files/catalogue.h"
#include "files/topology.h"
#include "kernel/driver.h"
#include "kernel/graph.h"
#include "models/dispatch.h"
#include "numeric/split_step.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

constexpr int channels = 8, spans = 5, stepsPerSpan = 80;

double Seconds(const std::chrono::steady_clock::time_point& from) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - from).count();
}

/// One transform there and one back with the product between them, as a step of a fiber does it.
double SecondsOfTransfer(long n) {
    SplitField field(n);
    TransferArray transfer(n, +1);
    transfer.Fill([](long) { return 1.0; });
    constexpr int rounds = 10, times = 20;
    double best = HUGE_VAL;
    for (int round = 0; round < rounds; ++round) {
        const auto start = std::chrono::steady_clock::now();
        for (int k = 0; k < times; ++k) ApplyTransferOpen(field, transfer);
        best = std::min(best, Seconds(start) / times);
    }
    return best;
}

void BM_EightChannelsFiveSpans(benchmark::State& state) {
    const RecordingHost silence;
    const auto scratch = std::filesystem::temp_directory_path() / "photrak_wdm_bench";
    std::filesystem::create_directories(scratch);
    std::filesystem::copy(PHOTRAK_SOURCE_DIR "/examples/wdm8.top", scratch,
                          std::filesystem::copy_options::overwrite_existing);
    Catalogue catalogue;
    std::string text;
    if (InitializeModels(ExecutableDirectory(), catalogue, text) == Status::Error) {
        state.SkipWithError(text.c_str());
        return;
    }
    std::filesystem::current_path(scratch);
    const auto bits = static_cast<int>(state.range(0));
    double total = 0;
    for (auto _ : state) {
        std::unique_ptr<Workspace> workspace;
        if (TopologyLoad("wdm8.top", workspace, catalogue) == Status::Error) {
            state.SkipWithError("the topology did not load");
            break;
        }
        FindVariable("bits", *workspace)->value = std::to_string(bits);
        workspace->options->PLOTTING = DoNotPlot;
        const auto start = std::chrono::steady_clock::now();
        const Status status = RunSimulation(workspace.get(), {BuiltInModels(), nullptr});
        state.SetIterationTime(Seconds(start));
        total += Seconds(start);
        if (status != Status::Success) state.SkipWithError(workspace->errorText.c_str());
        DestroyWorkspace(workspace);
    }
    const long n = 32L << bits;  // samples; the demultiplexer's filters work on twice as many
    const double transforms = channels * spans * stepsPerSpan * SecondsOfTransfer(n) +
                              channels * channels * SecondsOfTransfer(2 * n);
    state.counters["transforms"] = transforms * double(state.iterations()) / total;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    state.counters["peak_MB"] = double(usage.ru_maxrss) / 1024;
    ReleaseModels(catalogue);
    std::filesystem::current_path(std::filesystem::temp_directory_path());
    std::filesystem::remove_all(scratch);
}
BENCHMARK(BM_EightChannelsFiveSpans)
    ->ArgName("bits")
    ->Arg(7)
    ->Arg(9)
    ->Arg(11)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();

}  // namespace
}  // namespace photrak
