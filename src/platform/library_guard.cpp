// Handlers that run on a stack of their own and write texts made before the call: nothing else is
// safe once the code of others has gone wrong.
#include "platform/library_guard.h"

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace photrak {
namespace {

struct Crash {
    int signal;
    const char* name;
};
constexpr Crash crashes[] = {{SIGSEGV, "SIGSEGV"}, {SIGBUS, "SIGBUS"},   {SIGFPE, "SIGFPE"},
                             {SIGILL, "SIGILL"},   {SIGABRT, "SIGABRT"}, {SIGSYS, "SIGSYS"}};

constexpr std::size_t mostText = 512;
// Of the call under way, for handlers: one library is called at a time.
char callText[mostText];
volatile std::sig_atomic_t isWithinCall = 0;
alignas(16) char crashStack[std::size_t{1} << 16];
std::array<struct sigaction, LibraryGuard::signals> before;

int callDirectory = -1;  // where the log is, wherever the library has gone

void Write(int file, const char* text) {
    [[maybe_unused]] const ssize_t told = ::write(file, text, std::strlen(text));
}

/// To standard error and to the log.
void TellEnd(const char* how, const char* detail) {
    const int log =
        ::openat(callDirectory, "log.txt", O_WRONLY | O_APPEND | O_NOFOLLOW | O_CLOEXEC);
    const auto tell = [&](int file, const char* start) {
        for (const char* part : {start, static_cast<const char*>(callText), how, detail, "\n"})
            Write(file, part);
    };
    tell(STDERR_FILENO, "photrak: error: ");
    if (log < 0) return;
    tell(log, "ERROR: ");
    ::close(log);
}

extern "C" void TellCrash(int signal, siginfo_t* info, void*) {
    const char* name = "a signal";
    for (const Crash& crash : crashes) {
        if (crash.signal == signal) name = crash.name;
    }
    TellEnd(" crashed: ", name);
    // As it would have ended without us: a faulty instruction is repeated, what was sent comes
    // again.
    ::sigaction(signal, &before[static_cast<std::size_t>(signal)], nullptr);
    if (info->si_code <= 0) ::raise(signal);
}

void TellExit() {
    if (!isWithinCall) return;
    TellEnd(" ended the program", "");
    ::_exit(1);
}

void PrepareText(std::string_view component, std::string_view library) {
    std::string text = "component '";
    text.append(component).append("': the user library '").append(library).append("'");
    const std::size_t length = std::min(text.size(), mostText - 1);
    std::memcpy(callText, text.data(), length);
    callText[length] = '\0';
}

}  // namespace

LibraryGuard::LibraryGuard(std::string_view component, std::string_view library)
    : directory_(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {
    [[maybe_unused]] static const bool watchesExit = std::atexit(TellExit) == 0;
    PrepareText(component, library);
    callDirectory = directory_;
    std::fegetenv(&floatingPoint_);
    const char* locale = std::setlocale(LC_ALL, nullptr);
    locale_ = locale ? locale : "C";
    ::pthread_sigmask(SIG_SETMASK, nullptr, &mask_);
    for (int signal = 1; signal < signals; ++signal) {
        ::sigaction(signal, nullptr, &handlers_[static_cast<std::size_t>(signal)]);
    }
    WatchCrashes();
    isWithinCall = 1;
}

void LibraryGuard::WatchCrashes() {
    before = handlers_;
    stack_t stack{};
    stack.ss_sp = crashStack;
    stack.ss_size = sizeof crashStack;
    ::sigaltstack(&stack, &formerStack_);
    struct sigaction action {};
    action.sa_sigaction = TellCrash;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    for (const Crash& crash : crashes) ::sigaction(crash.signal, &action, nullptr);
}

LibraryGuard::~LibraryGuard() {
    isWithinCall = 0;
    for (int signal = 1; signal < signals; ++signal) {
        if (signal == SIGKILL || signal == SIGSTOP) continue;
        ::sigaction(signal, &handlers_[static_cast<std::size_t>(signal)], nullptr);
    }
    ::sigaltstack(&formerStack_, nullptr);
    ::pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
    std::fesetenv(&floatingPoint_);
    std::setlocale(LC_ALL, locale_.c_str());
    if (directory_ < 0) return;
    [[maybe_unused]] const int back = ::fchdir(directory_);
    ::close(directory_);
}

}  // namespace photrak
