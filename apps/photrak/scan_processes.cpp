// Processes are this program again, with the words of its own command line.
#include "photrak/scan_processes.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "base/text.h"
#include "drawing/number_text.h"
#include "kernel/run_progress.h"
#include "kernel/run_record.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/scan_shards.h"
#include "photrak/scratch_folder.h"
#include "platform/memory_shortage.h"
#include "results/point_file.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

bool MakeFolder(const std::string& path) {
    std::error_code failed;
    fs::create_directories(path, failed);
    if (!failed) return true;
    Report("error", Concat("cannot make the folder '", path, "': ", failed.message()));
    return false;
}

// --- The words of the processes ---

std::vector<std::string> OwnWords() {
    std::string text, reason;
    std::vector<std::string> words;
    if (!ReadWholeFile("/proc/self/cmdline", text, reason)) return words;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\0', at), text.size());
        words.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return words;
}

/// Options that are for the one process that shares the scan out.
struct OwnOption {
    std::string_view name;
    bool hasValue;
};
constexpr OwnOption ownOptions[] = {
    {"-j", true},       {"--jobs", true},     {"--out", true},       {"--table", true},
    {"--json", false},  {"--report", false},  {"--progress", true},  {"--verbose", false},
    {"--quiet", false}, {"--dry-run", false}, {"--max-memory", true}};

/// The command line without those, up to a "--"; what follows stays.
std::vector<std::string> WordsToHandOn() {
    std::vector<std::string> words = OwnWords(), kept;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string_view name = std::string_view(words[i]).substr(0, words[i].find('='));
        const auto own = std::ranges::find(ownOptions, name, &OwnOption::name);
        if (own == std::end(ownOptions)) {
            kept.push_back(words[i]);
        } else if (own->hasValue && name.size() == words[i].size()) {
            ++i;
        }
    }
    return kept;
}

/// The shard's options go before the operands, which "--" may guard.
std::vector<std::string> ShardWords(const std::string& folder, ShardNumber shard) {
    std::vector<std::string> words = WordsToHandOn();
    const std::string number = Concat(shard.part, "/", shard.parts);
    const std::vector<std::string> more = {"--shard", number, "--out", folder, "--quiet"};
    words.insert(words.begin() + std::min<std::ptrdiff_t>(2, std::ssize(words)), more.begin(),
                 more.end());
    return words;
}

// --- The processes ---

