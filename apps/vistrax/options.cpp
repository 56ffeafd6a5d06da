#include "vistrax/options.h"

#include "base/text.h"

namespace photrak {
namespace {

using Problem = std::string;

Problem SetOutput(ViewerOptions& options, const std::string& value) {
    for (const std::string_view suffix : {".png", ".pdf", ".svg", ".csv"}) {
        if (!value.ends_with(suffix)) continue;
        options.output = value;
        return {};
    }
    return Concat("'", value, "' is no name of a picture: it must end in .png, .pdf, .svg or .csv");
}

Problem SetSize(ViewerOptions& options, const std::string& value) {
    const std::size_t cross = value.find('x');
    const auto width = WholeDouble(value.substr(0, cross));
    const auto height =
        WholeDouble(cross == std::string::npos ? std::string() : value.substr(cross + 1));
    if (!width || !height || !(*width >= leastPlotWidth && *width <= greatestPlotSide) ||
        !(*height >= leastPlotHeight && *height <= greatestPlotSide)) {
        return Concat("--size wants WIDTHxHEIGHT in pixels, from 200x150 to 20000x20000, not '",
                      value, "'");
    }
    options.size = {*width, *height};
    return {};
}

Problem SetScale(ViewerOptions& options, const std::string& value) {
    const auto scale = WholeDouble(value);
    if (!scale || !(*scale >= 0.25 && *scale <= 8.0))
        return Concat("--scale wants a number from 0.25 to 8, not '", value, "'");
    options.scale = *scale;
    return {};
}

Problem SetEye(ViewerOptions& options, const std::string& value) {
    if (value != "traces" && value != "density")
        return Concat("--eye wants traces or density, not '", value, "'");
    options.eye = value == "traces" ? EyeStyle::Traces : EyeStyle::Density;
    return {};
}

template <bool ViewerOptions::*Flag>
Problem Raise(ViewerOptions& options, const std::string&) {
    options.*Flag = true;
    return {};
}

struct OptionRow {
    std::string_view name, value, help;
    Problem (*set)(ViewerOptions& options, const std::string& value);
};
// clang-format off
constexpr OptionRow rows[] = {
    {"--export", "OUT", "write a picture (.png, .pdf, .svg) or a table (.csv) and end", SetOutput},
    {"--size", "WxH", "size of the picture in pixels; 800x500 without it", SetSize},
    {"--scale", "NUMBER", "dots of a PNG in one of these pixels, 0.25 to 8", SetScale},
    {"--dark", "", "light curves on dark ground", Raise<&ViewerOptions::dark>},
    {"--light", "", "dark curves on light ground, whatever the system has", Raise<&ViewerOptions::light>},
    {"--eye", "STYLE", "draw eyes as traces or density; without it by their number", SetEye},
    {"--overlay", "", "all curves on the axes of the first file", Raise<&ViewerOptions::overlay>},
    {"--own-window", "", "do not hand the files to a viewer that runs", Raise<&ViewerOptions::ownWindow>},
    {"--help", "", "this list", Raise<&ViewerOptions::help>},
    {"--version", "", "the version", Raise<&ViewerOptions::version>},
};
// clang-format on

const OptionRow* FindRow(std::string_view name) {
    for (const OptionRow& row : rows) {
        if (row.name == name) return &row;
    }
    return nullptr;
}

}  // namespace

std::string ReadViewerOptions(const std::vector<std::string>& arguments, ViewerOptions& options) {
    bool onlyFiles = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--" && !onlyFiles) {
            onlyFiles = true;
        } else if (onlyFiles || !argument.starts_with("--")) {
            // "/v" asks for a window: there is one anyway.
            if (argument == "/v" || argument.empty()) continue;
            options.files.push_back(argument.starts_with('@') ? argument.substr(1) : argument);
        } else {
            const std::size_t equals = argument.find('=');
            const OptionRow* row = FindRow(argument.substr(0, equals));
            if (!row) return Concat("there is no option '", argument, "'");
            std::string value;
            if (!row->value.empty()) {
                if (equals != std::string::npos) {
                    value = argument.substr(equals + 1);
                } else if (i + 1 < arguments.size()) {
                    value = arguments[++i];
                }
                if (value.empty()) return Concat(row->name, " wants ", row->value, " after it");
            }
            const Problem problem = row->set(options, value);
            if (!problem.empty()) return problem;
        }
    }
    if (options.output.empty()) return {};
    if (options.files.empty()) return "--export wants a plot command file";
    if (options.files.size() > 1 && !options.overlay)
        return "--export takes one file, or several with --overlay";
    return {};
}

std::string ViewerUsage() {
    std::string text =
        "Usage: vistrax [OPTIONS] [@]FILE...\n"
        "Shows what plot command files name. A second start hands its files to the running "
        "window.\n\n";
    for (const OptionRow& row : rows) {
        std::string name = Concat("  ", row.name, row.value.empty() ? "" : " ", row.value);
        name.resize(std::max<std::size_t>(name.size() + 1, 20), ' ');
        text += Concat(name, row.help, "\n");
    }
    return text;
}

}  // namespace photrak
