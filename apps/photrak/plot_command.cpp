// photrak plot: results as picture files, on a machine without a display, or in the viewer.

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "base/text.h"
#include "drawing/svg_writer.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/viewer.h"
#include "platform/file_system.h"
#include "plotting/plot_drawing.h"
#include "plotting/session.h"

namespace photrak {
namespace {

/// One picture to make: the plot, the files it is of, and where it goes.
struct Picture {
    Plot plot;
    std::string output;
    std::vector<std::string> files;
};

bool WriteSvg(const Picture& made, const PlotCommandOptions& options, std::string& error) {
    const Plot& plot = made.plot;
    PlotOptions look;
    look.size = {options.width, options.height};
    look.eye = options.eye == "traces"    ? EyeStyle::Traces
               : options.eye == "density" ? EyeStyle::Density
                                          : EyeStyle::Auto;
    const PlotPicture picture = DrawPlot(plot, PlotView(plot), look);
    const std::string text = SvgText(picture.drawing, options.dark ? Theme::Dark : Theme::Light,
                                     plot.spec.title.empty() ? plot.name : plot.spec.title);
    if (ReplaceFile(made.output, text)) return true;
    error = Concat("cannot write '", made.output, "': ", std::strerror(errno));
    return false;
}

bool WriteByViewer(const Picture& made, const PlotCommandOptions& options, std::string& error) {
    return ExportByViewer(made.files, made.output, options, error);
}

struct PictureFormat {
    std::string_view suffix;
    bool (*write)(const Picture& made, const PlotCommandOptions& options, std::string& error);
};
constexpr PictureFormat formats[] = {
    {".svg", WriteSvg}, {".png", WriteByViewer}, {".pdf", WriteByViewer}};

const PictureFormat* FormatOf(const std::string& output) {
    for (const PictureFormat& format : formats) {
        if (output.ends_with(format.suffix)) return &format;
    }
    return nullptr;
}

bool IsFolder(const std::string& output) {
    return output.ends_with('/') || std::filesystem::is_directory(output);
}

/// A folder takes one picture for each file, under the file's name.
std::string OutputFor(const std::string& file, const std::string& output) {
    if (!IsFolder(output)) return output;
    return (std::filesystem::path(output) /
            (std::filesystem::path(file).filename().string() + ".svg"))
        .string();
}

std::string FormatProblem(const std::string& output) {
    return Concat("'", output,
                  "' is no name of a picture: it must end in .svg, .png or .pdf, or be a folder");
}

bool Load(const std::string& file, Plot& plot) {
    std::string error;
    if (!LoadPlot(file, plot, error)) {
        Report("error", error);
        return false;
    }
    for (const std::string& note : plot.notes) Report("warning", note);
    return true;
}

bool Write(const Picture& picture, const CommandOptions& options) {
    const PictureFormat* format = FormatOf(picture.output);
    std::string error;
    if (!format->write(picture, options.plot, error)) {
        if (!error.empty()) Report("error", error);
        return false;
    }
    if (!options.quiet) WriteOut(picture.output + "\n");
    return true;
}

int Usage(std::string_view problem) {
    Report("error", problem);
    return exitStatus::usage;
}

/// All curves on the axes of the first plot.
int PlotOverlaid(const CommandOptions& options) {
    Picture picture;
    picture.output = options.plot.output;
    picture.files = options.files;
    if (!FormatOf(picture.output)) return Usage(FormatProblem(picture.output));
    if (!Load(options.files.front(), picture.plot)) return exitStatus::failed;
    for (std::size_t i = 1; i < options.files.size(); ++i) {
        Plot other;
        std::string problem;
        if (!Load(options.files[i], other)) return exitStatus::failed;
        if (!Overlay(picture.plot, other, problem)) {
            Report("error", problem);
            return exitStatus::failed;
        }
    }
    return Write(picture, options) ? exitStatus::success : exitStatus::failed;
}

}  // namespace

int PlotCommand(const CommandOptions& options) {
    const PlotCommandOptions& wanted = options.plot;
    if (wanted.output.empty()) {
        std::string error;
        return ShowInViewer(options.files, error) ? exitStatus::success : Usage(error);
    }
    if (wanted.overlay) return PlotOverlaid(options);
    if (options.files.size() > 1 && !IsFolder(wanted.output)) {
        return Usage(Concat("several plots want a folder for -o, or --overlay; '", wanted.output,
                            "' is none"));
    }
    if (!IsFolder(wanted.output) && !FormatOf(wanted.output))
        return Usage(FormatProblem(wanted.output));
    int status = exitStatus::success;
    for (const std::string& file : options.files) {
        Picture picture;
        picture.output = OutputFor(file, wanted.output);
        picture.files = {file};
        if (!Load(file, picture.plot) || !Write(picture, options)) status = exitStatus::failed;
    }
    return status;
}

}  // namespace photrak