/// What it says of itself goes to a file: the merge tells what became of its points.
pid_t StartShard(const std::vector<std::string>& words, const std::string& errors) {
    std::vector<char*> texts;
    for (const std::string& word : words) texts.push_back(const_cast<char*>(word.c_str()));
    texts.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t child = -1;
    const int result =
        posix_spawn(&child, "/proc/self/exe", &actions, nullptr, texts.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    NoteIfShortage(result);
    return result == 0 ? child : -1;
}

std::int64_t CountPoints(const std::string& folder) {
    std::error_code ignored;
    const fs::directory_iterator entries(folder, ignored);
    return std::ranges::count_if(entries, [](const fs::directory_entry& entry) {
        return entry.path().extension() == ".point";
    });
}

/// Children that are asked to end when this process is.
class Crew {
  public:
    bool Start(const std::vector<std::string>& words, const std::string& errors) {
        const pid_t child = StartShard(words, errors);
        if (child > 0) running_.push_back(child);
        return child > 0;
    }
    /// Until all have ended; `look` is called a hundred times a second.
    template <class Look>
    void Wait(const std::atomic<std::int16_t>& stop, Look look) {
        bool asked = false;
        while (!running_.empty()) {
            std::erase_if(running_, [](pid_t child) {
                int state = 0;
                return ::waitpid(child, &state, WNOHANG) != 0;
            });
            if (stop && !asked) End();
            asked = asked || stop;
            look();
            std::this_thread::sleep_for(std::chrono::milliseconds(running_.empty() ? 0 : 10));
        }
    }
    void End() {
        for (const pid_t child : running_) ::kill(child, SIGTERM);
    }

  private:
    std::vector<pid_t> running_;
};

int StoppedStatus(bool kept) {
    Report("note", kept ? "stopped on request; the points that are done are kept, --resume goes on"
                        : "stopped on request; with --out DIR the points that are done are kept");
    return exitStatus::stoppedBase + StopOnSignal::Received();
}

std::string ErrorsOf(const std::string& folder, std::int64_t part) {
    return Concat(folder, "/.part-", part, ".txt");
}

/// What the first process of those that said something has said, once.
void TellErrors(const std::string& folder, std::int64_t parts) {
    bool told = false;
    for (std::int64_t part = 1; part <= parts; ++part) {
        std::string text, reason;
        const std::string file = ErrorsOf(folder, part);
        if (!told && ReadWholeFile(file, text, reason) && !text.empty()) {
            WriteError(text);
            told = true;
        }
    }
}

void ForgetErrors(const std::string& folder, std::int64_t parts) {
    std::error_code ignored;
    for (std::int64_t part = 1; part <= parts; ++part) fs::remove(ErrorsOf(folder, part), ignored);
}

/// A folder of points holds the results of one scan: a merge that was cut off leaves nothing that
/// the next one would add to.
void BeginLogAnew(const std::string& folder) {
    std::error_code ignored;
    fs::remove(fs::path(folder) / "log.txt", ignored);
}

/// Runs all parts. Nothing: they are done; else an exit status.
std::optional<int> RunParts(const CommandOptions& options, const std::string& folder, bool kept) {
    SimOptions noRun;
    const StopOnSignal stop(noRun);
    Crew crew;
    for (std::int64_t part = 1; part <= options.jobs; ++part) {
        if (crew.Start(ShardWords(folder, {part, options.jobs}), ErrorsOf(folder, part))) continue;
        Report("error", "cannot start a process for a part of the scan");
        noRun.stop = 1;
        break;
    }
    const bool shows = StyleOf(options.progress, options.quiet) == ProgressStyle::Rewriting;
    int looks = 0;
    crew.Wait(noRun.stop, [&] {
        constexpr int looksBetween = 50;
        if (shows && ++looks % looksBetween == 0)
            WriteError(Concat("\r", CountPoints(PointsFolder(folder)), " points done\x1b[K"));
    });
    if (shows && looks >= 50) WriteError("\r\x1b[K");
    if (StopOnSignal::Received()) return StoppedStatus(kept);
    return std::nullopt;
}

std::string FolderOf(const std::string& file) {
    const fs::path parent = fs::path(file).parent_path();
    return parent.empty() ? "." : parent.string();
}

/// Before the process id in the names of the folders that the shards of this machine work in.
std::string WorkPrefix() {
    char host[256] = {};
    if (::gethostname(host, sizeof host - 1) != 0) return ".work-";
    std::string name(host);
    std::ranges::replace(name, '/', '_');
    return Concat(".work-", name, "-");
}

/// Takes away what killed shards of this machine left.
void SweepWorkFolders(const std::string& folder) {
    const std::string prefix = WorkPrefix();
    std::error_code ignored;
    std::vector<fs::path> left;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, ignored)) {
        const std::string name = entry.path().filename().string();
        if (!name.starts_with(prefix)) continue;
        const std::optional<std::int32_t> owner =
            WholeInt(std::string_view(name).substr(prefix.size()));
        if (owner && *owner > 0 && ::kill(*owner, 0) != 0 && errno == ESRCH) {
            left.push_back(entry.path());
        }
    }
    for (const fs::path& path : left) fs::remove_all(path, ignored);
}

std::string ScratchName(const std::string& folder, std::string_view what) {
    return (fs::path(folder) / Concat(".photrak-", what, "-", ::getpid())).string();
}

}  // namespace

int RunShard(const CommandOptions& options, const SimulationKind& kind) {
    ShardNumber shard;
    const auto problem =
        options.shard == "auto" ? ShardFromEnvironment(shard) : ParseShard(options.shard, shard);
    if (problem || options.out.empty()) {
        Report("error", problem.value_or("--shard wants '--out DIR', a folder that all parts see"));
        return exitStatus::usage;
    }
    if (!options.table.empty() || options.report) {
        Report("error", "a part of a scan has no table and no page; --merge writes them");
        return exitStatus::usage;
    }
    const std::string points = PointsFolder(options.out);
    if (!MakeFolder(points)) return exitStatus::failed;
    SweepWorkFolders(options.out);
    const ScratchFolder work((fs::path(options.out) / Concat(WorkPrefix(), ::getpid())).string());
    CommandOptions part = options;
    part.out = work.Path();
    SimulationKind sharing = kind;
    sharing.points = [&](const Session& session, const CommandOptions& given) {
        return MakeShardPoints(session, points,
                               {.shard = shard, .resume = options.resume, .quiet = options.quiet},
                               ScanHash(session, given));
    };
    return SimulateTopology(part, sharing);
}

int MergeShards(const CommandOptions& options, const SimulationKind& kind) {
    const std::string points = PointsFolder(options.merge);
    if (!fs::is_directory(points)) {
        Report("error", Concat("--merge '", options.merge, "': there are no points of a scan"));
        return exitStatus::failed;
    }
    CommandOptions merged = options;
    if (merged.out.empty()) merged.out = options.merge;
    bool lacksPoints = false;
    SimulationKind merging = kind;
    if (merged.out == options.merge) BeginLogAnew(merged.out);
    merging.points = [&](const Session& session, const CommandOptions& given) {
        CurrentRun().startsAnew = given.out == given.merge;
        return MakeMergePoints(session, points, ScanHash(session, given), lacksPoints);
    };
    return SimulateTopology(merged, merging);
}

