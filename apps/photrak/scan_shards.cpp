// A shard works in a folder of its own, so that names of result files cannot meet; after each point
// it packs what the point wrote.
#include "photrak/scan_shards.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "base/hash.h"
#include "base/log.h"
#include "base/text.h"
#include "kernel/parameters.h"
#include "kernel/result_names.h"
#include "kernel/run_progress.h"
#include "photrak/console.h"
#include "results/point_file.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t mostParts = 1'000'000;

bool ReadWhole(std::string_view text, std::int64_t& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

std::optional<std::int64_t> Variable(const char* name) {
    const char* text = name ? std::getenv(name) : nullptr;
    std::int64_t value = 0;
    return text && ReadWhole(text, value) ? std::optional(value) : std::nullopt;
}

/// A launcher's variables: the number of the process, and how many there are, or the last number.
struct Launcher {
    const char *index, *first, *count, *last, *step;
};
constexpr Launcher arrays[] = {
    {"SLURM_ARRAY_TASK_ID", "SLURM_ARRAY_TASK_MIN", nullptr, "SLURM_ARRAY_TASK_MAX",
     "SLURM_ARRAY_TASK_STEP"},
    {"SGE_TASK_ID", "SGE_TASK_FIRST", nullptr, "SGE_TASK_LAST", "SGE_TASK_STEPSIZE"},
    {"LSB_JOBINDEX", nullptr, nullptr, "LSB_JOBINDEX_END", "LSB_JOBINDEX_STEP"},
    {"PBS_ARRAY_INDEX", nullptr, "PHOTRAK_SHARDS", nullptr, nullptr},
    {"PBS_ARRAYID", nullptr, "PHOTRAK_SHARDS", nullptr, nullptr},
};
constexpr Launcher processes[] = {
    {"OMPI_COMM_WORLD_RANK", nullptr, "OMPI_COMM_WORLD_SIZE", nullptr, nullptr},
    {"PMI_RANK", nullptr, "PMI_SIZE", nullptr, nullptr},
    {"SLURM_PROCID", nullptr, "SLURM_NTASKS", nullptr, nullptr},
};

/// Part and parts, if the launcher's variables are there and make sense. Ranks count from 0, arrays
/// from their first number, which is 1 without a variable for it.
std::optional<ShardNumber> From(const Launcher& launcher, std::int64_t from) {
    const auto index = Variable(launcher.index);
    if (!index || *index < 0) return std::nullopt;
    const std::int64_t first = Variable(launcher.first).value_or(from);
    const std::int64_t step = std::max<std::int64_t>(Variable(launcher.step).value_or(1), 1);
    const auto last = Variable(launcher.last);
    const auto count = last ? std::optional((*last - first) / step + 1) : Variable(launcher.count);
    if (!count) return std::nullopt;
    const ShardNumber shard{(*index - first) / step + 1, *count};
    if (shard.part < 1 || shard.part > shard.parts || shard.parts > mostParts) return std::nullopt;
    return shard;
}

std::optional<ShardNumber> FirstOf(std::span<const Launcher> launchers, std::int64_t from) {
    for (const Launcher& launcher : launchers) {
        if (const auto shard = From(launcher, from)) return shard;
    }
    return std::nullopt;
}

// --- What results follow from ---

void AddFile(Hash& hash, const std::string& name) {
    std::string text, reason;
    if (!ReadWholeFile(name, text, reason)) text = "no file";
    hash.Add(name).Add(text);
}

void AddNamedFiles(Hash& hash, const Session& session) {
    for (const auto& component : session.workspace->components) {
        for (const Parameter& parameter : Items<const Parameter>(component->parameters)) {
            const std::string name = parameter.value ? parameter.value : "";
            if (parameter.type == StringType && !name.empty()) AddFile(hash, name);
        }
        if (component->superBlockFile.empty()) continue;
        for (const char* extension : {".top", ".dts"}) {
            AddFile(hash, NestedFile(*component, extension, *session.workspace, session.catalogue));
        }
    }
}

// --- A shard ---

/// Keeps the warnings of the present point beside passing on what is told of the run.
class PointMessages : public Messages {
  public:
    PointMessages() : former_(*CurrentHost().messages), scope_(HostWith(*this)) {}
    void ShowStatusText(std::string_view text) override { former_.ShowStatusText(text); }
    void ErrorBox(std::string_view text, std::string_view title) override {
        former_.ErrorBox(text, title);
    }
    void InfoBox(std::string_view text, std::string_view title) override {
        former_.InfoBox(text, title);
    }
    void ShowNote(std::string_view text) override { former_.ShowNote(text); }
    bool QueryBox(std::string_view text, std::string_view title) override {
        return former_.QueryBox(text, title);
    }
    void ShowWarnings(std::string_view component, std::string_view text) override {
        warnings.push_back({std::string(component), std::string(text), CurrentRun().clamps});
    }

    std::vector<PointFile::Warning> warnings;

  private:
    static Host HostWith(Messages& messages) {
        Host host = CurrentHost();
        host.messages = &messages;
        return host;
    }
    Messages& former_;
    HostScope scope_;
};

/// Of the folder that the shard works in, not of the inputs.
std::string OwnText(const std::string& name) {
    std::string text, reason;
    return ReadWholeFile((fs::current_path() / name).string(), text, reason) ? text : std::string();
}

/// Hash and outcome of a point, without what it wrote; nothing for a file that is not there or not
/// whole.
std::optional<PointFile> ReadPoint(const std::string& folder, std::int64_t point) {
    std::string text, reason;
    PointFile file;
    if (!ReadWholeFile(folder + PointFileName(point), text, reason)) return std::nullopt;
    if (!ReadPointFile(text, file, reason) || file.point != point) return std::nullopt;
    return file;
}

class ShardPoints : public SharedScan {
  public:
    ShardPoints(const SimOptions& options, std::string folder, const ShardPlan& plan,
                std::string hash)
        : options_(options),
          folder_(std::move(folder)),
          shard_(plan.shard),
          plan_(plan),
          hash_(std::move(hash)) {}

    Part PartOf(std::int64_t point) override {
        CurrentRun().testers = TesterWork::Leave;
        const std::int64_t points = PositionOf(options_).points;
        const std::int64_t first = (shard_.part - 1) * points / shard_.parts + 1;
        const std::int64_t last = shard_.part * points / shard_.parts;
        if (plan_.points) *plan_.points = points;
        if (point < first || point > std::min(last, plan_.last)) return Part::PassesOver;
        if (!plan_.resume) return Part::Runs;
        const auto known = ReadPoint(folder_, point);
        if (!known || known->hash != hash_ || known->outcome.status == Status::Error)
            return Part::Runs;
        ++known_;
        return Part::PassesOver;
    }

    void Begin(std::int64_t) override {
        RunRecord& record = CurrentRun();
        Forget(record);
        record.drewNoise = false;
        messages_.warnings.clear();
        std::error_code ignored;
        fs::remove("log.txt", ignored);
        start_ = std::chrono::steady_clock::now();
    }

    void End(std::int64_t point, const PointOutcome& outcome) override {
        RunRecord& record = CurrentRun();
        PointFile file;
        file.hash = hash_;
        file.point = point;
        file.seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
        file.drewNoise = record.drewNoise;
        file.outcome = outcome;
        file.log = OwnText("log.txt");
        file.warnings = messages_.warnings;
        file.readings = record.ofPoint;
        const auto& appended = record.appended.Names();
        for (const std::string& name : record.written.Names()) {
            const bool appends = std::ranges::find(appended, name) != appended.end();
            file.files.push_back({name, OwnText(name), appends});
        }
        std::string reason;
        const std::string path = folder_ + PointFileName(point);
        if (!record.failed.Names().empty()) {
            failure_ = Concat("point ", point, ": could not write ", record.failed.Names().front());
        } else if (!WriteFileAtOnce(path, PointFileText(file), reason)) {
            failure_ = Concat("could not write '", path, "': ", reason);
        }
        drewNoise_ = drewNoise_ || file.drewNoise;
        ++done_;
        Forget(record);
    }

    PointOutcome Take(std::int64_t, const std::function<void(const BerReading&)>&) override {
        return {};
    }

    bool Conclude() override {
        if (!failure_.empty()) {
            Report("error", failure_);
            return false;
        }
        if (plan_.quiet) return true;
        Report("note", Concat("part ", shard_.part, " of ", shard_.parts, ": ", done_,
                              done_ == 1 ? " point run" : " points run",
                              known_ ? Concat(", ", known_, " known") : std::string()));
        if (drewNoise_) Report("note", noiseText);
        return true;
    }

    static constexpr std::string_view noiseText =
        "blocks drew noise while they ran: each point has noise of its own here, so that results "
        "do not depend on the number of parts, but differ from those of a scan by one process";

  private:
    /// Files of a point that is packed; what later points add to begins anew.
    static void Forget(RunRecord& record) {
        std::error_code ignored;
        for (const std::string& name : record.appended.Names()) fs::remove(name, ignored);
        record.written = {};
        record.appended = {};
        record.readings.clear();
    }

    const SimOptions& options_;
    std::string folder_;
    ShardNumber shard_;
    ShardPlan plan_;
    std::string hash_, failure_;
    PointMessages messages_;
    std::chrono::steady_clock::time_point start_;
    std::int64_t done_ = 0, known_ = 0;
    bool drewNoise_ = false;
};

// --- The merge ---

class MergePoints : public SharedScan {
  public:
    MergePoints(const SimOptions& options, std::string folder, std::string hash, bool& lacksPoints)
        : options_(options),
          folder_(std::move(folder)),
          hash_(std::move(hash)),
          lacksPoints_(lacksPoints) {}

    /// Looks at all points before the first is taken: a merge writes nothing of a scan that is not
    /// whole. A run ends at the first point that failed; what comes after it may be missing.
    Part PartOf(std::int64_t point) override {
        if (point == 1) FindMissing(PositionOf(options_).points);
        return Part::Takes;
    }

    void Begin(std::int64_t) override {}
    void End(std::int64_t, const PointOutcome&) override {}

    PointOutcome Take(std::int64_t point,
                      const std::function<void(const BerReading&)>& read) override {
        if (!failure_.empty()) return {Status::Error, Status::Error, failure_};
        const std::optional<PointFile> file = ReadPoint(folder_, point);
        if (!file) {
            failure_ = Concat("ERROR: point ", point, " is gone\n");
            return {Status::Error, Status::Error, failure_};
        }
        LogText(file->log);
        TellWarnings(*file);
        drewNoise_ = drewNoise_ || file->drewNoise;
        std::size_t next = 0;
        for (std::size_t i = 0; i <= file->files.size(); ++i) {
            for (; next < file->readings.size() && file->readings[next].after <= i; ++next) {
                read(file->readings[next]);
            }
            if (i < file->files.size()) Write(file->files[i]);
        }
        return file->outcome;
    }

    bool Conclude() override {
        if (drewNoise_) Report("note", ShardPoints::noiseText);
        return failure_.empty();
    }

  private:
    void FindMissing(std::int64_t points) {
        std::int64_t missing = 0, first = 0, other = 0;
        for (std::int64_t point = 1; point <= points; ++point) {
            const std::optional<PointFile> file = ReadPoint(folder_, point);
            if (file && file->hash == hash_ && file->outcome.status == Status::Error) break;
            if (file && file->hash == hash_) continue;
            if (missing++ == 0) first = point;
            other += file.has_value();
        }
        if (missing == 0) return;
        lacksPoints_ = true;
        failure_ = Concat("ERROR: ", missing, " of ", points,
                          " points are missing, the first is point ", first);
        if (other) {
            failure_ +=
                Concat("; ", other, " are of another topology, other files, settings or program");
        }
        failure_ += "; run their parts with --resume\n";
    }

    static void TellWarnings(const PointFile& file) {
        RunRecord& record = CurrentRun();
        for (const PointFile::Warning& warning : file.warnings) {
            record.clamps = warning.clamps;
            CurrentHost().messages->ShowWarnings(warning.component, warning.text);
        }
        record.clamps.clear();
    }

    static void Write(const PointFile::Written& file) {
        std::string refused;  // a name that no point of ours has
        file.appends ? AppendResultFile(file.name, file.text, refused)
                     : WriteResultFile(file.name, file.text, refused);
        if (!refused.empty()) CurrentRun().failed.Add(refused);
    }

    const SimOptions& options_;
    std::string folder_, hash_, failure_;
    bool& lacksPoints_;
    bool drewNoise_ = false;
};

}  // namespace

