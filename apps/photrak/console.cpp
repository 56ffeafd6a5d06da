// Texts on the two streams, one rewriting status line on a terminal, and the signals that ask a run
// to stop. A handler touches lock-free words only.
#include "photrak/console.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

#include "base/harmless_text.h"
#include "base/text.h"
#include "kernel/run_record.h"
#include "kernel/sweep_settings.h"
#include "kernel/symbols.h"
#include "photrak/outcome.h"

namespace photrak {
namespace {

std::atomic<std::atomic<std::int16_t>*> stopWord{nullptr};
std::atomic<int> receivedSignal{0};
static_assert(std::atomic<std::atomic<std::int16_t>*>::is_always_lock_free &&
                  std::atomic<int>::is_always_lock_free &&
                  std::atomic<std::int16_t>::is_always_lock_free,
              "the signal handler may touch lock-free words only");

constexpr int stopSignals[] = {SIGINT, SIGTERM, SIGHUP};

/// True for the closing of a terminal that the caller asked to outlive (nohup).
bool MustStayIgnored(int signal) {
    struct sigaction before {};
    return signal == SIGHUP && sigaction(signal, nullptr, &before) == 0 &&
           before.sa_handler == SIG_IGN;
}

void RequestStop(int signal) {
    receivedSignal = signal;
    if (std::atomic<std::int16_t>* word = stopWord) *word = 1;
}

std::size_t TerminalColumns() {
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1) return size.ws_col - 1u;
    return 79;
}

Host HostWith(Messages& messages) {
    Host host = CurrentHost();
    host.messages = &messages;
    return host;
}

/// A text of one line; what could end it is shown as control characters are.
std::string HarmlessLine(std::string_view text) {
    std::string line = HarmlessText(text);
    std::ranges::replace(line, '\n', ' ');
    return line;
}

}  // namespace

ConsoleMessages::ConsoleMessages(ProgressStyle style) : style_(style), scope_(HostWith(*this)) {
    if (style != ProgressStyle::Silent) CurrentProgress() = this;
}

ConsoleMessages::~ConsoleMessages() {
    if (CurrentProgress() == this) CurrentProgress() = nullptr;
    EndStatusLine();
}

void ConsoleMessages::ShowStatusText(std::string_view text) {
    constexpr std::string_view verb = "Simulating ";
    if (text.starts_with(verb)) latestComponent_ = text.substr(verb.size());
    if (style_ == ProgressStyle::Silent) return;
    progress_.Begin(HarmlessLine(text));
    ShowProgress(-1.0);
}

void ConsoleMessages::ShowFraction(double fraction) {
    if (progress_.IsDue(style_)) ShowProgress(fraction);
}

void ConsoleMessages::ShowProgress(double fraction) {
    const SimOptions* options = workspace_ ? workspace_->options.get() : nullptr;
    const std::string line = progress_.Line(style_, options, fraction);
    if (style_ != ProgressStyle::Rewriting) return WriteError(Concat(line, "\n"));
    WriteError(Concat("\r", line.substr(0, TerminalColumns()), "\x1b[K"));
    lineOpen_ = true;
}

void ConsoleMessages::EndStatusLine() {
    if (lineOpen_) WriteError("\r\x1b[K");
    lineOpen_ = false;
}

void ConsoleMessages::ErrorBox(std::string_view text, std::string_view) {
    errorText_ = text;
}

void ConsoleMessages::InfoBox(std::string_view text, std::string_view) {
    EndStatusLine();
    Report("note", text);
}

bool ConsoleMessages::QueryBox(std::string_view text, std::string_view) {
    EndStatusLine();
    Report("note", Concat(text, " (answered with no)"));
    return false;
}

namespace {

constexpr std::size_t mostWarnings = 1000;  // different ones; a scan has any number of points

/// "received = -24", or the number of the point for a symbol that is gone.
void AppendSweep(std::string& point, const Workspace& workspace, const SweepFields& fields) {
    const SimOptions& options = *workspace.options;
    if (!(options.mode & fields.modeBit) || options.*fields.count < 1) return;
    Symbol symbol;
    if (!point.empty()) point += ", ";
    if (SymbolLookup(workspace.symbols, options.*fields.variable, &symbol)) {
        point += Concat(options.*fields.variable, " = ", symbol.value);
    } else {
        point += Concat(fields.word, " sweep ", options.*fields.index);
    }
}

}  // namespace

