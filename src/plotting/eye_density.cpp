// Line segments summed into integer cells, and the levels of a density image.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "plotting/eye.h"

namespace photrak {
namespace {

constexpr double unit = 1024.0;  // of the cells: one trace across one pixel column

class Cells {
  public:
    Cells(int columns, int rows)
        : columns_(columns),
          rows_(rows),
          counts_(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows)) {}

    /// A segment in cell coordinates, from left to right.
    void AddSegment(Point a, Point b) {
        if (!(b.x > a.x)) return;
        const double slope = (b.y - a.y) / (b.x - a.x);
        const int first = std::max(0, static_cast<int>(std::floor(std::max(a.x, 0.0))));
        const int last =
            std::min(columns_ - 1,
                     static_cast<int>(std::floor(std::min(b.x, static_cast<double>(columns_)))));
        for (int column = first; column <= last; ++column) {
            const double from = std::max(a.x, static_cast<double>(column));
            const double to = std::min(b.x, column + 1.0);
            if (to > from)
                AddSpan(column, a.y + slope * (from - a.x), a.y + slope * (to - a.x),
                        unit * (to - from));
        }
    }

    std::uint32_t Peak() const { return *std::max_element(counts_.begin(), counts_.end()); }
    const std::vector<std::uint32_t>& Counts() const { return counts_; }

  private:
    /// Shares `weight` among the rows between two heights; a flat piece between the two nearest.
    void AddSpan(int column, double y0, double y1, double weight) {
        double low = std::min(y0, y1), high = std::max(y0, y1);
        const double middle = 0.5 * (low + high);
        if (high - low < 1.0) {
            low = middle - 0.5;
            high = middle + 0.5;
        }
        if (high <= 0.0 || low >= rows_) return;
        const double perRow = weight / (high - low);
        const int first = std::max(0, static_cast<int>(std::floor(low)));
        const int last = std::min(rows_ - 1, static_cast<int>(std::floor(high)));
        for (int row = first; row <= last; ++row) {
            const double part = std::min(high, row + 1.0) - std::max(low, static_cast<double>(row));
            counts_[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) +
                    static_cast<std::size_t>(column)] +=
                static_cast<std::uint32_t>(part * perRow + 0.5);
        }
    }

    int columns_, rows_;
    std::vector<std::uint32_t> counts_;
};

std::vector<std::uint8_t> Levels(const Cells& cells, double saturation) {
    std::vector<std::uint8_t> levels(cells.Counts().size());
    const double peak = std::max<double>(cells.Peak(), 1.0) / unit;
    const double scale = 254.0 / std::log1p(saturation * peak);
    std::transform(
        cells.Counts().begin(), cells.Counts().end(), levels.begin(), [&](std::uint32_t count) {
            if (count == 0) return std::uint8_t{0};
            return static_cast<std::uint8_t>(1.0 + scale * std::log1p(saturation * count / unit));
        });
    return levels;
}

}  // namespace

DensityImage MakeDensity(const Plot& plot, const PixelMap& map, double saturation) {
    constexpr double finest = 4000.0;  // cells on a side
    DensityImage image;
    image.rect = map.pane;
    image.columns = static_cast<int>(std::clamp(std::round(map.pane.width), 1.0, finest));
    image.rows = static_cast<int>(std::clamp(std::round(map.pane.height), 1.0, finest));
    Cells cells(image.columns, image.rows);
    std::vector<double> places;
    const Column* placed = nullptr;
    for (const Curve& curve : plot.curves) {
        if (curve.x.get() != placed) {
            placed = curve.x.get();
            places.clear();
            for (const double x : placed->Values())
                places.push_back(map.x.Place(x) * image.columns);
        }
        const auto& y = curve.y->Values();
        Point before{std::nan(""), 0.0};
        for (std::size_t k = 0; k < std::min(y.size(), places.size()); ++k) {
            const bool shown = !std::isnan(y[k]) && map.y.Shows(y[k]);
            const Point here{shown ? places[k] : std::nan(""),
                             shown ? (1.0 - map.y.Place(y[k])) * image.rows : 0.0};
            cells.AddSegment(before, here);
            before = here;
        }
    }
    image.levels = Levels(cells, std::clamp(saturation, 1e-3, 1e6));
    return image;
}

}  // namespace photrak
