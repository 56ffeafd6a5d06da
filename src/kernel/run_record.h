// What a run leaves for whoever started it: the names of its result files and the latest readings
// of its testers. One record for the process, as there is one working directory that results go
// into; the runs inside a run write into it too.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "base/status.h"

namespace photrak {

struct Node;
struct SigRecord;
struct Workspace;

/// Names, each once, in the order in which they came.
class NameList {
  public:
    void Add(const std::string& name) {
        if (known_.insert(name).second) names_.push_back(name);
    }
    bool Has(const std::string& name) const { return known_.contains(name); }
    const std::vector<std::string>& Names() const { return names_; }

  private:
    std::vector<std::string> names_;
    std::unordered_set<std::string> known_;  // the same, for the search
};

struct BerReading {
    std::string component;
    double BER = 0.0, Q = 0.0;        // 1 and 0 without a result
    double level = 0.0;               // decision level in use, V
    double offset = 0.0;              // decision time after the start of a bit, s
    std::int32_t loop = 0;            // iteration of the innermost open loop, 0 outside of loops
    bool found = true;                // false: no eye, and no result
    Status status = Status::Success;  // of the tester
    std::size_t after = 0;            // result files that the run had written before
};

/// What testers of the outermost topology do with their curves and tables: write them with each
/// reading; leave that to whoever merges the points; take readings from there; write the curve of
/// all readings.
enum class TesterWork { Write, Leave, Take, Finish };

/// Follows a run of the outermost topology.
class RunObserver {
  public:
    virtual ~RunObserver() = default;
    /// A pass has ended, for the present coordinates in the options; symbols, parameters and the
    /// readings of the point still stand. Not called for a pass that was stopped on request.
    virtual void PointDone(const Workspace& workspace, Status point) = 0;
    /// A block has stored a signal on a node.
    virtual void SignalStored(const Workspace& workspace, const Node& node,
                              const SigRecord& record) = 0;
};

/// A value that a limit has moved: the line of text that told it, and what that leaves out.
struct ClampNote {
    std::string told, parameter, value, limit, unit;
    bool isBelow = false;
};

struct RunRecord {
    static constexpr std::size_t mostClamps = 64;
    std::vector<ClampNote> clamps;  // since warnings were last shown

    NameList written;                  // result files
    NameList failed;                   // "'NAME': REASON" of those that could not be written whole
    std::vector<BerReading> readings;  // in the order in which the testers first ran
    std::vector<BerReading> ofPoint;   // all of the present pass; loops take several
    Status point = Status::Success;    // the worst of the present pass's blocks
    std::int64_t points = 0;           // passes of the outermost topology that have ended
    RunObserver* observer = nullptr;   // borrowed, or null
    NameList appended;                 // those result files that are added to
    bool startsAnew = false;           // what an earlier run has added to such files is dropped
    TesterWork testers = TesterWork::Write;
    const BerReading* taken = nullptr;  // of TesterWork::Take
    bool drewNoise = false;             // a block took from the random sources while it ran
    bool viewerMissing = false;         // a plot was to be shown, and no viewer started

    /// Takes the place of the component's present reading.
    void TakeReading(const BerReading& reading);
    /// A pass begins.
    void BeginPoint() {
        ofPoint.clear();
        point = Status::Success;
    }
};

/// What to tell the user, once, when the viewer was missing.
inline constexpr std::string_view viewerMissingText =
    "'vistrax', which shows plots, is not on the PATH, or there is no display; 'photrak "
    "plot FILE -o OUT.svg' draws the command files that were written";

RunRecord& CurrentRun();
/// An empty record, at the start of a run.
void ResetRunRecord();

}  // namespace photrak
