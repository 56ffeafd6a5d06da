// photrak scan: the Parameter Scan command without a display. Sweeps and statistical runs are those
// of the topology, each replaced by the command line's if it has one.

#include "base/text.h"
#include "kernel/sweep_settings.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/memory_limit.h"
#include "photrak/scan_processes.h"
#include "photrak/simulation.h"

namespace photrak {
namespace {

void Replace(SimOptions& simOptions, const SweepFields& fields,
             const std::optional<SweepOption>& sweep) {
    if (!sweep) return;
    simOptions.*fields.variable = sweep->name;
    simOptions.*fields.start = sweep->start;
    simOptions.*fields.stop = sweep->stop;
    simOptions.*fields.step = sweep->step;
}

struct ScanLoop {
    std::string_view name, option;
    std::int16_t modeBit;
    std::string SimOptions::*tag;
    std::optional<std::string> CommandOptions::*given;
};
constexpr ScanLoop scanLoops[] = {
    {"inner sweep", "--inner-tag", simMode::innerSweep, &SimOptions::SCANMETA1,
     &CommandOptions::innerTag},
    {"outer sweep", "--outer-tag", simMode::outerSweep, &SimOptions::SCANMETA2,
     &CommandOptions::outerTag},
    {"statistical runs", "--run-tag", simMode::statistical, &SimOptions::RUNMETA,
     &CommandOptions::runTag},
};

/// Loops without a tag, whose passes would overwrite each other's plots. The points of a sweep are
/// counted when it runs, after all symbols.
void TellOfMissingTags(const SimOptions& simOptions) {
    if (simOptions.PLOTTING == DoNotPlot) return;
    for (const ScanLoop& loop : scanLoops) {
        const bool isSweep = loop.modeBit != simMode::statistical;
        const bool once = !isSweep && simOptions.NUMRUNSTODO < 2;
        if (!(simOptions.mode & loop.modeBit) || once || !(simOptions.*loop.tag).empty()) continue;
        Report("note", Concat("no tag for the ", loop.name, ": plots are skipped",
                              isSweep ? " if it has more than one point; " : "; ", loop.option,
                              " gives one"));
    }
}

void TellOfSweep(const SimOptions& simOptions, const SweepFields& fields) {
    if (!(simOptions.mode & fields.modeBit)) return;
    WriteError(Concat("photrak: ", fields.word, " sweep: ", simOptions.*fields.variable, " from ",
                      simOptions.*fields.start, " to ", simOptions.*fields.stop, " by ",
                      simOptions.*fields.step, "\n"));
}

void PrepareScan(SimOptions& simOptions, const CommandOptions& options) {
    Replace(simOptions, innerSweepFields, options.inner);
    Replace(simOptions, outerSweepFields, options.outer);
    if (options.runs) simOptions.NUMRUNSTODO = *options.runs;
    for (const ScanLoop& loop : scanLoops) {
        if (options.*loop.given) simOptions.*loop.tag = *(options.*loop.given);
    }
    if (options.prefix) simOptions.SCANPREFIX = simOptions.OUTPUTPREFIX = *options.prefix;
    AskForScan(simOptions);
    if (!(simOptions.mode & simMode::anyScan)) {
        Report("note", "no sweep and no statistical runs are asked for; simulating once");
    }
    TellOfMissingTags(simOptions);
    if (!options.verbose) return;
    TellOfSweep(simOptions, outerSweepFields);
    TellOfSweep(simOptions, innerSweepFields);
}

}  // namespace

int ScanCommand(const CommandOptions& options) {
    CommandOptions scanning = options;
    scanning.scans = true;
    const SimulationKind kind{"Parameter Scan", PrepareScan};
    const bool isShared = options.dryRun || options.jobs > 1 || options.resume ||
                          !options.shard.empty() || !options.merge.empty();
    if (isShared && options.file == "-") {
        Report("error",
               "a scan that is shared wants a topology in a file, which all processes read");
        return exitStatus::usage;
    }
    if (options.dryRun) return EstimateScan(scanning, kind);
    if (options.merge.empty()) {
        if (const auto refused = RefuseByMemory(scanning, kind)) return *refused;
    }
    if (!options.shard.empty()) return RunShard(scanning, kind);
    if (!options.merge.empty()) return MergeShards(scanning, kind);
    if (options.jobs > 1 || options.resume) return ScanByProcesses(scanning, kind);
    return SimulateTopology(scanning, kind);
}

}  // namespace photrak
