#include "photrak/viewer.h"

#include "base/text.h"
#include "kernel/external_commands.h"
#include "photrak/options.h"
#include "platform/file_system.h"
#include "platform/host.h"

namespace photrak {
namespace {

constexpr std::string_view viewerWord = "vistrax";

/// The one beside this program, else whatever the PATH has.
std::string ViewerProgram() {
    const std::string beside = Concat(ExecutableDirectory(), viewerWord);
    return FileExists(beside) ? beside : std::string(viewerWord);
}

void AddFiles(std::vector<std::string>& arguments, const std::vector<std::string>& files) {
    arguments.push_back("--");
    for (const std::string& file : files) arguments.push_back("@" + file);
}

std::string NoViewer() {
    return Concat("the viewer '", viewerWord, "' does not start; -o OUT.svg needs none");
}

}  // namespace

bool ShowInViewer(const std::vector<std::string>& files, std::string& error) {
    if (!HasDisplay()) {
        error = "there is no display to show a plot on; -o OUT.svg writes a picture";
        return false;
    }
    std::vector<std::string> arguments{ViewerProgram()};
    AddFiles(arguments, files);
    if (CurrentHost().processes->Start(arguments) == 0) return true;
    error = NoViewer();
    return false;
}

bool ExportByViewer(const std::vector<std::string>& files, const std::string& output,
                    const PlotCommandOptions& options, std::string& error) {
    std::vector<std::string> arguments{
        ViewerProgram(), "--export", output, "--size",
        Concat(FormatDefault(options.width), "x", FormatDefault(options.height))};
    if (options.dark) arguments.push_back("--dark");
    if (!options.eye.empty()) arguments.insert(arguments.end(), {"--eye", options.eye});
    if (files.size() > 1) arguments.push_back("--overlay");
    AddFiles(arguments, files);
    const int status = CurrentHost().processes->RunAndWait(arguments, WindowState::Hidden);
    constexpr int notFound = 127;
    if (status < 0 || status == notFound) error = NoViewer();
    return status == 0;
}

}  // namespace photrak
