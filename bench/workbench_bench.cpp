// The workbench on a diagram of 10,000 blocks and 20,000 wires: open, picture, hit test, gestures,
// steps of the history.
#include <benchmark/benchmark.h>
#include <filesystem>
#include <memory>
#include <string>

#include "lattice.h"
#include "models/block_tests.h"
#include "models/dispatch.h"
#include "platform/file_system.h"
#include "workbench/canvas_drawing.h"
#include "workbench/canvas_picture.h"
#include "workbench/edit_commands.h"
#include "workbench/file_commands.h"
#include "workbench/mouse.h"
#include "workbench/script_player.h"
#include "workbench/view_commands.h"

namespace photrak {
namespace {

constexpr std::int32_t columns = latticeColumns, blocks = latticeBlocks;

/// A workbench without a window, its folder and its state in a scratch directory.
class Bench {
  public:
    Bench() : folder_(std::filesystem::temp_directory_path() / "photrak-workbench-bench") {
        std::filesystem::create_directories(folder_);
        ::setenv("XDG_STATE_HOME", folder_.c_str(), 1);
        desktop_ = std::make_unique<ScriptDesktop>(folder_.string());
        workbench.reset(new Workbench{*desktop_,
                                      {BuiltInModels(), HasBlockTest, TestByStages},
                                      ExecutableDirectory(),
                                      folder_.string()});
        StartWorkbench(*workbench);
        WriteLattice(*workbench, (folder_ / file).string());
    }
    DiagramView& Open() { return OpenDiagram(*workbench, file, OpenAgain::NewView); }
    /// The view that the benchmarks share, in Select mode without a selection.
    DiagramView& View() {
        if (!workbench->Active()) Open();
        SetMode(*workbench, Mode::Zoom);
        SetMode(*workbench, Mode::Select);
        return *workbench->Active();
    }
    void Click(std::int32_t x, std::int32_t y) {
        MousePress(*workbench, *workbench->Active(), {{x, y}});
        MouseRelease(*workbench, *workbench->Active(), {x, y}, false);
    }
    void Drag(CanvasPoint from, CanvasPoint to) {
        MousePress(*workbench, *workbench->Active(), {from});
        MouseMove(*workbench, *workbench->Active(), to);
        MouseRelease(*workbench, *workbench->Active(), to, false);
    }

    std::unique_ptr<Workbench> workbench;
    std::string file = "lattice.top";