int ScanByProcesses(const CommandOptions& options, const SimulationKind& kind) {
    const bool kept = !options.out.empty();
    const ScratchFolder scratch(ScratchName(FolderOf(options.file), "scan"));
    const std::string folder = kept ? options.out : scratch.Path();
    if (options.resume && !kept) {
        Report("error", "--resume wants '--out DIR', where the points are");
        return exitStatus::usage;
    }
    if (!MakeFolder(PointsFolder(folder))) return exitStatus::failed;
    if (const auto status = RunParts(options, folder, kept)) return *status;
    const std::string points = PointsFolder(folder);
    bool lacksPoints = false;
    SimulationKind merging = kind;
    if (kept) BeginLogAnew(folder);
    merging.points = [&](const Session& session, const CommandOptions& given) {
        CurrentRun().startsAnew = kept;
        return MakeMergePoints(session, points, ScanHash(session, given), lacksPoints);
    };
    const int status = SimulateTopology(options, merging);
    if (lacksPoints) TellErrors(folder, options.jobs);
    ForgetErrors(folder, options.jobs);
    return status;
}

namespace {

/// What the first points of a scan took.
struct Trial {
    std::int64_t points = 0;
    double seconds[2] = {};
    std::uintmax_t bytes[2] = {};
    long peakKilobytes = 0;
};

/// In a process of its own, so that its memory is that of the scan: the number of points goes to
/// `pipe`, the outcomes to `points`.
int RunTrial(const CommandOptions& options, const SimulationKind& kind, const std::string& work,
             const std::string& points, int pipe) {
    CommandOptions trial = options;
    trial.out = work;
    trial.noCommands = trial.quiet = true;  // an estimate starts nothing
    trial.table.clear();
    trial.report = false;
    std::int64_t all = 0;
    SimulationKind sharing = kind;
    sharing.points = [&](const Session& session, const CommandOptions&) {
        return MakeShardPoints(session, points,
                               {.shard = {}, .quiet = true, .last = 2, .points = &all}, "trial");
    };
    const int status = SimulateTopology(trial, sharing);
    const bool told = ::write(pipe, &all, sizeof all) == static_cast<ssize_t>(sizeof all);
    return told ? status : exitStatus::failed;
}

/// False if the trial failed, which it has told.
bool TryPoints(const CommandOptions& options, const SimulationKind& kind, const std::string& folder,
               Trial& trial) {
    const std::string points = PointsFolder(folder);
    int ends[2] = {};
    if (!MakeFolder(points) || ::pipe2(ends, O_CLOEXEC) != 0) return false;
    const pid_t child = ::fork();
    if (child == 0) ::_exit(RunTrial(options, kind, folder + "/work", points, ends[1]));
    ::close(ends[1]);
    int state = 0;
    rusage usage{};
    const bool ended = child > 0 && ::wait4(child, &state, 0, &usage) == child;
    const ssize_t got = ::read(ends[0], &trial.points, sizeof trial.points);
    ::close(ends[0]);
    trial.peakKilobytes = usage.ru_maxrss;
    for (std::int64_t point = 1; point <= std::min<std::int64_t>(trial.points, 2); ++point) {
        std::string text, reason;
        PointFile file;
        if (!ReadWholeFile(points + PointFileName(point), text, reason) ||
            !ReadPointFile(text, file, reason)) {
            return false;
        }
        trial.seconds[point - 1] = file.seconds;
        for (const PointFile::Written& written : file.files)
            trial.bytes[point - 1] += written.text.size();
    }
    return ended && got == static_cast<ssize_t>(sizeof trial.points) && WIFEXITED(state) &&
           WEXITSTATUS(state) == exitStatus::success;
}

}  // namespace

int EstimateScan(const CommandOptions& options, const SimulationKind& kind) {
    const ScratchFolder scratch = PrivateFolder("estimate");
    Trial trial;
    if (!TryPoints(options, kind, scratch.Path(), trial)) {
        Report("error", Concat(options.file, ": the first points could not be tried"));
        return exitStatus::failed;
    }
    const double more = static_cast<double>(trial.points - 1);
    const double seconds = trial.seconds[0] + more * trial.seconds[1];
    const double bytes =
        static_cast<double>(trial.bytes[0]) + more * static_cast<double>(trial.bytes[1]);
    constexpr double kilobyte = 1024.0;
    constexpr int digits = 2;
    const std::string time =
        seconds < 60.0 ? Concat(FormatSignificant(seconds, digits), " s") : DurationText(seconds);
    WriteOut(Concat(
        "points:  ", trial.points, "\ntime:    about ", time, " by one process (first point ",
        FormatSignificant(trial.seconds[0], digits), " s, each more ",
        FormatSignificant(trial.seconds[1], digits), " s)\nresults: about ",
        EngineeringText(bytes, "B", digits), " beside curves and tables\nmemory:  about ",
        EngineeringText(kilobyte * static_cast<double>(trial.peakKilobytes), "B", digits),
        " for each process\n"));
    return exitStatus::success;
}

}  // namespace photrak
