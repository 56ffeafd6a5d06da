// The program's face on a terminal: progress on standard error, boxes as lines, Ctrl-C as the stop
// request of the run.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "kernel/workspace.h"
#include "photrak/progress.h"
#include "platform/host.h"
#include "platform/progress.h"

namespace photrak {

/// Messages on standard error, progress in the style asked for. An error box is kept for the
/// command, which prints the whole text; a question is answered with no. While it exists it is the
/// host's.
class ConsoleMessages : public Messages, public ProgressSink {
  public:
    explicit ConsoleMessages(ProgressStyle style = ProgressStyle::Silent);
    ~ConsoleMessages() override;
    void ShowStatusText(std::string_view text) override;
    void ShowFraction(double fraction) override;
    void ErrorBox(std::string_view text, std::string_view title) override;
    void InfoBox(std::string_view text, std::string_view title) override;
    bool QueryBox(std::string_view text, std::string_view title) override;
    /// Each text once, with the point of a scan where it first came; ToldAgain() tells of the rest.
    void ShowWarnings(std::string_view component, std::string_view text) override;
    void ShowNote(std::string_view text) override;

    /// The run under way, borrowed, and where its parameters have their values: "FILE:LINE" by
    /// component and parameter.
    using Places = std::map<std::pair<std::string, std::string>, std::string>;
    void Follow(const Workspace* workspace, const Places* places) {
        workspace_ = workspace;
        places_ = places;
    }
    /// How often warnings came again, and forgets them.
    void TellRepeats();

    /// Clears the rewriting line before other output.
    void EndStatusLine();
    const std::string& ErrorText() const { return errorText_; }
    /// "component 'NAME' of type 'TYPE'" after the run's latest status text that tells one.
    const std::string& LatestComponent() const { return latestComponent_; }

  private:
    void ShowProgress(double fraction);

    ProgressStyle style_;
    ProgressText progress_;
    bool lineOpen_ = false;
    std::string Point() const;
    std::string WithNote(std::string_view component, std::string_view line) const;

    std::string errorText_, latestComponent_;
    const Workspace* workspace_ = nullptr;
    const Places* places_ = nullptr;
    std::map<std::string, int> warnings_;  // times told
    std::set<std::string> notes_;          // each told once
    HostScope scope_;
};

/// While one exists, the first SIGINT, SIGTERM or SIGHUP sets the run's stop word; a second one has
/// its usual effect. A SIGHUP that the caller ignores stays ignored.
class StopOnSignal {
  public:
    explicit StopOnSignal(SimOptions& options);
    ~StopOnSignal();
    StopOnSignal(const StopOnSignal&) = delete;
    StopOnSignal& operator=(const StopOnSignal&) = delete;
    /// The signal that asked to stop, 0 without one.
    static int Received();
};

void WriteOut(std::string_view text);
void WriteError(std::string_view text);
/// Each line of `text` on standard error after "photrak: KIND: "; nothing for an empty text.
void Report(std::string_view kind, std::string_view text);

}  // namespace photrak
