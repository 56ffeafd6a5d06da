// Index arithmetic in place of a table search.
#include "numeric/uniform_grid.h"

#include <algorithm>
#include <cmath>

namespace photrak {

GridPlace UniformGrid::Locate(double t) const {
    // The last sample at or before t, 0 if there is none. The quotient is at most one sample off.
    const double estimate = std::floor(t / tStep_) + 1.0;
    std::int64_t j = 0;
    if (estimate > 0.0) j = static_cast<std::int64_t>(std::min(estimate, static_cast<double>(n_)));
    if (j < n_ && t >= Time(j + 1)) {
        ++j;
    } else if (j >= 1 && t < Time(j)) {
        --j;
    }
    GridPlace place;
    place.first = static_cast<std::int32_t>(
        std::min<std::int64_t>(std::max<std::int64_t>(j - 1, 1), std::int64_t{n_} - 3));
    // In steps from the first of the four, by way of the nearest sample below: exact on a sample.
    const std::int64_t near = std::clamp<std::int64_t>(j, 1, n_);
    const double x =
        (t - Time(near)) / tStep_ + static_cast<double>(near - std::int64_t{place.first});
    const double x1 = x - 1.0, x2 = x - 2.0, x3 = x - 3.0;
    place.weights[0] = -x1 * x2 * x3 / 6.0;
    place.weights[1] = x * x2 * x3 / 2.0;
    place.weights[2] = -x * x1 * x3 / 2.0;
    place.weights[3] = x * x1 * x2 / 6.0;
    return place;
}

}  // namespace photrak
