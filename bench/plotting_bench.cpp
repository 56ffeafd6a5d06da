// What a viewer does with large results: reading rows, the grid behind them, blocks of extremes, a
// redraw, an eye. Bytes per second count the text or the doubles that are walked over.
#include <benchmark/benchmark.h>
#include <cmath>
#include <memory>
#include <random>
#include <string>

#include "base/text.h"
#include "drawing/svg_writer.h"
#include "plotting/data_file.h"
#include "plotting/eye.h"
#include "plotting/plot_drawing.h"

namespace photrak {
namespace {

constexpr double tStep = 3.125e-13;

/// Rows as SignalPlot writes them; the values repeat after a while, their digits are as many as
/// ever.
const std::string& RowsText(std::size_t rows) {
    static std::string text;
    static std::size_t made = 0;
    if (made == rows) return text;
    text.clear();
    for (std::size_t i = 0; i < rows; ++i) {
        text += FormatDefault(static_cast<double>(i) * tStep);
        text += ' ';
        text += FormatDefault(1e-3 * std::fabs(std::sin(0.37 * static_cast<double>(i % 10007))));
        text += '\n';
    }
    made = rows;
    return text;
}

std::vector<double> Times(std::size_t rows) {
    std::vector<double> x(rows);
    for (std::size_t i = 0; i < rows; ++i) x[i] = static_cast<double>(i) * tStep;
    return x;
}

std::vector<double> Noise(std::size_t rows) {
    std::mt19937_64 random(1);
    std::vector<double> y(rows);
    for (double& value : y) value = static_cast<double>(random() >> 11) * 0x1p-53;
    return y;
}

void ReadRows(benchmark::State& state) {
    const auto rows = static_cast<std::size_t>(state.range(0));
    const std::string& text = RowsText(rows);
    std::string error;
    for (auto _ : state) {
        DataTable table;
        if (!ReadDataTable(text, "bench", table, error)) state.SkipWithError("faulty rows");
        benchmark::DoNotOptimize(table.rows);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(rows));
}
BENCHMARK(ReadRows)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);

void FindGrid(benchmark::State& state) {
    std::vector<double> rounded = Times(static_cast<std::size_t>(state.range(0)));
    for (double& value : rounded) value = ReadDouble(FormatDefault(value));
    for (auto _ : state) {
        std::vector<double> values = rounded;
        if (!RestoreGrid(values, GridKind::Even)) state.SkipWithError("no grid found");
        benchmark::DoNotOptimize(values.data());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 8);
}
BENCHMARK(FindGrid)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void MakeColumn(benchmark::State& state) {
    const std::vector<double> y = Noise(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        Column column(y);
        benchmark::DoNotOptimize(column.Limits());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 8);
}
BENCHMARK(MakeColumn)->Arg(10'000'000)->Unit(benchmark::kMillisecond);

/// A whole redraw, at a zoom that shows one part in `range(1)`.
void Redraw(benchmark::State& state) {
    const auto rows = static_cast<std::size_t>(state.range(0));
    Plot plot;
    plot.spec.xLabel = "Time (s)";
    plot.spec.yLabel = "Signal (W)";
    Curve curve;
    curve.name = curve.key = "a";
    curve.x = std::make_shared<const Column>(Times(rows));
    curve.y = std::make_shared<const Column>(Noise(rows));
    plot.curves.push_back(curve);
    PlotView view(plot);
    view.ZoomAt({0.5, 0.5}, 1.0 / static_cast<double>(state.range(1)), {true, false});
    PlotOptions options;
    options.size = {1700, 1000};
    for (auto _ : state)
        benchmark::DoNotOptimize(DrawPlot(plot, view, options).drawing.items.size());
    state.SetBytesProcessed(state.iterations() * state.range(0) / state.range(1) * 8);
}
BENCHMARK(Redraw)
    ->Args({1'000'000, 1})
    ->Args({10'000'000, 1})
    ->Args({10'000'000, 10})
    ->Args({10'000'000, 1000})
    ->Unit(benchmark::kMillisecond);

/// The same extremes without blocks: what memory lets one have at best.
void PlainScan(benchmark::State& state) {
    const std::vector<double> y = Noise(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        double least = y[0], greatest = y[0];
        for (const double value : y) {
            least = value < least ? value : least;
            greatest = value > greatest ? value : greatest;
        }
        benchmark::DoNotOptimize(least);
        benchmark::DoNotOptimize(greatest);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 8);
}
BENCHMARK(PlainScan)->Arg(10'000'000)->Unit(benchmark::kMillisecond);

void EyeDensity(benchmark::State& state) {
    constexpr int samples = 64;
    Plot plot;
    plot.kind = PlotKind::Eye;
    const auto x = std::make_shared<const Column>(Times(samples));
    std::mt19937 random(1);
    for (int i = 0; i < state.range(0); ++i) {
        std::vector<double> y;
        const double from = static_cast<double>(random() % 2),
                     to = static_cast<double>(random() % 2);
        for (int k = 0; k < samples; ++k) {
            y.push_back(from + (to - from) * k / samples +
                        0.1 * static_cast<double>(random() % 1000) / 1000.0);
        }
        Curve curve;
        curve.x = x;
        curve.y = std::make_shared<const Column>(std::move(y));
        plot.curves.push_back(std::move(curve));
    }
    const PixelMap map{AxisScale(ScaleKind::Linear, x->Limits()),
                       AxisScale(ScaleKind::Linear, {-0.2, 1.3}),
                       {0, 0, 800, 500}};
    for (auto _ : state) benchmark::DoNotOptimize(MakeDensity(plot, map).levels.data());
    state.SetItemsProcessed(state.iterations() * state.range(0) * (samples - 1));
}
BENCHMARK(EyeDensity)->Arg(1 << 10)->Arg(1 << 15)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace photrak
