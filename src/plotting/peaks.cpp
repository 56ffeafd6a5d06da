#include "plotting/peaks.h"

#include <algorithm>
#include <cmath>

namespace photrak {
namespace {

/// For each sample the least value between it and the nearest higher one on its left (or the end of
/// the run): one pass with a stack of falling values.
std::vector<double> LeftSaddles(const std::vector<double>& y) {
    struct Step {
        double height, least;  // least value from here up to the next step
    };
    std::vector<double> saddles(y.size());
    std::vector<Step> stack;
    for (std::size_t i = 0; i < y.size(); ++i) {
        double least = y[i];
        if (std::isnan(y[i])) {
            stack.clear();
            continue;
        }
        while (!stack.empty() && stack.back().height <= y[i]) {
            least = std::min(least, stack.back().least);
            stack.pop_back();
        }
        saddles[i] = least;
        stack.push_back({y[i], least});
    }
    return saddles;
}

/// The last sample of the flat top that begins at `i`; `i` itself if it is no local maximum's
/// start.
bool IsTop(const std::vector<double>& y, std::size_t i, std::size_t& end) {
    if (std::isnan(y[i]) || (i > 0 && y[i - 1] >= y[i])) return false;
    end = i;
    while (end + 1 < y.size() && y[end + 1] == y[i]) ++end;
    return end + 1 == y.size() || !(y[end + 1] > y[i]);
}

}  // namespace

std::vector<Peak> FindPeaks(const Column& x, const Column& y, double prominence, std::size_t most) {
    const std::size_t count = std::min(x.Size(), y.Size());
    std::vector<double> values(y.Values().begin(),
                               y.Values().begin() + static_cast<std::ptrdiff_t>(count));
    const std::vector<double> left = LeftSaddles(values);
    std::reverse(values.begin(), values.end());
    std::vector<double> right = LeftSaddles(values);
    std::reverse(values.begin(), values.end());
    std::reverse(right.begin(), right.end());
    std::vector<Peak> peaks;
    for (std::size_t i = 0, end = 0; i < count; ++i) {
        if (!IsTop(values, i, end)) continue;
        const std::size_t middle = (i + end) / 2;
        // A side without any lower ground says nothing: the other decides.
        const double low = left[i] == values[i]        ? right[end]
                           : right[end] == values[end] ? left[i]
                                                       : std::max(left[i], right[end]);
        if (values[i] - low >= prominence && values[i] > low)
            peaks.push_back({middle, x[middle], values[i], values[i] - low});
        i = end;
    }
    std::stable_sort(peaks.begin(), peaks.end(),
                     [](const Peak& a, const Peak& b) { return a.y > b.y; });
    if (peaks.size() > most) peaks.resize(most);
    return peaks;
}

}  // namespace photrak
