// Topology files by number of components: loading, saving, and the run order of what was loaded.
// The topology is a bundle of links of twenty blocks, each block with parameters over symbols.
#include <benchmark/benchmark.h>
#include <cstdint>
#include <memory>
#include <string>

#include "../tests/support/small_catalogue.h"
#include "base/text.h"
#include "files/topology.h"
#include "kernel/order.h"

namespace photrak {
namespace {

constexpr int blocksPerLink = 20;

const Catalogue& Models() {
    static const Catalogue catalogue = SmallCatalogue();
    return catalogue;
}

std::string BlockText(int index, std::string_view type, int input, int output,
                      std::string_view parameter, std::string_view value) {
    return Concat("\nCOMPONENT ", type, index, " ", type, "\nNOTE\nICON x ", index, " 7\n",
                  "NUMINPUTS 1\nNUMOUTPUTS 1\nINPUTFROM ", input, "\nOUTPUTTO ", output,
                  "\n\nPARAM ", parameter, " DoubleType\nVALUE ", value,
                  "\nSTDDEV 0\nPROBDIST NoProbDist\nUNITS W\nENDPARAM\n\nENDCOMPONENT\n");
}

std::string GeneratedTopology(int components) {
    std::string text = "NOTE generated\nBEGINVARIABLES\np DoubleType 1e-3\nENDVARIABLES\n";
    for (int i = 1; i <= components; ++i) {
        const int place = i % blocksPerLink;
        const bool isSource = place == 1, isSink = place == 0 || i == components;
        text += BlockText(i,
                          isSource ? "Source"
                          : isSink ? "Sink"
                                   : "Pipe",
                          isSource ? 0 : i - 1, isSink ? 0 : i, isSource ? "power" : "loss",
                          isSource ? "p * 2" : "0.2");
    }
    return text;
}

std::unique_ptr<Workspace> Loaded(const std::string& text, benchmark::State& state) {
    std::unique_ptr<Workspace> workspace;
    if (TopologyLoadText(text, "bench.top", workspace, Models()) != Status::Success) {
        state.SkipWithError(workspace->errorText.c_str());
    }
    return workspace;
}

void Load(benchmark::State& state) {
    const std::string text = GeneratedTopology(static_cast<int>(state.range(0)));
    for (auto step : state) benchmark::DoNotOptimize(Loaded(text, state));
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void LoadAndOrder(benchmark::State& state) {
    const std::string text = GeneratedTopology(static_cast<int>(state.range(0)));
    for (auto step : state) {
        const auto workspace = Loaded(text, state);
        RunOrder order;
        NodeSet nodes;
        std::string errorText;
        const Status status = OrderWorkspace(*workspace, order, nodes, errorText);
        if (status != Status::Success || order.size() != workspace->components.size()) {
            state.SkipWithError("the order is incomplete");
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Save(benchmark::State& state) {
    const auto workspace = Loaded(GeneratedTopology(static_cast<int>(state.range(0))), state);
    for (auto step : state) {
        std::string text;
        benchmark::DoNotOptimize(TopologySaveText(*workspace, text));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(Load)->Arg(2000)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadAndOrder)->Arg(2000)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(Save)->Arg(2000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace photrak
