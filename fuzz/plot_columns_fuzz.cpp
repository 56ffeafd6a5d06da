// Data files of plots from a text: read into columns, then drawn as curves, as an eye and as a
// spectrum.
#include <cstddef>
#include <cstdint>

#include "drawing/svg_writer.h"
#include "fuzz_support.h"
#include "plotting/ber_readout.h"
#include "plotting/cursors.h"
#include "plotting/peaks.h"

namespace photrak {
namespace {

class Input : public PlotSource {
  public:
    explicit Input(std::string_view text) : text_(text) {}
    bool ReadData(const std::string&, std::string& text, std::string&) override {
        text = text_;
        return true;
    }

  private:
    std::string_view text_;
};

constexpr std::string_view scripts[] = {
    "/xl\"Time (s)\"\n/yl\"Signal (V)\"\nx.sig\n/st\n",
    "/xl\"Time (s)\"\n/lc2\nx.eye\n/nx1 /ny9\n",
    "/xl\"Wavelength (m)\"\n/yl\"Power (dBm)\"\nx.frq\n",
    "/ly\n/lt\"a\"\nx.ber\n",
};

}  // namespace
}  // namespace photrak

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    Input source(text);
    for (const std::string_view script : scripts) {
        Plot plot;
        std::string error;
        if (!LoadPlotText(script, "input.pc", source, plot, error)) {
            Require(!error.empty());
            continue;
        }
        if (plot.curves.size() > 50 || !IsOneIn(64, text)) continue;
        const PlotView view(plot);
        PlotPicture picture = DrawPlot(plot, view);
        Require(!SvgText(picture.drawing, Theme::Dark, plot.name).empty());
        static_cast<void>(MakeReadout(plot, view, {{0.0, 1.0}, {}, false}));
        static_cast<void>(CrossingsAt(plot, 1e-9));
        for (const Curve& curve : plot.curves)
            static_cast<void>(FindPeaks(*curve.x, *curve.y, 0.0));
    }
    return 0;
}
