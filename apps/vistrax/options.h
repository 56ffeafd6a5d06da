// The command line of the viewer: "vistrax @FILE...", "/v @FILE", or a picture without a window.
#pragma once

#include <string>
#include <vector>

#include "drawing/roles.h"
#include "plotting/plot_drawing.h"

namespace photrak {

struct ViewerOptions {
    std::vector<std::string> files;
    std::string output;  // of --export; empty shows a window
    PageSize size{800.0, 500.0};
    double scale = 1.0;
    bool dark = false, light = false, overlay = false, ownWindow = false;
    bool help = false, version = false;
    EyeStyle eye = EyeStyle::Auto;
};

/// An empty text, or what is wrong with the arguments (the program's name not among them).
std::string ReadViewerOptions(const std::vector<std::string>& arguments, ViewerOptions& options);
std::string ViewerUsage();

}  // namespace photrak
