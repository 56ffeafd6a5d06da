#include "vistrax/picture_export.h"

#include "base/text.h"
#include "drawing/svg_writer.h"
#include "platform/file_system.h"
#include "plotting/table_writer.h"
#include "qt/export_image.h"
#include "qt/text_measure_qt.h"

namespace photrak {
namespace {

struct Exported {
    const Plot& plot;
    const PlotView& view;
    const Cursors& cursors;
    const ExportLook& look;

    std::string Title() const { return plot.spec.title.empty() ? plot.name : plot.spec.title; }
    Drawing Draw(const TextMeasure& measure) const {
        PlotOptions options;
        options.size = look.size;
        options.eye = look.eye;
        options.saturation = look.saturation;
        options.measure = &measure;
        PlotPicture picture = DrawPlot(plot, view, options);
        DrawCursors(picture, plot, view, cursors);
        return std::move(picture.drawing);
    }
};

std::string Svg(const Exported& what) {
    // Laid out with the built-in table: the same text on every machine.
    return SvgText(what.Draw(TableMeasure()), what.look.theme, what.Title());
}
std::string Png(const Exported& what) {
    return PngOf(what.Draw(QtTextMeasure()), what.look.theme, what.look.scale).toStdString();
}
std::string Pdf(const Exported& what) {
    return PdfOf(what.Draw(QtTextMeasure()), what.look.theme, ToQString(what.Title()))
        .toStdString();
}
std::string Csv(const Exported& what) {
    return TableText(what.plot, what.view);
}

struct Format {
    std::string_view suffix;
    std::string (*bytes)(const Exported& what);
};
constexpr Format formats[] = {{".svg", Svg}, {".png", Png}, {".pdf", Pdf}, {".csv", Csv}};

}  // namespace

bool ExportPlot(const Plot& plot, const PlotView& view, const Cursors& cursors,
                const ExportLook& look, const std::string& path, std::string& error) {
    for (const Format& format : formats) {
        if (!path.ends_with(format.suffix)) continue;
        const std::string bytes = format.bytes({plot, view, cursors, look});
        if (!bytes.empty() && ReplaceFile(path, bytes)) return true;
        error = Concat("cannot write '", path, "'");
        return false;
    }
    error = Concat("'", path, "' must end in .svg, .pdf, .png or .csv");
    return false;
}

}  // namespace photrak
