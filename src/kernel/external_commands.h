// External programs: the plot viewer, the editor, and command lines given by the user. A file name
// is always an argument of its own and never pasted into a shell's text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/host.h"

namespace photrak {

enum class Wait { No, Yes };

/// Whether external commands are started at all (--no-commands); process-wide, true from the start.
void AllowExternalCommands(bool allow);
bool ExternalCommandsAllowed();
/// Back to the state of the program's start, the profile key unread.
void ResetExternalCommands();

/// Runs a command line of the user through the shell (COMSPEC if set, else /bin/sh); `arguments`
/// reach it as "$1", "$2", ... Without wait it returns at once with the platform's result. With
/// wait it returns 0 when the process has ended, -1 if it could not start. The profile key
/// CommandShowWindow is read once. Refused commands give -1.
int Spawn(std::string_view command, const std::vector<std::string>& arguments, Wait wait);

/// Runs a command line of the user likewise and waits: its exit status as shells report it (127 for
/// an unknown program, 128 and the signal's number if it was killed), -1 if it could not start. It
/// is ended, with all that it started, when the run's stop word is set.
int RunCommandLine(std::string_view command, const StopWord& stop);

/// True when windows can be shown: a display, or a platform that the toolkit is told to use.
bool HasDisplay();
/// Starts the plot viewer on "@FILE": PLOTCMD if set, else "vistrax /v" from the PATH or, where
/// there is a display, from beside the executable. One that does not start is noted in the run
/// record.
int RunPlotCommand(const std::string& file, Wait wait);
/// Starts the editor on FILE: EDITOR if set, else "notepad".
int RunEditor(const std::string& file, Wait wait);
/// Starts a program to draw an icon in on FILE: the words of PHOTRAK_ICON_EDITOR if set, else
/// "xdg-open". No shell reads them.
int RunIconEditor(const std::string& file, Wait wait);
/// Starts the viewer of a plot block on "@FILE": PLOTCMD if set, else "vistrax", likewise. No
/// result is taken.
void LaunchPlot(const std::string& file, Wait wait);

}  // namespace photrak
