// Time to find the run order: a plain chain by length, and links of many short branches, as large
// diagrams have them. Built in memory, so that only the graph is measured.
#include <benchmark/benchmark.h>

#include "kernel/graph.h"
#include "kernel/order.h"

namespace photrak {
namespace {

void AddModel(Catalogue& catalogue, const char* type, std::size_t inputs, std::int32_t inputType,
              std::int32_t outputType) {
    auto model = std::make_unique<Component>();
    model->name = model->type = type;
    model->inputs.assign(inputs, {nullptr, inputType});
    model->outputs.assign(1, {nullptr, outputType});
    model->NUMINPUTS = model->MAXINPUTS = static_cast<std::int32_t>(inputs);
    model->NUMOUTPUTS = model->MAXOUTPUTS = 1;
    catalogue.models.push_back(std::move(model));
}

Catalogue SmallCatalogue() {
    Catalogue catalogue;  // in order of name
    AddModel(catalogue, "Join", 2, BinSigType, BinSigType);
    AddModel(catalogue, "LoopBeginBlock", 1, BinSigType, BinSigType);
    AddModel(catalogue, "LoopEndBlock", 1, BinSigType, BinSigType);
    AddModel(catalogue, "Sink", 1, BinSigType, NoSigType);
    AddModel(catalogue, "Source", 1, NoSigType, BinSigType);
    AddModel(catalogue, "Step", 1, BinSigType, BinSigType);
    return catalogue;
}

Component& Add(Workspace& workspace, const Catalogue& catalogue, const char* type, int number) {
    constexpr int digits = 10000000;  // keeps names sorted as they are made
    return *AddComponent(workspace, type, std::to_string(digits + number), 0, 0, catalogue);
}

void Wire(Workspace& workspace, Component& from, Component& to, std::int32_t input) {
    std::string text;
    benchmark::DoNotOptimize(ConnectComponents(workspace, from, 1, to, input, text));
}

void OrderAll(benchmark::State& state, Workspace& workspace) {
    for (auto _ : state) {
        RunOrder order;
        NodeSet nodes;
        std::string text;
        benchmark::DoNotOptimize(OrderWorkspace(workspace, order, nodes, text));
        if (order.size() != workspace.components.size()) state.SkipWithError(text.c_str());
    }
    state.SetItemsProcessed(state.iterations() *
                            static_cast<std::int64_t>(workspace.components.size()));
}

void OrderChain(benchmark::State& state) {
    const Catalogue catalogue = SmallCatalogue();
    const auto workspace = CreateWorkspace();
    const int length = static_cast<int>(state.range(0));
    Component* former = nullptr;
    for (int i = 0; i < length; ++i) {
        const char* type = i == 0 ? "Source" : i + 1 == length ? "Sink" : "Step";
        Component& present = Add(*workspace, catalogue, type, i);
        if (former) Wire(*workspace, *former, present, 1);
        former = &present;
    }
    OrderAll(state, *workspace);
}
BENCHMARK(OrderChain)->RangeMultiplier(10)->Range(100, 100000)->Unit(benchmark::kMicrosecond);

/// Branches of source, loop of one joined step, sink: eight components each, the join fed from the
/// branch's neighbor.
void OrderBranches(benchmark::State& state) {
    const Catalogue catalogue = SmallCatalogue();
    const auto workspace = CreateWorkspace();
    constexpr const char* branch[] = {"Source", "Step",         "LoopBeginBlock", "Join",
                                      "Step",   "LoopEndBlock", "Step",           "Sink"};
    int made = 0;
    Component* neighbor = nullptr;
    while (made + 8 <= state.range(0)) {
        Component* former = nullptr;
        Component* first = nullptr;
        for (const char* type : branch) {
            Component& present = Add(*workspace, catalogue, type, made++);
            if (former) Wire(*workspace, *former, present, 1);
            if (present.type == "Join") Wire(*workspace, neighbor ? *neighbor : *first, present, 2);
            former = &present;
            if (!first) first = &present;
        }
        neighbor = first;
    }
    OrderAll(state, *workspace);
}
BENCHMARK(OrderBranches)->Arg(2000)->Arg(20000)->Unit(benchmark::kMicrosecond);

/// One node that all read: a source watched by plots.
void OrderManyReaders(benchmark::State& state) {
    const Catalogue catalogue = SmallCatalogue();
    const auto workspace = CreateWorkspace();
    Component& source = Add(*workspace, catalogue, "Source", 0);
    for (int i = 1; i < state.range(0); ++i) {
        Wire(*workspace, source, Add(*workspace, catalogue, "Sink", i), 1);
    }
    OrderAll(state, *workspace);
}
BENCHMARK(OrderManyReaders)->Arg(2000)->Arg(20000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace photrak
