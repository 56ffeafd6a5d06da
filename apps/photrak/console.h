// The program's face on a terminal: progress on standard error, boxes as lines, Ctrl-C as the stop
// request of the run.
#pragma once

#include <string>
#include <string_view>

#include "kernel/workspace.h"
#include "platform/host.h"

namespace photrak {

enum class Progress { Silent, Shown };

/// Messages on standard error. On a terminal the status text is one line that rewrites itself,
/// otherwise each text is a line of its own. An error box is kept for the command, which prints the
/// whole text; a question is answered with no. While it exists it is the host's.
class ConsoleMessages : public Messages {
  public:
    explicit ConsoleMessages(Progress progress);
    ~ConsoleMessages() override;
    void ShowStatusText(std::string_view text) override;
    void ErrorBox(std::string_view text, std::string_view title) override;
    void InfoBox(std::string_view text, std::string_view title) override;
    bool QueryBox(std::string_view text, std::string_view title) override;

    /// Clears the rewriting line before other output.
    void EndStatusLine();
    const std::string& ErrorText() const { return errorText_; }
    /// "component 'NAME' of type 'TYPE'" after the run's latest status text that tells one.
    const std::string& LatestComponent() const { return latestComponent_; }

  private:
    Progress progress_;
    bool terminal_;
    bool lineOpen_ = false;
    std::string errorText_, latestComponent_;
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
