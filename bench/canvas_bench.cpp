// The window on a diagram of 10,000 blocks and 20,000 wires, on the offscreen platform with the
// software painter of the real ones: opening, painting at screen scales 1 and 2, scrolling,
// dragging. A frame is one event and the whole picture after it. Budgets: 33 ms a frame, 2 s to
// open, 500 MB.
#include <QApplication>
#include <QImage>
#include <QMdiSubWindow>
#include <QMouseEvent>
#include <QScrollBar>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>

#include "lattice.h"
#include "models/block_tests.h"
#include "models/dispatch.h"
#include "qt/text_measure_qt.h"
#include "workbench/diagram_window.h"
#include "workbench/edit_commands.h"
#include "workbench/frame_window.h"
#include "workbench/view_commands.h"

namespace photrak {
namespace {

constexpr QSize frameSize(1920, 1080);

/// A frame, full screen, on a scratch folder.
class Bench {
  public:
    Bench() : folder_(std::filesystem::temp_directory_path() / "photrak-canvas-bench") {
        std::filesystem::create_directories(folder_);
        for (const char* name : {"HOME", "XDG_STATE_HOME", "XDG_CONFIG_HOME"}) {
            qputenv(name, folder_.c_str());
        }
        workbench.reset(new Workbench{desktop_,
                                      {BuiltInModels(), HasBlockTest, TestByStages},
                                      ExecutableDirectory(),
                                      folder_.string()});
        StartWorkbench(*workbench);
        file = (folder_ / "lattice.top").string();
        WriteLattice(*workbench, file);
        frame = std::make_unique<FrameWindow>(*workbench, desktop_);
        frame->resize(frameSize);
        frame->show();
    }
    /// The canvas, with the diagram in Select mode at a zoom and nothing selected.
    DiagramWindow& Canvas(double zoom) {
        if (!workbench->Active()) frame->OpenFiles({ToQString(file)});
        SetMode(*workbench, Mode::Zoom);
        SetMode(*workbench, Mode::Select);
        workbench->scale.SetZoom(zoom);
        frame->Sync();
        const auto children = frame->findChildren<QMdiSubWindow*>();
        const auto front = std::ranges::find_if(children, [](auto* c) { return c->widget(); });
        auto& canvas = dynamic_cast<DiagramWindow&>(*(*front)->widget());
        canvas.ScrollToStart();
        return canvas;
    }

    std::string file;
    std::unique_ptr<Workbench> workbench;
    std::unique_ptr<FrameWindow> frame;

  private:
    std::filesystem::path folder_;
    WindowDesktop desktop_;
};

Bench* shared = nullptr;

/// A picture of the screen's resolution into which a widget paints.
class Screen {
  public:
    explicit Screen(double scale) : image_(frameSize * scale, QImage::Format_RGB32) {
        image_.setDevicePixelRatio(scale);
    }
    void Paint(DiagramWindow& canvas) { canvas.viewport()->render(&image_); }

  private:
    QImage image_;
};

void Send(DiagramWindow& canvas, QEvent::Type type, QPointF at) {
    const bool moves = type == QEvent::MouseMove;
    QMouseEvent event(type, at, canvas.viewport()->mapToGlobal(at),
                      moves ? Qt::NoButton : Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, {});
    QApplication::sendEvent(canvas.viewport(), &event);
}

/// Megabytes that the process holds.
double Resident() {
    std::ifstream file("/proc/self/statm");
    double all = 0.0, resident = 0.0;  // pages
    file >> all >> resident;
    constexpr double page = 4096.0;
    return resident * page / 1e6;
}

void OpenLattice(benchmark::State& state) {
    Screen screen(1.0);
    for (auto step : state) {
        screen.Paint(shared->Canvas(1.0));
        state.PauseTiming();
        CloseAll(*shared->workbench);
        shared->frame->Sync();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        state.ResumeTiming();
    }
    state.counters["MB"] = Resident();
}

/// The arguments of all frames: hundredths of the zoom, scale of the screen.
double ZoomOf(const benchmark::State& state) {
    return static_cast<double>(state.range(0)) / 100.0;
}

void Paint(benchmark::State& state) {
    DiagramWindow& canvas = shared->Canvas(ZoomOf(state));
    Screen screen(static_cast<double>(state.range(1)));
    for (auto step : state) {
        canvas.Refresh();  // as after a change of the diagram
        screen.Paint(canvas);
    }
}

void Scroll(benchmark::State& state) {
    DiagramWindow& canvas = shared->Canvas(ZoomOf(state));
    Screen screen(static_cast<double>(state.range(1)));
    constexpr int step = 17;
    for (auto frame : state) {
        QScrollBar& bar = *canvas.horizontalScrollBar();
        bar.setValue(bar.value() + step > bar.maximum() ? 0 : bar.value() + step);
        screen.Paint(canvas);
    }
}

/// A block, or all of them, hangs on the pointer.
void Drag(benchmark::State& state, bool all) {
    DiagramWindow& canvas = shared->Canvas(ZoomOf(state));
    if (all) EditSelectAll(*shared->workbench);
    Screen screen(static_cast<double>(state.range(1)));
    const double middle = ZoomOf(state) * iconUnits / 2;
    Send(canvas, QEvent::MouseButtonPress, {middle, middle});
    double at = middle;
    for (auto frame : state) {
        at = at > 1000.0 ? 100.0 : at + 7.0;
        Send(canvas, QEvent::MouseMove, {at, at});
        screen.Paint(canvas);
    }
    if (!shared->workbench->Active()->drag.IsUnderWay()) state.SkipWithError("nothing is dragged");
    shared->workbench->Active()->DropDrag();
}

/// Selects one block after the other: a click with all that the frame shows of it.
void Click(benchmark::State& state) {
    DiagramWindow& canvas = shared->Canvas(ZoomOf(state));
    Screen screen(static_cast<double>(state.range(1)));
    int column = 0;
    for (auto frame : state) {
        column = (column + 1) % 20;
        const double x = ZoomOf(state) * (column * gridUnits + iconUnits / 2.0);
        const double y = ZoomOf(state) * iconUnits / 2.0;
        Send(canvas, QEvent::MouseButtonPress, {x, y});
        Send(canvas, QEvent::MouseButtonRelease, {x, y});
        screen.Paint(canvas);
    }
    if (shared->workbench->Active()->selection.size() != 1) state.SkipWithError("nothing is hit");
}

void OverAll(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"zoom", "scale"})->ArgsProduct({{20, 40, 100}, {1, 2}});
    bench->Unit(benchmark::kMillisecond);
}

BENCHMARK(OpenLattice)->Unit(benchmark::kMillisecond);
BENCHMARK(Paint)->Apply(OverAll);
BENCHMARK(Scroll)->Apply(OverAll);
BENCHMARK_CAPTURE(Drag, OneBlock, false)->Apply(OverAll);
BENCHMARK_CAPTURE(Drag, AllBlocks, true)->Apply(OverAll);
BENCHMARK(Click)->Apply(OverAll);

}  // namespace
}  // namespace photrak

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    photrak::Bench bench;
    photrak::shared = &bench;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::printf("resident: %.0f MB\n", photrak::Resident());
    return 0;
}
