// One response, drawn over two axes.
#include "models/optical/filter_display.h"

#include "base/text.h"
#include "models/optical/optical_filter.h"
#include "results/curve_file.h"

namespace photrak {
namespace {

struct ResponsePlot {
    std::string_view suffix, xLabel, title, failureText;
    std::vector<double> FilterTest::*x;
};
constexpr ResponsePlot responsePlots[] = {
    {"_freqresp", "Frequency (Hz)", "Optical Filter Frequency Response",
     "Error plotting optical filter response", &FilterTest::frequency},
    {"_lambdaresp", "Lambda (m)", "Optical Filter Lambda Response",
     "Error plotting wavelength response", &FilterTest::wavelength},
};

Status DrawResponse(const ResponsePlot& kind, const FilterTest& test, const BlockTestCall& call) {
    CurvePlot plot;
    plot.name = Concat("test_", call.component.name, kind.suffix);
    plot.title = kind.title;
    plot.xLabel = kind.xLabel;
    plot.yLabel = "Transmitted Power (dB)";
    plot.x = test.*kind.x;
    plot.y = test.power;
    plot.mode = call.plotMode;
    const FileResult result = WriteCurveFiles(plot, call.errorText);
    if (result == FileResult::Written) return Status::Success;
    if (result == FileResult::Failed) {
        return call.Fail("ERROR: cannot write '", plot.name, ".lic'\n", kind.failureText);
    }
    return call.Fail(kind.failureText);
}

}  // namespace

Status DrawOpticalFilter(const BlockTestCall& call) {
    FilterTest test;
    Status status = TestOpticalFilter(call.component, test, call);
    for (const ResponsePlot& kind : responsePlots) {
        if (status == Status::Success) status = DrawResponse(kind, test, call);
    }
    return status;
}

}  // namespace photrak
