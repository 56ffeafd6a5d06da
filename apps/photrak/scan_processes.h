// Scans by several processes: a shard, all shards of this machine at once, the merge.
#pragma once

#include "photrak/options.h"
#include "photrak/simulation.h"

namespace photrak {

/// One part of the scan, into the folder of --out.
int RunShard(const CommandOptions& options, const SimulationKind& kind);
/// All points from the folder of --merge; results go there, or to --out.
int MergeShards(const CommandOptions& options, const SimulationKind& kind);
/// --jobs: a process for each part, then the merge.
int ScanByProcesses(const CommandOptions& options, const SimulationKind& kind);
/// --dry-run: points, and size, time and memory estimated from the first two of them.
int EstimateScan(const CommandOptions& options, const SimulationKind& kind);

}  // namespace photrak
