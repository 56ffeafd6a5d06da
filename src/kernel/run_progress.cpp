// Times come from the points that are done.
#include "kernel/run_progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "kernel/workspace.h"

namespace photrak {

ScanPosition PositionOf(const SimOptions& options) {
    const std::int64_t inner = std::max(options.innerCount, 1);
    const std::int64_t outer = std::max(options.outerCount, 1);
    const bool isStatistical = (options.mode & simMode::statistical) != 0;
    const std::int64_t runs = isStatistical ? std::max(options.NUMRUNSTODO, 1) : 1;
    const auto before = [](std::int32_t index, std::int64_t count) {
        return std::clamp<std::int64_t>(index - std::int64_t{1}, 0, count - 1);
    };
    const std::int64_t done =
        (before(options.outerIndex, outer) * inner + before(options.innerIndex, inner)) * runs +
        before(options.runIndex, runs);
    return {done + 1, outer * inner * runs};
}

double ShareDone(const ScanPosition& at, double fraction) {
    const double share = at.points == 1 ? std::max(fraction, 0.0) : 0.0;
    return (static_cast<double>(at.point - 1) + share) / static_cast<double>(at.points);
}

double SecondsLeft(double share, double elapsed) {
    return share > 0.0 ? elapsed / share - elapsed : NAN;
}

std::string DurationText(double seconds) {
    const auto whole = static_cast<long long>(std::clamp(seconds, 0.0, 1e9));
    char text[48];
    if (whole < 3600) {
        std::snprintf(text, sizeof text, "%lld:%02lld", whole / 60, whole % 60);
    } else {
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60,
                      whole % 60);
    }
    return text;
}

}  // namespace photrak
