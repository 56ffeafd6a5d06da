#include "plotting/reduction.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace photrak {
namespace {

/// Joins points to parts and cuts them to the surroundings of the pane.
class PartMaker {
  public:
    explicit PartMaker(const Rect& pane)
        : around_{pane.x - pane.width, pane.y - pane.height, 3.0 * pane.width, 3.0 * pane.height} {}

    void Add(Point p) {
        if (!open_) {
            open_ = true;
            alone_ = true;
        } else {
            AddSegment(before_, p);
            alone_ = false;
        }
        before_ = p;
    }
    void Break() {
        if (open_ && alone_ && around_.Contains(before_)) parts_.push_back({before_});
        open_ = false;
    }
    std::vector<std::vector<Point>> Finish() {
        Break();
        return std::move(parts_);
    }

  private:
    void AddSegment(Point a, Point b) {
        const Point start = a;
        if (!ClipSegment(around_, a, b)) return;
        const bool joins = !parts_.empty() && !alone_ && a == start && parts_.back().back() == a;
        if (!joins) parts_.push_back({a});
        if (!(parts_.back().back() == b) || parts_.back().size() == 1) parts_.back().push_back(b);
    }

    Rect around_;
    std::vector<std::vector<Point>> parts_;
    Point before_;
    bool open_ = false, alone_ = false;
};

class Reducer {
  public:
    Reducer(const Column& x, const Column& y, const PixelMap& map)
        : x_(x), y_(y), map_(map), parts_(map.pane), count_(std::min(x.Size(), y.Size())) {}

    std::vector<std::vector<Point>> Run() {
        if (count_ == 0) return {};
        if (!x_.IsAscending()) {
            Stream(0, count_);
        } else {
            RunAscending();
        }
        return parts_.Finish();
    }

  private:
    std::size_t IndexOf(double value) const {
        const auto& values = x_.Values();
        const auto end = values.begin() + static_cast<std::ptrdiff_t>(count_);
        return static_cast<std::size_t>(std::lower_bound(values.begin(), end, value) -
                                        values.begin());
    }

    void RunAscending() {
        // One point more on each side, so that lines reach the edges.
        const std::size_t from = IndexOf(map_.x.Range().least),
                          to = IndexOf(map_.x.Range().greatest);
        const std::size_t first = from > 0 ? from - 1 : 0;
        const std::size_t last = std::min(to + 2, count_);
        const auto columns = static_cast<std::size_t>(std::max(1.0, std::ceil(map_.pane.width)));
        if (last - first <= 4 * columns) return Stream(first, last);
        RunColumns(first, last);
    }

    /// Column edges at whole pixels from the first value of the data.
    void RunColumns(std::size_t first, std::size_t last) {
        const double pixel = 1.0 / map_.pane.width;
        const double origin = map_.x.Shows(x_[0]) ? map_.x.Place(x_[0]) : 0.0;
        double edge = std::floor((map_.x.Place(x_[first]) - origin) / pixel) + 1.0;
        for (std::size_t start = first; start < last;) {
            const double value = map_.x.Value(origin + edge * pixel);
            std::size_t end = std::min(IndexOf(value), last);
            if (end <= start) {  // nothing in this column: on to that of the next point
                edge = std::max(edge + 1.0,
                                std::floor((map_.x.Place(x_[start]) - origin) / pixel) + 1.0);
                if (map_.x.Value(origin + edge * pixel) <= x_[start]) end = start + 1;
                if (end <= start) continue;
            }
            AddColumn(start, end);
            start = end;
            edge += 1.0;
        }
    }

    void AddColumn(std::size_t start, std::size_t end) {
        Column::Extremes extremes;
        if (end - start <= 4) return Stream(start, end);
        if (!y_.FindExtremes(start, end, extremes)) return parts_.Break();
        if (extremes.sawGap || !map_.y.Shows(y_[extremes.least])) return Stream(start, end);
        std::array<std::size_t, 4> order = {start, std::min(extremes.least, extremes.greatest),
                                            std::max(extremes.least, extremes.greatest), end - 1};
        std::size_t before = count_;
        for (const std::size_t i : order) {
            if (i != before) AddPoint(i);
            before = i;
        }
    }

    /// Point by point; of a long run within one pixel column only first, least, greatest and last.
    void Stream(std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to;) {
            if (!IsShown(i)) {
                parts_.Break();
                ++i;
                continue;
            }
            const double column = PixelColumn(i);
            std::size_t end = i + 1, least = i, greatest = i;
            for (; end < to && IsShown(end) && PixelColumn(end) == column; ++end) {
                if (y_[end] < y_[least]) least = end;
                if (y_[end] > y_[greatest]) greatest = end;
            }
            AddRun(i, end, least, greatest);
            i = end;
        }
    }
    void AddRun(std::size_t from, std::size_t to, std::size_t least, std::size_t greatest) {
        if (to - from <= 4) {
            for (std::size_t i = from; i < to; ++i) AddPoint(i);
            return;
        }
        std::size_t before = count_;
        for (const std::size_t i :
             {from, std::min(least, greatest), std::max(least, greatest), to - 1}) {
            if (i != before) AddPoint(i);
            before = i;
        }
    }

    double PixelColumn(std::size_t i) const {
        return std::floor(map_.x.Place(x_[i]) * map_.pane.width);
    }
    bool IsShown(std::size_t i) const {
        return !std::isnan(x_[i]) && !std::isnan(y_[i]) && map_.x.Shows(x_[i]) &&
               map_.y.Shows(y_[i]);
    }
    void AddPoint(std::size_t i) { parts_.Add(map_.At(x_[i], y_[i])); }

    const Column& x_;
    const Column& y_;
    const PixelMap& map_;
    PartMaker parts_;
    std::size_t count_;
};

}  // namespace

std::vector<std::vector<Point>> ReduceCurve(const Column& x, const Column& y, const PixelMap& map) {
    return Reducer(x, y, map).Run();
}

}  // namespace photrak