  private:
    std::filesystem::path folder_;
    std::unique_ptr<ScriptDesktop> desktop_;
};

Bench& Shared() {
    static Bench bench;
    return bench;
}

void OpenLattice(benchmark::State& state) {
    Bench& bench = Shared();
    for (auto step : state) {
        DiagramView& view = bench.Open();
        if (view.workspace->components.size() != blocks) state.SkipWithError("not loaded");
        state.PauseTiming();
        CloseAll(*bench.workbench);
        state.ResumeTiming();
    }
}

void Picture(benchmark::State& state) {
    const DiagramView& view = Shared().View();
    std::size_t wires = 0;
    for (auto step : state) wires = PictureOf(*Shared().workbench, view).wires.size();
    state.counters["wires"] = static_cast<double>(wires);
}

/// What a window of 1920 by 1080 pixels shows, at a zoom in hundredths: all of it at 0.2.
void DrawingList(benchmark::State& state) {
    const DiagramView& view = Shared().View();
    Shared().workbench->scale.SetZoom(static_cast<double>(state.range(0)) / 100.0);
    const CanvasLook look{.seen = Rect{0.0, 0.0, 1920.0, 1080.0}};
    for (auto step : state) benchmark::DoNotOptimize(DrawCanvas(*Shared().workbench, view, look));
    Shared().workbench->scale.SetZoom(1.0);
}

/// The same with all blocks selected.
void DrawingOfSelection(benchmark::State& state) {
    DiagramView& view = Shared().View();
    Shared().workbench->scale.SetZoom(0.2);
    EditSelectAll(*Shared().workbench);
    for (auto step : state) benchmark::DoNotOptimize(DrawCanvas(*Shared().workbench, view));
    Shared().workbench->scale.SetZoom(1.0);
}

/// Points on bodies, ports and paper in turn.
void HitTests(benchmark::State& state) {
    const DiagramView& view = Shared().View();
    std::int32_t i = 0;
    for (auto step : state) {
        i = (i + 7919) % (columns * 80);
        const CanvasPoint at{i % columns * gridUnits + i % 45, i / columns * gridUnits + i % 43};
        benchmark::DoNotOptimize(HitTest(view.Index(), at, Shared().workbench->scale));
    }
}

void MoveOne(benchmark::State& state) {
    const DiagramView& view = Shared().View();
    const std::size_t steps = view.history.Steps();
    CanvasPoint from{10, 89 * gridUnits + 10}, to{110 * gridUnits + 10, from.y};
    for (auto step : state) {
        Shared().Drag(from, to);
        std::swap(from, to);
    }
    if (view.history.Steps() == steps) state.SkipWithError("nothing moved");
}

void NudgeAll(benchmark::State& state) {
    Shared().View();
    EditSelectAll(*Shared().workbench);
    std::int32_t by = 1;
    for (auto step : state) {
        Nudge(*Shared().workbench, by, 0);
        by = -by;
    }
}

void PlaceAndDelete(benchmark::State& state) {
    Bench& bench = Shared();
    bench.View();
    for (auto step : state) {
        SetMode(*bench.workbench, Mode::Icon, 5);
        bench.Click(118 * gridUnits, 80 * gridUnits);
        SetMode(*bench.workbench, Mode::Select);
        bench.Click(118 * gridUnits + 10, 80 * gridUnits + 10);
        EditDelete(*bench.workbench);
    }
}

void Rewire(benchmark::State& state) {
    Bench& bench = Shared();
    DiagramView& view = bench.View();
    SetMode(*bench.workbench, Mode::Connect);
    const Component& from = *view.workspace->components[0];
    const Component& to = *view.workspace->components[1];
    const Scale& scale = bench.workbench->scale;
    const CanvasPoint output = WireEndAt(from, Side::Output, 1, scale);
    const CanvasPoint input = WireEndAt(to, Side::Input, 1, scale);
    for (auto step : state) {
        MousePress(*bench.workbench, view, {output, true});
        MouseRelease(*bench.workbench, view, input, true);
        MousePress(*bench.workbench, view, {output});
        MouseRelease(*bench.workbench, view, input, false);
    }
}

void DuplicateHundred(benchmark::State& state) {
    Bench& bench = Shared();
    DiagramView& view = bench.View();
    for (auto step : state) {
        for (std::size_t i = 0; i < 100; ++i) {
            view.Select(view.workspace->components[i * 90].get());
        }
        EditDuplicate(*bench.workbench);
        EditDelete(*bench.workbench);
    }
}

void HistorySteps(benchmark::State& state) {
    Bench& bench = Shared();
    bench.View();
    EditSelectAll(*bench.workbench);
    Nudge(*bench.workbench, 1, 0);
    for (auto step : state) {
        StepBack(*bench.workbench);
        StepForward(*bench.workbench);
    }
    StepBack(*bench.workbench);
}

void SaveUndoRestore(benchmark::State& state) {
    Bench& bench = Shared();
    DiagramView& view = bench.View();
    for (auto step : state) {
        view.Select(view.workspace->components.front().get());
        EditDelete(*bench.workbench);
        EditUndo(*bench.workbench);
    }
}

/// The whole diagram at once: each command by itself, the other half of the round untimed.
void WholeDiagram(benchmark::State& state, void (*there)(Workbench&), void (*back)(Workbench&)) {
    Bench& bench = Shared();
    bench.View();
    for (auto step : state) {
        state.PauseTiming();
        EditSelectAll(*bench.workbench);
        state.ResumeTiming();
        there(*bench.workbench);
        state.PauseTiming();
        back(*bench.workbench);
        state.ResumeTiming();
    }
}

void DeleteAll(benchmark::State& state) {
    WholeDiagram(state, EditDelete, StepBack);
}

void StepBackToAll(benchmark::State& state) {
    Bench& bench = Shared();
    bench.View();
    for (auto step : state) {
        state.PauseTiming();
        EditSelectAll(*bench.workbench);
        EditDelete(*bench.workbench);
        state.ResumeTiming();
        StepBack(*bench.workbench);
    }
}

void CopyAll(benchmark::State& state) {
    WholeDiagram(state, EditCopy, [](Workbench&) {});
}

void PasteAll(benchmark::State& state) {
    WholeDiagram(state, EditPaste, StepBack);
}

void Differs(benchmark::State& state) {
    Bench& bench = Shared();
    const DiagramView& view = bench.View();
    for (auto step : state) benchmark::DoNotOptimize(view.Differs());
}

BENCHMARK(OpenLattice)->Unit(benchmark::kMillisecond);
BENCHMARK(Picture)->Unit(benchmark::kMillisecond);
BENCHMARK(DrawingList)->Arg(20)->Arg(40)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(DrawingOfSelection)->Unit(benchmark::kMillisecond);
BENCHMARK(HitTests)->Unit(benchmark::kMicrosecond);
BENCHMARK(MoveOne)->Unit(benchmark::kMillisecond);
BENCHMARK(NudgeAll)->Unit(benchmark::kMillisecond);
BENCHMARK(PlaceAndDelete)->Unit(benchmark::kMillisecond);
BENCHMARK(Rewire)->Unit(benchmark::kMillisecond);
BENCHMARK(DuplicateHundred)->Unit(benchmark::kMillisecond);
BENCHMARK(HistorySteps)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveUndoRestore)->Unit(benchmark::kMillisecond);
BENCHMARK(DeleteAll)->Unit(benchmark::kMillisecond);
BENCHMARK(StepBackToAll)->Unit(benchmark::kMillisecond);
BENCHMARK(CopyAll)->Unit(benchmark::kMillisecond);
BENCHMARK(PasteAll)->Unit(benchmark::kMillisecond);
BENCHMARK(Differs)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace photrak
