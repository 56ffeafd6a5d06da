// The peak of a run grows in proportion to the length of its patterns, over what program, catalog
// and tables take. Of a scan the first point is tried.
#include "photrak/memory_limit.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "base/text.h"
#include "drawing/number_text.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/scan_shards.h"
#include "photrak/scratch_folder.h"
#include "photrak/short_patterns.h"
#include "platform/memory_shortage.h"
#include "platform/workers.h"

namespace photrak {
namespace {

constexpr double kilobyte = 1024.0;
/// What a measured peak is uncertain by: pages that are shared, or kept for later.
constexpr double noise = 1.5 * kilobyte * kilobyte;
/// Pages of its files that the program touches at its start: a child of it has them elsewhere.
constexpr double startPages = 1.2e6;
/// What a trial says of itself when memory was refused to it.
constexpr int shortOfMemory = 3;

/// What a thread may have mapped without using it, and the like.
double Slack() {
    constexpr double stack = 8.0 * kilobyte * kilobyte, more = 32.0 * kilobyte * kilobyte;
    return ThreadBudget() * stack + more;
}

/// Allocations beyond the limit fail.
void LimitMemory(double bytes) {
    rlimit limit{};
    if (::getrlimit(RLIMIT_DATA, &limit) != 0) return;
    const auto wanted = static_cast<rlim_t>(bytes + Slack());
    limit.rlim_cur = std::min(wanted, limit.rlim_max);
    ::setrlimit(RLIMIT_DATA, &limit);
}

struct Trial {
    enum class End { Well, Failed, ShortOfMemory } end = End::Failed;
    int halvings = 0;
    double bytes = 0.0;  // peak
};

/// How long the patterns are, 1 for those of the run.
double Share(const Trial& trial) {
    return std::exp2(-trial.halvings);
}

void Mute() {
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    ::dup2(nowhere, STDERR_FILENO);
}

/// Runs the first point in this process, which ends thereafter. The number of halvings goes to
/// `pipe`; `wanted` is at most as many, or -1 for as many as there can be.
[[noreturn]] void RunTrial(const CommandOptions& options, const SimulationKind& kind,
                           const std::string& folder, int wanted, int pipe) {
    CommandOptions trial = options;
    trial.out = folder + "/work";
    trial.noCommands = trial.quiet = true;  // an estimate starts nothing
    trial.table.clear();
    trial.report = trial.verbose = false;
    SimulationKind shortened = kind;
    shortened.adapt = [&](Workspace& workspace) {
        const int most = MostHalvings(workspace);
        const int halvings = wanted < 0 ? most : std::min(wanted, most);
        if (halvings > 0) HalvePatterns(workspace, halvings);
        if (::write(pipe, &halvings, sizeof halvings) < 0) ::_exit(exitStatus::failed);
    };
    if (options.scans) {
        shortened.points = [&](const Session& session, const CommandOptions&) {
            return MakeShardPoints(session, folder + "/points/",
                                   {.shard = {}, .quiet = true, .last = 1}, "trial");
        };
    }
    int status = exitStatus::failed;
    try {
        Mute();
        std::filesystem::create_directories(folder + "/points");
        LimitMemory(options.maxMemory);
        status = SimulateTopology(trial, shortened);
    } catch (const std::exception&) {
        status = exitStatus::failed;
    }
    ::_exit(ShortageCount() > 0 ? shortOfMemory : status);
}

/// Waits for the child, to which a request to stop goes on. True if it ended by itself.
bool Await(pid_t child, int& state, rusage& usage) {
    bool asked = false;
    for (;;) {
        const pid_t ended = ::wait4(child, &state, WNOHANG, &usage);
        if (ended != 0) return ended == child && WIFEXITED(state);
        if (StopOnSignal::Received() && !asked) asked = ::kill(child, SIGTERM) == 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

Trial Try(const CommandOptions& options, const SimulationKind& kind, int wanted) {
    const ScratchFolder scratch = PrivateFolder("memory");
    Trial trial;
    int ends[2] = {};
    if (::pipe2(ends, O_CLOEXEC) != 0) return trial;
    const pid_t child = ::fork();
    if (child == 0) RunTrial(options, kind, scratch.Path(), wanted, ends[1]);
    ::close(ends[1]);
    int state = 0;
    rusage usage{};
    const bool ended = child > 0 && Await(child, state, usage);
    const bool told =
        ::read(ends[0], &trial.halvings, sizeof trial.halvings) == sizeof trial.halvings;
    ::close(ends[0]);
    if (!ended || !told) return trial;
    trial.bytes = startPages + kilobyte * static_cast<double>(usage.ru_maxrss);
    if (WEXITSTATUS(state) == shortOfMemory) trial.end = Trial::End::ShortOfMemory;
    if (WEXITSTATUS(state) == exitStatus::success || WEXITSTATUS(state) == exitStatus::warnings) {
        trial.end = Trial::End::Well;
    }
    return trial;
}

struct Need {
    double bytes = 0.0, uncertainty = 0.0;
};

/// The line through two trials, at the length of the run.
Need Extrapolate(const Trial& shorter, const Trial& longer) {
    const double reach = (1.0 - Share(longer)) / (Share(longer) - Share(shorter));
    return {longer.bytes + std::max(longer.bytes - shorter.bytes, 0.0) * reach, noise * reach};
}

/// Enough to decide by, and to be told where the run is refused.
bool IsClear(const Need& need, double limit) {
    constexpr double precise = 0.05;
    return need.bytes + need.uncertainty < limit || need.uncertainty < precise * need.bytes;
}

/// Nothing where the run fails for another reason, which it tells by itself; a need above the limit
/// without a number is infinite.
std::optional<Need> Estimate(const CommandOptions& options, const SimulationKind& kind) {
    std::optional<Trial> shorter;
    std::optional<Need> need;
    for (int wanted = -1;;) {
        const Trial trial = Try(options, kind, wanted);
        if (StopOnSignal::Received()) return std::nullopt;
        if (trial.end == Trial::End::ShortOfMemory) {
            return need ? need : Need{HUGE_VAL, 0.0};
        }
        if (trial.end == Trial::End::Well) {
            if (trial.halvings == 0) return Need{trial.bytes, noise};
            if (shorter) need = Extrapolate(*shorter, trial);
            if (need && IsClear(*need, options.maxMemory)) return need;
            shorter = trial;
        }
        if (trial.halvings == 0) return std::nullopt;
        wanted = std::max(trial.halvings - 2, 0);
    }
}

void Refuse(const CommandOptions& options, double bytes) {
    constexpr int digits = 3;
    const auto text = [](double amount) { return EngineeringText(amount, "B", digits); };
    const double limit = options.maxMemory;
    const std::string need =
        std::isfinite(bytes) ? Concat("about ", text(bytes)) : Concat("more than ", text(limit));
    const std::string processes =
        options.jobs > 1 ? Concat(" in each of ", options.jobs, " processes") : std::string();
    Report("error",
           Concat(options.file, ": the run would take ", need, " of memory", processes,
                  ", and --max-memory allows ", text(limit * options.jobs),
                  options.jobs > 1 ? " for all" : "",
                  "; nothing was run. Shorter patterns (patternLength), fewer samples for each bit "
                  "(pointsPerBit), fewer channels",
                  options.jobs > 1 ? ", fewer processes (-j)" : "",
                  " or a higher --max-memory are the ways out"));
}

}  // namespace

std::optional<int> RefuseByMemory(const CommandOptions& options, const SimulationKind& kind) {
    if (options.maxMemory <= 0.0) return std::nullopt;
    if (options.file == "-") {
        Report("error", "--max-memory wants a topology in a file, which is read more than once");
        return exitStatus::usage;
    }
    SimOptions noRun;
    const StopOnSignal stop(noRun);
    CommandOptions each = options;
    each.maxMemory /= options.jobs;
    const std::optional<Need> need = Estimate(each, kind);
    if (const int signal = StopOnSignal::Received()) return exitStatus::stoppedBase + signal;
    if (need && need->bytes > each.maxMemory) {
        Refuse(each, need->bytes);
        return exitStatus::failed;
    }
    if (need && options.verbose) {
        WriteError(Concat("photrak: the run will take about ", EngineeringText(need->bytes, "B", 3),
                          " of memory\n"));
    }
    LimitMemory(each.maxMemory);
    return std::nullopt;
}

}  // namespace photrak
