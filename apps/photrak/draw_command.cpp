// photrak draw: a diagram as a picture file, on a machine without a display. No user library is
// loaded and nothing is started.

#include <cerrno>
#include <cstring>

#include "base/text.h"
#include "drawing/svg_writer.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/diagram.h"
#include "photrak/session.h"
#include "platform/file_system.h"
#include "platform/full_path.h"

namespace photrak {
namespace {

bool Write(const std::string& output, const std::string& picture) {
    if (output.empty()) {
        WriteOut(picture);
        return true;
    }
    if (ReplaceFile(output, picture)) return true;
    Report("error", Concat("cannot write '", output, "': ", std::strerror(errno)));
    return false;
}

}  // namespace

int DrawCommand(const CommandOptions& options) {
    const ConsoleMessages messages;
    const std::string output = FullPath(options.plot.output);
    DiagramReader reader;
    Session session;
    if (!reader.Open() || !EnterDirectory(session, options.file)) return exitStatus::failed;
    reader.Bench().scale.SetZoom(options.draw.zoom);
    std::string text;
    const CanvasLook look{.linePatterns = options.draw.linePatterns};
    const auto drawing = DrawTopologyFile(reader.Bench(), session.fileName, look, text);
    Report(drawing ? "warning" : "error", text);
    if (!drawing) return exitStatus::failed;
    const Theme theme = options.plot.dark ? Theme::Dark : Theme::Light;
    return Write(output, SvgText(*drawing, theme, session.fileName)) ? exitStatus::success
                                                                     : exitStatus::failed;
}

}  // namespace photrak
