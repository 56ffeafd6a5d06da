// Starting the plot viewer, the editor and the user's command lines. What the user put into the
// environment may hold shell words; a file name, which may come from a topology, never gets there.
#include "kernel/external_commands.h"

#include <algorithm>
#include <optional>

#include "kernel/run_record.h"
#include "platform/file_system.h"
#include "platform/host.h"

namespace photrak {
namespace {

struct CommandState {
    bool allowed = true;
    std::optional<WindowState> window;  // the profile's CommandShowWindow, once it was needed
};

CommandState& State() {
    static CommandState state;
    return state;
}

WindowState CommandWindow() {
    std::optional<WindowState>& window = State().window;
    if (!window) {
        const int shown = CurrentHost().profile->ReadInt("PHOTRAK", "CommandShowWindow", 0);
        window = shown ? WindowState::Normal : WindowState::Hidden;
    }
    return *window;
}

/// The variable's text, or nothing where it is not set or holds blanks only.
std::optional<std::string> Setting(const char* name) {
    std::optional<std::string> text = CurrentHost().environment->Get(name);
    if (text && text->find_first_not_of(" \t\n") == text->npos) text.reset();
    return text;
}

/// The exit status, -1 for a program that could not start or must not.
int RunProgram(const std::vector<std::string>& arguments, const StopWord* stop = nullptr) {
    if (!ExternalCommandsAllowed()) return -1;
    return CurrentHost().processes->RunAndWait(arguments, CommandWindow(), stop);
}

int StartProgram(const std::vector<std::string>& arguments, Wait wait) {
    if (wait == Wait::Yes) return RunProgram(arguments) == -1 ? -1 : 0;
    return ExternalCommandsAllowed() ? CurrentHost().processes->Start(arguments) : -1;
}

/// The shell with a command line, whose "$1", "$2", ... are the arguments.
std::vector<std::string> ShellLine(std::string_view command,
                                   const std::vector<std::string>& arguments) {
    const std::string shell = Setting("COMSPEC").value_or("/bin/sh");
    std::vector<std::string> line = {shell, "-c", std::string(command), shell};
    line.insert(line.end(), arguments.begin(), arguments.end());
    return line;
}

/// The command line of the variable, the file its last argument; without one the program itself.
int StartOnFile(const char* variable, std::vector<std::string> program, const std::string& file,
                Wait wait) {
    if (const std::optional<std::string> command = Setting(variable)) {
        return Spawn(*command + " \"$@\"", {file}, wait);
    }
    program.push_back(file);
    return StartProgram(program, wait);
}

/// The viewer of this installation. Where its word is not on the PATH it is looked for beside the
/// executable; without a display that would only fail again for each plot.
int StartViewer(std::vector<std::string> program, const std::string& file, Wait wait) {
    const int status = StartOnFile("PLOTCMD", program, file, wait);
    if (status != -1 || Setting("PLOTCMD") || !ExternalCommandsAllowed()) return status;
    program[0] = ExecutableDirectory() + program[0];
    if (HasDisplay() && StartOnFile("PLOTCMD", program, file, wait) != -1) return 0;
    CurrentRun().viewerMissing = true;
    return -1;
}

/// The words of a text, split at blanks.
std::vector<std::string> Words(std::string_view text) {
    std::vector<std::string> words;
    constexpr std::string_view blanks = " \t\r\n";
    for (std::size_t at = text.find_first_not_of(blanks); at != text.npos;) {
        const std::size_t end = std::min(text.find_first_of(blanks, at), text.size());
        words.emplace_back(text.substr(at, end - at));
        at = text.find_first_not_of(blanks, end);
    }
    return words;
}

/// Editors take a leading '-' or '+' for an option, some of which run commands.
std::string NoOption(const std::string& file) {
    const bool optionLike = !file.empty() && (file[0] == '-' || file[0] == '+');
    return optionLike ? "./" + file : file;
}

}  // namespace

bool HasDisplay() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        if (Setting(name)) return true;
    }
    return false;
}

void AllowExternalCommands(bool allow) {
    State().allowed = allow;
}

bool ExternalCommandsAllowed() {
    return State().allowed;
}

void ResetExternalCommands() {
    State() = {};
}

int Spawn(std::string_view command, const std::vector<std::string>& arguments, Wait wait) {
    return StartProgram(ShellLine(command, arguments), wait);
}

int RunCommandLine(std::string_view command, const StopWord& stop) {
    return RunProgram(ShellLine(command, {}), &stop);
}

int RunPlotCommand(const std::string& file, Wait wait) {
    return StartViewer({"vistrax", "/v"}, "@" + file, wait);
}

int RunEditor(const std::string& file, Wait wait) {
    return StartOnFile("EDITOR", {"notepad"}, NoOption(file), wait);
}

int RunIconEditor(const std::string& file, Wait wait) {
    std::vector<std::string> program = Words(Setting("PHOTRAK_ICON_EDITOR").value_or(""));
    if (program.empty()) program = {"xdg-open"};
    program.push_back(NoOption(file));
    return StartProgram(program, wait);
}

void LaunchPlot(const std::string& file, Wait wait) {
    StartViewer({"vistrax"}, "@" + file, wait);
}

}  // namespace photrak
