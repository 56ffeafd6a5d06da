// Texts on the two streams, one rewriting status line on a terminal, and the signals that ask a run
// to stop. A handler touches lock-free words only.
#include "photrak/console.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

#include "base/text.h"

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

/// Control characters of a name may not steer the terminal.
std::string Printable(std::string_view text) {
    std::string clean(text);
    for (char& c : clean) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = ' ';
    }
    return clean;
}

}  // namespace

ConsoleMessages::ConsoleMessages(Progress progress)
    : progress_(progress), terminal_(isatty(STDERR_FILENO) == 1), scope_(HostWith(*this)) {}

ConsoleMessages::~ConsoleMessages() {
    EndStatusLine();
}

void ConsoleMessages::ShowStatusText(std::string_view text) {
    constexpr std::string_view verb = "Simulating ";
    if (text.starts_with(verb)) latestComponent_ = text.substr(verb.size());
    if (progress_ == Progress::Silent) return;
    const std::string clean = Printable(text);
    if (!terminal_) return WriteError(Concat(clean, "\n"));
    WriteError(Concat("\r", clean.substr(0, TerminalColumns()), "\x1b[K"));
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
            WriteError(Concat("photrak: ", own, ": ", Printable(line), "\n"));
        }
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

}  // namespace photrak
