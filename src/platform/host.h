// What the logic asks of the system: messages, processes, libraries, environment and profile, each
// a small interface. The command line, the tests (recording doubles) and the window supply their
// own; one Host record tells which are in use. Process-wide: one run at a time.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/system_host.h"

namespace photrak {

struct Messages {
    virtual ~Messages() = default;
    virtual void ShowStatusText(std::string_view text) = 0;
    virtual void ErrorBox(std::string_view text, std::string_view title) = 0;
    virtual void InfoBox(std::string_view text, std::string_view title) = 0;
    /// Lines that a run has just logged about a component (its path and name; empty: about the run
    /// as a whole). Who shows the log has no use for them.
    virtual void ShowWarnings(std::string_view /*component*/, std::string_view /*text*/) {}
    /// What a user wants to know before it happens: the line of a command that is about to start.
    virtual void ShowNote(std::string_view /*text*/) {}
    /// True for yes. With nobody to ask the answer is no.
    virtual bool QueryBox(std::string_view text, std::string_view title) = 0;
};

enum class WindowState { Normal, Hidden };

/// Non-zero asks a run to end; set from outside.
using StopWord = std::atomic<std::int16_t>;

struct Processes {
    virtual ~Processes() = default;
    /// Starts a program (argument vector, the first searched in PATH) and returns at once: 0, or -1
    /// if it could not start.
    virtual int Start(const std::vector<std::string>& arguments) = 0;
    /// Starts it and waits without limit: its exit status, or -1 if it could not start. With a stop
    /// word it gets a process group of its own, which is asked to end (SIGTERM) once the word is
    /// set, and two seconds later made to (SIGKILL).
    virtual int RunAndWait(const std::vector<std::string>& arguments, WindowState state,
                           const StopWord* stop = nullptr) = 0;
};

struct Libraries {
    virtual ~Libraries() = default;
    /// A handle, or null with the system's reason in `error`. Libraries stay loaded.
    virtual void* Load(const std::string& path, std::string& error) = 0;
    virtual void* Find(void* library, const std::string& symbol) = 0;
};

struct Profile {
    virtual ~Profile() = default;
    virtual int ReadInt(std::string_view section, std::string_view key, int fallback) = 0;
    virtual void WriteInt(std::string_view section, std::string_view key, int value) = 0;
    /// The keys that the section has, in order, with the integers that their values start with.
    virtual std::vector<std::pair<std::string, int>> Ints(std::string_view section) {
        static_cast<void>(section);
        return {};
    }
};

struct Environment {
    virtual ~Environment() = default;
    virtual std::optional<std::string> Get(const char* name) = 0;
};

/// The interfaces in use. Borrowed: whoever installs a Host keeps its parts alive. All are always
/// set.
struct Host {
    Messages* messages;
    Processes* processes;
    Libraries* libraries;
    Profile* profile;
    Environment* environment;
};

/// The Host in use; from the start it is the system's own (SystemHost).
Host& CurrentHost();

/// Installs a Host for as long as a scope lasts.
class HostScope {
  public:
    explicit HostScope(const Host& host) : former_(CurrentHost()) { CurrentHost() = host; }
    ~HostScope() { CurrentHost() = former_; }
    HostScope(const HostScope&) = delete;
    HostScope& operator=(const HostScope&) = delete;

  private:
    Host former_;
};

inline constexpr const char* errorTitle = "Photrak Error";
inline constexpr const char* informationTitle = "Photrak Information";
inline constexpr const char* queryTitle = "Photrak Query";

}  // namespace photrak
