// Plot command files from a text, with a small data file behind every name, drawn and zoomed:
// whatever stands in the options, a picture comes out or an error does.
#include <cstddef>
#include <cstdint>

#include "drawing/svg_writer.h"
#include "fuzz_support.h"
#include "plotting/session.h"
#include "plotting/table_writer.h"

namespace photrak {
namespace {

class OneFile : public PlotSource {
  public:
    bool ReadData(const std::string&, std::string& text, std::string&) override {
        text = "0 1 0.5\n1e-12 0 .\n2e-12 -1e300 1e-9\n3e-12 1e300 nan\n";
        return true;
    }
};

void Draw(const Plot& plot) {
    PlotView view(plot);
    for (const ScaleKind kind :
         {ScaleKind::Linear, ScaleKind::Logarithmic, ScaleKind::Probability}) {
        view.SetYScale(plot, kind);
        view.ZoomAt({0.3, 0.6}, 0.5);
        PlotPicture picture = DrawPlot(plot, view);
        DrawCursors(picture, plot, view, {{1e-12, 2e-12}, {0.5, {}}, true});
        Require(!SvgText(picture.drawing, Theme::Light, plot.name).empty());
    }
    Require(!TableText(plot, view).empty());
}

}  // namespace
}  // namespace photrak

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    OneFile source;
    Plot plot;
    std::string error;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (!LoadPlotText(text, "input.pcs", source, plot, error)) {
        Require(!error.empty());
        return 0;
    }
    for (const PlotFile& file : plot.spec.files) {
        Require(file.name.find('/') == std::string::npos && file.name != "..");
    }
    // A drawing takes its time: of plots with very many files only the reading is tried.
    if (plot.curves.size() <= 20 && IsOneIn(64, text)) Draw(plot);
    return 0;
}
