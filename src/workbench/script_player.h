// Plays a script of events against the workbench without a window and prints what a user would see;
// docs/workbench-scripts.md has the language.
#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/host.h"
#include "workbench/commands.h"
#include "workbench/desktop.h"
#include "workbench/workbench.h"

namespace photrak {

/// Answers and files come from the script; what would be shown or started is noted.
class ScriptDesktop : public Desktop {
  public:
    /// The start directory, and that of the executable with the last separator.
    explicit ScriptDesktop(std::string start, std::string install = {})
        : start_(std::move(start)), install_(std::move(install)) {}

    void Box(BoxKind kind, std::string_view title, std::string_view text) override;
    Answer Query(std::string_view title, std::string_view text) override;
    std::optional<std::string> ChooseFile(const FileRequest& request) override;
    bool StartViewer(const std::string& file, const std::string& directory) override;
    bool StartEditor(const std::string& file, const std::string& directory) override;
    bool Start(const std::vector<std::string>& arguments, const std::string& directory) override;
    void ShowHelp(std::int32_t topic) override;

    /// A name relative to the start directory where it lies below it.
    std::string Shown(const std::string& path) const;
    /// The same for names within a text; below the directory of the executable they begin with
    /// $INSTALL/.
    std::string ShownText(std::string_view text) const;

    std::deque<Answer> answers;
    std::deque<std::optional<std::string>> files;
    std::vector<std::string> boxes, started;        // lines since they were printed last
    std::map<std::string, std::size_t> logPrinted;  // bytes of the log.txt of a directory
    std::string missing;                            // what a question or file dialog went without

  private:
    std::string start_, install_;
};

/// Programs that the logic below starts are listed too: a plot viewer, known by its `@FILE`, and
/// any other by its words. All of them start, and end at once with 0.
class ScriptProcesses : public Processes {
  public:
    explicit ScriptProcesses(ScriptDesktop& desktop) : desktop_(desktop) {}
    int Start(const std::vector<std::string>& arguments) override;
    int RunAndWait(const std::vector<std::string>& arguments, WindowState state,
                   const StopWord* stop) override;

  private:
    ScriptDesktop& desktop_;
};

class ScriptPlayer {
  public:
    ScriptPlayer(Workbench& workbench, ScriptDesktop& desktop)
        : workbench_(workbench), desktop_(desktop) {}

    /// Plays one line. False with the reason when it cannot be played.
    bool Play(std::string_view line, std::string& reason);
    /// What the line printed, lines with their ends; empty if it printed nothing.
    std::string TakeOutput();
    /// The run in progress goes on to its end.
    void Finish();

  private:
    using Words = std::vector<std::string>;
    struct Event {
        std::string_view word;
        std::size_t least, most;  // words after it
        bool inDialog;            // may be played while a dialog is open
        bool (ScriptPlayer::*play)(const Words& words, std::string& reason);
    };
    static const Event events_[];

    bool New(const Words& words, std::string& reason);
    bool Open(const Words& words, std::string& reason);
    bool ActivateView(const Words& words, std::string& reason);
    bool Close(const Words& words, std::string& reason);
    bool Size(const Words& words, std::string& reason);
    bool Frame(const Words& words, std::string& reason);
    bool SetProfile(const Words& words, std::string& reason);
    bool SelectMode(const Words& words, std::string& reason);
    bool Press(const Words& words, std::string& reason);
    bool Move(const Words& words, std::string& reason);
    bool Release(const Words& words, std::string& reason);
    bool Key(const Words& words, std::string& reason);
    bool Menu(const Words& words, std::string& reason);
    bool PushButtonOf(const std::vector<BarButton>& buttons, const Words& words,
                      std::string& reason);
    bool PushPalette(const Words& words, std::string& reason);
    bool PushToolBar(const Words& words, std::string& reason);
    bool HighlightEntry(const Words& words, std::string& reason);
    bool AnswerNext(const Words& words, std::string& reason);
    bool FileNext(const Words& words, std::string& reason);
    bool Field(const Words& words, std::string& reason);
    bool Row(const Words& words, std::string& reason);
    bool SelectRow(const Words& words, std::string& reason);
    bool Push(const Words& words, std::string& reason);
    bool Wait(const Words& words, std::string& reason);
    bool Print(const Words& words, std::string& reason);
    DiagramView* Front(std::string& reason);

    Workbench& workbench_;
    ScriptDesktop& desktop_;
    std::string output_;
    bool played_ = false;  // an event that the profile does not precede
};

/// The text of `print WHAT`; nothing for an unknown WHAT.
std::optional<std::string> PrintedText(Workbench& workbench, ScriptDesktop& desktop,
                                       const std::vector<std::string>& words);

}  // namespace photrak