std::optional<std::string> ParseShard(std::string_view text, ShardNumber& shard) {
    const std::size_t slash = text.find('/');
    const bool isRead = slash != text.npos && ReadWhole(text.substr(0, slash), shard.part) &&
                        ReadWhole(text.substr(slash + 1), shard.parts);
    if (isRead && shard.part >= 1 && shard.part <= shard.parts && shard.parts <= mostParts) {
        return {};
    }
    return Concat("--shard wants K/N with K from 1 to N, or auto, not '", text, "'");
}

std::optional<std::string> ShardFromEnvironment(ShardNumber& shard) {
    const auto array = FirstOf(arrays, 1), process = FirstOf(processes, 0);
    if (!array && !process) {
        return "--shard auto finds no variables of Slurm, MPI, SGE, PBS or LSF that make sense; "
               "PBS wants PHOTRAK_SHARDS with the number of parts";
    }
    const ShardNumber outer = array.value_or(ShardNumber{}),
                      inner = process.value_or(ShardNumber{});
    shard = {(outer.part - 1) * inner.parts + inner.part, outer.parts * inner.parts};
    return {};
}

std::string PointsFolder(const std::string& directory) {
    std::error_code failed;
    const fs::path full = fs::absolute(directory, failed);
    return ((failed ? fs::path(directory) : full) / "points").string() + "/";
}

