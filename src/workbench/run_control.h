// The one run of the process: started from a view, on a worker thread or inline, stopped on
// request, its boxes and texts handed over to the interface thread.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "base/status.h"

namespace photrak {

struct DiagramView;
struct Processes;
struct Workbench;

/// A box or a status text of the run, waiting for the interface thread.
struct RunNote {
    enum class Kind { Status, Error, Information } kind = Kind::Status;
    std::string title, text;
};

class RunNotes {
  public:
    void Add(RunNote note);
    std::vector<RunNote> Take();

  private:
    std::mutex lock_;
    std::vector<RunNote> notes_;
};

/// How far the run is, written by its thread.
struct RunShare {
    std::atomic<double> fraction{-1.0};  // of the block under way; below 0: not known
    std::atomic<std::int64_t> point{1}, points{1};
    std::chrono::steady_clock::time_point start;
};

struct RunControl {
    bool active = false;          // from the start to the end that the interface has shown
    DiagramView* view = nullptr;  // of the run that is active
    std::string what;             // "Simulation" or "Parameter Scan"
    std::string completion;       // the line of the log at its end
    bool holds = false;      // a run stands before its first block until FinishRun (script player)
    bool launched = false;   // the worker is on its way
    bool stopAsked = false;  // by the user
    std::atomic<bool> ended{false};  // written by the worker
    Status status = Status::Success;
    RunShare share;
    RunNotes notes;
    Processes* processes = nullptr;  // of the interface thread: starts viewers for the run
    std::thread worker;
};

/// Starts a run of the view with the options as they stand: all scan flags cleared, or set by the
/// values that a scan has. A box tells if a run is on already.
void StartRun(Workbench& workbench, DiagramView& view, bool scan);
/// Run Stop Simulation: asks, then sets the stop word of the run, whichever view is in front.
void StopRun(Workbench& workbench);
/// Lets a held run go, waits for its end and shows what it told. Nothing without a run.
void FinishRun(Workbench& workbench);
/// Shows what the run has told so far, and its end if it has come; for a timer.
void PollRun(Workbench& workbench);
/// "", "Running" or "Stopping".
std::string RunStateText(const Workbench& workbench);
/// The part of the run that is done, 0 to 1; nothing without a run or where that is not known.
std::optional<double> RunShareDone(const Workbench& workbench);
/// "point 3 of 20, 0:07, 0:40 left", each where it is known; empty without a run.
std::string RunProgressText(const Workbench& workbench);

}  // namespace photrak
