#include "plotting/ber_readout.h"

#include <algorithm>
#include <cmath>

namespace photrak {

std::optional<double> CrossingOf(const Curve& curve, double rate) {
    if (!(rate > 0.0)) return {};
    const double wanted = std::log(rate);
    const std::size_t count = std::min(curve.x->Size(), curve.y->Size());
    for (std::size_t i = 0; i < count; ++i) {
        const double x = (*curve.x)[i], y = (*curve.y)[i];
        if (y == rate) return x;
        if (i + 1 == count) break;
        const double nextX = (*curve.x)[i + 1], nextY = (*curve.y)[i + 1];
        if (!(y > 0.0) || !(nextY > 0.0) || std::isnan(x) || std::isnan(nextX) ||
            (y < rate) == (nextY < rate))
            continue;
        const double part = (wanted - std::log(y)) / (std::log(nextY) - std::log(y));
        return x + part * (nextX - x);
    }
    return {};
}

std::vector<RateCrossing> CrossingsAt(const Plot& plot, double rate) {
    std::vector<RateCrossing> crossings;
    std::optional<double> reference;
    for (std::size_t i = 0; i < plot.curves.size(); ++i) {
        RateCrossing crossing{i, CrossingOf(plot.curves[i], rate), {}};
        if (crossing.x && reference) crossing.penalty = *crossing.x - *reference;
        if (crossing.x && !reference) reference = crossing.x;
        crossings.push_back(crossing);
    }
    return crossings;
}

}  // namespace photrak
