// Where a run stands: the point of its scan, the share that is done, the time that is left.
#pragma once

#include <cstdint>
#include <string>

namespace photrak {

struct SimOptions;

/// The points of a scan in the order in which they run.
struct ScanPosition {
    std::int64_t point = 1, points = 1;
};
ScanPosition PositionOf(const SimOptions& options);

/// The part of a run that is done, from 0 to 1: all points of a scan count alike, a single run by
/// the `fraction` of its block under way, where one is known (else below 0).
double ShareDone(const ScanPosition& at, double fraction);
/// Seconds that are left after `elapsed`; NaN while nothing is done.
double SecondsLeft(double share, double elapsed);

/// "0:07", "1:02:33".
std::string DurationText(double seconds);

}  // namespace photrak
