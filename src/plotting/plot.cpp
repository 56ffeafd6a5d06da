#include "plotting/plot.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>

#include "base/text.h"
#include "drawing/text_measure.h"
#include "platform/file_system.h"
#include "platform/full_path.h"
#include "plotting/axis_label.h"
#include "plotting/data_file.h"
#include "plotting/eye.h"

namespace photrak {
namespace {

class FolderSource : public PlotSource {
  public:
    explicit FolderSource(const std::filesystem::path& folder)
        : folder_(folder.empty() ? "." : folder) {}

    bool ReadData(const std::string& name, std::string& text, std::string& error) override {
        const std::filesystem::path path = folder_ / name;
        std::error_code noFolder, noTarget;
        const auto folder = ResolvedPath(folder_, noFolder);
        const auto target = ResolvedPath(path, noTarget);
        if (noFolder || noTarget) {
            error = (noFolder ? noFolder : noTarget).message();
            return false;
        }
        if (target.parent_path() != folder) {
            error = "is a link that leads out of the folder";
            return false;
        }
        return ReadWholeFile(path.string(), text, error);
    }

  private:
    std::filesystem::path folder_;
};

/// What the files of one plot may still hold together: the same large file a thousand times must
/// not fill the memory.
struct ReadingRoom {
    std::size_t bytes = std::size_t{2} << 30;
    std::size_t values = maxDataValues;
};

/// The first column is x, made even where rounding hid the grid.
bool ReadTable(const PlotFile& file, GridKind grid, PlotSource& source, ReadingRoom& room,
               DataTable& table, std::string& error) {
    std::string text, reason;
    if (room.bytes == 0) {
        reason = "is one file too many: those before it are too large together";
    } else if (source.ReadData(file.name, text, reason)) {
        room.bytes -= std::min(room.bytes, text.size());
        if (!ReadDataTable(text, file.name, table, error, room.values, SpentText(text)))
            return false;
        room.values -= table.rows * table.columns.size();
        if (!table.columns.empty()) RestoreGrid(table.columns[0], grid);
        return true;
    }
    error = Concat("'", DrawableText(file.name), "': ", reason);
    return false;
}

void AddCurves(Plot& plot, const PlotFile& file, DataTable& table) {
    if (table.columns.empty()) return;
    const auto x = std::make_shared<const Column>(std::move(table.columns[0]));
    for (std::size_t c = 1; c < table.columns.size(); ++c) {
        Curve curve;
        curve.file = file.name;
        curve.x = x;
        curve.y = std::make_shared<const Column>(std::move(table.columns[c]));
        curve.second = file.secondAxis;
        plot.curves.push_back(std::move(curve));
    }
}

void NameCurves(Plot& plot) {
    const PlotSpec& spec = plot.spec;
    std::map<std::string, int> sameName;
    for (std::size_t i = 0; i < plot.curves.size(); ++i) {
        Curve& curve = plot.curves[i];
        curve.named = i < spec.legends.size() && !spec.legends[i].empty();
        curve.name = curve.named ? spec.legends[i] : DrawableText(curve.file);
        curve.key = Concat(curve.name, "#", ++sameName[curve.name]);
        const int number = spec.oneColor ? 0 : static_cast<int>(i % 1'000'000);
        const auto& colors = spec.colors;
        curve.place = colors.empty()
                          ? number
                          : ColorPlace(colors[static_cast<std::size_t>(number) % colors.size()]);
    }
}

/// Only eyes are written in one color with a count of columns.
PlotKind KindOf(const PlotSpec& spec) {
    return spec.oneColor && spec.yColumns && spec.files.size() == 1 ? PlotKind::Eye
                                                                    : PlotKind::Curves;
}

void NoteOddities(Plot& plot) {
    if (plot.spec.legends.size() > plot.curves.size()) {
        plot.notes.push_back(Concat(plot.name, ": ", plot.spec.legends.size(), " legends for ",
                                    plot.curves.size(), " curves"));
    }
    if (plot.spec.yColumns && static_cast<std::size_t>(*plot.spec.yColumns) != plot.curves.size()) {
        plot.notes.push_back(Concat(plot.name, ": ", *plot.spec.yColumns, " columns announced, ",
                                    plot.curves.size(), " found"));
    }
}

bool IsDecibel(std::string_view label) {
    return SplitLabel(label).unit.starts_with("dB");
}

/// Least value without marks of darkness: what is the least and a hundred decibels under all
/// others.
double LeastLit(const Plot& plot, bool second, const ValueRange& all) {
    constexpr double darkness = 99.9;  // dB
    double next = all.greatest;
    for (const Curve& curve : plot.curves) {
        if (curve.second != second) continue;
        for (const double value : curve.y->Values()) {
            if (value < next && value > all.least) next = value;
        }
    }
    return next - all.least >= darkness ? next : all.least;
}

/// Room above and below; a quantity that is nowhere negative and comes near 0 starts there.
ValueRange WithRoom(ValueRange range) {
    range = Roomy(range);
    const double room = 0.05 * range.Span();
    const bool fromZero = range.least >= 0.0 && range.least < 0.3 * range.greatest;
    return {fromZero ? 0.0 : range.least - room, range.greatest + room};
}

/// Whole decades around the data, at least two.
ValueRange Decades(const ValueRange& positive) {
    if (positive.IsEmpty()) return {0.1, 1.0};
    constexpr double hair = 1e-9;
    double low = std::floor(std::log10(positive.least) + hair);
    double high = std::ceil(std::log10(positive.greatest) - hair);
    if (high - low < 1.0) {
        low -= 1.0;
        high += 1.0;
    }
    return {std::max(1e-307, std::pow(10.0, low)), std::pow(10.0, std::min(high, 307.0))};
}

/// The limits of a column without the marks of what was never set, as eye lids have them.
ValueRange SetLimits(const Column& column) {
    constexpr double neverSet = 1e30;
    const ValueRange& all = column.Limits();
    if (all.IsEmpty() || (all.greatest < neverSet && all.least > -neverSet)) return all;
    ValueRange range;
    for (const double value : column.Values()) {
        if (std::fabs(value) < neverSet) range.Include(value);
    }
    return range.IsEmpty() ? all : range;
}

ValueRange DataRange(const Plot& plot, AxisId axis, bool positive) {
    ValueRange range;
    for (const Curve& curve : plot.curves) {
        if (axis != AxisId::X && curve.second != (axis == AxisId::Second)) continue;
        const Column& column = axis == AxisId::X ? *curve.x : *curve.y;
        range.Include(positive ? column.PositiveLimits() : SetLimits(column));
    }
    return range;
}

}  // namespace

bool LoadPlotText(std::string_view commands, const std::string& path, PlotSource& source,
                  Plot& plot, std::string& error) {
    plot = {};
    plot.path = path;
    plot.name = DrawableText(std::filesystem::path(path).filename().string());
    if (!ReadPlotCommands(commands, plot.name, plot.spec, error)) return false;
    plot.notes = plot.spec.notes;
    plot.kind = KindOf(plot.spec);
    if (plot.spec.files.empty()) {
        error = Concat(plot.name, ": names no data file");
        return false;
    }
    const GridKind grid =
        SplitLabel(plot.spec.xLabel).unit == "m" ? GridKind::EvenReciprocal : GridKind::Even;
    std::string problems;
    std::size_t read = 0, failed = 0;
    ReadingRoom room;
    for (const PlotFile& file : plot.spec.files) {
        DataTable table;
        std::string problem;
        if (!ReadTable(file, grid, source, room, table, problem)) {
            if (++failed > maxPlotNotes) continue;
            plot.notes.push_back(Concat(plot.name, ":", file.line, ": ", problem));
            problems += Concat(problems.empty() ? "" : "\n", plot.notes.back());
            continue;
        }
        ++read;
        plot.incomplete |= table.lastRowIncomplete;
        AddCurves(plot, file, table);
    }
    if (failed > maxPlotNotes) {
        plot.notes.push_back(Concat(plot.name, ": nor ", failed - maxPlotNotes, " more files"));
    }
    if (read == 0) {
        error = problems;
        return false;
    }
    if (plot.incomplete)
        plot.notes.push_back(Concat(plot.name, ": the last row is not whole and was left out"));
    NameCurves(plot);
    NoteOddities(plot);
    ContinueEye(plot);
    if (plot.kind == PlotKind::Eye) plot.eye = MeasureEye(plot);
    return true;
}

bool LoadPlot(const std::string& path, Plot& plot, std::string& error) {
    constexpr std::size_t mostBytes = std::size_t{16} << 20;
    std::string commands, reason;
    if (!ReadWholeFile(path, commands, reason, mostBytes)) {
        error = Concat("'", DrawableText(path), "': ", reason);
        return false;
    }
    FolderSource source(std::filesystem::path(path).parent_path());
    return LoadPlotText(commands, path, source, plot, error);
}

bool HasSecondAxis(const Plot& plot) {
    return std::any_of(plot.curves.begin(), plot.curves.end(),
                       [](const Curve& curve) { return curve.second; });
}

ScaleKind AskedScale(const Plot& plot, AxisId axis) {
    const bool logarithmic = axis == AxisId::Y        ? plot.spec.logarithmic
                             : axis == AxisId::Second ? plot.spec.secondLogarithmic
                                                      : false;
    return logarithmic ? ScaleKind::Logarithmic : ScaleKind::Linear;
}

ValueRange FullRange(const Plot& plot, AxisId axis, ScaleKind kind) {
    const bool linear = kind == ScaleKind::Linear;
    const PlotSpec& spec = plot.spec;
    ValueRange range = DataRange(plot, axis, !linear);
    if (axis != AxisId::X && linear && !range.IsEmpty() &&
        IsDecibel(axis == AxisId::Y ? spec.yLabel : spec.secondLabel)) {
        range.least = LeastLit(plot, axis == AxisId::Second, range);
    }
    const bool few = axis == AxisId::X && plot.spec.symbols != CurveSymbols::None;
    if (!linear) {
        range = Decades(range);
    } else if (axis != AxisId::X) {
        range = WithRoom(range);
    } else {
        range = Roomy(range);
        // Points at the very edge would be cut in half.
        if (few) range = {range.least - 0.03 * range.Span(), range.greatest + 0.03 * range.Span()};
    }
    const AxisWindow& window = axis == AxisId::X   ? spec.x
                               : axis == AxisId::Y ? spec.y
                                                   : spec.second;
    ValueRange asked = range;
    if (window.least && (linear || *window.least > 0.0)) asked.least = *window.least;
    if (window.greatest && (linear || *window.greatest > 0.0)) asked.greatest = *window.greatest;
    return AxisScale(kind, asked.IsEmpty() ? range : asked).Range();
}

}  // namespace photrak
