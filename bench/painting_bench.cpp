// What a window needs to paint a plot, at screen scales 1 and 2: a window of 1600 x 900, a noisy
// curve that fills its pane, ten million points from their blocks, an eye as traces. Budgets: 33 ms
// for painting at scale 2, 100 ms for a redraw of ten million points.
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <benchmark/benchmark.h>
#include <random>

#include "plotting/plot_drawing.h"
#include "qt/painter.h"

namespace photrak {
namespace {

Plot NoisyPlot(std::size_t points, int curves) {
    std::mt19937 random(1);
    std::normal_distribution<double> noise;
    Plot plot;
    plot.spec.xLabel = "Time (s)";
    plot.spec.yLabel = "Power (W)";
    std::vector<double> x(points);
    for (std::size_t i = 0; i < points; ++i) x[i] = 1e-12 * static_cast<double>(i);
    const auto column = std::make_shared<const Column>(std::move(x));
    for (int k = 0; k < curves; ++k) {
        std::vector<double> y(points);
        for (double& value : y) value = noise(random) + 3.0 * k;
        Curve curve;
        curve.name = curve.key = std::to_string(k);
        curve.x = column;
        curve.y = std::make_shared<const Column>(std::move(y));
        curve.place = k;
        plot.curves.push_back(std::move(curve));
    }
    return plot;
}

/// The arguments: points, curves, scale.
void Paint(benchmark::State& state) {
    const Plot plot =
        NoisyPlot(static_cast<std::size_t>(state.range(0)), static_cast<int>(state.range(1)));
    const PlotView view(plot);
    PlotOptions options;
    options.size = {1600, 900};
    const PlotPicture picture = DrawPlot(plot, view, options);
    const double scale = static_cast<double>(state.range(2));
    QImage image(static_cast<int>(1600 * scale), static_cast<int>(900 * scale),
                 QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    for (auto _ : state) {
        QPainter painter(&image);
        PaintDrawing(painter, picture.drawing, Theme::Light);
    }
}
BENCHMARK(Paint)
    ->ArgNames({"points", "curves", "scale"})
    ->ArgsProduct({{1000, 1'000'000}, {1, 4}, {1, 2}})
    ->Unit(benchmark::kMillisecond);

void Redraw(benchmark::State& state) {
    const Plot plot = NoisyPlot(static_cast<std::size_t>(state.range(0)), 1);
    const PlotView view(plot);
    PlotOptions options;
    options.size = {1600, 900};
    QImage image(1600, 900, QImage::Format_RGB32);
    for (auto _ : state) {
        const PlotPicture picture = DrawPlot(plot, view, options);
        QPainter painter(&image);
        PaintDrawing(painter, picture.drawing, Theme::Light);
    }
}
BENCHMARK(Redraw)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace photrak

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
