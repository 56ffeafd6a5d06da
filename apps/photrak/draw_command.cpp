// photrak draw: a diagram as a picture file, on a machine without a display. No user library is
// loaded and nothing is started.

#include <filesystem>

#include "base/text.h"
#include "drawing/svg_writer.h"
#include "files/catalogue.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/session.h"
#include "platform/file_system.h"
#include "workbench/canvas_drawing.h"

namespace photrak {
namespace {

/// A drawing asks for nothing and shows nothing.
struct NoDesktop : Desktop {
    void Box(BoxKind, std::string_view, std::string_view) override {}
    Answer Query(std::string_view, std::string_view) override { return Answer::Cancel; }
    std::optional<std::string> ChooseFile(const FileRequest&) override { return std::nullopt; }
    bool StartViewer(const std::string&, const std::string&) override { return false; }
    bool StartEditor(const std::string&, const std::string&) override { return false; }
    bool Start(const std::vector<std::string>&, const std::string&) override { return false; }
    void ShowHelp(std::int32_t) override {}
};

/// A name that stands as it was typed, wherever the topology lies.
std::string FullPath(const std::string& path) {
    return path.empty() ? path : std::filesystem::absolute(path).string();
}

bool Write(const std::string& output, const std::string& picture) {
    if (output.empty()) {
        WriteOut(picture);
        return true;
    }
    if (ReplaceFile(output, picture)) return true;
    Report("error", Concat("cannot write '", output, "'"));
    return false;
}

}  // namespace

int DrawCommand(const CommandOptions& options) {
    const ConsoleMessages messages(Progress::Silent);
    const std::string output = FullPath(options.plot.output);
    NoDesktop desktop;
    Workbench workbench{desktop, {}, ExecutableDirectory(), "."};
    std::string text;
    const Status catalogue =
        InitializeModels(workbench.installDirectory, workbench.catalogue, text);
    Report(catalogue == Status::Error ? "error" : "warning", text);
    Session session;
    if (catalogue == Status::Error || !EnterDirectory(session, options.file))
        return exitStatus::failed;
    workbench.scale.SetZoom(options.draw.zoom);
    text.clear();
    const CanvasLook look{.linePatterns = options.draw.linePatterns};
    const auto drawing = DrawTopologyFile(workbench, session.fileName, look, text);
    Report(drawing ? "warning" : "error", text);
    if (!drawing) return exitStatus::failed;
    const Theme theme = options.plot.dark ? Theme::Dark : Theme::Light;
    return Write(output, SvgText(*drawing, theme, session.fileName)) ? exitStatus::success
                                                                     : exitStatus::failed;
}

}  // namespace photrak