std::string ScanHash(const Session& session, const CommandOptions& options) {
    const SimOptions& sim = *session.workspace->options;
    Hash hash;
    hash.Add(PHOTRAK_VERSION);
    AddFile(hash, session.fileName);
    for (const auto& [name, value] : options.symbols) hash.Add(name).Add(value);
    for (const auto& [component, file] : options.loadParams) {
        hash.Add(component);
        AddFile(hash, file);
    }
    for (const std::string* text :
         {&sim.INNERSWEEPVARIABLE, &sim.INNERSWEEPSTARTVAL, &sim.INNERSWEEPSTEPVAL,
          &sim.INNERSWEEPSTOPVAL, &sim.OUTERSWEEPVARIABLE, &sim.OUTERSWEEPSTARTVAL,
          &sim.OUTERSWEEPSTEPVAL, &sim.OUTERSWEEPSTOPVAL, &sim.SCANMETA1, &sim.SCANMETA2,
          &sim.RUNMETA, &sim.SCANPREFIX, &sim.OUTPUTPREFIX}) {
        hash.Add(*text);
    }
    hash.Add(Concat(sim.mode, ' ', sim.NUMRUNSTODO, ' ', sim.PLOTTING, ' ', options.noCommands));
    AddNamedFiles(hash, session);
    return hash.Text();
}

std::unique_ptr<SharedScan> MakeShardPoints(const Session& session, std::string folder,
                                            const ShardPlan& plan, std::string hash) {
    return std::make_unique<ShardPoints>(*session.workspace->options, std::move(folder), plan,
                                         std::move(hash));
}

std::unique_ptr<SharedScan> MakeMergePoints(const Session& session, std::string folder,
                                            std::string hash, bool& lacksPoints) {
    return std::make_unique<MergePoints>(*session.workspace->options, std::move(folder),
                                         std::move(hash), lacksPoints);
}

}  // namespace photrak