std::string ConsoleMessages::Point() const {
    std::string point;
    if (!workspace_) return point;
    const SimOptions& options = *workspace_->options;
    AppendSweep(point, *workspace_, outerSweepFields);
    AppendSweep(point, *workspace_, innerSweepFields);
    if ((options.mode & simMode::statistical) && options.NUMRUNSTODO > 1) {
        point += Concat(point.empty() ? "" : ", ", "run ", options.runIndex);
    }
    return point;
}

/// The line of a limit with the value, the unit and the place; any other as it stands.
std::string ConsoleMessages::WithNote(std::string_view component, std::string_view line) const {
    for (const ClampNote& note : CurrentRun().clamps) {
        if (note.told != line) continue;
        const std::string in = note.unit.empty() || note.unit == "none" ? "" : " " + note.unit;
        std::string text = Concat("parameter '", note.parameter, "': ", note.value, in, " is ",
                                  note.isBelow ? "below the minimum of " : "above the maximum of ",
                                  note.limit, in, "; ", note.limit, in, " counts");
        if (!places_) return text;
        const auto place = places_->find({std::string(component), note.parameter});
        if (place != places_->end()) text += Concat(" (", place->second, ")");
        return text;
    }
    return std::string(line);
}

void ConsoleMessages::ShowWarnings(std::string_view component, std::string_view text) {
    const std::string inComponent = Concat("in component ", component);
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        const bool isBare = line.find_first_not_of(" \t") == std::string_view::npos;
        if (isBare || inComponent.ends_with(line)) continue;
        std::string told = WithNote(component, line);
        constexpr std::string_view mark = "WARNING: ";
        if (told.starts_with(mark)) told.erase(0, mark.size());
        const bool isNamed =
            component.empty() || line.find(Concat("'", component, "'")) != std::string_view::npos;
        if (!isNamed) told.insert(0, Concat("component '", component, "': "));
        const auto [place, isNew] = warnings_.try_emplace(told, 0);
        if (!isNew || warnings_.size() > mostWarnings) {
            ++place->second;
            continue;
        }
        EndStatusLine();
        const std::string point = Point();
        Report("warning", point.empty() ? told : Concat(told, " [", point, "]"));
    }
}

void ConsoleMessages::ShowNote(std::string_view text) {
    const std::string note = HarmlessLine(text);
    if (notes_.size() >= mostWarnings || !notes_.insert(note).second) return;
    EndStatusLine();
    Report("note", note);
}

void ConsoleMessages::TellRepeats() {
    for (const auto& [text, times] : warnings_) {
        if (times > 0)
            Report("note", Concat(times, times == 1 ? " more time: " : " more times: ", text));
    }
    warnings_.clear();
}

StopOnSignal::StopOnSignal(SimOptions& options) {
    receivedSignal = 0;
    stopWord = &options.stop;
    struct sigaction action {};
    action.sa_handler = RequestStop;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    for (const int signal : stopSignals) {
        if (!MustStayIgnored(signal)) sigaction(signal, &action, nullptr);
    }
}

StopOnSignal::~StopOnSignal() {
    for (const int signal : stopSignals) {
        if (!MustStayIgnored(signal)) std::signal(signal, SIG_DFL);
    }
    stopWord = nullptr;
}

int StopOnSignal::Received() {
    return receivedSignal;
}

void WriteOut(std::string_view text) {
    if (CurrentOutcome().IsAsked()) return;  // the document says it all
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void WriteError(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
}

void Report(std::string_view kind, std::string_view text) {
    // A text of several faults says of each line what it is.
    constexpr std::pair<std::string_view, std::string_view> marks[] = {{"WARNING: ", "warning"},
                                                                       {"ERROR: ", "error"}};
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        std::string_view own = kind;
        for (const auto& [mark, word] : marks) {
            if (line.starts_with(mark)) own = word;
        }
        if (line.find_first_not_of(" \t") != std::string_view::npos) {
            WriteError(Concat("photrak: ", own, ": ", HarmlessLine(line), "\n"));
            const bool isMarked = own != kind;  // "WARNING: " is the kind, and no part of the text
            CurrentOutcome().Add(own, isMarked ? line.substr(line.find(' ') + 1) : line);
        }
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

}  // namespace photrak
