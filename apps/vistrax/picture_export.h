// A plot as the bytes of a file, by the suffix of its name: .svg, .pdf, .png, .csv.
#pragma once

#include <string>

#include "plotting/plot_pane.h"

namespace photrak {

struct ExportLook {
    PageSize size{800.0, 500.0};
    double scale = 1.0;  // of a PNG
    Theme theme = Theme::Light;
    EyeStyle eye = EyeStyle::Auto;
    double saturation = 1.0;
};

/// What is seen, with its cursors. False with a reason when the suffix is none of these or the file
/// cannot be written; it is replaced whole or not at all.
[[nodiscard]] bool ExportPlot(const Plot& plot, const PlotView& view, const Cursors& cursors,
                              const ExportLook& look, const std::string& path, std::string& error);

}  // namespace photrak
