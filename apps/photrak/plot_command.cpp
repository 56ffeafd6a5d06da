// photrak plot: results as picture files, on a machine without a display.

#include <charconv>
#include <filesystem>
#include <optional>

#include "base/text.h"
#include "drawing/svg_writer.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "platform/file_system.h"
#include "plotting/plot_drawing.h"

namespace photrak {
namespace {

/// One picture to make: the plot, and where it goes.
struct Picture {
    Plot plot;
    std::string output;
};

std::string PictureOf(const Plot& plot, const PlotCommandOptions& options) {
    PlotOptions look;
    look.size = {options.width, options.height};
    look.eye = options.eye == "traces"    ? EyeStyle::Traces
               : options.eye == "density" ? EyeStyle::Density
                                          : EyeStyle::Auto;
    const PlotPicture picture = DrawPlot(plot, PlotView(plot), look);
    return SvgText(picture.drawing, options.dark ? Theme::Dark : Theme::Light,
                   plot.spec.title.empty() ? plot.name : plot.spec.title);
}

struct PictureFormat {
    std::string_view suffix;
    std::string (*write)(const Plot& plot, const PlotCommandOptions& options);
};
constexpr PictureFormat formats[] = {{".svg", PictureOf}};

const PictureFormat* FormatOf(const std::string& output) {
    for (const PictureFormat& format : formats) {
        if (output.ends_with(format.suffix)) return &format;
    }
    return nullptr;
}

/// A folder takes one picture for each file, under the file's name.
std::optional<std::string> OutputFor(const std::string& file, const PlotCommandOptions& options,
                                     std::string& problem) {
    if (options.output.ends_with('/') || std::filesystem::is_directory(options.output)) {
        const auto name = std::filesystem::path(file).filename().string() + ".svg";
        return (std::filesystem::path(options.output) / name).string();
    }
    if (!FormatOf(options.output)) {
        problem = Concat("'", options.output,
                         "' is no name of a picture: it must end in .svg, or be a folder");
        return {};
    }
    return options.output;
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
    if (!ReplaceFile(picture.output, format->write(picture.plot, options.plot))) {
        Report("error", Concat("cannot write '", picture.output, "'"));
        return false;
    }
    if (!options.quiet) WriteOut(picture.output + "\n");
    return true;
}

int Usage(std::string_view problem) {
    Report("error", problem);
    return exitStatus::usage;
}

}  // namespace

int PlotCommand(const CommandOptions& options) {
    const PlotCommandOptions& wanted = options.plot;
    if (wanted.output.empty()) return Usage("'plot' wants -o OUT.svg: this build has no viewer");
    const bool intoFolder =
        wanted.output.ends_with('/') || std::filesystem::is_directory(wanted.output);
    if (options.files.size() > 1 && !intoFolder) {
        return Usage(Concat("several plots want a folder behind -o, not '", wanted.output, "'"));
    }
    int status = exitStatus::success;
    for (const std::string& file : options.files) {
        Picture picture;
        std::string problem;
        const auto output = OutputFor(file, wanted, problem);
        if (!output) return Usage(problem);
        picture.output = *output;
        if (!Load(file, picture.plot) || !Write(picture, options)) status = exitStatus::failed;
    }
    return status;
}

}  // namespace photrak
