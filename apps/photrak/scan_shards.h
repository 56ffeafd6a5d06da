// Parts of a scan: a process that runs some of its points and keeps their outcomes, and one that
// merges them into the files of a single run. A folder that all of them see is the only meeting
// place.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "kernel/scan_points.h"
#include "photrak/options.h"
#include "photrak/session.h"

namespace photrak {

/// Part `part` of `parts`, from 1: neighboring points.
struct ShardNumber {
    std::int64_t part = 1, parts = 1;
};
/// "K/N". A text that says what is wrong, or nothing.
std::optional<std::string> ParseShard(std::string_view text, ShardNumber& shard);
/// From the variables of Slurm, Open MPI and other launchers, SGE, PBS and LSF.
std::optional<std::string> ShardFromEnvironment(ShardNumber& shard);

/// Where in DIR the outcomes are.
std::string PointsFolder(const std::string& directory);

/// A hash of all that the results of a loaded and prepared scan follow from: program, topology with
/// its SuperBlocks, values and parameter files of the command line, sweeps, names, and the files
/// that text parameters name.
std::string ScanHash(const Session& session, const CommandOptions& options);

/// What a scan that is shared tells at its end.
struct SharedScan : ScanPoints {
    /// False after a report: something of it was not done.
    virtual bool Conclude() = 0;
};
/// Runs the points of a shard, none beyond `last`; with `resume` those without an outcome of the
/// same hash.
struct ShardPlan {
    ShardNumber shard;
    bool resume = false, quiet = false;
    std::int64_t last = std::numeric_limits<std::int64_t>::max();
    std::int64_t* points = nullptr;  // where the number of all points goes, or null
};
std::unique_ptr<SharedScan> MakeShardPoints(const Session& session, std::string folder,
                                            const ShardPlan& plan, std::string hash);
/// Takes all points from their outcomes. `lacksPoints` is set when some are missing.
std::unique_ptr<SharedScan> MakeMergePoints(const Session& session, std::string folder,
                                            std::string hash, bool& lacksPoints);

}  // namespace photrak
