// The real system behind the Host interfaces: messages on standard error, programs by
// posix_spawnp (no shell), libraries by dlopen, the profile file and the environment.
#include "platform/system_host.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "platform/file_system.h"
#include "platform/host.h"
#include "platform/memory_shortage.h"
#include "platform/profile.h"

namespace photrak {
namespace {

void WriteToStandardError(std::string text) {
    if (text.empty() || text.back() != '\n') text += '\n';
    std::fwrite(text.data(), 1, text.size(), stderr);
}

struct SystemMessages : Messages {
    void ShowStatusText(std::string_view text) override { WriteToStandardError(std::string(text)); }
    void ErrorBox(std::string_view text, std::string_view title) override { Box(text, title); }
    void InfoBox(std::string_view text, std::string_view title) override { Box(text, title); }
    bool QueryBox(std::string_view text, std::string_view title) override {
        Box(text, title);
        return false;
    }

  private:
    static void Box(std::string_view text, std::string_view title) {
        WriteToStandardError(std::string(title) + ": " + std::string(text));
    }
};

/// What a child gets: nothing to read, no file but the three that every program has, and the
/// signals as a program expects them, whatever the program itself ignores or blocks.
class SpawnSettings {
  public:
    explicit SpawnSettings(bool ownGroup) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
        posix_spawnattr_init(&attributes_);
        sigset_t none, usual;
        sigemptyset(&none);
        sigemptyset(&usual);
        for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGALRM, SIGCHLD,
                                 SIGUSR1, SIGUSR2, SIGTSTP, SIGTTIN, SIGTTOU}) {
            sigaddset(&usual, number);
        }
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setsigdefault(&attributes_, &usual);
        posix_spawnattr_setpgroup(&attributes_, 0);
        const int group = ownGroup ? POSIX_SPAWN_SETPGROUP : 0;
        posix_spawnattr_setflags(&attributes_, static_cast<short>(POSIX_SPAWN_SETSIGMASK |
                                                                  POSIX_SPAWN_SETSIGDEF | group));
    }
    ~SpawnSettings() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;
    const posix_spawn_file_actions_t* Actions() const { return &actions_; }
    const posix_spawnattr_t* Attributes() const { return &attributes_; }

  private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
};

enum class Group { Ours, ItsOwn };

/// The process number, or -1 when the program could not be started.
pid_t SpawnProgram(const std::vector<std::string>& arguments, Group group) {
    if (arguments.empty()) return -1;
    std::vector<char*> texts;
    for (const std::string& argument : arguments) {
        if (argument.find('\0') != std::string::npos) return -1;
        texts.push_back(const_cast<char*>(argument.c_str()));
    }
    texts.push_back(nullptr);
    const SpawnSettings settings(group == Group::ItsOwn);
    pid_t child = -1;
    const int result = posix_spawnp(&child, texts[0], settings.Actions(), settings.Attributes(),
                                    texts.data(), environ);
    NoteIfShortage(result);
    return result == 0 ? child : -1;
}

/// waitpid without interruptions: the child, 0 while it runs (WNOHANG), or -1.
pid_t Wait(pid_t child, int flags, int& state) {
    pid_t ended = -1;
    do {
        ended = ::waitpid(child, &state, flags);
    } while (ended < 0 && errno == EINTR);
    return ended;
}

/// Waits for a child that leads a process group; ends the group once the stop word is set. What the
/// child left running in its group ends with it then. False if its state cannot be known.
bool WaitOrEnd(pid_t child, const StopWord& stop, int& state) {
    using Clock = std::chrono::steady_clock;
    constexpr auto shortest = std::chrono::microseconds(500);
    constexpr auto longest = std::chrono::milliseconds(20);
    constexpr auto patience = std::chrono::seconds(2);
    std::optional<Clock::time_point> asked;
    std::chrono::microseconds pause = shortest;
    for (;;) {
        const pid_t ended = Wait(child, WNOHANG, state);
        if (ended != 0) {
            if (asked) ::kill(-child, SIGKILL);
            return ended == child;
        }
        if (!asked && stop.load(std::memory_order_relaxed) != 0) {
            asked = Clock::now();
            ::kill(-child, SIGTERM);
        } else if (asked && Clock::now() - *asked > patience) {
            ::kill(-child, SIGKILL);
        }
        std::this_thread::sleep_for(pause);
        pause = std::min<std::chrono::microseconds>(2 * pause, longest);
    }
}

struct SystemProcesses : Processes {
    int Start(const std::vector<std::string>& arguments) override {
        ReapFinished();
        const pid_t child = SpawnProgram(arguments, Group::Ours);
        if (child < 0) return -1;
        running_.push_back(child);
        return 0;
    }

    int RunAndWait(const std::vector<std::string>& arguments, WindowState,
                   const StopWord* stop) override {
        const pid_t child = SpawnProgram(arguments, stop ? Group::ItsOwn : Group::Ours);
        if (child < 0) return -1;
        int state = 0;
        const bool known = stop ? WaitOrEnd(child, *stop, state) : Wait(child, 0, state) == child;
        if (!known) return 0;                // the system reaps by itself where SIGCHLD is ignored
        constexpr int killedBySignal = 128;  // as shells report it
        return WIFEXITED(state) ? WEXITSTATUS(state) : killedBySignal + WTERMSIG(state);
    }

  private:
    /// Children that were started and left alone stay zombies until somebody asks for them.
    void ReapFinished() {
        std::erase_if(running_, [](pid_t child) {
            int state = 0;
            return ::waitpid(child, &state, WNOHANG) != 0;
        });
    }

    std::vector<pid_t> running_;
};

struct SystemLibraries : Libraries {
    void* Load(const std::string& path, std::string& error) override {
        errno = 0;
        void* library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!library) {
            NoteIfShortage(errno);
            const char* reason = ::dlerror();
            error = reason ? reason : "unknown reason";
        }
        return library;
    }
    void* Find(void* library, const std::string& symbol) override {
        return library ? ::dlsym(library, symbol.c_str()) : nullptr;
    }
};

struct SystemProfile : Profile {
    int ReadInt(std::string_view section, std::string_view key, int fallback) override {
        return FindProfileInt(Text(), section, key).value_or(fallback);
    }

    std::vector<std::pair<std::string, int>> Ints(std::string_view section) override {
        return ProfileInts(Text(), section);
    }

    void WriteInt(std::string_view section, std::string_view key, int value) override {
        const std::string path = Path();
        std::error_code ignored;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
        // A profile that cannot be written costs the user a remembered setting, no more.
        [[maybe_unused]] const bool written =
            ReplaceFile(path, WithProfileInt(Text(), section, key, value));
    }

  private:
    static std::string Path() {
        const char* home = std::getenv("HOME");
        const std::string name = "PHOTRAK.INI";
        return home && *home ? std::string(home) + "/.config/photrak/" + name : name;
    }
    static std::string Text() {
        constexpr std::size_t limit = std::size_t{1} << 20;
        std::string text, error;
        return ReadWholeFile(Path(), text, error, limit) ? text : std::string();
    }
};

struct SystemEnvironment : Environment {
    std::optional<std::string> Get(const char* name) override {
        const char* value = std::getenv(name);
        return value ? std::optional<std::string>(value) : std::nullopt;
    }
};

}  // namespace

Host SystemHost() {
    static SystemMessages messages;
    static SystemProcesses processes;
    static SystemLibraries libraries;
    static SystemProfile profile;
    static SystemEnvironment environment;
    return {&messages, &processes, &libraries, &profile, &environment};
}

Host& CurrentHost() {
    thread_local Host host = SystemHost();
    return host;
}

}  // namespace photrak
